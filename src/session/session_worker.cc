#include "session/session_worker.h"

#include <zel/algo/algo_facade.h>
#include <zel/session/session.h>

#include <cfenv>
#include <exception>
#include <optional>
#include <utility>

#include "algo/mix_down.h"
#include "base/clock.h"
#include "base/log_format.h"
#include "base/started_thread.h"
#include "session/drop_counts.h"
#include "session/result_accounting.h"
#include "session/task_queue.h"

namespace ZEL {
namespace {

/// Runs `detect` and tells how it went.
template <typename Detect>
DetectorCall timed(Detect detect) {
    const double begin = now();
    const bool status = detect();
    return {status, now() - begin};
}

}  // namespace

SessionWorker::SessionWorker(TaskQueue& queue, ResultAccounting& accounting, DropCounts& drops)
    : queue_(queue), accounting_(accounting), drops_(drops) {}

SessionWorker::~SessionWorker() {
    stop();
}

void SessionWorker::start(const std::string& thread_name, const ZELAlgo::ZELAlgoConfig& config,
                          std::shared_ptr<IZELResultListener> listener) {
    listener_ = std::move(listener);
    queue_.open();
    thread_ = startThread([&thread_name] { return ThreadName("%s", thread_name.c_str()); },
                          [this, config] {
                              // The thread has its creator's floating-point mode, on which verdicts hang.
                              std::fesetenv(FE_DFL_ENV);
                              ZELAlgo::AlgoFacade algo(config);
                              run(algo);
                          });
}

void SessionWorker::stop() {
    if (running()) {
        queue_.close();
        thread_.join();
    }
}

bool SessionWorker::running() const {
    return thread_.joinable();
}

void SessionWorker::run(ZELAlgo::AlgoFacade& algo) {
    while (const std::optional<TaskQueue::Round> round = queue_.waitForRound()) {
        if (round->shared) {
            process(algo, *round->shared);
        }
        if (round->audio_waits) {
            process(algo, queue_.takeAudio());
        }
    }
}

void SessionWorker::process(ZELAlgo::AlgoFacade& algo, const ZELTask& task) {
    try {
        std::visit([&](const auto& frame) { examine(algo, *frame, task.index); }, task.frame);
    } catch (const std::exception& error) {  // nothing here throws anything else
        drops_.add(task);
        zel_log("ZEL: WARN: a frame was dropped: %s\n", error.what());
    }
}

void SessionWorker::examine(ZELAlgo::AlgoFacade& algo, const VideoFrame& frame, int64_t index) {
    const ZELAlgo::ZELVideoFrame view{static_cast<uint32_t>(frame.width), static_cast<uint32_t>(frame.height),
                                      0, frame.data.get()};
    ZELAlgo::ZELVideoResult result{};
    const DetectorCall call = timed([&] { return algo.detectVideo(view, result); });
    accounting_.account(call, result);
    if (listener_ != nullptr && call.status) {
        listener_->onVideoResult(index, result);
    }
}

void SessionWorker::examine(ZELAlgo::AlgoFacade& algo, const AudioFrame& frame, int64_t index) {
    const auto channels = static_cast<uint32_t>(frame.channels);
    const ZELAlgo::ZELAudioFrame sound{static_cast<uint32_t>(frame.sample_rate), frame.samples, channels,
                                       ZELAlgo::mixedDown(frame.data.get(), frame.samples, channels, mono_)};
    ZELAlgo::ZELAudioResult result{};
    const DetectorCall call = timed([&] { return algo.detectAudio(sound, result); });
    accounting_.account(call, result);
    if (listener_ != nullptr && call.status) {
        listener_->onAudioResult(index, result);
    }
}

}  // namespace ZEL
