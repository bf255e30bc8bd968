#include "algo/video/edge_kernels.h"

#if ZEL_SIMD

// Captured vectors and rows of 64 bits need vectors of a fixed size.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
// clang-format off: foreach_target.h compiles this file once per instruction set and must come first.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algo/video/edge_kernels_simd.cc"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include <algorithm>
#include <utility>

#include "algo/video/thin_row-inl.h"

HWY_BEFORE_NAMESPACE();
namespace ZELAlgo::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

uint8_t thinnedMagnitudeSimd(const uint8_t* smooth, size_t width, size_t height, uint8_t* scratch,
                             uint8_t* magnitude) {
    return thinnedMagnitudeScalar(smooth, width, height, scratch, magnitude);
}

void thresholdSimd(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
                   EdgeLevels levels, uint8_t* /*scratch*/, uint64_t* edge_map) {
    thresholdScalar(magnitude, smooth, width, height, levels, edge_map);
}

#else

/// Gradient of one row: vertical sums and differences of three rows first, then across.
class GradientRow {
  public:
    /// `sums` and `differences` hold `width` values and a vector more, with one value before them.
    GradientRow(size_t width, int16_t* sums, int16_t* differences)
        : width_(width), sums_(sums), differences_(differences) {}

    void run(const uint8_t* above, const uint8_t* row, const uint8_t* below, uint8_t* magnitude,
             uint64_t* horizontal, uint64_t* vertical) const {
        const size_t lanes = hn::Lanes(kShorts);
        for (size_t x = 0; x < width_; x += lanes) {
            const auto a = hn::PromoteTo(kShorts, hn::LoadU(kHalfBytes, above + x));
            const auto r = hn::PromoteTo(kShorts, hn::LoadU(kHalfBytes, row + x));
            const auto b = hn::PromoteTo(kShorts, hn::LoadU(kHalfBytes, below + x));
            hn::StoreU(hn::Add(hn::Add(a, b), hn::Add(r, r)), kShorts, sums_ + x);
            hn::StoreU(hn::Sub(a, b), kShorts, differences_ + x);
        }
        for (int16_t* const values : {sums_, differences_}) {
            values[-1] = values[0];
            values[width_] = values[width_ - 1];
        }
        auto* const horizontal_bits = reinterpret_cast<uint8_t*>(horizontal);
        auto* const vertical_bits = reinterpret_cast<uint8_t*>(vertical);
        for (size_t x = 0; x < width_; x += lanes) {
            const auto gx = hn::Sub(hn::LoadU(kShorts, sums_ + x - 1), hn::LoadU(kShorts, sums_ + x + 1));
            const auto middle = hn::LoadU(kShorts, differences_ + x);
            const auto gy =
                hn::Add(hn::Add(hn::LoadU(kShorts, differences_ + x - 1), hn::Add(middle, middle)),
                        hn::LoadU(kShorts, differences_ + x + 1));
            const auto along = hn::Abs(gx);
            const auto across = hn::Abs(gy);
            hn::StoreMaskBits(kShorts, hn::Gt(along, across), horizontal_bits + x / 8);
            hn::StoreMaskBits(kShorts, hn::Gt(across, along), vertical_bits + x / 8);
            hn::StoreU(length(along, across), kHalfBytes, magnitude + x);
        }
    }

  private:
    static constexpr hn::ScalableTag<int16_t> kShorts{};
    static constexpr hn::RebindToUnsigned<decltype(kShorts)> kWords{};
    static constexpr hn::Rebind<uint8_t, decltype(kShorts)> kHalfBytes{};
    static constexpr hn::ScalableTag<int32_t> kInts{};
    static constexpr hn::ScalableTag<float> kFloats{};
    using Shorts = hn::VFromD<decltype(kShorts)>;
    using Ints = hn::VFromD<decltype(kInts)>;

