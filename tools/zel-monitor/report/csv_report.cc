#include <fmt/format.h>

#include "cli/time_text.h"
#include "report/csv_field.h"
#include "report/formats.h"

namespace zel_monitor {
namespace {

std::string evidence(const ZEL::Event& event) {
    return event.evidence ? fmt::format("{:.6f},{:.6f}", event.evidence->value, event.evidence->limit) : ",";
}

/// A row per event, and one of the kind "status" per input: the columns of the one are empty in the other.
/// A run of surveys has a column more, which says what is one.
class CsvReport : public ReportWriter {
  public:
    explicit CsvReport(const ScanSettings& settings) : settings_(settings) {}

    std::string begin() override {
        const std::string_view columns =
            "input,kind,start_s,end_s,duration_s,share,open_at_end,value,limit,complete,problem,verdict";
        return fmt::format("{}{}\n", columns, settings_.survey ? ",survey" : "");
    }

    std::string event(const std::string& input, const ZEL::Event& event, bool of_survey) override {
        return fmt::format("{},{},{:.6f},{:.6f},{:.6f},{:.6f},{},{},,,{}\n", csvField(input),
                           infoOf(event.kind).name, toMicroseconds(event.span.start_s),
                           toMicroseconds(event.span.end_s), toMicroseconds(event.span.length()), event.share,
                           event.open_at_end, evidence(event), mark(of_survey));
    }

    std::string inputFinished(const InputReport& report, const PageRecord* /*record*/) override {
        const Verdict verdict = verdictOn(report, settings_.policy);
        return fmt::format("{},status,,,,,,,,{},{},{}{}\n", csvField(report.facts.input), !report.problem,
                           csvField(report.problem.value_or("")),
                           verdict == Verdict::kNone ? "" : nameOf(verdict), mark(report.survey.has_value()));
    }

  private:
    std::string_view mark(bool of_survey) const {
        return !settings_.survey ? "" : of_survey ? ",true" : ",false";
    }

    const ScanSettings& settings_;
};

}  // namespace

std::unique_ptr<ReportWriter> makeCsvReport(const ScanSettings& settings) {
    return std::make_unique<CsvReport>(settings);
}

}  // namespace zel_monitor
