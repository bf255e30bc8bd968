#ifndef ZEL_TOOLS_SCAN_PAGE_RECORD_H_
#define ZEL_TOOLS_SCAN_PAGE_RECORD_H_

#include <nlohmann/json.hpp>
#include <string>
#include <vector>

#include "scan/analyser.h"
#include "scan/series.h"
#include "scan/thumbnail.h"

namespace zel_monitor::scan {

/// What the page shows of one input beyond the report: the curves, and a small picture per event. Of bounded
/// size but for the pictures, and of those it keeps only so many.
class PageRecord {
  public:
    explicit PageRecord(double frame_rate);

    void onPicture(const Picture& picture, double time_s);
    void onSilencePeriod(Span period, const ZELAlgo::ZELAudioResult& result);
    void onVoicePeriod(Span period, const ZELAlgo::ZELAudioResult& result);
    void onRunBegan(Kind kind);
    void onEvent(const Event& event);

    nlohmann::ordered_json json() const;

  private:
    struct Thumbnail {
        Kind kind;
        double start_s;
        std::string address;
    };

    Series luma_;
    Series level_;
    Series voice_;
    const Picture* current_ = nullptr;
    Thumbnailer thumbnailer_;
    PerKind<FrameHandle> first_pictures_;  // of the runs that are open
    std::vector<Thumbnail> thumbnails_;
};

}  // namespace zel_monitor::scan

#endif  // ZEL_TOOLS_SCAN_PAGE_RECORD_H_
