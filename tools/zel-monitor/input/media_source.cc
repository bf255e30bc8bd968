#include "input/media_source.h"

#include <algorithm>
#include <cmath>
#include <span>
#include <string_view>
#include <utility>
#include <vector>

#include "cli/file_names.h"
#include "input/container/declared_length.h"
#include "input/container/declared_size.h"
#include "input/container/unread_tail.h"
#include "input/ffmpeg_handles.h"
#include "input/frame_converter.h"
#include "input/polled_input.h"
#include "input/track.h"

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/dict.h>
#include <libavutil/pixdesc.h>
}

namespace zel_monitor {
namespace {

constexpr double kFallbackPictureSeconds = 1.0 / 25;
constexpr size_t kMostPicturesAhead = 4;  ///< decoded pictures that wait for sound, and the reverse
constexpr size_t kMostSoundsAhead = 200;
constexpr size_t kUndecidedPatience = 4;  ///< that many times more while a stream may be taking over

int isInterrupted(void* flag) {
    return static_cast<const std::atomic<bool>*>(flag)->load() ? 1 : 0;
}

double secondsOf(AVRational value) {
    return value.num > 0 && value.den > 0 ? av_q2d(value) : 0.0;
}

/// Whether streams may come and go within the input. Elsewhere all are known from the beginning, and those
/// that are not chosen need not be read.
bool streamsChange(const AVFormatContext& format) {
    const std::string_view name = format.iformat->name;
    return name == "mpegts" || name == "mpeg" || name == "flv";
}

}  // namespace

class MediaSource::Reader {
  public:
    Reader(const std::string& input, const MediaOptions& options) : interrupted_(options.interrupted) {
        video_.wanted = options.video;
        audio_.wanted = options.audio;
        facts_.input = options.label.empty() ? input : options.label;
        try {
            openFormat(input, options);
            openTracks();
        } catch (const FfmpegError& error) {
            throw MediaError(facts_.input, error.what(), error.code());
        }
        gatherFacts(options);
    }

    const MediaFacts& facts() const { return facts_; }
    const std::optional<std::string>& shortfall() const { return shortfall_; }

    MediaCounts counts() const {
        MediaCounts counts = counts_;
        // Formats that open what they read themselves, such as playlists, leave only the packets to count.
        const int64_t bytes_read = format_->pb != nullptr ? format_->pb->bytes_read : 0;
        counts.bytes_read =
            std::max(counts.bytes_read, static_cast<uint64_t>(std::max<int64_t>(bytes_read, 0)));
        return counts;
    }

    std::optional<MediaItem> next() {
        for (;;) {
            if (interrupted()) {
                return std::nullopt;
            }
            if (Track* const track = earliest()) {
                MediaItem item = std::move(track->ready.front());
                track->ready.pop_front();
                track->given_to = timeOf(item);
                ++(std::holds_alternative<Picture>(item) ? counts_.pictures : counts_.sounds);
                return item;
            }
            if (ended_) {
                reportFailure();
                return std::nullopt;
            }
            readPacket();
        }
    }

  private:
    bool interrupted() const { return interrupted_ != nullptr && interrupted_->load(); }

    void openFormat(const std::string& input, const MediaOptions& options) {
        const AVInputFormat* forced = nullptr;
        if (!options.format.empty()) {
            avdevice_register_all();
            forced = av_find_input_format(options.format.c_str());
            if (forced == nullptr) {
                throw FfmpegError(AVERROR_DEMUXER_NOT_FOUND, "unknown input format " + options.format);
            }
        }
        // A name is that of a file whatever colons and patterns are in it.
        const bool is_file = forced == nullptr && input != "-" && namesFile(input);
        if (input == "-") {
            polled_.emplace(PolledInput::standardInput(interrupted_));
        } else if (is_file && mustBePolled(input)) {
            polled_.emplace(PolledInput::file(input, interrupted_));
        }
        AVFormatContext* format = orOutOfMemory(avformat_alloc_context());
        if (interrupted_ != nullptr) {
            format->interrupt_callback = {.callback = &isInterrupted,
                                          .opaque = const_cast<std::atomic<bool>*>(interrupted_)};
        }
        format->correct_ts_overflow = 0;  // it takes a jump back for a wrap; unwrapped() tells the two apart
        if (polled_) {
            format->pb = polled_->context();
        }
        AVDictionary* settings = nullptr;
        if (is_file) {
            checked(av_dict_set(&settings, "pattern_type", "none", 0));
        }
        const std::string url = (is_file ? "file:" : "") + (input == "-" ? "pipe:0" : input);
        // On failure the context is freed and the pointer cleared.
        const int result = avformat_open_input(&format, url.c_str(), forced, &settings);
        av_dict_free(&settings);
        format_.reset(format);
        checked(result);
        declared_size_ = declaredSize(*format_, polled_ ? polled_->beginning() : std::span<const uint8_t>());
        checked(avformat_find_stream_info(format_.get(), nullptr));
    }

