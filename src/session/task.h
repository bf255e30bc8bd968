#ifndef ZEL_SRC_SESSION_TASK_H_
#define ZEL_SRC_SESSION_TASK_H_

#include <zel/session/frames.h>

#include <memory>
#include <variant>

namespace ZEL {

/// One queued frame.
using ZELTask = std::variant<std::shared_ptr<AudioFrame>, std::shared_ptr<VideoFrame>>;

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_TASK_H_
