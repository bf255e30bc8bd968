#include "events/verdicts.h"

namespace ZEL {
namespace {

Sight sight(bool present) {
    return present ? Sight::kPresent : Sight::kAbsent;
}

/// What another verdict hides is not known.
Sight sight(bool present, bool hidden) {
    return hidden ? Sight::kUnknown : sight(present);
}

}  // namespace

Sights frameSights(const ZELAlgo::ZELVideoResult& result) {
    const bool blank = result.screen_type != ZELAlgo::kScreenNormal;
    Sights sights;
    sights[indexOf(EventKind::kBlack)] = sight(result.screen_type == ZELAlgo::kScreenBlack);
    sights[indexOf(EventKind::kGreen)] = sight(result.screen_type == ZELAlgo::kScreenGreen);
    sights[indexOf(EventKind::kBlock)] = sight(result.is_block);
    sights[indexOf(EventKind::kFreeze)] = sight(result.is_staticframe, blank);
    sights[indexOf(EventKind::kUnderexposed)] = sight(result.exposure_type == ZELAlgo::kExposureUnder, blank);
    sights[indexOf(EventKind::kOverexposed)] = sight(result.exposure_type == ZELAlgo::kExposureOver, blank);
    return sights;
}

Sights silenceSights(const ZELAlgo::ZELAudioResult& result) {
    Sights sights;
    sights[indexOf(EventKind::kMute)] = sight(result.is_mute != 0);
    return sights;
}

Sights voiceSights(const ZELAlgo::ZELAudioResult& result) {
    const bool mute = result.is_mute != 0;
    const bool no_voice = result.is_novoice_longtime != 0;
    Sights sights;
    sights[indexOf(EventKind::kLowVoice)] = sight(result.is_low_voicelevel != 0, mute || no_voice);
    sights[indexOf(EventKind::kHighVoice)] = sight(result.is_high_voicelevel != 0, mute || no_voice);
    sights[indexOf(EventKind::kNoVoice)] = sight(no_voice, mute);
    return sights;
}

}  // namespace ZEL
