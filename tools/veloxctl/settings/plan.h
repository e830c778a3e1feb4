// Values that are stored or deleted together: one transaction, whole or not at all.
#ifndef VELOXCTL_SETTINGS_PLAN_H
#define VELOXCTL_SETTINGS_PLAN_H

#include <ntwin32/registry.h>
#include <regfile/regfile.h>

#include <cstdint>
#include <memory>
#include <string>
#include <vector>

#include "registry.h"

namespace veloxctl::settings {

class Plan {
  public:
    void SetText(const char *path, const std::string &name, const std::string &text) {
        Add(path, name, REG_SZ, text.c_str(), text.size() + 1);
    }
    void SetNumber(const char *path, const std::string &name, DWORD number) {
        Add(path, name, REG_DWORD, &number, sizeof number);
    }
    // Of a value that is there.
    void Delete(const char *path, const std::string &name) {
        Add(path, name, REG_NONE, nullptr, 0);
        changes_.back().kind = regfile::Change::Kind::kDeleteValue;
    }
    bool IsEmpty() const { return changes_.empty(); }
    void Apply() const {
        ApplyChanges(changes_, [&](std::size_t index) {
            return ShownKey(*changes_[index].path) + " " + changes_[index].name;
        });
    }

  private:
    void Add(const char *path, const std::string &name, DWORD type, const void *data,
             std::size_t size) {
        const auto *bytes = static_cast<const std::uint8_t *>(data);
        changes_.push_back({.kind = regfile::Change::Kind::kSetValue,
                            .path = std::make_shared<const std::string>(path),
                            .name = name,
                            .type = type,
                            .data = {bytes, bytes + size}});
    }

    std::vector<regfile::Change> changes_;
};

}  // namespace veloxctl::settings

#endif  // VELOXCTL_SETTINGS_PLAN_H
