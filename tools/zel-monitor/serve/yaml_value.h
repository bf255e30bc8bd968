#ifndef ZEL_TOOLS_SERVE_YAML_VALUE_H_
#define ZEL_TOOLS_SERVE_YAML_VALUE_H_

#include <functional>
#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <utility>
#include <vector>
#include <yaml-cpp/yaml.h>

namespace zel_monitor {

/// What is wrong in a configuration file, all of it, by line.
class ConfigProblems {
  public:
    explicit ConfigProblems(std::string file) : file_(std::move(file)) {}

    void add(const YAML::Mark& mark, const std::string& path, const std::string& what);
    bool none() const { return by_line_.empty(); }
    /// "FILE:LINE: key: what", a line each.
    std::string text() const;

  private:
    std::string file_;
    std::multimap<int, std::string> by_line_;
};

/// A value of the file with the path of keys that leads to it. Its readers note what is wrong and then give
/// nothing.
class YamlValue {
  public:
    YamlValue(const YAML::Node& node, std::string path, ConfigProblems& problems)
        : node_(node), path_(std::move(path)), problems_(&problems) {}

    void complain(const std::string& what) const { problems_->add(node_.Mark(), path_, what); }
    bool isMap() const { return node_.IsMap(); }
    bool isText(std::string_view text) const { return node_.IsScalar() && node_.Scalar() == text; }

    struct Key {
        std::string_view name;
        std::function<void(const YamlValue&)> read;
    };
    /// Hands the value of each key of a mapping to its reader; keys that are unknown or there twice are
    /// noted. False if it is no mapping.
    bool readMap(const std::vector<Key>& keys) const;
    /// The same for a mapping whose keys are free.
    void readEntries(const std::function<void(const std::string& key, const YamlValue&)>& read) const;
    void readList(const std::function<void(const YamlValue&)>& read) const;

    std::optional<std::string> text() const;
    std::optional<bool> flag() const;
    /// A length of time such as 0.5s, 500ms, 2m.
    std::optional<double> seconds(double least_s = 0.0) const;
    std::optional<int> number(int least, int most) const;
    /// The position among `choices`.
    std::optional<size_t> choice(const std::vector<std::string_view>& choices) const;

  private:
    YamlValue under(const YAML::Node& node, const std::string& key) const;

    YAML::Node node_;
    std::string path_;
    ConfigProblems* problems_;
};

}  // namespace zel_monitor

#endif  // ZEL_TOOLS_SERVE_YAML_VALUE_H_
