// Plays files one after another, without showing them, and watches itself doing so:
//
//     embedded_player FILE...
//
// Each playback has a session of its own, which sees every decoded frame of video and audio. Its verdicts
// are printed as they come, once a second its report, with the player's own numbers in it. At the end the
// health assessments sum up what the playbacks were like. FFmpeg decodes.
#include <zel/player.h>

#include <algorithm>
#include <array>
#include <chrono>
#include <cstdio>
#include <functional>
#include <limits>
#include <stdexcept>
#include <thread>
#include <utility>

extern "C" {
#include <libswresample/swresample.h>
#include <libswscale/swscale.h>

#include <libavcodec/avcodec.h>
#include <libavformat/avformat.h>
}

namespace {

using Clock = std::chrono::steady_clock;
using Seconds = std::chrono::duration<double>;

std::string inMilliseconds(Clock::duration time) {
    return std::to_string(Seconds(time).count() * 1000.0);
}

// ---- decoding, as any player has it ----

struct Free {
    void operator()(AVFormatContext* object) const { avformat_close_input(&object); }
    void operator()(AVCodecContext* object) const { avcodec_free_context(&object); }
    void operator()(AVPacket* object) const { av_packet_free(&object); }
    void operator()(AVFrame* object) const { av_frame_free(&object); }
    void operator()(SwsContext* object) const { sws_freeContext(object); }
    void operator()(SwrContext* object) const { swr_free(&object); }
};
template <typename Object>
using Handle = std::unique_ptr<Object, Free>;

class MediaError : public std::runtime_error {
  public:
    explicit MediaError(int error_code) : std::runtime_error(reason(error_code)), code(error_code) {}
    const int code;  // FFmpeg's, negative

  private:
    static std::string reason(int error_code) {
        std::array<char, AV_ERROR_MAX_STRING_SIZE> text{};
        av_strerror(error_code, text.data(), text.size());
        return text.data();
    }
};

int orThrow(int result) {
    if (result < 0) {
        throw MediaError(result);
    }
    return result;
}

/// The frames of a file, in the order in which they are stored.
class Media {
  public:
    using Sink = std::function<void(AVFrame& frame, AVMediaType type, double seconds)>;

    explicit Media(const std::string& path) {
        AVFormatContext* opened = nullptr;
        orThrow(avformat_open_input(&opened, path.c_str(), nullptr, nullptr));
        format_.reset(opened);
        orThrow(avformat_find_stream_info(opened, nullptr));
        for (const AVMediaType type : {AVMEDIA_TYPE_VIDEO, AVMEDIA_TYPE_AUDIO}) {
            const AVCodec* codec = nullptr;
            const int stream = av_find_best_stream(opened, type, -1, -1, &codec, 0);
            if (stream >= 0 && (opened->streams[stream]->disposition & AV_DISPOSITION_ATTACHED_PIC) == 0) {
                open(stream, codec);
                has_video_ = has_video_ || type == AVMEDIA_TYPE_VIDEO;
            }
        }
        if (tracks_.empty()) {
            throw MediaError(AVERROR_STREAM_NOT_FOUND);
        }
    }

    void decode(const Sink& sink) {
        const Handle<AVPacket> packet(av_packet_alloc());
        int error = 0;
        while ((error = av_read_frame(format_.get(), packet.get())) >= 0) {
            const auto track = tracks_.find(packet->stream_index);
            if (track != tracks_.end()) {
                decode(*track, packet.get(), sink);
            }
            av_packet_unref(packet.get());
        }
        for (auto& track : tracks_) {
            decode(track, nullptr, sink);  // what is still inside
        }
        if (error != AVERROR_EOF) {
            throw MediaError(error);
        }
    }

    bool hasVideo() const { return has_video_; }
    int64_t bytesRead() const { return format_->pb != nullptr ? format_->pb->bytes_read : 0; }

  private:
    struct Track {
        Handle<AVCodecContext> decoder;
        double next_seconds = 0;  // where a frame without a time of its own goes
    };
    using Tracks = std::map<int, Track>;  // by stream

    void open(int stream, const AVCodec* codec) {
        Handle<AVCodecContext> decoder(avcodec_alloc_context3(codec));
        orThrow(avcodec_parameters_to_context(decoder.get(), format_->streams[stream]->codecpar));
        orThrow(avcodec_open2(decoder.get(), codec, nullptr));
        tracks_[stream].decoder = std::move(decoder);
    }

