#include "input/completeness.h"

#include <algorithm>
#include <string_view>
#include <utility>
#include <vector>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "input/media_source.h"
#include "unit/tools/input/clips.h"

namespace {

using clips::kSmallVideo;
using clips::kTone;
using support::ffmpeg;
using testing::HasSubstr;
using zel_monitor::Incomplete;
using zel_monitor::MediaSource;
using zel_monitor::Shortfall;

class CompletenessTest : public testing::Test {
  protected:
    std::string file(const std::string& name) const { return scratch_.file(name); }

    /// What is missing of a file that is read to its end.
    std::optional<Shortfall> shortfallOf(const std::string& name) const {
        MediaSource source(file(name));
        while (source.next()) {
        }
        return source.shortfall();
    }
    std::optional<Incomplete> kindOf(const std::string& name) const {
        const auto shortfall = shortfallOf(name);
        return shortfall ? std::optional(shortfall->kind) : std::nullopt;
    }
    void cut(const std::string& name, size_t percent) const {
        auto bytes = support::readFile(file(name));
        bytes.resize(bytes.size() * percent / 100 + 1);
        support::writeFile(file(name), bytes);
    }

  private:
    const support::ScratchDir scratch_;
};

TEST_F(CompletenessTest, TellsAnInputThatIsCutOff) {
    for (const auto& [name, arguments] : {
             std::pair("a.avi", kSmallVideo + kTone + "-c:v mpeg4 -c:a mp2"),
             std::pair("a.wav", kTone),
             std::pair("a.w64", kTone),
             std::pair("a.caf", kTone),
             std::pair("a.wma", kTone),
             std::pair("a.aiff", kTone),
             std::pair("a.flv", kSmallVideo + kTone + "-c:v flv1 -c:a libmp3lame"),
             std::pair("a.mkv", kSmallVideo + kTone + "-c:v mpeg4 -c:a mp2"),
             std::pair("a.ogg", kTone + "-c:a libvorbis"),
             std::pair("a.mp3", kTone),
             std::pair("a.mp4", kSmallVideo + "-c:v mpeg4 -g 10 -movflags frag_keyframe+empty_moov"),
         }) {
        ffmpeg(arguments, file(name));
        EXPECT_EQ(kindOf(name), std::nullopt) << name;
        cut(name, 95);
        EXPECT_EQ(kindOf(name), Incomplete::kCutOff) << name;
    }
    for (const std::string format : {"wav", "caf", "asf"}) {
        ffmpeg(kTone + "-f " + format + " pipe: >", file("piped." + format));
        EXPECT_EQ(kindOf("piped." + format), std::nullopt) << "a length that was never known is not missed";
    }
    ffmpeg(kSmallVideo + "-c:v mpeg4 -movflags +faststart", file("b.mp4"));
    cut("b.mp4", 40);
    EXPECT_EQ(kindOf("b.mp4"), Incomplete::kEndsEarly);
    EXPECT_THAT(shortfallOf("b.mp4")->detail, HasSubstr("s before its declared end"));
}

TEST_F(CompletenessTest, TellsWhatItCouldNotFollow) {
    clips::broadcast("-c:v mpeg2video -c:a mp2", 0x100, file("a.ts"));
    clips::broadcast("-c:v libx264 -c:a aac", 0x100, file("b.ts"));
    clips::join(file("a.ts"), file("b.ts"), file("recoded.ts"));
    EXPECT_EQ(kindOf("recoded.ts"), Incomplete::kUnreadableEnd);

    // One stream only: the other one is the same in both parts.
    clips::broadcast("-c:v libx264 -c:a mp2", 0x100, file("c.ts"));
    clips::join(file("b.ts"), file("c.ts"), file("recoded.ts"));
    EXPECT_EQ(kindOf("recoded.ts"), Incomplete::kUnreadableEnd);
    EXPECT_THAT(shortfallOf("recoded.ts")->detail, HasSubstr("sound"));
    clips::join(file("c.ts"), file("c.ts"), file("again.ts"));
    EXPECT_EQ(kindOf("again.ts"), std::nullopt);

    ffmpeg("-f lavfi -i testsrc2=s=160x90:r=25:d=12 " + kTone +
               "-filter_complex [1:a]asetpts=PTS+10/TB -map 0 -c:v mpeg2video -c:a mp2",
           file("late.ts"));
    EXPECT_EQ(kindOf("late.ts"), Incomplete::kMissedStream);
    EXPECT_THAT(shortfallOf("late.ts")->detail, HasSubstr("sound"));

    ffmpeg(kSmallVideo + kTone + "-c:v libx264 -preset ultrafast -bsf:v noise=amount=1 -c:a aac",
           file("noise.mkv"));
    EXPECT_EQ(kindOf("noise.mkv"), Incomplete::kNothingDecoded);
    EXPECT_EQ(shortfallOf("noise.mkv")->detail, "none of its frames could be decoded");
}

TEST_F(CompletenessTest, TellsAStreamThatIsListedButCannotBeUsed) {
    ffmpeg(kSmallVideo + kTone + "-c:v mpeg4 -c:a aac -movflags +faststart", file("whole.mp4"));
    const auto whole = support::readFile(file("whole.mp4"));
    const auto changed = [&](std::string_view text, size_t skipped, char change) {
        auto bytes = whole;
        const auto found = std::search(bytes.begin(), bytes.end(), text.begin(), text.end());
        *(found + static_cast<std::ptrdiff_t>(skipped)) ^= change;
        support::writeFile(file("changed.mp4"), bytes);
        return shortfallOf("changed.mp4");
    };
    for (const char* box : {"trak", "mdia", "soun"}) {
        const auto shortfall = changed(box, 1, 4);
        EXPECT_EQ(shortfall ? std::optional(shortfall->kind) : std::nullopt, Incomplete::kUnusableStream)
            << box;
    }
    const auto no_channels = changed("\x05\x80\x80\x80\x05", 6, 0x08);  // in the decoder's configuration
    ASSERT_TRUE(no_channels.has_value());
    EXPECT_EQ(no_channels->detail, "its sound cannot be decoded: it states no channels");
    MediaSource pictures(file("changed.mp4"), {.audio = false});
    while (pictures.next()) {
    }
    EXPECT_EQ(pictures.shortfall().has_value(), false) << "nobody asked for the sound";
}

TEST_F(CompletenessTest, TellsATrackThatIsEncrypted) {
    ffmpeg(kSmallVideo + kTone + "-c:v mpeg2video -c:a mp2", file("a.ts"));
    for (const auto& [pid, detail] :
         {std::pair(0x100, "its frames are encrypted"), std::pair(0x101, "its sound is encrypted")}) {
        clips::scramble(file("a.ts"), {pid}, file("scrambled.ts"));
        const auto shortfall = shortfallOf("scrambled.ts");
        ASSERT_TRUE(shortfall.has_value()) << pid;
        EXPECT_EQ(shortfall->kind, Incomplete::kEncrypted);
        EXPECT_EQ(shortfall->detail, detail);
    }
}

TEST_F(CompletenessTest, TellsAnInputThatWasStopped) {
    ffmpeg(kTone, file("a.wav"));
    std::atomic<bool> interrupted = false;
    MediaSource source(file("a.wav"), {.interrupted = &interrupted});
    interrupted = true;
    EXPECT_EQ(source.next().has_value(), false);
    EXPECT_EQ(source.shortfall()->kind, Incomplete::kStopped);
}

}  // namespace
