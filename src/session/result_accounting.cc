#include "session/result_accounting.h"

#include <zel/message/message.h>

#include <utility>

#include "base/text.h"

namespace ZEL {
namespace {

/// Report integers are signed 32-bit, whatever the field's type.
std::string decimalText(uint32_t value) {
    return std::to_string(static_cast<int32_t>(value));
}

void publish(MessageCenter& center, const char* name, const DetectorCall& call, ReportMap detail) {
    detail["detect_res"] = call.status ? "1" : "0";
    detail["process_time"] = fixedText(call.seconds);
    center.publish(std::make_shared<Message>(name, std::move(detail)));
}

}  // namespace

ResultAccounting::ResultAccounting(std::weak_ptr<MessageCenter> center) : center_(std::move(center)) {}

void ResultAccounting::setPublish(bool publish) {
    publish_ = publish;
}

void ResultAccounting::account(const DetectorCall& call, const ZELAlgo::ZELVideoResult& result) {
    const std::pair<bool, const char*> events[] = {
        {result.screen_type == ZELAlgo::kScreenBlack, "black_cnt"},
        {result.screen_type == ZELAlgo::kScreenGreen, "greenscreen_cnt"},
        {result.is_block, "block_cnt"},
        {result.is_staticframe, "staticframe_cnt"},
        {result.exposure_type == ZELAlgo::kExposureUnder, "underexposure_cnt"},
        {result.exposure_type == ZELAlgo::kExposureOver, "overexposure_cnt"},
    };
    {
        const MutexLock lock(mutex_);
        for (const auto& [happened, counter] : events) {
            if (happened) {
                bump(counter);
            }
        }
    }
    if (const auto center = publishingCenter()) {
        publish(*center, "ZELMsgVideoFrameResult", call,
                {{"screen_type", decimalText(result.screen_type)},
                 {"is_block", decimalText(result.is_block)},
                 {"is_staticframe", decimalText(result.is_staticframe)},
                 {"exposure_type", decimalText(result.exposure_type)}});
    }
}

void ResultAccounting::account(const DetectorCall& call, const ZELAlgo::ZELAudioResult& result) {
    if (result.status != ZELAlgo::kAudioComplete) {
        return;
    }
    const std::pair<uint32_t, const char*> events[] = {
        {result.is_mute, "mute_cnt"},
        {result.is_low_voicelevel, "low_voice_cnt"},
        {result.is_high_voicelevel, "high_voice_cnt"},
        {result.is_novoice_longtime, "no_voice_cnt"},
    };
    {
        const MutexLock lock(mutex_);
        events_.gauges["voice_level_longtime"] = static_cast<int32_t>(result.voice_level_longtime);
        events_.gauges["audio_level"] = static_cast<int32_t>(result.audio_level);
        // A share below 1 becomes 0, as intended: the gauge only tells whether all was voice.
        events_.gauges["voice_scale_longtime"] = static_cast<int32_t>(result.voice_scale_longtime);
        for (const auto& [happened, counter] : events) {
            if (happened != 0) {
                bump(counter);
            }
        }
    }
    if (const auto center = publishingCenter()) {
        // Intended: the share of voice has a gauge but no place in the message.
        publish(*center, "ZELMsgAudioFrameResult", call,
                {{"voice_level_longtime", decimalText(result.voice_level_longtime)},
                 {"audio_level", decimalText(result.audio_level)},
                 {"is_mute", decimalText(result.is_mute)},
                 {"is_low_voicelevel", decimalText(result.is_low_voicelevel)},
                 {"is_high_voicelevel", decimalText(result.is_high_voicelevel)},
                 {"is_novoice_longtime", decimalText(result.is_novoice_longtime)}});
    }
}

EventSnapshot ResultAccounting::snapshot() const {
    const MutexLock lock(mutex_);
    return events_;
}

void ResultAccounting::bump(const char* counter) {
    // Intended: the first event of a kind only makes its counter, at 0.
    const auto [entry, inserted] = events_.counters.try_emplace(counter, 0);
    if (!inserted) {
        entry->second = static_cast<int32_t>(static_cast<uint32_t>(entry->second) + 1U);
    }
}

std::shared_ptr<MessageCenter> ResultAccounting::publishingCenter() const {
    return publish_ ? center_.lock() : nullptr;
}

}  // namespace ZEL
