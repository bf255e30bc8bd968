#ifndef ZEL_MONITOR_MANAGER_H_
#define ZEL_MONITOR_MANAGER_H_

#include <zel/base/c_object.h>
#include <zel/collector/info_collector.h>
#include <zel/message/message_center.h>
#include <zel/monitor/config_adapter.h>
#include <zel/monitor/data_monitor.h>
#include <zel/session/session.h>

#include <cstdint>
#include <map>
#include <memory>
#include <string>
#include <vector>

namespace ZEL {

/// What an embedding player talks to: hands out the message centre, finds sessions and collectors by number
/// and passes playback reports on. The registries keep nothing alive.
///
/// A player calls setConfigAdapter, initDataMonitors and start once, in this order and on one thread, before
/// its first report. Everything else may be called from any thread.
class ZELManager : public CObject, public ZELDataMonitor {
  public:
    /// The one of this process; made on first use and never destroyed. Sessions that end are taken out of its
    /// registry.
    static ZELManager& getInstance();

    /// A manager with a message centre of its own. Throws std::system_error if there is no thread to be had.
    ZELManager();

    /// Stops the message centre.
    ~ZELManager() override;

    /// The centre that sessions publish to; never null, and stopped when the manager goes.
    std::shared_ptr<MessageCenter> getMessageCenter();

    /// Where remote switches are read, here and in ZELHA::getInstance().
    void setConfigAdapter(std::shared_ptr<ConfigAdapter> adapter);

    /// Reads the switch "DisableDataMonitor" and, unless it is on, adds a ZELPlayerDataMonitor: one more with
    /// each call, so that a second call records every sample twice. Without an adapter it does nothing.
    void initDataMonitors();

    /// Logs a warning about a part that nothing sets so far. True, however often it is called.
    bool start();

    /// Hands a copy of the report to each monitor in turn, unless "DisableDataMonitor" was on. Throws what a
    /// monitor throws.
    void reportPeriodic(uint64_t source, ReportMap report) override;
    void reportPlaybackEnd(uint64_t source, ReportMap report) override;

    /// Makes a session known by its id, in place of any other with that id. Null is ignored.
    void registerSession(std::shared_ptr<ZELSession> session);

    /// Makes a session unknown again. A session that ends does so itself, with the manager of this process.
    void unregisterSession(int64_t session_id);

    /// Feeds the session's collector called `name`. False if the session is not registered or gone, or has no
    /// such collector.
    bool collectAccumulativeDataForSession(int64_t session_id, const std::string& name,
                                           const std::map<std::string, int64_t>* values);
    bool collectSerialDataForSession(int64_t session_id, const std::string& name, const std::string& key,
                                     const std::vector<float>& samples);

    /// Makes a collector known by `key`, in place of any other. False for null.
    bool registerCollector(int64_t key, std::shared_ptr<ZELInfoCollector> collector);

    /// Makes what `existing_key` stands for known by `new_key` too. False if there is nothing.
    bool aliasCollector(int64_t new_key, int64_t existing_key);

    /// Takes collectors that are gone out of the registry.
    void purgeCollectors();

    /// Feeds the collector known by `key`, if it is alive. Runs with the manager locked, so a collector must
    /// not call back. Always false, also if something was fed.
    bool collectSerialDataByKey(int64_t key, const std::string& entry_key, const std::vector<float>& samples);
    bool collectAccumulativeDataByKey(int64_t key, const std::map<std::string, int64_t>* values);

  private:
    struct State;
    std::unique_ptr<State> state_;
};

}  // namespace ZEL

#endif  // ZEL_MONITOR_MANAGER_H_
