#ifndef ZEL_TESTS_SUPPORT_FRAMES_H_
#define ZEL_TESTS_SUPPORT_FRAMES_H_

#include <zel/session/frames.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <vector>

namespace support {

constexpr uint8_t kVideoBlack = 16;
constexpr uint8_t kMidGrey = 128;

/// An I420 frame of one luma value and neutral chroma.
inline std::vector<uint8_t> flatFrame(int32_t width, int32_t height, uint8_t luma, uint8_t chroma = 128) {
    const auto luma_bytes = static_cast<size_t>(width) * static_cast<size_t>(height);
    std::vector<uint8_t> frame(luma_bytes * 3 / 2, chroma);
    std::fill_n(frame.begin(), luma_bytes, luma);
    return frame;
}

inline std::shared_ptr<ZEL::VideoFrame> flatVideoFrame(int32_t width, int32_t height, uint8_t luma) {
    const std::vector<uint8_t> frame = flatFrame(width, height, luma);
    auto copy = std::make_unique<uint8_t[]>(frame.size());
    std::copy(frame.begin(), frame.end(), copy.get());
    return std::make_shared<ZEL::VideoFrame>(2, std::move(copy), width, height);
}

inline std::shared_ptr<ZEL::AudioFrame> silentAudioFrame(uint32_t samples, int32_t sample_rate = 48000,
                                                         int32_t channels = 1) {
    auto data = std::make_unique<int16_t[]>(samples * static_cast<size_t>(channels));
    return std::make_shared<ZEL::AudioFrame>(0, std::move(data), samples, sample_rate, channels);
}

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_FRAMES_H_
