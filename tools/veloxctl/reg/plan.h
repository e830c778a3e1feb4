// What an import would do, found out on a picture of the registry that the changes are tried on.
#ifndef VELOXCTL_REG_PLAN_H
#define VELOXCTL_REG_PLAN_H

#include <regfile/regfile.h>

#include <cstddef>
#include <optional>
#include <string>
#include <vector>

namespace veloxctl::reg {

struct PlanStep {
    enum class Kind { kCreateKey, kDeleteKey, kAddValue, kChangeValue, kDeleteValue };
    Kind kind;
    std::string path;
    std::optional<regfile::Value> before = {};
    std::optional<regfile::Value> after = {};
    std::size_t keys = 0;    // that a deleted key takes along
    std::size_t values = 0;  // that a deleted key takes along
};

// The steps that change anything, in the order of the changes.
std::vector<PlanStep> MakePlan(const std::vector<regfile::Change> &changes);

}  // namespace veloxctl::reg

#endif  // VELOXCTL_REG_PLAN_H
