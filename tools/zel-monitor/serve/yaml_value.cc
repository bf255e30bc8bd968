#include "serve/yaml_value.h"

#include <algorithm>
#include <charconv>
#include <fmt/format.h>
#include <set>
#include <utility>

#include "cli/file_names.h"
#include "cli/time_text.h"

namespace zel_monitor {
namespace {

std::string joined(const std::vector<std::string_view>& words) {
    return fmt::format("{}", fmt::join(words, ", "));
}

}  // namespace

void ConfigProblems::add(const YAML::Mark& mark, const std::string& path, const std::string& what) {
    const int line = mark.is_null() ? 1 : mark.line + 1;
    by_line_.emplace(
        line, printable(fmt::format("{}:{}: {}{}{}", file_, line, path, path.empty() ? "" : ": ", what)));
}

std::string ConfigProblems::text() const {
    std::string lines;
    for (const auto& [line, text] : by_line_) {
        lines += text + '\n';
    }
    return lines;
}

YamlValue YamlValue::under(const YAML::Node& node, const std::string& key) const {
    return {node, path_.empty() ? key : path_ + '.' + key, *problems_};
}

bool YamlValue::readMap(const std::vector<Key>& keys) const {
    if (!node_.IsMap()) {
        std::vector<std::string_view> names;
        std::transform(keys.begin(), keys.end(), std::back_inserter(names),
                       [](const Key& key) { return key.name; });
        complain("must hold keys and values; it takes " + joined(names));
        return false;
    }
    readEntries([&](const std::string& name, const YamlValue& value) {
        const auto key =
            std::find_if(keys.begin(), keys.end(), [&](const Key& known) { return known.name == name; });
        if (key != keys.end()) {
            key->read(value);
            return;
        }
        std::vector<std::string_view> names;
        std::transform(keys.begin(), keys.end(), std::back_inserter(names),
                       [](const Key& known) { return known.name; });
        value.complain("unknown key; use one of " + joined(names));
    });
    return true;
}

void YamlValue::readEntries(const std::function<void(const std::string&, const YamlValue&)>& read) const {
    if (!node_.IsMap()) {
        complain("must hold keys and values, such as 'key: value'");
        return;
    }
    std::set<std::string> seen;
    for (const auto& entry : node_) {
        if (!entry.first.IsScalar()) {
            problems_->add(entry.first.Mark(), path_, "a key must be a word");
            continue;
        }
        const std::string& key = entry.first.Scalar();
        const YamlValue value = under(entry.second, key);
        if (!seen.insert(key).second) {
            problems_->add(entry.first.Mark(), value.path_, "is there twice; remove one");
            continue;
        }
        read(key, value);
    }
}

void YamlValue::readList(const std::function<void(const YamlValue&)>& read) const {
    if (!node_.IsSequence()) {
        complain("must be a list, each entry after a '- '");
        return;
    }
    size_t i = 0;
    for (const auto& item : node_) {
        read({item, fmt::format("{}[{}]", path_, ++i), *problems_});
    }
}

std::optional<std::string> YamlValue::text() const {
    if (!node_.IsScalar() || node_.Scalar().empty()) {
        complain("must be a text that is not empty");
        return std::nullopt;
    }
    return node_.Scalar();
}

std::optional<bool> YamlValue::flag() const {
    const auto chosen = choice({"true", "false"});
    return chosen ? std::optional(*chosen == 0) : std::nullopt;
}

std::optional<double> YamlValue::seconds(double least_s) const {
    const auto value = node_.IsScalar() ? parseSeconds(node_.Scalar()) : std::nullopt;
    if (!value) {
        complain("must be a length of time; write for example 0.5s, 500ms or 2m");
    } else if (*value < least_s) {
        complain(fmt::format("must be at least {:g}s", least_s));
        return std::nullopt;
    }
    return value;
}

std::optional<int> YamlValue::number(int least, int most) const {
    const std::string text = node_.IsScalar() ? node_.Scalar() : "";
    int value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    if (text.empty() || error != std::errc{} || end != text.data() + text.size() || value < least ||
        value > most) {
        complain(fmt::format("must be a whole number from {} to {}", least, most));
        return std::nullopt;
    }
    return value;
}

std::optional<size_t> YamlValue::choice(const std::vector<std::string_view>& choices) const {
    const auto chosen = std::find_if(choices.begin(), choices.end(),
                                     [this](std::string_view choice) { return isText(choice); });
    if (chosen == choices.end()) {
        complain("must be one of " + joined(choices));
        return std::nullopt;
    }
    return static_cast<size_t>(chosen - choices.begin());
}

}  // namespace zel_monitor
