#ifndef ZEL_TOOLS_WATCH_REPORT_FIELDS_H_
#define ZEL_TOOLS_WATCH_REPORT_FIELDS_H_

#include <array>
#include <string_view>

namespace zel_monitor {

enum class FieldKind {
    kAmount,  ///< fed since the last heartbeat
    kEvents,  ///< verdicts since the last heartbeat; missing until there was one
    kLevel,   ///< latest value; missing until there was one
};

/// One figure of a report and how people are shown it.
struct ReportField {
    const char* key;
    std::string_view heading;  ///< of a table column
    std::string_view name;     ///< in the final report
    FieldKind kind;
    bool video;
};

inline constexpr std::array kReportFields = {
    ReportField{"zel_vframes", "pictures", "pictures fed", FieldKind::kAmount, true},
    ReportField{"zel_black_cnt", "black", "black pictures", FieldKind::kEvents, true},
    ReportField{"zel_greenscreen_cnt", "green", "green pictures", FieldKind::kEvents, true},
    ReportField{"zel_block_cnt", "blocky", "blocky pictures", FieldKind::kEvents, true},
    ReportField{"zel_staticframe_cnt", "frozen", "frozen, runs of 10 pictures", FieldKind::kEvents, true},
    ReportField{"zel_underexposure_cnt", "dark", "under-exposed pictures", FieldKind::kEvents, true},
    ReportField{"zel_overexposure_cnt", "bright", "over-exposed pictures", FieldKind::kEvents, true},
    ReportField{"zel_aframes", "sounds", "blocks of sound fed", FieldKind::kAmount, false},
    ReportField{"zel_mute_cnt", "mute", "mute, periods of 10 s", FieldKind::kEvents, false},
    ReportField{"zel_low_voice_cnt", "quiet", "quiet voice, periods of 10 s", FieldKind::kEvents, false},
    ReportField{"zel_high_voice_cnt", "loud", "loud voice, periods of 10 s", FieldKind::kEvents, false},
    ReportField{"zel_no_voice_cnt", "no voice", "without voice, periods of 10 s", FieldKind::kEvents, false},
    ReportField{"zel_audio_level", "level", "level of the sound", FieldKind::kLevel, false},
    ReportField{"zel_voice_level_longtime", "speech", "level of the voice", FieldKind::kLevel, false},
    ReportField{"zel_voice_scale_longtime", "share", "share of voice, whole number", FieldKind::kLevel,
                false},
};

/// The figure of a health assessment that people are shown; missing when it is 0.
struct AssessmentField {
    const char* assessment;
    const char* key;
    std::string_view name;
};

inline constexpr std::array kAssessmentFields = {
    AssessmentField{"RecentPlayerFF", "recent_ff", "ms from opening to the first picture"},
    AssessmentField{"RefNetSpeed", "recent_max", "bytes per second read, at best"},
    AssessmentField{"PlayerBufferRate", "avg_bufms_ps", "ms stalled per second of play"},
    AssessmentField{"PlayerErrorRate", "recent_error_rate", "share of playbacks that ended in an error"},
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_WATCH_REPORT_FIELDS_H_