    /// Rounded length, at most 255. Longer sides than that need no exact square.
    static HWY_INLINE hn::VFromD<decltype(kHalfBytes)> length(Shorts along, Shorts across) {
        const auto longest = hn::Set(kShorts, 255);
        const auto x = hn::BitCast(kWords, hn::Min(along, longest));
        const auto y = hn::BitCast(kWords, hn::Min(across, longest));
        const auto square =
            hn::Min(hn::SaturatedAdd(hn::Mul(x, x), hn::Mul(y, y)), hn::Set(kWords, 255 * 255));
        const auto pairs = hn::BitCast(kInts, square);
        const hn::RebindToUnsigned<decltype(kInts)> unsigned_ints;
        const auto odd = hn::BitCast(kInts, hn::ShiftRight<16>(hn::BitCast(unsigned_ints, pairs)));
        const auto even = hn::And(pairs, hn::Set(kInts, 0xFFFF));
        const auto lengths =
            hn::Or(hn::ShiftLeft<16>(root(odd)), hn::And(root(even), hn::Set(kInts, 0xFFFF)));
        return hn::DemoteTo(kHalfBytes, hn::BitCast(kShorts, lengths));
    }

    /// Square roots of 0 to 65025 to the nearest whole number, in the lower half of each lane.
    static HWY_INLINE Ints root(Ints square) {
        // No whole number has a root within 0.0004 of the middle between two others. Adding 2^23 rounds to a
        // whole number and puts it into the lowest bits.
        const auto value = hn::ConvertTo(kFloats, square);
        const auto rounding = hn::Set(kFloats, 8388608.0F);
        if constexpr (!HWY_ARCH_X86) {  // estimates elsewhere have as few as 8 good bits
            return hn::BitCast(kInts, hn::Add(hn::Sqrt(value), rounding));
        }
        // One step of Newton's on an estimate that is good to 1.5 / 2^12 leaves an error below 0.0001.
        const auto some = hn::Max(value, hn::Set(kFloats, 1.0F));
        const auto estimate = hn::ApproximateReciprocalSqrt(some);
        const auto root = hn::Mul(value, estimate);
        const auto half = hn::Mul(estimate, hn::Set(kFloats, 0.5F));
        const auto correction = hn::Sub(hn::Set(kFloats, 1.5F), hn::Mul(hn::Mul(some, estimate), half));
        return hn::BitCast(kInts, hn::Add(hn::Mul(root, correction), rounding));
    }

    size_t width_;
    int16_t* sums_;
    int16_t* differences_;
};

/// Comparisons of a row's magnitudes with those around, as the thinning wants them.
HWY_INLINE void compareNeighbours(const uint8_t* up, const uint8_t* row, const uint8_t* down, size_t words,
                                  const ThinningRows& rows) {
    const auto at_least = [row](const uint8_t* other) HWY_ATTR {
        return [row, other](size_t x)
                   HWY_ATTR { return notLess(hn::LoadU(kBytes, row + x), hn::LoadU(kBytes, other + x)); };
    };
    writeBits(words, rows.present,
              [row](size_t x) HWY_ATTR { return hn::Ne(hn::LoadU(kBytes, row + x), hn::Zero(kBytes)); });
    writeBits(words, rows.up, at_least(up));
    writeBits(words, rows.down, at_least(down));
    writeBits(words, rows.right, at_least(row + 1));
    writeBits(words, rows.left, at_least(row - 1));
    writeBits(words, rows.left2, at_least(row - 2));
    writeBits(words, rows.left3, at_least(row - 3));
    writeBits(words, rows.up_left, at_least(up - 1));
    writeBits(words, rows.down_left, at_least(down - 1));
    writeBits(words, rows.up_left2, at_least(up - 2));
    writeBits(words, rows.down_left2, at_least(down - 2));
}

