#ifndef ZEL_SRC_SESSION_DROP_COUNTS_H_
#define ZEL_SRC_SESSION_DROP_COUNTS_H_

#include <zel/session/session.h>

#include <atomic>
#include <cstdint>

#include "session/task.h"

namespace ZEL {

/// Counts the frames of one session that leave its queue unexamined. While it lives, queueDropsOfSession
/// finds it by the session's id. Any thread.
class DropCounts {
  public:
    explicit DropCounts(int64_t session_id);
    ~DropCounts();
    DropCounts(const DropCounts&) = delete;
    DropCounts& operator=(const DropCounts&) = delete;

    void add(const ZELTask& dropped);

    QueueDrops get() const;

  private:
    const int64_t session_id_;
    std::atomic<uint64_t> video_{0};
    std::atomic<uint64_t> audio_{0};
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_DROP_COUNTS_H_
