// The dealer's data, and the dealers that the set-up offers on a Japanese system.
#include <ntwin32/registry.h>
#include <ntwin32/system.h>
#include <registry/trace.h>
#include <velox/contract_items.h>

#include <cstdint>
#include <cstring>

#include "contract_key.h"
#include "data_file.h"
#include "velox/contract.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr CONTRACT_FIELD VEND_FIELDS[] = {
    {VX_REG_SHOP[0], offsetof(VLX_VEND_DATA, szDealer), VLX_SIZE_SYSSHOPNMN, NOT_EMPTY},
    {VX_REG_SHOP[1], offsetof(VLX_VEND_DATA, szSalesOffice), VLX_SIZE_SYSEIGYOBUNMN},
    {VX_REG_SHOP[2], offsetof(VLX_VEND_DATA, szSalesName), VLX_SIZE_SYSEIGYONMN},
    {VX_REG_SHOP[3], offsetof(VLX_VEND_DATA, szSalesTelephone), VLX_SIZE_SYSEIGYOTEL},
    {VX_REG_SHOP[4], offsetof(VLX_VEND_DATA, szEngineerDepartment), VLX_SIZE_SYSSEBU},
    {VX_REG_SHOP[5], offsetof(VLX_VEND_DATA, szEngineerName), VLX_SIZE_SYSSENMN},
    {VX_REG_SHOP[6], offsetof(VLX_VEND_DATA, szEngineerTelephone), VLX_SIZE_SYSSETEL},
};

bool ListDealers(ENTRY_LIST *lpList, const char *lpszPath, const char *szFunction) noexcept {
    DATA_FILE file;
    if (!OpenDataFile(&file, lpszPath, szFunction)) {
        return false;
    }
    if (FindLine(&file, "[Seller_Name]\n", VLX_DEALER_SIZE)) {
        ReadEntries(&file, VLX_DEALER_SIZE, lpList);
    }
    return true;
}

// The work of both functions; every record names the one that was called.
BOOL ReadVendor(VLX_VEND_DATA *lpVlxVendData, ENTRY_LIST *lpList, DWORD *lpdwDealers,
                const char *szFunction) noexcept {
    const LANGID wLanguage = GetSystemDefaultLangID();
    char szPath[DATA_PATH_SIZE];
    if (!DataFilePath(szPath, wLanguage, VLX_DATA_FILE_2)) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<ExpandEnvironmentStrings failed.");
        return FALSE;
    }
    std::memset(lpVlxVendData, 0, sizeof *lpVlxVendData);
    AutoRegKey key;
    OpenContractKey(&key);
    *lpdwDealers = 0;
    if (wLanguage == LANGID_JAPANESE && !ListDealers(lpList, szPath, szFunction)) {
        key.Reset();
        TRACE_AS(szFunction, TRACE_MEMORY, "<fopen %s failed.return FALSE.", szPath);
        return FALSE;
    }
    *lpdwDealers = static_cast<DWORD>(lpList->qwCount);
    for (const CONTRACT_FIELD &field : VEND_FIELDS) {
        ReadContractField(key.Get(), field, lpVlxVendData);
    }
    key.Reset();
    TRACE_AS(szFunction, TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

}  // namespace

BOOL GetVlxVendSetting(VLX_VEND_DATA *lpVlxVendData, char **vendData, DWORD *vendLen) noexcept {
    TRACE(TRACE_NOTE, ">lpVlxVendData=%p,vendData=%p,vendLen=%p",
          static_cast<void *>(lpVlxVendData), static_cast<void *>(vendData),
          static_cast<void *>(vendLen));
    ENTRY_LIST list = {vendData, UINT64_MAX};
    return ReadVendor(lpVlxVendData, &list, vendLen, __func__);
}

BOOL GetVlxVendSettingBounded(VLX_VEND_DATA *lpVlxVendData, char **vendData, DWORD vendCapacity,
                              DWORD *vendLen) noexcept {
    TRACE(TRACE_NOTE, ">lpVlxVendData=%p,vendData=%p,vendCapacity=%u,vendLen=%p",
          static_cast<void *>(lpVlxVendData), static_cast<void *>(vendData), vendCapacity,
          static_cast<void *>(vendLen));
    ENTRY_LIST list = {vendData, vendCapacity};
    return ReadVendor(lpVlxVendData, &list, vendLen, __func__);
}

BOOL SetVlxVendSetting(const VLX_VEND_DATA *lpVlxVendData) noexcept {
    TRACE(TRACE_NOTE, ">lpVlxVendData=%p", static_cast<const void *>(lpVlxVendData));
    AutoRegKey key;
    OpenContractKey(&key);
    for (const CONTRACT_FIELD &field : VEND_FIELDS) {
        WriteContractField(key.Get(), field, lpVlxVendData, __func__);
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}
