#ifndef ZEL_TOOLS_INPUT_CONTAINER_LIBRARY_LOG_H_
#define ZEL_TOOLS_INPUT_CONTAINER_LIBRARY_LOG_H_

#include <cstdint>
#include <vector>

#include "input/complaint.h"
#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// Hears what a decoder only logs when something is wrong with its packets, on whichever of its threads.
class LogListener {
  public:
    LogListener() = default;
    LogListener(const LogListener&) = delete;
    LogListener& operator=(const LogListener&) = delete;
    virtual ~LogListener() = default;

    /// `packet` is what the decoder's `reordered_opaque` was when it was given the packet. `share` of the
    /// frame is hit.
    virtual void onLogged(ComplaintReason reason, int64_t packet, double share) = 0;
};

/// From now on the listener, which outlives the decoder, hears what that complains of. Before it is opened.
void listenTo(AVCodecContext& decoder, LogListener& listener);

/// While it lives, what demuxers complain of on this thread is put down, each reason once.
class DemuxerLog {
  public:
    /// `heard` outlives this object.
    explicit DemuxerLog(std::vector<ComplaintReason>& heard);
    DemuxerLog(const DemuxerLog&) = delete;
    DemuxerLog& operator=(const DemuxerLog&) = delete;
    ~DemuxerLog();

  private:
    std::vector<ComplaintReason>* before_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_CONTAINER_LIBRARY_LOG_H_
