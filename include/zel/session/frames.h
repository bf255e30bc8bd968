#ifndef ZEL_SESSION_FRAMES_H_
#define ZEL_SESSION_FRAMES_H_

#include <cstdint>
#include <memory>

namespace ZEL {

class FramePool;

/// The library's own copy of a video frame: I420, width * height * 3 / 2 bytes without gaps.
struct VideoFrame {
    /// `format_tag` 2 is I420. The luma width and height are positive.
    VideoFrame(uint32_t format_tag, std::unique_ptr<uint8_t[]> planes, int32_t luma_width,
               int32_t luma_height);
    /// As above with a buffer of `pool`, which gets it back when the frame dies.
    VideoFrame(uint32_t format_tag, std::unique_ptr<uint8_t[]> planes, int32_t luma_width,
               int32_t luma_height, std::shared_ptr<FramePool> pool);
    VideoFrame(const VideoFrame&) = delete;
    VideoFrame& operator=(const VideoFrame&) = delete;
    ~VideoFrame();

    const uint32_t format;
    std::unique_ptr<uint8_t[]> data;
    const int32_t width;
    const int32_t height;

  private:
    const std::shared_ptr<FramePool> pool_;
};

/// The library's own copy of an audio frame: `channels` interleaved channels of `samples` signed 16-bit
/// samples each.
struct AudioFrame {
    /// Rate and channel count are positive.
    AudioFrame(uint64_t zero, std::unique_ptr<int16_t[]> interleaved, uint32_t samples_per_channel,
               int32_t rate_hz, int32_t channel_count);
    AudioFrame(const AudioFrame&) = delete;
    AudioFrame& operator=(const AudioFrame&) = delete;
    ~AudioFrame() = default;

    const uint64_t reserved;
    const std::unique_ptr<int16_t[]> data;
    const uint32_t samples;
    const int32_t sample_rate;
    const int32_t channels;
};

}  // namespace ZEL

#endif  // ZEL_SESSION_FRAMES_H_
