#include "judges/cell_kernels.h"

#if ZEL_SIMD

// clang-format off: foreach_target.h compiles this file once per instruction set and must come first.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "judges/cell_kernels_simd.cc"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include <algorithm>

HWY_BEFORE_NAMESPACE();
namespace ZELJudges::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

void measureBandSimd(const uint8_t* band, size_t stride, size_t width, const BandMeasures& measures) {
    measureBandScalar(band, stride, width, measures);
}

void sumBandSimd(const uint8_t* band, size_t stride, size_t width, uint16_t* sums) {
    sumBandScalar(band, stride, width, sums);
}

size_t countLikeSimd(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit) {
    return countLikeScalar(now, then, count, limit);
}

size_t markUnlikeSimd(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit,
                      uint16_t* marks) {
    return markUnlikeScalar(now, then, count, limit, marks);
}

CellSum sumUpToSimd(const uint16_t* cells, size_t count, uint16_t limit) {
    return sumUpToScalar(cells, count, limit);
}

size_t markPlainSimd(const PlainCells& cells, const PlainLimits& limits, uint8_t* marks) {
    return markPlainScalar(cells, limits, marks);
}

#else

constexpr hn::ScalableTag<uint8_t> kBytes{};
constexpr hn::Repartition<uint64_t, decltype(kBytes)> kCells{};  // eight samples each
constexpr hn::Repartition<uint16_t, decltype(kBytes)> kColumns{};
constexpr hn::Rebind<uint16_t, decltype(kCells)> kCellSums{};
constexpr hn::Rebind<uint8_t, decltype(kCells)> kCellBytes{};
constexpr hn::ScalableTag<int16_t> kShorts{};
constexpr hn::ScalableTag<int32_t> kInts{};
using Bytes = hn::VFromD<decltype(kBytes)>;
using Cells = hn::VFromD<decltype(kCells)>;
using Shorts = hn::VFromD<decltype(kShorts)>;

/// The lowest of the eight bytes of each cell, in its first byte.
HWY_INLINE Cells lowestByte(Bytes bytes) {
    const auto fold = [](Bytes v, Cells shifted)
                          HWY_ATTR { return hn::Min(v, hn::BitCast(kBytes, shifted)); };
    bytes = fold(bytes, hn::ShiftRight<32>(hn::BitCast(kCells, bytes)));
    bytes = fold(bytes, hn::ShiftRight<16>(hn::BitCast(kCells, bytes)));
    bytes = fold(bytes, hn::ShiftRight<8>(hn::BitCast(kCells, bytes)));
    return hn::And(hn::BitCast(kCells, bytes), hn::Set(kCells, 0xFF));
}

template <bool kStrips>
HWY_INLINE void measureCells(const uint8_t* band, size_t stride, size_t x, const BandMeasures& measures) {
    const size_t cell = x / kCellSide;
    auto sums = hn::Zero(kCells);
    auto low = hn::Set(kBytes, 255);
    auto high = hn::Zero(kBytes);
    auto left = hn::Zero(kColumns);
    auto right = left;
    for (size_t y = 0; y < kCellSide; ++y) {
        const auto samples = hn::LoadU(kBytes, band + y * stride + x);
        const auto sum = hn::SumsOf8(samples);
        sums = hn::Add(sums, sum);
        low = hn::Min(low, samples);
        high = hn::Max(high, samples);
        if constexpr (kStrips) {
            const hn::Half<decltype(kBytes)> half;
            left = hn::Add(left, hn::PromoteTo(kColumns, hn::LowerHalf(half, samples)));
            right = hn::Add(right, hn::PromoteTo(kColumns, hn::UpperHalf(half, samples)));
            hn::StoreU(hn::TruncateTo(kCellSums, sum), kCellSums,
                       measures.rows + y * measures.row_pitch + cell);
        }
    }
    hn::StoreU(hn::TruncateTo(kCellSums, sums), kCellSums, measures.sums + cell);
    hn::StoreU(hn::TruncateTo(kCellBytes, lowestByte(low)), kCellBytes, measures.darkest + cell);
    const auto highest = hn::Xor(lowestByte(hn::Not(high)), hn::Set(kCells, 0xFF));
    hn::StoreU(hn::TruncateTo(kCellBytes, highest), kCellBytes, measures.brightest + cell);
    if constexpr (kStrips) {
        hn::StoreU(left, kColumns, measures.columns + x);
        hn::StoreU(right, kColumns, measures.columns + x + hn::Lanes(kColumns));
    }
}

