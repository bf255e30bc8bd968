#include <zel/events/stream_clock.h>

#include <array>
#include <cmath>
#include <limits>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

namespace {

using testing::DoubleNear;
using testing::Pointwise;
using ZEL::StreamClock;
using ZEL::StreamTrack;

constexpr double kTurnS = 8589934592.0 / 90000.0;  // 33 bits of a 90 kHz clock
const double kNone = std::numeric_limits<double>::quiet_NaN();

auto isNear(const std::vector<double>& places) {
    return Pointwise(DoubleNear(1e-9), places);
}

/// A clock, and where it has put the frames of either track so far.
struct Tracks {
    void take(StreamTrack track, double stamp_s, double length_s = 0.1) {
        clock.take(track, stamp_s, length_s, place);
    }
    /// Frames of a tenth of a second in both tracks, from and to these timestamps.
    void part(std::pair<double, double> video, std::pair<double, double> audio) {
        const auto frames = [](const auto& span) {
            return static_cast<int>(std::lround((span.second - span.first) * 10));
        };
        for (int i = 0; i < std::max(frames(video), frames(audio)); ++i) {
            if (i < frames(video)) {
                take(StreamTrack::kVideo, video.first + 0.1 * i);
            }
            if (i < frames(audio)) {
                take(StreamTrack::kAudio, audio.first + 0.1 * i);
            }
        }
    }
    const std::vector<double>& of(StreamTrack track) const { return places.at(static_cast<size_t>(track)); }
    double lastOf(StreamTrack track) const { return of(track).back(); }

