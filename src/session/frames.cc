#include <zel/session/frames.h>

#include <utility>

#include "session/frame_pool.h"

namespace ZEL {

VideoFrame::VideoFrame(uint32_t format_tag, std::unique_ptr<uint8_t[]> planes, int32_t luma_width,
                       int32_t luma_height)
    : VideoFrame(format_tag, std::move(planes), luma_width, luma_height, nullptr) {}

VideoFrame::VideoFrame(uint32_t format_tag, std::unique_ptr<uint8_t[]> planes, int32_t luma_width,
                       int32_t luma_height, std::shared_ptr<FramePool> pool)
    : format(format_tag),
      data(std::move(planes)),
      width(luma_width),
      height(luma_height),
      pool_(std::move(pool)) {}

VideoFrame::~VideoFrame() {
    if (pool_ != nullptr) {
        pool_->giveBack(std::move(data), i420Bytes(width, height));
    }
}

AudioFrame::AudioFrame(uint64_t zero, std::unique_ptr<int16_t[]> interleaved, uint32_t samples_per_channel,
                       int32_t rate_hz, int32_t channel_count)
    : reserved(zero),
      data(std::move(interleaved)),
      samples(samples_per_channel),
      sample_rate(rate_hz),
      channels(channel_count) {}

}  // namespace ZEL
