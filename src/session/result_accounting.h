#ifndef ZEL_SRC_SESSION_RESULT_ACCOUNTING_H_
#define ZEL_SRC_SESSION_RESULT_ACCOUNTING_H_

#include <zel/algo/algo_types.h>
#include <zel/message/message_center.h>
#include <zel/zel.h>

#include <atomic>
#include <cstdint>
#include <map>
#include <memory>
#include <string>

#include "base/mutex.h"

namespace ZEL {

/// Named events and latest values of one session.
struct EventSnapshot {
    std::map<std::string, int32_t> counters;
    std::map<std::string, int32_t> gauges;
};

/// How a detector call went, beside its verdicts.
struct DetectorCall {
    bool status;
    double seconds;
};

/// Turns detector results into counters, gauges and, if wanted, messages. The worker writes, reports read.
class ResultAccounting {
  public:
    explicit ResultAccounting(std::weak_ptr<MessageCenter> center);

    void setPublish(bool publish);

    void account(const DetectorCall& call, const ZELAlgo::ZELVideoResult& result);
    void account(const DetectorCall& call, const ZELAlgo::ZELAudioResult& result);

    EventSnapshot snapshot() const;

  private:
    void bump(const char* counter) ZEL_REQUIRES(mutex_);
    /// Null if nothing is to be published.
    std::shared_ptr<MessageCenter> publishingCenter() const;

    const std::weak_ptr<MessageCenter> center_;
    std::atomic<bool> publish_{false};
    mutable Mutex mutex_;
    EventSnapshot events_ ZEL_GUARDED_BY(mutex_);
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_RESULT_ACCOUNTING_H_
