#include "judges/speech_judge.h"

#include <algorithm>
#include <cmath>

namespace ZELJudges {
namespace {

constexpr double kSlackS = 1e-6;
constexpr double kShortestSpeechS = 0.12;
constexpr double kToldAfterS = 0.25;    // of silence or of speech that goes on
constexpr double kMemoryS = 0.25;       // of speech that makes its level
constexpr double kLongestPauseS = 2.0;  // for which its level holds on

}  // namespace

SpeechJudge::Settled SpeechJudge::feed(const VoiceChunk& chunk) {
    no_voice_.clear();
    low_voice_.clear();
    high_voice_.clear();
    if (running_ && (voiced_ != chunk.voiced || std::abs(chunk.start_s - end_s_) > kSlackS)) {
        endRun();
    }
    if (!running_) {
        running_ = true;
        voiced_ = chunk.voiced;
        start_s_ = told_s_ = chunk.start_s;
    }
    end_s_ = chunk.end_s;
    level_sum_ += chunk.level * (chunk.end_s - chunk.start_s);
    const bool may_be_noise = voiced_ && end_s_ - start_s_ < kShortestSpeechS - kSlackS;
    if (!may_be_noise && end_s_ - told_s_ >= kToldAfterS) {
        tell();
    }
    return settled();
}

SpeechJudge::Settled SpeechJudge::finish() {
    no_voice_.clear();
    low_voice_.clear();
    high_voice_.clear();
    endRun();
    heard_s_ = 0.0;
    return settled();
}

void SpeechJudge::endRun() {
    if (running_) {
        tell();
    }
    running_ = false;
}

void SpeechJudge::tell() {
    const double voiced_s = voiced_ ? end_s_ - start_s_ : 0.0;
    const bool is_speech = voiced_s >= kShortestSpeechS - kSlackS;
    if (is_speech) {
        const double new_s = end_s_ - told_s_;
        level_ = (level_ * heard_s_ + level_sum_) / (heard_s_ + new_s);
        heard_s_ = std::min(heard_s_ + new_s, kMemoryS);
        speech_end_s_ = end_s_;
    } else if (end_s_ - speech_end_s_ > kLongestPauseS) {
        heard_s_ = 0.0;
    }
    const bool is_known = heard_s_ > 0.0;
    const auto level = static_cast<float>(is_known ? level_ : 0.0);
    no_voice_.push_back(
        {told_s_, end_s_, !is_speech, static_cast<float>(voiced_s), static_cast<float>(kShortestSpeechS)});
    low_voice_.push_back({told_s_, end_s_, is_known && level <= low_, level, low_});
    high_voice_.push_back({told_s_, end_s_, is_known && level >= high_, level, high_});
    told_s_ = end_s_;
    level_sum_ = 0.0;
}

}  // namespace ZELJudges
