#include "scan/verdicts.h"

namespace zel_monitor::scan {
namespace {

constexpr uint32_t kBlackScreen = 1;
constexpr uint32_t kGreenScreen = 2;
constexpr uint32_t kUnder = 1;
constexpr uint32_t kOver = 2;

Sight sight(bool present) {
    return present ? Sight::kPresent : Sight::kAbsent;
}

PerKind<Sight> nothingKnown() {
    PerKind<Sight> sights;
    sights.fill(Sight::kUnknown);
    return sights;
}

}  // namespace

PerKind<Sight> sightsOf(const ZELAlgo::ZELVideoResult& result) {
    PerKind<Sight> sights = nothingKnown();
    sights[indexOf(Kind::kBlack)] = sight(result.screen_type == kBlackScreen);
    sights[indexOf(Kind::kGreen)] = sight(result.screen_type == kGreenScreen);
    sights[indexOf(Kind::kBlock)] = sight(result.is_block);
    if (result.screen_type == 0) {
        sights[indexOf(Kind::kFreeze)] = sight(result.is_staticframe);
        sights[indexOf(Kind::kUnderexposed)] = sight(result.exposure_type == kUnder);
        sights[indexOf(Kind::kOverexposed)] = sight(result.exposure_type == kOver);
    }
    return sights;
}

PerKind<Sight> sightsOf(const ZELAlgo::ZELAudioResult& result) {
    PerKind<Sight> sights = nothingKnown();
    sights[indexOf(Kind::kMute)] = sight(result.is_mute != 0);
    if (result.is_mute == 0) {
        sights[indexOf(Kind::kNoVoice)] = sight(result.is_novoice_longtime != 0);
        if (result.is_novoice_longtime == 0) {
            sights[indexOf(Kind::kLowVoice)] = sight(result.is_low_voicelevel != 0);
            sights[indexOf(Kind::kHighVoice)] = sight(result.is_high_voicelevel != 0);
        }
    }
    return sights;
}

}  // namespace zel_monitor::scan
