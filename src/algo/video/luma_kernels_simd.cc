#include "algo/video/luma_kernels.h"

#if ZEL_SIMD

// clang-format off: foreach_target.h compiles this file once per instruction set and must come first.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algo/video/luma_kernels_simd.cc"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include <bit>
#include <cstring>

HWY_BEFORE_NAMESPACE();
namespace ZELAlgo::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

uint32_t zerosOfEveryFourthByteSimd(const uint8_t* data, size_t count) {
    return zerosOfEveryFourthByteScalar(data, count);
}

void replaceAndCompareSimd(const uint8_t* current, size_t stride, size_t rows, std::span<const size_t> cuts,
                           uint8_t* previous, uint32_t* sums) {
    replaceAndCompareScalar(current, stride, rows, cuts, previous, sums);
}

#else

uint32_t zerosOfEveryFourthByteSimd(const uint8_t* data, size_t count) {
    const hn::ScalableTag<uint32_t> words;
    const hn::Repartition<uint8_t, decltype(words)> bytes;
    const size_t lanes = hn::Lanes(words);
    const auto one = hn::Set(words, 1);
    auto zeros = hn::Zero(words);
    size_t i = 0;
    for (; i + lanes <= count; i += lanes) {
        const auto sample = hn::And(hn::BitCast(words, hn::LoadU(bytes, data + 4 * i)), hn::Set(words, 0xFF));
        zeros = hn::Add(zeros, hn::IfThenElseZero(hn::Eq(sample, hn::Zero(words)), one));
    }
    return hn::GetLane(hn::SumOfLanes(words, zeros)) + zerosOfEveryFourthByteScalar(data + 4 * i, count - i);
}

/// What has changed between `first` and `last`, bytes of both planes, which are equal before `first`.
HWY_INLINE uint32_t replaceRun(const uint8_t* current, size_t first, size_t last, uint8_t* previous) {
    const hn::ScalableTag<uint8_t> bytes;
    const hn::Repartition<uint64_t, decltype(bytes)> wide;
    const size_t lanes = hn::Lanes(bytes);
    auto sums = hn::Zero(wide);
    const auto replace = [&](size_t at) HWY_ATTR {
        const auto now = hn::LoadU(bytes, current + at);
        const auto then = hn::LoadU(bytes, previous + at);
        hn::StoreU(now, bytes, previous + at);
        sums = hn::Add(sums, hn::SumsOf8(hn::Sub(hn::Max(now, then), hn::Min(now, then))));
    };
    size_t at = first;
    for (; at + lanes <= last; at += lanes) {
        replace(at);
    }
    uint32_t sum = 0;
    if (at < last && last >= lanes) {
        replace(last - lanes);  // what is replaced already adds nothing
    } else if (at < last) {
        const size_t cuts[] = {at, last};
        replaceAndCompareScalar(current, 0, 1, cuts, previous, &sum);
    }
    return sum + static_cast<uint32_t>(hn::GetLane(hn::SumOfLanes(wide, sums)));
}

void replaceAndCompareSimd(const uint8_t* current, size_t stride, size_t rows, std::span<const size_t> cuts,
                           uint8_t* previous, uint32_t* sums) {
    for (size_t y = 0; y < rows; ++y) {
        for (size_t i = 0; i + 1 < cuts.size(); ++i) {
            sums[i] += replaceRun(current, y * stride + cuts[i], y * stride + cuts[i + 1], previous);
        }
    }
}

#endif  // HWY_TARGET

}  // namespace ZELAlgo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ZELAlgo {

HWY_EXPORT(zerosOfEveryFourthByteSimd);
HWY_EXPORT(replaceAndCompareSimd);

Histogram histogramOfEvenBytes(const uint8_t* data, size_t count) {
    // No vector instruction counts. Instead, samples that follow one another are counted apart, so that a run
    // of equal ones need not wait for its own counter, and eight bytes are fetched at a time.
    static_assert(std::endian::native == std::endian::little);
    constexpr size_t kParts = 8;
    std::array<Histogram, kParts> parts{};
    size_t i = 0;
    for (; i + kParts <= count; i += kParts) {
        for (size_t half = 0; half < 2; ++half) {
            uint64_t eight = 0;
            std::memcpy(&eight, data + 2 * i + 8 * half, sizeof eight);
            for (size_t k = 0; k < 4; ++k) {
                ++parts[4 * half + k][eight >> (16 * k) & 0xFF];
            }
        }
    }
    Histogram sum = histogramOfEvenBytesScalar(data + 2 * i, count - i);
    for (const Histogram& part : parts) {
        for (size_t level = 0; level < sum.size(); ++level) {
            sum[level] += part[level];
        }
    }
    return sum;
}

uint32_t zerosOfEveryFourthByte(const uint8_t* data, size_t count) {
    return HWY_DYNAMIC_DISPATCH(zerosOfEveryFourthByteSimd)(data, count);
}

void replaceAndCompare(const uint8_t* current, size_t stride, size_t rows, std::span<const size_t> cuts,
                       uint8_t* previous, uint32_t* sums) {
    HWY_DYNAMIC_DISPATCH(replaceAndCompareSimd)(current, stride, rows, cuts, previous, sums);
}

}  // namespace ZELAlgo
#endif  // HWY_ONCE

#else  // ZEL_SIMD

namespace ZELAlgo {

Histogram histogramOfEvenBytes(const uint8_t* data, size_t count) {
    return histogramOfEvenBytesScalar(data, count);
}

uint32_t zerosOfEveryFourthByte(const uint8_t* data, size_t count) {
    return zerosOfEveryFourthByteScalar(data, count);
}

void replaceAndCompare(const uint8_t* current, size_t stride, size_t rows, std::span<const size_t> cuts,
                       uint8_t* previous, uint32_t* sums) {
    replaceAndCompareScalar(current, stride, rows, cuts, previous, sums);
}

}  // namespace ZELAlgo

#endif  // ZEL_SIMD
