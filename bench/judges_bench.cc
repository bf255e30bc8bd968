#include <zel/algo/algo_facade.h>
#include <zel/base/log.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "judges/frame_meter.h"
#include "judges/video_judges.h"
#include "support/rendered_frames.h"

// usage: judges_bench [CLIP...] [--benchmark_...]
// One frame at 25 a second through the detectors, and through what the judges of events add to them.

namespace {

constexpr size_t kFrames = 50;
constexpr double kFrameS = 0.04;

using Frames = std::vector<support::RenderedFrame>;

const uint8_t* chromaOf(const support::RenderedFrame& frame, size_t plane) {
    const size_t luma = size_t{frame.width} * frame.height;
    return frame.bytes.data() + luma + plane * luma / 4;
}

void registerClip(const Frames& frames) {
    const std::string size = std::to_string(frames[0].height);
    const auto add = [&](const char* name, auto run) {
        benchmark::RegisterBenchmark((size + "/" + name).c_str(), [run](benchmark::State& state) mutable {
            size_t i = 0;
            for (auto _ : state) {
                run(i++);
            }
        })->Unit(benchmark::kMicrosecond);
    };
    add("detectors", [&frames, facade = std::make_shared<ZELAlgo::AlgoFacade>()](size_t i) {
        const support::RenderedFrame& frame = frames[i % frames.size()];
        ZELAlgo::ZELVideoResult result{};
        facade->detectVideo({frame.width, frame.height, 0, frame.bytes.data()}, result);
        benchmark::DoNotOptimize(result);
    });
    add("judges", [&frames, meter = ZELJudges::FrameMeter(), measured = ZELJudges::MeasuredFrame(),
                   judges = ZELJudges::VideoJudges()](size_t i) mutable {
        const support::RenderedFrame& frame = frames[i % frames.size()];
        const double time_s = static_cast<double>(i) * kFrameS;
        meter.measure({.width = frame.width,
                       .height = frame.height,
                       .data = {frame.bytes.data(), chromaOf(frame, 0), chromaOf(frame, 1)},
                       .stride = {frame.width, frame.width / 2, frame.width / 2}},
                      time_s, measured);
        const auto settled = judges.feed(measured, time_s, kFrameS);
        benchmark::DoNotOptimize(settled.black.data());
    });
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
        registerClip(clip);
    }
    benchmark::RunSpecifiedBenchmarks();
}
