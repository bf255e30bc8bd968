#ifndef ZEL_TOOLS_INPUT_DECODE_AHEAD_H_
#define ZEL_TOOLS_INPUT_DECODE_AHEAD_H_

#include <condition_variable>
#include <cstddef>
#include <deque>
#include <exception>
#include <mutex>
#include <optional>
#include <thread>

#include "input/media_source.h"

namespace zel_monitor {

/// Reads a source on a thread of its own, ahead of whoever takes the items, by no more than `most_bytes` of
/// decoded content: then the reader waits, and nothing is dropped.
class DecodeAhead {
  public:
    /// `source` outlives this object, and is left alone meanwhile.
    explicit DecodeAhead(MediaSource& source, size_t most_bytes = kMostBytes);
    DecodeAhead(const DecodeAhead&) = delete;
    DecodeAhead& operator=(const DecodeAhead&) = delete;
    /// Ends the reader, at the latest after the item at hand.
    ~DecodeAhead();

    /// The next item; none at the end. Throws what the source threw, after everything before it was taken.
    std::optional<MediaItem> next();

  private:
    static constexpr size_t kMostBytes = size_t{10} << 20;  // keeps both threads busy and the caches warm

    void run();
    bool push(MediaItem item);
    void end(std::exception_ptr failure);

    MediaSource& source_;
    const size_t most_bytes_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<MediaItem> items_;  // guarded by mutex_, like all below
    size_t bytes_ = 0;
    bool ended_ = false;
    bool stopping_ = false;
    std::exception_ptr failure_;
    std::thread reader_;  // last: uses every field above
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_INPUT_DECODE_AHEAD_H_
