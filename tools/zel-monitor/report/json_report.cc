#include "report/formats.h"
#include "report/report_json.h"

namespace zel_monitor {
namespace {

class JsonReport : public ReportWriter {
  public:
    explicit JsonReport(const ScanSettings& settings) : settings_(settings) {}

    std::string end(const std::vector<InputReport>& reports, int status) override {
        return jsonText(reportJson(reports, settings_, status), true);
    }

  private:
    const ScanSettings& settings_;
};

}  // namespace

std::unique_ptr<ReportWriter> makeJsonReport(const ScanSettings& settings) {
    return std::make_unique<JsonReport>(settings);
}

}  // namespace zel_monitor
