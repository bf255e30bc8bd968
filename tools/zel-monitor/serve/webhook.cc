#include "serve/webhook.h"

#include <cmath>
#include <curl/curl.h>
#include <fmt/format.h>
#include <memory>
#include <utility>

#include "cli/standard_streams.h"
#include "report/report_json.h"
#include "serve/quiet_thread.h"
#include "serve/shown_url.h"

namespace zel_monitor {
namespace {

using std::chrono::steady_clock;
using Json = nlohmann::ordered_json;

constexpr double kFirstWaitS = 1.0;
constexpr double kMostWaitS = 60.0;
constexpr std::chrono::seconds kAgainEvery{60};
constexpr std::chrono::minutes kExpiresAfter{4};  // longer than the longest wait and some failures
constexpr double kLastTryS = 3.0;

struct FreeEasy {
    void operator()(CURL* curl) const { curl_easy_cleanup(curl); }
};
struct FreeList {
    void operator()(curl_slist* list) const { curl_slist_free_all(list); }
};
using Headers = std::unique_ptr<curl_slist, FreeList>;

/// Once per process, before any thread uses the library.
void initialiseCurl() {
    static const CURLcode result = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (result != CURLE_OK) {
        throw std::runtime_error(std::string("webhooks: ") + curl_easy_strerror(result));
    }
}

Headers headersOf(const WebhookSettings& settings) {
    Headers headers(curl_slist_append(nullptr, "Content-Type: application/json"));
    for (const auto& [name, value] : settings.headers) {
        const std::string line = fmt::format("{}: {}", name, value);
        if (curl_slist* const longer = curl_slist_append(headers.get(), line.c_str())) {
            static_cast<void>(headers.release());
            headers.reset(longer);
        }
    }
    return headers;
}

size_t ignoreBody(char* /*data*/, size_t size, size_t count, void* /*context*/) {
    return size * count;
}

}  // namespace

Webhook::Webhook(const WebhookSettings& settings)
    : settings_(settings),
      shown_url_(shownUrl(settings.url)),
      queue_(settings.queue),
      backoff_(kFirstWaitS, kMostWaitS, std::random_device()()) {
    initialiseCurl();
    thread_ = quietThread([this] { run(); });
}

Webhook::~Webhook() {
    queue_.close();
    thread_.join();
}

Webhook::Counts Webhook::counts() const {
    return {.delivered = delivered_.load(),
            .failed_attempts = failed_attempts_.load(),
            .lost = refused_.load() + queue_.dropped(),
            .waiting = queue_.size()};
}

void Webhook::run() {
    again_at_ = steady_clock::now() + kAgainEvery;
    while (true) {
        std::deque<Alarm> alarms = queue_.wait(again_at_);
        const bool closed = queue_.isClosed();
        Answer answer = Answer::kTaken;
        if (!alarms.empty()) {
            answer = deliver(alarms);
            queue_.putBack(std::move(alarms));
        } else if (!closed) {
            answer = sendAgain();
        }
        if (closed && (answer == Answer::kFailed || queue_.size() == 0)) {
            return;
        }
        if (answer == Answer::kFailed) {
            queue_.pause(steady_clock::now() + steadySeconds(backoff_.next()));
        }
    }
}

/// Takes what was delivered, or refused for good, from the front of `alarms`.
Webhook::Answer Webhook::deliver(std::deque<Alarm>& alarms) {
    while (!alarms.empty()) {
        Json body;
        size_t count = 1;
        if (settings_.form == WebhookForm::kAlertmanager) {
            count = alarms.size();
            for (const Alarm& alarm : alarms) {
                body.push_back(alertJson(alarm, std::chrono::system_clock::now() + kExpiresAfter));
            }
        } else {
            body = alarmJson(alarms.front());
        }
        const Answer answer = post(jsonText(body, false));
        if (answer == Answer::kFailed) {
            return answer;
        }
        (answer == Answer::kTaken ? delivered_ : refused_) += count;
        for (; count > 0; --count) {
            note(alarms.front());
            alarms.pop_front();
        }
    }
    return Answer::kTaken;
}

void Webhook::note(const Alarm& alarm) {
    if (settings_.form != WebhookForm::kAlertmanager) {
        return;
    }
    if (alarm.isCleared()) {
        active_.erase(alarm.id);
    } else {
        active_[alarm.id] = alarm;
    }
}

/// Alertmanager takes an alert for resolved that it does not hear of for some minutes.
Webhook::Answer Webhook::sendAgain() {
    if (steady_clock::now() < again_at_) {
        return Answer::kTaken;
    }
    again_at_ = steady_clock::now() + kAgainEvery;
    Json body = Json::array();
    for (const auto& [id, alarm] : active_) {
        body.push_back(alertJson(alarm, std::chrono::system_clock::now() + kExpiresAfter));
    }
    return body.empty() ? Answer::kTaken : post(jsonText(body, false));
}

Webhook::Answer Webhook::post(const std::string& body) {
    const std::unique_ptr<CURL, FreeEasy> curl(curl_easy_init());
    const Headers headers = headersOf(settings_);
    std::string url = settings_.url;
    if (settings_.form == WebhookForm::kAlertmanager) {
        url += url.ends_with('/') ? "api/v2/alerts" : "/api/v2/alerts";
    }
    const double timeout_s =
        queue_.isClosed() ? std::min(settings_.timeout_s, kLastTryS) : settings_.timeout_s;
    curl_easy_setopt(curl.get(), CURLOPT_URL, url.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_PROTOCOLS_STR, "http,https");
    curl_easy_setopt(curl.get(), CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(curl.get(), CURLOPT_TIMEOUT_MS, std::lround(timeout_s * 1000.0));
    curl_easy_setopt(curl.get(), CURLOPT_HTTPHEADER, headers.get());
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body.size()));
    curl_easy_setopt(curl.get(), CURLOPT_POSTFIELDS, body.c_str());
    curl_easy_setopt(curl.get(), CURLOPT_WRITEFUNCTION, &ignoreBody);
    curl_easy_setopt(curl.get(), CURLOPT_USERAGENT, "zel-monitor/" ZEL_VERSION);
    const CURLcode result = curl_easy_perform(curl.get());
    long status = 0;
    curl_easy_getinfo(curl.get(), CURLINFO_RESPONSE_CODE, &status);
    if (result == CURLE_OK && status >= 200 && status < 300) {
        backoff_.reset();
        told_ = false;
        return Answer::kTaken;
    }
    ++failed_attempts_;
    tellOnce(result != CURLE_OK ? curl_easy_strerror(result) : fmt::format("answered {}", status));
    const bool may_pass = result != CURLE_OK || status >= 500 || status == 408 || status == 429;
    return may_pass ? Answer::kFailed : Answer::kRefused;
}

void Webhook::tellOnce(const std::string& what) {
    if (!std::exchange(told_, true)) {
        complain("webhook " + shown_url_ + ": " + what);
    }
}

}  // namespace zel_monitor
