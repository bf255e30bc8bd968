// What a player pays for its metrics: recording a sample, assessing the recent ones, feeding a collector,
// forwarding a report. The plain loops are what an assessment is measured against.
#include <zel/player.h>

#include <algorithm>
#include <cmath>
#include <string>
#include <vector>

#include <benchmark/benchmark.h>

namespace {

constexpr double kTolerance = 1e-6;

/// A few hundred different values, one in eight 0; their sum stays inside 32 bits.
std::vector<double> makeValues(int64_t count) {
    std::vector<double> values(static_cast<size_t>(count));
    for (size_t i = 0; i < values.size(); ++i) {
        values[i] = i % 8 == 0 ? 0.0 : -static_cast<double>(i * 7 % 512);
    }
    return values;
}

const std::vector<double> kCodes = {-60,    -65,    -57,    -54,     -5,     -103,   -110,      -50000,
                                    -50001, -50002, -50003, -100010, -50007, -50008, -50009,    -50010,
                                    -10605, -10608, -10609, -10610,  -10612, -10613, -541478725};

// ---- the rules over a plain array ----

double plainMaximum(const std::vector<double>& values) {
    double largest = values.front();
    for (const double value : values) {
        largest = std::max(largest, value);
    }
    return largest;
}

double plainTruncatingAverage(const std::vector<double>& values) {
    int32_t sum = 0;
    for (const double value : values) {
        sum = static_cast<int32_t>(sum + value);
    }
    return sum / static_cast<double>(values.size());
}

double plainNonZeroFraction(const std::vector<double>& values) {
    size_t count = 0;
    for (const double value : values) {
        count += std::abs(value) > kTolerance ? 1U : 0U;
    }
    return static_cast<double>(count) / static_cast<double>(values.size());
}

double plainCodeListFraction(const std::vector<double>& values) {
    size_t count = 0;
    for (const double value : values) {
        for (const double code : kCodes) {
            if (std::abs(value - code) <= kTolerance) {
                ++count;
                break;
            }
        }
    }
    return static_cast<double>(count) / static_cast<double>(values.size());
}

template <double (*rule)(const std::vector<double>&)>
void plain(benchmark::State& state) {
    const std::vector<double> values = makeValues(state.range(0));
    for (auto _ : state) {
        benchmark::DoNotOptimize(values.data());
        benchmark::DoNotOptimize(rule(values));
    }
}

// ---- the same through a recorder ----

template <double (*query)(ZEL::MetricRecorder&)>
void recorder(benchmark::State& state) {
    ZEL::MetricRecorder recorder(900);
    for (const double value : makeValues(state.range(0))) {
        recorder.record(value);
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(query(recorder));
    }
}

double maximum(ZEL::MetricRecorder& r) {
    return r.maximum();
}
double truncatingAverage(ZEL::MetricRecorder& r) {
    return r.truncatingAverage();
}
double nonZeroFraction(ZEL::MetricRecorder& r) {
    return r.nonZeroFraction();
}
double codeListFraction(ZEL::MetricRecorder& r) {
    return r.codeListFraction(kCodes);
}

void counts(benchmark::internal::Benchmark* benchmark) {
    benchmark->Arg(1)->Arg(10'000)->Arg(1'000'000);
}

/// Shows the cost of one sample where a benchmark's unit is many.
void perSample(benchmark::State& state) {
    const auto samples = static_cast<double>(state.iterations() * state.range(0));
    state.counters["per_sample"] =
        benchmark::Counter(samples, benchmark::Counter::kIsRate | benchmark::Counter::kInvert);
}

BENCHMARK(plain<&plainMaximum>)->Name("maximum/plain")->Apply(counts);
BENCHMARK(recorder<&maximum>)->Name("maximum/recorder")->Apply(counts);
BENCHMARK(plain<&plainTruncatingAverage>)->Name("truncatingAverage/plain")->Apply(counts);
BENCHMARK(recorder<&truncatingAverage>)->Name("truncatingAverage/recorder")->Apply(counts);
BENCHMARK(plain<&plainNonZeroFraction>)->Name("nonZeroFraction/plain")->Apply(counts);
BENCHMARK(recorder<&nonZeroFraction>)->Name("nonZeroFraction/recorder")->Apply(counts);
BENCHMARK(plain<&plainCodeListFraction>)->Name("codeListFraction/plain")->Apply(counts);
BENCHMARK(recorder<&codeListFraction>)->Name("codeListFraction/recorder")->Apply(counts);

// ---- through ZELHA, as a player does ----

/// From the first sample to the given count, growth included.
void record(benchmark::State& state) {
    for (auto _ : state) {
        ZEL::ZELHA health;
        for (int64_t i = 0; i < state.range(0); ++i) {
            health.record("bufms_per_second", 50.0);
        }
    }
    perSample(state);
}
BENCHMARK(record)->Apply(counts);

void evaluate(benchmark::State& state, const std::string& metric, const std::string& assessment) {
    ZEL::ZELHA health;
    for (const double value : makeValues(state.range(0))) {
        health.record(metric, value);
    }
    for (auto _ : state) {
        benchmark::DoNotOptimize(health.evaluate(assessment));
    }
}
BENCHMARK_CAPTURE(evaluate, RecentPlayerFF, "recent_ff", "RecentPlayerFF")->Apply(counts);
BENCHMARK_CAPTURE(evaluate, RefNetSpeed, "ref_speed", "RefNetSpeed")->Apply(counts);
BENCHMARK_CAPTURE(evaluate, PlayerErrorRate, "error_code", "PlayerErrorRate")->Apply(counts);
BENCHMARK_CAPTURE(evaluate, PlayerBufferRate, "bufms_per_second", "PlayerBufferRate")->Apply(counts);

/// One playback's end on its way through the manager to as many monitors as given.
void forward(benchmark::State& state) {
    struct Switches : ZEL::ConfigAdapter {
        bool getBool(const std::string& /*key*/, bool default_value) override { return default_value; }
        int32_t getInt(const std::string& /*key*/, int32_t default_value) override { return default_value; }
    };
    ZEL::ZELManager manager;
    manager.setConfigAdapter(std::make_shared<Switches>());
    for (int64_t i = 0; i < state.range(0); ++i) {
        manager.initDataMonitors();
    }
    const ReportMap report = {
        {"error_code", "0"},    {"play_scenario", "2"}, {"first_frame_rendering_time", "850.9"},
        {"play_time", "60000"}, {"quit_time", "60000"}, {"abnormal_total_time", "3000"}};
    for (auto _ : state) {
        manager.reportPlaybackEnd(1, report);
    }
}
BENCHMARK(forward)->Arg(0)->Arg(1)->Arg(2);

/// The statistics of one series.
void collectSerial(benchmark::State& state) {
    const std::vector<double> values = makeValues(state.range(0));
    const std::vector<float> samples(values.begin(), values.end());
    const auto collector = ZEL::ZELInfoCollector::create("ZELSerialStatisticsInfoCollector");
    for (auto _ : state) {
        state.PauseTiming();
        collector->addSerialData("series", samples);
        state.ResumeTiming();
        benchmark::DoNotOptimize(collector->collect());
    }
    perSample(state);
}
BENCHMARK(collectSerial)->Apply(counts);

}  // namespace
