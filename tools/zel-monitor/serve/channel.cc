#include "serve/channel.h"

#include <algorithm>
#include <exception>
#include <fmt/format.h>
#include <random>
#include <utility>

#include "input/demo_source.h"
#include "serve/jump_bridge.h"
#include "serve/play_out.h"
#include "serve/quiet_thread.h"
#include "serve/shown_url.h"

namespace zel_monitor {
namespace {

using std::chrono::steady_clock;

constexpr double kGoodAfterS = 10.0;    // a connection that holds so long was no failure
constexpr double kShortestWaitS = 0.1;  // between two attempts
constexpr double kTooLateS = 2.0;       // behind: then frames are left out
constexpr double kOnTimeS = 0.5;        // until this
constexpr double kLeastLeapS = 1.0;     // of timestamps; what is shorter is no stall
constexpr double kThinnedStepS = 0.4;   // of which one in so many seconds is examined
constexpr std::chrono::seconds kThumbnailEvery{1};
constexpr std::chrono::seconds kThumbnailWanted{5};

MediaOptions optionsFor(const StreamSettings& settings, const std::atomic<bool>& interrupted) {
    MediaOptions options;
    options.format = settings.format;
    options.label = settings.name;
    options.video = settings.video.value_or(true);
    options.audio = settings.audio.value_or(true);
    options.live = true;
    options.begins_anew = false;
    options.threads = settings.threads;
    options.settings = settings.options;
    if (settings.input.starts_with("udp:")) {
        options.settings.emplace("overrun_nonfatal", "1");  // what cannot be taken in is lost, not all
    }
    options.interrupted = &interrupted;
    return options;
}

}  // namespace

/// What one connection needs while it is read.
struct Channel::Reading {
    ZEL::StreamTracks tracks;
    bool paced;  ///< an input with an end is read at the pace at which it would be sent
    TimePoint began = steady_clock::now();
    std::optional<double> first_s = {};  ///< stream time of the first item
    std::unique_ptr<LiveAnalysis> analysis = {};
    LagMeter lag = {};
    JumpBridge bridge = {};
    PlayOut play_out = {};
    double stored_s = 0.0;  ///< how long the last item that came was to wait until it is shown
    bool thinned = false;
    double examined_s = 0.0;  ///< stream time of the last frame that was
};

Channel::Channel(const StreamSettings& settings, AlarmSink& sink)
    : settings_(settings),
      alarms_(settings.name, settings.labels, settings.rules, sink),
      backoff_(settings.reconnect.first_s, settings.reconnect.most_s, std::random_device()()) {
    const Moment now = Moment::now();
    status_.name = settings.name;
    status_.input = shownUrl(settings.input);
    status_.labels = settings.labels;
    status_.since = now.wall;
    for (AlarmKind kind = 0; kind < kAlarmKinds; ++kind) {
        status_.enabled[kind] = settings.rules[kind].enabled;
    }
    last_item_ = now.steady + steadySeconds(settings.grace_s);  // as if the signal were lost only then
    thread_ = quietThread([this] { run(); });
}

Channel::~Channel() {
    requestStop();
    thread_.join();
}

void Channel::requestStop() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (stop_.exchange(true)) {
            return;
        }
        interrupted_.store(true);
        alarms_.close(Moment::now());
    }
    stopped_.notify_all();
}

void Channel::tick(Moment now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    if (stopping()) {
        return;
    }
    if (deadline_ && now.steady >= *deadline_) {
        deadline_.reset();
        timed_out_ = true;
        interrupted_.store(true);
    }
    const double silent_s = secondsBetween(last_item_, now.steady);
    if (silent_s >= settings_.rules[kNoSignal].min_s) {
        if (status_.state == StreamState::kUp) {
            status_.state = StreamState::kNoData;
            status_.since = now.wall;
        }
        if (!std::exchange(signal_lost_, true)) {
            alarms_.endAll(Cleared::kSignalLost, now);
            alarms_.begin(kNoSignal, silent_s, {.detail = lossDetail()}, now);
        }
    }
    alarms_.tick(now);
    if (status_.state == StreamState::kUp && alarms_.active().empty()) {
        status_.last_good = now.wall;
    }
}

