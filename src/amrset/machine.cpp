// The machine's data, and the names of operating systems that the set-up offers.
#include <ntwin32/registry.h>
#include <ntwin32/system.h>
#include <registry/trace.h>
#include <velox/contract_items.h>
#include <velox/registry_access.h>

#include <cstdint>
#include <cstring>

#include "contract_key.h"
#include "data_file.h"
#include "velox/contract.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr char HARDWARE_KEY[] = "SOFTWARE\\XEV\\HW";
constexpr char PRODUCT_NAME[] = "ProductName";

// In the order in which they are written. The first two are read with what stands in for them.
constexpr CONTRACT_FIELD MACH_FIELDS[] = {
    {VX_REG_MACHINE[0], offsetof(VLX_MACH_DATA, szServerName), VLX_SIZE_SYSNMN, NOT_EMPTY},
    {VX_REG_MACHINE[VX_REG_MACHINE_PRODUCT], offsetof(VLX_MACH_DATA, szDeviceCode),
     VLX_SIZE_SOCHICD},
    {VX_REG_MACHINE[2], offsetof(VLX_MACH_DATA, szSerialNumber), VLX_SIZE_SYSGOKI},
    {VX_REG_MACHINE[3], offsetof(VLX_MACH_DATA, szGuaranteeNumber), VLX_SIZE_GUARANTEE},
    {VX_REG_MACHINE[4], offsetof(VLX_MACH_DATA, szOsName), VLX_SIZE_OSNMA, NOT_EMPTY},
    {VX_REG_MACHINE[5], offsetof(VLX_MACH_DATA, szOsVersion), VLX_SIZE_OSREV},
};
constexpr const CONTRACT_FIELD &SERVER_NAME = MACH_FIELDS[0];
constexpr const CONTRACT_FIELD &DEVICE_CODE = MACH_FIELDS[1];
constexpr std::size_t FIRST_PLAIN_FIELD = 2;

// The computer's name stands in for a missing or empty server name.
void ReadServerName(HKEY hKey, char (&szServerName)[VLX_FIELD_SIZE]) noexcept {
    char szText[VLX_FIELD_SIZE];
    if (!QueryContractText(hKey, SERVER_NAME, szText)) {
        std::memset(szText, 0, sizeof szText);
        DWORD dwSize = SERVER_NAME.dwReadSize;
        if (GetComputerName(szText, &dwSize) == FALSE) {
            return;
        }
    }
    std::memcpy(szServerName, szText, sizeof szText);
}

// The hardware's product name stands in for a missing device code, not for an empty one.
void ReadDeviceCode(HKEY hKey, char (&szDeviceCode)[VLX_FIELD_SIZE]) noexcept {
    char szText[VLX_FIELD_SIZE];
    if (!QueryContractText(hKey, DEVICE_CODE, szText)) {
        DWORD dwType = REG_SZ;
        DWORD dwSize = DEVICE_CODE.dwReadSize;
        std::memset(szText, 0, sizeof szText);
        if (RegReadEx(HKEY_LOCAL_MACHINE, HARDWARE_KEY, PRODUCT_NAME, &dwType, &dwSize,
                      reinterpret_cast<BYTE *>(szText)) == FALSE) {
            return;
        }
    }
    std::memcpy(szDeviceCode, szText, sizeof szText);
}

// The work of both list functions; every record names the one that was called.
BOOL ListOsNames(ENTRY_LIST *lpList, DWORD *lpdwNames, const char *szFunction) noexcept {
    const LANGID wLanguage = GetSystemDefaultLangID();
    char szPath[DATA_PATH_SIZE];
    if (!DataFilePath(szPath, wLanguage, VLX_DATA_FILE_1)) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<ExpandEnvironmentStrings failed.");
        return FALSE;
    }
    *lpdwNames = 0;
    TRACE_AS(szFunction, TRACE_NOTE, "VXSADM1:%s", szPath);
    DATA_FILE file;
    if (!OpenDataFile(&file, szPath, szFunction)) {
        TRACE_AS(szFunction, TRACE_MEMORY, "<fopen %s failed.", szPath);
        return FALSE;
    }
    if (FindLine(&file, "[OS_Name]\n", VLX_OS_NAME_SIZE)) {
        ReadEntries(&file, VLX_OS_NAME_SIZE, lpList);
    }
    *lpdwNames = static_cast<DWORD>(lpList->qwCount);
    TRACE_AS(szFunction, TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

}  // namespace

BOOL GetVlxMachSetting(VLX_MACH_DATA *lpVlxMachData) noexcept {
    TRACE(TRACE_NOTE, ">lpVlxMachData=%p", static_cast<void *>(lpVlxMachData));
    std::memset(lpVlxMachData, 0, sizeof *lpVlxMachData);
    AutoRegKey key;
    OpenContractKey(&key);
    ReadServerName(key.Get(), lpVlxMachData->szServerName);
    ReadDeviceCode(key.Get(), lpVlxMachData->szDeviceCode);
    for (std::size_t i = FIRST_PLAIN_FIELD; i < sizeof MACH_FIELDS / sizeof MACH_FIELDS[0]; ++i) {
        ReadContractField(key.Get(), MACH_FIELDS[i], lpVlxMachData);
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

BOOL SetVlxMachSetting(const VLX_MACH_DATA *lpVlxMachData) noexcept {
    TRACE(TRACE_NOTE, ">lpVlxMachData=%p", static_cast<const void *>(lpVlxMachData));
    AutoRegKey key;
    OpenContractKey(&key);
    for (const CONTRACT_FIELD &field : MACH_FIELDS) {
        WriteContractField(key.Get(), field, lpVlxMachData, __func__);
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

BOOL GetVlxMachListData(char **osName, DWORD *osLen) noexcept {
    TRACE(TRACE_NOTE, ">osName=%p,osLen=%p", static_cast<void *>(osName),
          static_cast<void *>(osLen));
    ENTRY_LIST list = {osName, UINT64_MAX};
    return ListOsNames(&list, osLen, __func__);
}

BOOL GetVlxMachListDataBounded(char **osName, DWORD osCapacity, DWORD *osLen) noexcept {
    TRACE(TRACE_NOTE, ">osName=%p,osCapacity=%u,osLen=%p", static_cast<void *>(osName), osCapacity,
          static_cast<void *>(osLen));
    ENTRY_LIST list = {osName, osCapacity};
    return ListOsNames(&list, osLen, __func__);
}
