#ifndef ZEL_MONITOR_METRIC_RECORDER_H_
#define ZEL_MONITOR_METRIC_RECORDER_H_

#include <vector>

namespace ZEL {

/// One series of samples with a time to live. Not thread-safe: one thread at a time.
///
/// Each query drops the expired samples first and answers 0 if none is left.
class MetricRecorder {
  public:
    /// An empty series whose samples count for `ttl_seconds`; none does if that is not above 0.
    explicit MetricRecorder(int ttl_seconds);

    /// Adds a sample taken now. Nothing is dropped here: a series that is recorded but never queried grows by
    /// 16 bytes per sample (up to twice that is reserved) without bound.
    void record(double value);

    /// The largest value.
    double maximum();

    /// The mean of a sum that is cut to a whole number after each sample: 1.5 and 1.5 give 1. For values that
    /// count milliseconds or bytes. A sum that leaves 32 bits goes on from -2147483648.
    double truncatingAverage();

    /// The share of values other than 0, to within 1e-6.
    double nonZeroFraction();

    /// The share of values that are one of `codes`, to within 1e-6.
    double codeListFraction(const std::vector<double>& codes);

    /// Drops the samples that have reached the time to live, from the oldest up to the first that has not.
    /// Nothing if `flag` is false.
    void purgeExpired(bool flag);

  private:
    struct Sample {
        double value;
        double time;  ///< seconds since 1970
    };

    template <typename Predicate>
    double fraction(Predicate matches);

    std::vector<Sample> samples_;  ///< oldest first
    double ttl_;                   ///< seconds
    double last_purge_ = 0.0;
};

}  // namespace ZEL

#endif  // ZEL_MONITOR_METRIC_RECORDER_H_
