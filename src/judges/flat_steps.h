#ifndef ZEL_SRC_JUDGES_FLAT_STEPS_H_
#define ZEL_SRC_JUDGES_FLAT_STEPS_H_

#include <cstdint>

#include "judges/cells.h"

namespace ZELJudges {

/// How often neighbouring cells differ visibly, and how often all of that lies in the line between them, with
/// nothing going on in either. What was filmed or drawn changes anywhere, and seldom just there; the squares
/// of a mosaic and blocks without detail change nowhere else. Steps that go
/// one way along a line count once, and flat ones not at all if they are many or if those before in the line
/// were as high: frames in the frame, stripes, windows and signs may lie along cells, too.
struct FlatSteps {
    uint32_t all = 0;
    uint32_t flat = 0;
};

FlatSteps countFlatSteps(const Cells& cells);

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_FLAT_STEPS_H_
