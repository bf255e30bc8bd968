#include <zel/algo/algo_facade.h>
#include <zel/events/analyser.h>
#include <zel/session/frames.h>

#include <algorithm>
#include <cstdint>
#include <memory>
#include <numeric>
#include <stdexcept>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>
#include <kiss_fftr.h>

#include "algo/audio/analysis_window.h"
#include "algo/mix_down.h"
#include "support/rendered_sound.h"

extern "C" {
#include <libavfilter/avfilter.h>
#include <libavfilter/buffersink.h>
#include <libavfilter/buffersrc.h>
#include <libavutil/channel_layout.h>
#include <libavutil/frame.h>
}

// Ten seconds of speech over music-like tones at 48 kHz, in frames of 1024 samples: through the audio road of
// a session, through that of an analysis for events, and the same samples through two of FFmpeg's measuring
// filters. "realtime" is seconds of sound per second of one core, "per_10ms" the time that 10 ms of sound
// take.

namespace {

constexpr int kRate = 48'000;
constexpr int kFrame = 1024;
constexpr int kFrames = 10 * kRate / kFrame;

/// The same sound in `channels` interleaved channels; each comes a little later than the one before.
std::vector<int16_t> sound(int channels) {
    static const std::vector<int16_t> mono = support::renderSound(
        "flite=text='The quick brown fox jumps over the lazy dog while the band plays on and the rain keeps "
        "falling on the tin roof of the old station where nobody waits for the evening train any more':"
        "voice=slt,aresample=48000[s];aevalsrc='0.1*sin(2*PI*220*t)+0.05*sin(2*PI*331*t)+0.02*random(0)':"
        "s=48000[m];[s][m]amix=duration=longest",
        kRate, 10);
    const auto count = static_cast<size_t>(kFrames * kFrame);
    std::vector<int16_t> samples;
    for (size_t i = 0; i < count; ++i) {
        for (size_t channel = 0; channel < static_cast<size_t>(channels); ++channel) {
            samples.push_back(mono[i >= 24 * channel ? i - 24 * channel : 0]);
        }
    }
    return samples;
}

void reportRealtime(benchmark::State& state) {
    const double seconds = static_cast<double>(state.iterations()) * kFrames * kFrame / kRate;
    state.counters["realtime"] = benchmark::Counter(seconds, benchmark::Counter::kIsRate);
    state.counters["per_10ms"] =
        benchmark::Counter(seconds * 100, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

/// What the session's worker does with a frame: mix down, detect.
void audioRoad(benchmark::State& state) {
    const auto channels = static_cast<int>(state.range(0));
    const std::vector<int16_t> samples = sound(channels);
    const auto frame_size = static_cast<size_t>(kFrame * channels);
    std::vector<std::unique_ptr<ZEL::AudioFrame>> frames;
    for (size_t first = 0; first < samples.size(); first += frame_size) {
        auto data = std::make_unique<int16_t[]>(frame_size);
        std::copy_n(samples.begin() + static_cast<std::ptrdiff_t>(first), frame_size, data.get());
        frames.push_back(std::make_unique<ZEL::AudioFrame>(0, std::move(data), kFrame, kRate, channels));
    }
    ZELAlgo::AlgoFacade facade;
    ZELAlgo::ZELAudioResult result{};
    std::vector<int16_t> buffer;
    for (auto unused : state) {
        for (const auto& frame : frames) {
            const auto count = static_cast<uint32_t>(channels);
            const ZELAlgo::ZELAudioFrame mixed{kRate, kFrame, count,
                                               ZELAlgo::mixedDown(frame->data.get(), kFrame, count, buffer)};
            facade.detectAudio(mixed, result);
        }
        benchmark::DoNotOptimize(result);
    }
    reportRealtime(state);
}
BENCHMARK(audioRoad)->ArgName("channels")->Arg(1)->Arg(2)->Arg(6)->Unit(benchmark::kMillisecond);

/// What an analysis for events does: periods of two lengths, summed from one measurement.
void eventsRoad(benchmark::State& state) {
    const auto channels = static_cast<uint32_t>(state.range(0));
    const std::vector<int16_t> samples = sound(static_cast<int>(channels));
    struct Listener : ZEL::EventListener {
        void onSilencePeriod(ZEL::TimeSpan /*period*/, const ZELAlgo::ZELAudioResult& result) override {
            benchmark::DoNotOptimize(result.audio_level);
        }
        void onVoicePeriod(ZEL::TimeSpan /*period*/, const ZELAlgo::ZELAudioResult& result) override {
            benchmark::DoNotOptimize(result.voice_scale_longtime);
        }
    } listener;
    ZEL::EventAnalyser analyser(listener, {.tracks = {.video = false}});
    uint64_t fed = 0;
    for (auto unused : state) {
        for (size_t first = 0; first < samples.size(); first += size_t{kFrame} * channels, fed += kFrame) {
            analyser.feedAudio({kRate, kFrame, channels, samples.data() + first},
                               static_cast<double>(fed) / kRate);
        }
    }
    reportRealtime(state);
}
BENCHMARK(eventsRoad)->ArgName("channels")->Arg(1)->Arg(2)->Arg(6)->Unit(benchmark::kMillisecond);

/// What that would cost with a facade for each length of period, each mixing down for itself, sample by
/// sample, and fed chunk by chunk.
void eventsRoadOfTwoFacades(benchmark::State& state) {
    const auto channels = static_cast<std::ptrdiff_t>(state.range(0));
    const std::vector<int16_t> samples = sound(static_cast<int>(channels));
    struct Road {
        explicit Road(double period_s) : facade(ZELAlgo::ZELAlgoConfig{.longtime_period_s = period_s}) {}
        ZELAlgo::AlgoFacade facade;
        std::vector<int16_t> pending = {};
        void feed(const int16_t* interleaved, std::ptrdiff_t count) {
            for (int i = 0; i < kFrame; ++i, interleaved += count) {
                const int sum = std::accumulate(interleaved, interleaved + count, 0);
                pending.push_back(static_cast<int16_t>(sum / count));
                if (pending.size() == kRate / 100) {
                    ZELAlgo::ZELAudioResult result{};
                    facade.detectAudio({kRate, kRate / 100, 1, pending.data()}, result);
                    benchmark::DoNotOptimize(result);
                    pending.clear();
                }
            }
        }
    };
    Road silence(ZEL::EventAnalyser::kSilencePeriodS);
    Road voice(ZEL::EventAnalyser::kVoicePeriodS);
    for (auto unused : state) {
        for (size_t first = 0; first < samples.size(); first += static_cast<size_t>(kFrame * channels)) {
            silence.feed(samples.data() + first, channels);
            voice.feed(samples.data() + first, channels);
        }
    }
    reportRealtime(state);
}
BENCHMARK(eventsRoadOfTwoFacades)->ArgName("channels")->Arg(1)->Arg(2)->Arg(6)->Unit(benchmark::kMillisecond);

/// The transform alone, once per chunk of 10 ms: the part of the road that is not ours.
void kissFftAlone(benchmark::State& state) {
    const std::vector<int16_t> samples = sound(1);
    const auto& window = ZELAlgo::analysisWindow();
    std::vector<float> input(ZELAlgo::kFftSize);
    for (size_t i = 0; i < input.size(); ++i) {
        input[i] = window[i] * static_cast<float>(samples[i]);
    }
    std::vector<kiss_fft_cpx> output(ZELAlgo::kFftSize / 2 + 1);
    const std::unique_ptr<kiss_fftr_state, void (*)(void*)> fft(
        kiss_fftr_alloc(static_cast<int>(ZELAlgo::kFftSize), 0, nullptr, nullptr),
        [](void* state_memory) { kiss_fftr_free(state_memory); });
    for (auto unused : state) {
        for (int chunk = 0; chunk < kFrames * kFrame / (kRate / 100); ++chunk) {
            kiss_fftr(fft.get(), input.data(), output.data());
            benchmark::DoNotOptimize(output.data());
            benchmark::ClobberMemory();
        }
    }
    reportRealtime(state);
}
BENCHMARK(kissFftAlone)->Unit(benchmark::kMillisecond);

/// A libavfilter graph of one filter, fed by hand.
class FilterRoad {
  public:
    FilterRoad(const std::string& filter, int channels) : graph_(avfilter_graph_alloc()) {
        const std::string layout = channels == 1 ? "mono" : "stereo";
        const std::string description =
            "abuffer@in=sample_rate=48000:sample_fmt=s16:channel_layout=" + layout + "," + filter +
            ",abuffersink@out";
        AVFilterInOut* inputs = nullptr;
        AVFilterInOut* outputs = nullptr;
        const bool parsed = avfilter_graph_parse2(graph_, description.c_str(), &inputs, &outputs) >= 0;
        avfilter_inout_free(&inputs);
        avfilter_inout_free(&outputs);
        if (!parsed || avfilter_graph_config(graph_, nullptr) < 0) {
            throw std::runtime_error("cannot build " + description);
        }
        source_ = avfilter_graph_get_filter(graph_, "abuffer@in");
        sink_ = avfilter_graph_get_filter(graph_, "abuffersink@out");
    }
    FilterRoad(const FilterRoad&) = delete;
    FilterRoad& operator=(const FilterRoad&) = delete;
    ~FilterRoad() {
        av_frame_free(&filtered_);
        avfilter_graph_free(&graph_);
    }

    void feed(AVFrame* frame) {
        if (av_buffersrc_add_frame_flags(source_, frame, AV_BUFFERSRC_FLAG_KEEP_REF) < 0) {
            throw std::runtime_error("the filter took no frame");
        }
        while (av_buffersink_get_frame(sink_, filtered_) >= 0) {
            av_frame_unref(filtered_);
        }
    }

  private:
    AVFilterGraph* graph_;
    AVFilterContext* source_ = nullptr;
    AVFilterContext* sink_ = nullptr;
    AVFrame* filtered_ = av_frame_alloc();
};

struct FrameDestroyer {
    void operator()(AVFrame* frame) const { av_frame_free(&frame); }
};
using FramePointer = std::unique_ptr<AVFrame, FrameDestroyer>;

FramePointer makeFrame(const int16_t* samples, int channels) {
    FramePointer frame(av_frame_alloc());
    frame->nb_samples = kFrame;
    frame->format = AV_SAMPLE_FMT_S16;
    frame->sample_rate = kRate;
    av_channel_layout_default(&frame->ch_layout, channels);
    av_frame_get_buffer(frame.get(), 0);
    std::copy_n(samples, kFrame * channels, reinterpret_cast<int16_t*>(frame->data[0]));
    return frame;
}

void ffmpegFilter(benchmark::State& state, const std::string& filter) {
    const auto channels = static_cast<int>(state.range(0));
    const std::vector<int16_t> samples = sound(channels);
    std::vector<FramePointer> frames;
    for (int i = 0; i < kFrames; ++i) {
        frames.push_back(makeFrame(samples.data() + i * kFrame * channels, channels));
    }
    FilterRoad road(filter, channels);
    int64_t time = 0;
    for (auto unused : state) {
        for (const FramePointer& frame : frames) {
            frame->pts = time;
            time += kFrame;
            road.feed(frame.get());
        }
    }
    reportRealtime(state);
}
BENCHMARK_CAPTURE(ffmpegFilter, silencedetect, "silencedetect")
    ->ArgName("channels")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond);
BENCHMARK_CAPTURE(ffmpegFilter, ebur128, "ebur128")
    ->ArgName("channels")
    ->Arg(1)
    ->Arg(2)
    ->Unit(benchmark::kMillisecond);

}  // namespace
