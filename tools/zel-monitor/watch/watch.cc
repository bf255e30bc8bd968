#include "watch/watch.h"

#include <algorithm>
#include <chrono>
#include <optional>
#include <variant>

#include "input/demo_source.h"
#include "input/media_source.h"
#include "watch/host.h"
#include "watch/pacer.h"
#include "watch/playback.h"
#include "watch/progress.h"
#include "watch/report_writer.h"

namespace zel_monitor {
namespace {

using std::chrono::steady_clock;

/// How long the last picture stays before the session is stopped: the library examines pictures behind the
/// feeding thread, and a stop leaves out those that still wait.
constexpr std::chrono::milliseconds kLastPicture{300};

class Watch {
  public:
    Watch(const WatchOptions& options, Console& console, const std::atomic<bool>& stop)
        : console_(console),
          stop_(stop),
          playback_(steady_clock::now()),
          source_(openInput(options.input, {.audio = options.audio, .interrupted = &stop})),
          writer_(options.json ? makeJsonWriter(console) : makeTextWriter(console)),
          has_captions_(options.input == kDemoInput),
          pacer_(options.speed),
          progress_(source_.facts().duration),
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
        sleepUntil(steady_clock::now() + kLastPicture, stop_);
        console_.status("");
        host_.stop();
        if (failure) {
            console_.error(failure->what());
        }
        console_.requireOutput();
        return failure ? kExitStream : kExitDone;
    }

  private:
    void play() {
        while (const auto item = source_.next()) {
            sleepUntil(pacer_.due(timeOf(*item), steady_clock::now()), stop_);
            if (stop_.load()) {
                return;
            }
            std::visit([this](const auto& content) { host_.feed(content); }, *item);
            position_.store(std::max(position_.load(), timeOf(*item)));
            playback_.shown(steady_clock::now(), source_.counts().bytes_read);
            if (has_captions_) {
                showCaption(timeOf(*item));
            }
            if (console_.showsStatus()) {
                showProgress();
            }
        }
    }

    void showCaption(double position) {
        if (std::string caption = demoCaption(position); caption != caption_) {
            caption_ = std::move(caption);
            writer_->caption(position, caption_);
        }
    }

    void showProgress() {
        const MediaCounts counts = source_.counts();
        if (auto text =
                progress_.update(steady_clock::now(), position_.load(), counts.pictures, counts.sounds)) {
            console_.status(std::move(*text));
        }
    }

    /// On the heartbeat thread, and on this one at the end.
    void take(const ReportMap& report) {
        const double position = position_.load();
        const ReportEvent event{.report = report,
                                .time = std::chrono::system_clock::now(),
                                .position = position,
                                .caption = has_captions_ ? demoCaption(position) : std::string()};
        if (report.contains("zel_heartbeat_seq")) {
            writer_->heartbeat(event);
        } else {
            writer_->finalReport(event, {.counts = source_.counts(), .assessments = Playback::assess()});
        }
    }

    Console& console_;
    const std::atomic<bool>& stop_;
    Playback playback_;  ///< begins before the source is opened
    MediaSource source_;
    std::unique_ptr<ReportWriter> writer_;
    bool has_captions_;
    std::string caption_;  ///< shown last
    Pacer pacer_;
    WatchProgress progress_;
    std::atomic<double> position_{0};
    Host host_;
};

}  // namespace

int runWatch(const WatchOptions& options, Console& console, const std::atomic<bool>& stop) {
    try {
        return Watch(options, console, stop).run();
    } catch (const MediaError&) {
        if (stop.load()) {  // while the input was being opened
            return kExitDone;
        }
        throw;
    }
}

}  // namespace zel_monitor
