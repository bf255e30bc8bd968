#include <zel/algo/algo_facade.h>
#include <zel/base/log.h>

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "judges/frame_meter.h"
#include "judges/video_judges.h"
#include "support/rendered_pictures.h"

// usage: judges_bench [CLIP...] [--benchmark_...]
// One frame at 25 a second through the detectors, and through what the judges of events add to them.

namespace {

constexpr size_t kPictures = 50;
constexpr double kFrameS = 0.04;

using Pictures = std::vector<support::RenderedPicture>;

const uint8_t* chromaOf(const support::RenderedPicture& picture, size_t plane) {
    const size_t luma = size_t{picture.width} * picture.height;
    return picture.bytes.data() + luma + plane * luma / 4;
}

void registerClip(const Pictures& pictures) {
    const std::string size = std::to_string(pictures[0].height);
    const auto add = [&](const char* name, auto run) {
        benchmark::RegisterBenchmark((size + "/" + name).c_str(), [run](benchmark::State& state) mutable {
            size_t i = 0;
            for (auto _ : state) {
                run(i++);
            }
        })->Unit(benchmark::kMicrosecond);
    };
    add("detectors", [&pictures, facade = std::make_shared<ZELAlgo::AlgoFacade>()](size_t i) {
        const support::RenderedPicture& picture = pictures[i % pictures.size()];
        ZELAlgo::ZELVideoResult result{};
        facade->detectVideo({picture.width, picture.height, 0, picture.bytes.data()}, result);
        benchmark::DoNotOptimize(result);
    });
    add("judges", [&pictures, meter = ZELJudges::FrameMeter(), measured = ZELJudges::MeasuredFrame(),
                   judges = ZELJudges::VideoJudges()](size_t i) mutable {
        const support::RenderedPicture& picture = pictures[i % pictures.size()];
        const double time_s = static_cast<double>(i) * kFrameS;
        meter.measure({.width = picture.width,
                       .height = picture.height,
                       .data = {picture.bytes.data(), chromaOf(picture, 0), chromaOf(picture, 1)},
                       .stride = {picture.width, picture.width / 2, picture.width / 2}},
                      time_s, measured);
        const auto settled = judges.feed(measured, time_s, kFrameS);
        benchmark::DoNotOptimize(settled.black.data());
    });
}

}  // namespace

int main(int argc, char** argv) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    benchmark::Initialize(&argc, argv);
    std::vector<Pictures> clips;
    for (int i = 1; i < argc; ++i) {
        clips.push_back(support::renderPictures(std::string("movie=") + argv[i], kPictures));
    }
    if (clips.empty()) {
        clips.push_back(support::renderPictures("mandelbrot=s=320x180", kPictures));
    }
    for (const Pictures& clip : clips) {
        registerClip(clip);
    }
    benchmark::RunSpecifiedBenchmarks();
}
