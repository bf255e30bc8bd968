#ifndef ZEL_TOOLS_SCAN_SCAN_INPUT_H_
#define ZEL_TOOLS_SCAN_SCAN_INPUT_H_

#include <zel/events/event.h>

#include <atomic>
#include <functional>
#include <string>

#include "cli/progress.h"
#include "report/page_record.h"
#include "report/report.h"
#include "scan/scan_options.h"

namespace zel_monitor {

/// What came of one input.
struct InputScan {
    InputReport report;
    std::optional<PageRecord> record;  ///< if it was asked for
};

/// How an input is scanned.
struct ScanOrder {
    const ScanSettings& settings;
    TimeLimit limit = {};
    bool with_record = false;
};

/// Decodes `input` on one thread and analyses it on the calling one, as fast as both can. Whatever goes wrong
/// with the input stands in the report, also that it took longer than it may. `on_event` hears of each event
/// that is wanted, as it ends. Once `stop` is true the input is left where it is, which counts as not
/// analysed to its end.
InputScan scanInput(const std::string& input, const ScanOrder& order, Progress::Slot& progress,
                    const std::function<void(const ZEL::Event&)>& on_event, const std::atomic<bool>& stop);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_SCAN_INPUT_H_
