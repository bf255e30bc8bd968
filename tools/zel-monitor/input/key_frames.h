#ifndef ZEL_TOOLS_INPUT_KEY_FRAMES_H_
#define ZEL_TOOLS_INPUT_KEY_FRAMES_H_

#include <cstdint>
#include <set>
#include <utility>
#include <vector>

#include "input/complaint.h"
#include "input/ffmpeg_handles.h"

namespace zel_monitor {

/// Leaves of a video stream's packets those of key frames, each of which then lasts until the next one. The
/// other packets tell whether there is video all the while: where frames are missing, the key frame before
/// lasts that far only.
class KeyFrames {
  public:
    /// The packet of a key frame, its duration known, and the complaints about it and about all packets that
    /// came until the next one; or none.
    struct Ready {
        PacketHandle packet = {};
        std::vector<ComplaintReason> complaints = {};
    };

    /// The next packet of a stream with this time base and frame rate, or 0 if that is not known.
    /// Gives the key frame before, if this is another.
    Ready take(const AVPacket& packet, AVRational time_base, const std::vector<ComplaintReason>& complaints,
               double frame_rate);
    /// No more packets come. Gives the last key frame.
    Ready finish();

  private:
    void setDuration(const AVPacket* next);

    Ready held_;
    AVRational time_base_{};
    std::set<std::pair<int64_t, int64_t>> shown_;  // from when to when there is a frame, since the key frame
    int64_t unstamped_ = 0;                        // how long those frames last that say not when
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_KEY_FRAMES_H_
