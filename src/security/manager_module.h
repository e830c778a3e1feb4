// The management-server module amrvxmn.dll, loaded for one call.
#ifndef SECURITY_MANAGER_MODULE_H
#define SECURITY_MANAGER_MODULE_H

#include <ntwin32/module.h>

#include "registry/handles.h"

// Loads the module and finds one of its functions; null when either fails, which is traced under
// the name of the exported function lpszFunction.
FARPROC LoadManagerModule(const char *lpszFunction, const char *lpszEntry,
                          AutoModule *module) noexcept;

#endif  // SECURITY_MANAGER_MODULE_H
