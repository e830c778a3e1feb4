// Verifying a store in a child process, so that no content can take the daemon down with it.
#ifndef NTSERVER_VERIFICATION_H
#define NTSERVER_VERIFICATION_H

#include <chrono>
#include <functional>
#include <string>

#include "regstore/verify.h"

namespace ntserver {

enum class Soundness { kSound, kDamaged, kUnknown };

struct Verification {
    Soundness soundness = Soundness::kUnknown;
    std::string damage;  // or why it is not known
    regstore::Totals totals;
};

// Verifies the state that `heads` tell of, in the file behind a descriptor. A child that dies
// stands for damage. While it works `go_on` is asked about once a second whether it is still
// wanted.
Verification VerifyInChild(int descriptor, const regstore::Heads &heads,
                           std::chrono::milliseconds limit, const std::function<bool()> &go_on);

}  // namespace ntserver

#endif  // NTSERVER_VERIFICATION_H
