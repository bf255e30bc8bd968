#ifndef ZEL_TOOLS_STANDARD_INPUT_H_
#define ZEL_TOOLS_STANDARD_INPUT_H_

#include <atomic>

#include "ffmpeg_handles.h"

namespace zel_monitor {

struct FreeInputContext {
    void operator()(AVIOContext* context) const {
        av_freep(&context->buffer);
        avio_context_free(&context);
    }
};
using InputContext = std::unique_ptr<AVIOContext, FreeInputContext>;

/// Standard input for FFmpeg, whose own would wait for a silent pipe without end: here a read fails soon
/// after `interrupted`, which may be null, has become true, on whichever thread it waits.
InputContext openStandardInput(const std::atomic<bool>* interrupted);

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_STANDARD_INPUT_H_
