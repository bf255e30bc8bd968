#include "algo/video/block_corners.h"

#include <algorithm>
#include <bit>
#include <cstring>
#include <utility>

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

constexpr int32_t kClose = 20;  // places at most between the corners of one block
constexpr int32_t kStep = 2;    // between the odd places where corners lie; so "at most 3" means 2

/// The corners of a list as bits, one for each odd place, with room for looking beyond the frame.
class CornerGrid {
  public:
    static size_t bytes(size_t width, size_t height) {
        return stride(width) * (height / kStep + 2 * kReach + 1);
    }

    CornerGrid(const CornerList& list, size_t width, size_t height, uint8_t* bits)
        : stride_(stride(width)), bits_(bits) {
        std::fill_n(bits_, bytes(width, height), uint8_t{0});
        for (const Corner& corner : list) {
            const size_t column = static_cast<size_t>(corner.x) / kStep;
            rowOf(corner)[column / 8] |= static_cast<uint8_t>(1U << column % 8);
        }
    }

    /// How many corners lie close above or below `at`, up to one odd place aside.
    uint32_t stacked(Corner at) const {
        const size_t first = static_cast<size_t>(at.x) / kStep - 1;
        const auto three = [first](const uint8_t* row) {
            uint16_t bits = 0;
            std::memcpy(&bits, row + first / 8, sizeof bits);
            return static_cast<uint64_t>(bits >> first % 8 & 7);
        };
        const uint8_t* above = rowOf(at);
        const uint8_t* below = above;
        uint64_t found = 0;  // three bits for each of 20 rows
        for (size_t i = 0; i < kReach; ++i) {
            found = found << 6 | three(above -= stride_) << 3 | three(below += stride_);
        }
        return static_cast<uint32_t>(std::popcount(found));
    }

  private:
    static constexpr size_t kReach = kClose / kStep;  // rows above and below that may be close

    static size_t stride(size_t width) { return width / kStep / 8 + 2; }
    uint8_t* rowOf(Corner corner) const {
        return bits_ + (static_cast<size_t>(corner.y) / kStep + kReach) * stride_;
    }

    size_t stride_;
    uint8_t* bits_;
};

/// Counts of a list's corners against a grid, each found when first asked for.
class StackCounts {
  public:
    StackCounts(const CornerList& list, const CornerGrid& grid) : list_(list), grid_(grid) {
        counts_.fill(-1);
    }

    uint32_t of(const Corner& corner) {
        int16_t& count = counts_[static_cast<size_t>(&corner - list_.begin())];
        if (count < 0) {
            count = static_cast<int16_t>(grid_.stacked(corner));
        }
        return static_cast<uint32_t>(count);
    }

  private:
    const CornerList& list_;
    const CornerGrid& grid_;
    std::array<int16_t, CornerList::kCapacity> counts_;
};

/// Calls `visit` for the corners of `list` close beside `at`, up to one odd place above or below, in their
/// order, until one call answers true, and answers whether one did.
template <typename Visit>
bool anyBeside(const CornerList& list, Corner at, Visit&& visit) {
    for (int32_t y = at.y - kStep; y <= at.y + kStep; y += kStep) {
        for (const Corner* b = std::lower_bound(list.begin(), list.end(), Corner{y, at.x - kClose});
             b != list.end() && !(Corner{y, at.x + kClose} < *b); ++b) {
            if (b->x != at.x && visit(*b)) {
                return true;
            }
        }
    }
    return false;
}

bool hasSides(const CornerList& a, const CornerList& b) {
    return std::any_of(a.begin(), a.end(), [&b](Corner corner) {
        return anyBeside(b, corner, [](const Corner&) { return true; });
    });
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

size_t cornerScratch(size_t width, size_t height) {
    return 4 * CornerGrid::bytes(width, height);
}

bool closesEnoughBlocks(const Corners& corners, size_t width, size_t height, uint32_t threshold,
                        uint8_t* scratch) {
    const auto& [down_left, up_left, down_right, up_right] = corners;
    if (!hasSides(down_left, up_left) && !hasSides(down_right, up_right)) {
        return false;
    }
    const auto grid = [&](const CornerList& list) {
        return CornerGrid(list, width, height,
                          std::exchange(scratch, scratch + CornerGrid::bytes(width, height)));
    };
    const CornerGrid down_left_grid = grid(down_left);
    const CornerGrid up_left_grid = grid(up_left);
    const CornerGrid down_right_grid = grid(down_right);
    const CornerGrid up_right_grid = grid(up_right);

    uint32_t pairs = 0;
    // Pairs are counted one by one, and the limit is asked after each: the same as asking once after a few,
    // unless there are none.
    const auto reaches = [&pairs](uint32_t more, uint32_t limit) {
        pairs += more;
        return more > 0 && pairs >= limit;
    };
    constexpr uint32_t kFixedLimit = 20;  // does not follow the threshold, which is intended
    StackCounts below_upper_right(up_left, up_right_grid);
    for (const Corner& a : down_left) {
        const uint32_t below_left = down_right_grid.stacked(a);
        if (anyBeside(up_left, a, [&](const Corner& b) {
                return reaches(below_left, threshold) || reaches(below_upper_right.of(b), kFixedLimit);
            })) {
            return true;
        }
    }
    StackCounts above_lower_right(up_right, up_left_grid);
    for (const Corner& c : down_right) {
        const uint32_t above_left = down_left_grid.stacked(c);
        if (anyBeside(up_right, c, [&](const Corner& d) {
                return reaches(above_left, threshold) || reaches(above_lower_right.of(d), threshold);
            })) {
            return true;
        }
    }
    return false;
}

}  // namespace ZELAlgo
