#include <zel/session/session.h>

#include <algorithm>
#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

#include <gtest/gtest.h>

#include "support/random.h"
#include "support/rendered_sound.h"
#include "support/sound.h"
#include "support/wait.h"

// Real sounds through a whole session, judged by its heartbeat reports. A counter is one less than its
// events: "0" means one period, a missing key none.

namespace {

using Counters = std::map<std::string, std::string>;
using Sound = std::vector<int16_t>;

constexpr int kRate = 48'000;

Sound seconds(const Sound& sound, double from, double to) {
    return {sound.begin() + static_cast<std::ptrdiff_t>(from * kRate),
            sound.begin() + static_cast<std::ptrdiff_t>(to * kRate)};
}

Sound silence(double length) {
    return Sound(static_cast<size_t>(length * kRate), 0);
}

/// 20 s of it are two periods.
Sound render(const std::string& source, double length = 20) {
    return support::renderSound(source, kRate, length);
}

const Sound& speech() {
    static const Sound sound = support::scaled(
        render(
            "flite=voice=slt:text='The ferry leaves the harbour at seven in the morning. It carries "
            "newspapers, bread and a few sleepy children to the island. By nine the fog has lifted, and the "
            "captain drinks his second cup of coffee. Nobody hurries, because the next ferry goes only in "
            "the "
            "evening. On Sundays there is music on the upper deck, and the gulls follow the boat all the way "
            "out to the lighthouse. In winter the windows are covered with ice and the crew tells old "
            "stories. Some of them are even true, or so the cook says'"),
        0.5);
    return sound;
}

/// The sound of a quiet room, the same for the whole test run.
Sound pinkNoise(double length = 20) {
    return render("anoisesrc=r=48000:color=pink:seed=5:a=0.2", length);
}

Sound inQuietRoom(Sound sound) {
    const Sound room = support::scaled(pinkNoise(), 10.0 / support::rootMeanSquare(pinkNoise()));
    for (size_t i = 0; i < sound.size(); ++i) {
        sound[i] = static_cast<int16_t>(std::clamp(sound[i] + room[i], -32768, 32767));
    }
    return sound;
}

Sound joined(const std::vector<Sound>& pieces) {
    Sound all;
    for (const Sound& piece : pieces) {
        all.insert(all.end(), piece.begin(), piece.end());
    }
    return all;
}

class AudioSession : public testing::Test {
  protected:
    AudioSession() { session_->start(); }
    ~AudioSession() override {
        session_->stop();
        center_->stop();
    }

    /// Plays interleaved sound in frames of `frame_size` samples per channel and returns when all of it has
    /// been examined.
    void play(const Sound& sound, size_t frame_size = 480, int32_t channels = 1,
              int32_t sample_rate = kRate) {
        constexpr int kBatch = 40;  // below the bound of the queue, so that no frame is dropped
        const size_t step = frame_size * static_cast<size_t>(channels);
        for (size_t first = 0; first + step <= sound.size(); first += step) {
            auto data = std::make_unique<int16_t[]>(step);
            std::copy_n(sound.begin() + static_cast<std::ptrdiff_t>(first), step, data.get());
            const std::shared_ptr<ZEL::AudioFrame> frame(
                new ZEL::AudioFrame(0, std::move(data), static_cast<uint32_t>(frame_size), sample_rate,
                                    channels),
                [this](ZEL::AudioFrame* done) {
                    delete done;
                    examined_.add();
                });
            ASSERT_TRUE(session_->feedAudioFrame(frame, fed_));
            ++fed_;
            if (fed_ % kBatch == 0) {
                ASSERT_TRUE(examined_.waitFor(fed_ - 1));  // `frame` itself still lives here
            }
        }
        ASSERT_TRUE(examined_.waitFor(fed_));
    }

    std::string heartbeat(const std::string& key) {
        report_.clear();
        session_->getHeartbeatInfo(report_);
        return report_[key];
    }

    /// The audio counters that the next heartbeat carries, without their prefix.
    Counters counters() {
        heartbeat("");
        Counters present;
        for (const char* const name : {"mute_cnt", "low_voice_cnt", "high_voice_cnt", "no_voice_cnt"}) {
            if (const auto entry = report_.find(std::string("zel_") + name); entry != report_.end()) {
                present[name] = entry->second;
            }
        }
        return present;
    }

