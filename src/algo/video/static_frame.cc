#include "algo/video/static_frame.h"

#include <algorithm>
#include <cstring>
#include <new>

#include "algo/video/luma_kernels.h"
#include "base/log_format.h"

namespace ZELAlgo {
namespace {

constexpr float kStillBelow = 3.0F;
constexpr int kRounds = 3;

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

float difference(StaticFrame_t& state, const uint8_t* data) {
    int32_t sum = 0;
    for (int round = 0; round < kRounds; ++round) {
        const Region region = comparedRegion(state.width, state.height, state.offsets.next());
        uint32_t distance = 0;
        for (size_t y = region.top; y < region.bottom; ++y) {
            const size_t first = y * state.width + region.left;
            distance += sumAbsDiffScalar(data + first, state.prev.get() + first, region.right - region.left);
        }
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

int32_t StaticFrameExecute(StaticFrame_t* state, const uint8_t* data, uint32_t width, uint32_t height,
                           uint32_t& is_static) {
    if (state == nullptr || data == nullptr) {
        ZEL::zel_log("StaticFrameExecute input is Null \n");
        return 1;
    }
    if (width != state->width || height != state->height || !state->prev) {
        resize(*state, width, height);
    }
    if (state->prev) {
        state->score = difference(*state, data);
        state->still_count = state->score < kStillBelow ? state->still_count + 1 : 0;
        std::memcpy(state->prev.get(), data, planeSize(width, height));
    }
    if (state->still_count < state->limit) {
        is_static = 0;
        return 0;
    }
    // A positive verdict returns failure as well, which is intended.
    state->still_count = 0;
    is_static = 1;
    return 1;
}

void StaticFrameDestroy(StaticFrame_t* state) {
    delete state;
}

}  // namespace ZELAlgo
