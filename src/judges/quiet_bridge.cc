#include "judges/quiet_bridge.h"

namespace ZELJudges {
namespace {

constexpr double kLongestPauseS = 2.0;

}  // namespace

void QuietBridge::addQuiet(const SoundChunk& chunk) {
    if (last_.present && chunk.end_s - last_.end_s <= kLongestPauseS) {
        pause_end_s_ = chunk.end_s;
        return;
    }
    settlePause(false);
    settled_.push_back({chunk.start_s, chunk.end_s, false, 0.0F, last_.limit});
    last_ = settled_.back();
}

void QuietBridge::add(const SoundChunk& chunk, bool present, float value, float limit) {
    settlePause(present);
    settled_.push_back({chunk.start_s, chunk.end_s, present, value, limit});
    last_ = settled_.back();
}

void QuietBridge::settlePause(bool present) {
    if (last_.present && pause_end_s_ > last_.end_s) {
        settled_.push_back({last_.end_s, pause_end_s_, present, last_.value, last_.limit});
        last_ = settled_.back();
    }
}

void QuietBridge::end() {
    settlePause(false);
    last_ = {};
}

}  // namespace ZELJudges
