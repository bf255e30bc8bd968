#include "cli/progress.h"

#include <gtest/gtest.h>

namespace {

using namespace zel_monitor;

TEST(Progress, LineTellsSpeedAndTimeToGo) {
    const auto text = [](const ProgressState& state) {
        return progressText(state, ProgressOf::kFiles, true);
    };
    EXPECT_EQ(text({.position_s = 30, .length_s = 120, .elapsed_s = 3, .speed = 10, .events = 1}),
              "[######..................]  25% 0:00:30/0:02:00, 10.0x, 0:00:09 to go, 1 event");
    EXPECT_EQ(text({.position_s = 30, .length_s = {}, .elapsed_s = 3, .speed = 10, .events = 2}),
              "0:00:30, 10.0x, 2 events");
    EXPECT_EQ(text({.position_s = 30,
                    .length_s = {},
                    .elapsed_s = 3,
                    .speed = 10,
                    .events = 2,
                    .inputs = 4,
                    .inputs_done = 1,
                    .inputs_share = 0.375}),
              "[#########...............]  38% 0:00:30, 10.0x, 0:00:05 to go, 2 events, input 2 of 4");
}

TEST(Progress, LineOfAStreamTellsItsFramesAndFitsATerminal) {
    const ProgressState state{
        .position_s = 50, .length_s = 100, .speed = 0.999, .video_frames = 1250, .audio_frames = 2345};
    EXPECT_EQ(progressText(state, ProgressOf::kStream, true),
              "[######......]  50% 0:00:50/0:01:40, 1.00x, 1250 video, 2345 audio frames");
    EXPECT_EQ(progressText({.position_s = 50, .length_s = {}}, ProgressOf::kStream, true),
              "0:00:50, 0.00x, 0 video, 0 audio frames");
}

}  // namespace
