#include "algo/audio/audio_kernels.h"

#include <cstdint>
#include <string>

#include <benchmark/benchmark.h>
#include <hwy/highway.h>

#include "algo/audio/vad.h"
#include "support/random.h"

// One spectrum through the detector's update: the plain one, then the fast one with
// every instruction set of this machine.

namespace {

/// A detector, and the spectrum of one chunk.
struct Input {
    ZELAlgo::VadHandle_t vad;
    ZELAlgo::VadHandle_t::Bins power{};

    Input() {
        support::Random random(1);
        for (auto& value : power) {
            value = 1.0F + static_cast<float>(random.below(100'000));
        }
    }
};

void plain(benchmark::State& state) {
    Input input;
    for (auto unused : state) {
        ZELAlgo::trackBinsScalar(input.vad, input.power.data(), false);
        benchmark::ClobberMemory();
    }
}
BENCHMARK(plain)->Name("trackBins/plain");

void fast(benchmark::State& state, int64_t target) {
    hwy::SetSupportedTargetsForTest(target);
    Input input;
    for (auto unused : state) {
        ZELAlgo::trackBins(input.vad, input.power.data(), false);
        benchmark::ClobberMemory();
    }
    hwy::SetSupportedTargetsForTest(0);
}

const bool kRegistered = [] {
    for (const int64_t target : hwy::SupportedAndGeneratedTargets()) {
        benchmark::RegisterBenchmark((std::string("trackBins/") + hwy::TargetName(target)).c_str(), &fast,
                                     target);
    }
    return true;
}();

}  // namespace
