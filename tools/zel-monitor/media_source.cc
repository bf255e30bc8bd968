#include "media_source.h"

#include <algorithm>
#include <cmath>
#include <deque>
#include <string_view>
#include <utility>

#include "ffmpeg_handles.h"
#include "file_names.h"
#include "frame_converter.h"
#include "polled_input.h"

extern "C" {
#include <libavdevice/avdevice.h>
#include <libavutil/dict.h>
#include <libavutil/parseutils.h>
#include <libavutil/pixdesc.h>
}

namespace zel_monitor {
namespace {

constexpr double kFallbackPictureSeconds = 1.0 / 25;
constexpr size_t kMostPicturesAhead = 4;  ///< decoded pictures that wait for sound, and the reverse
constexpr size_t kMostSoundsAhead = 200;
constexpr double kLeastJumpBackSeconds = 0.5;

int isInterrupted(void* flag) {
    return static_cast<const std::atomic<bool>*>(flag)->load() ? 1 : 0;
}

double secondsOf(AVRational value) {
    return value.num > 0 && value.den > 0 ? av_q2d(value) : 0.0;
}

/// One chosen stream: its decoder, and what it gave that nobody has taken yet.
struct Track {
    const AVStream* stream = nullptr;
    CodecHandle codec;
    std::deque<MediaItem> ready;
    size_t most_ahead = 0;
    double next_time = 0;       ///< where a frame without a timestamp is placed: the end of the one before it
    bool corrupt_last = false;  ///< the demuxer could not fill the packet that it gave last

    std::optional<double> given_to;  ///< time of the item that was handed on last

    explicit operator bool() const { return stream != nullptr; }

    /// Whether what is ready begins far before what was handed on; pictures out of order are no jump.
    bool jumpsBack() const { return given_to && timeOf(ready.front()) + kLeastJumpBackSeconds < *given_to; }
};

std::optional<Track> openTrack(AVFormatContext& format, AVMediaType type, size_t most_ahead) {
    const AVCodec* decoder = nullptr;
    const int index = av_find_best_stream(&format, type, -1, -1, &decoder, 0);
    if (index == AVERROR_DECODER_NOT_FOUND) {
        throw FfmpegError(index, type == AVMEDIA_TYPE_VIDEO ? "no decoder for the video stream"
                                                            : "no decoder for the audio stream");
    }
    if (index < 0) {
        return std::nullopt;
    }
    AVStream* const stream = format.streams[index];
    if ((stream->disposition & AV_DISPOSITION_ATTACHED_PIC) != 0) {  // the cover of a sound file
        return std::nullopt;
    }
    Track track;
    track.stream = stream;
    track.most_ahead = most_ahead;
    track.codec.reset(orOutOfMemory(avcodec_alloc_context3(decoder)));
    track.codec->pkt_timebase = stream->time_base;
    track.codec->thread_count = 0;  // as many as there are processors
    checked(avcodec_parameters_to_context(track.codec.get(), stream->codecpar));
    checked(avcodec_open2(track.codec.get(), decoder, nullptr));
    stream->discard = AVDISCARD_DEFAULT;
    return track;
}

/// Matroska states the time of the last end, not how long it is from the first start.
bool countsFromZero(const AVFormatContext& format) {
    return std::string_view(format.iformat->name).starts_with("matroska");
}

/// Whether a WAV or AVI file says that it is longer than it is; libavformat lets that pass. Programs that
/// write into a pipe say nothing there, or the most that fits. Leaves the file near its beginning.
bool isShorterThanItsHeader(const AVFormatContext& format) {
    constexpr uint32_t kLeastUnknown = 0x7fff0000;
    const std::string_view name = format.iformat->name;
    const int64_t length = name == "wav" || name == "avi" ? avio_size(format.pb) : -1;
    if (length < 0 || avio_seek(format.pb, 4, SEEK_SET) < 0) {
        return false;
    }
    const uint32_t size = avio_rl32(format.pb);
    return size < kLeastUnknown && size > 0 && int64_t{size} + 8 > length;
}

/// Where the stream is said to end, in seconds on the input's own clock.
std::optional<double> declaredEnd(const AVStream& stream, bool from_zero) {
    const double start = stream.start_time != AV_NOPTS_VALUE
                             ? static_cast<double>(stream.start_time) * av_q2d(stream.time_base)
                             : 0.0;
    if (stream.duration != AV_NOPTS_VALUE && stream.duration > 0) {
        return start + static_cast<double>(stream.duration) * av_q2d(stream.time_base);
    }
    const AVDictionaryEntry* const entry =
        av_dict_get(stream.metadata, "DURATION", nullptr, AV_DICT_IGNORE_SUFFIX);
    int64_t microseconds = 0;
    if (entry == nullptr || av_parse_time(&microseconds, entry->value, 1) < 0 || microseconds <= 0) {
        return std::nullopt;
    }
    const double length = static_cast<double>(microseconds) / AV_TIME_BASE;
    return from_zero && length > start ? length : start + length;
}

}  // namespace

class MediaSource::Reader {
  public:
    Reader(const std::string& input, const MediaOptions& options) : interrupted_(options.interrupted) {
        facts_.input = options.label.empty() ? input : options.label;
        try {
            openFormat(input, options);
            openTracks(options);
        } catch (const FfmpegError& error) {
            throw MediaError(facts_.input, error.what(), error.code());
        }
        gatherFacts(options);
    }

    const MediaFacts& facts() const { return facts_; }

