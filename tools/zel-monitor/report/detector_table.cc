#include "report/detector_table.h"

#include <zel/events/kinds.h>

#include <fmt/format.h>

namespace zel_monitor {

std::string detectorTable() {
    std::string text =
        fmt::format("{:<13}{:<11}{:>6}{:>8}  {}\n", "kind", "from", "min s", "gap s", "what it means");
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        text += fmt::format("{:<13}{:<11}{:>6.1f}{:>8.1f}  {}\n", info.name, nameOf(info.source),
                            info.rule.min_s, info.rule.gap_s, info.meaning);
    }
    return text +
           "\nmin: how long the fault must last to be an event; set it with --min KIND=TIME.\n"
           "gap: how long without the fault ends the event; set it with --gap KIND=TIME.\n";
}

}  // namespace zel_monitor
