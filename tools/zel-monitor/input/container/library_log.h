#ifndef ZEL_TOOLS_INPUT_CONTAINER_LIBRARY_LOG_H_
#define ZEL_TOOLS_INPUT_CONTAINER_LIBRARY_LOG_H_

#include <cstdint>
#include <optional>

#include "input/container/stream_complaints.h"
#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// Hears what FFmpeg only logs when something is wrong with an input. A decoder calls it on any thread.
class LogListener {
  public:
    LogListener() = default;
    LogListener(const LogListener&) = delete;
    LogListener& operator=(const LogListener&) = delete;
    virtual ~LogListener() = default;

    /// `packet` is what `reordered_opaque` of the decoder was when it was given the packet, or none where a
    /// demuxer complains. `share` of the frame is hit.
    virtual void onLogged(ComplaintReason reason, std::optional<int64_t> packet, double share) = 0;
};

/// From now on the listener, which outlives the decoder, hears what that complains of. Before it is opened.
void listenTo(AVCodecContext& decoder, LogListener& listener);

/// While it lives the listener hears what demuxers complain of on this thread.
class DemuxerLog {
  public:
    explicit DemuxerLog(LogListener& listener);
    DemuxerLog(const DemuxerLog&) = delete;
    DemuxerLog& operator=(const DemuxerLog&) = delete;
    ~DemuxerLog();

  private:
    LogListener* before_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_LIBRARY_LOG_H_
