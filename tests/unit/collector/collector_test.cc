#include <zel/collector/info_collector.h>

#include <cmath>
#include <cstdlib>
#include <limits>
#include <stdexcept>
#include <thread>

#include <gmock/gmock.h>

#include "support/random.h"

namespace {

using testing::IsEmpty;
using ZEL::ZELInfoCollector;

using Fields = std::map<std::string, std::string>;

std::shared_ptr<ZELInfoCollector> accumulative() {
    return ZELInfoCollector::create("ZELAccumulativeInfoCollector");
}

std::shared_ptr<ZELInfoCollector> serial() {
    return ZELInfoCollector::create("ZELSerialStatisticsInfoCollector");
}

TEST(CollectorFactory, KnowsTwoExactNames) {
    EXPECT_NE(std::dynamic_pointer_cast<ZEL::ZELAccumulativeInfoCollector>(accumulative()), nullptr);
    EXPECT_NE(std::dynamic_pointer_cast<ZEL::ZELSerialStatisticsInfoCollector>(serial()), nullptr);
    for (const std::string name : {"", "ZELAccumulativeInfoCollector ", "ZELAccumulativeInfoCollecto",
                                   "zelaccumulativeinfocollector", "ZELInfoCollector"}) {
        EXPECT_EQ(ZELInfoCollector::create(name), nullptr) << name;
    }
    EXPECT_EQ(ZELInfoCollector::create(std::string("ZELAccumulativeInfoCollector\0", 29)), nullptr);
}

TEST(AccumulativeCollector, SumsPerKeyUntilCollected) {
    const auto collector = accumulative();
    collector->addAccumulativeData({{"a", 5}, {"b", std::numeric_limits<int64_t>::min()}, {"zero", 0}});
    collector->addAccumulativeData({{"a", -7}});
    EXPECT_EQ(collector->collect(), (Fields{{"a", "-2"}, {"b", "-9223372036854775808"}, {"zero", "0"}}));
    EXPECT_THAT(collector->collect(), IsEmpty());
    collector->addAccumulativeData({{"b", 1}});
    EXPECT_EQ(collector->collect(), (Fields{{"b", "1"}}));
}

TEST(AccumulativeCollector, WrapsPastSixtyFourBits) {
    const auto collector = accumulative();
    collector->addAccumulativeData({{"a", std::numeric_limits<int64_t>::max()}});
    collector->addAccumulativeData({{"a", 1}});
    EXPECT_EQ(collector->collect(), (Fields{{"a", "-9223372036854775808"}}));
}

TEST(Collectors, IgnoreTheOtherKindOfDataAndForgetOnReset) {
    const auto sums = accumulative();
    EXPECT_EQ(sums->addSerialData("a", {1.0F}), 0);
    EXPECT_THAT(sums->collect(), IsEmpty());
    sums->addAccumulativeData({{"a", 1}});
    sums->reset();
    EXPECT_THAT(sums->collect(), IsEmpty());

    const auto series = serial();
    EXPECT_EQ(series->addAccumulativeData({{"a", 1}}), 0);
    EXPECT_THAT(series->collect(), IsEmpty());
    series->addSerialData("a", {1.0F});
    series->reset();
    EXPECT_THAT(series->collect(), IsEmpty());
}

TEST(SerialCollector, ReportsFiveFieldsPerSeries) {
    const auto collector = serial();
    collector->addSerialData("one", {5.0F});
    collector->addSerialData("four", {1.0F, 2.0F});
    collector->addSerialData("none", {});
    collector->addSerialData("four", {3.0F, 4.0F});
    EXPECT_EQ(collector->collect(), (Fields{{"four_mean", "2.500000"},
                                            {"four_sd", "1.118034"},
                                            {"four_cnt", "4"},
                                            {"four_lt_2sd_rate", "1.000000"},
                                            {"four_lt_3sd_rate", "1.000000"},
                                            {"one_mean", "5.000000"},
                                            {"one_sd", "0.000000"},
                                            {"one_cnt", "1"},
                                            {"one_lt_2sd_rate", "0.000000"},
                                            {"one_lt_3sd_rate", "0.000000"}}));
    EXPECT_THAT(collector->collect(), IsEmpty());
}

TEST(SerialCollector, CountsOnlySamplesStrictlyInsideTheBounds) {
    const auto collector = serial();
    // Mean 0, deviation 1: two samples lie on the bound of two deviations, none on that of three.
    collector->addSerialData("k", {-2.0F, 2.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F});
    const Fields fields = collector->collect();
    EXPECT_EQ(fields.at("k_sd"), "1.000000");
    EXPECT_EQ(fields.at("k_lt_2sd_rate"), "0.750000");
    EXPECT_EQ(fields.at("k_lt_3sd_rate"), "1.000000");
    collector->addSerialData("outlier",
                             {8.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F, 0.0F});  // 2.6 deviations away
    EXPECT_EQ(collector->collect().at("outlier_lt_3sd_rate"), "1.000000");
}

TEST(SerialCollector, RoundsSumsOnceAndEverythingElseToFloat) {
    const auto collector = serial();
    // A float sum would stay at 2^24; the double sum is 2^24 + 4.
    collector->addSerialData("sum", {16777216.0F, 1.0F, 1.0F, 1.0F, 1.0F});
    // Squares overflow a float, as the definition has it.
    collector->addSerialData("wide", {3e20F, -3e20F});
    collector->addSerialData("squares", {8832.0F, 7012.0F, 7545.0F});
    const Fields fields = collector->collect();
    EXPECT_EQ(fields.at("squares_sd"), "763.970520");  // ...459 of squares or deviations in double
    EXPECT_EQ(fields.at("sum_mean"), "3355444.000000");
    EXPECT_EQ(fields.at("wide_mean"), "0.000000");
    EXPECT_EQ(fields.at("wide_sd"), "inf");
    EXPECT_EQ(fields.at("wide_lt_2sd_rate"), "1.000000");
}

TEST(SerialCollector, StaysExactOverTenMillionSamples) {
    constexpr size_t kCount = 10'000'000;
    const auto collector = serial();
    support::Random random(42);
    double sum = 0.0;
    std::vector<float> samples(kCount);
    for (float& sample : samples) {
        sample = static_cast<float>(random.below(1U << 20U)) * 0.125F + 60000.0F;
        sum += static_cast<double>(sample);
    }
    collector->addSerialData("k", samples);
    const Fields fields = collector->collect();

    const float n = 1e7F;
    const float mean = static_cast<float>(sum) / n;
    double squares = 0.0;
    for (const float sample : samples) {
        const float deviation = sample - mean;
        const float square = deviation * deviation;
        squares += static_cast<double>(square);
    }
    EXPECT_EQ(std::stof(fields.at("k_mean")), mean);
    EXPECT_EQ(std::stof(fields.at("k_sd")), std::sqrt(static_cast<float>(squares) / n));
    EXPECT_EQ(fields.at("k_cnt"), "10000000");
    EXPECT_EQ(fields.at("k_lt_2sd_rate"), "1.000000");  // a uniform spread ends at 1.73 deviations
}

TEST(SerialCollector, NeverShowsHalfOfAnAdd) {
    const auto collector = serial();
    constexpr int kAdds = 2000;
    std::thread host([&] {
        for (int i = 0; i < kAdds; ++i) {
            collector->addSerialData("k", {1.0F, 2.0F, 3.0F});
        }
    });
    int seen = 0;
    while (seen < 3 * kAdds) {
        const Fields fields = collector->collect();
        if (!fields.empty()) {
            const int count = std::stoi(fields.at("k_cnt"));
            ASSERT_EQ(count % 3, 0);
            seen += count;
        }
    }
    host.join();
}

double readDouble(const std::string& text) {
    return ZEL::getDouble({{"k", text}}, "k", -1.0);
}

int readInt(const std::string& text) {
    return ZEL::getInt({{"k", text}}, "k", -1);
}

std::string failure(const std::function<void()>& read) {
    try {
        read();
    } catch (const std::invalid_argument& error) {
        return error.what();
    } catch (const std::out_of_range& error) {
        return error.what();
    }
    return "";
}

TEST(NumberLookup, ReadsANumberAtTheStartOfTheText) {
    EXPECT_EQ(readDouble(" \t\n\v\f\r+850.9ms"), 850.9);
    EXPECT_EQ(readDouble("-.5e1,"), -5.0);
    EXPECT_EQ(readDouble("1e"), 1.0);
    EXPECT_EQ(readDouble("0x1.8p1"), 3.0);
    EXPECT_EQ(readDouble("0x"), 0.0);
    EXPECT_EQ(readDouble("-infinity"), -std::numeric_limits<double>::infinity());
    EXPECT_TRUE(std::isnan(readDouble("nan(1)")));
    EXPECT_EQ(readInt("\n -110.7"), -110);
    EXPECT_EQ(readInt("+2147483647"), 2147483647);
    EXPECT_EQ(readInt("-2147483648"), std::numeric_limits<int>::min());
    EXPECT_EQ(readInt("0x10"), 0);
    EXPECT_EQ(readInt("007"), 7);
    EXPECT_EQ(ZEL::getDouble({}, "k", 2.5), 2.5);
    EXPECT_EQ(ZEL::getInt({{"other", "1"}}, "k", 7), 7);
}

TEST(NumberLookup, FailsWithTheTextsOfTheStandardConversions) {
    for (const std::string text : {"", " ", "ms", "+-5", "- 5", ".", "e5"}) {
        EXPECT_EQ(failure([&] { readDouble(text); }), "invalid stod argument") << text;
        EXPECT_EQ(failure([&] { readInt(text); }), "invalid stoi argument") << text;
    }
    EXPECT_EQ(failure([] { readDouble("1e309"); }), "stod argument out of range");
    EXPECT_EQ(failure([] { readDouble("1e-320"); }), "stod argument out of range");
    EXPECT_EQ(failure([] { readInt("2147483648"); }), "stoi argument out of range");
    EXPECT_EQ(failure([] { readInt("-2147483649"); }), "stoi argument out of range");
    EXPECT_EQ(failure([] { readInt("99999999999999999999"); }), "stoi argument out of range");
}

TEST(NumberLookup, LeavesErrnoAlone) {
    errno = EINTR;
    EXPECT_EQ(readInt("12"), 12);
    EXPECT_EQ(failure([] { readDouble("1e309"); }), "stod argument out of range");
    EXPECT_EQ(errno, EINTR);
}

}  // namespace