    void openTracks() {
        streams_change_ = streamsChange(*format_);
        for (unsigned i = 0; i < format_->nb_streams; ++i) {
            AVStream* const stream = format_->streams[i];
            stream->discard =
                streams_change_ && trackOf(*stream) != nullptr ? AVDISCARD_DEFAULT : AVDISCARD_ALL;
        }
        if (video_.wanted) {
            openBestStream(video_, *format_, -1);
        }
        if (audio_.wanted) {
            openBestStream(audio_, *format_, video_ ? video_.stream->index : -1);
        }
        if (!video_ && !audio_) {
            throw FfmpegError(AVERROR_STREAM_NOT_FOUND, "no video or audio stream to decode");
        }
    }

    /// The track that wants a stream's type; null if none does.
    Track* trackOf(const AVStream& stream) {
        for (Track* const track : {&video_, &audio_}) {
            if (track->wanted && track->type == stream.codecpar->codec_type) {
                return track;
            }
        }
        return nullptr;
    }

    void gatherFacts(const MediaOptions& options) {
        facts_.container = format_->iformat->name;
        if (options.duration > 0) {
            facts_.duration = options.duration;
        }
        if (format_->start_time != AV_NOPTS_VALUE) {
            origin_ = static_cast<double>(format_->start_time) / AV_TIME_BASE;
        }
        std::vector<const AVStream*> chosen;
        for (const Track* const track : {&video_, &audio_}) {
            if (*track) {
                chosen.push_back(track->stream);
            }
        }
        if (const auto length = declaredLength(*format_, origin_.value_or(0.0), chosen)) {
            facts_.duration = length->seconds;
            facts_.duration_estimated = length->estimated;
        }
        if (video_) {
            const char* const pixels = av_get_pix_fmt_name(video_.codec->pix_fmt);
            facts_.video = {.codec = avcodec_get_name(video_.codec->codec_id),
                            .pixel_format = pixels != nullptr ? pixels : "unknown",
                            .width = video_.codec->width,
                            .height = video_.codec->height,
                            .frame_rate = secondsOf(video_.stream->avg_frame_rate),
                            .still = isStill(*video_.stream)};
        }
        if (audio_) {
            facts_.audio = {.codec = avcodec_get_name(audio_.codec->codec_id),
                            .sample_rate = audio_.codec->sample_rate,
                            .channels = audio_.codec->ch_layout.nb_channels};
        }
    }

    /// The track whose first item is due next; null if more must be read to know.
    Track* earliest() {
        const auto waits = [this](const Track& track, const Track& other) {
            // Streams that take over are known for one type a little before the other.
            const size_t patience = other.succession.isUndecided() ? kUndecidedPatience : 1;
            return !ended_ && other && other.ready.empty() &&
                   track.ready.size() <= patience * track.most_ahead;
        };
        if (video_.ready.empty() || audio_.ready.empty()) {
            Track& filled = video_.ready.empty() ? audio_ : video_;
            const Track& other = video_.ready.empty() ? video_ : audio_;
            return filled.ready.empty() || waits(filled, other) ? nullptr : &filled;
        }
        // Where streams were joined the timestamps jump back in one track a little before the other.
        const bool video_jumps = video_.jumpsBack();
        if (video_jumps != audio_.jumpsBack()) {
            return video_jumps ? &audio_ : &video_;
        }
        if (video_jumps) {
            video_.given_to.reset();
            audio_.given_to.reset();
        }
        return timeOf(audio_.ready.front()) < timeOf(video_.ready.front()) ? &audio_ : &video_;
    }

    /// Decodes one packet, which it reads if none waits; at the end of the input empties the decoders.
    void readPacket() {
        for (Track* const track : {&video_, &audio_}) {
            if (track->ready.empty() && decodeBacklog(*track)) {
                return;
            }
        }
        const int result = end_reason_ ? *end_reason_ : av_read_frame(format_.get(), packet_.get());
        if (result < 0) {
            end_reason_ = result;
            end(result);
            return;
        }
        counts_.bytes_read += static_cast<uint64_t>(packet_->size);
        const AVStream& stream = *format_->streams[packet_->stream_index];
        Track* const track = trackOf(stream);
        if (track != nullptr) {
            track->furthest = std::max(track->furthest, packet_->pos);
        }
        if (track != nullptr && track->stream == &stream) {
            track->succession.goesOn(*packet_, dueTime(stream));
            if (track->backlog.empty()) {
                decode(*track, packet_.get());
            } else {
                track->backlog.emplace_back(orOutOfMemory(av_packet_clone(packet_.get())));
            }
        } else if (track != nullptr && streams_change_ && concerns(*track, stream)) {
            track->succession.runs(*packet_, dueTime(stream));
            follow(*track, false);
        }
        av_packet_unref(packet_.get());
    }

