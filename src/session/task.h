#ifndef ZEL_SRC_SESSION_TASK_H_
#define ZEL_SRC_SESSION_TASK_H_

#include <zel/session/frames.h>

#include <cstdint>
#include <memory>
#include <variant>

namespace ZEL {

/// One queued frame.
struct ZELTask {
    std::variant<std::shared_ptr<AudioFrame>, std::shared_ptr<VideoFrame>> frame;
    int64_t index = 0;  ///< the feeder's
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_TASK_H_
