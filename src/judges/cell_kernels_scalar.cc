#include "judges/cell_kernels.h"

#include <algorithm>
#include <cstdlib>

namespace ZELJudges {

void measureBandScalar(const uint8_t* band, size_t stride, size_t width, const BandMeasures& measures) {
    const size_t cells = width / kCellSide;
    std::fill_n(measures.sums, cells, uint16_t{0});
    std::fill_n(measures.darkest, cells, uint8_t{255});
    std::fill_n(measures.brightest, cells, uint8_t{0});
    if (measures.columns != nullptr) {
        std::fill_n(measures.columns, width, uint16_t{0});
    }
    for (size_t y = 0; y < kCellSide; ++y) {
        const uint8_t* const row = band + y * stride;
        for (size_t cell = 0; cell < cells; ++cell) {
            unsigned sum = 0;
            for (size_t i = 0; i < kCellSide; ++i) {
                const uint8_t sample = row[cell * kCellSide + i];
                sum += sample;
                measures.darkest[cell] = std::min(measures.darkest[cell], sample);
                measures.brightest[cell] = std::max(measures.brightest[cell], sample);
            }
            measures.sums[cell] = static_cast<uint16_t>(measures.sums[cell] + sum);
            if (measures.columns != nullptr) {
                measures.rows[y * measures.row_pitch + cell] = static_cast<uint16_t>(sum);
            }
        }
        for (size_t x = 0; measures.columns != nullptr && x < width; ++x) {
            measures.columns[x] = static_cast<uint16_t>(measures.columns[x] + row[x]);
        }
    }
}

void sumBandScalar(const uint8_t* band, size_t stride, size_t width, uint16_t* sums) {
    for (size_t cell = 0; cell < width / kCellSide; ++cell) {
        unsigned sum = 0;
        for (size_t y = 0; y < kCellSide; y += 2) {
            for (size_t i = 0; i < kCellSide; ++i) {
                sum += band[y * stride + cell * kCellSide + i];
            }
        }
        sums[cell] = static_cast<uint16_t>(2 * sum);
    }
}

size_t countLikeScalar(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit) {
    size_t like = 0;
    for (size_t i = 0; i < count; ++i) {
        like += std::abs(now[i] - then[i]) <= limit ? 1U : 0U;
    }
    return like;
}

size_t markUnlikeScalar(const uint16_t* now, const uint16_t* then, size_t count, uint16_t limit,
                        uint16_t* marks) {
    size_t marked = 0;
    for (size_t i = 0; i < count; ++i) {
        if (std::abs(now[i] - then[i]) > limit) {
            marks[i] = 0xFFFF;
        }
        marked += marks[i] != 0 ? 1U : 0U;
    }
    return marked;
}

CellSum sumUpToScalar(const uint16_t* cells, size_t count, uint16_t limit) {
    CellSum sum{.count = 0, .sum = 0};
    for (size_t i = 0; i < count; ++i) {
        if (cells[i] <= limit) {
            ++sum.count;
            sum.sum += cells[i];
        }
    }
    return sum;
}

size_t markPlainScalar(const PlainCells& cells, const PlainLimits& limits, uint8_t* marks) {
    size_t marked = 0;
    for (size_t i = 0; i < cells.count; ++i) {
        const uint16_t luma = cells.luma[i];
        const bool is_even = cells.brightest[i] - cells.darkest[i] <= limits.most_uneven;
        const bool is_grey = luma >= limits.least_grey && luma <= limits.most_grey;
        const uint8_t mark = luma <= limits.most_dark ? kDarkMark : is_grey ? kGreyMark : 0;
        marks[i] = is_even ? mark : 0;
        marked += marks[i] != 0 ? 1U : 0U;
    }
    return marked;
}

}  // namespace ZELJudges
