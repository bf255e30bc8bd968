#include "serve/service.h"

#include <algorithm>
#include <utility>

#include "report/report_json.h"
#include "serve/metrics.h"
#include "serve/status_json.h"
#include "serve/wall_page.h"

namespace zel_monitor {
namespace {

constexpr const char* kHtml = "text/html; charset=utf-8";

HttpAnswer notFound(const std::string& what) {
    return {.status = 404, .body = what + '\n'};
}

HttpAnswer wall() {
    HttpAnswer answer{.type = kHtml};
    for (const std::string_view piece : wallPage()) {
        answer.body += piece;
    }
    return answer.body.empty()
               ? HttpAnswer{.body =
                                "This program was built without its pages (ZEL_BUILD_PAGE=OFF). There are "
                                "/api/streams, /metrics and /healthz.\n"}
               : answer;
}

}  // namespace

Service::~Service() {
    server_.reset();
    std::vector<std::shared_ptr<Channel>> all = std::move(leaving_);
    for (const auto& [name, channel] : channels_) {
        all.push_back(channel);
    }
    for (const auto& channel : all) {
        channel->requestStop();  // all of them first, so that they end together
    }
}

void Service::configure(const ServeSettings& settings) {
    std::unique_ptr<HttpServer> server;
    const bool other_address = settings.listen != listen_;
    if (other_address && !settings.listen.empty()) {
        server = std::make_unique<HttpServer>(settings.listen,
                                              [this](const std::string& path) { return answer(path); });
    }
    outlets_.configure(settings.events, settings.webhooks);
    if (other_address) {
        server_ = std::move(server);
        listen_ = settings.listen;
    }
    configureStreams(settings.streams);
}

void Service::configureStreams(const std::vector<StreamSettings>& streams) {
    std::map<std::string, std::shared_ptr<Channel>> wanted;
    for (const StreamSettings& stream : streams) {
        const auto before = channels_.find(stream.name);
        if (before != channels_.end() && before->second->settings() == stream) {
            wanted[stream.name] = before->second;
        } else if (before != channels_.end()) {
            before->second->requestStop();  // before its successor raises anything
        }
    }
    for (const StreamSettings& stream : streams) {
        if (!wanted.contains(stream.name)) {
            wanted[stream.name] = std::make_shared<Channel>(stream, outlets_);
        }
    }
    {
        const std::lock_guard<std::mutex> lock(mutex_);
        std::swap(channels_, wanted);
    }
    for (auto& [name, channel] : wanted) {
        if (channels_.find(name) == channels_.end() || channels_.at(name) != channel) {
            dismiss(std::move(channel));
        }
    }
}

void Service::dismiss(std::shared_ptr<Channel> channel) {
    channel->requestStop();
    leaving_.push_back(std::move(channel));
}

void Service::tick() {
    const Moment now = Moment::now();
    for (const auto& channel : channels()) {
        channel->tick(now);
    }
    leaving_.erase(std::remove_if(leaving_.begin(), leaving_.end(),
                                  [](const auto& channel) { return channel->finished(); }),
                   leaving_.end());
}

std::vector<std::shared_ptr<Channel>> Service::channels() const {
    const std::lock_guard<std::mutex> lock(mutex_);
    std::vector<std::shared_ptr<Channel>> all;
    for (const auto& [name, channel] : channels_) {
        all.push_back(channel);
    }
    return all;
}

std::shared_ptr<Channel> Service::channel(const std::string& name) const {
    const std::lock_guard<std::mutex> lock(mutex_);
    const auto found = channels_.find(name);
    return found != channels_.end() ? found->second : nullptr;
}

std::vector<StreamStatus> Service::streams() const {
    std::vector<StreamStatus> streams;
    const Moment now = Moment::now();
    for (const auto& channel : channels()) {
        streams.push_back(channel->status(now));
    }
    return streams;
}

HttpAnswer Service::answer(const std::string& path) {
    if (path == "/healthz") {
        return {.body = "ok\n"};
    }
    if (path == "/metrics") {
        return {.type = "text/plain; version=0.0.4; charset=utf-8",
                .body = metricsText(streams(), outlets_.counts())};
    }
    if (path == "/api/streams") {
        return {.type = "application/json",
                .body = jsonText(statusJson(streams(), std::chrono::system_clock::now()), false)};
    }
    if (path == "/") {
        return wall();
    }
    constexpr std::string_view kStreams = "/streams/";
    const size_t slash = path.rfind('/');
    if (path.starts_with(kStreams) && slash > kStreams.size()) {
        if (const auto found = channel(path.substr(kStreams.size(), slash - kStreams.size()))) {
            return answerFor(*found, path.substr(slash + 1));
        }
    }
    return notFound("there is no such page");
}

HttpAnswer Service::answerFor(Channel& channel, const std::string& what) {
    const Moment now = Moment::now();
    if (what == "thumbnail") {
        const auto jpeg = channel.thumbnail(now);
        return jpeg && !jpeg->empty() ? HttpAnswer{.type = "image/jpeg", .body = *jpeg}
                                      : HttpAnswer{.status = 204};  // none yet
    }
    if (what == "hour") {
        std::string page = hourPage(channel.status(now), channel.history(), now.wall);
        return page.empty() ? notFound("this program was built without its pages")
                            : HttpAnswer{.type = kHtml, .body = std::move(page)};
    }
    return notFound("there is no such page");
}

}  // namespace zel_monitor
