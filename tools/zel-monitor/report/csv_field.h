#ifndef ZEL_TOOLS_REPORT_CSV_FIELD_H_
#define ZEL_TOOLS_REPORT_CSV_FIELD_H_

#include <string>

namespace zel_monitor {

/// Quotes what a comma, a quote or a line end would tear apart.
inline std::string csvField(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return quoted + '"';
}

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_REPORT_CSV_FIELD_H_
