#ifndef ZEL_SRC_JUDGES_GRID_KERNELS_H_
#define ZEL_SRC_JUDGES_GRID_KERNELS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

#include "judges/cells.h"

namespace ZELJudges {

// An edge is looked for between the sums b - 1 and b of a strip: along the row of column sums for vertical
// edges, down a column of row sums for horizontal ones. Sums are of eight samples, so a level counts eight.
//
// Near edge, as quantised blocks have it: the step is at least 2 levels, no ramp (second difference of 4
// levels), and twice as large as every step 2 to 4 samples away on either side.
//
// Far edge, as it is left by a loop filter, which smooths up to three samples on either side: the four sums 3
// to 6 samples away, extrapolated to the edge by the slopes of both sides, lie 3 levels further apart than
// the larger range within a side.
//
// A strip lives at a boundary where there is anything to see: a step of a level near it, or a difference of a
// level between its sides or within one.

/// No edge is looked for closer to the border.
inline constexpr size_t kGridMargin = 8;

/// What was found at each boundary over all strips. Edges that step one way along many strips outline a thing
/// that is in the picture; those of quantised blocks step either way, so that only what does not add up
/// counts.
struct EdgeProfile {
    struct Counts {
        std::vector<uint32_t>
            incoherent;                ///< edges, less those that another of the other sign does not match
        std::vector<uint32_t> living;  ///< strips that live
    };
    Counts near;
    Counts far;

    void clear(size_t boundaries);
    /// Adds what was found at the same boundaries of other strips.
    void add(const EdgeProfile& other);
};

/// Elements that a row of `count` sums takes, so that a vector that starts in it ends in its padding.
size_t paddedStrip(size_t count);

/// Adds the edges between columns, and between rows, to profiles of as many boundaries.
void addColumnEdges(const Strips& strips, EdgeProfile& profile);
void addColumnEdgesScalar(const Strips& strips, EdgeProfile& profile);
void addRowEdges(const Strips& strips, EdgeProfile& profile);
void addRowEdgesScalar(const Strips& strips, EdgeProfile& profile);

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_GRID_KERNELS_H_
