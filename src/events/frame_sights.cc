#include "events/frame_sights.h"

#include <zel/events/analyser.h>

#include <algorithm>
#include <cstddef>

namespace ZEL {
namespace {

/// How much of the chroma is zero, as in a frame that was never written.
double zeroShare(const ZELJudges::Cells& cells) {
    size_t zeros = 0;
    for (size_t i = 0; i < cells.cb.size(); ++i) {
        zeros += cells.cb[i] == 0 && cells.cr[i] == 0 ? 1U : 0U;
    }
    return cells.cb.empty() ? 1.0 : static_cast<double>(zeros) / static_cast<double>(cells.cb.size());
}

}  // namespace

const std::vector<Sighting>& FrameSights::frame(TimeSpan shown, const ZELAlgo::ZELVideoResult& verdicts,
                                                const ZELJudges::MeasuredFrame& measured) {
    settled_.clear();
    const ZELAlgo::ZELAlgoConfig config = EventAnalyser::detectorConfig();
    settled_.push_back({EventKind::kGreen, shown, sightOf(verdicts.screen_type == ZELAlgo::kScreenGreen),
                        Evidence{zeroShare(measured.cells), config.green_screen_ratio}});
    if (measured.cells.luma.empty()) {  // smaller than a cell: nothing that a judge could look at
        settled_.push_back(
            {EventKind::kBlack, shown, sightOf(verdicts.screen_type == ZELAlgo::kScreenBlack)});
        take(judges_.finish());  // what larger frames before it have left
        return settled_;
    }
    take(judges_.feed(measured, shown.start_s, shown.length()));
    return settled_;
}

const std::vector<Sighting>& FrameSights::finish() {
    settled_.clear();
    take(judges_.finish());
    return settled_;
}

void FrameSights::take(const ZELJudges::VideoJudges::Settled& settled) {
    append(settled_, EventKind::kBlack, settled.black);
    append(settled_, EventKind::kBlock, settled.block);
    append(settled_, EventKind::kFreeze, settled.freeze);
    append(settled_, EventKind::kUnderexposed, settled.under);
    append(settled_, EventKind::kOverexposed, settled.over);
}

}  // namespace ZEL
