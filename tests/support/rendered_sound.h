#ifndef ZEL_TESTS_SUPPORT_RENDERED_SOUND_H_
#define ZEL_TESTS_SUPPORT_RENDERED_SOUND_H_

#include <cstdint>
#include <string>
#include <vector>

namespace support {

/// The first `seconds` of a libavfilter source, for instance "sine=1000", "anoisesrc=color=pink:seed=1" or
/// "flite=text='hello'", as one channel of 16-bit samples; zeros follow if it ends early. Throws
/// std::runtime_error if the graph cannot be built.
std::vector<int16_t> renderSound(const std::string& source, int sample_rate, double seconds);

}  // namespace support

#endif  // ZEL_TESTS_SUPPORT_RENDERED_SOUND_H_