void measureBandSimd(const uint8_t* band, size_t stride, size_t width, const BandMeasures& measures) {
    const size_t step = hn::Lanes(kBytes);
    size_t x = 0;
    for (; x + step <= width; x += step) {
        if (measures.columns != nullptr) {
            measureCells<true>(band, stride, x, measures);
        } else {
            measureCells<false>(band, stride, x, measures);
        }
    }
    const size_t cell = x / kCellSide;
    const bool strips = measures.columns != nullptr;
    measureBandScalar(band + x, stride, width - x,
                      {.sums = measures.sums + cell,
                       .darkest = measures.darkest + cell,
                       .brightest = measures.brightest + cell,
                       .columns = strips ? measures.columns + x : nullptr,
                       .rows = strips ? measures.rows + cell : nullptr,
                       .row_pitch = measures.row_pitch});
}

void sumBandSimd(const uint8_t* band, size_t stride, size_t width, uint16_t* sums) {
    const size_t step = hn::Lanes(kBytes);
    size_t x = 0;
    for (; x + step <= width; x += step) {
        auto sum = hn::Zero(kCells);
        for (size_t y = 0; y < kCellSide; y += 2) {
            sum = hn::Add(sum, hn::SumsOf8(hn::LoadU(kBytes, band + y * stride + x)));
        }
        hn::StoreU(hn::TruncateTo(kCellSums, hn::Add(sum, sum)), kCellSums, sums + x / kCellSide);
    }
    sumBandScalar(band + x, stride, width - x, sums + x / kCellSide);
}

HWY_INLINE Shorts loadShorts(const uint16_t* values) {
    return hn::BitCast(kShorts, hn::LoadU(kColumns, values));
}

/// -1 where the cells differ by more than `limit`, 0 elsewhere.
HWY_INLINE Shorts unlike(const uint16_t* now, const uint16_t* then, Shorts limit) {
    const auto difference = hn::Abs(hn::Sub(loadShorts(now), loadShorts(then)));
    return hn::VecFromMask(kShorts, hn::Gt(difference, limit));
}

/// Sum of all lanes, none of them negative.
HWY_INLINE size_t total(Shorts counts) {
    auto others = hn::Zero(kInts);
    const auto sums =
        hn::ReorderWidenMulAccumulate(kInts, counts, hn::Set(kShorts, 1), hn::Zero(kInts), others);
    return static_cast<size_t>(hn::GetLane(hn::SumOfLanes(kInts, hn::Add(sums, others))));
}

constexpr size_t kMostRounds = 32767;  // what a lane can count

size_t countLikeSimd(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit) {
    const size_t lanes = hn::Lanes(kShorts);
    const auto limits = hn::Set(kShorts, static_cast<int16_t>(limit));
    size_t many = 0;
    size_t i = 0;
    while (i + lanes <= count) {
        const size_t first = i;
        auto counts = hn::Zero(kShorts);
        for (size_t round = 0; round < kMostRounds && i + lanes <= count; ++round, i += lanes) {
            counts = hn::Sub(counts, unlike(now + i, then + i, limits));
        }
        many += i - first - total(counts);
    }
    return many + countLikeScalar(now + i, then + i, count - i, limit);
}

size_t markUnlikeSimd(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit,
                      uint16_t* marks) {
    const size_t lanes = hn::Lanes(kShorts);
    const auto limits = hn::Set(kShorts, static_cast<int16_t>(limit));
    size_t marked = 0;
    size_t i = 0;
    while (i + lanes <= count) {
        auto counts = hn::Zero(kShorts);
        for (size_t round = 0; round < kMostRounds && i + lanes <= count; ++round, i += lanes) {
            const auto all = hn::Or(loadShorts(marks + i), unlike(now + i, then + i, limits));
            hn::StoreU(hn::BitCast(kColumns, all), kColumns, marks + i);
            counts = hn::Sub(counts, all);
        }
        marked += total(counts);
    }
    return marked + markUnlikeScalar(now + i, then + i, count - i, limit, marks + i);
}

CellSum sumUpToSimd(const uint16_t* cells, size_t count, uint16_t limit) {
    constexpr size_t kMostSummed = 256;  // rounds: two values below 2^15 each, in up to 64 lanes
    const size_t lanes = hn::Lanes(kShorts);
    const auto limits = hn::Set(kShorts, static_cast<int16_t>(limit));
    CellSum all{.count = 0, .sum = 0};
    size_t i = 0;
    while (i + lanes <= count) {
        const size_t first = i;
        auto beyond = hn::Zero(kShorts);
        auto sums = hn::Zero(kInts);
        auto others = sums;
        for (size_t round = 0; round < kMostSummed && i + lanes <= count; ++round, i += lanes) {
            const auto values = loadShorts(cells + i);
            const auto is_beyond = hn::VecFromMask(kShorts, hn::Gt(values, limits));
            beyond = hn::Sub(beyond, is_beyond);
            sums = hn::ReorderWidenMulAccumulate(kInts, hn::AndNot(is_beyond, values), hn::Set(kShorts, 1),
                                                 sums, others);
        }
        all.count += i - first - total(beyond);
        all.sum += static_cast<uint64_t>(hn::GetLane(hn::SumOfLanes(kInts, hn::Add(sums, others))));
    }
    const CellSum rest = sumUpToScalar(cells + i, count - i, limit);
    return {.count = all.count + rest.count, .sum = all.sum + rest.sum};
}

