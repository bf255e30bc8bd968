#include <zel/zel_c.h>

#include <cstddef>
#include <cstdint>
#include <vector>

#include <benchmark/benchmark.h>

// What calls of the flat C interface cost on frames that are hardly worth examining; bench/python_calls holds
// Python's against them.

namespace {

constexpr uint32_t kSide = 16;

struct Frame {
    std::vector<uint8_t> bytes = std::vector<uint8_t>(kSide * kSide * 3 / 2, 100);
    zelc_frame frame = ZELC_INIT(zelc_frame);

    Frame() {
        const size_t luma = size_t{kSide} * kSide;
        frame.width = frame.height = kSide;
        for (size_t plane = 0; plane < 3; ++plane) {
            frame.data[plane] = bytes.data() + (plane > 0 ? luma + (plane - 1) * luma / 4 : 0);
            frame.stride[plane] = plane > 0 ? kSide / 2 : kSide;
        }
    }
};

void detectorVideo(benchmark::State& state) {
    const Frame frame;
    zelc_detector* detector = nullptr;
    zelc_video_verdict verdict = ZELC_INIT(zelc_video_verdict);
    zelc_detector_new(nullptr, &detector);
    for (auto _ : state) {
        if (zelc_detector_video(detector, &frame.frame, &verdict) != ZELC_OK) {
            state.SkipWithError(zelc_last_error());
        }
    }
    zelc_detector_free(detector);
}
BENCHMARK(detectorVideo);

void analyserVideo(benchmark::State& state) {
    const Frame frame;
    zelc_analyser* analyser = nullptr;
    zelc_analyser_new(nullptr, nullptr, &analyser);
    double time_s = 0.0;
    for (auto _ : state) {
        if (zelc_analyser_video(analyser, &frame.frame, time_s, 0.04) != ZELC_OK) {
            state.SkipWithError(zelc_last_error());
        }
        time_s += 0.04;
    }
    zelc_analyser_free(analyser);
}
BENCHMARK(analyserVideo);

void analyserAudio(benchmark::State& state) {
    std::vector<int16_t> samples(480);
    zelc_audio audio = ZELC_INIT(zelc_audio);
    audio.sample_rate = 48000;
    audio.channels = 1;
    audio.samples = 480;
    audio.data = samples.data();
    zelc_analyser* analyser = nullptr;
    zelc_analyser_new(nullptr, nullptr, &analyser);
    double time_s = 0.0;
    for (auto _ : state) {
        if (zelc_analyser_audio(analyser, &audio, time_s) != ZELC_OK) {
            state.SkipWithError(zelc_last_error());
        }
        time_s += 0.01;
    }
    zelc_analyser_free(analyser);
}
BENCHMARK(analyserAudio);

}  // namespace

int main(int argc, char** argv) {
    zelc_silence_log();
    benchmark::Initialize(&argc, argv);
    benchmark::RunSpecifiedBenchmarks();
}
