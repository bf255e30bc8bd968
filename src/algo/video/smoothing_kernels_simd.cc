#include "algo/video/smoothing_kernels.h"

#if ZEL_SIMD

// Arrays of vectors need vectors of a fixed size.
#define HWY_DISABLED_TARGETS (HWY_SVE | HWY_SVE2 | HWY_SVE_256 | HWY_SVE2_128 | HWY_RVV)
// clang-format off: foreach_target.h compiles this file once per instruction set and must come first.
#undef HWY_TARGET_INCLUDE
#define HWY_TARGET_INCLUDE "algo/video/smoothing_kernels_simd.cc"
#include <hwy/foreach_target.h>
#include <hwy/highway.h>
// clang-format on

#include <algorithm>

// The second pass couples the pixels of a row one after the other, but rows with one another only at their
// ends: the first two pixels of a row see the last two of the row above as the first pass left them, the last
// two see the first two of the row below as the second pass left them. Once those are known, rows are
// independent, and kTileRows of them run side by side: a tile holds their pixels column by column, and one
// walk along it does both passes, the second two columns behind the first.

#ifndef ZEL_SMOOTHING_ONCE
#define ZEL_SMOOTHING_ONCE
namespace ZELAlgo {
namespace {

constexpr size_t kTileRows = 32;
constexpr size_t kBlock = 16;  // rows and columns that are transposed at once
constexpr size_t kMargin = 2;  // columns of a tile on either side of the row's own

/// What the second pass meets beyond the ends of each row, as it finds it.
struct RowEnds {
    uint8_t* before[kMargin];
    uint8_t* after[kMargin];
};

}  // namespace
}  // namespace ZELAlgo
#endif

HWY_BEFORE_NAMESPACE();
namespace ZELAlgo::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET == HWY_SCALAR

void smoothSimd(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width,
                size_t height, uint8_t* /*scratch*/, uint8_t* smooth) {
    smoothScalar(kernel, source, stride, width, height, smooth);
}

#else

/// Turns kBlock rows of kBlock bytes into columns.
HWY_INLINE void transposeBlock(const uint8_t* from, size_t from_stride, uint8_t* to, size_t to_stride) {
    const hn::Full128<uint8_t> bytes;
    hn::VFromD<decltype(bytes)> rows[kBlock];
    for (size_t i = 0; i < kBlock; ++i) {
        rows[i] = hn::LoadU(bytes, from + i * from_stride);
    }
    // Each round interleaves the upper half of the rows with the lower; after four, row i holds column i.
    for (int round = 0; round < 4; ++round) {
        hn::VFromD<decltype(bytes)> mixed[kBlock];
        for (size_t i = 0; i < kBlock / 2; ++i) {
            mixed[2 * i] = hn::InterleaveLower(bytes, rows[i], rows[i + kBlock / 2]);
            mixed[2 * i + 1] = hn::InterleaveUpper(bytes, rows[i], rows[i + kBlock / 2]);
        }
        std::copy(mixed, mixed + kBlock, rows);
    }
    for (size_t i = 0; i < kBlock; ++i) {
        hn::StoreU(rows[i], bytes, to + i * to_stride);
    }
}

/// Calls `block(x)` for starts of blocks that cover a row, the last one overlapping where need be.
template <typename Block>
HWY_INLINE void forEachBlock(size_t width, Block&& block) {
    size_t x = 0;
    for (; x + kBlock <= width; x += kBlock) {
        block(x);
    }
    if (x < width) {
        block(width - kBlock);
    }
}

class Smoother {
  public:
    Smoother(const GaussianKernel& kernel, size_t width, uint8_t* tile)
        : outer_(kernel[0]), inner_(kernel[1]), centre_(kernel[2]), width_(width), tile_(tile) {}

