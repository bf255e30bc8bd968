#ifndef ZEL_COLLECTOR_INFO_COLLECTOR_H_
#define ZEL_COLLECTOR_INFO_COLLECTOR_H_

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZEL {

/// Gathers a host's own numbers between two heartbeats and turns them into report fields. Any thread; an add
/// and a collect exclude each other.
class ZELInfoCollector {
  public:
    /// Makes the collector of that class name: "ZELAccumulativeInfoCollector" or
    /// "ZELSerialStatisticsInfoCollector". Null for any other text.
    static std::shared_ptr<ZELInfoCollector> create(const std::string& name);

    ZELInfoCollector() = default;
    ZELInfoCollector(const ZELInfoCollector&) = delete;
    ZELInfoCollector& operator=(const ZELInfoCollector&) = delete;

    /// Report fields for everything added since the last collect, which is forgotten in the same step.
    virtual std::map<std::string, std::string> collect() = 0;

    /// Forgets what was added.
    virtual void reset() = 0;

    virtual ~ZELInfoCollector();

    /// Appends samples to the series `key`. Ignored by a collector that keeps no series. Always 0.
    virtual int addSerialData(const std::string& key, const std::vector<float>& samples);

    /// Adds each value to the total of its key. Ignored by a collector that keeps no totals. Always 0.
    virtual int addAccumulativeData(const std::map<std::string, int64_t>& values);
};

/// Sums integers per key. Reports each key with its total in decimal. A total past 64 bits wraps around.
class ZELAccumulativeInfoCollector : public ZELInfoCollector {
  public:
    ZELAccumulativeInfoCollector();
    ~ZELAccumulativeInfoCollector() override;

    std::map<std::string, std::string> collect() override;
    void reset() override;
    int addAccumulativeData(const std::map<std::string, int64_t>& values) override;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// Keeps series of samples per key, 4 bytes per sample until collected. Reports for each key k:
/// k_mean, k_sd (of the population), k_cnt, and k_lt_2sd_rate and k_lt_3sd_rate, the shares of samples that
/// lie less than two and three deviations from the mean; "%f" but for the count. Arithmetic is single
/// precision over sums in double precision. An empty vector adds nothing.
class ZELSerialStatisticsInfoCollector : public ZELInfoCollector {
  public:
    ZELSerialStatisticsInfoCollector();
    ~ZELSerialStatisticsInfoCollector() override;

    std::map<std::string, std::string> collect() override;
    void reset() override;
    int addSerialData(const std::string& key, const std::vector<float>& samples) override;

  private:
    struct State;
    std::unique_ptr<State> state_;
};

/// The number at the start of `values[key]`, or `default_value` if there is no such key. Blanks before the
/// number and anything after it are skipped, hexadecimal, "inf" and "nan" are numbers; the process's locale
/// plays no part. Throws std::invalid_argument ("invalid stod argument") if there is no number and
/// std::out_of_range ("stod argument out of range") if it is too large or too small.
double getDouble(const std::map<std::string, std::string>& values, const std::string& key,
                 double default_value);

/// As getDouble, for a decimal integer of 32 bits: "invalid stoi argument", "stoi argument out of range".
int getInt(const std::map<std::string, std::string>& values, const std::string& key, int default_value);

}  // namespace ZEL

#endif  // ZEL_COLLECTOR_INFO_COLLECTOR_H_
