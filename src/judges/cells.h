#ifndef ZEL_SRC_JUDGES_CELLS_H_
#define ZEL_SRC_JUDGES_CELLS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "judges/cell_kernels.h"
#include "judges/frame_planes.h"

namespace ZELJudges {

/// Means are kept as 64ths of a level: the sum of the 64 samples of a cell.
inline constexpr int kMeanScale = 64;

/// What the judges read of a frame instead of its samples: measures of cells of 8x8 luma samples, row by row
/// from the top left, without what is left over at the right and the bottom. Cells of chroma are as large in
/// samples, so each lies over four of luma.
struct Cells {
    size_t columns = 0;
    size_t rows = 0;
    std::vector<uint16_t> luma;      ///< mean, in 64ths
    std::vector<uint8_t> darkest;    ///< luma sample
    std::vector<uint8_t> brightest;  ///< luma sample
    CellSum dark{};                  ///< of the cells that are as dark as black is
    std::vector<uint8_t> blank;      ///< marks of cells whose luma may show nothing decoded
    size_t blank_count = 0;
    bool has_chroma = false;  ///< most frames need none; what follows is then what an earlier frame left
    size_t chroma_columns = 0;
    size_t chroma_rows = 0;
    std::vector<uint16_t> cb;  ///< mean, in 64ths
    std::vector<uint16_t> cr;
};

/// Sums of eight neighbouring luma samples along every edge that a coding grid could have, in which noise
/// averages out: of eight rows in each column, and of eight columns in each row. Rows of both tables are
/// padded with zeros, so that vectors may read past their ends.
struct Strips {
    size_t width = 0;  ///< of the luma
    size_t height = 0;
    size_t column_pitch = 0;
    std::vector<uint16_t> columns;  ///< height / 8 rows of `width` sums
    size_t row_pitch = 0;
    std::vector<uint16_t> rows;  ///< height / 8 * 8 rows of width / 8 sums
};

/// Measures the luma of a frame; memory is taken only when the size has changed. `strips` may be null.
void measureLuma(const FramePlanes& frame, Cells& cells, Strips* strips);

/// Measures the chroma of the same frame.
void measureChroma(const FramePlanes& frame, Cells& cells);

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_CELLS_H_
