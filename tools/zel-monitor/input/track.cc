#include "input/track.h"

#include <algorithm>
#include <cmath>
#include <utility>

#include "input/media_type.h"
#include "input/stream_facts.h"

namespace zel_monitor {
namespace {

CodecHandle openDecoder(StreamTrack track, const AVStream& stream, int threads, PacketLedger& ledger) {
    const AVCodec* const decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (decoder == nullptr) {
        throw noDecoderFor(track);
    }
    CodecHandle codec(orOutOfMemory(avcodec_alloc_context3(decoder)));
    codec->pkt_timebase = stream.time_base;
    codec->thread_count = threads;
    codec->err_recognition |= AV_EF_CRCCHECK;
    listenTo(*codec, ledger);
    checked(avcodec_parameters_to_context(codec.get(), stream.codecpar));
    checked(avcodec_open2(codec.get(), decoder, nullptr));
    return codec;
}

double secondsOf(int64_t ticks, const AVStream& stream) {
    return static_cast<double>(ticks) * av_q2d(stream.time_base);
}

}  // namespace

Track::Track(StreamTrack track, const AVFormatContext& format, const AVStream& stream, int threads,
             bool key_frames_only, StreamOrigin& origin, TrackListener& listener)
    : track_(track),
      stream_(&stream),
      // Each key frame is decoded by itself, so that threads would only wait for one another.
      threads_(key_frames_only && track == StreamTrack::kVideo ? 1 : threads),
      origin_(origin),
      listener_(listener),
      ledger_(natureOf(format)) {
    if (key_frames_only && track == StreamTrack::kVideo) {
        key_frames_.emplace();
    }
    open();
}

void Track::open() {
    codec_ = openDecoder(track_, *stream_, threads_, ledger_);
    has_threads_ = has_threads_ || codec_->active_thread_type != 0;
}

void Track::decode(const AVPacket& packet, const AVStream& stream,
                   const std::vector<ComplaintReason>& complaints) {
    if (&stream != stream_) {
        finish();
        stream_ = &stream;
        gave_anything_ = false;
        codec_.reset();
        try {
            open();
        } catch (const FfmpegError& reason) {
            listener_.onStreamRefused(reason);
        }
    }
    if (codec_ && key_frames_) {
        decodeKeyFrame(key_frames_->take(packet, stream.time_base, complaints, frameRateOf(stream)));
    } else if (codec_) {
        send(packet, complaints);
    }
}

void Track::send(const AVPacket& packet, const std::vector<ComplaintReason>& complaints) {
    const auto time_s = origin_.isKnown() ? meaningOf(packet.pts) : std::nullopt;
    codec_->reordered_opaque = ledger_.send(time_s.value_or(next_time_s_),
                                            secondsOf(std::max<int64_t>(packet.duration, 0), *stream_),
                                            (packet.flags & AV_PKT_FLAG_KEY) != 0);
    for (const ComplaintReason reason : complaints) {
        ledger_.complain(reason);
    }
    feed(&packet);
}

/// By itself: it comes out at once, and the decoder does not look for what was left out before it.
void Track::decodeKeyFrame(KeyFrames::Ready ready) {
    if (ready.packet) {
        send(*ready.packet, ready.complaints);
        feed(nullptr);
        avcodec_flush_buffers(codec_.get());
    }
}

void Track::finish() {
    if (codec_) {
        if (key_frames_) {
            decodeKeyFrame(key_frames_->finish());
        }
        feed(nullptr);
        listener_.onStreamEnd(track_, gave_anything_);
    }
}

/// A null packet empties the decoder.
void Track::feed(const AVPacket* packet) {
    int result = avcodec_send_packet(codec_.get(), packet);
    if (result < 0) {
        refused(FfmpegError(result));
    }
    while ((result = avcodec_receive_frame(codec_.get(), frame_.get())) != AVERROR(EAGAIN) &&
           result != AVERROR_EOF) {
        if (result >= 0) {
            take(*frame_);
        } else {
            refused(FfmpegError(result));
        }
    }
}

void Track::refused(const FfmpegError& reason) {
    ledger_.refused();
    listener_.onRefusal(reason);
}

void Track::take(const AVFrame& frame) {
    try {
        if (track_ == StreamTrack::kVideo) {
            VideoFrame converted = frames_.convert(frame);
            converted.duration = videoDuration(frame);
            converted.time = place(frame, durationOf(converted));
            give(frame, std::move(converted));
        } else if (frame.nb_samples > 0 && frame.sample_rate > 0) {
            AudioFrame sound = sounds_.convert(frame);
            sound.time = place(frame, durationOf(sound));
            give(frame, std::move(sound));
        }
    } catch (const FfmpegError& error) {
        refused(error);
    }
}

void Track::give(const AVFrame& frame, MediaItem item) {
    const bool is_damaged = frame.decode_error_flags != 0 || (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0;
    std::visit(
        [&](auto& content) {
            content.notes.place = frame.pkt_pos;
            content.notes.complaints =
                ledger_.receive(frame.reordered_opaque, content.time, durationOf(content), is_damaged);
        },
        item);
    listener_.onItem(track_, std::move(item));
    gave_anything_ = true;
}

double Track::videoDuration(const AVFrame& frame) const {
    if (frame.pkt_duration > 0) {
        return secondsOf(frame.pkt_duration, *stream_);
    }
    const double rate = frameRateOf(*stream_);
    return rate > 0 ? 1 / rate : 0.0;
}

/// When it is that a timestamp of the stream stands for.
std::optional<double> Track::meaningOf(int64_t stamp) {
    if (stamp == AV_NOPTS_VALUE) {
        return std::nullopt;
    }
    const double turn_s = std::ldexp(av_q2d(stream_->time_base), stream_->pts_wrap_bits);
    return ZEL::StreamClock::unwrapped(origin_.since(secondsOf(stamp, *stream_)), next_time_s_, turn_s);
}

/// When the frame begins, which lasts `duration_s`.
double Track::place(const AVFrame& frame, double duration_s) {
    const double time_s = meaningOf(frame.best_effort_timestamp).value_or(next_time_s_);
    next_time_s_ = time_s + duration_s;
    return time_s;
}

}  // namespace zel_monitor
