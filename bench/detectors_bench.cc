#include <zel/algo/algo_facade.h>
#include <zel/base/log.h>

#include <cstring>
#include <functional>
#include <map>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <hwy/highway.h>

#include "filter_chain.h"
#include "support/patterns.h"
#include "support/rendered_frames.h"

// usage: detectors_bench [CLIP...] [--benchmark_...]
// One frame through each detector, plain and with each instruction set of this machine, beside FFmpeg's own
// filters and a copy of the frame, all in one thread on the same decoded frames. bench/compare makes a table
// of it.

namespace {

using ZELAlgo::AlgoFacade;
using ZELAlgo::ZELAlgoConfig;

constexpr size_t kFrames = 24;  // far more than any cache holds

/// The frames of one clip, decoded; as FFmpeg takes them only once they are needed.
struct Clip {
    std::vector<support::RenderedFrame> rendered;
    std::vector<bench::Frame> frames;

    uint32_t width() const { return rendered[0].width; }
    uint32_t height() const { return rendered[0].height; }
};

struct Detectors {
    const char* name;
    ZELAlgoConfig config;
};

ZELAlgoConfig only(bool screen_and_exposure, bool block, bool freeze) {
    ZELAlgoConfig config;
    config.enable_black_screen = config.enable_green_screen = config.enable_exposure = screen_and_exposure;
    config.enable_block = block;
    config.enable_staticframe = freeze;
    return config;
}

/// No verdict before the last corner pair has been counted.
ZELAlgoConfig countingToTheEnd() {
    ZELAlgoConfig config;
    config.block_param = 2e9F;
    return config;
}

const Detectors kDetectors[] = {{"all", only(true, true, true)},
                                {"screen_exposure", only(true, false, false)},
                                {"block", only(false, true, false)},
                                {"freeze", only(false, false, true)},
                                {"screen_exposure_freeze", only(true, false, true)}};

const std::pair<const char*, const char*> kFilters[] = {
    {"blackdetect", "blackdetect"},
    {"freezedetect", "freezedetect"},
    {"blockdetect", "blockdetect"},
    {"blackdetect_freezedetect", "blackdetect,freezedetect"},
    {"blackdetect_freezedetect_blockdetect", "blackdetect,freezedetect,blockdetect"},
    {"blackdetect_freezedetect_crop_blockdetect", "blackdetect,freezedetect,crop=iw/2:ih/2,blockdetect"},
    {"signalstats", "signalstats"}};

void registerFrames(const std::string& name, size_t count, std::function<void(size_t)> run) {
    benchmark::RegisterBenchmark(name.c_str(), [run = std::move(run), count](benchmark::State& state) {
        size_t i = 0;
        for (auto _ : state) {
            run(i++ % count);
        }
    })->Unit(benchmark::kMicrosecond);
}

using Detect = std::function<void(AlgoFacade&, size_t frame, ZELAlgo::ZELVideoResult&)>;

void registerDetectors(const std::string& name, const ZELAlgoConfig& config, size_t count,
                       const Detect& detect) {
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
        const auto facade = std::make_shared<AlgoFacade>(config);
        registerFrames(name + "/" + hwy::TargetName(target), count, [detect, facade, target](size_t i) {
            hwy::SetSupportedTargetsForTest(target);
            ZELAlgo::ZELVideoResult result{};
            detect(*facade, i, result);
            benchmark::DoNotOptimize(result);
            hwy::SetSupportedTargetsForTest(0);
        });
    }
}

void registerClip(Clip& clip) {
    const std::string size = std::to_string(clip.height());
    for (const support::RenderedFrame& rendered : clip.rendered) {
        clip.frames.push_back(bench::makeFrame(rendered));
    }
    for (const Detectors& detectors : kDetectors) {
        registerDetectors(
            size + "/" + detectors.name, detectors.config, clip.rendered.size(),
            [&clip](AlgoFacade& facade, size_t i, ZELAlgo::ZELVideoResult& result) {
                facade.detectVideo({clip.width(), clip.height(), 0, clip.rendered[i].bytes.data()}, result);
            });
    }
    registerDetectors(size + "/planes", {}, clip.frames.size(),
                      [&clip](AlgoFacade& facade, size_t i, ZELAlgo::ZELVideoResult& result) {
                          facade.detectPlanes(bench::planesOf(*clip.frames[i]), result);
                      });
    for (const auto& [name, filters] : kFilters) {
        const auto chain = std::make_shared<bench::FilterChain>(filters, *clip.frames[0], AVRational{1, 25});
        registerFrames(size + "/ffmpeg/" + name, clip.frames.size(),
                       [&clip, chain, time = 0](size_t i) mutable {
                           clip.frames[i]->pts = time++;
                           chain->pass(*clip.frames[i]);
                       });
    }
    const auto copy = std::make_shared<std::vector<uint8_t>>(clip.rendered[0].bytes.size());
    registerFrames(size + "/memcpy", clip.rendered.size(), [&clip, copy](size_t i) {
        std::memcpy(copy->data(), clip.rendered[i].bytes.data(), copy->size());
        benchmark::DoNotOptimize(copy->data());
    });
}

/// Drawn frames that drive the block detector to its limits, counted to the end.
void registerWorst(Clip& clip) {
    for (const support::Pattern pattern : support::kPatterns) {
        clip.rendered.push_back({1920, 1080, support::patternPlane(pattern, 1920, 1080 * 3 / 2, 1)});
    }
    for (size_t i = 0; i < clip.rendered.size(); ++i) {
        const auto facade = std::make_shared<AlgoFacade>(countingToTheEnd());
        registerFrames(
            std::string("drawn/") + support::name(support::kPatterns[i]), 1, [&clip, facade, i](size_t) {
                ZELAlgo::ZELVideoResult result{};
                facade->detectVideo({clip.width(), clip.height(), 0, clip.rendered[i].bytes.data()}, result);
                benchmark::DoNotOptimize(result);
            });
    }
}

}  // namespace

int main(int argc, char** argv) {
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    benchmark::Initialize(&argc, argv);
    std::vector<Clip> clips;
    for (int i = 1; i < argc; ++i) {
        clips.push_back({support::renderFrames(std::string("movie=") + argv[i], kFrames), {}});
    }
    if (clips.empty()) {
        clips.push_back({support::renderFrames("mandelbrot=s=320x180", kFrames), {}});
    }
    for (Clip& clip : clips) {
        registerClip(clip);
    }
    Clip worst;
    registerWorst(worst);
    benchmark::RunSpecifiedBenchmarks();
}