std::string Channel::lossDetail() const {
    return status_.reason.empty()
               ? fmt::format("{}, and nothing comes",
                             status_.state == StreamState::kConnecting ? "connecting" : "connected")
               : status_.reason;
}

void Channel::run() {
    while (!stopping()) {
        const auto began = steady_clock::now();
        if (connect()) {
            backoff_.reset();
        }
        // An attempt that took its time has waited already.
        const auto next = std::max(began + steadySeconds(backoff_.next()),
                                   steady_clock::now() + steadySeconds(kShortestWaitS));
        if (!waitUntil(next)) {
            break;
        }
    }
    finished_.store(true);
}

bool Channel::connect() {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        interrupted_.store(stopping());
        timed_out_ = false;
        deadline_ = steady_clock::now() + steadySeconds(settings_.open_timeout_s);
        status_.state = StreamState::kConnecting;
        status_.since = std::chrono::system_clock::now();
    }
    const auto timed_out = [this] {
        const std::lock_guard<std::mutex> lock(mutex_);
        deadline_.reset();
        return timed_out_;
    };
    std::optional<TimePoint> opened;
    try {
        MediaSource source = openInput(settings_.input, optionsFor(settings_, interrupted_));
        opened = steady_clock::now();
        follow(source);
        if (timed_out()) {
            setState(StreamState::kFailing, fmt::format("no frame for {:g} s", settings_.read_timeout_s));
        } else {
            setState(StreamState::kEnded, "the other side ended it");
        }
    } catch (const MediaError& error) {
        const bool late = timed_out();
        setState(StreamState::kFailing,
                 !late    ? error.reason()
                 : opened ? fmt::format("no frame for {:g} s", settings_.read_timeout_s)
                          : fmt::format("nothing to decode within {:g} s", settings_.open_timeout_s));
    } catch (const std::exception& error) {
        timed_out();
        setState(StreamState::kFailing, error.what());
    }
    return opened && secondsBetween(*opened, steady_clock::now()) >= kGoodAfterS;
}

void Channel::follow(MediaSource& source) {
    const MediaFacts& facts = source.facts();
    Reading reading{.tracks = {.video = settings_.video.value_or(facts.video.has_value()),
                               .audio = settings_.audio.value_or(facts.audio.has_value()),
                               .still = facts.video && facts.video->still},
                    .paced = facts.duration.has_value()};
    MediaCounts before;
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        before = status_.counts;
        ++status_.connections;
        status_.facts = facts;
        deadline_ = steady_clock::now() + steadySeconds(settings_.read_timeout_s);
    }
    const auto count = [&] {
        const MediaCounts counts = source.counts();
        const std::lock_guard<std::mutex> lock(mutex_);
        status_.counts = {.bytes_read = before.bytes_read + counts.bytes_read,
                          .video_frames = before.video_frames + counts.video_frames,
                          .audio_frames = before.audio_frames + counts.audio_frames,
                          .damaged = before.damaged + counts.damaged};
    };
    alarms_.beginGrace(steady_clock::now() + steadySeconds(settings_.grace_s));
    const auto end = [&] {
        count();
        if (reading.analysis) {
            reading.analysis->end(stopping() ? Cleared::kStopped : Cleared::kDisconnected, Moment::now());
        }
    };
    try {
        for (auto asked = steady_clock::now();; asked = steady_clock::now()) {
            auto item = source.next();
            if (!item || stopping()) {
                break;
            }
            take(reading, *item, secondsBetween(asked, steady_clock::now()));
            count();
        }
    } catch (...) {
        end();
        throw;
    }
    end();
}

