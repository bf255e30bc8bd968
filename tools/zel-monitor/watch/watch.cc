#include "watch/watch.h"

#include <algorithm>
#include <chrono>
#include <fmt/format.h>
#include <optional>
#include <random>
#include <string>
#include <system_error>
#include <utility>
#include <variant>

extern "C" {
#include <libavutil/error.h>
}

#include "cli/backoff.h"
#include "cli/console.h"
#include "cli/exit_status.h"
#include "cli/file_names.h"
#include "cli/log_file.h"
#include "cli/progress.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"
#include "input/demo_source.h"
#include "input/media_source.h"
#include "watch/fault_watch.h"
#include "watch/host.h"
#include "watch/pacer.h"
#include "watch/patience.h"
#include "watch/playback.h"

namespace zel_monitor {
namespace {

using std::chrono::steady_clock;

/// How long the last frame stays before the session is stopped: the library examines frames behind the
/// feeding thread, and a stop leaves out those that still wait.
constexpr std::chrono::milliseconds kLastFrame{300};
constexpr double kFirstRetryS = 1.0;
constexpr double kMostRetryS = 30.0;

class Watch {
  public:
    Watch(const WatchOptions& options, Console& console, const std::atomic<bool>& stop,
          const std::atomic<unsigned>* hangups)
        : options_(options),
          console_(console),
          stop_(stop),
          hangups_(hangups),
          playback_(steady_clock::now()),
          patience_(console, options.name.empty() ? options.input : options.name, stop),
          writer_(options.format->make(console, options.name)),
          has_captions_(options.input == kDemoInput),
          pacer_(options.speed),
          host_({.interval = options.interval, .audio = options.audio},
                [this](const ReportMap& report) { take(report); }) {}

    int run() {
        if (!openFirst()) {
            return kExitDone;
        }
        playback_.setScenario(source_->facts().duration ? Playback::Scenario::kOnDemand
                                                        : Playback::Scenario::kLive);
        host_.start();
        std::optional<MediaError> failure = playAll();
        playback_.end(steady_clock::now(), failure ? failure->code() : 0, pacer_.stalled());
        sleepUntil(steady_clock::now() + kLastFrame, stop_);
        host_.stop();
        if (failure) {
            console_.error(failure->what());
        }
        console_.requireOutput();
        return failure ? kExitFailed : kExitDone;
    }

  private:
    /// Until the end, or for ever; why it ended before, if it did.
    std::optional<MediaError> playAll() {
        Progress progress(console_, ProgressOf::kStream, 1);
        std::optional<MediaError> failure;
        while (true) {
            try {
                failure.reset();
                play(progress.slot(0));
            } catch (const MediaError& error) {
                failure = error;
            }
            addCounts();
            if (stop_.load() || !options_.reconnect) {
                return stop_.load() ? std::nullopt : failure;
            }
            if (!reconnect(failure ? failure->reason() : "the input ended")) {
                return std::nullopt;
            }
        }
    }

    /// False if it was stopped.
    bool openFirst() {
        try {
            open();
        } catch (const MediaError& error) {
            if (!options_.reconnect || stop_.load()) {
                throw;
            }
            return reconnect(error.reason());
        }
        writer_->begin(source_->facts());
        return true;
    }

    void open() {
        patience_.reset();
        patience_.begin(options_.open_timeout_s);
        try {
            source_.emplace(openInput(options_.input, {.label = options_.name,
                                                       .audio = options_.audio,
                                                       .begins_anew = false,
                                                       .interrupted = &patience_.givenUp()}));
            patience_.end();
        } catch (const MediaError&) {
            if (patience_.end()) {
                throw timedOut(fmt::format("it could not be opened within {:g} s", *options_.open_timeout_s));
            }
            throw;
        }
    }

    /// Opens the input again, as often as it takes. False if it was stopped.
    bool reconnect(std::string reason) {
        position_base_ = position_.load();
        while (true) {
            const double wait_s = backoff_.next();
            writer_->interrupted({.time = std::chrono::system_clock::now(),
                                  .position = position_.load(),
                                  .reason = fmt::format("{}; again in {:.1f} s", reason, wait_s)});
            source_.reset();
            sleepUntil(steady_clock::now() + std::chrono::duration_cast<steady_clock::duration>(
                                                 std::chrono::duration<double>(wait_s)),
                       stop_);
            if (stop_.load()) {
                return false;
            }
            try {
                open();
                writer_->begin(source_->facts());
                return true;
            } catch (const MediaError& error) {
                reason = error.reason();
            }
            if (stop_.load()) {
                return false;
            }
        }
    }

