#include "bench/accuracy/scan_file.h"

#include <zel/events/kinds.h>

#include <algorithm>

#include "scan/scan_input.h"

namespace bench::accuracy {

std::vector<ZEL::TimeSpan> Scanned::spansOf(std::span<const std::string_view> kinds) const {
    std::vector<ZEL::TimeSpan> spans;
    for (const ZEL::Event& event : events) {
        if (std::find(kinds.begin(), kinds.end(), ZEL::infoOf(event.kind).name) != kinds.end()) {
            spans.push_back(event.span);
        }
    }
    return spans;
}

Scanned scanFile(const std::string& file, const std::atomic<bool>& stop) {
    zel_monitor::Progress::Slot unseen;
    zel_monitor::ScanSettings settings;
    settings.wanted.fill(true);
    zel_monitor::InputReport report = zel_monitor::scanInput(
                                          file, {settings}, unseen, [](const ZEL::Event&) {}, stop)
                                          .report;
    return {std::move(report.events), report.length_s, report.facts.video.has_value(),
            report.facts.audio.has_value(), report.problem.value_or("")};
}

}  // namespace bench::accuracy
