#include <zel/collector/info_collector.h>

#include <algorithm>
#include <fmt/format.h>
#include <set>
#include <vector>

#include "cli/file_names.h"
#include "cli/time_text.h"
#include "watch/report_fields.h"
#include "watch/report_writer.h"

namespace zel_monitor {
namespace {

constexpr size_t kPositionWidth = 11;
constexpr size_t kNarrowestColumn = 5;
constexpr size_t kRowsPerHeader = 20;
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

class TextWriter : public ReportWriter {
  public:
    explicit TextWriter(Console& console) : console_(console) {}

    void begin(const MediaFacts& facts) override {
        std::copy_if(kReportFields.begin(), kReportFields.end(), std::back_inserter(fields_),
                     [&facts](const ReportField& field) {
                         return field.video ? facts.video.has_value() : facts.audio.has_value();
                     });
        console_.line(describe(facts));
    }

    void caption(double position, const std::string& text) override {
        console_.line(fmt::format("{:>{}}  {}", shortClockText(position), kPositionWidth,
                                  coloured(kCaptionColour, "now: " + text)));
    }

    void heartbeat(const ReportEvent& event) override {
        if (rows_++ % kRowsPerHeader == 0) {
            writeHeader();
        }
        std::string row = fmt::format("{:>{}}", shortClockText(event.position), kPositionWidth);
        for (const ReportField& field : fields_) {
            row += cell(field, event.report);
        }
        console_.line(row);
    }

    void finalReport(const ReportEvent& event, const Ending& ending) override {
        console_.line("");
        console_.line(fmt::format("Stopped at {}. In all:", shortClockText(event.position)));
        for (const ReportField& field : fields_) {
            if (const auto value = event.report.find(field.key); value != event.report.end()) {
                console_.line(fmt::format("{:>10}  {}", value->second, field.name));
            }
        }
        if (ending.counts.damaged > 0) {
            console_.line(
                fmt::format("{:>10}  damaged packets or frames in the input", ending.counts.damaged));
        }
        for (const AssessmentField& field : kAssessmentFields) {
            if (const auto answer = ending.assessments.find(field.assessment);
                answer != ending.assessments.end()) {
                console_.line(fmt::format(
                    "{:>10}  {}", figure(ZEL::getDouble(answer->second, field.key, 0.0)), field.name));
            }
        }
        console_.line("The first of each kind starts its counter at 0; later ones raise it.");
    }

  private:
    static size_t widthOf(const ReportField& field) {
        return std::max(kNarrowestColumn, field.heading.size()) + 1;
    }

    std::string coloured(std::string_view colour, std::string text) const {
        return console_.colour() ? fmt::format("{}{}{}", colour, text, kPlainColour) : text;
    }

    void writeHeader() {
        std::string header = fmt::format("{:>{}}", "position", kPositionWidth);
        for (const ReportField& field : fields_) {
            header += fmt::format("{:>{}}", field.heading, widthOf(field));
        }
        console_.line(coloured(kHeaderColour, header));
    }

    /// A figure in its column. What has risen carries a plus sign; a counter's first event, which does not
    /// raise it, reads "first".
    std::string cell(const ReportField& field, const ReportMap& report) {
        const auto value = report.find(field.key);
        if (value == report.end()) {
            return fmt::format("{:>{}}", kNotSeen, widthOf(field));
        }
        if (field.kind != FieldKind::kEvents) {
            return fmt::format("{:>{}}", value->second, widthOf(field));
        }
        const bool first = seen_.insert(field.key).second;
        if (value->second == "0") {
            const std::string text = fmt::format("{:>{}}", first ? "first" : "0", widthOf(field));
            return first ? coloured(kRisenColour, text) : text;
        }
        return coloured(kRisenColour, fmt::format("{:>{}}", '+' + value->second, widthOf(field)));
    }

    Console& console_;
    std::vector<ReportField> fields_;
    std::set<std::string_view> seen_;
    size_t rows_ = 0;
};

}  // namespace

std::unique_ptr<ReportWriter> makeTextWriter(Console& console) {
    return std::make_unique<TextWriter>(console);
}

}  // namespace zel_monitor
