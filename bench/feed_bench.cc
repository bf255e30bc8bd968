// What the library costs the thread that feeds it, beside a bare copy of the same frame in the same run,
// and what else a host pays for: start and stop, heartbeats, the wake-up of the worker.
//
// Log lines go to a file, as a host would keep them, but for the two cases that compare a standard output
// that nobody reads with no log at all.
#include <zel/base/log.h>
#include <zel/session/session.h>
#include <zel/zel.h>

#include <algorithm>
#include <array>
#include <atomic>
#include <chrono>
#include <cstdio>
#include <cstring>
#include <memory>
#include <sys/resource.h>
#include <thread>
#include <unistd.h>
#include <vector>

#include <benchmark/benchmark.h>

#include "session/heartbeat_report.h"
#include "session/task_queue.h"

namespace {

struct Frame {
    int32_t width;
    int32_t height;
    std::vector<uint8_t> bytes =
        std::vector<uint8_t>(static_cast<size_t>(width) * static_cast<size_t>(height) * 3 / 2, 100);
};

Frame frameOf(const benchmark::State& state) {
    const auto height = static_cast<int32_t>(state.range(0));
    return {height * 16 / 9, height};
}

void logToFile() {
    static std::FILE* const file = std::tmpfile();
    ZEL::setLogSink([](const char* text, size_t length, void*) { std::fwrite(text, 1, length, file); },
                    nullptr);
}

long pageFaults() {
    rusage usage{};
    getrusage(RUSAGE_THREAD, &usage);
    return usage.ru_minflt;
}

/// A stream's steady state: as many buffers as the library keeps take turns as targets.
void bareCopy(benchmark::State& state) {
    const Frame frame = frameOf(state);
    std::vector<std::unique_ptr<uint8_t[]>> targets;
    for (size_t i = 0; i < ZEL::TaskQueue::kSharedBound + 1; ++i) {
        targets.push_back(std::make_unique<uint8_t[]>(frame.bytes.size()));
    }
    size_t next = 0;
    for (auto _ : state) {
        std::memcpy(targets[next].get(), frame.bytes.data(), frame.bytes.size());
        benchmark::ClobberMemory();
        next = (next + 1) % targets.size();
    }
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(frame.bytes.size()));
}

/// A session that is not started, so that no detector competes for memory and processor: the queue is full
/// and every feed drops the oldest frame, the dearest case for the host's thread.
void feedCall(benchmark::State& state) {
    logToFile();
    const Frame frame = frameOf(state);
    ZELHandle* const handle = init_handle();
    for (int64_t index = 0; index < 20; ++index) {  // to the steady state
        feed_video_frame(handle, frame.bytes.data(), frame.width, frame.height, index);
    }
    const long faults = pageFaults();
    for (auto _ : state) {
        feed_video_frame(handle, frame.bytes.data(), frame.width, frame.height, 0);
    }
    state.counters["page_faults_per_frame"] =
        static_cast<double>(pageFaults() - faults) / static_cast<double>(state.iterations());
    state.SetBytesProcessed(state.iterations() * static_cast<int64_t>(frame.bytes.size()));
    release_handle(handle);
}

void feedWhileLogging(benchmark::State& state) {
    const Frame frame = frameOf(state);
    ZELHandle* const handle = init_handle();
    for (auto _ : state) {
        feed_video_frame(handle, frame.bytes.data(), frame.width, frame.height, 0);
    }
    release_handle(handle);
}

void feedLogOff(benchmark::State& state) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    feedWhileLogging(state);
}

/// Standard output is a pipe that is full within the first frames and stays so.
void feedLogUnread(benchmark::State& state) {
    ZEL::setLogSink(nullptr, nullptr);
    std::fflush(stdout);
    std::array<int, 2> ends{};
    if (pipe(ends.data()) != 0) {
        state.SkipWithError("no pipe");
        return;
    }
    const int kept = dup(STDOUT_FILENO);
    dup2(ends[1], STDOUT_FILENO);
    feedWhileLogging(state);
    dup2(kept, STDOUT_FILENO);
    close(kept);
    close(ends[0]);
    close(ends[1]);
}

