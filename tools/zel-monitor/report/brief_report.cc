#include <fmt/format.h>
#include <string>

#include "cli/file_names.h"
#include "report/formats.h"

namespace zel_monitor {
namespace {

/// "black 2x 4.100 s, freeze 1x 2.000 s", or that there is nothing.
std::string foundText(const InputReport& report) {
    const ZEL::PerEventKind<Totals> totals = totalsOf(report);
    std::string text;
    for (const ZEL::EventKindInfo& info : ZEL::eventKinds()) {
        const Totals& mine = totals[indexOf(info.kind)];
        if (mine.events > 0) {
            text += fmt::format("{}{} {}x {:.3f} s", text.empty() ? "" : ", ", info.name, mine.events,
                                mine.total_s);
        }
    }
    return text.empty() ? "no events" : text;
}

class BriefReport : public ReportWriter {
  public:
    explicit BriefReport(const ScanSettings& settings) : policy_(settings.policy) {}

    std::string inputFinished(const InputReport& report, const PageRecord* /*record*/) override {
        const std::string verdict = verdictText(report, policy_);
        std::string text = printable(report.facts.input) + ": ";
        text += verdict.empty() && report.problem ? "NOT ANALYSED TO ITS END: " + *report.problem + "; "
                : verdict.empty()                 ? ""
                                                  : verdict + "; ";
        text += foundText(report);
        if (report.survey) {
            text += report.survey->deserves_scan ? " (survey: deserves a full scan)" : " (survey)";
        }
        return text + "\n";
    }

  private:
    const Policy& policy_;
};

}  // namespace

std::unique_ptr<ReportWriter> makeBriefReport(const ScanSettings& settings) {
    return std::make_unique<BriefReport>(settings);
}

}  // namespace zel_monitor
