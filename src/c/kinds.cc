#include <zel/events/kinds.h>
#include <zel/zel_c.h>

#include "c/calls.h"

static_assert(ZELC_SOURCE_VIDEO == static_cast<int>(ZEL::EventSource::kVideo) &&
              ZELC_SOURCE_AUDIO == static_cast<int>(ZEL::EventSource::kAudio) &&
              ZELC_SOURCE_TIMESTAMPS == static_cast<int>(ZEL::EventSource::kTimestamps) &&
              ZELC_SOURCE_INPUT == static_cast<int>(ZEL::EventSource::kInput) &&
              ZELC_TIER_FAULT == static_cast<int>(ZEL::EventTier::kFault) &&
              ZELC_TIER_LOOK == static_cast<int>(ZEL::EventTier::kLook));

uint32_t zelc_kind_count(void) {
    return static_cast<uint32_t>(ZEL::kEventKinds);
}

int zelc_kind_info(uint32_t kind, zelc_kind* info) {
    if (kind >= ZEL::kEventKinds || !ZELC::isReadable(info)) {
        return ZELC::failed(ZELC_INVALID, "no such kind of event, or nowhere to tell of it");
    }
    // The texts of the table are literals, and end as C wants it.
    const ZEL::EventKindInfo& row = ZEL::eventKinds()[kind];
    const zelc_kind own{.struct_size = sizeof own,
                        .source = static_cast<uint32_t>(row.source),
                        .tier = static_cast<uint32_t>(row.tier),
                        .reserved = 0,
                        .name = row.name.data(),
                        .unit = row.unit.data(),
                        .meaning = row.meaning.data(),
                        .colour = row.colour.data(),
                        .min_s = row.rule.min_s,
                        .gap_s = row.rule.gap_s};
    ZELC::write(own, *info);
    return ZELC_OK;
}

int zelc_kind_by_name(const char* name) {
    const auto kind = name != nullptr ? ZEL::eventKindByName(name) : std::nullopt;
    return kind ? static_cast<int>(ZEL::indexOf(*kind))
                : ZELC::failed(ZELC_INVALID, "no kind of event has that name");
}
