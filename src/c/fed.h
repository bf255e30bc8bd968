#ifndef ZEL_SRC_C_FED_H_
#define ZEL_SRC_C_FED_H_

#include <zel/algo/algo_types.h>
#include <zel/zel_c.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <optional>
#include <vector>

namespace ZELC {

/// The caller's frame as this version knows it. None, with the reason kept, for what cannot be a frame.
std::optional<zelc_frame> readFrame(const zelc_frame* frame);

/// Writes the frame's planes one behind the other without gaps: width * height * 3 / 2 bytes, Cb before Cr.
void pack(const zelc_frame& frame, uint8_t* packed);

/// A frame of the caller's as the library takes it.
struct FedFrame {
    ZELAlgo::ZELVideoPlanes planes;
    bool is_damaged;
};

/// Reads the caller's frames as the library takes them. Chroma in turn is taken apart into buffers of its
/// own.
class FrameReader {
  public:
    /// Valid until the next call. None, with the reason kept, for what cannot be a frame.
    std::optional<FedFrame> read(const zelc_frame* frame);

  private:
    std::vector<uint8_t> chroma_;  // of both planes
};

/// The same for audio.
std::optional<ZELAlgo::ZELAudioFrame> readAudio(const zelc_audio* audio);

/// Hands on `audio` in steps of 10 ms: of digital silence the detector hears one such step with each frame,
/// and more than half a second at once it does not take.
template <typename Take>
void inSteps(const ZELAlgo::ZELAudioFrame& audio, Take take) {
    const uint32_t step = std::max(audio.sample_rate / 100, uint32_t{1});
    for (uint32_t begin = 0; begin < audio.samples;) {
        ZELAlgo::ZELAudioFrame part = audio;
        part.data += size_t{begin} * audio.channels;
        part.samples = std::min(step, audio.samples - begin);
        begin += part.samples;
        take(part);
    }
}

/// What the detectors' configuration is in the caller's terms.
zelc_config configOf(const ZELAlgo::ZELAlgoConfig& detectors);
/// None, with the reason kept, for a struct that cannot be read; the defaults for null.
std::optional<zelc_config> readConfig(const zelc_config* config);
ZELAlgo::ZELAlgoConfig detectorsOf(const zelc_config& config);

zelc_video_verdict verdictOf(const ZELAlgo::ZELVideoResult& result);
zelc_audio_verdict verdictOf(const ZELAlgo::ZELAudioResult& result);

}  // namespace ZELC

#endif  // ZEL_SRC_C_FED_H_