void Channel::take(Reading& reading, MediaItem& item, double took_s) {
    const double time_s = reading.bridge.place(
        trackOf(item), timeOf(item), durationOf(item), secondsBetween(reading.began, steady_clock::now()),
        reading.paced ? ZEL::StreamClock::kLongestWaitS : kLeastLeapS + reading.stored_s);
    std::visit([time_s](auto& content) { content.time = time_s; }, item);
    const double since_s = time_s - reading.first_s.value_or(time_s);
    reading.first_s = reading.first_s.value_or(time_s);
    if (reading.paced && !waitUntil(reading.began + steadySeconds(since_s))) {
        return;
    }
    const Moment now = Moment::now();
    const double now_s = secondsBetween(reading.began, now.steady);
    const double shown_s = reading.play_out.update(since_s, now_s, took_s);
    reading.stored_s = shown_s - now_s;
    if (noteSignal(reading, reading.stored_s, now) && reading.analysis) {
        reading.analysis->end(Cleared::kSignalLost, now);
        reading.analysis.reset();
    }
    if (!reading.analysis) {
        reading.analysis = std::make_unique<LiveAnalysis>(settings_, reading.tracks, alarms_, history_);
    }
    const double lag_s = reading.lag.update(since_s, now_s, took_s);
    reading.analysis->saw(item, now);
    if (const auto* const sound = std::get_if<AudioFrame>(&item)) {
        reading.analysis->feed(*sound);
    } else {
        feed(reading, std::get<VideoFrame>(item), lag_s, now);
    }
    const std::lock_guard<std::mutex> lock(mutex_);
    status_.delay_s = lag_s;
    status_.luma = reading.analysis->luma();
    status_.level = reading.analysis->level();
}

/// Frames that cannot be examined in time are left out, but for so many that faults are still seen.
void Channel::feed(Reading& reading, const VideoFrame& frame, double lag_s, Moment now) {
    const bool was_thinned = std::exchange(reading.thinned, lag_s > (reading.thinned ? kOnTimeS : kTooLateS));
    if (reading.thinned && was_thinned && frame.time < reading.examined_s + kThinnedStepS) {
        const std::lock_guard<std::mutex> lock(mutex_);
        ++status_.dropped;
        return;
    }
    reading.examined_s = frame.time;
    reading.analysis->feed(frame, reading.thinned ? kThinnedStepS : 0.0);
    makeThumbnail(frame, now);
}

/// Something came that is to be shown in so many seconds. Whether the signal had been lost, so that what
/// comes now begins anew.
bool Channel::noteSignal(const Reading& reading, double shown_in_s, Moment now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    const AlarmRule& rule = settings_.rules[kNoSignal];
    const double silent_s = secondsBetween(last_item_, now.steady);
    const bool after_loss = signal_lost_ && silent_s >= rule.min_s;
    if (signal_lost_ && silent_s > rule.gap_s) {
        signal_since_ = now.steady;
    }
    last_item_ = now.steady + steadySeconds(shown_in_s);
    deadline_ = last_item_ + steadySeconds(settings_.read_timeout_s);
    status_.last_frame = now.wall;
    const double back_s = secondsBetween(signal_since_, now.steady);
    if (signal_lost_ && reading.play_out.isLive() && back_s >= rule.gap_s) {
        signal_lost_ = false;
        alarms_.end(kNoSignal, back_s, Cleared::kOver, now);
    }
    if (status_.state != StreamState::kUp) {
        status_.state = StreamState::kUp;
        status_.since = now.wall;
        status_.reason.clear();
    }
    return after_loss;
}

void Channel::makeThumbnail(const VideoFrame& frame, Moment now) {
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (now.steady >= thumbnail_wanted_until_ || now.steady < thumbnail_made_ + kThumbnailEvery) {
            return;
        }
        thumbnail_made_ = now.steady;
    }
    const SmallFrame small = thumbnailer_.shrink(frame.planes);
    auto jpeg = std::make_shared<const std::string>(small ? jpegOf(*small) : "");
    const std::lock_guard<std::mutex> lock(mutex_);
    thumbnail_ = std::move(jpeg);
}

std::shared_ptr<const std::string> Channel::thumbnail(Moment now) {
    const std::lock_guard<std::mutex> lock(mutex_);
    thumbnail_wanted_until_ = now.steady + kThumbnailWanted;
    return thumbnail_;
}

void Channel::setState(StreamState state, const std::string& reason) {
    const std::lock_guard<std::mutex> lock(mutex_);
    status_.state = state;
    status_.reason = reason;
    status_.since = std::chrono::system_clock::now();
}

bool Channel::waitUntil(TimePoint due) {
    std::unique_lock<std::mutex> lock(mutex_);
    return !stopped_.wait_until(lock, due, [this] { return stopping(); });
}

StreamStatus Channel::status(Moment now) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    StreamStatus status = status_;
    status.alarms = alarms_.active();
    status.tallies = alarms_.tallies(now);
    return status;
}

}  // namespace zel_monitor
