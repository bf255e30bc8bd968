#include "watch/watch.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <string>
#include <system_error>
#include <utility>
#include <variant>

#include "cli/console.h"
#include "cli/exit_status.h"
#include "cli/file_names.h"
#include "cli/log_file.h"
#include "cli/progress.h"
#include "cli/standard_streams.h"
#include "cli/stop_signal.h"
#include "input/demo_source.h"
#include "input/media_source.h"
#include "watch/host.h"
#include "watch/pacer.h"
#include "watch/playback.h"

namespace zel_monitor {
namespace {

using std::chrono::steady_clock;

/// How long the last frame stays before the session is stopped: the library examines frames behind the
/// feeding thread, and a stop leaves out those that still wait.
constexpr std::chrono::milliseconds kLastFrame{300};

class Watch {
  public:
    Watch(const WatchOptions& options, Console& console, const std::atomic<bool>& stop)
        : console_(console),
          stop_(stop),
          playback_(steady_clock::now()),
          source_(
              openInput(options.input, {.audio = options.audio, .begins_anew = false, .interrupted = &stop})),
          writer_(options.format->make(console)),
          has_captions_(options.input == kDemoInput),
          pacer_(options.speed),
          host_({.interval = options.interval, .audio = options.audio},
                [this](const ReportMap& report) { take(report); }) {}

    int run() {
        playback_.setScenario(source_.facts().duration ? Playback::Scenario::kOnDemand
                                                       : Playback::Scenario::kLive);
        writer_->begin(source_.facts());
        host_.start();
        std::optional<MediaError> failure;
        try {
            play();
        } catch (const MediaError& error) {
            failure = error;
        }
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
    void play() {
        Progress progress(console_, ProgressOf::kStream, 1);
        Progress::Slot& slot = progress.slot(0);
        slot.length_s = source_.facts().duration.value_or(0.0);
        while (const auto item = source_.next()) {
            sleepUntil(pacer_.due(timeOf(*item), steady_clock::now()), stop_);
            if (stop_.load()) {
                return;
            }
            std::visit([this](const auto& content) { host_.feed(content); }, *item);
            position_.store(std::max(position_.load(), timeOf(*item)));
            slot.position_s = position_.load();
            slot.video_frames = host_.fed().video;
            slot.audio_frames = host_.fed().audio;
            playback_.shown(steady_clock::now(), source_.counts().bytes_read);
            if (has_captions_) {
                showCaption(timeOf(*item));
            }
        }
    }

    void showCaption(double position) {
        if (std::string caption = demoCaption(position); caption != caption_) {
            caption_ = std::move(caption);
            writer_->caption(position, caption_);
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
            writer_->finalReport(event, {.counts = source_.counts(), .assessments = Playback::assess()});
            return;
        }
        if (event.drops) {
            const ZEL::QueueDrops before = std::exchange(told_drops_, *event.drops);
            *event.drops = {.video = event.drops->video - before.video,
                            .audio = event.drops->audio - before.audio};
        }
        writer_->heartbeat(event);
    }

    Console& console_;
    const std::atomic<bool>& stop_;
    Playback playback_;  ///< begins before the source is opened
    MediaSource source_;
    std::unique_ptr<HeartbeatWriter> writer_;
    bool has_captions_;
    std::string caption_;  ///< shown last
    Pacer pacer_;
    std::atomic<double> position_{0};
    ZEL::QueueDrops told_drops_;  ///< by the last heartbeat; only take() uses it, one call at a time
    Host host_;
};

int watch(const WatchOptions& options) {
    const std::atomic<bool>& stop = watchStopSignals();
    Console console(StatusLine::kUnlessInPipe);
    try {
        return Watch(options, console, stop).run();
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
