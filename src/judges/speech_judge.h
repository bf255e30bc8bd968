#ifndef ZEL_SRC_JUDGES_SPEECH_JUDGE_H_
#define ZEL_SRC_JUDGES_SPEECH_JUDGE_H_

#include <span>
#include <vector>

#include "judges/stretch.h"

namespace ZELJudges {

/// What a voice detector says of some 10 ms.
struct VoiceChunk {
    double start_s;
    double end_s;
    bool voiced;
    float level;  ///< mean absolute sample value, 0 to 32768
};

/// Tells where nobody speaks, and where somebody speaks too low or too loud. Speech has voiced stretches of
/// 120 ms and more; drums sound voiced, but not for so long. Its level is that of its voiced part alone, over
/// the last seconds of it, and holds on through pauses.
///
/// Settled within half a second. One thread at a time.
class SpeechJudge {
  public:
    /// Levels up to `low` are too low, and from `high` on too loud.
    explicit SpeechJudge(float low = 500.0F, float high = 20000.0F) : low_(low), high_(high) {}

    /// What a call has settled; valid until the next one.
    struct Settled {
        /// Value: length of the voiced stretch there is, in seconds; limit: the least that speech has.
        std::span<const Stretch> no_voice;
        std::span<const Stretch> low_voice;   ///< value: level of the speech, 0 if none is known
        std::span<const Stretch> high_voice;  ///< the same
    };

    /// The next chunk.
    Settled feed(const VoiceChunk& chunk);

    /// The end of the stream: settles the rest and begins anew.
    Settled finish();

  private:
    void endRun();
    void tell();
    Settled settled() const {
        return {.no_voice = no_voice_, .low_voice = low_voice_, .high_voice = high_voice_};
    }

    float low_;
    float high_;
    // Chunks in a row that are all voiced, or all not.
    bool running_ = false;
    bool voiced_ = false;
    double start_s_ = 0.0;
    double end_s_ = 0.0;
    double told_s_ = 0.0;     // settled up to here
    double level_sum_ = 0.0;  // of what is not settled, level times seconds
    // Of the speech heard last.
    double speech_end_s_ = 0.0;
    double level_ = 0.0;
    double heard_s_ = 0.0;  // how much went into the level; 0 if that is not known
    std::vector<Stretch> no_voice_;
    std::vector<Stretch> low_voice_;
    std::vector<Stretch> high_voice_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_SPEECH_JUDGE_H_
