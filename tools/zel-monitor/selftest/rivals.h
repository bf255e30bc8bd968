#ifndef ZEL_TOOLS_SELFTEST_RIVALS_H_
#define ZEL_TOOLS_SELFTEST_RIVALS_H_

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "scan/event.h"
#include "scan/kinds.h"

namespace zel_monitor::selftest {

using scan::Kind;
using scan::Span;

/// The name of FFmpeg's detector of a kind; empty if it has none.
std::string_view rivalOf(Kind kind);

/// FFmpeg's blockiness of half a second of pictures. Its detector leaves open from which value they are
/// faulty.
struct Blockiness {
    double start_s;
    double value;
};

/// What FFmpeg's detector finds in a file of `length_s` seconds, asked for the same shortest event as ours.
/// Not for blocks. Throws std::runtime_error if ffmpeg cannot be run.
std::vector<Span> rivalEvents(Kind kind, const std::string& file, double length_s);
/// Asks about each half second by itself, because the detector adds up all pictures that it has seen.
std::vector<Blockiness> rivalBlockiness(const std::string& file, double length_s);

/// Events of blocks by a threshold, made by the same rules as ours.
std::vector<Span> blockEvents(const std::vector<Blockiness>& values, double threshold);

// What the detectors print, as events; apart for the tests.
std::vector<Span> parseBlack(std::string_view text);
std::vector<Span> parseStartEnd(std::string_view text, std::string_view name, double length_s);
std::optional<double> parseBlockiness(std::string_view text);

}  // namespace zel_monitor::selftest

#endif  // ZEL_TOOLS_SELFTEST_RIVALS_H_
