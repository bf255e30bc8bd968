// usage: analysis_alone FILE
// Decodes a file on one thread and analyses it, with nothing else around that. Prints the video frames and
// the processor seconds: what any monitor of such a stream has to spend.
#include <zel/base/log.h>
#include <zel/events/analyser.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <exception>
#include <fmt/format.h>
#include <variant>

#include "cli/standard_streams.h"
#include "input/media_source.h"

namespace {

struct Analysed {
    ZEL::EventAnalyser& analyser;
    uint64_t frames = 0;

    void operator()(const zel_monitor::VideoFrame& frame) {
        ++frames;
        analyser.feedVideo(frame.planes, frame.time, frame.duration);
    }
    void operator()(const zel_monitor::AudioFrame& sound) const {
        analyser.feedAudio({.sample_rate = static_cast<uint32_t>(sound.sample_rate),
                            .samples = static_cast<uint32_t>(sound.samples),
                            .channels = static_cast<uint32_t>(sound.channels),
                            .data = sound.data},
                           sound.time);
    }
};

}  // namespace

int main(int argc, char** argv) try {
    if (argc != 2) {
        zel_monitor::complain("usage: analysis_alone FILE");
        return 2;
    }
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    ZEL::EventListener nobody;
    ZEL::EventAnalyser analyser(nobody);
    Analysed analysed{analyser};
    zel_monitor::MediaSource source(argv[1], {.threads = 1, .begins_anew = false});
    const std::clock_t begin = std::clock();
    while (const auto item = source.next()) {
        std::visit(analysed, *item);
    }
    analyser.endOfStream();
    const double seconds = static_cast<double>(std::clock() - begin) / CLOCKS_PER_SEC;
    fmt::print("{} {:.6f}\n", analysed.frames, seconds);
    return 0;
} catch (const std::exception& error) {
    zel_monitor::complain(error.what());
    return 1;
}