    std::shared_ptr<ZEL::MessageCenter> center_ = std::make_shared<ZEL::MessageCenter>();
    std::shared_ptr<ZEL::ZELSession> session_ = std::make_shared<ZEL::ZELSession>(center_);
    support::Count examined_;
    int fed_ = 0;
    ReportMap report_;
};

TEST_F(AudioSession, FindsDigitalSilenceMuteLowAndWithoutVoice) {
    play(silence(20));
    EXPECT_EQ(counters(), (Counters{{"mute_cnt", "1"}, {"low_voice_cnt", "1"}, {"no_voice_cnt", "1"}}));
    EXPECT_EQ(report_["zel_audio_level"], "0");
}

TEST_F(AudioSession, FindsAVeryQuietToneLowAndAfterTheStartWithoutVoice) {
    play(render("aevalsrc='0.001*sin(2*PI*1000*t)':s=48000"));  // -60 dB of full scale
    EXPECT_EQ(counters(), (Counters{{"low_voice_cnt", "1"}, {"no_voice_cnt", "0"}}));
    EXPECT_NEAR(std::stod(report_["zel_audio_level"]), 0.001 * 32768 * 2 / 3.14159, 1.0);
}

TEST_F(AudioSession, FindsClippingMusicTooLoud) {
    play(
        render("aevalsrc='12*(sin(2*PI*110*t)+sin(2*PI*277*t)+sin(2*PI*330*t))*lt(mod(t,1),0.8)"
               "+0.001*random(0)':s=48000"));
    EXPECT_EQ(counters(), (Counters{{"high_voice_cnt", "1"}}));
    EXPECT_GT(std::stoi(report_["zel_audio_level"]), 20'000);
}

TEST_F(AudioSession, FindsNothingWrongWithSpeech) {
    play(inQuietRoom(speech()));
    EXPECT_EQ(counters(), Counters{});
    EXPECT_GT(std::stoi(report_["zel_voice_level_longtime"]), 500);
}

TEST_F(AudioSession, MissesAGapInSpeechUnlessItFillsAPeriod) {
    // Voice from 0 to 3 s and from 17 s on: some in both periods.
    play(inQuietRoom(joined({seconds(speech(), 0, 3), silence(14), seconds(speech(), 3, 6)})));
    EXPECT_EQ(counters(), Counters{});
}

TEST_F(AudioSession, FindsAGapInSpeechThatFillsAPeriod) {
    // Voice from 0 to 8 s and from 22 s on: none in the period from 10 to 20 s.
    const Sound with_gap = joined({seconds(speech(), 0, 8), silence(12)});
    play(inQuietRoom(with_gap));
    EXPECT_EQ(counters(), (Counters{{"low_voice_cnt", "0"}, {"no_voice_cnt", "0"}}));
    play(inQuietRoom(joined({silence(2), seconds(speech(), 8, 16)})));
    EXPECT_EQ(counters(), (Counters{{"low_voice_cnt", "0"}, {"no_voice_cnt", "0"}}));
}

TEST_F(AudioSession, HearsSpeechWellAboveNoise) {
    play(support::withNoise(speech(), pinkNoise(), 20));
    EXPECT_EQ(counters(), Counters{});
}

TEST_F(AudioSession, LosesSpeechInEquallyLoudNoiseAfterTheStart) {
    play(support::withNoise(speech(), pinkNoise(), 0));
    EXPECT_EQ(counters(), (Counters{{"low_voice_cnt", "0"}, {"no_voice_cnt", "0"}}));
}

TEST_F(AudioSession, HearsNoVoiceInNoiseAfterTheStart) {
    play(pinkNoise());
    EXPECT_EQ(counters(), (Counters{{"low_voice_cnt", "0"}, {"no_voice_cnt", "0"}}));
}

TEST_F(AudioSession, MixesChannelsDownBeforeItListens) {
    const auto interleaved = [](const Sound& left, int right_gain) {
        Sound both;
        for (const int16_t sample : left) {
            both.push_back(sample);
            both.push_back(static_cast<int16_t>(right_gain * sample));
        }
        return both;
    };
    const Sound ten_seconds = seconds(speech(), 0, 10);
    play(interleaved(ten_seconds, -1), 480, 2);  // opposite phases cancel out
    EXPECT_EQ(heartbeat("zel_audio_level"), "0");
    play(interleaved(ten_seconds, 1), 480, 2);
    const std::string level = heartbeat("zel_audio_level");
    play(ten_seconds);
    EXPECT_EQ(heartbeat("zel_audio_level"), level);
}

TEST_F(AudioSession, TakesAnyRateFrameLengthAndChannelCount) {
    support::Random random(1);
    for (const int32_t sample_rate : {1, 99, 8000, 192'000, INT32_MAX}) {
        session_->stop();
        session_->start();  // with fresh detectors, which take their rate from the first frame
        for (int32_t channels = 1; channels <= 8; ++channels) {
            for (const size_t frame : {1U, 441U, 23'999U, 65'536U}) {
                play(support::hiss(random, INT16_MAX, 2 * frame * static_cast<size_t>(channels)), frame,
                     channels, sample_rate);
            }
        }
    }
    EXPECT_EQ(heartbeat("zel_aframes"), std::to_string(fed_));
}

}  // namespace