    /// Whether `stream` might have been chosen for the track. What runs beside the chosen one is told later.
    bool concerns(const Track& track, const AVStream& stream) {
        const Track& other = &track == &video_ ? audio_ : video_;
        return track || belongTogether(*format_, stream.index, other.stream->index);
    }

    /// Decodes the first packet that waits. False if none does.
    bool decodeBacklog(Track& track) {
        if (track.backlog.empty()) {
            return false;
        }
        const PacketHandle packet = std::move(track.backlog.front());
        track.backlog.pop_front();
        decode(track, packet.get());
        return true;
    }

    /// Nothing more can be read, for the reason `result`. What waits comes first.
    void end(int result) {
        for (Track* const track : {&video_, &audio_}) {
            follow(*track, true);
            if (decodeBacklog(*track)) {
                return;
            }
        }
        if (result == AVERROR_EOF && format_->pb != nullptr && format_->pb->error < 0) {
            result = format_->pb->error;  // demuxers take a read that failed for the end
        }
        if (result != AVERROR_EOF) {
            failure_.emplace(result);
        }
        for (Track* const track : {&video_, &audio_}) {
            if (*track) {
                finishStream(*track);
            }
            if (track->succession.missedAny()) {
                fallShort(track == &video_ ? "some of its pictures are in a stream that was not examined"
                                           : "some of its sound is in a stream that was not examined");
            }
        }
        // Where the container does not know its end, the last packet is as long as the file lasts.
        const bool end_is_known =
            facts_.duration && format_->duration_estimation_method != AVFMT_DURATION_FROM_BITRATE;
        const bool is_short = !failure_ && declared_size_ && endsBefore(*format_->pb, *declared_size_);
        if (is_short || (end_is_known && (video_.corrupt_last || audio_.corrupt_last))) {
            fallShort("it is cut off before its end");
        }
        for (const Track* const track : {&video_, &audio_}) {
            if (*track && !failure_ && hasUnreadTail(*format_, track->type, track->furthest)) {
                fallShort("it goes on with another stream, of which nothing could be read");
            }
        }
        ended_ = true;
    }

    /// Goes on with another stream where that one has taken over from the chosen one.
    void follow(Track& track, bool at_end) {
        while (const auto successor = track.succession.successor(at_end)) {
            while (decodeBacklog(track)) {
            }
            finishStream(track);
            auto packets = track.succession.choose(*successor, track.stream->index);
            try {
                changeStream(track, *format_->streams[*successor]);
            } catch (const FfmpegError& error) {
                fallShort(std::string("it goes on with another stream: ") + error.what());
                avcodec_flush_buffers(track.codec.get());
                return;
            }
            track.backlog = std::move(packets);
        }
    }

    /// Takes what the decoder still holds.
    void finishStream(Track& track) {
        decode(track, nullptr);
        if (track.frames == 0) {
            fallShort(&track == &video_ ? "none of its pictures could be decoded"
                                        : "none of its sound could be decoded");
        }
    }

    /// The first reason is told.
    void fallShort(const std::string& reason) {
        if (!shortfall_) {
            shortfall_ = reason;
        }
    }

    std::optional<double> dueTime(const AVStream& stream) const {
        const int64_t stamp = packet_->dts != AV_NOPTS_VALUE ? packet_->dts : packet_->pts;
        return stamp != AV_NOPTS_VALUE ? std::optional(static_cast<double>(stamp) * av_q2d(stream.time_base))
                                       : std::nullopt;
    }

    /// A null packet empties the decoder.
    void decode(Track& track, const AVPacket* packet) {
        if (packet != nullptr) {
            track.corrupt_last = (packet->flags & AV_PKT_FLAG_CORRUPT) != 0;
        }
        int result = avcodec_send_packet(track.codec.get(), packet);
        if (result < 0) {
            noteDamage(FfmpegError(result));
        }
        while ((result = avcodec_receive_frame(track.codec.get(), frame_.get())) != AVERROR(EAGAIN) &&
               result != AVERROR_EOF) {
            if (result >= 0) {
                take(track);
            } else {
                noteDamage(FfmpegError(result));
            }
        }
    }

