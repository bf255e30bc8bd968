#include <fmt/format.h>

#include "cli/time_text.h"
#include "report/writers.h"

namespace zel_monitor {
namespace {

/// Quotes what a comma, a quote or a line end would tear apart.
std::string field(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return quoted + '"';
}

}  // namespace

std::string csvHeader() {
    return "input,kind,start_s,end_s,duration_s,share,open_at_end\n";
}

std::string csvLine(const std::string& input, const ZEL::Event& event) {
    return fmt::format("{},{},{:.6f},{:.6f},{:.6f},{:.6f},{}\n", field(input), infoOf(event.kind).name,
                       toMicroseconds(event.span.start_s), toMicroseconds(event.span.end_s),
                       toMicroseconds(event.span.length()), event.share, event.open_at_end);
}

}  // namespace zel_monitor
