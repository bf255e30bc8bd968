#include <zel/collector/info_collector.h>

#include <cerrno>
#include <clocale>
#include <cstdlib>
#include <stdexcept>
#include <utility>

namespace ZEL {
namespace {

using Fields = std::map<std::string, std::string>;

/// The "C" locale, so that a host's decimal comma changes nothing.
locale_t plainLocale() {
    static const locale_t locale = newlocale(LC_ALL_MASK, "C", nullptr);
    return locale;
}

[[noreturn]] void throwOutOfRange(const std::string& conversion) {
    throw std::out_of_range(conversion + " argument out of range");
}

/// Runs `parse`, one of the C conversions, over `text`. Errors name the standard `conversion` that works
/// alike.
template <typename Parse>
auto convert(const std::string& text, const std::string& conversion, Parse parse) {
    const int caller_errno = std::exchange(errno, 0);
    char* end = nullptr;
    const auto number = parse(text.c_str(), &end);
    const int error = std::exchange(errno, caller_errno);
    if (end == text.c_str()) {
        throw std::invalid_argument("invalid " + conversion + " argument");
    }
    if (error == ERANGE) {
        throwOutOfRange(conversion);
    }
    return number;
}

}  // namespace

double getDouble(const Fields& values, const std::string& key, double default_value) {
    const auto found = values.find(key);
    if (found == values.end()) {
        return default_value;
    }
    return convert(found->second, "stod",
                   [](const char* text, char** end) { return strtod_l(text, end, plainLocale()); });
}

int getInt(const Fields& values, const std::string& key, int default_value) {
    const auto found = values.find(key);
    if (found == values.end()) {
        return default_value;
    }
    const long number = convert(found->second, "stoi", [](const char* text, char** end) {
        return strtol_l(text, end, 10, plainLocale());
    });
    if (!std::in_range<int>(number)) {
        throwOutOfRange("stoi");
    }
    return static_cast<int>(number);
}

}  // namespace ZEL