    void decode(Tracks::value_type& numbered, const AVPacket* packet, const Sink& sink) {
        auto& [number, track] = numbered;
        AVStream& stream = *format_->streams[number];
        if (avcodec_send_packet(track.decoder.get(), packet) < 0) {
            return;  // damaged: goes on with the next
        }
        while (avcodec_receive_frame(track.decoder.get(), frame_.get()) >= 0) {
            const int64_t time = frame_->best_effort_timestamp;
            const double seconds = time != AV_NOPTS_VALUE
                                       ? static_cast<double>(time) * av_q2d(stream.time_base)
                                       : track.next_seconds;
            track.next_seconds = seconds + duration(stream);
            sink(*frame_, track.decoder->codec_type, seconds);
        }
    }

    /// Seconds that the frame at hand lasts.
    double duration(AVStream& stream) {
        if (frame_->pkt_duration > 0) {
            return static_cast<double>(frame_->pkt_duration) * av_q2d(stream.time_base);
        }
        const AVRational rate = frame_->nb_samples > 0
                                    ? AVRational{frame_->sample_rate, frame_->nb_samples}
                                    : av_guess_frame_rate(format_.get(), &stream, frame_.get());
        return rate.num > 0 ? av_q2d(av_inv_q(rate)) : 0.04;
    }

    Handle<AVFormatContext> format_;
    Tracks tracks_;
    bool has_video_ = false;
    const Handle<AVFrame> frame_{av_frame_alloc()};
};

/// Makes the library's frames of FFmpeg's.
class Converter {
  public:
    /// I420 of even width and height. Throws MediaError, as audio() does, for what cannot be converted.
    std::shared_ptr<ZEL::VideoFrame> video(AVFrame& frame) {
        constexpr uint32_t kI420 = 2;
        const int width = frame.width & ~1;
        const int height = frame.height & ~1;
        if (width < 2 || height < 2) {
            throw MediaError(AVERROR_INVALIDDATA);
        }
        scaler_.reset(sws_getCachedContext(scaler_.release(), width, height,
                                           static_cast<AVPixelFormat>(frame.format), width, height,
                                           AV_PIX_FMT_YUV420P, SWS_BILINEAR, nullptr, nullptr, nullptr));
        if (scaler_ == nullptr) {
            throw MediaError(AVERROR_INVALIDDATA);
        }
        const auto luma = static_cast<size_t>(width) * static_cast<size_t>(height);
        auto data = std::make_unique<uint8_t[]>(luma * 3 / 2);
        const std::array<uint8_t*, 4> planes = {data.get(), data.get() + luma, data.get() + luma * 5 / 4};
        const std::array<int, 4> strides = {width, width / 2, width / 2};
        orThrow(
            sws_scale(scaler_.get(), frame.data, frame.linesize, 0, height, planes.data(), strides.data()));
        return std::make_shared<ZEL::VideoFrame>(kI420, std::move(data), width, height);
    }

    /// Interleaved 16-bit samples.
    std::shared_ptr<ZEL::AudioFrame> audio(AVFrame& frame) {
        const int channels = frame.ch_layout.nb_channels;
        const std::array<int, 3> kind = {frame.format, frame.sample_rate, channels};
        if (kind != resampled_kind_) {  // at first, and when it changes inside a file
            SwrContext* made = nullptr;
            orThrow(swr_alloc_set_opts2(&made, &frame.ch_layout, AV_SAMPLE_FMT_S16, frame.sample_rate,
                                        &frame.ch_layout, static_cast<AVSampleFormat>(frame.format),
                                        frame.sample_rate, 0, nullptr));
            resampler_.reset(made);
            orThrow(swr_init(made));
            resampled_kind_ = kind;
        }
        auto data = std::make_unique<int16_t[]>(static_cast<size_t>(frame.nb_samples) *
                                                static_cast<size_t>(channels));
        auto* const out = reinterpret_cast<uint8_t*>(data.get());
        const int samples =
            orThrow(swr_convert(resampler_.get(), const_cast<uint8_t**>(&out), frame.nb_samples,
                                const_cast<const uint8_t**>(frame.extended_data), frame.nb_samples));
        return std::make_shared<ZEL::AudioFrame>(0, std::move(data), static_cast<uint32_t>(samples),
                                                 frame.sample_rate, channels);
    }

