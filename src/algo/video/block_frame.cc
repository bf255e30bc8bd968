#include "algo/video/block_frame.h"

#include <new>

#include "base/log_format.h"

namespace ZELAlgo {
namespace {

bool hasBuffers(const BlockFrame_t& state) {
    return state.edges && state.work && state.directions && state.edge_map;
}

void resize(BlockFrame_t& state, size_t w, size_t h) {
    state.w = w;
    state.h = h;
    state.edges.reset(new (std::nothrow) uint8_t[w * h]);
    state.work.reset(new (std::nothrow) uint8_t[w * h]);
    state.directions.reset(new (std::nothrow) Direction[w * h]);
    state.edge_map.reset(new (std::nothrow) uint64_t[edgeMapWords(w) * h]);
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

int32_t BlockExecute(BlockFrame_t* state, const uint8_t* data, uint32_t width, uint32_t height,
                     uint32_t& is_block) {
    if (state == nullptr || data == nullptr) {
        ZEL::zel_log("BlockExecute input is Null \n");
        return 1;
    }
    is_block = 0;
    if (width / 2 != state->w || height / 2 != state->h || !hasBuffers(*state)) {
        resize(*state, width / 2, height / 2);
    }
    if (!hasBuffers(*state)) {
        return 1;
    }
    const size_t w = state->w;
    const size_t h = state->h;
    uint8_t* const smooth = state->edges.get();
    uint8_t* const magnitude = state->work.get();

    const size_t stride = 2 * w;
    smoothScalar(state->kernel, data + h / 2 * stride + w / 2, stride, w, h, smooth);
    gradientScalar(smooth, w, h, state->directions.get(), magnitude);
    thinScalar(state->directions.get(), w, h, magnitude);
    thresholdScalar(magnitude, smooth, w, h, maximumScalar(magnitude, w * h), state->edge_map.get());
    findCorners(state->edge_map.get(), w, h, state->corners);
    is_block = closesEnoughBlocks(state->corners, state->threshold) ? 1 : 0;
    return 0;
}

void BlockDestroy(BlockFrame_t* state) {
    delete state;
}

}  // namespace ZELAlgo
