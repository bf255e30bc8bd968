#include "input/frame_converter.h"

#include <algorithm>
#include <stdexcept>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "watch/packed_frame.h"

extern "C" {
#include <libavutil/pixdesc.h>
}

namespace {

using testing::ElementsAre;
using zel_monitor::FrameHandle;
using zel_monitor::Picture;
using zel_monitor::PictureConverter;
using zel_monitor::Sound;
using zel_monitor::SoundConverter;

uint8_t lumaAt(int x, int y) {
    return static_cast<uint8_t>(x * 3 + y * 7);  // reaches every value, also those outside limited range
}

int lumaOf(const Picture& picture, int x, int y) {
    return picture.planes.data[0][y * static_cast<ptrdiff_t>(picture.planes.stride[0]) + x];
}

FrameHandle videoFrame(AVPixelFormat format, int width, int height) {
    FrameHandle frame(av_frame_alloc());
    frame->format = format;
    frame->width = width;
    frame->height = height;
    EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
    const AVComponentDescriptor& luma = av_pix_fmt_desc_get(format)->comp[0];
    for (int y = 0; y < height; ++y) {
        for (int x = 0; x < width; ++x) {
            uint8_t* const sample = frame->data[0] + y * frame->linesize[0] + x * luma.step;
            const int value = lumaAt(x, y) << (luma.depth - 8) << luma.shift;
            sample[0] = static_cast<uint8_t>(value);
            if (luma.depth > 8) {
                sample[1] = static_cast<uint8_t>(value >> 8);
            }
        }
    }
    return frame;
}

TEST(PictureConverter, KeepsTheStoredLumaOfEveryPixelFormat) {
    for (const AVPixelFormat format :
         {AV_PIX_FMT_YUV420P, AV_PIX_FMT_YUVJ420P, AV_PIX_FMT_NV12, AV_PIX_FMT_YUV422P, AV_PIX_FMT_YUVJ422P,
          AV_PIX_FMT_YUV444P, AV_PIX_FMT_YUVA420P, AV_PIX_FMT_GRAY8, AV_PIX_FMT_YUV420P10LE,
          AV_PIX_FMT_YUV422P10LE, AV_PIX_FMT_P010LE, AV_PIX_FMT_YUYV422}) {
        SCOPED_TRACE(av_get_pix_fmt_name(format));
        PictureConverter converter;
        const Picture picture = converter.convert(*videoFrame(format, 86, 48));
        ASSERT_EQ(86U, picture.planes.width);
        ASSERT_EQ(48U, picture.planes.height);
        int worst = 0;
        for (int y = 0; y < 48; ++y) {
            for (int x = 0; x < 86; ++x) {
                worst = std::max(worst, std::abs(lumaOf(picture, x, y) - lumaAt(x, y)));
            }
        }
        EXPECT_LE(worst, av_pix_fmt_desc_get(format)->comp[0].depth > 8 ? 1 : 0);
    }
}

TEST(PictureConverter, LeavesOutAnOddLastColumnAndRow) {
    PictureConverter converter;
    const FrameHandle frame = videoFrame(AV_PIX_FMT_YUV420P, 7, 5);
    frame->data[1][0] = 201;
    frame->data[2][frame->linesize[2] + 2] = 202;
    const Picture picture = converter.convert(*frame);
    ASSERT_EQ(6U, picture.planes.width);
    ASSERT_EQ(4U, picture.planes.height);
    std::vector<uint8_t> packed;
    zel_monitor::packPlanes(picture.planes, packed);
    ASSERT_EQ(6U * 4U * 3U / 2U, packed.size());
    EXPECT_EQ(lumaAt(0, 3), packed[3 * 6]);
    EXPECT_EQ(lumaAt(5, 3), packed[3 * 6 + 5]);
    EXPECT_EQ(201, packed[6 * 4]);
    EXPECT_EQ(202, packed.back());
    EXPECT_THROW(converter.convert(*videoFrame(AV_PIX_FMT_YUV420P, 1, 16)), std::runtime_error);
}

TEST(PictureConverter, SharesPlanesThatCanBeReadAsTheyLie) {
    FrameHandle frame = videoFrame(AV_PIX_FMT_YUV420P, 6, 4);
    PictureConverter converter;
    const Picture picture = converter.convert(*frame);
    EXPECT_EQ(frame->data[0], picture.planes.data[0]);
    frame.reset();
    EXPECT_EQ(1, av_buffer_get_ref_count(picture.frame->buf[0]));
    EXPECT_EQ(lumaAt(5, 3), lumaOf(picture, 5, 3));
}

TEST(PictureConverter, TurnsAPictureThatIsStoredFromTheBottomUp) {
    const FrameHandle frame = videoFrame(AV_PIX_FMT_YUV420P, 64, 8);
    for (int plane = 0; plane < 3; ++plane) {
        frame->data[plane] += (plane == 0 ? 7 : 3) * frame->linesize[plane];
        frame->linesize[plane] *= -1;
    }
    PictureConverter converter;
    const Picture picture = converter.convert(*frame);
    EXPECT_EQ(lumaAt(9, 7), lumaOf(picture, 9, 0));
    EXPECT_EQ(lumaAt(9, 0), lumaOf(picture, 9, 7));
}

FrameHandle audioFrame(AVSampleFormat format, int channels, int samples) {
    FrameHandle frame(av_frame_alloc());
    frame->format = format;
    frame->sample_rate = 44100;
    frame->nb_samples = samples;
    av_channel_layout_default(&frame->ch_layout, channels);
    EXPECT_GE(av_frame_get_buffer(frame.get(), 0), 0);
    return frame;
}

std::vector<int16_t> samplesOf(const Sound& sound) {
    return {sound.data, sound.data + sound.samples * sound.channels};
}

TEST(SoundConverter, InterleavesAndConvertsWithoutResampling) {
    const FrameHandle frame = audioFrame(AV_SAMPLE_FMT_FLTP, 2, 2);
    auto* const left = reinterpret_cast<float*>(frame->extended_data[0]);
    auto* const right = reinterpret_cast<float*>(frame->extended_data[1]);
    left[0] = 0.5F;
    left[1] = -1.0F;
    right[0] = 0.25F;
    right[1] = 2.0F;
    SoundConverter converter;
    const Sound sound = converter.convert(*frame);
    EXPECT_EQ(44100, sound.sample_rate);
    EXPECT_EQ(2, sound.channels);
    EXPECT_THAT(samplesOf(sound), ElementsAre(16384, 8192, -32768, 32767));
}

TEST(SoundConverter, SharesInterleavedSamplesAndFollowsAChangeOfFormat) {
    SoundConverter converter;
    const FrameHandle shared = audioFrame(AV_SAMPLE_FMT_S16, 1, 3);
    EXPECT_EQ(reinterpret_cast<const int16_t*>(shared->data[0]), converter.convert(*shared).data);

    const FrameHandle wide = audioFrame(AV_SAMPLE_FMT_S32, 3, 1);
    wide->ch_layout.order = AV_CHANNEL_ORDER_UNSPEC;
    auto* const samples = reinterpret_cast<int32_t*>(wide->data[0]);
    samples[0] = 1 << 16;
    samples[1] = -(5 << 16);
    samples[2] = 300 << 16;
    EXPECT_THAT(samplesOf(converter.convert(*wide)), ElementsAre(1, -5, 300));

    const FrameHandle mono = audioFrame(AV_SAMPLE_FMT_S16P, 1, 1);
    reinterpret_cast<int16_t*>(mono->data[0])[0] = 77;
    EXPECT_THAT(samplesOf(converter.convert(*mono)), ElementsAre(77));
}

}  // namespace
