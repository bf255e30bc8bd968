#include "serve/jump_bridge.h"

#include <gtest/gtest.h>

namespace {

using ZEL::StreamTrack;

constexpr double kFrameS = 0.04;
constexpr double kSoundAfterS = 0.3;  // sound comes so much later than the frames that it belongs to

/// Frames and sound in real time; each track's timestamps have leapt by so much from the fifth second on.
class Bridged {
  public:
    Bridged(double video_leap_s, double audio_leap_s, double silent_s = 0.0, double most_gap_s = 1.0) {
        for (int i = 0; i < 250; ++i) {
            const double s = i * kFrameS;
            const double now_s = s + (s >= 5.0 ? silent_s : 0.0);
            place(StreamTrack::kVideo, s + (s >= 5.0 ? video_leap_s : 0.0), now_s, most_gap_s);
            const double sound_s = s - kSoundAfterS;
            if (sound_s >= 0.0) {
                place(StreamTrack::kAudio, sound_s + (sound_s >= 5.0 ? audio_leap_s : 0.0), now_s,
                      most_gap_s);
            }
        }
    }

    double longest_gap_s = 0.0;
    double apart_s = 0.0;  ///< of both tracks, at the end

  private:
    void place(StreamTrack track, double time_s, double now_s, double most_gap_s) {
        const double placed_s = bridge_.place(track, time_s, kFrameS, now_s, most_gap_s);
        longest_gap_s = std::max(longest_gap_s, placed_s - last_s_[track] - kFrameS);
        EXPECT_GE(placed_s, last_s_[track]);
        last_s_[track] = placed_s;
        apart_s = last_s_.video - last_s_.audio;
    }

    zel_monitor::JumpBridge bridge_;
    zel_monitor::PerTrack<double> last_s_{};
};

TEST(JumpBridge, TakesOutLeapsOfBothTracksAndKeepsThemTogether) {
    for (const double leap_s : {1.2, 3.0, 20.0, 9000.0}) {
        const Bridged bridged(leap_s, leap_s);
        EXPECT_LE(bridged.longest_gap_s, kSoundAfterS + kFrameS) << leap_s;
        EXPECT_NEAR(bridged.apart_s, kSoundAfterS, 2 * kFrameS) << leap_s;
    }
    const Bridged late(20.0, 20.1);  // no two clocks are the same
    EXPECT_NEAR(late.apart_s, kSoundAfterS - 0.1, 2 * kFrameS);
}

TEST(JumpBridge, LeavesGapsThatAreTrueAndThoseOfOneTrack) {
    EXPECT_NEAR(Bridged(3.0, 3.0, 3.0).longest_gap_s, 3.0, 2 * kFrameS) << "nothing came for so long";
    EXPECT_NEAR(Bridged(3.0, 3.0, 0.0, 10.0).longest_gap_s, 3.0, 2 * kFrameS) << "stored, or of a file";
    EXPECT_LT(Bridged(20.0, 20.0, 0.0, 10.0).longest_gap_s, 0.5);

    zel_monitor::JumpBridge bridge;
    for (double s = 0.0; s < 60.0; s += kFrameS) {
        bridge.place(StreamTrack::kAudio, s, kFrameS, s, 1.0);
    }
    EXPECT_NEAR(bridge.place(StreamTrack::kVideo, 60.0, kFrameS, 60.0, 1.0), 60.0, 1e-9)
        << "late, but no leap";
}

}  // namespace
