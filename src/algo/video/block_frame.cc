#include "algo/video/block_frame.h"

#include <algorithm>
#include <new>

#include "algo/video/edge_kernels.h"
#include "algo/video/planes.h"
#include "base/log_format.h"

namespace ZELAlgo {
namespace {

bool hasBuffers(const BlockFrame_t& state) {
    return state.smoothed && state.magnitude && state.scratch && state.edge_map;
}

template <typename Item>
void allocate(std::unique_ptr<Item[]>& buffer, size_t count) {
    buffer.reset();  // first, so that old and new are never held at once
    buffer.reset(new (std::nothrow) Item[count]());
}

void resize(BlockFrame_t& state, size_t w, size_t h) {
    state.w = w;
    state.h = h;
    allocate(state.smoothed, w * h + kSpareBytes);
    allocate(state.magnitude, magnitudeStride(w) * h + 2 * kSpareBytes);
    allocate(state.scratch, std::max({smoothingScratch(w, h), edgeScratch(w, h), cornerScratch(w, h)}));
    allocate(state.edge_map, edgeMapWords(w) * h);
    if (!hasBuffers(state)) {
        ZEL::zel_log("BlockFrame_t create space fail !");
    }
}

}  // namespace

BlockFrame_t* BlockCreate(uint32_t width, uint32_t height, uint32_t threshold) {
    auto* const state = new (std::nothrow) BlockFrame_t{};
    if (state == nullptr) {
        ZEL::zel_log("BlockFrame_t create fail ! \n");
        return nullptr;
    }
    state->kernel = gaussianKernel();
    state->threshold = threshold;
    resize(*state, width / 2, height / 2);
    return state;
}

int32_t BlockExecute(BlockFrame_t* state, const Planes& frame, bool& is_block) {
    if (state == nullptr || frame.data[0] == nullptr) {
        ZEL::zel_log("BlockExecute input is Null \n");
        return 1;
    }
    is_block = false;
    const size_t w = frame.width / 2;
    const size_t h = frame.height / 2;
    if (w != state->w || h != state->h || !hasBuffers(*state)) {
        resize(*state, w, h);
    }
    if (!hasBuffers(*state)) {
        return 1;
    }
    uint8_t* const scratch = state->scratch.get();
    uint8_t* const smoothed = state->smoothed.get();
    uint8_t* const magnitude = state->magnitude.get() + kSpareBytes;

    const size_t stride = evenStride(frame);
    smooth(state->kernel, frame.data[0] + h / 2 * stride + w / 2, stride, w, h, scratch, smoothed);
    const uint8_t maximum = thinnedMagnitude(smoothed, w, h, scratch, magnitude);
    threshold(magnitude, smoothed, w, h, edgeLevels(maximum), scratch, state->edge_map.get());
    findCorners(state->edge_map.get(), w, h, state->corners);
    is_block = closesEnoughBlocks(state->corners, w, h, state->threshold, scratch);
    return 0;
}

void BlockDestroy(BlockFrame_t* state) {
    delete state;
}

}  // namespace ZELAlgo
