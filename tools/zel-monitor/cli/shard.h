#ifndef ZEL_TOOLS_CLI_SHARD_H_
#define ZEL_TOOLS_CLI_SHARD_H_

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace zel_monitor {

/// A part of a configuration's streams: those whose name's hash falls to it. The hash is the same on every
/// machine and in every version, so that instances which share a configuration share its streams out.
struct Shard {
    uint64_t index = 0;  ///< from 0
    uint64_t count = 1;

    bool takes(std::string_view name) const;
};

/// "I/N" with I from 1 to N; none if it is anything else.
std::optional<Shard> parseShard(std::string_view text);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_SHARD_H_
