#ifndef ZEL_SRC_EVENTS_SOUND_SIGHTS_H_
#define ZEL_SRC_EVENTS_SOUND_SIGHTS_H_

#include <zel/algo/algo_types.h>
#include <zel/events/event.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include "algo/audio_meter.h"
#include "events/sighting.h"
#include "judges/sound_judges.h"
#include "judges/speech_judge.h"

namespace ZEL {

/// What was measured of one audio frame.
struct MeasuredAudio {
    uint32_t sample_rate = 0;
    uint32_t samples = 0;
    size_t channels = 0;
    std::vector<ZELAlgo::MeasuredChunk> chunks = {};  ///< of all channels together
    std::vector<ZELJudges::SoundPiece> pieces = {};   ///< of each channel

    double length() const { return static_cast<double>(samples) / sample_rate; }
};

/// What the sound of a stream shows of each kind: silence as the detector says, the rest as the judges do.
class SoundSights {
  public:
    SoundSights();

    /// The next audio frame. Returns what is settled by it, valid until the next call.
    const std::vector<Sighting>& audio(const MeasuredAudio& audio, double start_s);

    /// A period that is judged for silence.
    static Sighting silence(TimeSpan period, const ZELAlgo::ZELAudioResult& result);

    /// There is no more sound: the rest.
    const std::vector<Sighting>& finish();

  private:
    void take(const ZELJudges::SoundJudges::Settled& settled);
    void take(const ZELJudges::SpeechJudge::Settled& settled);

    ZELJudges::SoundJudges judges_;
    ZELJudges::SpeechJudge speech_;
    double heard_s_ = 0.0;  // end of the last voice chunk
    std::vector<Sighting> settled_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_EVENTS_SOUND_SIGHTS_H_