/// Copies the pixels whose bit is set, makes the others zero, and raises `maximum`.
HWY_INLINE void keepPixels(const uint8_t* row, const uint64_t* keep, size_t words, uint8_t* out,
                           Bytes& maximum) {
    const auto* const bits = reinterpret_cast<const uint8_t*>(keep);
    for (size_t x = 0; x < 64 * words; x += hn::Lanes(kBytes)) {
        const auto kept =
            hn::IfThenElseZero(hn::LoadMaskBits(kBytes, bits + x / 8), hn::LoadU(kBytes, row + x));
        hn::StoreU(kept, kBytes, out + x);
        maximum = hn::Max(maximum, kept);
    }
}

uint8_t thinnedMagnitudeSimd(const uint8_t* smooth, size_t width, size_t height, uint8_t* scratch,
                             uint8_t* magnitude) {
    if (width < 3 || height < 3) {
        return thinnedMagnitudeScalar(smooth, width, height, scratch, magnitude);
    }
    const size_t stride = magnitudeStride(width);
    const size_t words = (width + 63) / 64;

    // Three rows of magnitudes as they are before thinning, then the gradient's and the thinning's own.
    uint8_t* const original = scratch + kSpareBytes;
    auto* const shorts = reinterpret_cast<int16_t*>(scratch + 3 * stride + 2 * kSpareBytes);
    const GradientRow gradient(width, shorts + 32, shorts + 32 + stride);
    auto* bits = reinterpret_cast<uint64_t*>(shorts + 64 + 2 * stride);
    const auto next_bits = [&bits, words] { return std::exchange(bits, bits + words); };
    uint64_t* const horizontal[2] = {next_bits(), next_bits()};
    uint64_t* const vertical[2] = {next_bits(), next_bits()};
    ThinningRows rows = {.horizontal = horizontal[0],
                         .vertical = vertical[0],
                         .present = next_bits(),
                         .up = next_bits(),
                         .down = next_bits(),
                         .right = next_bits(),
                         .left = next_bits(),
                         .left2 = next_bits(),
                         .left3 = next_bits(),
                         .up_left = next_bits(),
                         .down_left = next_bits(),
                         .up_left2 = next_bits(),
                         .down_left2 = next_bits(),
                         .keep = next_bits()};

    const auto original_row = [&](size_t y) { return original + y % 3 * stride; };
    const auto find_gradient = [&](size_t y) HWY_ATTR {
        const uint8_t* const row = smooth + y * width;
        gradient.run(y > 0 ? row - width : row, row, y + 1 < height ? row + width : row, original_row(y),
                     horizontal[y % 2], vertical[y % 2]);
    };
    auto maximum = hn::Zero(kBytes);
    const auto keep_all = [&](size_t y) HWY_ATTR {
        keepWholeRow(width, rows.keep);
        keepPixels(original_row(y), rows.keep, words, magnitude + y * stride, maximum);
    };

    find_gradient(0);
    find_gradient(1);
    keep_all(0);
    uint8_t left_over = 0;
    for (size_t y = 1; y + 1 < height; ++y) {
        const uint8_t* const row = original_row(y);
        const uint8_t* const up = magnitude + (y - 1) * stride;
        find_gradient(y + 1);
        compareNeighbours(up, row, original_row(y + 1), words, rows);
        rows.horizontal = horizontal[y % 2];
        rows.vertical = vertical[y % 2];
        left_over = thinRow({up, row, original_row(y + 1)}, width, rows, left_over);
        keepPixels(row, rows.keep, words, magnitude + y * stride, maximum);
    }
    keep_all(height - 1);
    HWY_ALIGN uint8_t lanes[hn::MaxLanes(kBytes)];
    hn::Store(maximum, kBytes, lanes);
    return *std::max_element(lanes, lanes + hn::Lanes(kBytes));
}

/// Strong pixels of a row as the pixels around it see them.
struct StrongRow {
    uint64_t* three;  ///< the pixel and those beside it are strong
    uint64_t* two;    ///< those beside it are
};

