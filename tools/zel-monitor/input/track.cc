#include "input/track.h"

#include <cmath>
#include <utility>

#include "input/media_type.h"
#include "input/stream_facts.h"

namespace zel_monitor {
namespace {

CodecHandle openDecoder(StreamTrack track, const AVStream& stream, int threads) {
    const AVCodec* const decoder = avcodec_find_decoder(stream.codecpar->codec_id);
    if (decoder == nullptr) {
        throw noDecoderFor(track);
    }
    CodecHandle codec(orOutOfMemory(avcodec_alloc_context3(decoder)));
    codec->pkt_timebase = stream.time_base;
    codec->thread_count = threads;
    checked(avcodec_parameters_to_context(codec.get(), stream.codecpar));
    checked(avcodec_open2(codec.get(), decoder, nullptr));
    return codec;
}

double secondsOf(int64_t ticks, const AVStream& stream) {
    return static_cast<double>(ticks) * av_q2d(stream.time_base);
}

}  // namespace

Track::Track(StreamTrack track, const AVStream& stream, int threads, StreamOrigin& origin,
             TrackListener& listener)
    : track_(track),
      stream_(&stream),
      threads_(threads),
      origin_(origin),
      listener_(listener),
      codec_(openDecoder(track, stream, threads)) {}

void Track::decode(const AVPacket& packet, const AVStream& stream) {
    if (&stream != stream_) {
        finish();
        stream_ = &stream;
        gave_anything_ = false;
        codec_.reset();
        try {
            codec_ = openDecoder(track_, stream, threads_);
        } catch (const FfmpegError& reason) {
            listener_.onStreamRefused(reason);
        }
    }
    if (codec_) {
        feed(&packet);
    }
}

void Track::finish() {
    if (codec_) {
        feed(nullptr);
        listener_.onStreamEnd(track_, gave_anything_);
    }
}

/// A null packet empties the decoder.
void Track::feed(const AVPacket* packet) {
    int result = avcodec_send_packet(codec_.get(), packet);
    if (result < 0) {
        listener_.onDamage(FfmpegError(result));
    }
    while ((result = avcodec_receive_frame(codec_.get(), frame_.get())) != AVERROR(EAGAIN) &&
           result != AVERROR_EOF) {
        if (result >= 0) {
            take(*frame_);
        } else {
            listener_.onDamage(FfmpegError(result));
        }
    }
}

void Track::take(const AVFrame& frame) {
    try {
        if (frame.decode_error_flags != 0 || (frame.flags & AV_FRAME_FLAG_CORRUPT) != 0) {
            listener_.onDamage(FfmpegError(AVERROR_INVALIDDATA));
        }
        if (track_ == StreamTrack::kVideo) {
            VideoFrame converted = frames_.convert(frame);
            converted.duration = videoDuration(frame);
            converted.time = place(frame, durationOf(converted));
            listener_.onItem(track_, std::move(converted));
            gave_anything_ = true;
        } else if (frame.nb_samples > 0 && frame.sample_rate > 0) {
            AudioFrame sound = sounds_.convert(frame);
            sound.time = place(frame, durationOf(sound));
            listener_.onItem(track_, std::move(sound));
            gave_anything_ = true;
        }
    } catch (const FfmpegError& error) {
        listener_.onDamage(error);
    }
}

double Track::videoDuration(const AVFrame& frame) const {
    if (frame.pkt_duration > 0) {
        return secondsOf(frame.pkt_duration, *stream_);
    }
    const double rate = frameRateOf(*stream_);
    return rate > 0 ? 1 / rate : 0.0;
}

/// When the frame begins, which lasts `duration_s`.
double Track::place(const AVFrame& frame, double duration_s) {
    double time_s = next_time_s_;
    if (frame.best_effort_timestamp != AV_NOPTS_VALUE) {
        const double turn_s = std::ldexp(av_q2d(stream_->time_base), stream_->pts_wrap_bits);
        time_s = ZEL::StreamClock::unwrapped(origin_.since(secondsOf(frame.best_effort_timestamp, *stream_)),
                                             next_time_s_, turn_s);
    }
    next_time_s_ = time_s + duration_s;
    return time_s;
}

}  // namespace zel_monitor
