#ifndef ZEL_BENCH_ACCURACY_CORPUS_H_
#define ZEL_BENCH_ACCURACY_CORPUS_H_

#include <zel/events/event.h>
#include <zel/events/kinds.h>

#include <vector>

#include "bench/accuracy/clip.h"

namespace bench::accuracy {

/// One clip of which it is known when the fault is there.
struct Case {
    Clip clip;
    ZEL::EventKind kind;
    bool hard;
    std::vector<ZEL::TimeSpan> truth;
};

/// Clips of 12 s with one fault each, or with none but what might be taken for one.
const std::vector<Case>& corpus();

/// Clips of two seconds, 1280x720, of one clip with the texture of filmed frames: good, and with one fault
/// each from the first frame to the last.
std::vector<Clip> textureClips();

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_CORPUS_H_
