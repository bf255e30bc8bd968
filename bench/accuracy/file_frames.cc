#include "bench/accuracy/file_frames.h"

#include <memory>
#include <stdexcept>

#include "input/ffmpeg_handles.h"

namespace bench::accuracy {
namespace {

using zel_monitor::checked;
using zel_monitor::orOutOfMemory;

/// The best track of a type in a file.
class Decoder {
  public:
    Decoder(const std::string& file, AVMediaType type) {
        AVFormatContext* opened = nullptr;
        checked(avformat_open_input(&opened, file.c_str(), nullptr, nullptr));
        format_.reset(opened);
        checked(avformat_find_stream_info(opened, nullptr));
        const AVCodec* codec = nullptr;
        index_ = checked(av_find_best_stream(opened, type, -1, -1, &codec, 0));
        codec_.reset(orOutOfMemory(avcodec_alloc_context3(codec)));
        checked(avcodec_parameters_to_context(codec_.get(), opened->streams[index_]->codecpar));
        codec_->pkt_timebase = timeBase();
        codec_->thread_count = 0;
        checked(avcodec_open2(codec_.get(), codec, nullptr));
    }

    AVRational timeBase() const { return format_->streams[index_]->time_base; }

    AVFrame* next() {
        for (;;) {
            const int result = avcodec_receive_frame(codec_.get(), frame_.get());
            if (result == 0) {
                frame_->pts = frame_->best_effort_timestamp;
                if (frame_->ch_layout.order == AV_CHANNEL_ORDER_UNSPEC) {
                    av_channel_layout_default(&frame_->ch_layout, frame_->ch_layout.nb_channels);
                }
                return frame_.get();
            }
            if (result == AVERROR_EOF) {
                return nullptr;
            }
            if (result == AVERROR(EAGAIN)) {
                feed();
            }
        }
    }

  private:
    /// Gives the codec the track's next packet, or the end.
    void feed() {
        while (av_read_frame(format_.get(), packet_.get()) >= 0) {
            const bool ours = packet_->stream_index == index_;
            if (ours) {
                avcodec_send_packet(codec_.get(), packet_.get());  // a refused one is passed over
            }
            av_packet_unref(packet_.get());
            if (ours) {
                return;
            }
        }
        avcodec_send_packet(codec_.get(), nullptr);
    }

    zel_monitor::FormatHandle format_;
    zel_monitor::CodecHandle codec_;
    const zel_monitor::PacketHandle packet_{orOutOfMemory(av_packet_alloc())};
    const zel_monitor::FrameHandle frame_{orOutOfMemory(av_frame_alloc())};
    int index_ = 0;
};

FrameStream framesOf(const std::string& file, AVMediaType type) {
    try {
        const auto decoder = std::make_shared<Decoder>(file, type);
        return {decoder->timeBase(), [decoder] { return decoder->next(); }};
    } catch (const zel_monitor::FfmpegError& error) {
        throw std::runtime_error(file + ": " + error.what());
    }
}

}  // namespace

FrameStream videoFrames(const std::string& file) {
    return framesOf(file, AVMEDIA_TYPE_VIDEO);
}

FrameStream soundFrames(const std::string& file) {
    return framesOf(file, AVMEDIA_TYPE_AUDIO);
}

}  // namespace bench::accuracy
