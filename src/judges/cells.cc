#include "judges/cells.h"

#include "judges/cell_kernels.h"
#include "judges/grid_kernels.h"

namespace ZELJudges {
namespace {

void resize(Cells& cells, const FramePlanes& frame) {
    cells.columns = frame.width / kCellSide;
    cells.rows = frame.height / kCellSide;
    const size_t count = cells.columns * cells.rows;
    cells.luma.resize(count);
    cells.darkest.resize(count);
    cells.brightest.resize(count);
    cells.has_chroma = false;
}

void resize(Strips& strips, const FramePlanes& frame) {
    if (strips.width == frame.width && strips.height == frame.height) {
        return;
    }
    strips.width = frame.width;
    strips.height = frame.height;
    strips.column_pitch = paddedStrip(frame.width);
    strips.row_pitch = paddedStrip(frame.width / kCellSide);
    const size_t bands = frame.height / kCellSide;
    strips.columns.assign(bands * strips.column_pitch, 0);
    strips.rows.assign(bands * kCellSide * strips.row_pitch, 0);
}

void sumPlane(const uint8_t* plane, size_t stride, size_t columns, size_t rows, uint16_t* sums) {
    for (size_t y = 0; y < rows; ++y) {
        sumBand(plane + y * kCellSide * stride, stride, columns * kCellSide, sums + y * columns);
    }
}

}  // namespace

void measureLuma(const FramePlanes& frame, Cells& cells, Strips* strips) {
    resize(cells, frame);
    if (strips != nullptr) {
        resize(*strips, frame);
    }
    for (size_t y = 0; y < cells.rows; ++y) {
        const size_t first = y * cells.columns;
        BandMeasures measures{.sums = cells.luma.data() + first,
                              .darkest = cells.darkest.data() + first,
                              .brightest = cells.brightest.data() + first,
                              .columns = nullptr,
                              .rows = nullptr,
                              .row_pitch = 0};
        if (strips != nullptr) {
            measures.columns = strips->columns.data() + y * strips->column_pitch;
            measures.rows = strips->rows.data() + y * kCellSide * strips->row_pitch;
            measures.row_pitch = strips->row_pitch;
        }
        measureBand(frame.data[0] + y * kCellSide * frame.stride[0], frame.stride[0], frame.width, measures);
    }
}

void measureChroma(const FramePlanes& frame, Cells& cells) {
    cells.has_chroma = true;
    cells.chroma_columns = (frame.width + 1) / 2 / kCellSide;
    cells.chroma_rows = (frame.height + 1) / 2 / kCellSide;
    cells.cb.resize(cells.chroma_columns * cells.chroma_rows);
    cells.cr.resize(cells.cb.size());
    sumPlane(frame.data[1], frame.stride[1], cells.chroma_columns, cells.chroma_rows, cells.cb.data());
    sumPlane(frame.data[2], frame.stride[2], cells.chroma_columns, cells.chroma_rows, cells.cr.data());
}

}  // namespace ZELJudges