    MediaCounts counts() const {
        MediaCounts counts = counts_;
        if (format_->pb != nullptr) {  // else counted by packets: the format opens what it reads itself
            counts.bytes_read = static_cast<uint64_t>(std::max<int64_t>(format_->pb->bytes_read, 0));
        }
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
        checked(avformat_find_stream_info(format_.get(), nullptr));
    }

    void openTracks(const MediaOptions& options) {
        for (unsigned i = 0; i < format_->nb_streams; ++i) {
            format_->streams[i]->discard = AVDISCARD_ALL;
        }
        if (options.video) {
            if (auto track = openTrack(*format_, AVMEDIA_TYPE_VIDEO, kMostPicturesAhead)) {
                video_ = std::move(*track);
            }
        }
        if (options.audio) {
            if (auto track = openTrack(*format_, AVMEDIA_TYPE_AUDIO, kMostSoundsAhead)) {
                audio_ = std::move(*track);
            }
        }
        if (!video_ && !audio_) {
            throw FfmpegError(AVERROR_STREAM_NOT_FOUND, "no video or audio stream to decode");
        }
    }

    void gatherFacts(const MediaOptions& options) {
        facts_.container = format_->iformat->name;
        if (options.duration > 0) {
            facts_.duration = options.duration;
        }
        if (format_->start_time != AV_NOPTS_VALUE) {
            origin_ = static_cast<double>(format_->start_time) / AV_TIME_BASE;
        }
        if (format_->duration != AV_NOPTS_VALUE && format_->duration > 0) {
            facts_.duration = declaredDuration();
            facts_.duration_estimated = format_->duration_estimation_method == AVFMT_DURATION_FROM_BITRATE;
        }
        if (video_) {
            const char* const pixels = av_get_pix_fmt_name(video_.codec->pix_fmt);
            facts_.video = {.codec = avcodec_get_name(video_.codec->codec_id),
                            .pixel_format = pixels != nullptr ? pixels : "unknown",
                            .width = video_.codec->width,
                            .height = video_.codec->height,
                            .frame_rate = secondsOf(video_.stream->avg_frame_rate)};
        }
        if (audio_) {
            facts_.audio = {.codec = avcodec_get_name(audio_.codec->codec_id),
                            .sample_rate = audio_.codec->sample_rate,
                            .channels = audio_.codec->ch_layout.nb_channels};
        }
    }

    /// Seconds from the first timestamp to the declared end. The container speaks for streams too that are
    /// left out here; then the chosen ones are asked, if all of them have an answer.
    double declaredDuration() const {
        const double start = origin_.value_or(0.0);
        const bool from_zero = countsFromZero(*format_);
        double end = 0.0;
        bool all_known = format_->nb_streams > (video_ ? 1U : 0U) + (audio_ ? 1U : 0U);
        for (const Track* const track : {&video_, &audio_}) {
            if (*track) {
                const auto track_end = declaredEnd(*track->stream, from_zero);
                all_known = all_known && track_end;
                end = std::max(end, track_end.value_or(0.0));
            }
        }
        if (all_known && end > start) {
            return end - start;
        }
        const double whole = static_cast<double>(format_->duration) / AV_TIME_BASE;
        return from_zero && whole > start ? whole - start : whole;
    }

    /// The track whose first item is due next; null if more must be read to know.
    Track* earliest() {
        const auto waits = [this](const Track& track, const Track& other) {
            return !ended_ && other && other.ready.empty() && track.ready.size() <= track.most_ahead;
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

    /// Reads one packet and decodes it; at the end of the input empties the decoders.
    void readPacket() {
        int result = av_read_frame(format_.get(), packet_.get());
        if (result < 0) {
            if (result == AVERROR_EOF && format_->pb != nullptr && format_->pb->error < 0) {
                result = format_->pb->error;  // demuxers take a read that failed for the end
            }
            if (result != AVERROR_EOF) {
                failure_.emplace(result);
            }
            for (Track* const track : {&video_, &audio_}) {
                if (*track) {
                    decode(*track, nullptr);
                }
            }
            // Where the container does not know its end, the last packet is as long as the file lasts.
            const bool end_is_known = facts_.duration && !facts_.duration_estimated;
            counts_.cut_off = (end_is_known && (video_.corrupt_last || audio_.corrupt_last)) ||
                              isShorterThanItsHeader(*format_);
            ended_ = true;
            return;
        }
        counts_.bytes_read += static_cast<uint64_t>(packet_->size);
        for (Track* const track : {&video_, &audio_}) {
            if (*track && track->stream->index == packet_->stream_index) {
                track->corrupt_last = (packet_->flags & AV_PKT_FLAG_CORRUPT) != 0;
                decode(*track, packet_.get());
            }
        }
        av_packet_unref(packet_.get());
    }

    /// A null packet empties the decoder.
    void decode(Track& track, const AVPacket* packet) {
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
            } else if (frame_->nb_samples > 0 && frame_->sample_rate > 0) {
                Sound sound = sounds_.convert(*frame_);
                sound.time = place(track, static_cast<double>(sound.samples) / sound.sample_rate);
                track.ready.emplace_back(std::move(sound));
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
    Track video_;
    Track audio_;
    PacketHandle packet_{orOutOfMemory(av_packet_alloc())};
    FrameHandle frame_{orOutOfMemory(av_frame_alloc())};
    PictureConverter pictures_;
    SoundConverter sounds_;
    MediaFacts facts_;
    MediaCounts counts_;
    std::optional<double> origin_;  ///< timestamp, in seconds, that counts as the start of the stream
    bool ended_ = false;
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

}  // namespace zel_monitor
