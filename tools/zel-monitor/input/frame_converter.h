#ifndef ZEL_TOOLS_INPUT_FRAME_CONVERTER_H_
#define ZEL_TOOLS_INPUT_FRAME_CONVERTER_H_

#include "input/ffmpeg_handles.h"
#include "input/media_item.h"

namespace zel_monitor {

/// Turns decoded video frames of any format and size into I420.
///
/// Stored luma values are kept: detectors are tuned to what a decoder hands to a player, so full range stays
/// full range and limited stays limited, and only deeper samples are brought to 8 bits. RGB becomes
/// limited-range BT.601. An odd last column or row is left out, because width * height * 3 / 2 bytes, as the
/// library takes a frame, cannot hold the chroma that belongs to it.
class VideoFrameConverter {
  public:
    /// A frame without its times. A frame that already is what is wanted is shared, not copied. Throws
    /// FfmpegError for a frame that cannot be converted.
    VideoFrame convert(const AVFrame& frame);

  private:
    FrameHandle scaled(const AVFrame& frame);
    AVBufferRef* newBuffer(size_t size);

    ScalerHandle scaler_;
    PoolHandle pool_;
    size_t pool_size_ = 0;
};

/// Turns decoded audio frames into interleaved 16-bit samples of the same rate and channels.
class AudioFrameConverter {
  public:
    /// A frame without its time. Frames that are 16-bit interleaved already are shared, not copied. Throws
    /// FfmpegError for a frame that cannot be converted.
    AudioFrame convert(const AVFrame& frame);

  private:
    void configureFor(const AVFrame& frame);

    ResamplerHandle resampler_;
    int format_ = AV_SAMPLE_FMT_NONE;
    int sample_rate_ = 0;
    int channels_ = 0;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_FRAME_CONVERTER_H_