  private:
    Handle<SwsContext> scaler_;
    Handle<SwrContext> resampler_;
    std::array<int, 3> resampled_kind_{};  // sample format, rate and channels
};

// ---- watching ----

/// One line, whole, whichever thread prints.
void print(const std::string& what, const ReportMap& fields) {
    std::string line = what + ":";
    for (const auto& [key, value] : fields) {
        line.append(" ").append(key).append("=").append(value);
    }
    std::puts(line.c_str());
}

/// Prints every verdict that a session publishes. Called on the message centre's thread.
class ResultPrinter : public ZEL::CObject {
  public:
    static std::shared_ptr<ResultPrinter> listenTo(ZEL::MessageCenter& center) {
        auto printer = std::make_shared<ResultPrinter>();
        center.registerListener("ZELMsgVideoFrameResult", printer,
                                [](const auto& message) { print("video", message->payload()); });
        center.registerListener("ZELMsgAudioFrameResult", printer,
                                [](const auto& message) { print("audio", message->payload()); });
        return printer;
    }
};

/// Stands for a player's remote configuration: nothing is switched.
class Switches : public ZEL::ConfigAdapter {
  public:
    bool getBool(const std::string& /*key*/, bool default_value) override { return default_value; }
    int32_t getInt(const std::string& /*key*/, int32_t default_value) override { return default_value; }
};

/// Plays one file at its own pace and reports how that went.
class Playback {
  public:
    Playback(ZEL::ZELManager& manager, uint64_t source)
        : manager_(manager),
          source_(source),
          session_(std::make_shared<ZEL::ZELSession>(manager.getMessageCenter())) {
        ZELAlgo::ZELAlgoConfig config;
        config.longtime_period_s = 1.0;
        session_->setAlgoConfig(config);
        session_->setPublishFrameResults(true);
        session_->start();
        manager_.registerSession(session_);
        heartbeat();
    }

    ~Playback() {
        session_->stop();
        manager_.unregisterSession(session_->getSessionId());
    }
    Playback(const Playback&) = delete;
    Playback& operator=(const Playback&) = delete;

    void run(const std::string& path) {
        int error_code = 0;
        try {
            Media media(path);
            media.decode([&](AVFrame& frame, AVMediaType type, double seconds) {
                decoding_ms_.push_back(
                    static_cast<float>(Seconds(Clock::now() - idle_until_).count() * 1000.0));
                // Sound goes along with the video, and leads only if there are none.
                const bool leads = type == AVMEDIA_TYPE_VIDEO || !media.hasVideo();
                if (leads) {
                    waitUntil(seconds);
                }
                if (type == AVMEDIA_TYPE_VIDEO) {
                    session_->feedVideoFrame(converter_.video(frame), 0);
                } else {
                    session_->feedAudioFrame(converter_.audio(frame), 0);
                }
                if (leads) {
                    first_shown_ = std::min(first_shown_, Clock::now());
                }
                if (Clock::now() - last_report_ >= std::chrono::seconds(1)) {
                    reportPeriodic(media.bytesRead());
                }
                idle_until_ = Clock::now();
            });
            std::this_thread::sleep_for(kLastFrame);  // stopping drops what is not examined yet
            reportPeriodic(media.bytesRead());
        } catch (const MediaError& error) {
            std::fprintf(stderr, "%s: %s\n", path.c_str(), error.what());
            error_code = error.code;
        }
        reportEnd(error_code);
    }

  private:
    /// Sleeps until a frame of this time is due: as long after the one before as it lies behind it in the
    /// file, and at once after a jump. Being late by more than a tenth of a second is a stall, after which
    /// playback goes on from there.
    void waitUntil(double seconds) {
        const Clock::time_point now = Clock::now();
        const double step = seconds - std::exchange(position_, seconds);
        const bool jump = step < 0 || step > kLongestStep;
        due_ = jump ? now : due_ + std::chrono::duration_cast<Clock::duration>(Seconds(step));
        if (now - due_ > std::chrono::milliseconds(100)) {
            stalled_ += now - due_;
            due_ = now;
        }
        std::this_thread::sleep_until(due_);
    }

