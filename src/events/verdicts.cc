#include "events/verdicts.h"

namespace ZEL {
namespace {

constexpr uint32_t kBlackScreen = 1;
constexpr uint32_t kGreenScreen = 2;
constexpr uint32_t kUnder = 1;
constexpr uint32_t kOver = 2;

Sight sight(bool present) {
    return present ? Sight::kPresent : Sight::kAbsent;
}

PerEventKind<Sight> nothingKnown() {
    PerEventKind<Sight> sights;
    sights.fill(Sight::kUnknown);
    return sights;
}

}  // namespace

PerEventKind<Sight> sightsOf(const ZELAlgo::ZELVideoResult& result) {
    PerEventKind<Sight> sights = nothingKnown();
    sights[indexOf(EventKind::kBlack)] = sight(result.screen_type == kBlackScreen);
    sights[indexOf(EventKind::kGreen)] = sight(result.screen_type == kGreenScreen);
    sights[indexOf(EventKind::kBlock)] = sight(result.is_block);
    if (result.screen_type == 0) {
        sights[indexOf(EventKind::kFreeze)] = sight(result.is_staticframe);
        sights[indexOf(EventKind::kUnderexposed)] = sight(result.exposure_type == kUnder);
        sights[indexOf(EventKind::kOverexposed)] = sight(result.exposure_type == kOver);
    }
    return sights;
}

PerEventKind<Sight> sightsOf(const ZELAlgo::ZELAudioResult& result) {
    PerEventKind<Sight> sights = nothingKnown();
    sights[indexOf(EventKind::kMute)] = sight(result.is_mute != 0);
    if (result.is_mute == 0) {
        sights[indexOf(EventKind::kNoVoice)] = sight(result.is_novoice_longtime != 0);
        if (result.is_novoice_longtime == 0) {
            sights[indexOf(EventKind::kLowVoice)] = sight(result.is_low_voicelevel != 0);
            sights[indexOf(EventKind::kHighVoice)] = sight(result.is_high_voicelevel != 0);
        }
    }
    return sights;
}

}  // namespace ZEL
