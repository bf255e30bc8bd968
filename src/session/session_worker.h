#ifndef ZEL_SRC_SESSION_SESSION_WORKER_H_
#define ZEL_SRC_SESSION_SESSION_WORKER_H_

#include <zel/algo/algo_types.h>

#include <cstdint>
#include <memory>
#include <string>
#include <thread>
#include <vector>

#include "session/task.h"

namespace ZELAlgo {
class AlgoFacade;
}

namespace ZEL {

class DropCounts;
class IZELResultListener;
class ResultAccounting;
class TaskQueue;

/// The thread that takes tasks off a queue and runs the detectors on them. start and stop are called by one
/// thread at a time; stopped at first.
class SessionWorker {
  public:
    SessionWorker(TaskQueue& queue, ResultAccounting& accounting, DropCounts& drops);
    ~SessionWorker();
    SessionWorker(const SessionWorker&) = delete;
    SessionWorker& operator=(const SessionWorker&) = delete;

    /// Runs with fresh detectors until stopped. Throws std::system_error if no thread is to be had.
    void start(const std::string& thread_name, const ZELAlgo::ZELAlgoConfig& config,
               std::shared_ptr<IZELResultListener> listener = nullptr);

    /// Returns when the task in work is done. Tasks that still wait stay in the queue.
    void stop();

    bool running() const;

  private:
    void run(ZELAlgo::AlgoFacade& algo);
    /// A frame that cannot be examined, for lack of memory, is dropped.
    void process(ZELAlgo::AlgoFacade& algo, const ZELTask& task);
    void examine(ZELAlgo::AlgoFacade& algo, const VideoFrame& frame, int64_t index);
    void examine(ZELAlgo::AlgoFacade& algo, const AudioFrame& frame, int64_t index);

    TaskQueue& queue_;
    ResultAccounting& accounting_;
    DropCounts& drops_;
    std::shared_ptr<IZELResultListener> listener_;  // changed while the worker is stopped
    std::vector<int16_t> mono_;                     // worker thread only
    std::thread thread_;
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_SESSION_WORKER_H_
