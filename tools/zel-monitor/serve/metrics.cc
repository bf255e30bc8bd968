#include "serve/metrics.h"

#include <algorithm>
#include <cmath>
#include <prometheus/metric_family.h>
#include <prometheus/text_serializer.h>
#include <sstream>
#include <utility>

namespace zel_monitor {
namespace {

using prometheus::ClientMetric;
using prometheus::MetricFamily;
using prometheus::MetricType;
using Labels = std::vector<ClientMetric::Label>;

constexpr double kFullScale = 32768.0;
constexpr double kQuietestDb = -96.0;

double secondsOf(std::chrono::system_clock::time_point time) {
    return std::chrono::duration<double>(time.time_since_epoch()).count();
}

/// One metric with its series.
class Family {
  public:
    Family(std::vector<MetricFamily>& families, MetricType type, std::string name, std::string help)
        : families_(families) {
        family_.name = std::move(name);
        family_.help = std::move(help);
        family_.type = type;
    }
    Family(const Family&) = delete;
    Family& operator=(const Family&) = delete;
    ~Family() { families_.push_back(std::move(family_)); }

    void add(Labels labels, double value) {
        ClientMetric metric;
        metric.label = std::move(labels);
        (family_.type == MetricType::Counter ? metric.counter.value : metric.gauge.value) = value;
        family_.metric.push_back(std::move(metric));
    }

  private:
    std::vector<MetricFamily>& families_;
    MetricFamily family_;
};

Labels labelsOf(const StreamStatus& stream) {
    Labels labels = {{"stream", stream.name}};
    for (const auto& [name, value] : stream.labels) {
        labels.push_back({name, value});
    }
    return labels;
}

Labels with(Labels labels, std::string name, std::string_view value) {
    labels.push_back({std::move(name), std::string(value)});
    return labels;
}

double decibels(double level) {
    return level > 0.0 ? std::max(20.0 * std::log10(level / kFullScale), kQuietestDb) : kQuietestDb;
}

class Page {
  public:
    explicit Page(const std::vector<StreamStatus>& streams) : streams_(streams) {}

    void counter(std::string name, std::string help, double (*value)(const StreamStatus&)) {
        Family family(families_, MetricType::Counter, std::move(name), std::move(help));
        for (const StreamStatus& stream : streams_) {
            family.add(labelsOf(stream), value(stream));
        }
    }

    void gauge(std::string name, std::string help, std::optional<double> (*value)(const StreamStatus&)) {
        Family family(families_, MetricType::Gauge, std::move(name), std::move(help));
        for (const StreamStatus& stream : streams_) {
            if (const auto known = value(stream)) {
                family.add(labelsOf(stream), *known);
            }
        }
    }

    void perKind(MetricType type, std::string name, std::string help,
                 double (*value)(const AlarmBook::Tally&)) {
        Family family(families_, type, std::move(name), std::move(help));
        for (const StreamStatus& stream : streams_) {
            for (AlarmKind kind = 0; kind < kAlarmKinds; ++kind) {
                if (stream.enabled[kind]) {
                    family.add(with(labelsOf(stream), "kind", alarmName(kind)), value(stream.tallies[kind]));
                }
            }
        }
    }

    void states() {
        Family family(families_, MetricType::Gauge, "zel_stream_state",
                      "1 for the state that the stream is in, 0 for the others");
        for (const StreamStatus& stream : streams_) {
            for (size_t i = 0; i < kStreamStateNames.size(); ++i) {
                family.add(with(labelsOf(stream), "state", kStreamStateNames[i]),
                           stream.state == static_cast<StreamState>(i) ? 1.0 : 0.0);
            }
        }
    }

    void frames() {
        Family family(families_, MetricType::Counter, "zel_frames_total", "Frames decoded");
        for (const StreamStatus& stream : streams_) {
            family.add(with(labelsOf(stream), "track", "video"),
                       static_cast<double>(stream.counts.video_frames));
            family.add(with(labelsOf(stream), "track", "audio"),
                       static_cast<double>(stream.counts.audio_frames));
        }
    }

