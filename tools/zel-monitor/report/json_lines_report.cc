#include "report/formats.h"
#include "report/report_json.h"

namespace zel_monitor {
namespace {

using Json = nlohmann::ordered_json;

class JsonLinesReport : public ReportWriter {
  public:
    explicit JsonLinesReport(const ScanSettings& settings) : policy_(settings.policy) {}

    std::string event(const std::string& input, const ZEL::Event& event, bool of_survey) override {
        Json line = {{"input", input}};
        line.update(eventJson(event));
        return text(line, of_survey);
    }

    std::string inputFinished(const InputReport& report, const PageRecord* /*record*/) override {
        return text({{"input", report.facts.input},
                     {"kind", "status"},
                     {"complete", !report.problem},
                     {"problem", problemJson(report)},
                     {"verdict", verdictJson(report, policy_)}},
                    report.survey.has_value());
    }

  private:
    static std::string text(Json line, bool of_survey) {
        if (of_survey) {
            line["survey"] = true;
        }
        return jsonText(line, false);
    }

    const Policy& policy_;
};

}  // namespace

std::unique_ptr<ReportWriter> makeJsonLinesReport(const ScanSettings& settings) {
    return std::make_unique<JsonLinesReport>(settings);
}

}  // namespace zel_monitor