size_t markPlainSimd(const PlainCells& cells, const PlainLimits& limits, uint8_t* marks) {
    const hn::Rebind<uint8_t, decltype(kShorts)> half_bytes;
    const size_t lanes = hn::Lanes(kShorts);
    const auto set = [](int value) HWY_ATTR { return hn::Set(kShorts, static_cast<int16_t>(value)); };
    size_t marked = 0;
    size_t i = 0;
    while (i + lanes <= cells.count) {
        auto counts = hn::Zero(kShorts);
        for (size_t round = 0; round < kMostRounds && i + lanes <= cells.count; ++round, i += lanes) {
            const auto luma = loadShorts(cells.luma + i);
            const auto dark = hn::PromoteTo(kShorts, hn::LoadU(half_bytes, cells.darkest + i));
            const auto bright = hn::PromoteTo(kShorts, hn::LoadU(half_bytes, cells.brightest + i));
            const auto is_dark = hn::Gt(set(limits.most_dark + 1), luma);
            const auto is_grey =
                hn::And(hn::Gt(luma, set(limits.least_grey - 1)), hn::Gt(set(limits.most_grey + 1), luma));
            const auto is_even =
                hn::VecFromMask(kShorts, hn::Gt(set(limits.most_uneven + 1), hn::Sub(bright, dark)));
            const auto mark =
                hn::And(is_even, hn::Or(hn::And(hn::VecFromMask(kShorts, is_dark), set(kDarkMark)),
                                        hn::And(hn::VecFromMask(kShorts, is_grey), set(kGreyMark))));
            hn::StoreU(hn::DemoteTo(half_bytes, mark), half_bytes, marks + i);
            counts = hn::Sub(counts, hn::VecFromMask(kShorts, hn::Gt(mark, hn::Zero(kShorts))));
        }
        marked += total(counts);
    }
    const PlainCells rest{.luma = cells.luma + i,
                          .darkest = cells.darkest + i,
                          .brightest = cells.brightest + i,
                          .count = cells.count - i};
    return marked + markPlainScalar(rest, limits, marks + i);
}

#endif  // HWY_TARGET

}  // namespace ZELJudges::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ZELJudges {

HWY_EXPORT(measureBandSimd);
HWY_EXPORT(sumBandSimd);
HWY_EXPORT(countLikeSimd);
HWY_EXPORT(markUnlikeSimd);
HWY_EXPORT(sumUpToSimd);
HWY_EXPORT(markPlainSimd);

void measureBand(const uint8_t* band, size_t stride, size_t width, const BandMeasures& measures) {
    HWY_DYNAMIC_DISPATCH(measureBandSimd)(band, stride, width, measures);
}

void sumBand(const uint8_t* band, size_t stride, size_t width, uint16_t* sums) {
    HWY_DYNAMIC_DISPATCH(sumBandSimd)(band, stride, width, sums);
}

size_t countLike(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit) {
    return HWY_DYNAMIC_DISPATCH(countLikeSimd)(now, then, count, limit);
}

size_t markUnlike(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit, uint16_t* marks) {
    return HWY_DYNAMIC_DISPATCH(markUnlikeSimd)(now, then, count, limit, marks);
}

CellSum sumUpTo(const uint16_t* cells, size_t count, uint16_t limit) {
    return HWY_DYNAMIC_DISPATCH(sumUpToSimd)(cells, count, limit);
}

size_t markPlain(const PlainCells& cells, const PlainLimits& limits, uint8_t* marks) {
    return HWY_DYNAMIC_DISPATCH(markPlainSimd)(cells, limits, marks);
}

}  // namespace ZELJudges
#endif  // HWY_ONCE

#else  // ZEL_SIMD

namespace ZELJudges {

void measureBand(const uint8_t* band, size_t stride, size_t width, const BandMeasures& measures) {
    measureBandScalar(band, stride, width, measures);
}

void sumBand(const uint8_t* band, size_t stride, size_t width, uint16_t* sums) {
    sumBandScalar(band, stride, width, sums);
}

size_t countLike(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit) {
    return countLikeScalar(now, then, count, limit);
}

size_t markUnlike(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit, uint16_t* marks) {
    return markUnlikeScalar(now, then, count, limit, marks);
}

CellSum sumUpTo(const uint16_t* cells, size_t count, uint16_t limit) {
    return sumUpToScalar(cells, count, limit);
}

size_t markPlain(const PlainCells& cells, const PlainLimits& limits, uint8_t* marks) {
    return markPlainScalar(cells, limits, marks);
}

}  // namespace ZELJudges

#endif  // ZEL_SIMD
