#include "input/demo_source.h"

#include <fmt/format.h>
#include <span>

#include "input/fault_filters.h"

namespace zel_monitor {
namespace {

/// One stretch of the demo stream: what it is, and the FFmpeg filters that make it of the source.
struct Stretch {
    int seconds;
    std::string_view caption;
    std::string_view filters = "null";
    std::string_view source = {};  ///< instead of the one that most stretches share
};

/// What most stretches start from: a moving, well-exposed frame, and speech.
constexpr std::string_view kFrame = "testsrc2=s=640x360:r=25,scroll=h=0.02:v=0.01";
constexpr std::string_view kSpeech =
    "flite=voice=slt:text='The ship left the harbour at dawn and sailed along the coast. "
    "The captain watched the weather and wrote a long letter to his family. "
    "In the evening the wind grew stronger and the crew took in the sails.'";

constexpr Stretch faulty(int seconds, std::string_view kind, std::string_view source = {}) {
    const FaultFilter& fault = faultFilter(kind);
    return {seconds, fault.kind, fault.filters, source};
}

constexpr Stretch kFrames[] = {
    {10, "good video"},  faulty(5, "black"),        faulty(5, "green"),       faulty(5, "block"),
    faulty(5, "freeze"), faulty(5, "underexposed"), faulty(5, "overexposed"), {12, "good video"},
};
constexpr Stretch kSounds[] = {
    {10, "speech", "anull"},
    faulty(10, "mute", "anullsrc=r=16000:cl=mono"),  // no speech is made only to be muted
    faulty(10, "low-voice"),
    faulty(10, "high-voice"),
    {12, "no-voice", "anull",
     "aevalsrc='0.2*sin(2*PI*220*t)*(0.5+0.5*sin(2*PI*0.4*t))+0.1*sin(2*PI*330*t)':s=16000"},
};

int lengthOf(std::span<const Stretch> stretches) {
    int seconds = 0;
    for (const Stretch& stretch : stretches) {
        seconds += stretch.seconds;
    }
    return seconds;
}

std::string_view captionAt(std::span<const Stretch> stretches, double position) {
    for (const Stretch& stretch : stretches) {
        if (position < stretch.seconds) {
            return stretch.caption;
        }
        position -= stretch.seconds;
    }
    return stretches.back().caption;
}

/// The stretches one after another: each cut to its length by `cut`, then joined by `join`.
std::string sequence(std::span<const Stretch> stretches, std::string_view base, std::string_view cut,
                     std::string_view join) {
    std::string chains;
    std::string labels;
    for (const Stretch& stretch : stretches) {
        const std::string_view source = stretch.source.empty() ? base : stretch.source;
        const std::string label = fmt::format("[{}{}]", cut, labels.size());
        chains += fmt::format("{},{},{}=end={}{};", source, stretch.filters, cut, stretch.seconds, label);
        labels += label;
    }
    return chains + labels + fmt::format("concat=n={}:{}", stretches.size(), join);
}

/// Both streams of the demo. Audio comes in frames of 10 ms, as real-time clients hand it over: digital
/// silence takes one step of its period per frame, however long the frame is.
std::string demoGraph() {
    return sequence(kFrames, kFrame, "trim", "v=1:a=0,format=yuv420p[out0];") +
           sequence(kSounds, kSpeech, "atrim", "v=0:a=1,asetnsamples=160:p=0[out1]");
}

}  // namespace

MediaSource openInput(const std::string& input, MediaOptions options) {
    if (input != kDemoInput) {
        return MediaSource(input, options);
    }
    options.format = "lavfi";
    if (options.label.empty()) {
        options.label = "demo stream";
    }
    options.duration = lengthOf(kFrames);
    return MediaSource(demoGraph(), options);
}

std::string demoCaption(double position) {
    return fmt::format("{}, {}", captionAt(kFrames, position), captionAt(kSounds, position));
}

}  // namespace zel_monitor
