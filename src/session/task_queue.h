#ifndef ZEL_SRC_SESSION_TASK_QUEUE_H_
#define ZEL_SRC_SESSION_TASK_QUEUE_H_

#include <array>
#include <condition_variable>
#include <cstddef>
#include <optional>
#include <utility>

#include "base/mutex.h"
#include "session/task.h"

namespace ZEL {

/// Tasks in the order in which they came, at most `kBound`. Needs no memory beyond its own.
template <size_t kBound>
class TaskRing {
  public:
    size_t size() const { return size_; }
    bool empty() const { return size_ == 0; }

    std::optional<ZELTask> pushDropOldest(ZELTask task) {
        std::optional<ZELTask> dropped;
        if (size_ == kBound) {
            dropped = takeOldest();
        }
        tasks_[(first_ + size_++) % kBound] = std::move(task);
        return dropped;
    }

    /// There must be one.
    ZELTask takeOldest() {
        ZELTask task = std::move(tasks_[first_]);
        first_ = (first_ + 1) % kBound;
        --size_;
        return task;
    }

  private:
    std::array<ZELTask, kBound> tasks_;
    size_t first_ = 0;
    size_t size_ = 0;
};

/// The two bounded lists between the feeding threads and the worker: one for video, one for audio (or a
/// single shared list). Whoever feeds never waits: the oldest task makes room. Any thread, but one consumer.
class TaskQueue {
  public:
    static constexpr size_t kSharedBound = 10;
    static constexpr size_t kAudioBound = 50;

    /// Where audio goes: a list of its own (the default) or the shared one. Before the first push.
    void setSeparateAudio(bool separate);

    /// The oldest task of the list if it was dropped to keep the bound.
    std::optional<ZELTask> pushDropOldest(ZELTask task);

    /// What one round of the worker has to do: the head of the shared list if there is one, then the head of
    /// the audio list if there is one, so that neither starves the other.
    struct Round {
        std::optional<ZELTask> shared;
        bool audio_waits;
    };

    /// Waits until a task is there; nothing once closed.
    std::optional<Round> waitForRound();

    /// The second half of a round whose `audio_waits` is true.
    ZELTask takeAudio();

    /// A closed queue still takes tasks but gives none out. It is closed at first.
    void open();
    void close();

    /// Takes a task out that is not to be worked on, if there is one.
    std::optional<ZELTask> discardOne();

    struct Sizes {
        size_t shared;
        size_t audio;
    };
    Sizes sizes() const;

  private:
    mutable Mutex mutex_;
    std::condition_variable_any ready_;
    TaskRing<kSharedBound> shared_ ZEL_GUARDED_BY(mutex_);
    TaskRing<kAudioBound> audio_ ZEL_GUARDED_BY(mutex_);
    bool separate_audio_ ZEL_GUARDED_BY(mutex_) = true;
    bool closed_ ZEL_GUARDED_BY(mutex_) = true;
    bool consumer_waits_ ZEL_GUARDED_BY(mutex_) = false;
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_TASK_QUEUE_H_
