// CheckKeyFD: finds the key disk and imports its three files, one after the other.
#include <ntwin32/system.h>
#include <records/key_disk.h>

#include "keyfd/keyfd.h"
#include "registry/catalogue.h"
#include "registry/text.h"
#include "steps.h"

struct DISK_PATHS {
    char szCustomer[PATH_MAX];
    char szAddress[PATH_MAX];
    char szHeartbeat[PATH_MAX];
};

static bool BuildPath(char (&szPath)[PATH_MAX], const char *lpszFolder,
                      const char *lpszFile) noexcept {
    if (!FormatText(szPath, sizeof szPath, "%s/%s", lpszFolder, lpszFile)) {
        TRACE_STEP(TRACE_FAILURE, "Path of %s too long : at most %d bytes", lpszFile, PATH_MAX - 1);
        return false;
    }
    return true;
}

static bool BuildPaths(DISK_PATHS *lpPaths, const char *lpszFolder) noexcept {
    return BuildPath(lpPaths->szCustomer, lpszFolder, KEYDISK_CUSTOMER_FILE) &&
           BuildPath(lpPaths->szAddress, lpszFolder, KEYDISK_ADDRESS_FILE) &&
           BuildPath(lpPaths->szHeartbeat, lpszFolder, KEYDISK_HEARTBEAT_FILE);
}

static DWORD ImportDisk(ITEM_LANGUAGE eLanguage) noexcept {
    char szFolder[PATH_MAX];
    DWORD dwResult = FindKeyDisk(szFolder);
    if (dwResult != KEYFD_IMPORTED) {
        return dwResult;
    }
    DISK_PATHS paths;
    if (!BuildPaths(&paths, szFolder)) {
        return KEYFD_FAILED;
    }
    dwResult = ImportCustomerFile(paths.szCustomer, eLanguage);
    if (dwResult == KEYFD_IMPORTED) {
        dwResult = ImportAddressFile(paths.szAddress, eLanguage);
    }
    if (dwResult == KEYFD_IMPORTED) {
        dwResult = ImportHeartbeatFile(paths.szHeartbeat);
    }
    return dwResult;
}

DWORD CheckKeyFD(DWORD /*dwDrive*/) noexcept {
    TRACE(TRACE_NOTE, ">");
    const ITEM_LANGUAGE eLanguage =
        GetSystemDefaultLangID() == LANGID_JAPANESE ? ITEM_JAPANESE : ITEM_ENGLISH;
    UseCatalogue("", CATALOGUE_VELOX);
    const DWORD dwResult = ImportDisk(eLanguage);
    TRACE(TRACE_NOTE, "<return %d.", static_cast<int>(dwResult));
    return dwResult;
}
