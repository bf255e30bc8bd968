#include "c/report.h"

#include <array>
#include <cstdio>
#include <string_view>

#include "c/calls.h"

namespace {

/// Keys and values may be a host's own, so they may hold anything.
void appendQuoted(std::string& json, std::string_view text) {
    json += '"';
    for (const char character : text) {
        if (character == '"' || character == '\\') {
            json += '\\';
            json += character;
        } else if (static_cast<unsigned char>(character) < 0x20) {
            std::array<char, 8> escape{};
            std::snprintf(escape.data(), escape.size(), "\\u%04x", static_cast<unsigned>(character));
            json += escape.data();
        } else {
            json += character;
        }
    }
    json += '"';
}

}  // namespace

void zelc_report_visit(const zelc_report* report,
                       int (*visit)(void* user, const char* key, const char* value), void* user) {
    if (report == nullptr || visit == nullptr) {
        return;
    }
    for (const auto& [key, value] : report->fields) {
        if (visit(user, key.c_str(), value.c_str()) != 0) {
            return;
        }
    }
}

const char* zelc_report_value(const zelc_report* report, const char* key) {
    const char* value = nullptr;
    ZELC::guarded([&] {
        if (report != nullptr && key != nullptr) {
            const auto found = report->fields.find(key);
            value = found != report->fields.end() ? found->second.c_str() : nullptr;
        }
        return int{ZELC_OK};
    });
    return value;
}

const char* zelc_report_json(const zelc_report* report) {
    const char* text = nullptr;
    ZELC::guarded([&] {
        if (report != nullptr) {
            std::string json;
            for (const auto& [key, value] : report->fields) {
                json += json.empty() ? '{' : ',';
                appendQuoted(json, key);
                json += ':';
                appendQuoted(json, value);
            }
            report->json = json.empty() ? "{}" : json + '}';
            text = report->json.c_str();
        }
        return int{ZELC_OK};
    });
    return text;
}
