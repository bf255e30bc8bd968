#include "report/thumbnail.h"

#include <algorithm>
#include <array>
#include <new>
#include <vector>

extern "C" {
#include <libswscale/swscale.h>

#include <libavcodec/avcodec.h>
#include <libavutil/base64.h>
}

namespace zel_monitor {
namespace {

constexpr int kQuality = 4;  // the encoder's quantiser scale: 2 is best

struct EncoderRelease {
    void operator()(AVCodecContext* encoder) const { avcodec_free_context(&encoder); }
};
struct PacketRelease {
    void operator()(AVPacket* packet) const { av_packet_free(&packet); }
};

/// For FFmpeg's allocation functions, which answer null when memory is short.
template <typename Handle>
Handle held(typename Handle::pointer object) {
    if (object == nullptr) {
        throw std::bad_alloc();
    }
    return Handle(object);
}

/// One side of the small frame, even.
int scaled(int side, int longest, int wanted) {
    return std::max(side * std::min(wanted, longest) / longest, 2) & ~1;
}

}  // namespace

void SmallFrameRelease::operator()(AVFrame* frame) const {
    av_frame_free(&frame);
}

void Thumbnailer::ScalerRelease::operator()(SwsContext* scaler) const {
    sws_freeContext(scaler);
}

SmallFrame Thumbnailer::shrink(const ZELAlgo::ZELVideoPlanes& planes) {
    const auto width = static_cast<int>(planes.width);
    const auto height = static_cast<int>(planes.height);
    const int longest = std::max(width, height);
    auto small = held<SmallFrame>(av_frame_alloc());
    small->format = AV_PIX_FMT_YUVJ420P;
    small->width = scaled(width, longest, longest_side_);
    small->height = scaled(height, longest, longest_side_);
    scaler_.reset(sws_getCachedContext(scaler_.release(), width, height, AV_PIX_FMT_YUV420P, small->width,
                                       small->height, AV_PIX_FMT_YUVJ420P, SWS_AREA, nullptr, nullptr,
                                       nullptr));
    if (!scaler_ || av_frame_get_buffer(small.get(), 0) < 0) {
        return nullptr;
    }
    std::array<int, 3> strides{};
    std::transform(planes.stride, planes.stride + 3, strides.begin(),
                   [](size_t stride) { return static_cast<int>(stride); });
    sws_scale(scaler_.get(), planes.data, strides.data(), 0, height, small->data, small->linesize);
    return small;
}

std::string jpegOf(const AVFrame& small) {
    const AVCodec* const encoder = avcodec_find_encoder(AV_CODEC_ID_MJPEG);
    if (encoder == nullptr) {
        return "";
    }
    const auto codec = held<std::unique_ptr<AVCodecContext, EncoderRelease>>(avcodec_alloc_context3(encoder));
    codec->width = small.width;
    codec->height = small.height;
    codec->pix_fmt = AV_PIX_FMT_YUVJ420P;
    codec->time_base = {1, 1};
    codec->thread_count = 1;
    codec->flags |= AV_CODEC_FLAG_QSCALE;
    codec->global_quality = FF_QP2LAMBDA * kQuality;
    const auto jpeg = held<std::unique_ptr<AVPacket, PacketRelease>>(av_packet_alloc());
    const bool made = avcodec_open2(codec.get(), encoder, nullptr) >= 0 &&
                      avcodec_send_frame(codec.get(), &small) >= 0 &&
                      avcodec_receive_packet(codec.get(), jpeg.get()) >= 0;
    return made ? std::string(reinterpret_cast<const char*>(jpeg->data), static_cast<size_t>(jpeg->size))
                : "";
}

std::string jpegAddress(const AVFrame& small) {
    const std::string jpeg = jpegOf(small);
    if (jpeg.empty()) {
        return "";
    }
    std::vector<char> text(AV_BASE64_SIZE(jpeg.size()));
    av_base64_encode(text.data(), static_cast<int>(text.size()),
                     reinterpret_cast<const uint8_t*>(jpeg.data()), static_cast<int>(jpeg.size()));
    return std::string("data:image/jpeg;base64,") + text.data();
}

}  // namespace zel_monitor
