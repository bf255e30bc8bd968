#include "algo/video/static_frame.h"

#include <algorithm>
#include <array>
#include <cstring>
#include <new>

#include "algo/video/luma_kernels.h"
#include "algo/video/planes.h"
#include "base/log_format.h"

namespace ZELAlgo {
namespace {

constexpr float kStillBelow = 3.0F;
constexpr size_t kRounds = 3;

size_t planeSize(uint32_t width, uint32_t height) {
    return static_cast<size_t>(width) * height;
}

// Keeps the bytes that fit; what is gained is zero.
void resize(StaticFrame_t& state, uint32_t width, uint32_t height) {
    const size_t kept =
        state.prev ? std::min(planeSize(state.width, state.height), planeSize(width, height)) : 0;
    std::unique_ptr<uint8_t[]> plane(new (std::nothrow) uint8_t[planeSize(width, height)]());
    if (plane && kept > 0) {
        std::memcpy(plane.get(), state.prev.get(), kept);
    }
    state.prev = std::move(plane);
    state.width = width;
    state.height = height;
}

// The regions overlap. Their edges cut the plane into a grid of which every field lies wholly inside or
// outside each of them, so that all are compared, and the plane copied, in one walk over it.
float replaceAndScore(StaticFrame_t& state, const uint8_t* luma, size_t stride) {
    std::array<Region, kRounds> regions;
    std::array<size_t, 2 * kRounds + 2> rows{0, state.height};
    std::array<size_t, 2 * kRounds + 2> columns{0, state.width};
    for (size_t i = 0; i < kRounds; ++i) {
        regions[i] = comparedRegion(state.width, state.height, state.offsets.next());
        rows[2 * i + 2] = regions[i].top;
        rows[2 * i + 3] = regions[i].bottom;
        columns[2 * i + 2] = regions[i].left;
        columns[2 * i + 3] = regions[i].right;
    }
    std::sort(rows.begin(), rows.end());
    std::sort(columns.begin(), columns.end());

    std::array<uint32_t, kRounds> distances{};
    for (size_t i = 0; i + 1 < rows.size(); ++i) {
        const uint8_t* const current = luma + rows[i] * stride;
        uint8_t* previous = state.prev.get() + rows[i] * state.width;
        const size_t count = rows[i + 1] - rows[i];
        const auto crosses = [&](const Region& region) {
            return region.top <= rows[i] && rows[i] < region.bottom;
        };
        if (std::none_of(regions.begin(), regions.end(), crosses)) {
            forEachRun(current, stride, state.width, count, [&previous](const uint8_t* run, size_t bytes) {
                previous = std::copy_n(run, bytes, previous);
            });
            continue;
        }
        std::array<uint32_t, 2 * kRounds + 1> sums{};
        replaceAndCompare(current, stride, count, columns, previous, sums.data());
        for (size_t k = 0; k < sums.size(); ++k) {
            for (size_t r = 0; r < kRounds; ++r) {
                if (crosses(regions[r]) && regions[r].left <= columns[k] && columns[k] < regions[r].right) {
                    distances[r] += sums[k];
                }
            }
        }
    }
    int32_t sum = 0;
    for (const uint32_t distance : distances) {
        sum += meanDifference(distance, state.width, state.height);
    }
    return static_cast<float>(static_cast<float>(sum) / 3.0);
}

}  // namespace

uint32_t OffsetGenerator::next() {
    // SplitMix64.
    state_ += 0x9E3779B97F4A7C15U;
    uint64_t z = state_;
    z = (z ^ (z >> 30U)) * 0xBF58476D1CE4E5B9U;
    z = (z ^ (z >> 27U)) * 0x94D049BB133111EBU;
    return static_cast<uint32_t>((z ^ (z >> 31U)) >> 33U);
}

Region comparedRegion(uint32_t width, uint32_t height, uint32_t random) {
    const uint64_t shorter = std::min(width, height);
    if (shorter == 0) {
        return {};
    }
    // May be negative; unsigned sums wrap back because no edge lies closer to the border than it reaches.
    const uint64_t offset = random % shorter / 4 - shorter / 8;
    return {.top = height / 4 + offset,
            .bottom = uint64_t{3} * height / 4 + offset,
            .left = width / 4 + offset,
            .right = uint64_t{3} * width / 4 + offset};
}

int32_t meanDifference(uint32_t sum, uint32_t width, uint32_t height) {
    // 32-bit products that wrap and are then taken as signed; in 64 bits their quotient is always defined.
    const int64_t dividend = static_cast<int32_t>(4 * sum);
    const int64_t divisor = static_cast<int32_t>(width * height);
    return divisor == 0 ? 0 : static_cast<int32_t>(dividend / divisor);
}

StaticFrame_t* StaticFrameCreate(uint32_t width, uint32_t height, uint32_t limit) {
    auto* const state = new (std::nothrow) StaticFrame_t{};
    if (state == nullptr) {
        ZEL::zel_log("StaticFrame_t create fail ! \n");
        return nullptr;
    }
    state->limit = limit;
    resize(*state, width, height);
    return state;
}

int32_t StaticFrameExecute(StaticFrame_t* state, const Planes& frame, bool& is_static) {
    if (state == nullptr || frame.data[0] == nullptr) {
        ZEL::zel_log("StaticFrameExecute input is Null \n");
        return 1;
    }
    if (frame.width != state->width || frame.height != state->height || !state->prev) {
        resize(*state, frame.width, frame.height);
    }
    if (state->prev) {
        state->score = replaceAndScore(*state, frame.data[0], frame.stride[0]);
        state->still_count = state->score < kStillBelow ? state->still_count + 1 : 0;
    }
    if (state->still_count < state->limit) {
        is_static = false;
        return 0;
    }
    // A positive verdict returns failure as well, which is intended.
    state->still_count = 0;
    is_static = true;
    return 1;
}

void StaticFrameDestroy(StaticFrame_t* state) {
    delete state;
}

}  // namespace ZELAlgo
