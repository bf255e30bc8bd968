#ifndef ZEL_SRC_JUDGES_CELL_KERNELS_H_
#define ZEL_SRC_JUDGES_CELL_KERNELS_H_

#include <cstddef>
#include <cstdint>

namespace ZELJudges {

// The loops of the judges, each twice: the plain one, ending in Scalar, says what is computed; the other
// gives the same bits with the widest instructions of the processor. The same holds for grid_kernels.h.

inline constexpr size_t kCellSide = 8;

/// Where the measures of one band of eight rows go. A cell is eight samples wide; samples right of the last
/// whole cell are in `columns` only.
struct BandMeasures {
    uint16_t* sums;      ///< of each cell's 64 samples
    uint8_t* darkest;    ///< sample of each cell
    uint8_t* brightest;  ///< sample of each cell
    uint16_t* columns;   ///< sum of the band's eight samples in each column of the plane; null: not wanted
    uint16_t* rows;      ///< sum of each cell's eight samples in each of the eight rows; null with `columns`
    size_t row_pitch;    ///< elements from one of these rows to the next
};

/// Measures eight rows of `width` samples that lie `stride` bytes apart.
void measureBand(const uint8_t* band, size_t stride, size_t width, const BandMeasures& measures);
void measureBandScalar(const uint8_t* band, size_t stride, size_t width, const BandMeasures& measures);

/// About the sums of measureBand: twice those of every second row, which costs half.
void sumBand(const uint8_t* band, size_t stride, size_t width, uint16_t* sums);
void sumBandScalar(const uint8_t* band, size_t stride, size_t width, uint16_t* sums);

/// How many of `count` cells differ by at most `limit` from what they were. Values below 32768.
size_t countLike(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit);
size_t countLikeScalar(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit);

/// Sets marks[i] to 0xFFFF where the cell differs by more than `limit`, leaves the others, and counts all
/// that are set. Values below 32768; marks are 0 or 0xFFFF.
size_t markUnlike(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit, uint16_t* marks);
size_t markUnlikeScalar(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit,
                        uint16_t* marks);

struct CellSum {
    size_t count;
    uint64_t sum;

    bool operator==(const CellSum&) const = default;
};

/// How many of `count` cells are at most `limit`, and their sum. Values below 32768.
CellSum sumUpTo(const uint16_t* cells, size_t count, uint16_t limit);
CellSum sumUpToScalar(const uint16_t* cells, size_t count, uint16_t limit);

struct PlainCells {
    const uint16_t* luma;  ///< below 32768
    const uint8_t* darkest;
    const uint8_t* brightest;
    size_t count;
};

struct PlainLimits {
    uint8_t most_uneven;  ///< from the darkest to the brightest sample
    uint16_t most_dark;
    uint16_t least_grey;
    uint16_t most_grey;
};

inline constexpr uint8_t kDarkMark = 1;
inline constexpr uint8_t kGreyMark = 2;

/// Marks cells that are even and whose luma is dark or grey, sets other marks to 0, and counts those that are
/// not. Grey is brighter than dark.
size_t markPlain(const PlainCells& cells, const PlainLimits& limits, uint8_t* marks);
size_t markPlainScalar(const PlainCells& cells, const PlainLimits& limits, uint8_t* marks);

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_CELL_KERNELS_H_
