#include <fmt/format.h>

#include "cli/time_text.h"
#include "report/formats.h"

namespace zel_monitor {
namespace {

/// Quotes what a comma, a quote or a line end would tear apart.
std::string field(const std::string& text) {
    if (text.find_first_of(",\"\r\n") == std::string::npos) {
        return text;
    }
    std::string quoted = "\"";
    for (const char c : text) {
        quoted += c == '"' ? "\"\"" : std::string(1, c);
    }
    return quoted + '"';
}

std::string evidence(const ZEL::Event& event) {
    return event.evidence ? fmt::format("{:.6f},{:.6f}", event.evidence->value, event.evidence->limit) : ",";
}

/// A row per event, and one of the kind "status" per input: the columns of the one are empty in the other.
class CsvReport : public ReportWriter {
  public:
    explicit CsvReport(const ScanSettings& settings) : policy_(settings.policy) {}

    std::string begin() override {
        return "input,kind,start_s,end_s,duration_s,share,open_at_end,value,limit,complete,problem,verdict\n";
    }

    std::string event(const std::string& input, const ZEL::Event& event) override {
        return fmt::format("{},{},{:.6f},{:.6f},{:.6f},{:.6f},{},{},,,\n", field(input),
                           infoOf(event.kind).name, toMicroseconds(event.span.start_s),
                           toMicroseconds(event.span.end_s), toMicroseconds(event.span.length()), event.share,
                           event.open_at_end, evidence(event));
    }

    std::string inputFinished(const InputReport& report, const PageRecord* /*record*/) override {
        const Verdict verdict = verdictOn(report, policy_);
        return fmt::format("{},status,,,,,,,,{},{},{}\n", field(report.facts.input), !report.problem,
                           field(report.problem.value_or("")),
                           verdict == Verdict::kNone ? "" : nameOf(verdict));
    }

  private:
    const Policy& policy_;
};

}  // namespace

std::unique_ptr<ReportWriter> makeCsvReport(const ScanSettings& settings) {
    return std::make_unique<CsvReport>(settings);
}

}  // namespace zel_monitor
