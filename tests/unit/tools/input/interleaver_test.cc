#include "input/interleaver.h"

#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::ElementsAre;
using zel_monitor::Interleaver;
using zel_monitor::MediaItem;
using zel_monitor::Picture;
using zel_monitor::Sound;
using zel_monitor::StreamTrack;

MediaItem itemOf(StreamTrack track, double time_s) {
    if (track == StreamTrack::kVideo) {
        return Picture{.time = time_s, .duration = 0.04, .planes = {}, .frame = nullptr};
    }
    return Sound{.time = time_s,
                 .sample_rate = 1000,
                 .channels = 1,
                 .samples = 40,
                 .data = nullptr,
                 .buffer = nullptr};
}

class InterleaverTest : public testing::Test {
  protected:
    void put(StreamTrack track, const std::vector<double>& times_s) {
        for (const double time_s : times_s) {
            interleaver_.put(track, itemOf(track, time_s));
        }
    }
    void video(const std::vector<double>& times_s) { put(StreamTrack::kVideo, times_s); }
    void audio(const std::vector<double>& times_s) { put(StreamTrack::kAudio, times_s); }
    void expectBoth() {
        interleaver_.expect(StreamTrack::kVideo);
        interleaver_.expect(StreamTrack::kAudio);
    }

    /// Times of all that is due, those of audio negative.
    std::vector<double> due() {
        std::vector<double> times_s;
        while (const auto item = interleaver_.next()) {
            times_s.push_back(std::holds_alternative<Picture>(*item) ? timeOf(*item) : -timeOf(*item));
        }
        return times_s;
    }

    Interleaver interleaver_;
};

TEST_F(InterleaverTest, GivesBothTracksInOrderOfTime) {
    expectBoth();
    video({1, 2, 3});
    EXPECT_THAT(due(), ElementsAre()) << "audio may come before";
    audio({1, 1.5, 2.5});
    EXPECT_THAT(due(), ElementsAre(1, -1, -1.5, 2, -2.5));
    interleaver_.end();
    EXPECT_THAT(due(), ElementsAre(3));
}

TEST_F(InterleaverTest, DoesNotWaitForATrackThatIsNotThere) {
    interleaver_.expect(StreamTrack::kAudio);
    audio({1, 2});
    EXPECT_THAT(due(), ElementsAre(-1, -2));
}

TEST_F(InterleaverTest, WaitsForASilentTrackOnlySoLong) {
    expectBoth();
    video({1, 2, 3, 4, 5});
    EXPECT_THAT(due(), ElementsAre(1)) << "four may wait";
    interleaver_.setUndecided(StreamTrack::kAudio, true);
    video({6, 7});
    EXPECT_THAT(due(), ElementsAre()) << "another stream may be taking over";
    audio({1.5});
    EXPECT_THAT(due(), ElementsAre(-1.5));
}

TEST_F(InterleaverTest, KeepsTogetherWhatWasJoined) {
    expectBoth();
    video({8, 9, 0, 1});
    audio({8, 8.5, 9, 9.5, 0, 0.5, 1});
    interleaver_.end();
    EXPECT_THAT(due(), ElementsAre(8, -8, -8.5, 9, -9, -9.5, 0, -0, -0.5, 1, -1));
}

TEST_F(InterleaverTest, GoesOnByTimeAfterOneTrackJumpedAlone) {
    expectBoth();
    video({8, 9, 1, 2, 3, 4, 5});
    audio({8, 9});
    EXPECT_THAT(due(), ElementsAre(8, -8, 9, -9, 1)) << "waits for audio's jump as for audio";
    audio({10, 11});
    EXPECT_THAT(due(), ElementsAre(2, 3, 4, 5));
}

TEST_F(InterleaverTest, TakesPicturesOutOfOrderForNoJump) {
    expectBoth();
    video({1, 1.4, 1.2, 1.6});
    audio({1.3, 1.5, 2});
    EXPECT_THAT(due(), ElementsAre(1, -1.3, 1.4, 1.2, -1.5, 1.6));
}

}  // namespace
