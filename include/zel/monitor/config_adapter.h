#ifndef ZEL_MONITOR_CONFIG_ADAPTER_H_
#define ZEL_MONITOR_CONFIG_ADAPTER_H_

#include <cstdint>
#include <string>

namespace ZEL {

/// The embedding player's remote switches. Asked on whichever thread sets the library up or records a sample,
/// possibly on several at once; must not call ZELManager or ZELHA back.
class ConfigAdapter {
  public:
    ConfigAdapter() = default;
    ConfigAdapter(const ConfigAdapter&) = delete;
    ConfigAdapter& operator=(const ConfigAdapter&) = delete;
    virtual ~ConfigAdapter() = default;

    /// A switch with a text value. The library has none so far.
    virtual std::string getString(const std::string& /*key*/, const std::string& default_value) {
        return default_value;
    }

    /// The switch `key`, or `default_value` if it is not set. Key: "DisableDataMonitor".
    virtual bool getBool(const std::string& key, bool default_value) = 0;

    /// As getBool. Key: "DefaultMetricsTTL", seconds.
    virtual int32_t getInt(const std::string& key, int32_t default_value) = 0;
};

}  // namespace ZEL

#endif  // ZEL_MONITOR_CONFIG_ADAPTER_H_