    StreamClock clock;
    std::array<std::vector<double>, 2> places;
    StreamClock::Place place = [this](StreamTrack track, double start_s) {
        places.at(static_cast<size_t>(track)).push_back(start_s);
    };
};

/// Where frames of a tenth of a second with these timestamps are placed.
std::vector<double> placesOf(const std::vector<double>& stamps, StreamTrack track = StreamTrack::kVideo) {
    Tracks tracks;
    for (const double stamp_s : stamps) {
        tracks.take(track, stamp_s);
    }
    tracks.clock.finish(tracks.place);
    return tracks.of(track);
}

TEST(StreamClock, TellsWrongTimestampsFromDiscontinuities) {
    const std::vector<double> even{1.0, 1.1, 1.2, 1.3, 1.4, 1.5};
    EXPECT_THAT(placesOf({1.0, 1.1, 9000.0, 1.3, 1.4, 1.5}), isNear(even)) << "one stamp ahead";
    EXPECT_THAT(placesOf({1.0, 1.1, 9000.0, 9000.1, 1.4, 1.5}), isNear(even)) << "two stamps ahead";
    EXPECT_THAT(placesOf({1.0, 1.1, 0.2, 1.3, 1.4, 1.5}), isNear(even)) << "one stamp back";
    EXPECT_THAT(placesOf({1.0, 1.1, 1.2, 0.0, 0.1, 0.2}), isNear(even)) << "the stream begins again";
    EXPECT_THAT(placesOf({1.0, 1.1, 7.2, 7.3, 7.4, 7.5}), isNear({1.0, 1.1, 7.2, 7.3, 7.4, 7.5})) << "a gap";
    EXPECT_THAT(placesOf({1.0, 1.1, 7.2}), isNear({1.0, 1.1, 7.2})) << "a gap before the last";
    EXPECT_THAT(placesOf({1.0, 7.2, 7.3, 7.4, 7.5, 7.6, 1.1}), isNear({1.0, 7.2, 7.3, 7.4, 7.5, 7.6, 7.7}))
        << "back after more than is held";
    EXPECT_THAT(placesOf({50.0, 1.1, 1.2, 1.3, 1.4, 1.5}), isNear(even)) << "the first stamp";
    EXPECT_THAT(placesOf({1.0, 7.2, 7.3}), isNear({1.0, 7.2, 7.3})) << "a gap after the first";
    EXPECT_THAT(placesOf({1.0}), isNear({1.0})) << "one frame";
    EXPECT_THAT(placesOf({1.0, 1.1, kNone, 1.3, kNone, kNone}), isNear(even)) << "no stamps";
}

TEST(StreamClock, TracksThatJumpBackTogetherStayTogether) {
    Tracks longer_audio;
    Tracks longer_video;
    for (int part = 0; part < 10; ++part) {
        longer_audio.part({0.0, 10.0}, {0.0, 12.0});
        longer_video.part({0.0, 12.0}, {0.0, 10.0});
    }
    EXPECT_NEAR(longer_audio.lastOf(StreamTrack::kAudio), 119.9, 1e-6);
    EXPECT_NEAR(longer_audio.lastOf(StreamTrack::kVideo), 117.9, 1e-6);
    EXPECT_NEAR(longer_video.lastOf(StreamTrack::kVideo), 119.9, 1e-6);
    EXPECT_NEAR(longer_video.lastOf(StreamTrack::kAudio), 117.9, 1e-6);

    Tracks alone;  // only the video's timestamps begin again
    alone.part({100.0, 110.0}, {100.0, 110.0});
    alone.part({0.0, 10.0}, {110.0, 120.0});
    alone.part({8.0, 18.0}, {120.0, 130.0});
    alone.part({18.0, 23.0}, {});
    alone.part({23.0, 28.0}, {129.0, 134.0});  // only the audio's, which comes late
    alone.part({}, {134.0, 139.0});
    EXPECT_NEAR(alone.lastOf(StreamTrack::kVideo), 139.9, 1e-6);
    EXPECT_NEAR(alone.lastOf(StreamTrack::kAudio), 139.9, 1e-6);
}

TEST(StreamClock, TimeRunsOnThroughDiscontinuitiesBackward) {
    for (const double jump_s : {5.0, kTurnS}) {
        Tracks tracks;
        tracks.part({kTurnS, kTurnS + 20.0}, {kTurnS, kTurnS + 20.0});
        tracks.part({kTurnS + 20.0 - jump_s, kTurnS + 30.0 - jump_s},
                    {kTurnS + 20.0 - jump_s, kTurnS + 30.0 - jump_s});
        tracks.clock.finish(tracks.place);
        EXPECT_NEAR(tracks.lastOf(StreamTrack::kVideo), kTurnS + 29.9, 1e-6) << jump_s;
        EXPECT_NEAR(tracks.lastOf(StreamTrack::kAudio), kTurnS + 29.9, 1e-6) << jump_s;
    }
}

TEST(StreamClock, TracksThatJumpOneASecondBeforeTheOtherMeetAgain) {
    for (const double to_s : {3.0, 400.0}) {
        for (const bool video_first : {true, false}) {
            Tracks tracks;
            tracks.part({50.0, 60.0}, {50.0, 60.0});
            const std::pair<double, double> before{60.0, 61.0};
            const std::pair<double, double> after{to_s, to_s + 1.0};
            tracks.part(video_first ? after : before, video_first ? before : after);
            const std::pair<double, double> first{to_s + 1.0, to_s + 10.0};
            const std::pair<double, double> second{to_s, to_s + 9.0};
            tracks.part(video_first ? first : second, video_first ? second : first);
            tracks.clock.finish(tracks.place);
            const StreamTrack ahead = video_first ? StreamTrack::kVideo : StreamTrack::kAudio;
            const StreamTrack behind = video_first ? StreamTrack::kAudio : StreamTrack::kVideo;
            EXPECT_NEAR(tracks.lastOf(ahead) - tracks.lastOf(behind), 1.0, 1e-6) << to_s << video_first;
            // The new part begins where the longer track's old one ends; a jump ahead is a gap.
            EXPECT_NEAR(tracks.lastOf(behind), to_s < 50.0 ? 69.9 : to_s + 8.9, 1e-6) << to_s << video_first;
        }
    }
}

TEST(StreamClock, TimesThatAClockGaveAreLeftAlone) {
    Tracks first;
    first.part({100.0, 110.0}, {100.0, 111.0});
    first.part({0.0, 10.0}, {0.3, 10.0});
    first.part({17.0, 19.0}, {17.0, 19.0});
    first.part({400.0, 400.2}, {19.0, 21.0});
    first.part({19.2, 30.0}, {5.0, 14.0});
    first.clock.finish(first.place);
    Tracks second;
    for (size_t i = 0; i < first.places[1].size(); ++i) {
        second.take(StreamTrack::kAudio, first.places[1][i]);
        if (i < first.places[0].size()) {
            second.take(StreamTrack::kVideo, first.places[0][i]);
        }
    }
    for (size_t i = first.places[1].size(); i < first.places[0].size(); ++i) {
        second.take(StreamTrack::kVideo, first.places[0][i]);
    }
    second.clock.finish(second.place);
    EXPECT_EQ(second.places, first.places);  // to the last bit
}

TEST(StreamClock, HoldsNoMoreFramesThanStated) {
    for (const auto& [track, most] : {std::pair(StreamTrack::kVideo, StreamClock::kMostVideoHeld),
                                      std::pair(StreamTrack::kAudio, StreamClock::kMostAudioHeld)}) {
        Tracks tracks;
        for (size_t i = 0; i < 1000; ++i) {
            tracks.take(track, static_cast<double>(i * 7919 % 1000));
            EXPECT_LE(i + 1 - tracks.of(track).size(), most);
        }
        tracks.clock.finish(tracks.place);
        EXPECT_EQ(tracks.of(track).size(), 1000U);
        EXPECT_TRUE(std::is_sorted(tracks.of(track).begin(), tracks.of(track).end()));
    }
}

TEST(StreamClock, WraparoundIsUndoneInTheTurnNearestToWhereTheTrackIs) {
    EXPECT_DOUBLE_EQ(StreamClock::unwrapped(0.02, kTurnS - 0.02, kTurnS), kTurnS + 0.02);
    EXPECT_NEAR(StreamClock::unwrapped(kTurnS - 0.02, 0.02, kTurnS), -0.02, 1e-9);
    EXPECT_DOUBLE_EQ(StreamClock::unwrapped(1.0, 5 * kTurnS + 1.0, kTurnS), 5 * kTurnS + 1.0);
    EXPECT_DOUBLE_EQ(StreamClock::unwrapped(15.0, 20.0, kTurnS), 15.0) << "a jump back is no wrap";
    EXPECT_DOUBLE_EQ(StreamClock::unwrapped(0.02, 9000.0, 0.0), 0.02);
}

}  // namespace
