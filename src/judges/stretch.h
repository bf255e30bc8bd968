#ifndef ZEL_SRC_JUDGES_STRETCH_H_
#define ZEL_SRC_JUDGES_STRETCH_H_

namespace ZELJudges {

/// What a judge has settled about one stretch of the stream. A judge tells stretches in order, each starting
/// where the one before ended (or later, where no frame was on), and takes none back. It may tell them late.
struct Stretch {
    double start_s;
    double end_s;
    bool present;        ///< the fault was there
    float value;         ///< what was measured, see the judge
    float limit;         ///< what it was measured against
    bool apart = false;  ///< begins another fault, even where one was present up to here
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_STRETCH_H_
