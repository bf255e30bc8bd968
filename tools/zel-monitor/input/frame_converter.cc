#include "input/frame_converter.h"

#include <algorithm>
#include <string_view>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace zel_monitor {
namespace {

constexpr int kAlignment = 64;  // of rows that the scaler writes, and what it may write behind the last one

/// Whether the frame's own planes can be read from the first row on.
bool isShareable(const AVFrame& frame) {
    const bool planar_420 = frame.format == AV_PIX_FMT_YUV420P || frame.format == AV_PIX_FMT_YUVJ420P ||
                            frame.format == AV_PIX_FMT_YUVA420P;
    return planar_420 && frame.buf[0] != nullptr &&
           std::all_of(frame.linesize, frame.linesize + 3, [](int stride) { return stride > 0; });
}

/// The I420 format that lets the scaler leave the luma values alone: it takes these sources as full range.
AVPixelFormat targetFormat(AVPixelFormat source) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(source);
    const std::string_view name = descriptor != nullptr ? descriptor->name : "";
    return name.starts_with("yuvj") || name.starts_with("gray") || name.starts_with("ya")
               ? AV_PIX_FMT_YUVJ420P
               : AV_PIX_FMT_YUV420P;
}

}  // namespace

void BufferRelease::operator()(AVBufferRef* buffer) const {
    av_buffer_unref(&buffer);
}

void FrameRelease::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}

VideoFrame VideoFrameConverter::convert(const AVFrame& frame) {
    const auto width = static_cast<uint32_t>(frame.width & ~1);
    const auto height = static_cast<uint32_t>(frame.height & ~1);
    if (width == 0 || height == 0) {
        throw FfmpegError(AVERROR_PATCHWELCOME, "frame is smaller than 2x2");
    }
    FrameHandle held =
        isShareable(frame) ? FrameHandle(orOutOfMemory(av_frame_clone(&frame))) : scaled(frame);
    VideoFrame converted{.time = 0,
                         .duration = 0,
                         .planes = {.width = width, .height = height, .data = {}, .stride = {}},
                         .frame = nullptr};
    for (size_t plane = 0; plane < 3; ++plane) {
        converted.planes.data[plane] = held->data[plane];
        converted.planes.stride[plane] = static_cast<size_t>(held->linesize[plane]);
    }
    converted.frame.reset(held.release());
    return converted;
}

/// The content of `frame` brought to planar 4:2:0.
FrameHandle VideoFrameConverter::scaled(const AVFrame& frame) {
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const AVPixelFormat target = targetFormat(format);
    scaler_.reset(sws_getCachedContext(scaler_.release(), frame.width, frame.height, format, frame.width,
                                       frame.height, target, SWS_BILINEAR | SWS_ACCURATE_RND, nullptr,
                                       nullptr, nullptr));
    if (!scaler_) {
        throw FfmpegError(AVERROR_PATCHWELCOME, "pixel format cannot be converted");
    }
    FrameHandle scaled(orOutOfMemory(av_frame_alloc()));
    scaled->format = target;
    scaled->width = frame.width;
    scaled->height = frame.height;
    const int size = checked(av_image_get_buffer_size(target, frame.width, frame.height, kAlignment));
    scaled->buf[0] = newBuffer(static_cast<size_t>(size) + kAlignment);
    checked(av_image_fill_arrays(scaled->data, scaled->linesize, scaled->buf[0]->data, target, frame.width,
                                 frame.height, kAlignment));
    checked(sws_scale(scaler_.get(), frame.data, frame.linesize, 0, frame.height, scaled->data,
                      scaled->linesize));
    return scaled;
}

AVBufferRef* VideoFrameConverter::newBuffer(size_t size) {
    if (size != pool_size_) {
        pool_.reset(orOutOfMemory(av_buffer_pool_init(size, nullptr)));
        pool_size_ = size;
    }
    return orOutOfMemory(av_buffer_pool_get(pool_.get()));
}

AudioFrame AudioFrameConverter::convert(const AVFrame& frame) {
    AudioFrame sound{.time = 0,
                     .sample_rate = frame.sample_rate,
                     .channels = frame.ch_layout.nb_channels,
                     .samples = frame.nb_samples,
                     .data = nullptr,
                     .buffer = nullptr};
    if (frame.format == AV_SAMPLE_FMT_S16 && frame.buf[0] != nullptr) {
        sound.buffer.reset(orOutOfMemory(av_buffer_ref(frame.buf[0])));
        sound.data = reinterpret_cast<const int16_t*>(frame.data[0]);
        return sound;
    }
    configureFor(frame);
    const size_t size =
        static_cast<size_t>(sound.samples) * static_cast<size_t>(sound.channels) * sizeof(int16_t);
    sound.buffer.reset(orOutOfMemory(av_buffer_alloc(size)));
    uint8_t* target = sound.buffer->data;
    sound.samples = checked(swr_convert(resampler_.get(), &target, sound.samples,
                                        const_cast<const uint8_t**>(frame.extended_data), frame.nb_samples));
    sound.data = reinterpret_cast<const int16_t*>(sound.buffer->data);
    return sound;
}

void AudioFrameConverter::configureFor(const AVFrame& frame) {
    if (resampler_ && frame.format == format_ && frame.sample_rate == sample_rate_ &&
        frame.ch_layout.nb_channels == channels_) {
        return;
    }
    AVChannelLayout layout = frame.ch_layout;  // only read, although the parameter is not const
    SwrContext* resampler = nullptr;
    const int result =
        swr_alloc_set_opts2(&resampler, &layout, AV_SAMPLE_FMT_S16, frame.sample_rate, &layout,
                            static_cast<AVSampleFormat>(frame.format), frame.sample_rate, 0, nullptr);
    resampler_.reset(resampler);
    checked(result);
    checked(swr_init(resampler_.get()));
    format_ = frame.format;
    sample_rate_ = frame.sample_rate;
    channels_ = frame.ch_layout.nb_channels;
}

}  // namespace zel_monitor