    /// Both passes over kTileRows rows from row `y` on.
    void twice(const uint8_t* source, size_t stride, const RowEnds& ends, size_t y, uint8_t* smooth) const {
        for (size_t row = 0; row < kTileRows; row += kBlock) {
            forEachBlock(width_, [&](size_t x) {
                transposeBlock(source + (y + row) * stride + x, stride, column(x) + row, kTileRows);
            });
        }
        for (size_t x = 1; x <= kMargin; ++x) {
            std::copy_n(column(x), kTileRows, column(0) - x * kTileRows);
            std::copy_n(column(width_ - 1 - x), kTileRows, column(width_ - 1 + x));
        }
        for (size_t row = 0; row < kTileRows; row += kVectors * hn::Lanes(kDoubles)) {
            walk(ends, y, row);
        }
        for (size_t row = 0; row < kTileRows; row += kBlock) {
            forEachBlock(width_, [&](size_t x) {
                transposeBlock(column(x) + row, kTileRows, smooth + (y + row) * width_ + x, width_);
            });
        }
    }

    /// The first pass alone, over one row.
    void once(const GaussianKernel& kernel, const uint8_t* row, uint8_t* smooth) const {
        size_t x = 0;
        for (; x < kMargin; ++x) {
            smooth[x] = smoothedOnce(kernel, row, width_, x);
        }
        for (; x + kMargin + hn::Lanes(kDoubles) <= width_; x += hn::Lanes(kDoubles)) {
            const uint8_t* const at = row + x;
            store(sum(load(at - 2), load(at - 1), load(at), load(at + 1), load(at + 2)), smooth + x);
        }
        for (; x < width_; ++x) {
            smooth[x] = smoothedOnce(kernel, row, width_, x);
        }
    }

    /// Finds the ends of all rows. Needs the tile, and `starts` for four values of each row.
    void findEnds(const uint8_t* source, size_t stride, size_t height, const RowEnds& ends,
                  uint8_t* const starts[4]) const {
        forEachBlock(height, [&](size_t y) HWY_ATTR {
            // The first and the last columns of kBlock rows side by side, as if the row had no others.
            const uint8_t* const rows = source + y * stride;
            uint8_t* const left = tile_ + kMargin * kTileRows;
            uint8_t* const right = left + (kBlock + kMargin) * kTileRows;
            transposeBlock(rows, stride, left, kTileRows);
            transposeBlock(rows + width_ - kBlock, stride, right, kTileRows);
            uint8_t* const last = right + (kBlock - 1) * kTileRows;
            for (size_t x = 1; x <= kMargin; ++x) {
                std::copy_n(left + x * kTileRows, kBlock, left - x * kTileRows);
                std::copy_n(last - x * kTileRows, kBlock, last + x * kTileRows);
            }
            for (size_t row = 0; row < kBlock; row += hn::Lanes(kDoubles)) {
                for (size_t x = 0; x < 4; ++x) {
                    store(sumAcross(left + x * kTileRows + row), starts[x] + y + row);
                }
                store(sumAcross(last - kTileRows + row), ends.before[0] + y + row + 1);
                store(sumAcross(last + row), ends.before[1] + y + row + 1);
            }
        });
        // The rows that have a second pass; of the others the first pass is found.
        std::copy_n(starts[0], height, ends.after[0] - 1);
        std::copy_n(starts[1], height, ends.after[1] - 1);
        const size_t last = height - 2 - hn::Lanes(kDoubles);
        for (size_t next = 2, y = 2; y <= last; y = next) {
            const auto before = load(ends.before[1] + y);
            const auto second = load(starts[1] + y);
            const auto third = load(starts[2] + y);
            const auto first =
                truncated(sum(load(ends.before[0] + y), before, load(starts[0] + y), second, third));
            store(first, ends.after[0] + y - 1);
            store(sum(before, first, second, third, load(starts[3] + y)), ends.after[1] + y - 1);
            next = y == last ? last + 1 : std::min(y + hn::Lanes(kDoubles), last);
        }
    }

  private:
    static constexpr hn::ScalableTag<double> kDoubles{};
    static constexpr hn::Rebind<int32_t, decltype(kDoubles)> kInts{};
    static constexpr hn::Rebind<uint8_t, decltype(kDoubles)> kBytes{};
    static constexpr size_t kVectors = 4;  // as many chains side by side hide the latency of one
    using Vector = hn::VFromD<decltype(kDoubles)>;

