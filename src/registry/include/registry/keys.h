// The registry keys that more than one module uses, below HKEY_LOCAL_MACHINE. Spellings differ
// between writers and readers on purpose: the registry compares names without regard to case.
#ifndef REGISTRY_KEYS_H
#define REGISTRY_KEYS_H

#define VLX_KEY_SETUP "SOFTWARE\\XEV\\VLXService\\SETUP"
#define VLX_KEY_SETTING "SOFTWARE\\XEV\\VLXService\\SETTING"
#define VLX_KEY_HEARTBEAT "SOFTWARE\\XEV\\VLXService\\HEARTBEAT"
#define AM_KEY_ALERTREPORT "SOFTWARE\\XEV\\KESALERTMAN\\ALERTREPORT"
#define AM_KEY_ID_LIST "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST"
#define AM_KEY_VELOXREPORT AM_KEY_ID_LIST "\\VELOXREPORT"

#endif  // REGISTRY_KEYS_H
