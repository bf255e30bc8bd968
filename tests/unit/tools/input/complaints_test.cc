#include <algorithm>
#include <atomic>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "input/container/gap_sum.h"
#include "input/container/library_log.h"
#include "input/container/stream_complaints.h"
#include "support/clip.h"
#include "support/random.h"

namespace {

using ZEL::StreamTrack;
using zel_monitor::Complaint;
using zel_monitor::ComplaintReason;
using zel_monitor::GapSum;
using zel_monitor::StreamComplaints;

TEST(StreamComplaints, JoinsWhatIsCloseTogetherInWhateverOrderItCame) {
    struct Hit {
        double time_s;
        int64_t number;
        double share;
    };
    std::vector<Hit> hits;
    for (int64_t i = 0; i < 50; ++i) {  // two seconds, and one more after a second without any
        hits.push_back({static_cast<double>(i) * 0.04, i, i == 7 ? 0.9 : 0.1});
        hits.push_back({static_cast<double>(i) * 0.04, i, 0.1});  // the same packet again
    }
    hits.push_back({3.5, 80, 0.2});
    support::Random random(1);
    for (int round = 0; round < 5; ++round) {
        for (size_t i = hits.size() - 1; i > 0; --i) {
            std::swap(hits[i], hits[random.next() % (i + 1)]);
        }
        StreamComplaints complaints;
        for (const Hit& hit : hits) {
            complaints.add(ComplaintReason::kDecodingError, StreamTrack::kVideo,
                           ZEL::TimeSpan{hit.time_s, hit.time_s + 0.04}, hit.number, hit.share);
        }
        complaints.add(ComplaintReason::kDecodingError, StreamTrack::kAudio, ZEL::TimeSpan{1.0, 1.1});
        complaints.add(ComplaintReason::kContainer, std::nullopt, std::nullopt);
        const auto list = complaints.list();
        ASSERT_EQ(4U, list.size());
        EXPECT_FALSE(list[0].span);
        EXPECT_DOUBLE_EQ(0.0, list[1].span->start_s);
        EXPECT_DOUBLE_EQ(2.0, list[1].span->end_s);
        EXPECT_EQ(50U, list[1].count);
        EXPECT_DOUBLE_EQ(0.9, list[1].share);
        EXPECT_EQ(StreamTrack::kAudio, list[2].track);
        EXPECT_DOUBLE_EQ(3.5, list[3].span->start_s);
        EXPECT_EQ(53U, complaints.count());
    }
}

TEST(StreamComplaints, StaysSmallAndCountsOn) {
    StreamComplaints complaints;
    for (int64_t i = 0; i < 100'000; ++i) {
        const double time_s = static_cast<double>(i) * 10;
        complaints.add(ComplaintReason::kRefused, StreamTrack::kVideo, ZEL::TimeSpan{time_s, time_s}, i);
    }
    EXPECT_LE(complaints.list().size(), 20'000U);
    EXPECT_EQ(100'000U, complaints.count());
    complaints.add(ComplaintReason::kRefused, StreamTrack::kVideo,
                   ZEL::TimeSpan{1e300, 1e301});  // no time at all
    EXPECT_FALSE(complaints.list().front().span.has_value() && complaints.list().front().span->start_s > 1e9);
}

double shareOf(GapSum sum, int frames, double distance_s, double length_s, int every, double grain_s = 0.0) {
    for (int i = 0; i < frames; ++i) {
        const double time_s = i * distance_s;
        if (every == 0 || i % every != every / 2) {
            sum.add(grain_s > 0 ? std::round(time_s / grain_s) * grain_s : time_s, length_s);
        }
    }
    return sum.share();
}

TEST(GapSum, IsWhatFramesLeaveOut) {
    EXPECT_NEAR(0.04, shareOf(GapSum(false), 1000, 0.04, 0.04, 25), 0.002);
    EXPECT_NEAR(0.02, shareOf(GapSum(false), 1000, 1001.0 / 24000, 0.0, 50, 0.001), 0.003);
    EXPECT_NEAR(0.05, shareOf(GapSum(true), 1000, 1024.0 / 44100, 1024.0 / 44100, 20, 0.001), 0.003);
    for (const bool states_length : {false, true}) {
        EXPECT_NEAR(0.0, shareOf(GapSum(states_length), 1000, 1024.0 / 48000, 1024.0 / 48000, 0, 0.001),
                    0.001);
    }
}

TEST(GapSum, LeavesStallsAndUnevenFramesAlone) {
    GapSum stall(false);
    GapSum pulldown(false);
    GapSum late(true);
    GapSum again(true);
    double shown_s = 0.0;
    for (int i = 0; i < 500; ++i) {
        stall.add(i * 0.04 + (i > 250 ? 5.0 : 0.0), 0.04);
        pulldown.add(shown_s, 0.0);
        shown_s += i % 2 == 0 ? 0.033 : 0.05;
        late.add(i * 0.02 + (i % 2 == 0 ? 0.015 : 0.0), 0.02);
        again.add(i % 250 * 0.02, 0.02);  // a discontinuity backward
    }
    for (const GapSum& sum : {stall, pulldown, late, again}) {
        EXPECT_LT(sum.share(), 0.005);
    }
}

struct Heard : zel_monitor::LogListener {
    void onLogged(ComplaintReason reason, std::optional<int64_t> packet, double share) override {
        const std::lock_guard lock(mutex);
        reasons.push_back(reason);
        lowest = std::min(lowest, packet.value_or(lowest));
        highest = std::max(highest, packet.value_or(highest));
        worst_concealed =
            reason == ComplaintReason::kConcealed ? std::max(worst_concealed, share) : worst_concealed;
    }
    bool hasHeard(ComplaintReason reason) const {
        return std::find(reasons.begin(), reasons.end(), reason) != reasons.end();
    }

    std::mutex mutex;
    std::vector<ComplaintReason> reasons;
    int64_t lowest = 1'000'000;
    int64_t highest = -1;
    double worst_concealed = 0.0;
};

/// Reads and decodes a file as far as it goes.
void play(const std::string& path, Heard& from_demuxer, Heard& from_decoder) {
    AVFormatContext* opened = nullptr;
    zel_monitor::checked(avformat_open_input(&opened, path.c_str(), nullptr, nullptr));
    const zel_monitor::FormatHandle format(opened);
    zel_monitor::CodecHandle codec(
        avcodec_alloc_context3(avcodec_find_decoder(opened->streams[0]->codecpar->codec_id)));
    zel_monitor::checked(avcodec_parameters_to_context(codec.get(), opened->streams[0]->codecpar));
    codec->thread_count = 3;
    codec->reordered_opaque = 0;
    zel_monitor::listenTo(*codec, from_decoder);
    zel_monitor::checked(avcodec_open2(codec.get(), nullptr, nullptr));
    const zel_monitor::PacketHandle packet(av_packet_alloc());
    const zel_monitor::FrameHandle frame(av_frame_alloc());
    const zel_monitor::DemuxerLog log(from_demuxer);
    for (bool more = true; more;) {
        more = av_read_frame(opened, packet.get()) >= 0;
        ++codec->reordered_opaque;
        avcodec_send_packet(codec.get(), more ? packet.get() : nullptr);
        av_packet_unref(packet.get());
        while (avcodec_receive_frame(codec.get(), frame.get()) >= 0) {
        }
    }
}

TEST(LibraryLog, TellsWhatIsWrongAndWithWhichPacket) {
    const support::ScratchDir scratch;
    support::ffmpeg("-f lavfi -i testsrc2=s=320x240:d=2 -c:v libx264 -g 100 -bf 0 -slices 4",
                    scratch.file("clip.mkv"));
    {
        Heard demuxer;
        Heard decoder;
        play(scratch.file("clip.mkv"), demuxer, decoder);
        EXPECT_TRUE(demuxer.reasons.empty());
        EXPECT_TRUE(decoder.reasons.empty());
    }
    auto bytes = support::readFile(scratch.file("clip.mkv"));
    bytes[bytes.size() / 2] = static_cast<char>(~bytes[bytes.size() / 2]);
    support::writeFile(scratch.file("damaged.mkv"), bytes);
    Heard demuxer;
    Heard decoder;
    play(scratch.file("damaged.mkv"), demuxer, decoder);
    EXPECT_TRUE(decoder.hasHeard(ComplaintReason::kDecodingError));
    EXPECT_GT(decoder.worst_concealed, 0.0);
    EXPECT_LT(decoder.worst_concealed, 1.0);
    EXPECT_GT(decoder.lowest, 5);
    EXPECT_EQ(decoder.lowest, decoder.highest);
    EXPECT_TRUE(demuxer.reasons.empty());

    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 3000, '\0');
    support::writeFile(scratch.file("zeroed.mkv"), bytes);
    play(scratch.file("zeroed.mkv"), demuxer, decoder);
    EXPECT_TRUE(demuxer.hasHeard(ComplaintReason::kContainer));
}

}  // namespace