    uint8_t* column(size_t x) const { return tile_ + (kMargin + x) * kTileRows; }

    static HWY_INLINE Vector load(const uint8_t* pixels) {
        return hn::PromoteTo(kDoubles, hn::PromoteTo(kInts, hn::LoadU(kBytes, pixels)));
    }
    static HWY_INLINE void store(Vector value, uint8_t* pixels) {
        hn::StoreU(hn::DemoteTo(kBytes, hn::DemoteTo(kInts, value)), kBytes, pixels);
    }
    /// Stores kVectors vectors of whole numbers, two at a time.
    static HWY_INLINE void storeAll(const Vector (&values)[kVectors], uint8_t* pixels) {
        const hn::Twice<decltype(kInts)> ints;
        const hn::Twice<decltype(kBytes)> bytes;
        for (size_t v = 0; v < kVectors; v += 2) {
            const auto both =
                hn::Combine(ints, hn::DemoteTo(kInts, values[v + 1]), hn::DemoteTo(kInts, values[v]));
            hn::StoreU(hn::DemoteTo(bytes, both), bytes, pixels + v * hn::Lanes(kDoubles));
        }
    }
    /// Weighted sum of five neighbours in the order of the plain version, not truncated.
    HWY_INLINE Vector sum(Vector a, Vector b, Vector c, Vector d, Vector e) const {
        auto value = hn::Mul(a, hn::Set(kDoubles, outer_));
        value = hn::Add(value, hn::Mul(b, hn::Set(kDoubles, inner_)));
        value = hn::Add(value, hn::Mul(c, hn::Set(kDoubles, centre_)));
        value = hn::Add(value, hn::Mul(d, hn::Set(kDoubles, inner_)));
        return hn::Add(value, hn::Mul(e, hn::Set(kDoubles, outer_)));
    }
    /// The same of five columns of the tile, `middle` being the third.
    HWY_INLINE Vector sumAcross(const uint8_t* middle) const {
        return sum(load(middle - 2 * kTileRows), load(middle - kTileRows), load(middle),
                   load(middle + kTileRows), load(middle + 2 * kTileRows));
    }
    static HWY_INLINE Vector truncated(Vector value) {
#if HWY_TARGET == HWY_SSSE3  // has no rounding instruction
        return hn::PromoteTo(kDoubles, hn::DemoteTo(kInts, value));
#else
        return hn::Trunc(value);
#endif
    }

    /// Both passes over the rows of the tile from `row` on, as many as kVectors hold, in place.
    HWY_INLINE void walk(const RowEnds& ends, size_t y, size_t row) const {
        const auto outer = hn::Set(kDoubles, outer_);
        const auto inner = hn::Set(kDoubles, inner_);
        const auto centre = hn::Set(kDoubles, centre_);
        // Sums of the first pass that still lack 4, 3, 2 and 1 of their pixels. Partial sums are formed in
        // the order of the plain version, so every rounding is the same.
        Vector lack4[kVectors];
        Vector lack3[kVectors];
        Vector lack2[kVectors];
        Vector lack1[kVectors];
        // The two columns before the one that the second pass writes, and that one and the next as it finds
        // them.
        Vector before2[kVectors];
        Vector before1[kVectors];
        Vector here[kVectors];
        Vector next[kVectors];

        const auto take = [&](size_t v, const uint8_t* pixels) HWY_ATTR {
            const auto pixel = load(pixels + v * hn::Lanes(kDoubles));
            const auto at_end = hn::Mul(outer, pixel);
            const auto beside = hn::Mul(inner, pixel);
            const auto full = truncated(hn::Add(lack1[v], at_end));
            lack1[v] = hn::Add(lack2[v], beside);
            lack2[v] = hn::Add(lack3[v], hn::Mul(centre, pixel));
            lack3[v] = hn::Add(lack4[v], beside);
            lack4[v] = at_end;
            return full;
        };
        const auto give = [&](size_t v, Vector after_next) HWY_ATTR {
            auto sum = hn::Add(hn::Mul(outer, before2[v]), hn::Mul(inner, before1[v]));
            sum = hn::Add(sum, hn::Mul(centre, here[v]));
            sum = hn::Add(sum, hn::Mul(inner, next[v]));
            sum = truncated(hn::Add(sum, hn::Mul(outer, after_next)));
            before2[v] = before1[v];
            before1[v] = sum;
            here[v] = next[v];
            next[v] = after_next;
        };

        uint8_t* const first = column(0) + row;
        for (size_t v = 0; v < kVectors; ++v) {
            const size_t at = y + row + v * hn::Lanes(kDoubles);
            before2[v] = load(ends.before[0] + at);
            before1[v] = load(ends.before[1] + at);
            lack1[v] = lack2[v] = lack3[v] = lack4[v] = hn::Zero(kDoubles);
            for (size_t x = 0; x < 2 * kMargin; ++x) {
                take(v, first + x * kTileRows - kMargin * kTileRows);
            }
            here[v] = take(v, first + kMargin * kTileRows);
            next[v] = take(v, first + (kMargin + 1) * kTileRows);
        }
        uint8_t* pixels = first;
        for (size_t x = 0; x + kMargin < width_; ++x, pixels += kTileRows) {
            for (size_t v = 0; v < kVectors; ++v) {
                give(v, take(v, pixels + 2 * kMargin * kTileRows));
            }
            storeAll(before1, pixels);
        }
        for (size_t x = 0; x < kMargin; ++x, pixels += kTileRows) {
            for (size_t v = 0; v < kVectors; ++v) {
                give(v, load(ends.after[x] + y + row + v * hn::Lanes(kDoubles)));
            }
            storeAll(before1, pixels);
        }
    }

