// The management server to which reports are handed, as it is stored.
#ifndef VELOXCTL_MANAGER_H
#define VELOXCTL_MANAGER_H

#include <string>

namespace veloxctl::manager {

// Where reports go, as an URL without path; empty when no manager is set.
std::string Url();

}  // namespace veloxctl::manager

#endif  // VELOXCTL_MANAGER_H
