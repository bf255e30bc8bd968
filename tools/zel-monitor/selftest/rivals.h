#ifndef ZEL_TOOLS_SELFTEST_RIVALS_H_
#define ZEL_TOOLS_SELFTEST_RIVALS_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace zel_monitor::selftest {

using ZEL::EventKind;
using ZEL::TimeSpan;

/// The name of FFmpeg's detector of a kind; empty if it has none.
std::string_view rivalOf(ZEL::EventKind kind);

/// FFmpeg's blockiness of half a second of pictures. Its detector leaves open from which value they are
/// faulty.
struct Blockiness {
    double start_s;
    double value;
};

/// What FFmpeg's detector finds in a file of `length_s` seconds, asked for the same shortest event as ours.
/// Not for blocks. Throws std::runtime_error if ffmpeg cannot be run.
std::vector<ZEL::TimeSpan> rivalEvents(ZEL::EventKind kind, const std::string& file, double length_s);
/// Asks about each half second by itself, because the detector adds up all pictures that it has seen.
std::vector<Blockiness> rivalBlockiness(const std::string& file, double length_s);

/// Events of blocks by a threshold, made by the same rules as ours.
std::vector<ZEL::TimeSpan> blockEvents(const std::vector<Blockiness>& values, double threshold);

// What the detectors print, as events; apart for the tests.
std::vector<ZEL::TimeSpan> parseBlack(std::string_view text);
std::vector<ZEL::TimeSpan> parseStartEnd(std::string_view text, std::string_view name, double length_s);
std::optional<double> parseBlockiness(std::string_view text);

}  // namespace zel_monitor::selftest

#endif  // ZEL_TOOLS_SELFTEST_RIVALS_H_
