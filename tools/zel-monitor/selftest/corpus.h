#ifndef ZEL_TOOLS_SELFTEST_CORPUS_H_
#define ZEL_TOOLS_SELFTEST_CORPUS_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <string>
#include <string_view>
#include <vector>

namespace zel_monitor::selftest {

/// Arguments of one run of ffmpeg, without the name of the file to make.
using Recipe = std::vector<std::string>;

/// One clip of which it is known when the fault is there.
struct Case {
    std::string name;
    ZEL::EventKind kind;
    bool hard;
    std::string about;  ///< what is seen or heard, for people
    std::vector<ZEL::TimeSpan> truth;
    std::vector<Recipe> recipes;  ///< each makes a file from the one before it, which kPrevious stands for
};

/// Stands in a recipe for the file that the recipe before it has made.
inline constexpr std::string_view kPrevious = "{previous}";

const std::vector<Case>& corpus();

}  // namespace zel_monitor::selftest

#endif  // ZEL_TOOLS_SELFTEST_CORPUS_H_
