#include <zel/algo/algo_facade.h>
#include <zel/base/log.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "judges/frame_meter.h"
#include "judges/video_judges.h"
#include "support/rendered_frames.h"

// usage: judges_bench [CLIP...] [--benchmark_...]
// Frames at 25 a second, each through the detectors and then through what the judges of events add to them,
// as an analysis does. The counters tell what both cost per frame, and what the judges cost in detectors.

namespace {

constexpr size_t kFrames = 50;
constexpr double kFrameS = 0.04;

using Frames = std::vector<support::RenderedFrame>;

const uint8_t* chromaOf(const support::RenderedFrame& frame, size_t plane) {
    const size_t luma = size_t{frame.width} * frame.height;
    return frame.bytes.data() + luma + plane * luma / 4;
}

/// CPU time of this thread, which others that use the machine do not change much.
double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

void run(benchmark::State& state, const Frames& frames) {
    ZELAlgo::AlgoFacade detectors;
    ZELJudges::FrameMeter meter;
    ZELJudges::MeasuredFrame measured;
    ZELJudges::VideoJudges judges;
    double detectors_s = 0.0;
    double judges_s = 0.0;
    size_t i = 0;
    for (auto _ : state) {
        const support::RenderedFrame& frame = frames[i % frames.size()];
        const double time_s = static_cast<double>(i++) * kFrameS;
        const double start_s = cpuSeconds();
        ZELAlgo::ZELVideoResult result{};
        detectors.detectVideo({frame.width, frame.height, 0, frame.bytes.data()}, result);
        benchmark::DoNotOptimize(result);
        const double middle_s = cpuSeconds();
        meter.measure({.width = frame.width,
                       .height = frame.height,
                       .data = {frame.bytes.data(), chromaOf(frame, 0), chromaOf(frame, 1)},
                       .stride = {frame.width, frame.width / 2, frame.width / 2}},
                      time_s, measured);
        const auto settled = judges.feed(measured, time_s, kFrameS);
        benchmark::DoNotOptimize(settled.black.data());
        detectors_s += middle_s - start_s;
        judges_s += cpuSeconds() - middle_s;
    }
    const auto per_frame = benchmark::Counter::kAvgIterations;
    state.counters["detectors_us"] = benchmark::Counter(detectors_s * 1e6, per_frame);
    state.counters["judges_us"] = benchmark::Counter(judges_s * 1e6, per_frame);
    state.counters["ratio"] = judges_s / detectors_s;
}

}  // namespace

int main(int argc, char** argv) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    benchmark::Initialize(&argc, argv);
    std::vector<Frames> clips;
    for (int i = 1; i < argc; ++i) {
        clips.push_back(support::renderFrames(std::string("movie=") + argv[i], kFrames));
    }
    if (clips.empty()) {
        clips.push_back(support::renderFrames("mandelbrot=s=320x180", kFrames));
    }
    for (const Frames& clip : clips) {
        const std::string size = std::to_string(clip[0].width) + "x" + std::to_string(clip[0].height);
        benchmark::RegisterBenchmark(size.c_str(), [&clip](benchmark::State& state) { run(state, clip); });
    }
    benchmark::RunSpecifiedBenchmarks();
}
