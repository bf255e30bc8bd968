#include <zel/algo/algo_facade.h>
#include <zel/base/log.h>
#include <zel/events/analyser.h>

#include <cstddef>
#include <cstdint>
#include <ctime>
#include <gst/check/gstharness.h>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

#include "support/rendered_frames.h"

// usage: gstreamer_bench [CLIP...] [--benchmark_...]
// Frames at 25 a second through the bare detectors, through an analyser, and as buffers through zelvideo of
// the plug-in in GST_PLUGIN_PATH, in turn. The counters tell what each costs per frame, and what the element
// costs beside the two.

namespace {

constexpr size_t kFrames = 50;
constexpr GstClockTime kFrame = GST_SECOND / 25;

using Frames = std::vector<support::RenderedFrame>;

/// CPU time of this thread, on which all of it happens.
double cpuSeconds() {
    timespec now{};
    clock_gettime(CLOCK_THREAD_CPUTIME_ID, &now);
    return static_cast<double>(now.tv_sec) + static_cast<double>(now.tv_nsec) * 1e-9;
}

ZELAlgo::ZELVideoPlanes planesOf(const support::RenderedFrame& frame) {
    const size_t luma = size_t{frame.width} * frame.height;
    const uint8_t* const data = frame.bytes.data();
    return {.width = frame.width,
            .height = frame.height,
            .data = {data, data + luma, data + luma + luma / 4},
            .stride = {frame.width, frame.width / 2, frame.width / 2}};
}

void run(benchmark::State& state, const Frames& frames) {
    const std::string caps =
        "video/x-raw,format=I420,framerate=25/1,width=" + std::to_string(frames[0].width) +
        ",height=" + std::to_string(frames[0].height);
    GstHarness* const harness = gst_harness_new("zelvideo");
    GstHarness* const without = gst_harness_new("identity");
    gst_harness_set_src_caps_str(harness, caps.c_str());
    gst_harness_set_src_caps_str(without, caps.c_str());
    ZELAlgo::AlgoFacade detectors;
    ZEL::EventListener listener;
    ZEL::EventAnalyser analyser(listener, {.tracks = {.video = true, .audio = false}});
    double detectors_s = 0.0;
    double analyser_s = 0.0;
    double element_s = 0.0;
    double identity_s = 0.0;
    size_t i = 0;
    const auto push = [&](GstHarness* into, const support::RenderedFrame& frame) {
        GstBuffer* const buffer =
            gst_buffer_new_wrapped_full(GST_MEMORY_FLAG_READONLY, const_cast<uint8_t*>(frame.bytes.data()),
                                        frame.bytes.size(), 0, frame.bytes.size(), nullptr, nullptr);
        GST_BUFFER_PTS(buffer) = i * kFrame;
        GST_BUFFER_DURATION(buffer) = kFrame;
        const double start_s = cpuSeconds();
        gst_harness_push(into, buffer);
        const double took_s = cpuSeconds() - start_s;
        gst_buffer_unref(gst_harness_pull(into));
        return took_s;
    };
    for (auto _ : state) {
        const support::RenderedFrame& frame = frames[i % frames.size()];
        const double start_s = cpuSeconds();
        ZELAlgo::ZELVideoResult result{};
        detectors.detectPlanes(planesOf(frame), result);
        const double detected_s = cpuSeconds();
        analyser.feedVideo(planesOf(frame), static_cast<double>(i) * 0.04, 0.04);
        detectors_s += detected_s - start_s;
        analyser_s += cpuSeconds() - detected_s;
        element_s += push(harness, frame);
        identity_s += push(without, frame);
        ++i;
    }
    gst_harness_teardown(harness);
    gst_harness_teardown(without);
    const auto per_frame = benchmark::Counter::kAvgIterations;
    state.counters["detectors_us"] = benchmark::Counter(detectors_s * 1e6, per_frame);
    state.counters["analyser_us"] = benchmark::Counter(analyser_s * 1e6, per_frame);
    state.counters["zelvideo_us"] = benchmark::Counter(element_s * 1e6, per_frame);
    state.counters["identity_us"] = benchmark::Counter(identity_s * 1e6, per_frame);
    state.counters["to_detectors"] = element_s / detectors_s;
    state.counters["to_analyser"] = element_s / analyser_s;
}

}  // namespace

int main(int argc, char** argv) {
    gst_init(&argc, &argv);
    ZEL::setLogSink([](const char*, size_t, void*) {}, nullptr);
    benchmark::Initialize(&argc, argv);
    std::vector<Frames> clips;
    for (int i = 1; i < argc; ++i) {
        clips.push_back(support::renderFrames(std::string("movie=") + argv[i], kFrames));
    }
    if (clips.empty()) {
        clips.push_back(support::renderFrames("mandelbrot=s=320x180", kFrames));
    }
    for (const Frames& clip : clips) {
        const std::string size = std::to_string(clip[0].width) + "x" + std::to_string(clip[0].height);
        benchmark::RegisterBenchmark(size.c_str(), [&clip](benchmark::State& state) { run(state, clip); });
    }
    benchmark::RunSpecifiedBenchmarks();
}
