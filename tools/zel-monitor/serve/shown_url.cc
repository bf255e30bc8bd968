#include "serve/shown_url.h"

namespace zel_monitor {

std::string shownUrl(const std::string& url) {
    const size_t scheme = url.find("://");
    if (scheme == std::string::npos) {
        return url;
    }
    std::string shown = url.substr(0, url.find('?'));
    const size_t host = scheme + 3;
    const size_t path = shown.find('/', host);
    if (const size_t at = shown.rfind('@', path); at != std::string::npos && at >= host) {
        shown.erase(host, at + 1 - host);
    }
    return shown;
}

}  // namespace zel_monitor
