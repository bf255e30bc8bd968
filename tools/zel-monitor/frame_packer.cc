#include "frame_packer.h"

#include <string_view>

extern "C" {
#include <libavutil/imgutils.h>
#include <libavutil/pixdesc.h>
}

namespace zel_monitor {
namespace {

constexpr int kPlanes = 3;

bool isPlanar420(int format) {
    return format == AV_PIX_FMT_YUV420P || format == AV_PIX_FMT_YUVJ420P || format == AV_PIX_FMT_YUVA420P;
}

/// The I420 format that lets the scaler leave the luma values alone: it takes these sources as full range.
AVPixelFormat targetFormat(AVPixelFormat source) {
    const AVPixFmtDescriptor* const descriptor = av_pix_fmt_desc_get(source);
    const std::string_view name = descriptor != nullptr ? descriptor->name : "";
    return name.starts_with("yuvj") || name.starts_with("gray") || name.starts_with("ya")
               ? AV_PIX_FMT_YUVJ420P
               : AV_PIX_FMT_YUV420P;
}

/// Whether the planes already follow one another without gaps inside one buffer.
bool isPacked(const AVFrame& frame, int width, int height) {
    const ptrdiff_t luma = static_cast<ptrdiff_t>(width) * height;
    const AVBufferRef* const buffer = frame.buf[0];
    return frame.width == width && frame.height == height && frame.linesize[0] == width &&
           frame.linesize[1] == width / 2 && frame.linesize[2] == width / 2 && buffer != nullptr &&
           frame.data[1] == frame.data[0] + luma && frame.data[2] == frame.data[1] + luma / 4 &&
           frame.data[0] >= buffer->data && frame.data[2] + luma / 4 <= buffer->data + buffer->size;
}

}  // namespace

void BufferRelease::operator()(AVBufferRef* buffer) const {
    av_buffer_unref(&buffer);
}

Picture PicturePacker::pack(const AVFrame& frame) {
    const int width = frame.width & ~1;
    const int height = frame.height & ~1;
    if (width == 0 || height == 0) {
        throw FfmpegError(AVERROR_PATCHWELCOME, "picture is smaller than 2x2");
    }
    const AVFrame& source = planar(frame);
    if (isPacked(source, width, height)) {
        return {.time = 0,
                .duration = 0,
                .width = width,
                .height = height,
                .data = source.data[0],
                .buffer = BufferHandle(orOutOfMemory(av_buffer_ref(source.buf[0])))};
    }
    const size_t luma = static_cast<size_t>(width) * static_cast<size_t>(height);
    BufferHandle buffer(newBuffer(luma * 3 / 2));
    uint8_t* target = buffer->data;
    for (int plane = 0; plane < kPlanes; ++plane) {
        const int columns = plane == 0 ? width : width / 2;
        const int rows = plane == 0 ? height : height / 2;
        av_image_copy_plane(target, columns, source.data[plane], source.linesize[plane], columns, rows);
        target += static_cast<ptrdiff_t>(columns) * rows;
    }
    const uint8_t* const data = buffer->data;
    return {.time = 0,
            .duration = 0,
            .width = width,
            .height = height,
            .data = data,
            .buffer = std::move(buffer)};
}

/// `frame` itself, or its content brought to planar 4:2:0 with padded rows, as the scaler needs them.
const AVFrame& PicturePacker::planar(const AVFrame& frame) {
    if (isPlanar420(frame.format)) {
        return frame;
    }
    const auto format = static_cast<AVPixelFormat>(frame.format);
    const AVPixelFormat target = targetFormat(format);
    scaler_.reset(sws_getCachedContext(scaler_.release(), frame.width, frame.height, format, frame.width,
                                       frame.height, target, SWS_BILINEAR | SWS_ACCURATE_RND, nullptr,
                                       nullptr, nullptr));
    if (!scaler_) {
        throw FfmpegError(AVERROR_PATCHWELCOME, "pixel format cannot be converted");
    }
    scaled_.reset(orOutOfMemory(av_frame_alloc()));
    scaled_->format = target;
    scaled_->width = frame.width;
    scaled_->height = frame.height;
    checked(av_frame_get_buffer(scaled_.get(), 0));
    checked(sws_scale(scaler_.get(), frame.data, frame.linesize, 0, frame.height, scaled_->data,
                      scaled_->linesize));
    return *scaled_;
}

AVBufferRef* PicturePacker::newBuffer(size_t size) {
    if (size != pool_size_) {
        pool_.reset(orOutOfMemory(av_buffer_pool_init(size, nullptr)));
        pool_size_ = size;
    }
    return orOutOfMemory(av_buffer_pool_get(pool_.get()));
}

Sound SoundPacker::pack(const AVFrame& frame) {
    Sound sound{.time = 0,
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

void SoundPacker::configureFor(const AVFrame& frame) {
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
