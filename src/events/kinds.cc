#include <zel/events/kinds.h>

namespace ZEL {

std::optional<EventKind> eventKindByName(std::string_view name) {
    const auto* const found = std::find_if(kEventKindTable.begin(), kEventKindTable.end(),
                                           [&](const EventKindInfo& info) { return info.name == name; });
    return found == kEventKindTable.end() ? std::nullopt : std::optional(found->kind);
}

std::string_view nameOf(EventSource source) {
    constexpr std::array<std::string_view, 3> kNames{"video", "audio", "timestamps"};
    return kNames.at(static_cast<size_t>(source));
}

std::string_view nameOf(EventTier tier) {
    return tier == EventTier::kFault ? "fault" : "look";
}

EventRules defaultEventRules() {
    EventRules rules;
    std::transform(kEventKindTable.begin(), kEventKindTable.end(), rules.begin(),
                   [](const EventKindInfo& info) { return info.rule; });
    return rules;
}

}  // namespace ZEL
