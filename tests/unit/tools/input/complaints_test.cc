#include <algorithm>
#include <cmath>
#include <mutex>
#include <string>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "input/container/library_log.h"
#include "input/gap_sum.h"
#include "input/packet_ledger.h"
#include "input/stream_complaints.h"
#include "support/clip.h"
#include "support/random.h"

namespace {

using ZEL::StreamTrack;
using zel_monitor::ComplaintReason;
using zel_monitor::GapSum;
using zel_monitor::ItemComplaint;
using zel_monitor::PacketLedger;
using zel_monitor::StreamComplaints;

constexpr double kFrameS = 0.04;

TEST(StreamComplaints, JoinsWhatIsCloseTogetherInWhateverOrderItCame) {
    std::vector<int> frames{87};  // after more than a second without any
    for (int i = 0; i < 50; ++i) {
        frames.push_back(i);
    }
    support::Random random(1);
    for (int round = 0; round < 5; ++round) {
        for (size_t i = frames.size() - 1; i > 0; --i) {
            std::swap(frames[i], frames[random.next() % (i + 1)]);
        }
        StreamComplaints complaints;
        for (const int frame : frames) {
            complaints.add(ComplaintReason::kDecodingError, StreamTrack::kVideo,
                           {frame * kFrameS, (frame + 1) * kFrameS}, frame == 7 ? 0.9 : 0.1);
        }
        complaints.add(ComplaintReason::kDecodingError, StreamTrack::kAudio, {1.0, 1.1});
        complaints.add(ComplaintReason::kContainer, std::nullopt, {1e300, -1e300});  // at no time at all
        const auto list = complaints.list();
        ASSERT_EQ(4U, list.size());
        EXPECT_EQ(53U, complaints.count());
        const auto& first = list[list[0].track ? 0 : 1];
        EXPECT_NEAR(0.0, first.span.start_s, 1e-9);
        EXPECT_NEAR(2.0, first.span.end_s, 1e-9);
        EXPECT_EQ(50U, first.count);
        EXPECT_DOUBLE_EQ(0.9, first.share);
        EXPECT_EQ(StreamTrack::kAudio, list[2].track);
        EXPECT_NEAR(3.48, list[3].span.start_s, 1e-9);
    }
}

TEST(StreamComplaints, StaysSmallAndCountsOn) {
    StreamComplaints complaints;
    for (int i = 0; i < 100'000; ++i) {
        complaints.add(ComplaintReason::kRefused, StreamTrack::kVideo, {i * 10.0, i * 10.0});
    }
    EXPECT_LE(complaints.list().size(), 20'000U);
    complaints.forgetBefore(150'000.0);
    EXPECT_EQ(5'000U, complaints.list().size());
    EXPECT_EQ(100'000U, complaints.count());
}

/// Sends a second of packets, one frame each.
void sendSecond(PacketLedger& ledger, double from_s = 0.0) {
    for (int i = 0; i < 25; ++i) {
        ledger.send(from_s + i * kFrameS, kFrameS, false);
    }
}

TEST(PacketLedger, BringsComplaintsToTheFramesTheyAreAbout) {
    PacketLedger ledger({.begins_anywhere = false, .has_timestamps = true, .is_uneven = false});
    sendSecond(ledger);
    ledger.complain(ComplaintReason::kBrokenPacket);  // the last one
    ledger.onLogged(ComplaintReason::kDecodingError, 4, 1.0);
    ledger.onLogged(ComplaintReason::kConcealed, 4, 0.25);
    ledger.onLogged(ComplaintReason::kDecodingError, 9, 1.0);
    ledger.onLogged(ComplaintReason::kMissingFrame, 5, 1.0);  // timestamps tell that better
    std::vector<ItemComplaint> of_fourth;
    for (const int number : {1, 3, 2, 4, 5, 6, 7, 8, 10, 11}) {  // the ninth gives none
        const auto complaints = ledger.receive(number, (number - 1) * kFrameS, kFrameS, false);
        EXPECT_EQ(number == 4 ? 2U : 0U, complaints.size()) << number;
        of_fourth = number == 4 ? complaints : of_fourth;
    }
    EXPECT_EQ(ComplaintReason::kDecodingError, of_fourth[0].reason);
    EXPECT_EQ(ComplaintReason::kConcealed, of_fourth[1].reason);
    EXPECT_DOUBLE_EQ(0.25, of_fourth[1].share);
    EXPECT_DOUBLE_EQ(0.0, of_fourth[1].offset_s);
    EXPECT_EQ(1U, ledger.receive(12, 11 * kFrameS, kFrameS, true).size()) << "marked by the decoder";
    EXPECT_EQ(13, ledger.unanswered());

    ledger.refused();
    const auto rest = ledger.finish();  // seen from the end of the twelfth
    ASSERT_EQ(3U, rest.size());
    EXPECT_NEAR(-4 * kFrameS, rest[0].offset_s, 1e-9);
    EXPECT_EQ(ComplaintReason::kBrokenPacket, rest[1].reason);
    EXPECT_NEAR(12 * kFrameS, rest[1].offset_s, 1e-9);
    EXPECT_EQ(ComplaintReason::kRefused, rest[2].reason);
}

TEST(PacketLedger, TellsWhatNeverCameOutBeforeTooLong) {
    PacketLedger ledger({.begins_anywhere = false, .has_timestamps = true, .is_uneven = false});
    size_t told = 0;
    for (int i = 0; i < 1000; ++i) {
        const int64_t number = ledger.send(i * kFrameS, kFrameS, false);
        if (i == 10) {
            ledger.complain(ComplaintReason::kDecodingError);
            continue;
        }
        for (const ItemComplaint& complaint : ledger.receive(number, i * kFrameS, kFrameS, false)) {
            EXPECT_NEAR(10 * kFrameS, i * kFrameS + complaint.offset_s, 1e-9);
            EXPECT_LT(i, 200);
            ++told;
        }
    }
    EXPECT_EQ(1U, told);
}

TEST(PacketLedger, ForgivesTheBeginningOfAStreamThatWasCutOut) {
    for (const bool begins_anywhere : {true, false}) {
        PacketLedger ledger({.begins_anywhere = begins_anywhere, .has_timestamps = true, .is_uneven = false});
        sendSecond(ledger);
        for (int number = 1; number < 10; ++number) {
            ledger.onLogged(ComplaintReason::kDecodingError, number, 1.0);
            ledger.refused();
        }
        ledger.onLogged(ComplaintReason::kDecodingError, 12,
                        1.0);  // is shown before the first, and needs others
        const size_t told = ledger.receive(11, 12 * kFrameS, kFrameS, false).size();
        EXPECT_EQ(begins_anywhere ? 0U : 9U, told + ledger.finish().size() - (begins_anywhere ? 0U : 1U));
    }
}

TEST(PacketLedger, LeavesPacketsAfterADiscontinuityWhereTheyAre) {
    PacketLedger ledger({.begins_anywhere = true, .has_timestamps = true, .is_uneven = false});
    sendSecond(ledger, 10.0);
    ledger.receive(25, 10.0 + 24 * kFrameS, kFrameS, false);
    sendSecond(ledger);  // the timestamps begin again
    ledger.complain(ComplaintReason::kDecodingError);
    const auto rest = ledger.finish();
    ASSERT_EQ(1U, rest.size());
    EXPECT_NEAR(0.0, rest[0].offset_s, 1e-9);
}

double shareOf(GapSum sum, int frames, double distance_s, double length_s, int every, double grain_s = 0.0) {
    for (int i = 0; i < frames; ++i) {
        const double time_s = i * distance_s;
        if (every == 0 || i % every != every / 2) {
            sum.add(grain_s > 0 ? std::round(time_s / grain_s) * grain_s : time_s, length_s);
        }
    }
    return sum.missing().share;
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

TEST(GapSum, TellsWhereTheyAre) {
    GapSum sum(false);
    for (int i = 0; i < 100; ++i) {
        sum.add(i * kFrameS + (i > 50 ? 0.8 : 0.0) + (i > 60 ? 0.2 : 0.0), kFrameS);
    }
    EXPECT_NEAR(0.2, sum.missing().share, 0.01);
    EXPECT_NEAR(51 * kFrameS, sum.missing().span.start_s, 1e-6);
    EXPECT_NEAR(61 * kFrameS + 1.0, sum.missing().span.end_s, 1e-6);
}

TEST(GapSum, LeavesStallsAndUnevenFramesAlone) {
    GapSum stall(false);
    GapSum pulldown(false);
    GapSum held(false);
    GapSum late(true);
    GapSum again(true);
    double shown_s = 0.0;
    for (int i = 0; i < 500; ++i) {
        stall.add(i * 0.04 + (i > 250 ? 5.0 : 0.0), 0.04);
        pulldown.add(shown_s, 0.0);
        shown_s += i % 2 == 0 ? 0.033 : 0.05;
        held.add(i * 0.04 + (i > 250 ? 0.4 : 0.0), i == 250 ? 0.44 : 0.04);  // which states that it stays
        late.add(i * 0.02 + (i % 2 == 0 ? 0.015 : 0.0), 0.02);
        again.add(i % 250 * 0.02, 0.02);  // a discontinuity backward
    }
    for (const GapSum& sum : {stall, pulldown, late, again, held}) {
        EXPECT_LT(sum.missing().share, 0.005);
    }
}

struct Heard : zel_monitor::LogListener {
    void onLogged(ComplaintReason reason, int64_t packet, double share) override {
        const std::lock_guard lock(mutex);
        reasons.push_back(reason);
        lowest = std::min(lowest, packet);
        highest = std::max(highest, packet);
        worst_concealed =
            reason == ComplaintReason::kConcealed ? std::max(worst_concealed, share) : worst_concealed;
    }
    std::mutex mutex;
    std::vector<ComplaintReason> reasons;
    int64_t lowest = 1'000'000;
    int64_t highest = -1;
    double worst_concealed = 0.0;
};

/// Reads and decodes a file as far as it goes. Gives what its demuxer complained of.
std::vector<ComplaintReason> play(const std::string& path, Heard& decoder) {
    std::vector<ComplaintReason> heard;
    AVFormatContext* opened = nullptr;
    zel_monitor::checked(avformat_open_input(&opened, path.c_str(), nullptr, nullptr));
    const zel_monitor::FormatHandle format(opened);
    zel_monitor::CodecHandle codec(
        avcodec_alloc_context3(avcodec_find_decoder(opened->streams[0]->codecpar->codec_id)));
    zel_monitor::checked(avcodec_parameters_to_context(codec.get(), opened->streams[0]->codecpar));
    codec->thread_count = 3;
    codec->reordered_opaque = 0;
    zel_monitor::listenTo(*codec, decoder);
    zel_monitor::checked(avcodec_open2(codec.get(), nullptr, nullptr));
    const zel_monitor::PacketHandle packet(av_packet_alloc());
    const zel_monitor::FrameHandle frame(av_frame_alloc());
    const zel_monitor::DemuxerLog log(heard);
    for (bool more = true; more;) {
        more = av_read_frame(opened, packet.get()) >= 0;
        ++codec->reordered_opaque;
        avcodec_send_packet(codec.get(), more ? packet.get() : nullptr);
        av_packet_unref(packet.get());
        while (avcodec_receive_frame(codec.get(), frame.get()) >= 0) {
        }
    }
    return heard;
}

TEST(LibraryLog, TellsWhatIsWrongAndWithWhichPacket) {
    const support::ScratchDir scratch;
    support::ffmpeg("-f lavfi -i testsrc2=s=320x240:d=2 -c:v libx264 -g 100 -bf 0 -slices 4",
                    scratch.file("clip.mkv"));
    {
        Heard decoder;
        EXPECT_TRUE(play(scratch.file("clip.mkv"), decoder).empty());
        EXPECT_TRUE(decoder.reasons.empty());
    }
    auto bytes = support::readFile(scratch.file("clip.mkv"));
    bytes[bytes.size() / 2] = static_cast<char>(~bytes[bytes.size() / 2]);
    support::writeFile(scratch.file("damaged.mkv"), bytes);
    Heard decoder;
    EXPECT_TRUE(play(scratch.file("damaged.mkv"), decoder).empty());
    EXPECT_THAT(decoder.reasons, testing::Contains(ComplaintReason::kDecodingError));
    EXPECT_GT(decoder.worst_concealed, 0.0);
    EXPECT_LT(decoder.worst_concealed, 1.0);
    EXPECT_GT(decoder.lowest, 5);
    EXPECT_EQ(decoder.lowest, decoder.highest);

    std::fill_n(bytes.begin() + static_cast<std::ptrdiff_t>(bytes.size() / 2), 3000, '\0');
    support::writeFile(scratch.file("zeroed.mkv"), bytes);
    EXPECT_THAT(play(scratch.file("zeroed.mkv"), decoder), testing::Contains(ComplaintReason::kContainer));
}

}  // namespace
