#include "algo/video/block_corners.h"

#include <bit>
#include <cstdlib>

#include "algo/video/edge_kernels.h"

namespace ZELAlgo {
namespace {

constexpr size_t kFirst = 3;   // row and column of the first candidate; every second one follows
constexpr size_t kMargin = 4;  // rows and columns free at the far ends
constexpr uint64_t kOddBits = 0xAAAA'AAAA'AAAA'AAAA;

// The row's bits from bit 64 * word + shift on.
uint64_t bitsFrom(const uint64_t* row, size_t word, unsigned shift) {
    return shift == 0 ? row[word] : row[word] >> shift | row[word + 1] << (64 - shift);
}

// Bits 64 * word ... that lie in [kFirst, end).
uint64_t searchedBits(size_t word, size_t end) {
    uint64_t bits = kOddBits;
    if (word == 0) {
        bits &= ~uint64_t{0} << kFirst;
    }
    if (64 * (word + 1) > end) {
        bits &= (uint64_t{1} << end % 64) - 1;
    }
    return bits;
}

// The arms of the four kinds, at the places of the horizontal sides they leave from.
struct Arms {
    uint64_t down_left;
    uint64_t up_left;
    uint64_t down_right;
    uint64_t up_right;
};

// The first arm that exists, and whose list has room, decides.
void append(Corners& corners, Corner corner, const Arms& arms, uint64_t bit) {
    if ((arms.down_left & bit) != 0 && !corners.down_left.full()) {
        corners.down_left.append(corner);
    } else if ((arms.up_left & bit) != 0 && !corners.up_left.full()) {
        corners.up_left.append(corner);
    } else if ((arms.down_right & bit) != 0 && !corners.down_right.full()) {
        corners.down_right.append(corner);
    } else if ((arms.up_right & bit) != 0 && !corners.up_right.full()) {
        corners.up_right.append(corner);
    }
}

bool aligned(int32_t a, int32_t b) {
    return std::abs(a - b) <= 3;
}

bool close(int32_t a, int32_t b) {
    const int32_t distance = std::abs(a - b);
    return distance >= 1 && distance <= 20;
}

bool sameSide(Corner a, Corner b) {
    return aligned(a.y, b.y) && close(a.x, b.x);
}
bool stacked(Corner a, Corner b) {
    return aligned(a.x, b.x) && close(a.y, b.y);
}

}  // namespace

void findCorners(const uint64_t* edge_map, size_t width, size_t height, Corners& corners) {
    corners.down_left.clear();
    corners.up_left.clear();
    corners.down_right.clear();
    corners.up_right.clear();
    const size_t words = edgeMapWords(width);
    for (size_t y = kFirst; y + kMargin < height; y += 2) {
        const uint64_t* const row = edge_map + y * words;
        const auto column = [&](ptrdiff_t step, size_t word, unsigned shift) {
            const auto at = [&](ptrdiff_t n) {
                return bitsFrom(row + n * step * static_cast<ptrdiff_t>(words), word, shift);
            };
            return at(1) & at(2) & at(3);
        };
        for (size_t word = 0; 64 * word + kMargin < width; ++word) {
            uint64_t sides = row[word] & bitsFrom(row, word, 1) & bitsFrom(row, word, 2) &
                             bitsFrom(row, word, 3) & searchedBits(word, width - kMargin);
            if (sides == 0) {
                continue;
            }
            const Arms arms = {.down_left = column(1, word, 0),
                               .up_left = column(-1, word, 0),
                               .down_right = column(1, word, 3),
                               .up_right = column(-1, word, 3)};
            sides &= arms.down_left | arms.up_left | arms.down_right | arms.up_right;
            for (; sides != 0; sides &= sides - 1) {
                const auto bit = static_cast<size_t>(std::countr_zero(sides));
                append(corners, {static_cast<int32_t>(y), static_cast<int32_t>(64 * word + bit)}, arms,
                       uint64_t{1} << bit);
            }
        }
    }
}

bool closesEnoughBlocks(const Corners& corners, uint32_t threshold) {
    uint32_t pairs = 0;
    for (const Corner& a : corners.down_left) {
        for (const Corner& b : corners.up_left) {
            if (!sameSide(a, b)) {
                continue;
            }
            for (const Corner& c : corners.down_right) {
                if (stacked(a, c) && ++pairs >= threshold) {
                    return true;
                }
            }
            for (const Corner& d : corners.up_right) {
                // This one limit does not follow the threshold, which is intended.
                if (stacked(b, d) && ++pairs >= 20) {
                    return true;
                }
            }
        }
    }
    for (const Corner& c : corners.down_right) {
        for (const Corner& d : corners.up_right) {
            if (!sameSide(c, d)) {
                continue;
            }
            for (const Corner& a : corners.down_left) {
                if (stacked(c, a) && ++pairs >= threshold) {
                    return true;
                }
            }
            for (const Corner& b : corners.up_left) {
                if (stacked(d, b) && ++pairs >= threshold) {
                    return true;
                }
            }
        }
    }
    return false;
}

}  // namespace ZELAlgo
