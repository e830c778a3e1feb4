// How a command ends without a result: a message on standard error and an exit status.
#ifndef VELOXCTL_FAILURE_H
#define VELOXCTL_FAILURE_H

#include <sysexits.h>

#include <ntwin32/types.h>

#include <string>
#include <utility>

namespace veloxctl {

// The exit status of a comparison that found a difference; every other failure has a status of
// sysexits.h.
inline constexpr int kDifferent = 1;

// Leaves a command; the program prints the message behind its name and ends with the status. The
// message is in the terminal's encoding.
struct Failure {
    int status;
    std::string message;
};

[[noreturn]] inline void Fail(int status, std::string message) {
    throw Failure{status, std::move(message)};
}

// "veloxctl: message" on standard error.
void Complain(const std::string &message);

// One clause that says what a result of the registry functions means.
std::string RegistryErrorText(LONG error);

int RegistryErrorStatus(LONG error);

// Fails with "subject: what the error means".
[[noreturn]] void FailRegistry(const std::string &subject, LONG error);

// Fails with "subject: what errno means"; the status fits the errno.
[[noreturn]] void FailSystem(const std::string &subject, int error_number);

}  // namespace veloxctl

#endif  // VELOXCTL_FAILURE_H
