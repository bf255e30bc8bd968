#include "input/live_damage.h"

#include <algorithm>

namespace zel_monitor {
namespace {

constexpr double kRecentS = 2.0;  // complaints that are further apart have nothing to do with each other

}  // namespace

void LiveDamage::saw(const MediaItem& item) {
    reached_s_ = std::max(reached_s_, timeOf(item));
    if (!notesOf(item).complaints.empty()) {
        recent_.add(item);
        for (const Complaint& complaint : recent_.list()) {
            see(complaint);
        }
        recent_.forgetBefore(reached_s_ - kRecentS);
    }
    if (run_ && reached_s_ > run_->event().span.end_s + rule_.gap_s + ZEL::kSlackS) {
        clear(false);
    }
}

void LiveDamage::end() {
    if (run_) {
        clear(true);
    }
}

void LiveDamage::see(Complaint complaint) {
    if (complaint.span.end_s <= settled_s_ || !isNoticed(complaint)) {
        return;
    }
    complaint.span.start_s = std::max(complaint.span.start_s, settled_s_);
    if (run_ && complaint.span.start_s > run_->event().span.end_s + rule_.gap_s) {
        clear(false);
    }
    if (run_) {
        run_->add(complaint);
    } else {
        run_.emplace(complaint);
        listener_.onSuspected(ZEL::EventKind::kDamage);
    }
    const ZEL::TimeSpan& span = run_->event().span;
    if (!raised_ && span.length() + ZEL::kSlackS >= rule_.min_s) {
        raised_ = true;
        listener_.onRaised(ZEL::EventKind::kDamage, span.start_s, std::max(reached_s_, span.end_s));
    }
}

void LiveDamage::clear(bool open_at_end) {
    ZEL::Event event = run_->event();
    event.open_at_end = open_at_end;
    settled_s_ = event.span.end_s;
    run_.reset();
    if (raised_) {
        raised_ = false;
        listener_.onCleared(event);
    }
}

}  // namespace zel_monitor
