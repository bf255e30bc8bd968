#ifndef ZEL_TOOLS_WATCH_REPORT_FIELDS_H_
#define ZEL_TOOLS_WATCH_REPORT_FIELDS_H_

#include <zel/events/kinds.h>

#include <array>
#include <string_view>

namespace zel_monitor {

/// A counter of verdicts; missing from the reports until its first event, which does not raise it.
struct CounterField {
    const char* key;
    ZEL::EventKind kind;
    std::string_view unit;  ///< what raises it by one, as it follows the kind's name
};

/// A measurement's latest value; missing from the reports until there was one.
struct LevelField {
    const char* key;
    std::string_view heading;  ///< of its column
    std::string_view name;     ///< in the final report
};

inline constexpr std::array kCounterFields = {
    CounterField{"zel_black_cnt", ZEL::EventKind::kBlack, " frames"},
    CounterField{"zel_greenscreen_cnt", ZEL::EventKind::kGreen, " frames"},
    CounterField{"zel_block_cnt", ZEL::EventKind::kBlock, " frames"},
    CounterField{"zel_staticframe_cnt", ZEL::EventKind::kFreeze, ", runs of 10 frames"},
    CounterField{"zel_underexposure_cnt", ZEL::EventKind::kUnderexposed, " frames"},
    CounterField{"zel_overexposure_cnt", ZEL::EventKind::kOverexposed, " frames"},
    CounterField{"zel_mute_cnt", ZEL::EventKind::kMute, ", periods of 10 s"},
    CounterField{"zel_low_voice_cnt", ZEL::EventKind::kLowVoice, ", periods of 10 s"},
    CounterField{"zel_high_voice_cnt", ZEL::EventKind::kHighVoice, ", periods of 10 s"},
    CounterField{"zel_no_voice_cnt", ZEL::EventKind::kNoVoice, ", periods of 10 s"},
};

inline constexpr std::array kAudioLevelFields = {
    LevelField{"zel_audio_level", "level", "level of the audio"},
    LevelField{"zel_voice_level_longtime", "voice", "level of the voice"},
    LevelField{"zel_voice_scale_longtime", "share", "share of voice, whole number"},
};

/// The figure of a health assessment that people are shown; missing when it is 0.
struct AssessmentField {
    const char* assessment;
    const char* key;
    std::string_view name;
};

inline constexpr std::array kAssessmentFields = {
    AssessmentField{"RecentPlayerFF", "recent_ff", "ms from opening to the first frame"},
    AssessmentField{"RefNetSpeed", "recent_max", "bytes per second read, at best"},
    AssessmentField{"PlayerBufferRate", "avg_bufms_ps", "ms stalled per second of play"},
    AssessmentField{"PlayerErrorRate", "recent_error_rate", "share of playbacks that ended in an error"},
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_REPORT_FIELDS_H_
