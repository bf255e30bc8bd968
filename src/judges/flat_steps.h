#ifndef ZEL_SRC_JUDGES_FLAT_STEPS_H_
#define ZEL_SRC_JUDGES_FLAT_STEPS_H_

#include <cstddef>
#include <cstdint>
#include <vector>

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

/// Counts them in one frame after another; takes memory only when their size has changed.
class FlatStepCounter {
  public:
    FlatSteps count(const Cells& cells);

  private:
    /// Follows the steps along one line between cells.
    class Line {
      public:
        void add(const Cells& cells, size_t a, size_t b, size_t at, FlatSteps& steps);
        void close(FlatSteps& steps);

      private:
        size_t next_ = 0;
        int way_ = 0;     // of the last step
        int length_ = 0;  // of the run of flat steps that goes on
        int step_ = 0;    // its first one
        int last_ = 0;    // of the run before
    };

    void mark(const Cells& cells, size_t apart);

    std::vector<uint16_t> marks_;
    std::vector<Line> upright_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_FLAT_STEPS_H_
