#include <zel/collector/info_collector.h>

#include <algorithm>
#include <fmt/format.h>
#include <mutex>
#include <set>
#include <string_view>
#include <vector>

#include "cli/file_names.h"
#include "cli/time_text.h"
#include "watch/formats.h"
#include "watch/report_fields.h"

namespace zel_monitor {
namespace {

constexpr size_t kTimeWidth = 8;
constexpr size_t kPositionWidth = 9;
constexpr size_t kSecondWidth = 13;  // where the second track's row begins
constexpr size_t kNarrowestColumn = 5;
constexpr size_t kHeartbeatsPerHeader = 20;
constexpr std::string_view kNotSeen = ".";

constexpr std::string_view kRisenColour = "\033[1;31m";
constexpr std::string_view kHeaderColour = "\033[2m";
constexpr std::string_view kCaptionColour = "\033[36m";
constexpr std::string_view kPlainColour = "\033[0m";

/// "match.mp4: h264 1920x1080 25 fps, aac 48000 Hz 2 channels, 0:02:00.0".
std::string describe(const MediaFacts& facts) {
    std::string text = printable(facts.input) + ':';
    std::string_view separator = " ";
    if (facts.video) {
        text +=
            fmt::format("{}{} {}x{}", separator, facts.video->codec, facts.video->width, facts.video->height);
        if (facts.video->frame_rate > 0) {
            text += fmt::format(" {:.4g} fps", facts.video->frame_rate);
        }
        separator = ", ";
    }
    if (facts.audio) {
        text +=
            fmt::format("{}{} {} Hz {} channel{}", separator, facts.audio->codec, facts.audio->sample_rate,
                        facts.audio->channels, facts.audio->channels == 1 ? "" : "s");
        separator = ", ";
    }
    if (facts.duration) {
        text += fmt::format("{}{}{}", separator, facts.duration_estimated ? "about " : "",
                            shortClockText(*facts.duration));
    }
    return text;
}

/// Three significant digits at least, and no exponent.
std::string figure(double value) {
    return fmt::format("{:.{}f}", value, value == 0 || value >= 100 ? 0 : value >= 1 ? 1 : 3);
}

/// When, by the clock on the wall and in the stream.
std::string placeText(std::chrono::system_clock::time_point time, double position) {
    return fmt::format("{:>{}}{:>{}}", localClockText(time), kTimeWidth, secondClockText(position),
                       kPositionWidth);
}

/// A figure of the table.
struct Column {
    enum class Of {
        kAmount,   ///< fed since the last heartbeat
        kDrops,    ///< dropped since then
        kCounter,  ///< verdicts since then
        kLevel,    ///< latest value
    };
    Of of;
    const char* key;  ///< null for drops
    std::string_view heading;

    size_t width() const { return std::max(kNarrowestColumn, heading.size()) + 1; }
};

/// The figures of one track, which are a row of their own: together they would be too wide for a terminal.
struct Track {
    bool video;
    std::string_view name;
    std::vector<Column> columns;
};

Track trackOf(bool video) {
    Track track{.video = video, .name = video ? "video" : "audio", .columns = {}};
    track.columns.push_back({Column::Of::kAmount, video ? "zel_vframes" : "zel_aframes", "frames"});
    track.columns.push_back({Column::Of::kDrops, nullptr, "drops"});
    for (const CounterField& field : kCounterFields) {
        const ZEL::EventKindInfo& info = infoOf(field.kind);
        if (video == (info.source == ZEL::EventSource::kVideo)) {
            track.columns.push_back({Column::Of::kCounter, field.key, info.name});
        }
    }
    for (const LevelField& field : kAudioLevelFields) {
        if (!video) {
            track.columns.push_back({Column::Of::kLevel, field.key, field.heading});
        }
    }
    return track;
}

class HeartbeatTable : public HeartbeatWriter {
  public:
    explicit HeartbeatTable(Console& console) : console_(console) {}

    void begin(const MediaFacts& facts) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        tracks_.clear();
        if (facts.video) {
            tracks_.push_back(trackOf(true));
        }
        if (facts.audio) {
            tracks_.push_back(trackOf(false));
        }
        console_.line(describe(facts));
    }

    void caption(double position, const std::string& text) override {
        line(std::chrono::system_clock::now(), position, coloured(kCaptionColour, "now: " + text));
    }

    void fault(const FaultNotice& notice) override {
        const std::string_view name = infoOf(notice.kind).name;
        line(notice.time, notice.position,
             notice.length_s ? fmt::format("cleared: {}, {:.1f} s from {}", name, *notice.length_s,
                                           shortClockText(notice.start_s))
                             : coloured(kRisenColour, fmt::format("raised: {}, since {}", name,
                                                                  shortClockText(notice.start_s))));
    }

    void interrupted(const Interruption& interruption) override {
        line(interruption.time, interruption.position, coloured(kRisenColour, interruption.reason));
    }

