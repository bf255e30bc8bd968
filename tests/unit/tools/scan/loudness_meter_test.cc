#include "scan/loudness_meter.h"

#include <cmath>
#include <numbers>
#include <vector>

#include <gtest/gtest.h>

namespace {

using zel_monitor::LoudnessMeter;

std::vector<int16_t> tone(unsigned long rate, unsigned channels, double seconds, double decibels) {
    std::vector<int16_t> samples;
    const double peak = 32767.0 * std::pow(10.0, decibels / 20.0);
    for (size_t i = 0; i < static_cast<size_t>(seconds * static_cast<double>(rate)); ++i) {
        const double phase =
            2.0 * std::numbers::pi * 1000.0 * static_cast<double>(i) / static_cast<double>(rate);
        samples.insert(samples.end(), channels, static_cast<int16_t>(std::lround(peak * std::sin(phase))));
    }
    return samples;
}

void add(LoudnessMeter& meter, unsigned long rate, unsigned channels, double seconds, double decibels) {
    const std::vector<int16_t> samples = tone(rate, channels, seconds, decibels);
    for (size_t done = 0; done < samples.size() / channels; done += 1024) {
        meter.add(samples.data() + done * channels, std::min<size_t>(1024, samples.size() / channels - done),
                  channels, rate);
    }
}

TEST(LoudnessMeter, ReferenceToneOfTwoChannelsHasTheLoudnessOfItsLevel) {
    LoudnessMeter meter;
    add(meter, 48'000, 2, 10.0, -23.0);
    const auto loudness = meter.loudness();
    ASSERT_TRUE(loudness && loudness->integrated_lufs && loudness->short_term_max_lufs);
    EXPECT_NEAR(*loudness->integrated_lufs, -23.0, 0.1);
    EXPECT_NEAR(*loudness->short_term_max_lufs, -23.0, 0.1);
    EXPECT_NEAR(loudness->true_peak_dbtp.value_or(0.0), -23.0, 0.2);
}

TEST(LoudnessMeter, RateAndChannelsMayChange) {
    LoudnessMeter meter;
    add(meter, 44'100, 1, 5.0, -20.0);
    add(meter, 48'000, 6, 5.0, -40.0);
    add(meter, 96'000, 2, 5.0, -20.0);
    const auto loudness = meter.loudness();
    EXPECT_NEAR(loudness->short_term_max_lufs.value_or(0.0), -20.0, 0.2);
    EXPECT_NEAR(loudness->true_peak_dbtp.value_or(0.0), -20.0, 0.3);
    EXPECT_LT(loudness->integrated_lufs.value_or(0.0), -20.0);
    EXPECT_GT(loudness->integrated_lufs.value_or(0.0), -24.0);
}

TEST(LoudnessMeter, SilenceAndSnippetsHaveNone) {
    LoudnessMeter nothing;
    EXPECT_FALSE(nothing.loudness());
    LoudnessMeter silence;
    const std::vector<int16_t> zeros(48'000 * 5);
    silence.add(zeros.data(), zeros.size(), 1, 48'000);
    ASSERT_TRUE(silence.loudness());
    EXPECT_FALSE(silence.loudness()->integrated_lufs || silence.loudness()->short_term_max_lufs ||
                 silence.loudness()->true_peak_dbtp);
    LoudnessMeter snippet;
    add(snippet, 48'000, 2, 0.2, -10.0);
    EXPECT_FALSE(snippet.loudness()->integrated_lufs || snippet.loudness()->short_term_max_lufs);
    EXPECT_TRUE(snippet.loudness()->true_peak_dbtp);
}

}  // namespace