    void outlets(const AlarmOutlets::Counts& counts) {
        Family(families_, MetricType::Gauge, "zel_build_info", "Always 1; tells the version")
            .add({{"version", ZEL_VERSION}}, 1.0);
        Family(families_, MetricType::Counter, "zel_event_log_lost_total", "Lines that were not written")
            .add({}, static_cast<double>(counts.lost));
        hook(counts, MetricType::Counter, "zel_webhook_delivered_total", "Alarms that were taken",
             &Webhook::Counts::delivered);
        hook(counts, MetricType::Counter, "zel_webhook_failed_attempts_total", "Requests that failed",
             &Webhook::Counts::failed_attempts);
        hook(counts, MetricType::Counter, "zel_webhook_lost_total",
             "Alarms that were refused, or more than could wait", &Webhook::Counts::lost);
        hook(counts, MetricType::Gauge, "zel_webhook_waiting", "Alarms that wait", &Webhook::Counts::waiting);
    }

    std::string text() const {
        std::ostringstream out;
        prometheus::TextSerializer().Serialize(out, families_);
        return out.str();
    }

  private:
    void hook(const AlarmOutlets::Counts& counts, MetricType type, std::string name, std::string help,
              uint64_t Webhook::Counts::*value) {
        Family family(families_, type, std::move(name), std::move(help));
        for (size_t i = 0; i < counts.webhooks.size(); ++i) {
            const auto& hook = counts.webhooks[i];
            family.add({{"webhook", std::to_string(i + 1)}, {"url", hook.url}},
                       static_cast<double>(hook.counts.*value));
        }
    }

    const std::vector<StreamStatus>& streams_;
    std::vector<MetricFamily> families_;
};

}  // namespace

std::string metricsText(const std::vector<StreamStatus>& streams, const AlarmOutlets::Counts& outlets) {
    Page page(streams);
    page.outlets(outlets);
    page.gauge("zel_stream_up", "Whether frames come",
               [](const StreamStatus& s) { return std::optional(s.state == StreamState::kUp ? 1.0 : 0.0); });
    page.states();
    page.counter("zel_connections_total", "How often the input was opened",
                 [](const StreamStatus& s) { return static_cast<double>(s.connections); });
    page.perKind(MetricType::Gauge, "zel_fault_active", "Whether the alarm is active",
                 [](const AlarmBook::Tally& t) { return t.active ? 1.0 : 0.0; });
    page.perKind(MetricType::Counter, "zel_fault_seconds_total", "Seconds for which the fault was there",
                 [](const AlarmBook::Tally& t) { return t.seconds; });
    page.perKind(MetricType::Counter, "zel_events_total", "Alarms that were raised",
                 [](const AlarmBook::Tally& t) { return static_cast<double>(t.raised); });
    page.frames();
    page.counter("zel_frames_dropped_total", "Video frames that were not examined, to keep up",
                 [](const StreamStatus& s) { return static_cast<double>(s.dropped); });
    page.counter("zel_decode_errors_total", "Packets and frames that decoders complained about",
                 [](const StreamStatus& s) { return static_cast<double>(s.counts.damaged); });
    page.counter("zel_received_bytes_total", "Bytes read",
                 [](const StreamStatus& s) { return static_cast<double>(s.counts.bytes_read); });
    page.gauge("zel_last_frame_timestamp_seconds", "When the last frame came, in seconds since 1970",
               [](const StreamStatus& s) {
                   return s.last_frame ? std::optional(secondsOf(*s.last_frame)) : std::nullopt;
               });
    page.gauge("zel_luma", "Mean luma of the last frame, 0 to 255",
               [](const StreamStatus& s) { return s.luma; });
    page.gauge(
        "zel_audio_level_db", "Mean level of the last 0.1 s of audio, in dB below full scale",
        [](const StreamStatus& s) { return s.level ? std::optional(decibels(*s.level)) : std::nullopt; });
    page.gauge("zel_processing_delay_seconds", "How far the analysis is behind what the input holds ready",
               [](const StreamStatus& s) { return std::optional(s.delay_s); });
    return page.text();
}

}  // namespace zel_monitor
