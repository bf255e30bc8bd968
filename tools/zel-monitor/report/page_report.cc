#include <stdexcept>

#include "report/formats.h"
#include "report/page.h"
#include "report/page_record.h"
#include "report/report_json.h"

namespace zel_monitor {
namespace {

class PageReport : public ReportWriter {
  public:
    explicit PageReport(const ScanSettings& settings) : settings_(settings) {
        if (!hasPage()) {
            throw std::runtime_error("--html: this program was built without the page (ZEL_BUILD_PAGE=OFF)");
        }
    }

    std::string inputFinished(const InputReport& /*report*/, const PageRecord* record) override {
        records_.push_back(record != nullptr ? record->json() : nullptr);
        return "";
    }

    std::string end(const std::vector<InputReport>& reports, int status) override {
        return pageHtml(
            {{"report", reportJson(reports, settings_, status)}, {"records", std::move(records_)}});
    }

  private:
    const ScanSettings& settings_;
    nlohmann::ordered_json records_ = nlohmann::ordered_json::array();
};

}  // namespace

std::unique_ptr<ReportWriter> makePageReport(const ScanSettings& settings) {
    return std::make_unique<PageReport>(settings);
}

}  // namespace zel_monitor
