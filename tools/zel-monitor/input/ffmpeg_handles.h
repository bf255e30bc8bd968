#ifndef ZEL_TOOLS_INPUT_FFMPEG_HANDLES_H_
#define ZEL_TOOLS_INPUT_FFMPEG_HANDLES_H_

#include <array>
#include <memory>
#include <new>
#include <stdexcept>
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

/// What FFmpeg answered, with its own words for the code or with ours.
class FfmpegError : public std::runtime_error {
  public:
    explicit FfmpegError(int code) : FfmpegError(code, wordsFor(code)) {}
    FfmpegError(int code, const std::string& reason) : std::runtime_error(reason), code_(code) {}

    int code() const { return code_; }

  private:
    static std::string wordsFor(int code) {
        std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
        av_strerror(code, text.data(), text.size());
        return text.data();
    }

    int code_;
};

/// Hands on `result`, or throws if it is an error code.
inline int checked(int result) {
    if (result < 0) {
        throw FfmpegError(result);
    }
    return result;
}

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_FFMPEG_HANDLES_H_
