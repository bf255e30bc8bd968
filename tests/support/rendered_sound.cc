#include "support/rendered_sound.h"

#include "support/filter_source.h"

namespace support {

std::vector<int16_t> renderSound(const std::string& source, int sample_rate, double seconds) {
    FilterSource sound(source + ",aresample=" + std::to_string(sample_rate) +
                           ",aformat=sample_fmts=s16:channel_layouts=mono",
                       "abuffersink");
    const auto wanted = static_cast<size_t>(seconds * sample_rate);
    std::vector<int16_t> samples;
    while (samples.size() < wanted && sound.advance()) {
        const auto* const data = reinterpret_cast<const int16_t*>(sound.frame().data[0]);
        samples.insert(samples.end(), data, data + sound.frame().nb_samples);
    }
    samples.resize(wanted);
    return samples;
}

}  // namespace support
