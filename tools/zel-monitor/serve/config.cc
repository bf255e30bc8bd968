#include "serve/config.h"

#include <algorithm>
#include <cctype>
#include <cerrno>
#include <fmt/format.h>
#include <fstream>
#include <set>
#include <sstream>
#include <system_error>
#include <utility>

#include "input/demo_source.h"
#include "serve/http_address.h"
#include "serve/yaml_value.h"

namespace zel_monitor {
namespace {

constexpr size_t kLongestName = 100;
constexpr int kMostThreads = 64;
constexpr int kMostQueued = 1'000'000;
constexpr double kShortestTimeoutS = 0.1;

template <typename T, typename U>
void set(T& setting, const std::optional<U>& value) {
    if (value) {
        setting = static_cast<T>(*value);
    }
}

bool isControl(char c) {
    return static_cast<unsigned char>(c) < ' ' || c == 0x7f;
}

/// Prometheus's rule for the names of labels.
bool isLabelName(const std::string& name) {
    const auto fits = [](char c) { return std::isalnum(static_cast<unsigned char>(c)) != 0 || c == '_'; };
    return !name.empty() && std::all_of(name.begin(), name.end(), fits) &&
           std::isdigit(static_cast<unsigned char>(name.front())) == 0 && !name.starts_with("__");
}

void readTexts(const YamlValue& value, std::map<std::string, std::string>& texts) {
    value.readEntries([&](const std::string& key, const YamlValue& entry) {
        if (const auto text = entry.text()) {
            texts[key] = *text;
        }
    });
}

void readLabels(const YamlValue& value, std::map<std::string, std::string>& labels) {
    static const std::set<std::string> taken = {"stream", "kind",     "state", "track",    "severity",
                                                "le",     "quantile", "job",   "instance", "alertname"};
    value.readEntries([&](const std::string& key, const YamlValue& entry) {
        if (!isLabelName(key)) {
            entry.complain("a label's name has letters, digits and _, does not begin with a digit or __");
        } else if (taken.contains(key)) {
            entry.complain("this label's name is taken; choose another one");
        } else {
            set(labels[key], entry.text());
        }
    });
}

void readRule(const YamlValue& value, AlarmRule& rule) {
    if (value.isText("on") || value.isText("off")) {
        rule.enabled = value.isText("on");
        return;
    }
    if (!value.isMap()) {
        value.complain("must be on, off, or settings: severity, min, gap, cooldown");
        return;
    }
    rule.enabled = true;
    value.readMap({
        {"severity",
         [&](const YamlValue& v) {
             if (const auto chosen = v.choice({"warning", "critical"})) {
                 rule.severity = *chosen == 0 ? Severity::kWarning : Severity::kCritical;
             }
         }},
        {"min", [&](const YamlValue& v) { set(rule.min_s, v.seconds()); }},
        {"gap", [&](const YamlValue& v) { set(rule.gap_s, v.seconds()); }},
        {"cooldown", [&](const YamlValue& v) { set(rule.cooldown_s, v.seconds()); }},
    });
}

void readRules(const YamlValue& value, PerAlarmKind<AlarmRule>& rules) {
    std::vector<YamlValue::Key> keys;
    for (AlarmKind kind = 0; kind < kAlarmKinds; ++kind) {
        keys.push_back({alarmName(kind), [&rules, kind](const YamlValue& v) { readRule(v, rules[kind]); }});
    }
    value.readMap(keys);
}

void readExpected(const YamlValue& value, std::optional<bool>& expected) {
    if (const auto chosen = value.choice({"auto", "true", "false"})) {
        expected = *chosen == 0 ? std::nullopt : std::optional(*chosen == 1);
    }
}

/// The keys that a stream shares with the defaults.
std::vector<YamlValue::Key> sharedKeys(StreamSettings& s) {
    return {
        {"labels", [&](const YamlValue& v) { readLabels(v, s.labels); }},
        {"format", [&](const YamlValue& v) { set(s.format, v.text()); }},
        {"options", [&](const YamlValue& v) { readTexts(v, s.options); }},
        {"threads", [&](const YamlValue& v) { set(s.threads, v.number(0, kMostThreads)); }},
        {"video", [&](const YamlValue& v) { readExpected(v, s.video); }},
        {"audio", [&](const YamlValue& v) { readExpected(v, s.audio); }},
        {"open_timeout", [&](const YamlValue& v) { set(s.open_timeout_s, v.seconds(kShortestTimeoutS)); }},
        {"read_timeout", [&](const YamlValue& v) { set(s.read_timeout_s, v.seconds(kShortestTimeoutS)); }},
        {"grace", [&](const YamlValue& v) { set(s.grace_s, v.seconds()); }},
        {"reconnect",
         [&](const YamlValue& v) {
             v.readMap({
                 {"first",
                  [&](const YamlValue& w) { set(s.reconnect.first_s, w.seconds(kShortestTimeoutS)); }},
                 {"most", [&](const YamlValue& w) { set(s.reconnect.most_s, w.seconds(kShortestTimeoutS)); }},
             });
             if (s.reconnect.most_s < s.reconnect.first_s) {
                 v.complain(fmt::format("most, {:g}s, is less than first, {:g}s", s.reconnect.most_s,
                                        s.reconnect.first_s));
             }
         }},
        {"rules", [&](const YamlValue& v) { readRules(v, s.rules); }},
    };
}

StreamSettings readStream(const YamlValue& value, const StreamSettings& defaults) {
    StreamSettings stream = defaults;
    std::vector<YamlValue::Key> keys = sharedKeys(stream);
    keys.insert(keys.begin(),
                {{"name",
                  [&](const YamlValue& v) {
                      set(stream.name, v.text());
                      if (stream.name.size() > kLongestName || stream.name.find('/') != std::string::npos ||
                          stream.name == "." || stream.name == ".." ||
                          std::any_of(stream.name.begin(), stream.name.end(), &isControl)) {
                          v.complain(fmt::format(
                              "a name has at most {} bytes, no / and no control characters", kLongestName));
                      }
                  }},
                 {"input", [&](const YamlValue& v) { set(stream.input, v.text()); }}});
    if (!value.readMap(keys)) {
        return stream;
    }
    if (stream.name.empty() || stream.input.empty()) {
        value.complain("needs a name and an input");
    } else if (stream.input == "-") {
        value.complain("standard input cannot be opened again; give a named pipe or a URL");
    }
    if (stream.video == false && stream.audio == false) {
        value.complain("video and audio are both false: there is nothing to monitor");
    }
    return stream;
}

WebhookSettings readWebhook(const YamlValue& value) {
    WebhookSettings hook;
    const bool is_map = value.readMap({
        {"url",
         [&](const YamlValue& v) {
             set(hook.url, v.text());
             if (!hook.url.starts_with("http://") && !hook.url.starts_with("https://")) {
                 v.complain("must begin with http:// or https://");
             }
         }},
        {"form",
         [&](const YamlValue& v) {
             if (const auto chosen = v.choice({"native", "alertmanager"})) {
                 hook.form = *chosen == 0 ? WebhookForm::kNative : WebhookForm::kAlertmanager;
             }
         }},
        {"headers",
         [&](const YamlValue& v) {
             readTexts(v, hook.headers);
             for (const auto& [name, text] : hook.headers) {
                 if (std::any_of(name.begin(), name.end(), &isControl) ||
                     name.find(':') != std::string::npos ||
                     std::any_of(text.begin(), text.end(), &isControl)) {
                     v.complain("a header has no colon in its name and no control characters");
                 }
             }
         }},
        {"timeout", [&](const YamlValue& v) { set(hook.timeout_s, v.seconds(kShortestTimeoutS)); }},
        {"queue", [&](const YamlValue& v) { set(hook.queue, v.number(1, kMostQueued)); }},
    });
    if (is_map && hook.url.empty()) {
        value.complain("needs a url");
    }
    return hook;
}

void readStreams(const YamlValue& value, const StreamSettings& defaults, ServeSettings& settings) {
    std::set<std::string> names;
    bool any_demo = false;
    value.readList([&](const YamlValue& item) {
        StreamSettings stream = readStream(item, defaults);
        if (!stream.name.empty() && !names.insert(stream.name).second) {
            item.complain(fmt::format("another stream has the name {}; give it another one", stream.name));
        }
        if (stream.input == kDemoInput && std::exchange(any_demo, true)) {
            item.complain("only one stream may be demo:, whose speech FFmpeg can make once at a time");
        }
        settings.streams.push_back(std::move(stream));
    });
}

ServeSettings readAll(const YamlValue& root) {
    ServeSettings settings;
    StreamSettings defaults;
    std::optional<YamlValue> streams;  // read when the defaults are known
    const bool is_map = root.readMap({
        {"listen",
         [&](const YamlValue& v) {
             set(settings.listen, v.text());
             if (!isHttpAddress(settings.listen)) {
                 v.complain(std::string(kHttpAddressForm));
             }
         }},
        {"events", [&](const YamlValue& v) { set(settings.events, v.text()); }},
        {"webhooks",
         [&](const YamlValue& v) {
             v.readList([&](const YamlValue& item) { settings.webhooks.push_back(readWebhook(item)); });
         }},
        {"defaults", [&](const YamlValue& v) { v.readMap(sharedKeys(defaults)); }},
        {"streams", [&](const YamlValue& v) { streams = v; }},
    });
    if (streams) {
        readStreams(*streams, defaults, settings);
    } else if (is_map) {
        root.complain("needs streams: a list, each with a name and an input");
    }
    return settings;
}

}  // namespace

ServeSettings parseConfig(const std::string& text, const std::string& name) {
    ConfigProblems problems(name);
    ServeSettings settings;
    try {
        settings = readAll({YAML::Load(text), "", problems});
    } catch (const YAML::Exception& error) {
        problems.add(error.mark, "", "this is no YAML: " + error.msg);
    }
    if (!problems.none()) {
        throw ConfigError(problems.text());
    }
    return settings;
}

ServeSettings readConfig(const std::string& path) {
    std::ifstream file(path, std::ios::binary);
    std::ostringstream text;
    if (!file || !(text << file.rdbuf())) {
        throw ConfigError(
            fmt::format("{}: {}\n", path, std::generic_category().message(errno != 0 ? errno : EIO)));
    }
    return parseConfig(text.str(), path);
}

}  // namespace zel_monitor
