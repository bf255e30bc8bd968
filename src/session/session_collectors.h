#ifndef ZEL_SRC_SESSION_SESSION_COLLECTORS_H_
#define ZEL_SRC_SESSION_SESSION_COLLECTORS_H_

#include <zel/collector/info_collector.h>
#include <zel/zel.h>

#include <map>
#include <memory>
#include <string>
#include <vector>

#include "base/mutex.h"

namespace ZEL {

/// The collectors of one session: one of each kind under its name, and those that were added. Any thread.
class SessionCollectors {
  public:
    SessionCollectors();

    /// Replaces the named collectors by fresh ones.
    void renewNamed();

    std::shared_ptr<ZELInfoCollector> find(const std::string& name) const;

    /// Null for an unknown name.
    std::shared_ptr<ZELInfoCollector> add(const std::string& name);

    /// Empties the collectors into `report`: the added ones in their order, then, unless left out, the named
    /// ones. The later of two equal keys wins.
    void collectInto(ReportMap& report, bool with_named);

    /// Drops all collectors; true if there were added ones.
    bool clear();

  private:
    using Named = std::map<std::string, std::shared_ptr<ZELInfoCollector>>;
    using Added = std::vector<std::shared_ptr<ZELInfoCollector>>;

    mutable Mutex mutex_;  // never held while a collector runs
    Named named_ ZEL_GUARDED_BY(mutex_);
    Added added_ ZEL_GUARDED_BY(mutex_);
};

}  // namespace ZEL

#endif  // ZEL_SRC_SESSION_SESSION_COLLECTORS_H_
