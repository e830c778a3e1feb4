// The groups of commands, in the order of the help.
//
// Two programs are made from the same sources. "veloxctl" itself holds only the groups that must
// start at once and links next to nothing; for every other one it starts "veloxctl-all", which
// holds them all with the libraries that they need.
#ifndef VELOXCTL_GROUPS_H
#define VELOXCTL_GROUPS_H

#include "table.h"

// Groups in both programs: their sources must not need more than libNTwin32 and libtracelog.
// clang-format off
#define VELOXCTL_QUICK_GROUPS(GROUP) \
    GROUP(kStatusGroup) \
    GROUP(kRegGroup)

// Groups in veloxctl-all alone.
#define VELOXCTL_OTHER_GROUPS(GROUP) \
    GROUP(kKeydiskGroup) \
    GROUP(kMailGroup) \
    GROUP(kReportGroup) \
    GROUP(kMethodGroup) \
    GROUP(kManagerGroup) \
    GROUP(kBaseGroup) \
    GROUP(kTrapGroup) \
    GROUP(kDestGroup) \
    GROUP(kMailDestGroup) \
    GROUP(kEventGroup) \
    GROUP(kSyslogGroup) \
    GROUP(kCustomerGroup) \
    GROUP(kMachineGroup) \
    GROUP(kVendorGroup) \
    GROUP(kOptionsGroup) \
    GROUP(kOsNamesGroup) \
    GROUP(kDealersGroup) \
    GROUP(kQueueGroup) \
    GROUP(kHelpGroup)
// clang-format on

namespace veloxctl {

// NOLINTNEXTLINE(bugprone-macro-parentheses): the name of what is declared
#define VELOXCTL_DECLARE(group) extern const Group group;
VELOXCTL_QUICK_GROUPS(VELOXCTL_DECLARE)
VELOXCTL_OTHER_GROUPS(VELOXCTL_DECLARE)
#undef VELOXCTL_DECLARE

#define VELOXCTL_ADDRESS(group) &(group),

inline constexpr const Group *kQuickGroups[] = {VELOXCTL_QUICK_GROUPS(VELOXCTL_ADDRESS)};

}  // namespace veloxctl

#endif  // VELOXCTL_GROUPS_H
