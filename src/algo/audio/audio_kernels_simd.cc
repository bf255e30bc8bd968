#include "algo/audio/audio_kernels.h"

#if ZEL_SIMD

// clang-format off: foreach_target.h compiles this file once per instruction set and must come first.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algo/audio/audio_kernels_simd.cc"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include "algo/audio/vad.h"

HWY_BEFORE_NAMESPACE();
namespace ZELAlgo::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

// Multiplications and additions stay apart everywhere: a fused one would round once instead of twice.
void trackBinsSimd(VadHandle_t& vad, const float* HWY_RESTRICT power, bool new_period) {
    const hn::ScalableTag<float> floats;
    const hn::ScalableTag<double> doubles;
    const hn::Rebind<float, decltype(doubles)> half;  // as many floats as there are doubles in a vector
    const size_t whole = kPowerBins - kPowerBins % hn::Lanes(floats);

    for (size_t k = 0; k < whole; k += hn::Lanes(floats)) {
        const auto fresh = hn::Mul(hn::Set(floats, 0.2F), hn::LoadU(floats, power + k));
        const auto smooth = hn::Add(fresh, hn::Mul(hn::Set(floats, 0.8F), hn::LoadU(floats, &vad.smooth[k])));
        const auto collected = hn::Min(hn::LoadU(floats, &vad.minimum_tmp[k]), smooth);
        const auto minimum = new_period ? collected : hn::Min(hn::LoadU(floats, &vad.minimum[k]), smooth);
        hn::StoreU(smooth, floats, &vad.smooth[k]);
        hn::StoreU(minimum, floats, &vad.minimum[k]);
        hn::StoreU(new_period ? smooth : collected, floats, &vad.minimum_tmp[k]);
    }
    for (size_t k = 0; k < whole; k += hn::Lanes(doubles)) {
        const auto smooth = hn::PromoteTo(doubles, hn::LoadU(half, &vad.smooth[k]));
        const auto minimum = hn::PromoteTo(doubles, hn::LoadU(half, &vad.minimum[k]));
        const auto ratio = hn::Div(smooth, hn::Add(minimum, hn::Set(doubles, 0.0001)));
        hn::StoreU(hn::DemoteTo(half, ratio), half, &vad.ratio[k]);
    }
    for (size_t k = 0; k < whole; k += hn::Lanes(floats)) {
        const auto above = hn::Gt(hn::LoadU(floats, &vad.ratio[k]), hn::Set(floats, 30.0F));
        const auto speech = hn::IfThenElseZero(above, hn::Set(floats, 0.8F));
        const auto past = hn::Mul(hn::Set(floats, 0.2F), hn::LoadU(floats, &vad.presence[k]));
        const auto presence = hn::Add(speech, past);
        const auto alpha = hn::Add(hn::Set(floats, 0.95F), hn::Mul(hn::Set(floats, 0.05F), presence));
        const auto fresh = hn::Mul(hn::Sub(hn::Set(floats, 1.0F), alpha), hn::LoadU(floats, power + k));
        const auto noise = hn::Add(fresh, hn::Mul(alpha, hn::LoadU(floats, &vad.noise[k])));
        hn::StoreU(presence, floats, &vad.presence[k]);
        hn::StoreU(alpha, floats, &vad.alpha[k]);
        hn::StoreU(noise, floats, &vad.noise[k]);
    }
    trackBinsScalar(vad, power, new_period, whole);
}

}  // namespace ZELAlgo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ZELAlgo {

HWY_EXPORT(trackBinsSimd);

void trackBins(VadHandle_t& vad, const float* power, bool new_period) {
    HWY_DYNAMIC_DISPATCH(trackBinsSimd)(vad, power, new_period);
}

}  // namespace ZELAlgo
#endif  // HWY_ONCE

#else  // ZEL_SIMD

void ZELAlgo::trackBins(VadHandle_t& vad, const float* power, bool new_period) {
    trackBinsScalar(vad, power, new_period);
}

#endif  // ZEL_SIMD
