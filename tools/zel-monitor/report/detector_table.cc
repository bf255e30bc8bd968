#include "report/detector_table.h"

#include <zel/events/kinds.h>

#include <algorithm>
#include <fmt/format.h>
#include <string_view>

namespace zel_monitor {
namespace {

constexpr size_t kWidth = 80;

/// Appends the words of `text`, in lines that end before the edge of a terminal; all but the first begin at
/// column `margin`.
void appendWrapped(std::string& to, std::string_view text, size_t margin) {
    size_t column = margin;
    while (!text.empty()) {
        const std::string_view word = text.substr(0, text.find(' '));
        if (column > margin && column + 1 + word.size() > kWidth) {
            to += '\n' + std::string(margin, ' ');
            column = margin;
        } else if (column > margin) {
            to += ' ';
            ++column;
        }
        to += word;
        column += word.size();
        text.remove_prefix(std::min(text.size(), word.size() + 1));
    }
    to += '\n';
}

}  // namespace

std::string detectorTable() {
    const std::string head =
        fmt::format("{:<13}{:<7}{:<11}{:>6}{:>7}  ", "kind", "tier", "from", "min s", "gap s");
    std::string text = head + "what it means\n";
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        text += fmt::format("{:<13}{:<7}{:<11}{:>6.1f}{:>7.1f}  ", info.name, nameOf(info.tier),
                            nameOf(info.source), info.rule.min_s, info.rule.gap_s);
        appendWrapped(text, info.meaning, head.size());
    }
    return text +
           "\ntier: faults are reported unasked, looks when they are named, as by --also KIND,\n"
           "      or with --all.\n"
           "min:  how long it must last to be an event; set it with --min KIND=TIME.\n"
           "gap:  how long without it ends the event; set it with --gap KIND=TIME.\n";
}

}  // namespace zel_monitor
