#ifndef ZEL_TOOLS_SERVE_CONFIG_H_
#define ZEL_TOOLS_SERVE_CONFIG_H_

#include <stdexcept>
#include <string>

#include "serve/settings.h"

namespace zel_monitor {

/// What is wrong with a configuration: "FILE:LINE: key: what and what to write instead", a line each.
class ConfigError : public std::runtime_error {
  public:
    using std::runtime_error::runtime_error;
};

/// Reads the YAML text of the file `name`. Throws ConfigError with everything that is wrong in it.
ServeSettings parseConfig(const std::string& text, const std::string& name);

/// Reads the file. Throws ConfigError, also if it cannot be read.
ServeSettings readConfig(const std::string& path);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_CONFIG_H_
