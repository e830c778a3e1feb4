// Report destinations: what their writers, their reader and the event tables share.
#ifndef AMRSET_DESTINATION_KINDS_H
#define AMRSET_DESTINATION_KINDS_H

#include <records/destination_data.h>
#include <strings.h>

#include "key_path.h"
#include "registry/keys.h"

inline constexpr char KIND_COMMAND[] = "RUN COMMAND";
inline constexpr char KIND_IN_BAND[] = "MANAGER (TCP_IP IN-BAND)";
inline constexpr char KIND_OUT_OF_BAND[] = "MANAGER (TCP_IP OUT-OF-BAND)";
inline constexpr char KIND_SNMP[] = "MANAGER (SNMP)";

inline bool IsDestKind(const DEST_DATA &destData, const char *szKind) noexcept {
    return strncasecmp(destData.szMethod, szKind, sizeof destData.szMethod) == 0;
}

inline KEYPATH DestinationPath(const char *lpszDestID) noexcept {
    return NamePath(RootPath(AM_KEY_ID_LIST), lpszDestID);
}

inline bool DestinationOpens(const KEYPATH &path) noexcept {
    AutoRegKey key;
    return OpenPath(path, KEY_READ, &key) == ERROR_SUCCESS;
}

#endif  // AMRSET_DESTINATION_KINDS_H