    void heartbeat(const ReportEvent& event) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        if (heartbeats_++ % kHeartbeatsPerHeader == 0) {
            writeHeader();
        }
        for (const Track& track : tracks_) {
            std::string row = isFirst(track) ? placeText(event.time, event.position)
                                             : fmt::format("{:>{}}", track.name, kSecondWidth);
            for (const Column& column : track.columns) {
                row += cell(column, track, event);
            }
            console_.line(row);
        }
    }

    void finalReport(const ReportEvent& event, const Ending& ending) override {
        const std::lock_guard<std::mutex> lock(mutex_);
        console_.line("");
        console_.line(fmt::format("Stopped at {}. In all:", shortClockText(event.position)));
        for (const Track& track : tracks_) {
            writeTotals(track, event);
        }
        if (ending.counts.damaged > 0) {
            writeTotal(std::to_string(ending.counts.damaged), "damaged packets or frames in the input");
        }
        for (const AssessmentField& field : kAssessmentFields) {
            if (const auto answer = ending.assessments.find(field.assessment);
                answer != ending.assessments.end()) {
                writeTotal(figure(ZEL::getDouble(answer->second, field.key, 0.0)), field.name);
            }
        }
        console_.line("The first of each kind starts its counter at 0; later ones raise it.");
    }

  private:
    void line(std::chrono::system_clock::time_point time, double position, const std::string& text) {
        console_.line(fmt::format("{}  {}", placeText(time, position), text));
    }

    bool isFirst(const Track& track) const { return &track == &tracks_.front(); }

    std::string coloured(std::string_view colour, std::string text) const {
        return console_.colour() ? fmt::format("{}{}{}", colour, text, kPlainColour) : text;
    }

    void writeHeader() {
        for (const Track& track : tracks_) {
            std::string header =
                isFirst(track) ? fmt::format("{:>{}}{:>{}}", "time", kTimeWidth, "position", kPositionWidth)
                               : fmt::format("{:>{}}", track.name, kSecondWidth);
            for (const Column& column : track.columns) {
                header += fmt::format("{:>{}}", column.heading, column.width());
            }
            console_.line(coloured(kHeaderColour, header));
        }
    }

    /// A figure in its column. What has risen carries a plus sign; a counter's first event, which does not
    /// raise it, reads "first".
    std::string cell(const Column& column, const Track& track, const ReportEvent& event) {
        if (column.of == Column::Of::kDrops) {
            return event.drops ? risen(column, dropsOf(track, event)) : plain(column, kNotSeen);
        }
        const auto value = event.report.find(column.key);
        if (value == event.report.end()) {
            return plain(column, kNotSeen);
        }
        if (column.of != Column::Of::kCounter) {
            return plain(column, value->second);
        }
        if (seen_.insert(column.key).second && value->second == "0") {
            return coloured(kRisenColour, plain(column, "first"));
        }
        return risen(column, value->second);
    }

    static std::string plain(const Column& column, std::string_view text) {
        return fmt::format("{:>{}}", text, column.width());
    }

    std::string risen(const Column& column, const std::string& rise) const {
        return rise == "0" ? plain(column, rise) : coloured(kRisenColour, plain(column, '+' + rise));
    }

    static std::string dropsOf(const Track& track, const ReportEvent& event) {
        return std::to_string(track.video ? event.drops->video : event.drops->audio);
    }

    void writeTotals(const Track& track, const ReportEvent& event) {
        const auto write = [&](const char* key, std::string_view name) {
            if (const auto value = event.report.find(key); value != event.report.end()) {
                writeTotal(value->second, name);
            }
        };
        write(track.columns.front().key, fmt::format("{} frames fed", track.name));
        if (event.drops) {
            writeTotal(dropsOf(track, event),
                       fmt::format("{} frames dropped, not examined in time", track.name));
        }
        for (const CounterField& field : kCounterFields) {
            const ZEL::EventKindInfo& info = infoOf(field.kind);
            if (track.video == (info.source == ZEL::EventSource::kVideo)) {
                write(field.key, fmt::format("{}{}", info.name, field.unit));
            }
        }
        for (const LevelField& field : kAudioLevelFields) {
            if (!track.video) {
                write(field.key, field.name);
            }
        }
    }

    void writeTotal(std::string_view figure, std::string_view name) {
        console_.line(fmt::format("{:>10}  {}", figure, name));
    }

    Console& console_;
    std::mutex mutex_;  // guards all below
    std::vector<Track> tracks_;
    std::set<std::string_view> seen_;
    size_t heartbeats_ = 0;
};

}  // namespace

std::unique_ptr<HeartbeatWriter> makeHeartbeatTable(Console& console, const std::string& /*name*/) {
    return std::make_unique<HeartbeatTable>(console);
}

}  // namespace zel_monitor