    double outer_;
    double inner_;
    double centre_;
    size_t width_;
    uint8_t* tile_;
};

void smoothSimd(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width,
                size_t height, uint8_t* scratch, uint8_t* smooth) {
    if (width < kBlock || height < kTileRows + 4) {
        smoothScalar(kernel, source, stride, width, height, smooth);
        return;
    }
    const size_t pitch = height + kTileRows;
    const auto values = [scratch, pitch](size_t i) { return scratch + kTileRows + i * pitch; };
    const RowEnds ends = {.before = {values(0), values(1)}, .after = {values(2), values(3)}};
    uint8_t* const starts[] = {values(4), values(5), values(6), values(7)};
    const Smoother smoother(kernel, width, values(8));
    smoother.findEnds(source, stride, height, ends, starts);
    for (const size_t y : {size_t{0}, size_t{1}, height - 2, height - 1}) {
        smoother.once(kernel, source + y * stride, smooth + y * width);
    }
    const size_t last = height - 2 - kTileRows;
    for (size_t y = 2; y < last; y += kTileRows) {
        smoother.twice(source, stride, ends, y, smooth);
    }
    smoother.twice(source, stride, ends, last, smooth);  // does some rows again, with the same outcome
}

#endif  // HWY_TARGET

}  // namespace ZELAlgo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#if HWY_ONCE
namespace ZELAlgo {

HWY_EXPORT(smoothSimd);

size_t smoothingScratch(size_t width, size_t height) {
    // The row ends, and a tile that holds a row, or the two blocks at its ends.
    const size_t columns = std::max(width, 2 * kBlock + kMargin) + 2 * kMargin;
    return 8 * (height + kTileRows) + (columns + 1) * kTileRows;
}

void smooth(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width, size_t height,
            uint8_t* scratch, uint8_t* smooth) {
    HWY_DYNAMIC_DISPATCH(smoothSimd)(kernel, source, stride, width, height, scratch, smooth);
}

}  // namespace ZELAlgo
#endif  // HWY_ONCE

#else  // ZEL_SIMD

namespace ZELAlgo {

size_t smoothingScratch(size_t /*width*/, size_t /*height*/) {
    return 0;
}

void smooth(const GaussianKernel& kernel, const uint8_t* source, size_t stride, size_t width, size_t height,
            uint8_t* /*scratch*/, uint8_t* smooth) {
    smoothScalar(kernel, source, stride, width, height, smooth);
}

}  // namespace ZELAlgo

#endif  // ZEL_SIMD