/// One 10 ms packet at 48 kHz, mono, to a started session whose worker sleeps and must be woken.
void feedPacket(benchmark::State& state) {
    logToFile();
    set_cobalt_bool_callback([](const char*) { return true; });
    const std::vector<uint8_t> packet(480 * 2, 1);
    ZELHandle* const handle = init_handle();
    start_zel_session(handle);
    std::vector<double> seconds;
    for (auto _ : state) {
        std::this_thread::sleep_for(std::chrono::milliseconds(1));  // the worker has gone back to sleep
        const auto begin = std::chrono::steady_clock::now();
        feed_audio_frame(handle, packet.data(), 480, 2, 48000, 1, 0);
        seconds.push_back(std::chrono::duration<double>(std::chrono::steady_clock::now() - begin).count());
        state.SetIterationTime(seconds.back());
    }
    const auto percentile = seconds.begin() + static_cast<std::ptrdiff_t>(seconds.size() * 99 / 100);
    std::nth_element(seconds.begin(), percentile, seconds.end());
    state.counters["p99_us"] = *percentile * 1e6;
    stop_zel_session(handle);
    release_handle(handle);
}

void startAndStop(benchmark::State& state) {
    logToFile();
    ZELHandle* const handle = init_handle();
    for (auto _ : state) {
        start_zel_session(handle);
        stop_zel_session(handle);
    }
    release_handle(handle);
}

void heartbeatAssembly(benchmark::State& state) {
    ZEL::HeartbeatReport report;
    ZEL::EventSnapshot events;
    for (const char* name :
         {"black_cnt", "greenscreen_cnt", "block_cnt", "staticframe_cnt", "underexposure_cnt",
          "overexposure_cnt", "mute_cnt", "low_voice_cnt", "high_voice_cnt", "no_voice_cnt"}) {
        events.counters[name] = 1;
    }
    for (const char* name : {"voice_level_longtime", "audio_level", "voice_scale_longtime"}) {
        events.gauges[name] = 1;
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(report.fields(1, {}, events));
        report.closePeriod(events);
    }
}

/// From a feed to the verdict of a tiny frame: the hand-over of a task to the sleeping worker and back.
void wakeUp(benchmark::State& state) {
    class Owner : public ZEL::CObject {};
    const auto center = std::make_shared<ZEL::MessageCenter>();
    const auto session = std::make_shared<ZEL::ZELSession>(center);
    std::atomic<int64_t> examined{0};
    center->registerListener("ZELMsgVideoFrameResult", std::make_shared<Owner>(), [&](const auto&) {
        ++examined;
        examined.notify_one();
    });
    session->setPublishFrameResults(true);
    session->start();
    int64_t fed = 0;
    for (auto _ : state) {
        session->feedVideoFrame(std::make_shared<ZEL::VideoFrame>(2, std::make_unique<uint8_t[]>(6), 2, 2),
                                fed++);
        for (int64_t seen = examined; seen < fed; seen = examined) {
            examined.wait(seen);
        }
    }
    session->stop();
    center->stop();
}

BENCHMARK(bareCopy)->Arg(720)->Arg(1080)->Arg(2160);
BENCHMARK(feedCall)->Arg(720)->Arg(1080)->Arg(2160);
BENCHMARK(feedLogOff)->Arg(180)->Arg(360)->Arg(1080);
BENCHMARK(feedLogUnread)->Arg(180)->Arg(360)->Arg(1080);
BENCHMARK(feedPacket)->UseManualTime()->Iterations(2000);
BENCHMARK(startAndStop);
BENCHMARK(heartbeatAssembly);
BENCHMARK(wakeUp)->UseRealTime();

}  // namespace
