// "veloxctl reg compare".
#include <algorithm>
#include <map>
#include <nlohmann/json.hpp>

#include "failure.h"
#include "reg/commands.h"
#include "registry.h"
#include "terminal.h"
#include "values.h"

namespace veloxctl::reg {

namespace {

using Json = nlohmann::ordered_json;

// A value, or a key as such, on one side.
struct Side {
    std::string key;
    std::optional<regfile::Value> value;
};

// What only one side has, or both have with other data.
struct Difference {
    std::optional<Side> left;
    std::optional<Side> right;
};

class Comparison {
  public:
    Comparison(bool recursive, std::optional<std::string> name)
        : recursive_(recursive), name_(std::move(name)) {}

    void Compare(const std::string &left, const std::string &right) {
        std::vector<std::pair<std::string, std::string>> pairs = {{left, right}};
        while (!pairs.empty()) {
            const auto [here_left, here_right] = pairs.back();
            pairs.pop_back();
            const KeyContent left_content = ReadExistingKey(here_left);
            const KeyContent right_content = ReadExistingKey(here_right);
            CompareValues(here_left, here_right, left_content.values, right_content.values);
            if (recursive_) {
                PairSubKeys(here_left, here_right, left_content, right_content, &pairs);
            }
        }
    }

    const std::vector<Difference> &Differences() const { return differences_; }

  private:
    using ByName = std::map<std::string, regfile::Value>;

    ByName Named(const std::vector<regfile::Value> &values) const {
        ByName by_name;
        for (const regfile::Value &value : values) {
            if (!name_ || Folded(value.name) == Folded(*name_)) {
                by_name.emplace(Folded(value.name), value);
            }
        }
        return by_name;
    }

    void CompareValues(const std::string &left_key, const std::string &right_key,
                       const std::vector<regfile::Value> &left_values,
                       const std::vector<regfile::Value> &right_values) {
        ByName right = Named(right_values);
        for (auto &[name, value] : Named(left_values)) {
            const auto other = right.find(name);
            if (other == right.end()) {
                differences_.push_back({Side{left_key, value}, std::nullopt});
                continue;
            }
            if (other->second.type != value.type || other->second.data != value.data) {
                differences_.push_back({Side{left_key, value}, Side{right_key, other->second}});
            }
            right.erase(other);
        }
        for (auto &[name, value] : right) {
            differences_.push_back({std::nullopt, Side{right_key, value}});
        }
    }

    void PairSubKeys(const std::string &left_key, const std::string &right_key,
                     const KeyContent &left, const KeyContent &right,
                     std::vector<std::pair<std::string, std::string>> *pairs) {
        std::map<std::string, std::string> right_names;
        for (const std::string &name : right.sub_keys) {
            right_names.emplace(Folded(name), name);
        }
        const auto first = static_cast<std::ptrdiff_t>(pairs->size());
        for (const std::string &name : left.sub_keys) {
            const auto other = right_names.find(Folded(name));
            if (other == right_names.end()) {
                differences_.push_back({Side{Below(left_key, name), std::nullopt}, std::nullopt});
                continue;
            }
            pairs->emplace_back(Below(left_key, name), Below(right_key, other->second));
            right_names.erase(other);
        }
        for (const auto &[folded, name] : right_names) {
            differences_.push_back({std::nullopt, Side{Below(right_key, name), std::nullopt}});
        }
        // The last pair is taken first.
        std::reverse(pairs->begin() + first, pairs->end());
    }

    bool recursive_;
    std::optional<std::string> name_;
    std::vector<Difference> differences_;
};

void PrintSide(char mark, const std::optional<Side> &side) {
    if (!side) {
        return;
    }
    std::string line = std::string(1, mark) + " " + ShownKey(side->key);
    if (side->value) {
        line += "    " + ShownName(side->value->name) + "    " + TypeName(side->value->type) +
                "    " + ShownData(*side->value);
    }
    Print(line + "\n");
}

Json DifferenceAsJson(const Difference &difference) {
    Json json = Json::object();
    const auto add = [&json](const char *name, const std::optional<Side> &side) {
        if (!side) {
            return;
        }
        json[name] = {{"key", KeyInUtf8(side->key)}};
        if (side->value) {
            json[name]["value"] = ValueAsJson(*side->value);
        }
    };
    add("left", difference.left);
    add("right", difference.right);
    return json;
}

}  // namespace

int RunCompare(const Arguments &arguments) {
    Comparison comparison(arguments.Has("recursive"), ValueNameAsked(arguments));
    comparison.Compare(KeyPath(arguments.Get("LEFT")), KeyPath(arguments.Get("RIGHT")));
    if (arguments.Has("json")) {
        Json differences = Json::array();
        for (const Difference &difference : comparison.Differences()) {
            differences.push_back(DifferenceAsJson(difference));
        }
        PrintJson(differences);
    } else {
        for (const Difference &difference : comparison.Differences()) {
            PrintSide('<', difference.left);
            PrintSide('>', difference.right);
        }
    }
    return comparison.Differences().empty() ? EX_OK : kDifferent;
}

}  // namespace veloxctl::reg
