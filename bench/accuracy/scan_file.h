#ifndef ZEL_BENCH_ACCURACY_SCAN_FILE_H_
#define ZEL_BENCH_ACCURACY_SCAN_FILE_H_

#include <zel/events/event.h>

#include <atomic>
#include <span>
#include <string>
#include <string_view>
#include <vector>

namespace bench::accuracy {

/// What `zel-monitor scan` finds in a file with the default rules.
struct Scanned {
    std::vector<ZEL::Event> events;
    double length_s = 0.0;
    bool video = false;
    bool sound = false;
    std::string problem;  ///< why it was not scanned to its end; empty if it was

    /// Where events of any of the kinds are; names that no kind has yet are allowed.
    std::vector<ZEL::TimeSpan> spansOf(std::span<const std::string_view> kinds) const;
};

Scanned scanFile(const std::string& file, const std::atomic<bool>& stop);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_SCAN_FILE_H_
