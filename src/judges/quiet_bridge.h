#ifndef ZEL_SRC_JUDGES_QUIET_BRIDGE_H_
#define ZEL_SRC_JUDGES_QUIET_BRIDGE_H_

#include <span>
#include <vector>

#include "judges/sound_meter.h"
#include "judges/stretch.h"

namespace ZELJudges {

/// Carries the verdicts of a judge of two channels over chunks that are too quiet to be judged: they are like
/// the chunks around them if those agree and the pause is short, else without the fault.
class QuietBridge {
  public:
    /// Loud enough to be judged: -50 dB of full scale, as a mean square.
    static constexpr double kQuiet = 1e-5;

    void clearSettled() { settled_.clear(); }
    void addQuiet(const SoundChunk& chunk);
    void add(const SoundChunk& chunk, bool present, float value, float limit);
    void end();
    std::span<const Stretch> settled() const { return settled_; }

  private:
    void settlePause(bool present);

    double pause_end_s_ = 0.0;  // where the pause after the last verdict has come to
    Stretch last_{};
    std::vector<Stretch> settled_;
};

}  // namespace ZELJudges

#endif  // ZEL_SRC_JUDGES_QUIET_BRIDGE_H_
