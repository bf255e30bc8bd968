#include "serve/http_address.h"

#include <arpa/inet.h>
#include <array>
#include <charconv>
#include <netinet/in.h>

namespace zel_monitor {

bool isHttpAddress(const std::string& text) {
    const size_t colon = text.rfind(':');
    if (colon == std::string::npos) {
        return false;
    }
    int port = -1;
    const char* const end = text.data() + text.size();
    const auto [rest, error] = std::from_chars(text.data() + colon + 1, end, port);
    if (error != std::errc{} || rest != end || port < 0 || port > 65535) {
        return false;
    }
    std::string address = text.substr(0, colon);
    std::array<unsigned char, sizeof(in6_addr)> binary{};
    if (address.size() > 2 && address.front() == '[' && address.back() == ']') {
        address = address.substr(1, address.size() - 2);
        return inet_pton(AF_INET6, address.c_str(), binary.data()) == 1;
    }
    return inet_pton(AF_INET, address.c_str(), binary.data()) == 1;
}

}  // namespace zel_monitor