HWY_INLINE void lookAround(const uint64_t* strong, size_t words, const StrongRow& row) {
    uint64_t before = 0;
    for (size_t word = 0; word < words; ++word) {
        const uint64_t here = strong[word];
        const uint64_t after = word + 1 < words ? strong[word + 1] : 0;
        row.two[word] = (here << 1 | before >> 63) & (here >> 1 | after << 63);
        row.three[word] = row.two[word] & here;
        before = here;
    }
}

void thresholdSimd(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
                   EdgeLevels levels, uint8_t* scratch, uint64_t* edge_map) {
    if (width < 3 || height < 3) {
        thresholdScalar(magnitude, smooth, width, height, levels, edge_map);
        return;
    }
    const size_t stride = magnitudeStride(width);
    const size_t map_words = edgeMapWords(width);
    const size_t words = (width + 63) / 64;
    auto* bits = reinterpret_cast<uint64_t*>(scratch);
    const auto next_bits = [&bits, words] { return std::exchange(bits, bits + words); };
    uint64_t* const strong = next_bits();
    uint64_t* const weak[2] = {next_bits(), next_bits()};
    uint64_t* const overwhelming[2] = {next_bits(), next_bits()};
    StrongRow around[3];
    for (StrongRow& row : around) {
        row = {next_bits(), next_bits()};
    }

    const auto at_least = [](const uint8_t* row, uint8_t level) HWY_ATTR {
        return [row, limit = hn::Set(kBytes, level)](size_t x)
                   HWY_ATTR { return notLess(hn::LoadU(kBytes, row + x), limit); };
    };
    std::fill_n(edge_map, map_words * height, 0);
    writeBits(words, edge_map, at_least(smooth, 1));
    edge_map[words - 1] &= innerBits(words - 1, width) | borderBits(words - 1, width);
    for (size_t y = 0; y < height; ++y) {
        const uint8_t* const row = magnitude + y * stride;
        writeBits(words, strong, at_least(row, levels.strong));
        writeBits(words, weak[y % 2], at_least(row, levels.weak));
        writeBits(words, overwhelming[y % 2], at_least(row, levels.overwhelming));
        lookAround(strong, words, around[y % 3]);
        if (y < 2) {
            continue;
        }
        const size_t middle = y - 1;
        for (size_t word = 0; word < words; ++word) {
            const uint64_t surrounded =
                around[(y - 2) % 3].three[word] & around[middle % 3].two[word] & around[y % 3].three[word];
            edge_map[middle * map_words + word] = innerBits(word, width) & weak[middle % 2][word] &
                                                  (overwhelming[middle % 2][word] | ~surrounded);
        }
    }
}

#endif  // HWY_TARGET

}  // namespace ZELAlgo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ZELAlgo {

HWY_EXPORT(thinnedMagnitudeSimd);
HWY_EXPORT(thresholdSimd);

uint8_t thinnedMagnitude(const uint8_t* smooth, size_t width, size_t height, uint8_t* scratch,
                         uint8_t* magnitude) {
    return HWY_DYNAMIC_DISPATCH(thinnedMagnitudeSimd)(smooth, width, height, scratch, magnitude);
}

void threshold(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
               EdgeLevels levels, uint8_t* scratch, uint64_t* edge_map) {
    HWY_DYNAMIC_DISPATCH(thresholdSimd)(magnitude, smooth, width, height, levels, scratch, edge_map);
}

}  // namespace ZELAlgo
#endif  // HWY_ONCE

#else  // ZEL_SIMD

namespace ZELAlgo {

uint8_t thinnedMagnitude(const uint8_t* smooth, size_t width, size_t height, uint8_t* scratch,
                         uint8_t* magnitude) {
    return thinnedMagnitudeScalar(smooth, width, height, scratch, magnitude);
}

void threshold(const uint8_t* magnitude, const uint8_t* smooth, size_t width, size_t height,
               EdgeLevels levels, uint8_t* /*scratch*/, uint64_t* edge_map) {
    thresholdScalar(magnitude, smooth, width, height, levels, edge_map);
}

}  // namespace ZELAlgo

#endif  // ZEL_SIMD
