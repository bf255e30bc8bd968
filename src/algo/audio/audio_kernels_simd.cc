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

uint32_t magnitudeSumSimd(const int16_t* HWY_RESTRICT samples, size_t count) {
    const hn::ScalableTag<int32_t> wide;
    const hn::Rebind<int16_t, decltype(wide)> narrow;
    const hn::RebindToUnsigned<decltype(wide)> words;
    const size_t lanes = hn::Lanes(wide);
    auto sums = hn::Zero(words);
    size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto magnitude = hn::Abs(hn::PromoteTo(wide, hn::LoadU(narrow, samples + i)));
        sums = hn::Add(sums, hn::BitCast(words, magnitude));
    }
    return hn::GetLane(hn::SumOfLanes(words, sums)) + magnitudeSumScalar(samples + i, count - i);
}

void applyWindowSimd(const int16_t* HWY_RESTRICT samples, const float* HWY_RESTRICT window, size_t count,
                     float* HWY_RESTRICT weighted) {
    const hn::ScalableTag<float> floats;
    const hn::RebindToSigned<decltype(floats)> wide;
    const hn::Rebind<int16_t, decltype(wide)> narrow;
    const size_t lanes = hn::Lanes(floats);
    size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto sample = hn::ConvertTo(floats, hn::PromoteTo(wide, hn::LoadU(narrow, samples + i)));
        hn::StoreU(hn::Mul(sample, hn::LoadU(floats, window + i)), floats, weighted + i);
    }
    applyWindowScalar(samples + i, window + i, count - i, weighted + i);
}

void pairPowersSimd(const float* HWY_RESTRICT pairs, size_t count, float* HWY_RESTRICT power) {
    const hn::ScalableTag<float> floats;
    const size_t lanes = hn::Lanes(floats);
    size_t k = 0;
    for (; k + lanes <= count; k += lanes) {
        hn::VFromD<decltype(floats)> re;
        hn::VFromD<decltype(floats)> im;
        hn::LoadInterleaved2(floats, pairs + 2 * k, re, im);
        hn::StoreU(hn::Add(hn::Mul(re, re), hn::Mul(im, im)), floats, power + k);  // never MulAdd
    }
    pairPowersScalar(pairs + 2 * k, count - k, power + k);
}

/// As wide as the one step in double precision allows. Multiplications and additions stay apart: a fused one
/// would round once instead of twice.
void trackBinsSimd(VadHandle_t& vad, const float* HWY_RESTRICT power, bool new_period) {
    const hn::ScalableTag<double> doubles;
    const hn::Rebind<float, decltype(doubles)> floats;
    const size_t lanes = hn::Lanes(doubles);
    size_t k = 0;
    for (; k + lanes <= kPowerBins; k += lanes) {
        const auto p = hn::LoadU(floats, power + k);
        const auto smooth = hn::Add(hn::Mul(hn::Set(floats, 0.2F), p),
                                    hn::Mul(hn::Set(floats, 0.8F), hn::LoadU(floats, &vad.smooth[k])));
        hn::StoreU(smooth, floats, &vad.smooth[k]);

        const auto collected = hn::Min(hn::LoadU(floats, &vad.minimum_tmp[k]), smooth);
        const auto minimum = new_period ? collected : hn::Min(hn::LoadU(floats, &vad.minimum[k]), smooth);
        hn::StoreU(minimum, floats, &vad.minimum[k]);
        hn::StoreU(new_period ? smooth : collected, floats, &vad.minimum_tmp[k]);

        const auto floor = hn::Add(hn::PromoteTo(doubles, minimum), hn::Set(doubles, 0.0001));
        const auto ratio = hn::DemoteTo(floats, hn::Div(hn::PromoteTo(doubles, smooth), floor));
        hn::StoreU(ratio, floats, &vad.ratio[k]);

        const auto speech = hn::IfThenElseZero(hn::Gt(ratio, hn::Set(floats, 30.0F)), hn::Set(floats, 0.8F));
        const auto presence =
            hn::Add(speech, hn::Mul(hn::Set(floats, 0.2F), hn::LoadU(floats, &vad.presence[k])));
        hn::StoreU(presence, floats, &vad.presence[k]);

        const auto alpha = hn::Add(hn::Set(floats, 0.95F), hn::Mul(hn::Set(floats, 0.05F), presence));
        hn::StoreU(alpha, floats, &vad.alpha[k]);
        const auto noise = hn::Add(hn::Mul(hn::Sub(hn::Set(floats, 1.0F), alpha), p),
                                   hn::Mul(alpha, hn::LoadU(floats, &vad.noise[k])));
        hn::StoreU(noise, floats, &vad.noise[k]);
    }
    trackBinsScalar(vad, power, new_period, k);
}

}  // namespace ZELAlgo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ZELAlgo {

HWY_EXPORT(magnitudeSumSimd);
HWY_EXPORT(applyWindowSimd);
HWY_EXPORT(pairPowersSimd);
HWY_EXPORT(trackBinsSimd);

uint32_t magnitudeSum(const int16_t* samples, size_t count) {
    return HWY_DYNAMIC_DISPATCH(magnitudeSumSimd)(samples, count);
}

void applyWindow(const int16_t* samples, const float* window, size_t count, float* weighted) {
    HWY_DYNAMIC_DISPATCH(applyWindowSimd)(samples, window, count, weighted);
}

void pairPowers(const float* pairs, size_t count, float* power) {
    HWY_DYNAMIC_DISPATCH(pairPowersSimd)(pairs, count, power);
}

void trackBins(VadHandle_t& vad, const float* power, bool new_period) {
    HWY_DYNAMIC_DISPATCH(trackBinsSimd)(vad, power, new_period);
}

}  // namespace ZELAlgo
#endif  // HWY_ONCE

#else  // ZEL_SIMD

namespace ZELAlgo {

uint32_t magnitudeSum(const int16_t* samples, size_t count) {
    return magnitudeSumScalar(samples, count);
}

void applyWindow(const int16_t* samples, const float* window, size_t count, float* weighted) {
    applyWindowScalar(samples, window, count, weighted);
}

void pairPowers(const float* pairs, size_t count, float* power) {
    pairPowersScalar(pairs, count, power);
}

void trackBins(VadHandle_t& vad, const float* power, bool new_period) {
    trackBinsScalar(vad, power, new_period);
}

}  // namespace ZELAlgo

#endif  // ZEL_SIMD