    /// The player's numbers go in by the session's token, and come out in the session's report.
    void heartbeat() {
        ReportMap report;
        session_->getHeartbeatInfo(report);
        token_ = std::stoull(report.at("zel_token"));
        print("heartbeat", report);
    }

    void reportPeriodic(int64_t bytes_read) {
        const std::map<std::string, int64_t> sums = {{"player_bytes", bytes_read - bytes_reported_}};
        const std::string series = "player_decoding_ms";
        zel_collect_accumulative_data_for_session_v2(token_, &sums);
        zel_collect_serial_data_for_session_v2(token_, &series, decoding_ms_.data(), decoding_ms_.size());
        heartbeat();
        const Clock::time_point now = Clock::now();
        constexpr int64_t kMost = std::numeric_limits<int32_t>::max();  // the data monitors read 32 bits
        manager_.reportPeriodic(
            source_, {{"play_scenario", kOnDemand},
                      {"recv_bytes", std::to_string(std::min(bytes_read - bytes_reported_, kMost))},
                      {"zel_time_interval", std::to_string(Seconds(now - last_report_).count())}});
        bytes_reported_ = bytes_read;
        decoding_ms_.clear();
        last_report_ = now;
    }

    void reportEnd(int error_code) {
        const Clock::time_point now = Clock::now();
        ReportMap report = {{"play_scenario", kOnDemand},
                            {"error_code", std::to_string(error_code)},
                            {"quit_time", inMilliseconds(now - opened_)},
                            {"abnormal_total_time", inMilliseconds(stalled_)}};
        if (first_shown_ != Clock::time_point::max()) {
            report["first_frame_rendering_time"] = inMilliseconds(first_shown_ - opened_);
            report["play_time"] = inMilliseconds(now - first_shown_);
        }
        print("playback", report);
        print("session", session_->getAccumulativeInfo());
        manager_.reportPlaybackEnd(source_, std::move(report));
    }

    static constexpr const char* kOnDemand = "2";
    static constexpr std::chrono::milliseconds kLastFrame{100};
    static constexpr double kLongestStep = 2.0;  // seconds; longer ones are jumps, not pauses

    ZEL::ZELManager& manager_;
    const uint64_t source_;
    const std::shared_ptr<ZEL::ZELSession> session_;
    uint64_t token_ = 0;
    Converter converter_;
    std::vector<float> decoding_ms_;
    int64_t bytes_reported_ = 0;

    const Clock::time_point opened_ = Clock::now();
    double position_ = -std::numeric_limits<double>::infinity();  // of the latest frame, in seconds
    Clock::time_point due_;                                       // and when that was due
    Clock::time_point first_shown_ = Clock::time_point::max();
    Clock::time_point last_report_ = opened_;
    Clock::time_point idle_until_ = opened_;  // decoding takes the time from here to the next frame
    Clock::duration stalled_{};
};

}  // namespace

int main(int argc, char** argv) {
    if (argc < 2) {
        std::fprintf(stderr, "usage: %s FILE...\n", argv[0]);
        return 2;
    }
    av_log_set_level(AV_LOG_ERROR);
    ZEL::setLogSink(
        [](const char* text, size_t length, void* /*context*/) { std::fwrite(text, 1, length, stderr); },
        nullptr);
    ZEL::ZELManager& manager = ZEL::ZELManager::getInstance();
    manager.setConfigAdapter(std::make_shared<Switches>());
    manager.initDataMonitors();
    manager.start();
    const auto printer = ResultPrinter::listenTo(*manager.getMessageCenter());

    for (int i = 1; i < argc; ++i) {
        Playback(manager, static_cast<uint64_t>(i)).run(argv[i]);
    }
    manager.getMessageCenter()->unregisterListener("ZELMsgVideoFrameResult", printer);
    manager.getMessageCenter()->unregisterListener("ZELMsgAudioFrameResult", printer);
    for (const char* assessment : {"RecentPlayerFF", "RefNetSpeed", "PlayerErrorRate", "PlayerBufferRate"}) {
        print("assessment", ZEL::ZELHA::getInstance().evaluate(assessment));
    }
    return 0;
}
