#ifndef ZEL_TOOLS_SCAN_SCAN_INPUT_H_
#define ZEL_TOOLS_SCAN_SCAN_INPUT_H_

#include <zel/events/event.h>

#include <atomic>
#include <functional>
#include <string>

#include "cli/progress.h"
#include "report/page_record.h"
#include "report/report.h"

namespace zel_monitor {

/// What came of one input.
struct InputScan {
    InputReport report;
    std::optional<PageRecord> record;  ///< if it was asked for
};

/// Decodes `input` on one thread and analyses it on the calling one, as fast as both can. Whatever goes wrong
/// with the input stands in the report. `on_event` hears of each event that is wanted, as it
/// ends. Once `stop` is true the
/// input is left where it is, which counts as not analysed to its end.
InputScan scanInput(const std::string& input, const ScanSettings& settings, bool with_record,
                    Progress::Slot& progress, const std::function<void(const ZEL::Event&)>& on_event,
                    const std::atomic<bool>& stop);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SCAN_SCAN_INPUT_H_
