#ifndef ZEL_BENCH_ACCURACY_REAL_CLIPS_H_
#define ZEL_BENCH_ACCURACY_REAL_CLIPS_H_

#include <zel/events/event.h>

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "bench/accuracy/clip.h"

namespace bench::accuracy {

using SpansByKind = std::map<std::string, std::vector<ZEL::TimeSpan>, std::less<>>;

/// A filmed, rendered or recorded clip that bench/real_clips has fetched.
struct Material {
    enum class Type { kVideo, kMusic, kSpeech };

    std::string name;
    std::string file;
    Type type = Type::kVideo;
    std::vector<double> from_s;  ///< where the parts begin that are made faulty
    SpansByKind holds;           ///< what is truly in it, so that finding it is no false alarm
};

enum class Half { kTune, kKept, kAll };

/// What the folder's clips.json tells of. Throws std::runtime_error if it is not there or not understood.
std::vector<Material> readMaterial(const std::string& folder, Half half);

/// A real clip as it is, or made faulty in a known way, or changed in a way that is no fault.
struct RealCase {
    const Material* material = nullptr;
    std::string variant;
    std::string about;
    size_t part = 0;                      ///< of the material that is made faulty
    std::optional<Clip> clip;             ///< none: the material itself
    std::vector<std::string_view> kinds;  ///< any of these finds the fault; empty for good material: all
    std::vector<ZEL::TimeSpan> truth;
    bool comes_and_goes = false;  ///< the fault does: finding any of it is enough
    bool sound = false;
    SpansByKind holds;

    std::string name() const {
        return material->name + "." + variant + (part > 0 ? "." + std::to_string(part + 1) : "");
    }
    bool good() const { return kinds.empty(); }
    /// What is truly there of the kinds besides the fault.
    std::vector<ZEL::TimeSpan> held(const std::vector<std::string_view>& of) const;
};

/// All cases of the material, which outlives them, grouped by variant.
std::vector<RealCase> realCases(const std::vector<Material>& material);

}  // namespace bench::accuracy

#endif  // ZEL_BENCH_ACCURACY_REAL_CLIPS_H_
