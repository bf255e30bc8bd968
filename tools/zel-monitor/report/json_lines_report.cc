#include "report/formats.h"
#include "report/report_json.h"

namespace zel_monitor {
namespace {

using Json = nlohmann::ordered_json;

class JsonLinesReport : public ReportWriter {
  public:
    explicit JsonLinesReport(const ScanSettings& settings) : policy_(settings.policy) {}

    std::string event(const std::string& input, const ZEL::Event& event) override {
        Json line = {{"input", input}};
        line.update(eventJson(event));
        return jsonText(line, false);
    }

    std::string inputFinished(const InputReport& report, const PageRecord* /*record*/) override {
        return jsonText({{"input", report.facts.input},
                         {"kind", "status"},
                         {"complete", !report.problem},
                         {"problem", problemJson(report)},
                         {"verdict", verdictJson(report, policy_)}},
                        false);
    }

  private:
    const Policy& policy_;
};

}  // namespace

std::unique_ptr<ReportWriter> makeJsonLinesReport(const ScanSettings& settings) {
    return std::make_unique<JsonLinesReport>(settings);
}

}  // namespace zel_monitor
