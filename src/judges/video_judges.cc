#include "judges/video_judges.h"

namespace ZELJudges {

VideoJudges::Settled VideoJudges::feed(const FramePlanes& frame, double time_s, double duration_s) {
    const bool wanted = block_.wants(time_s);
    measure(frame, cells_, wanted ? &strips_ : nullptr);
    const auto black = black_.feed(cells_, time_s, duration_s);
    const auto [under, over] = exposure_.feed(cells_, black.front().present, time_s, duration_s);
    return {.black = black,
            .block = block_.feed(wanted ? &strips_ : nullptr, time_s, duration_s),
            .loss = loss_.feed(cells_, time_s, duration_s),
            .freeze = freeze_.feed(cells_, time_s, duration_s),
            .under = under,
            .over = over};
}

VideoJudges::Settled VideoJudges::finish() {
    loss_.finish();
    return {.black = {},
            .block = block_.finish(),
            .loss = {},
            .freeze = freeze_.finish(),
            .under = {},
            .over = {}};
}

}  // namespace ZELJudges
