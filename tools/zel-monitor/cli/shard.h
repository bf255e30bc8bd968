#ifndef ZEL_TOOLS_CLI_SHARD_H_
#define ZEL_TOOLS_CLI_SHARD_H_

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <string_view>

namespace zel_monitor {

/// A part of many streams or files: those whose name's hash falls to it. The hash is the same on every
/// machine and in every version, so that processes which have the same names share them out, and names that
/// come to the others change nothing for those.
struct Shard {
    uint64_t index = 0;  ///< from 0
    uint64_t count = 1;

    bool takes(std::string_view name) const;
};

/// "I/N" with I from 1 to N; none if it is anything else.
std::optional<Shard> parseShard(std::string_view text);

/// A variable of the environment; null if it is not set.
using Environment = std::function<const char*(const char* name)>;

/// "I/N", or "auto" or "auto/N": the part that falls to this task of a Slurm job array, or to this pod of an
/// indexed Kubernetes Job, which does not say how many there are. Slurm's tasks are counted from the first
/// one, but with N from 0, so that some of them can be run again alone. Throws std::runtime_error, with the
/// way out.
Shard shardFor(const std::string& text, const Environment& environment);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_SHARD_H_
