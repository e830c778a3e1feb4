// An environment variable that a test sets or clears; its former value comes back afterwards.
#ifndef SUPPORT_ENVIRONMENT_H
#define SUPPORT_ENVIRONMENT_H

#include <cstdlib>
#include <optional>
#include <string>
#include <utility>

namespace test_support {

class EnvironmentVariable {
  public:
    // Without a value the variable is cleared.
    explicit EnvironmentVariable(std::string name, const std::optional<std::string> &value = {})
        : name_(std::move(name)) {
        if (const char *former = std::getenv(name_.c_str())) {
            former_ = former;
        }
        Set(value);
    }
    EnvironmentVariable(const EnvironmentVariable &) = delete;
    EnvironmentVariable &operator=(const EnvironmentVariable &) = delete;
    ~EnvironmentVariable() { Set(former_); }

    void Set(const std::optional<std::string> &value) {
        if (value) {
            ::setenv(name_.c_str(), value->c_str(), 1);
        } else {
            ::unsetenv(name_.c_str());
        }
    }

  private:
    std::string name_;
    std::optional<std::string> former_;
};

}  // namespace test_support

#endif  // SUPPORT_ENVIRONMENT_H