    void play(Progress::Slot& slot) {
        slot.length_s = options_.reconnect ? 0.0 : source_->facts().duration.value_or(0.0);
        FaultWatch faults(source_->facts(), position_base_, *writer_);
        try {
            playInto(faults, slot);
        } catch (const MediaError&) {
            faults.end();
            throw;
        }
        faults.end();
    }

    void playInto(FaultWatch& faults, Progress::Slot& slot) {
        while (const auto item = next()) {
            const double position = position_base_ + timeOf(*item);
            sleepUntil(pacer_.due(position, steady_clock::now()), stop_);
            if (stop_.load()) {
                return;
            }
            heedHangups();
            std::visit([&](const auto& content) { host_.feed(content); }, *item);
            faults.feed(*item);
            position_.store(std::max(position_.load(), position));
            slot.position_s = position_.load();
            slot.video_frames = host_.fed().video;
            slot.audio_frames = host_.fed().audio;
            playback_.shown(steady_clock::now(), counts_.bytes_read + source_->counts().bytes_read);
            backoff_.reset();
            if (has_captions_) {
                showCaption(timeOf(*item));
            }
        }
    }

    std::optional<MediaItem> next() {
        patience_.begin(options_.read_timeout_s);
        std::optional<MediaItem> item = source_->next();
        if (patience_.end()) {
            throw timedOut(fmt::format("nothing has come for {:g} s", *options_.read_timeout_s));
        }
        return item;
    }

    MediaError timedOut(const std::string& reason) const {
        return {options_.name.empty() ? options_.input : options_.name,
                {Incomplete::kReadError, reason},
                AVERROR(ETIMEDOUT)};
    }

    void heedHangups() {
        if (hangups_ != nullptr && hangups_->load() != heeded_) {
            heeded_ = hangups_->load();
            reopenLogs();
        }
    }

    void addCounts() {
        const MediaCounts counts = source_->counts();
        counts_.bytes_read += counts.bytes_read;
        counts_.damaged += counts.damaged;
    }

    void showCaption(double position) {
        if (std::string caption = demoCaption(position); caption != caption_) {
            caption_ = std::move(caption);
            writer_->caption(position_.load(), caption_);
        }
    }

    /// On the heartbeat thread, and on this one at the end.
    void take(const ReportMap& report) {
        const double position = position_.load();
        ReportEvent event{.report = report,
                          .time = std::chrono::system_clock::now(),
                          .position = position,
                          .caption = has_captions_ ? demoCaption(position) : std::string(),
                          .drops = host_.drops()};
        if (!report.contains("zel_heartbeat_seq")) {
            writer_->finalReport(event, {.counts = counts_, .assessments = Playback::assess()});
            return;
        }
        if (event.drops) {
            const ZEL::QueueDrops before = std::exchange(told_drops_, *event.drops);
            *event.drops = {.video = event.drops->video - before.video,
                            .audio = event.drops->audio - before.audio};
        }
        writer_->heartbeat(event);
    }

    const WatchOptions& options_;
    Console& console_;
    const std::atomic<bool>& stop_;
    const std::atomic<unsigned>* hangups_;  ///< null: nobody wants to know
    unsigned heeded_ = 0;
    Playback playback_;  ///< begins before the source is opened
    Patience patience_;
    std::optional<MediaSource> source_;
    MediaCounts counts_;  ///< of all connections that are over
    std::unique_ptr<HeartbeatWriter> writer_;
    bool has_captions_;
    std::string caption_;  ///< shown last
    Pacer pacer_;
    Backoff backoff_{kFirstRetryS, kMostRetryS, std::random_device()()};
    double position_base_ = 0.0;  ///< where the connection at hand begins
    std::atomic<double> position_{0};
    ZEL::QueueDrops told_drops_;  ///< by the last heartbeat; only take() uses it, one call at a time
    Host host_;
};

int watch(const WatchOptions& options) {
    const std::atomic<bool>& stop = watchStopSignals();
    const std::atomic<unsigned>* const hangups = options.log_file.empty() ? nullptr : &watchHangups();
    Console console(StatusLine::kUnlessInPipe);
    try {
        return Watch(options, console, stop, hangups).run();
    } catch (const MediaError&) {
        if (stop.load()) {  // while the input was being opened
            return kExitDone;
        }
        throw;
    }
}

}  // namespace

int runWatch(const WatchOptions& options) {
    if (writesOver(options.log_file, options.input)) {
        complain("--log: " + options.log_file + " is the input");
        return kExitUsage;
    }
    try {
        redirectLogs(options.log_file);
    } catch (const std::system_error& error) {
        complain(error.what());
        return kExitUsage;
    }
    const int status = watch(options);
    requireLogs();
    return status;
}

}  // namespace zel_monitor
