#ifndef ZEL_ALGO_ALGO_TYPES_H_
#define ZEL_ALGO_ALGO_TYPES_H_

#include <cstddef>
#include <cstdint>

namespace ZELAlgo {

/// What the detectors look for and how strict they are. Flags, ratios and parameters are taken when a facade
/// sees its first video frame, the period when it sees its first audio frame, the audio thresholds at the end
/// of every period.
struct ZELAlgoConfig {
    bool enable_black_screen = true;
    bool enable_block = true;
    bool enable_exposure = true;
    bool enable_green_screen = true;
    bool enable_staticframe = true;
    float black_screen_ratio = 0.95F;   ///< share of dark samples that makes a black screen
    float green_screen_ratio = 0.95F;   ///< share of zero samples that makes a green screen
    float block_param = 20.0F;          ///< corner pairs that make a frame blocky; truncated
    float staticframe_param = 10.0F;    ///< like frames in a row that make a freeze; truncated
    float mute_level = 2.0F;            ///< mean absolute sample value up to which a period is mute
    float low_voice_level = 500.0F;     ///< voiced level up to which a period is too quiet
    float high_voice_level = 20000.0F;  ///< voiced level from which a period is too loud
    float novoice_scale = 0.01F;        ///< share of voiced chunks up to which a period has no voice
    double longtime_period_s = 10.0;    ///< length of an audio period, seconds
};

/// One I420 frame: width x height luma bytes without gaps, then the two chroma planes. `data` is borrowed
/// for the call.
struct ZELVideoFrame {
    uint32_t width;
    uint32_t height;
    uint32_t reserved;
    const uint8_t* data;
};

/// One I420 frame as a decoder keeps it: three planes (luma, then both of chroma, Cb first) with their rows
/// any distance apart. `data` is borrowed for the call.
struct ZELVideoPlanes {
    uint32_t width;   ///< of the luma, even
    uint32_t height;  ///< even
    const uint8_t* data[3];
    size_t stride[3];  ///< bytes from one row to the next, at least those of a row
};

/// The values of ZELVideoResult::screen_type.
inline constexpr uint32_t kScreenNormal = 0;
inline constexpr uint32_t kScreenBlack = 1;
inline constexpr uint32_t kScreenGreen = 2;

/// The values of ZELVideoResult::exposure_type.
inline constexpr uint32_t kExposureNormal = 0;
inline constexpr uint32_t kExposureUnder = 1;
inline constexpr uint32_t kExposureOver = 2;

struct ZELVideoResult {
    uint32_t status = 0;                       ///< not written
    uint32_t screen_type = kScreenNormal;      ///< kScreenNormal, kScreenBlack or kScreenGreen
    uint32_t exposure_type = kExposureNormal;  ///< that (as for every black or green screen), -Under or -Over
    bool is_block = false;
    bool is_staticframe = false;
};

/// One audio frame: signed 16-bit samples. `data` is borrowed for the call.
struct ZELAudioFrame {
    uint32_t sample_rate;  ///< Hz
    uint32_t samples;
    uint32_t channels;  ///< not read by AlgoFacade, for which `data` is one channel
    const int16_t* data;
};

/// The values of ZELAudioResult::status.
inline constexpr uint32_t kAudioNoResult = 0;  ///< there were no samples
inline constexpr uint32_t kAudioFilling = 1;   ///< the period is not over
inline constexpr uint32_t kAudioComplete = 2;

/// What is beside `status` is written only when that is kAudioComplete.
struct ZELAudioResult {
    uint32_t status = kAudioNoResult;   ///< kAudioNoResult, kAudioFilling or kAudioComplete
    float voice_scale_longtime = 0.0F;  ///< share of voiced chunks, 0 to 1
    uint32_t voice_level_longtime = 0;  ///< mean absolute sample value of the voiced chunks
    uint32_t audio_level = 0;           ///< mean absolute sample value of all chunks
    uint32_t is_mute = 0;               ///< 1 or 0, like the rest
    uint32_t is_low_voicelevel = 0;
    uint32_t is_high_voicelevel = 0;
    uint32_t is_novoice_longtime = 0;
};

}  // namespace ZELAlgo

#endif  // ZEL_ALGO_ALGO_TYPES_H_
