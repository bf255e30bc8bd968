#include "algo/video/exposure_frame.h"

#include <algorithm>
#include <functional>
#include <new>
#include <optional>

#include "algo/video/exposure_model.h"
#include "algo/video/luma_kernels.h"
#include "algo/video/planes.h"
#include "algo/video/screen_type.h"
#include "base/log_format.h"

namespace ZELAlgo {
namespace {

/// Calls `visit(first byte, samples)` for the bytes at even positions of the first half of the luma plane:
/// the lower half of the frame is never looked at, which is intended.
template <typename Visit>
void forEachLumaRun(const Planes& frame, const Visit& visit) {
    forEachRun(frame.data[0], evenStride(frame), 2 * (frame.width / 2), frame.height / 2,
               [&visit](const uint8_t* run, size_t bytes) { visit(run, bytes / 2); });
}

LumaSummary lumaSummary(const Planes& frame) {
    LumaSummary sum;
    forEachLumaRun(frame,
                   [&sum](const uint8_t* run, size_t samples) { sum += summaryOfEvenBytes(run, samples); });
    return sum;
}

Histogram lumaHistogram(const Planes& frame) {
    Histogram sum{};
    forEachLumaRun(frame, [&sum](const uint8_t* run, size_t samples) {
        const Histogram part = histogramOfEvenBytes(run, samples);
        std::transform(sum.begin(), sum.end(), part.begin(), sum.begin(), std::plus<>());
    });
    return sum;
}

/// How many of the first `samples` of every fourth chroma byte are zero. They are counted on from row to row
/// and from one plane to the other.
uint32_t zeroChroma(const Planes& frame, size_t samples) {
    uint32_t zeros = 0;
    size_t skipped = 0;  // bytes before the next sample
    for (const size_t plane : {size_t{1}, size_t{2}}) {
        forEachRun(frame.data[plane], frame.stride[plane], frame.width / 2, frame.height / 2,
                   [&](const uint8_t* run, size_t bytes) {
                       const size_t held = skipped < bytes ? (bytes - skipped + 3) / 4 : 0;
                       const size_t count = std::min(held, samples);
                       zeros += zerosOfEveryFourthByte(run + std::min(skipped, bytes), count);
                       samples -= count;
                       skipped += 4 * held - bytes;
                   });
    }
    return zeros;
}

}  // namespace

ExposureFrame_t* ExposureCreate(const ZELAlgoConfig& config) {
    auto* const state = new (std::nothrow) ExposureFrame_t{config};
    if (state == nullptr) {
        ZEL::zel_log("ExposureFrame_t create fail ! \n");
    }
    return state;
}

int32_t ExposureExecute(ExposureFrame_t* state, const Planes& frame, uint32_t& screen_type,
                        uint32_t& exposure_type) {
    if (state == nullptr || frame.data[0] == nullptr) {
        ZEL::zel_log("ExposureExecute input is Null \n");
        return 1;
    }
    const ZELAlgoConfig& config = state->config;

    const size_t samples = static_cast<size_t>(frame.width / 2) * (frame.height / 2);
    const auto count = static_cast<uint32_t>(samples);
    const LumaSummary summary = lumaSummary(frame);
    // A summary settles nearly every frame. Beside a limit, the value of each sample counts.
    std::optional<Histogram> counted;
    const auto histogram = [&]() -> const Histogram& {
        return counted ? *counted : counted.emplace(lumaHistogram(frame));
    };

    if (config.enable_green_screen && isLumaZero(summary.zero, count, config.green_screen_ratio)) {
        const uint32_t zeros = zeroChroma(frame, samples / 2);
        if (isChromaZero(zeros, count, config.green_screen_ratio)) {
            screen_type = kScreenGreen;
            exposure_type = kExposureNormal;
            return 0;
        }
    }
    if (config.enable_black_screen) {
        const std::optional<bool> black = isClearlyBlack(summary.below_30, count, config.black_screen_ratio);
        if (black ? *black : isBlack(histogram(), count, config.black_screen_ratio)) {
            screen_type = kScreenBlack;
            exposure_type = kExposureNormal;
            return 0;
        }
        screen_type = kScreenNormal;
    }
    if (config.enable_exposure && samples > 0) {
        const std::optional<uint32_t> type = classifyClearExposure(summary, count);
        exposure_type = type ? *type : classifyExposure(exposureFeatures(histogram(), count));
    }
    return 0;
}

void ExposureDestroy(ExposureFrame_t* state) {
    delete state;
}

}  // namespace ZELAlgo
