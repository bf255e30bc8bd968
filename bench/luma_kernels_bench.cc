#include "algo/video/luma_kernels.h"

#include <algorithm>
#include <cstring>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <hwy/highway.h>

#include "algo/video/block_corners.h"
#include "algo/video/edge_kernels.h"
#include "algo/video/smoothing_kernels.h"
#include "support/patterns.h"

// Every video kernel, plain and with each instruction set of this machine, on one frame of 1920x1080; those
// of the block detector on its middle.

namespace {

constexpr size_t kWidth = 1920;
constexpr size_t kHeight = 1080;
constexpr size_t kHalfWidth = kWidth / 2;
constexpr size_t kHalfHeight = kHeight / 2;
constexpr size_t kSamples = kHalfWidth * kHalfHeight;

/// An I420 frame, and what the kernels make of it.
struct Material {
    std::vector<uint8_t> frame = support::patternPlane(support::Pattern::kClouds, kWidth, kHeight * 3 / 2, 5);
    std::vector<uint8_t> previous = support::patternPlane(support::Pattern::kClouds, kWidth, kHeight, 6);
    ZELAlgo::GaussianKernel kernel = ZELAlgo::gaussianKernel();
    std::vector<uint8_t> scratch = std::vector<uint8_t>(std::max(
        ZELAlgo::smoothingScratch(kHalfWidth, kHalfHeight), ZELAlgo::edgeScratch(kHalfWidth, kHalfHeight)));
    std::vector<uint8_t> smooth = std::vector<uint8_t>(kSamples + ZELAlgo::kSpareBytes);
    std::vector<uint8_t> work =
        std::vector<uint8_t>(ZELAlgo::magnitudeStride(kHalfWidth) * kHalfHeight + 2 * ZELAlgo::kSpareBytes);
    std::vector<uint64_t> map = std::vector<uint64_t>(ZELAlgo::edgeMapWords(kHalfWidth) * kHalfHeight);
    ZELAlgo::EdgeLevels levels;

    const uint8_t* middle() const { return frame.data() + kHalfHeight / 2 * kWidth + kHalfWidth / 2; }
    uint8_t* magnitude() { return work.data() + ZELAlgo::kSpareBytes; }

    Material() {
        ZELAlgo::smooth(kernel, middle(), kWidth, kHalfWidth, kHalfHeight, scratch.data(), smooth.data());
        levels = ZELAlgo::edgeLevels(
            ZELAlgo::thinnedMagnitude(smooth.data(), kHalfWidth, kHalfHeight, scratch.data(), magnitude()));
        ZELAlgo::threshold(magnitude(), smooth.data(), kHalfWidth, kHalfHeight, levels, scratch.data(),
                           map.data());
    }
};

Material& material() {
    static Material once;
    return once;
}

struct Kernel {
    const char* name;
    void (*fast)(Material&);
    void (*plain)(Material&);
};

constexpr size_t kCuts[] = {0, 400, 480, 600, 1360, 1440, 1560, kWidth};

const Kernel kKernels[] = {
    {"histogramOfEvenBytes",
     [](Material& m) { benchmark::DoNotOptimize(ZELAlgo::histogramOfEvenBytes(m.frame.data(), kSamples)); },
     [](Material& m) {
         benchmark::DoNotOptimize(ZELAlgo::histogramOfEvenBytesScalar(m.frame.data(), kSamples));
     }},
    {"summaryOfEvenBytes",
     [](Material& m) { benchmark::DoNotOptimize(ZELAlgo::summaryOfEvenBytes(m.frame.data(), kSamples)); },
     [](Material& m) {
         benchmark::DoNotOptimize(ZELAlgo::summaryOfEvenBytesScalar(m.frame.data(), kSamples));
     }},
    {"zerosOfEveryFourthByte",
     [](Material& m) {
         benchmark::DoNotOptimize(
             ZELAlgo::zerosOfEveryFourthByte(m.frame.data() + 4 * kSamples, kSamples / 2));
     },
     [](Material& m) {
         benchmark::DoNotOptimize(
             ZELAlgo::zerosOfEveryFourthByteScalar(m.frame.data() + 4 * kSamples, kSamples / 2));
     }},
    {"replaceAndCompare",
     [](Material& m) {
         uint32_t sums[7] = {};
         ZELAlgo::replaceAndCompare(m.frame.data(), kWidth, kHeight, kCuts, m.previous.data(), sums);
         benchmark::DoNotOptimize(sums);
     },
     [](Material& m) {
         uint32_t sums[7] = {};
         ZELAlgo::replaceAndCompareScalar(m.frame.data(), kWidth, kHeight, kCuts, m.previous.data(), sums);
         benchmark::DoNotOptimize(sums);
     }},
    {"smooth",
     [](Material& m) {
         ZELAlgo::smooth(m.kernel, m.middle(), kWidth, kHalfWidth, kHalfHeight, m.scratch.data(),
                         m.smooth.data());
     },
     [](Material& m) {
         ZELAlgo::smoothScalar(m.kernel, m.middle(), kWidth, kHalfWidth, kHalfHeight, m.smooth.data());
     }},
    {"thinnedMagnitude",
     [](Material& m) {
         benchmark::DoNotOptimize(ZELAlgo::thinnedMagnitude(m.smooth.data(), kHalfWidth, kHalfHeight,
                                                            m.scratch.data(), m.magnitude()));
     },
     [](Material& m) {
         benchmark::DoNotOptimize(ZELAlgo::thinnedMagnitudeScalar(m.smooth.data(), kHalfWidth, kHalfHeight,
                                                                  m.scratch.data(), m.magnitude()));
     }},
    {"threshold",
     [](Material& m) {
         ZELAlgo::threshold(m.magnitude(), m.smooth.data(), kHalfWidth, kHalfHeight, m.levels,
                            m.scratch.data(), m.map.data());
     },
     [](Material& m) {
         ZELAlgo::thresholdScalar(m.magnitude(), m.smooth.data(), kHalfWidth, kHalfHeight, m.levels,
                                  m.map.data());
     }},
};

void findCorners(benchmark::State& state) {
    static ZELAlgo::Corners corners;
    for (auto _ : state) {
        ZELAlgo::findCorners(material().map.data(), kHalfWidth, kHalfHeight, corners);
        benchmark::DoNotOptimize(ZELAlgo::closesEnoughBlocks(corners, kHalfWidth, kHalfHeight, 1'000'000,
                                                             material().scratch.data()));
    }
}
BENCHMARK(findCorners);

/// What moving the frame costs.
void copyFrame(benchmark::State& state) {
    const Material& m = material();
    std::vector<uint8_t> copy(m.frame.size());
    for (auto _ : state) {
        std::memcpy(copy.data(), m.frame.data(), copy.size());
        benchmark::DoNotOptimize(copy.data());
    }
}
BENCHMARK(copyFrame);

const bool kRegistered = [] {
    for (const Kernel& kernel : kKernels) {
        benchmark::RegisterBenchmark((std::string(kernel.name) + "/plain").c_str(),
                                     [&kernel](benchmark::State& s) {
                                         for (auto _ : s) {
                                             kernel.plain(material());
                                         }
                                     });
        for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
            const std::string name = std::string(kernel.name) + "/" + hwy::TargetName(target);
            benchmark::RegisterBenchmark(name.c_str(), [&kernel, target](benchmark::State& s) {
                hwy::SetSupportedTargetsForTest(target);
                for (auto _ : s) {
                    kernel.fast(material());
                }
                hwy::SetSupportedTargetsForTest(0);
            });
        }
    }
    return true;
}();

}  // namespace
