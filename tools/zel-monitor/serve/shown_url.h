#ifndef ZEL_TOOLS_SERVE_SHOWN_URL_H_
#define ZEL_TOOLS_SERVE_SHOWN_URL_H_

#include <string>

namespace zel_monitor {

/// A URL without what may be secret in it, for people: user, password and query go.
std::string shownUrl(const std::string& url);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_SHOWN_URL_H_
