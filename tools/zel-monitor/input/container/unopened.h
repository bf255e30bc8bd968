#ifndef ZEL_TOOLS_INPUT_CONTAINER_UNOPENED_H_
#define ZEL_TOOLS_INPUT_CONTAINER_UNOPENED_H_

#include <cstdint>
#include <optional>

#include "cli/incomplete.h"
#include "input/container/byte_source.h"

namespace zel_monitor {

/// What can be read of an input that libavformat could not open.
struct UnopenedInput {
    ReadAt read;
    std::optional<int64_t> bytes = {};  ///< how many it has in all, if that is known
};

/// Why libavformat, which answered `code`, could not open the input, as far as its bytes tell better than the
/// code: it is empty, text, of no known format, or cut off.
std::optional<Shortfall> whyUnopened(const UnopenedInput& input, int code);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_UNOPENED_H_
