#ifndef ZEL_TOOLS_FFMPEG_HANDLES_H_
#define ZEL_TOOLS_FFMPEG_HANDLES_H_

#include <array>
#include <memory>
#include <new>
#include <string>

extern "C" {
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>

#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace zel_monitor {

/// Frees an FFmpeg object through the function that takes the address of its pointer.
template <auto free>
struct FreeByAddress {
    template <typename T>
    void operator()(T* object) const {
        free(&object);
    }
};

using FormatHandle = std::unique_ptr<AVFormatContext, FreeByAddress<&avformat_close_input>>;
using CodecHandle = std::unique_ptr<AVCodecContext, FreeByAddress<&avcodec_free_context>>;
using FrameHandle = std::unique_ptr<AVFrame, FreeByAddress<&av_frame_free>>;
using PacketHandle = std::unique_ptr<AVPacket, FreeByAddress<&av_packet_free>>;
using ResamplerHandle = std::unique_ptr<SwrContext, FreeByAddress<&swr_free>>;
/// Buffers that are still in use outlive their pool.
using PoolHandle = std::unique_ptr<AVBufferPool, FreeByAddress<&av_buffer_pool_uninit>>;

struct FreeScaler {
    void operator()(SwsContext* scaler) const { sws_freeContext(scaler); }
};
using ScalerHandle = std::unique_ptr<SwsContext, FreeScaler>;

/// For FFmpeg's allocation functions, which answer null when memory is short.
template <typename T>
T* orOutOfMemory(T* object) {
    if (object == nullptr) {
        throw std::bad_alloc();
    }
    return object;
}

/// FFmpeg's own words for one of its error codes.
inline std::string reasonOf(int error) {
    std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
    av_strerror(error, text.data(), text.size());
    return text.data();
}

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_FFMPEG_HANDLES_H_
