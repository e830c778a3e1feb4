// The selected report method, for every command that depends on it.
#ifndef VELOXCTL_METHOD_H
#define VELOXCTL_METHOD_H

#include <ntwin32/types.h>

namespace veloxctl::method {

// The selected method (velox/report_method.h). Fails (EX_CONFIG) when none is stored, or a text
// that is none.
DWORD Selected();

// "mail", "dial-up" or "manager", as "method set" takes it.
const char *NameOf(DWORD method);

}  // namespace veloxctl::method

#endif  // VELOXCTL_METHOD_H
