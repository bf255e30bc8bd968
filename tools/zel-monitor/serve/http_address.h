#ifndef ZEL_TOOLS_SERVE_HTTP_ADDRESS_H_
#define ZEL_TOOLS_SERVE_HTTP_ADDRESS_H_

#include <string>
#include <string_view>

namespace zel_monitor {

inline constexpr std::string_view kHttpAddressForm =
    "must be an address and a port, such as 127.0.0.1:9633, [::1]:9633 or 0.0.0.0:9633";

/// Whether `text` is "address:port" with an IPv4 address, or an IPv6 address in brackets. Port 0 lets the
/// system choose.
bool isHttpAddress(const std::string& text);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_HTTP_ADDRESS_H_
