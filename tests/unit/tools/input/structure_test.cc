#include "input/container/structure.h"

#include <algorithm>
#include <cstring>
#include <functional>
#include <span>
#include <string>
#include <utility>
#include <vector>

#include <gtest/gtest.h>

#include "support/clip.h"
#include "support/random.h"

namespace {

using zel_monitor::StructureFaults;

constexpr const char* kMp4 = "mov,mp4,m4a,3gp,3g2,mj2";
const std::string kBoth = "-f lavfi -i testsrc2=s=64x48:d=2 -f lavfi -i sine=d=2 -c:v mpeg4 -c:a aac ";
const std::string kTone = "-f lavfi -i anoisesrc=d=2:a=0.3:seed=1 ";

using Bytes = std::vector<uint8_t>;

struct Clip {
    const char* format;
    Bytes bytes;
};

Clip made(const char* format, const std::string& arguments, const std::string& name) {
    const support::ScratchDir scratch;
    support::ffmpeg(arguments, scratch.file(name));
    const auto chars = support::readFile(scratch.file(name));
    return {format, Bytes(chars.begin(), chars.end())};
}

const Clip& mp4() {
    static const Clip clip = made(kMp4, kBoth + "-movflags faststart", "clip.mp4");
    return clip;
}
const Clip& fragments() {
    static const Clip clip = made(kMp4, kBoth + "-movflags frag_keyframe+empty_moov -g 10", "clip.mp4");
    return clip;
}
const Clip& ogg() {
    static const Clip clip = made("ogg", kTone + "-c:a libvorbis -page_duration 100000", "clip.ogg");
    return clip;
}
const Clip& mp3() {
    static const Clip clip = made("mp3", kTone + "-c:a libmp3lame -metadata title=TAG", "clip.mp3");
    return clip;
}
const Clip& aac() {
    static const Clip clip = made("aac", kTone + "-c:a aac", "clip.aac");
    return clip;
}

StructureFaults faultsOf(const char* format, const Bytes& bytes) {
    return zel_monitor::faultsOfStructure(format, zel_monitor::readerOf(std::span(bytes)),
                                          static_cast<int64_t>(bytes.size()));
}

StructureFaults faultsOf(Clip clip, const std::function<void(Bytes&)>& change) {
    change(clip.bytes);
    return faultsOf(clip.format, clip.bytes);
}

/// Where the nth occurrence of a text begins.
size_t placeOf(const Bytes& bytes, const std::string& text, int nth = 0) {
    auto it = bytes.begin();
    for (;; ++it) {
        it = std::search(it, bytes.end(), text.begin(), text.end());
        if (it == bytes.end()) {
            ADD_FAILURE() << text;
            return 0;
        }
        if (nth-- == 0) {
            return static_cast<size_t>(it - bytes.begin());
        }
    }
}

void drop(Bytes& bytes, size_t from, size_t to) {
    bytes.erase(bytes.begin() + static_cast<std::ptrdiff_t>(from),
                bytes.begin() + static_cast<std::ptrdiff_t>(to));
}

TEST(Structure, FindsNothingWrongWithIntactFiles) {
    for (const Clip& clip :
         {mp4(), fragments(), ogg(), mp3(), aac(), made(kMp4, kBoth, "late-index.mp4"),
          made(kMp4, kTone + "-c:a pcm_s16le", "sound.mov"),
          made("mp3", kTone + "-write_xing 0 -id3v2_version 0 -b:a 32k -ar 16000", "bare.mp3"),
          made("ogg", kBoth + "-c:v libtheora -c:a libvorbis", "both.ogv")}) {
        EXPECT_FALSE(faultsOf(clip.format, clip.bytes).any()) << clip.format;
    }
    EXPECT_FALSE(faultsOf("avi", Bytes(1000)).any());  // not looked at
}

TEST(Structure, TellsThatAFileIsCutOff) {
    const auto cut = [](Bytes& bytes) { bytes.resize(bytes.size() * 4 / 5 + 1); };
    for (const Clip& clip : {mp4(), fragments(), ogg(), mp3(), aac()}) {
        EXPECT_TRUE(faultsOf(clip, cut).ends_early) << clip.format;
    }
    EXPECT_TRUE(faultsOf(mp4(), [](Bytes& bytes) { bytes.pop_back(); }).ends_early)
        << "one byte of the last sample";
    // The last page of an Ogg says that it is the last, and the first frame of an MP3 how many follow.
    EXPECT_TRUE(faultsOf(ogg(), [](Bytes& bytes) { bytes.resize(placeOf(bytes, "OggS", 10)); }).ends_early);
    EXPECT_TRUE(faultsOf(mp3(), [](Bytes& bytes) { drop(bytes, 5000, 5000 + 418 * 4); }).any());
}

TEST(Structure, FindsStretchesThatBelongToNothing) {
    for (const Clip& clip : {ogg(), mp3(), aac()}) {
        const auto faults =
            faultsOf(clip, [](Bytes& bytes) { std::fill_n(bytes.begin() + 6000, 2000, uint8_t{0}); });
        ASSERT_FALSE(faults.stretches.empty()) << clip.format;
        EXPECT_NEAR(6000.0, static_cast<double>(faults.stretches.front().place), 4500.0) << clip.format;
        EXPECT_GE(faults.bad_bytes, 1500) << clip.format;
        EXPECT_LT(faults.bad_bytes, 12'000) << clip.format;
        EXPECT_FALSE(faults.ends_early) << clip.format;
    }
    const auto lost_fragment =
        faultsOf(fragments(), [](Bytes& bytes) { bytes[placeOf(bytes, "moof", 2) + 3] = 'x'; });
    ASSERT_EQ(1U, lost_fragment.stretches.size());
    const Bytes& whole = fragments().bytes;
    const size_t media = placeOf(whole, "mdat", 2) + 4;
    EXPECT_EQ(static_cast<int64_t>(media), lost_fragment.stretches.front().place);
    EXPECT_EQ(static_cast<int64_t>(placeOf(whole, "moof", 3) - 4 - media), lost_fragment.bad_bytes);

    const auto junk = faultsOf(fragments(), [](Bytes& bytes) { bytes[placeOf(bytes, "mdat", 1) - 1] = 1; });
    EXPECT_FALSE(junk.stretches.empty());
}

TEST(Structure, MissesAPageAndACheckedByteOfAnOgg) {
    const auto dropped = faultsOf(
        ogg(), [](Bytes& bytes) { drop(bytes, placeOf(bytes, "OggS", 5), placeOf(bytes, "OggS", 6)); });
    ASSERT_EQ(1U, dropped.stretches.size());
    EXPECT_EQ(0, dropped.bad_bytes);
    EXPECT_EQ(1U, faultsOf(ogg(), [](Bytes& bytes) {
                      bytes[placeOf(bytes, "OggS", 5) + 100] ^= 1;
                  }).stretches.size());
}

TEST(Structure, TellsOfAnIndexWithATrackThatCannotBeRead) {
    for (const char* box : {"trak", "mdia", "hdlr", "stbl", "stsz", "stco", "soun"}) {
        const int last = std::strcmp(box, "soun") == 0 ? 0 : 1;
        const auto faults = faultsOf(mp4(), [&](Bytes& bytes) { bytes[placeOf(bytes, box, last) + 1] ^= 4; });
        EXPECT_TRUE(faults.unreadable_track) << box;
    }
}

/// Counts what is read, and sees that it stays in proportion.
void looksThrough(const char* format, const Bytes& bytes) {
    const auto plain = zel_monitor::readerOf(std::span(bytes));
    uint64_t read_bytes = 0;
    zel_monitor::faultsOfStructure(
        format,
        [&](int64_t place, std::span<uint8_t> into) {
            const size_t read = plain(place, into);
            read_bytes += read;
            return read;
        },
        static_cast<int64_t>(bytes.size()));
    EXPECT_LE(read_bytes, 100 * bytes.size() + (uint64_t{2} << 20)) << format;
}

TEST(Structure, SurvivesWhateverTheBytesSay) {
    support::Random random(7);
    const auto anywhere = [&](const Bytes& bytes) { return random.next() % bytes.size(); };
    for (const Clip& clip : {mp4(), fragments(), ogg(), mp3(), aac()}) {
        for (int round = 0; round < 60; ++round) {
            Bytes bytes = clip.bytes;
            for (int i = 0; i < 20; ++i) {  // sizes and counts turn large and small
                bytes[anywhere(bytes)] = random.next() % 2 == 0 ? 0xff : random.byte();
            }
            const size_t index = clip.format == kMp4 ? placeOf(clip.bytes, "moov") : 0;
            for (int i = 0; i < 4; ++i) {
                bytes[std::min(index + random.next() % 1500, bytes.size() - 1)] = random.byte();
            }
            if (round % 3 == 0) {
                bytes.erase(bytes.begin() + static_cast<ptrdiff_t>(anywhere(bytes)), bytes.end());
            }
            looksThrough(clip.format, bytes);
        }
    }
    using namespace std::string_literals;
    for (const std::string& piece :
         {"mdat"s, "OggS"s, std::string("\0\0\0\10mdatxxxxxxxx", 16),
          std::string("OggS\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\0\377", 27)}) {
        Bytes bytes;
        while (bytes.size() < (size_t{2} << 20)) {
            bytes.insert(bytes.end(), piece.begin(), piece.end());
        }
        for (const char* format : {kMp4, "ogg", "mp3"}) {
            zel_monitor::faultsOfStructure(format, zel_monitor::readerOf(std::span(std::as_const(bytes))),
                                           static_cast<int64_t>(bytes.size()));
        }
    }
}

}  // namespace
