#include "cli/shard.h"

#include <charconv>

namespace zel_monitor {

/// FNV-1a with 64 bits, its upper bits folded in, because the lowest one alone is only the names' parity.
bool Shard::takes(std::string_view name) const {
    uint64_t hash = 0xcbf29ce484222325U;
    for (const char c : name) {
        hash = (hash ^ static_cast<unsigned char>(c)) * 0x100000001b3U;
    }
    hash ^= hash >> 32U;
    return hash % count == index;
}

std::optional<Shard> parseShard(std::string_view text) {
    Shard shard;
    const char* const end = text.data() + text.size();
    const auto index = std::from_chars(text.data(), end, shard.index);
    if (index.ec != std::errc{} || index.ptr == end || *index.ptr != '/') {
        return std::nullopt;
    }
    const auto count = std::from_chars(index.ptr + 1, end, shard.count);
    if (count.ec != std::errc{} || count.ptr != end || shard.index < 1 || shard.index > shard.count) {
        return std::nullopt;
    }
    --shard.index;
    return shard;
}

}  // namespace zel_monitor
