// Included once per instruction set by edge_kernels_simd.cc.

#if defined(ZEL_SRC_ALGO_VIDEO_THIN_ROW_INL_H_) == defined(HWY_TARGET_TOGGLE)
#ifdef ZEL_SRC_ALGO_VIDEO_THIN_ROW_INL_H_
#undef ZEL_SRC_ALGO_VIDEO_THIN_ROW_INL_H_
#else
#define ZEL_SRC_ALGO_VIDEO_THIN_ROW_INL_H_
#endif

#include <algorithm>
#include <bit>
#include <cstddef>
#include <cstdint>

#include <hwy/highway.h>

HWY_BEFORE_NAMESPACE();
namespace ZELAlgo::HWY_NAMESPACE {
namespace hn = hwy::HWY_NAMESPACE;

#if HWY_TARGET != HWY_SCALAR

constexpr hn::ScalableTag<uint8_t> kBytes{};
using Bytes = hn::VFromD<decltype(kBytes)>;

HWY_INLINE auto notLess(Bytes a, Bytes b) {
#if HWY_TARGET <= HWY_AVX3  // compares unsigned bytes
    return hn::Not(hn::Lt(a, b));
#else
    return hn::Eq(hn::Max(a, b), a);
#endif
}

/// One bit per pixel of a row, of whatever `mask(x)` says about the pixels from x on.
template <typename Mask>
HWY_INLINE void writeBits(size_t words, uint64_t* bits, Mask&& mask) {
    auto* const out = reinterpret_cast<uint8_t*>(bits);
    for (size_t x = 0; x < 64 * words; x += hn::Lanes(kBytes)) {
        hn::StoreMaskBits(kBytes, mask(x), out + x / 8);
    }
}

// Thinning decides from left to right, since a pixel may depend on whether the one before it was kept. On
// rows of bits, a word at a time, that is a matter of a few additions: an addition carries along a run of
// ones.

/// A row of bits for everything that decides whether a pixel stays. Comparisons say "not smaller than" that
/// neighbour, as it was before thinning on the own row and below it, after thinning above it.
struct ThinningRows {
    const uint64_t* horizontal;  ///< gradients along the row
    const uint64_t* vertical;    ///< gradients across the rows
    uint64_t* present;           ///< magnitudes that are not zero
    uint64_t* up;
    uint64_t* down;
    uint64_t* right;
    uint64_t* left;
    uint64_t* left2;    ///< two pixels to the left
    uint64_t* left3;    ///< three pixels to the left
    uint64_t* up_left;  ///< above the pixel to the left, and so on
    uint64_t* down_left;
    uint64_t* up_left2;
    uint64_t* down_left2;
    uint64_t* keep;  ///< the outcome
};

/// Magnitudes of a row before thinning, of the one above it after and of the one below it before thinning.
struct PixelRows {
    const uint8_t* up;
    const uint8_t* row;
    const uint8_t* down;
};

constexpr uint64_t kEvenBits = 0x5555'5555'5555'5555;

/// The runs of ones in `bits` that begin at one of `starts`.
HWY_INLINE uint64_t runsFrom(uint64_t bits, uint64_t starts) {
    return bits & ~(bits + starts);
}

/// Pixels that stay: all of `kept`, and those of `wavering` whose left neighbour goes. So every second pixel
/// of a run of wavering ones stays, from its first on if the pixel before the run goes, else from its second
/// on. `before` is 1 if the pixel before the first bit stays. No pixel is in both.
HWY_INLINE uint64_t resolve(uint64_t kept, uint64_t wavering, uint64_t before) {
    const uint64_t after_kept = kept << 1 | before;
    const uint64_t starts = wavering & ~(wavering << 1);
    const uint64_t even = starts & (after_kept ^ kEvenBits);  // stays at even places
    return kept | (runsFrom(wavering, even) & kEvenBits) | (runsFrom(wavering, starts ^ even) & ~kEvenBits);
}

/// Bits of the inner pixels among those of `word`.
HWY_INLINE uint64_t innerBits(size_t word, size_t width) {
    const size_t last = width - 1 - 64 * word;  // of the row, seen from this word
    const uint64_t inside = last < 64 ? (uint64_t{1} << last) - 1 : ~uint64_t{0};
    return word == 0 ? inside & ~uint64_t{1} : inside;
}

/// The border pixel among those of `word`, if any.
HWY_INLINE uint64_t borderBits(size_t word, size_t width) {
    const size_t last = width - 1 - 64 * word;
    return (word == 0 ? uint64_t{1} : 0) | (last < 64 ? uint64_t{1} << last : 0);
}

/// Thins the inner pixels of one row of at least three; border pixels stay. Takes the least magnitude that
/// passes a diagonal before the row's first other gradient, and returns the one after its last.
inline uint8_t thinRow(const PixelRows& pixels, size_t width, const ThinningRows& rows, uint8_t left_over) {
    const size_t words = (width + 63) / 64;
    constexpr size_t kNone = ~size_t{0};
    size_t last_word = kNone;  // with a gradient that is not diagonal
    uint64_t last_plain = 0;   // those gradients of that word
    uint64_t plain_before = 0;
    uint64_t across_before = 0;
    uint64_t keep_before = 0;

    const auto kept_at = [&](size_t x) { return (rows.keep[x / 64] >> x % 64 & 1U) != 0; };
    // What a diagonal is compared with if `x` is the last pixel before it that is not one.
    const auto level_after = [&](size_t x) -> uint8_t {
        if ((rows.vertical[x / 64] >> x % 64 & 1U) != 0) {
            return std::max(pixels.up[x], pixels.down[x]);
        }
        return std::max(kept_at(x - 1) ? pixels.row[x - 1] : uint8_t{0}, pixels.row[x + 1]);
    };
    const auto level_after_word = [&](size_t word, uint64_t plain) {
        return level_after(64 * word + 63 - static_cast<size_t>(std::countl_zero(plain)));
    };
    // Those of `far` diagonals of a word that stay, as far as the pixels before them are decided.
    const auto far_that_stay = [&](size_t word, uint64_t far, uint64_t plain) HWY_ATTR {
        uint64_t stay = 0;
        while (far != 0) {
            // All of them up to the next plain pixel are compared with the same level.
            const uint64_t below = (far & -far) - 1;
            const uint64_t plain_above = plain & ~below;
            const uint64_t segment = far & ((plain_above & -plain_above) - 1);
            const uint64_t plain_below = plain & below;
            const uint8_t level = plain_below != 0     ? level_after_word(word, plain_below)
                                  : last_word != kNone ? level_after_word(last_word, last_plain)
                                                       : left_over;
            uint64_t high = 0;
            writeBits(1, &high, [&](size_t x) HWY_ATTR {
                return notLess(hn::LoadU(kBytes, pixels.row + 64 * word + x), hn::Set(kBytes, level));
            });
            stay |= segment & high;
            far &= ~segment;
        }
        return stay;
    };

    for (size_t word = 0; word < words; ++word) {
        const uint64_t inner = innerBits(word, width);
        const uint64_t along = rows.horizontal[word] & inner;
        const uint64_t across = rows.vertical[word] & inner;
        const uint64_t plain = along | across;
        const uint64_t diagonal = rows.present[word] & inner & ~plain;

        const uint64_t peak = along & rows.right[word];
        uint64_t kept =
            borderBits(word, width) | (across & rows.up[word] & rows.down[word]) | (peak & rows.left[word]);
        const uint64_t wavering = peak & ~rows.left[word];
        if (diagonal == 0) {
            rows.keep[word] = resolve(kept, wavering, keep_before >> 63);
        } else {
            // Nearly all diagonals follow a plain pixel at a distance of one or two; the others are `far`.
            const uint64_t after_plain = plain << 1 | plain_before >> 63;
            const uint64_t next_but_one = ~after_plain & (plain << 2 | plain_before >> 62);
            const uint64_t near1 = diagonal & after_plain;
            const uint64_t near2 = diagonal & next_but_one;
            const uint64_t across1 = near1 & (across << 1 | across_before >> 63);
            const uint64_t across2 = near2 & (across << 2 | across_before >> 62);
            const uint64_t along1 = near1 & ~across1;
            const uint64_t along2 = near2 & ~across2 & rows.left[word];
            kept |= (across1 & rows.up_left[word] & rows.down_left[word]) |
                    (across2 & rows.up_left2[word] & rows.down_left2[word]) | (along1 & rows.left2[word]) |
                    (along2 & rows.left3[word]);
            const uint64_t if_gone2 = along1 & ~rows.left2[word];  // stays if the pixel two to the left goes
            const uint64_t if_gone3 = along2 & ~rows.left3[word];
            const uint64_t far = diagonal & ~near1 & ~near2;
            // Whether those stay may depend on one another, but always on pixels further left: in every round
            // at least the next one is decided, and nearly always two rounds decide all.
            for (uint64_t stay = 0;;) {
                const uint64_t keep = resolve(kept | stay, wavering, keep_before >> 63);
                rows.keep[word] = keep;
                uint64_t next = (if_gone2 & ~(keep << 2 | keep_before >> 62)) |
                                (if_gone3 & ~(keep << 3 | keep_before >> 61));
                if (far != 0) {
                    next |= far_that_stay(word, far, plain);
                }
                if (next == stay) {
                    break;
                }
                stay = next;
            }
        }
        if (plain != 0) {
            last_word = word;
            last_plain = plain;
        }
        plain_before = plain;
        across_before = across;
        keep_before = rows.keep[word];
    }
    return last_word != kNone ? level_after_word(last_word, last_plain) : left_over;
}

/// Keeps all pixels of a row.
inline void keepWholeRow(size_t width, uint64_t* keep) {
    for (size_t word = 0; 64 * word < width; ++word) {
        keep[word] = innerBits(word, width) | borderBits(word, width);
    }
}

#endif  // HWY_TARGET

}  // namespace ZELAlgo::HWY_NAMESPACE
HWY_AFTER_NAMESPACE();

#endif  // include guard
