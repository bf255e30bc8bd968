#include "cli/shard.h"

#include <charconv>
#include <fmt/format.h>
#include <stdexcept>

namespace zel_monitor {
namespace {

constexpr std::string_view kAuto = "auto";

std::optional<uint64_t> numberIn(const char* text) {
    const std::string_view digits = text != nullptr ? text : "";
    uint64_t number = 0;
    const auto end = std::from_chars(digits.data(), digits.data() + digits.size(), number);
    return end.ec == std::errc{} && end.ptr == digits.data() + digits.size() ? std::optional(number)
                                                                             : std::nullopt;
}

/// The part of a Slurm task, whose array may begin anywhere and go on in steps.
Shard shardOfArray(uint64_t task, const Environment& environment) {
    const auto first = numberIn(environment("SLURM_ARRAY_TASK_MIN"));
    const auto last = numberIn(environment("SLURM_ARRAY_TASK_MAX"));
    const auto count = numberIn(environment("SLURM_ARRAY_TASK_COUNT"));
    const uint64_t step = numberIn(environment("SLURM_ARRAY_TASK_STEP")).value_or(1);
    if (!first || !last || !count || step < 1 || task < *first || task > *last ||
        (*last - *first) / step + 1 != *count || (task - *first) % step != 0) {
        throw std::runtime_error(
            "--shard auto: the numbers of this job array do not follow one another; give --shard auto/N with "
            "the N of the whole array, numbered from 0");
    }
    return {(task - *first) / step, *count};
}

}  // namespace

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

Shard shardFor(const std::string& text, const Environment& environment) {
    if (!text.starts_with(kAuto)) {
        if (const auto shard = parseShard(text)) {
            return *shard;
        }
        throw std::runtime_error(
            fmt::format("--shard: '{}' is no part; write for example 3/10, the third of ten, or auto", text));
    }
    const auto array_task = numberIn(environment("SLURM_ARRAY_TASK_ID"));
    const auto index = array_task ? array_task : numberIn(environment("JOB_COMPLETION_INDEX"));
    if (!index) {
        throw std::runtime_error(
            "--shard auto: neither SLURM_ARRAY_TASK_ID nor JOB_COMPLETION_INDEX is set; give --shard I/N");
    }
    if (text != kAuto) {
        const bool has_count = text.size() > kAuto.size() + 1 && text[kAuto.size()] == '/';
        const auto count = has_count ? numberIn(text.c_str() + kAuto.size() + 1) : std::nullopt;
        if (!count || *index >= *count) {
            throw std::runtime_error(
                fmt::format("--shard {}: this is task {}, and tasks are counted from 0", text, *index));
        }
        return {*index, *count};
    }
    if (!array_task) {
        throw std::runtime_error(
            "--shard auto: an indexed Job does not say of how many pods; give --shard auto/N");
    }
    return shardOfArray(*array_task, environment);
}

}  // namespace zel_monitor
