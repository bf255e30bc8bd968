#ifndef ZEL_TOOLS_CLI_STOP_SIGNAL_H_
#define ZEL_TOOLS_CLI_STOP_SIGNAL_H_

#include <atomic>
#include <string>

namespace zel_monitor {

/// From now on the first Ctrl-C or SIGTERM only sets the flag that is returned, and cuts short the system
/// call that the main thread waits in; the second one ends the program. So does SIGHUP, of a terminal that is
/// closed, but it may come several times; whoever ignores it, as nohup does, is left so.
const std::atomic<bool>& watchStopSignals();

/// From now on SIGHUP stops nothing, but is counted here, for programs that take it as the wish for new
/// files.
const std::atomic<unsigned>& watchHangups();

/// Sets the same flag. Any thread.
void requestStop();

struct RemovalEntry;

/// Has a file removed by the signal that ends the program, for as long as this object lives. Serves a few
/// files at a time; more are not removed.
class RemovedWhenKilled {
  public:
    explicit RemovedWhenKilled(const std::string& path);
    RemovedWhenKilled(const RemovedWhenKilled&) = delete;
    RemovedWhenKilled& operator=(const RemovedWhenKilled&) = delete;
    ~RemovedWhenKilled();

  private:
    RemovalEntry* entry_ = nullptr;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_CLI_STOP_SIGNAL_H_
