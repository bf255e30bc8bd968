#include "judges/video_judges.h"

namespace ZELJudges {

VideoJudges::Settled VideoJudges::feed(const MeasuredFrame& frame, double time_s, double duration_s) {
    const Cells& cells = frame.cells;
    const auto black = black_.feed(cells, time_s, duration_s);
    const auto [under, over] = exposure_.feed(cells, black.front().present, time_s, duration_s);
    return {
        .black = black,
        .block = block_.feed(grid_.feed(frame, time_s, duration_s), loss_.feed(cells, time_s, duration_s)),
        .freeze = freeze_.feed(cells, time_s, duration_s),
        .under = under,
        .over = over};
}

VideoJudges::Settled VideoJudges::finish() {
    loss_.finish();
    return {.black = {},
            .block = block_.finish(grid_.finish(), {}),
            .freeze = freeze_.finish(),
            .under = {},
            .over = {}};
}

}  // namespace ZELJudges
