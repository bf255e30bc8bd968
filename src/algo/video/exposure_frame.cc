#include "algo/video/exposure_frame.h"

#include <new>
#include <optional>

#include "algo/video/exposure_model.h"
#include "algo/video/luma_kernels.h"
#include "algo/video/screen_type.h"
#include "base/log_format.h"

namespace ZELAlgo {

ExposureFrame_t* ExposureCreate(const ExposureSettings& settings) {
    auto* const state = new (std::nothrow) ExposureFrame_t{settings};
    if (state == nullptr) {
        ZEL::zel_log("ExposureFrame_t create fail ! \n");
    }
    return state;
}

int32_t ExposureExecute(ExposureFrame_t* state, const uint8_t* data, uint32_t width, uint32_t height,
                        uint32_t& screen_type, uint32_t& exposure_type) {
    if (state == nullptr || data == nullptr) {
        ZEL::zel_log("ExposureExecute input is Null \n");
        return 1;
    }
    const ExposureSettings& settings = state->settings;

    // Every second byte of the first half of the luma plane: the lower half of the picture is never looked
    // at, which is intended.
    const size_t samples = static_cast<size_t>(width / 2) * (height / 2);
    const auto count = static_cast<uint32_t>(samples);
    const LumaSummary summary = summaryOfEvenBytes(data, samples);
    // A summary settles nearly every picture. Beside a limit, the value of each sample counts.
    std::optional<Histogram> counted;
    const auto histogram = [&]() -> const Histogram& {
        return counted ? *counted : counted.emplace(histogramOfEvenBytes(data, samples));
    };

    if (settings.green_on && isLumaZero(summary.zero, count, settings.green_ratio)) {
        // Every fourth byte from the end of the luma plane on, half of them from each chroma plane.
        const uint32_t zeros = zerosOfEveryFourthByte(data + 4 * samples, samples / 2);
        if (isChromaZero(zeros, count, settings.green_ratio)) {
            screen_type = kGreenScreen;
            exposure_type = kNormalExposure;
            return 0;
        }
    }
    if (settings.black_on) {
        const std::optional<bool> black = isClearlyBlack(summary.below_30, count, settings.black_ratio);
        if (black ? *black : isBlack(histogram(), count, settings.black_ratio)) {
            screen_type = kBlackScreen;
            exposure_type = kNormalExposure;
            return 0;
        }
        screen_type = kNormalScreen;
    }
    if (settings.exposure_on && samples > 0) {
        const std::optional<ExposureType> type = classifyClearExposure(summary, count);
        exposure_type = type ? *type : classifyExposure(exposureFeatures(histogram(), count));
    }
    return 0;
}

void ExposureDestroy(ExposureFrame_t* state) {
    delete state;
}

}  // namespace ZELAlgo