    void take(Track& track) {
        try {
            if (frame_->decode_error_flags != 0 || (frame_->flags & AV_FRAME_FLAG_CORRUPT) != 0) {
                noteDamage(FfmpegError(AVERROR_INVALIDDATA));
            }
            if (&track == &video_) {
                Picture picture = pictures_.convert(*frame_);
                picture.duration = pictureDuration();
                picture.time =
                    place(track, picture.duration > 0 ? picture.duration : kFallbackPictureSeconds);
                track.ready.emplace_back(std::move(picture));
                ++track.frames;
            } else if (frame_->nb_samples > 0 && frame_->sample_rate > 0) {
                Sound sound = sounds_.convert(*frame_);
                sound.time = place(track, static_cast<double>(sound.samples) / sound.sample_rate);
                track.ready.emplace_back(std::move(sound));
                ++track.frames;
            }
        } catch (const FfmpegError& error) {
            noteDamage(error);
        }
    }

    double pictureDuration() const {
        if (frame_->pkt_duration > 0) {
            return static_cast<double>(frame_->pkt_duration) * av_q2d(video_.stream->time_base);
        }
        const double rate = secondsOf(video_.stream->avg_frame_rate);
        return rate > 0 ? 1 / rate : 0.0;
    }

    /// Stream time of the frame at hand, which lasts `duration` seconds.
    double place(Track& track, double duration) {
        double time = track.next_time;
        if (frame_->best_effort_timestamp != AV_NOPTS_VALUE) {
            const double stored =
                static_cast<double>(frame_->best_effort_timestamp) * av_q2d(track.stream->time_base);
            time = unwrapped(track, stored - (origin_ ? *origin_ : origin_.emplace(stored)));
        }
        track.next_time = time + duration;
        return time;
    }

    /// Timestamps of few bits begin again at zero; this finds the turn in which `time` goes on from the
    /// track.
    static double unwrapped(const Track& track, double time) {
        const double turn = std::ldexp(av_q2d(track.stream->time_base), track.stream->pts_wrap_bits);
        return time + std::round((track.next_time - time) / turn) * turn;
    }

    void noteDamage(const FfmpegError& damage) {
        ++counts_.damaged;
        last_damage_ = damage;
    }

    /// Throws once if the input broke off or gave nothing.
    void reportFailure() {
        if (std::exchange(failure_reported_, true)) {
            return;
        }
        if (!failure_ && counts_.pictures + counts_.sounds == 0) {
            failure_ =
                last_damage_.value_or(FfmpegError(AVERROR_INVALIDDATA, "nothing in it could be decoded"));
        }
        if (failure_) {
            throw MediaError(facts_.input, failure_->what(), failure_->code());
        }
    }

    const std::atomic<bool>* interrupted_;
    std::optional<PolledInput> polled_;  ///< outlives `format_`
    FormatHandle format_;
    Track video_{.type = AVMEDIA_TYPE_VIDEO, .most_ahead = kMostPicturesAhead};
    Track audio_{.type = AVMEDIA_TYPE_AUDIO, .most_ahead = kMostSoundsAhead};
    bool streams_change_ = false;
    PacketHandle packet_{orOutOfMemory(av_packet_alloc())};
    FrameHandle frame_{orOutOfMemory(av_frame_alloc())};
    PictureConverter pictures_;
    SoundConverter sounds_;
    std::optional<int64_t> declared_size_;
    MediaFacts facts_;
    MediaCounts counts_;
    std::optional<double> origin_;   ///< timestamp, in seconds, that counts as the start of the stream
    std::optional<int> end_reason_;  ///< what ended the reading
    bool ended_ = false;
    std::optional<std::string> shortfall_;
    std::optional<FfmpegError> failure_;      ///< why reading broke off
    std::optional<FfmpegError> last_damage_;  ///< why the last skipped packet or frame was skipped
    bool failure_reported_ = false;
};

MediaSource::MediaSource(const std::string& input, const MediaOptions& options)
    : reader_(std::make_unique<Reader>(input, options)) {}
MediaSource::MediaSource(MediaSource&&) noexcept = default;
MediaSource& MediaSource::operator=(MediaSource&&) noexcept = default;
MediaSource::~MediaSource() = default;

const MediaFacts& MediaSource::facts() const {
    return reader_->facts();
}

MediaCounts MediaSource::counts() const {
    return reader_->counts();
}

std::optional<MediaItem> MediaSource::next() {
    return reader_->next();
}

std::optional<std::string> MediaSource::shortfall() const {
    return reader_->shortfall();
}

}  // namespace zel_monitor
