#ifndef ZEL_BENCH_ACCURACY_RIVALS_H_
#define ZEL_BENCH_ACCURACY_RIVALS_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <span>
#include <string>
#include <string_view>
#include <vector>

#include "support/filter_source.h"

namespace bench::accuracy {

/// FFmpeg's detector of a kind of event.
struct Rival {
    std::string_view kind;       ///< by its name
    std::string_view filter;     ///< by its name
    ZEL::EventSource source;     ///< kVideo or kAudio
    std::string_view start_key;  ///< metadata of the frame with which a fault begins; empty for blockdetect,
                                 ///< which measures and leaves open from which value on frames are faulty
    std::string_view end_key;
    std::vector<std::string_view> settings;  ///< options to try; the first one is the default
};

std::span<const Rival> rivals();

/// Null if FFmpeg has no detector of the kind.
const Rival* rivalOf(std::string_view kind);

/// FFmpeg's blockiness of half a second of frames.
struct Blockiness {
    double start_s;
    double value;
};

/// What one rival finds in one file, asked for the same shortest event as ours.
struct Findings {
    const Rival* rival = nullptr;
    std::vector<std::vector<ZEL::TimeSpan>> by_setting;  ///< in the order of the rival's settings
    std::vector<Blockiness> blockiness;                  ///< of blockdetect, instead
};

/// What rivals of one source find in a file's frames, with all their settings or by default. Times count from
/// the first frame. Throws std::runtime_error if there are no frames.
std::vector<Findings> findWithRivals(support::FilterSource frames, const std::vector<const Rival*>& asked,
                                     bool all_settings);

/// Events by a threshold, made by the same rules as ours.
std::vector<ZEL::TimeSpan> blockEvents(const std::vector<Blockiness>& values, double threshold);

/// Thresholds to try, from the smallest value in `all` to the largest.
std::vector<double> blockThresholds(std::vector<double> values);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_RIVALS_H_
