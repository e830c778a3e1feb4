#include "reg/plan.h"

#include <algorithm>
#include <map>
#include <set>

#include "registry.h"

namespace veloxctl::reg {

namespace {

// State: the keys that the changes reached, as they would be by now (nodes_), and the trees that
// the changes deleted, below which the registry's own content counts no more (deleted_). Paths are
// folded.
class Planner {
  public:
    void Apply(const regfile::Change &change) {
        switch (change.kind) {
            case regfile::Change::Kind::kCreateKey:
                CreateKey(*change.path);
                break;
            case regfile::Change::Kind::kDeleteTree:
                DeleteTree(*change.path);
                break;
            case regfile::Change::Kind::kSetValue:
                SetValue(change);
                break;
            case regfile::Change::Kind::kDeleteValue:
                DeleteValue(change);
                break;
        }
    }
    std::vector<PlanStep> &Steps() { return steps_; }

  private:
    struct Node {
        bool exists = false;
        std::map<std::string, regfile::Value> values;
    };

    bool IsDeleted(const std::string &folded) const {
        if (deleted_.empty()) {
            return false;
        }
        for (std::size_t end = 0; end != std::string::npos;) {
            end = folded.find('\\', end + 1);
            if (deleted_.contains(folded.substr(0, end))) {
                return true;
            }
        }
        return false;
    }

    Node &NodeAt(const std::string &path) {
        const std::string folded = Folded(path);
        const auto [place, is_new] = nodes_.try_emplace(folded);
        if (!is_new || IsDeleted(folded)) {
            return place->second;
        }
        const std::optional<KeyContent> content = ReadKey(path);
        place->second.exists = content.has_value();
        if (content) {
            for (const regfile::Value &value : content->values) {
                place->second.values.emplace(Folded(value.name), value);
            }
        }
        return place->second;
    }

    Node &CreateKey(const std::string &path) {
        Node &node = NodeAt(path);
        if (node.exists) {
            return node;
        }
        const std::size_t parent = path.rfind('\\');
        if (parent != std::string::npos) {
            CreateKey(path.substr(0, parent));
        }
        node.exists = true;
        steps_.push_back({.kind = PlanStep::Kind::kCreateKey, .path = path});
        return node;
    }

    void SetValue(const regfile::Change &change) {
        Node &node = CreateKey(*change.path);
        const auto [place, is_new] = node.values.try_emplace(Folded(change.name));
        regfile::Value &value = place->second;
        const regfile::Value before = value;
        if (!is_new && value.type == change.type && value.data == change.data) {
            return;
        }
        value = {is_new ? change.name : before.name, change.type, change.data};
        PlanStep step = {.kind = is_new ? PlanStep::Kind::kAddValue : PlanStep::Kind::kChangeValue,
                         .path = *change.path,
                         .after = value};
        if (!is_new) {
            step.before = before;
        }
        steps_.push_back(std::move(step));
    }

    void DeleteValue(const regfile::Change &change) {
        Node &node = NodeAt(*change.path);
        const auto found = node.values.find(Folded(change.name));
        if (found != node.values.end()) {
            steps_.push_back({.kind = PlanStep::Kind::kDeleteValue,
                              .path = *change.path,
                              .before = found->second});
            node.values.erase(found);
        }
    }

    void DeleteTree(const std::string &path) {
        if (!NodeAt(path).exists) {
            return;
        }
        PlanStep step = {.kind = PlanStep::Kind::kDeleteKey, .path = path};
        const std::string folded = Folded(path);
        if (!IsDeleted(folded)) {
            CountStored(path, &step);
        }
        const std::string below = folded + "\\";
        Forget(&nodes_[folded], &step);
        for (auto node = nodes_.lower_bound(below);
             node != nodes_.end() && node->first.starts_with(below); ++node) {
            Forget(&node->second, &step);
        }
        deleted_.insert(folded);
        --step.keys;
        steps_.push_back(std::move(step));
    }

    // Counts what the registry holds and the changes did not reach.
    void CountStored(const std::string &path, PlanStep *step) const {
        if (!KeyExists(path)) {
            return;
        }
        WalkKeys(path, [&](const std::string &here, const KeyContent &content) {
            const std::string folded = Folded(here);
            if (!nodes_.contains(folded) && !IsDeleted(folded)) {
                ++step->keys;
                step->values += content.values.size();
            }
        });
    }

    static void Forget(Node *node, PlanStep *step) {
        step->keys += node->exists ? 1 : 0;
        step->values += node->values.size();
        *node = Node();
    }

    std::map<std::string, Node> nodes_;
    std::set<std::string> deleted_;
    std::vector<PlanStep> steps_;
};

}  // namespace

std::vector<PlanStep> MakePlan(const std::vector<regfile::Change> &changes) {
    Planner planner;
    for (const regfile::Change &change : changes) {
        planner.Apply(change);
    }
    return std::move(planner.Steps());
}

}  // namespace veloxctl::reg
