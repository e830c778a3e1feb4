// Every group of veloxctl-all.
#ifndef VELOXCTL_ALL_GROUPS_H
#define VELOXCTL_ALL_GROUPS_H

#include "groups.h"

namespace veloxctl {

inline constexpr const Group *kAllGroups[] = {VELOXCTL_QUICK_GROUPS(VELOXCTL_ADDRESS)
                                                  VELOXCTL_OTHER_GROUPS(VELOXCTL_ADDRESS)};

}  // namespace veloxctl

#endif  // VELOXCTL_ALL_GROUPS_H
