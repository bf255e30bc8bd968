#ifndef ZEL_TOOLS_SERVE_SERVICE_H_
#define ZEL_TOOLS_SERVE_SERVICE_H_

#include <map>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "serve/alarm_outlets.h"
#include "serve/channel.h"
#include "serve/http_server.h"
#include "serve/settings.h"

namespace zel_monitor {

/// All streams of a configuration, with their alarms and the HTTP server. One thread at a time; the server's
/// threads look in meanwhile.
class Service {
  public:
    Service() = default;
    Service(const Service&) = delete;
    Service& operator=(const Service&) = delete;
    ~Service();

    /// Takes on a configuration, the first or another one: streams that are as before run on untouched.
    /// Throws std::runtime_error if an output cannot be opened; then the one before stays in force.
    void configure(const ServeSettings& settings);
    /// To be called about ten times a second.
    void tick();
    /// Goes on in new files, for whoever rotated the old ones.
    void reopen() { outlets_.reopen(); }

    int outputError() const { return outlets_.outputError(); }
    /// Of the HTTP server; 0 if there is none.
    int port() const { return server_ ? server_->port() : 0; }
    std::vector<StreamStatus> streams() const;

  private:
    void configureStreams(const std::vector<StreamSettings>& streams);
    void dismiss(std::shared_ptr<Channel> channel);
    HttpAnswer answer(const std::string& path);
    HttpAnswer answerFor(Channel& channel, const std::string& what);
    std::shared_ptr<Channel> channel(const std::string& name) const;
    std::vector<std::shared_ptr<Channel>> channels() const;

    AlarmOutlets outlets_;
    mutable std::mutex mutex_;
    std::map<std::string, std::shared_ptr<Channel>> channels_;  // guarded by mutex_
    std::vector<std::shared_ptr<Channel>> leaving_;             // until they have let go of their inputs
    std::string listen_;
    std::unique_ptr<HttpServer> server_;  // last: its threads use all above
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_SERVICE_H_
