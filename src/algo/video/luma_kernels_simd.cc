#include "algo/video/luma_kernels.h"

#if ZEL_SIMD

// clang-format off: foreach_target.h compiles this file once per instruction set and must come first.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algo/video/luma_kernels_simd.cc"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include <algorithm>
#include <bit>
#include <cstring>
#include <numeric>

HWY_BEFORE_NAMESPACE();
namespace ZELAlgo::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

LumaSummary summaryOfEvenBytesSimd(const uint8_t* data, size_t count) {
    return summaryOfEvenBytesScalar(data, count);
}

uint32_t zerosOfEveryFourthByteSimd(const uint8_t* data, size_t count) {
    return zerosOfEveryFourthByteScalar(data, count);
}

void replaceAndCompareSimd(const uint8_t* current, size_t stride, size_t rows, std::span<const size_t> cuts,
                           uint8_t* previous, uint32_t* sums) {
    replaceAndCompareScalar(current, stride, rows, cuts, previous, sums);
}

#else

constexpr hn::ScalableTag<int16_t> kShorts{};
constexpr hn::ScalableTag<int32_t> kInts{};
using Shorts = hn::VFromD<decltype(kShorts)>;
using Ints = hn::VFromD<decltype(kInts)>;

/// Adds a[2i] * b[2i] + a[2i + 1] * b[2i + 1] to every sum.
HWY_INLINE Ints addPairProducts(Shorts a, Shorts b, Ints sums) {
    auto others = hn::Zero(kInts);
    sums = hn::ReorderWidenMulAccumulate(kInts, a, b, sums, others);
    return hn::Add(sums, others);
}

HWY_INLINE int64_t total(Ints sums) {
    HWY_ALIGN int32_t lanes[hn::MaxLanes(kInts)];
    hn::Store(sums, kInts, lanes);
    return std::accumulate(lanes, lanes + hn::Lanes(kInts), int64_t{0});
}

/// A summary of whole vectors, few enough for sums of 32 bits.
HWY_INLINE void addSummary(const uint8_t* data, size_t vectors, LumaSummary& summary) {
    const hn::Repartition<uint8_t, decltype(kShorts)> bytes;
    const auto one = hn::Set(kShorts, 1);
    auto zero = hn::Zero(kShorts);
    auto below_30 = zero;
    auto below_61 = zero;
    auto below_200 = zero;
    auto first = hn::Zero(kInts);
    auto second = first;
    auto third = first;
    for (size_t i = 0; i < vectors; ++i) {
        const auto both = hn::BitCast(kShorts, hn::LoadU(bytes, data + i * hn::Lanes(bytes)));
        const auto sample = hn::And(both, hn::Set(kShorts, 0xFF));
        const auto count = [&](Shorts& counter, int16_t limit) HWY_ATTR {
            counter = hn::Sub(counter, hn::VecFromMask(kShorts, hn::Lt(sample, hn::Set(kShorts, limit))));
        };
        count(zero, 1);
        count(below_30, 30);
        count(below_61, 61);
        count(below_200, 200);
        const auto distance = hn::Sub(sample, hn::Set(kShorts, 128));
        const auto square = hn::Mul(distance, distance);
        first = addPairProducts(distance, one, first);
        second = addPairProducts(distance, distance, second);
        third = addPairProducts(square, distance, third);
    }
    const auto counted = [&](Shorts counter) HWY_ATTR {
        return static_cast<uint32_t>(total(addPairProducts(counter, one, hn::Zero(kInts))));
    };
    summary.zero += counted(zero);
    summary.below_30 += counted(below_30);
    summary.below_61 += counted(below_61);
    summary.below_200 += counted(below_200);
    summary.first += total(first);
    summary.second += total(second);
    summary.third += total(third);
}

LumaSummary summaryOfEvenBytesSimd(const uint8_t* data, size_t count) {
    constexpr size_t kMostVectors = 256;  // two cubes of 128 a round stay below 2^31
    const size_t lanes = hn::Lanes(kShorts);
    LumaSummary summary;
    size_t i = 0;
    while (i + lanes <= count) {
        const size_t vectors = std::min((count - i) / lanes, kMostVectors);
        addSummary(data + 2 * i, vectors, summary);
        i += vectors * lanes;
    }
    return summary += summaryOfEvenBytesScalar(data + 2 * i, count - i);
}

uint32_t zerosOfEveryFourthByteSimd(const uint8_t* data, size_t count) {
    const hn::ScalableTag<uint32_t> words;
    const hn::Repartition<uint8_t, decltype(words)> bytes;
    const size_t lanes = hn::Lanes(words);
    const auto one = hn::Set(words, 1);
    auto zeros = hn::Zero(words);
    size_t i = 0;
    for (; i + lanes < count; i += lanes) {  // not the last sample, behind which nothing may be read
        const auto sample = hn::And(hn::BitCast(words, hn::LoadU(bytes, data + 4 * i)), hn::Set(words, 0xFF));
        zeros = hn::Add(zeros, hn::IfThenElseZero(hn::Eq(sample, hn::Zero(words)), one));
    }
    return hn::GetLane(hn::SumOfLanes(words, zeros)) + zerosOfEveryFourthByteScalar(data + 4 * i, count - i);
}

/// What has changed between the columns `first` and `last` of a row, which is replaced up to `first`.
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
    for (size_t y = 0; y < rows; ++y, current += stride, previous += cuts.back()) {
        for (size_t i = 0; i + 1 < cuts.size(); ++i) {
            sums[i] += replaceRun(current, cuts[i], cuts[i + 1], previous);
        }
    }
}

#endif  // HWY_TARGET

}  // namespace ZELAlgo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ZELAlgo {

HWY_EXPORT(summaryOfEvenBytesSimd);
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

LumaSummary summaryOfEvenBytes(const uint8_t* data, size_t count) {
    return HWY_DYNAMIC_DISPATCH(summaryOfEvenBytesSimd)(data, count);
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

LumaSummary summaryOfEvenBytes(const uint8_t* data, size_t count) {
    return summaryOfEvenBytesScalar(data, count);
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
