// The customer's data.
#include <ntwin32/registry.h>
#include <records/customer_items.h>
#include <registry/trace.h>
#include <velox/contract_items.h>

#include <cstring>

#include "contract_key.h"
#include "velox/contract.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr CONTRACT_FIELD USER_FIELDS[] = {
    {VX_REG_USER[1], offsetof(VLX_USER_DATA, szNameKana), VLX_SIZE_TOKUINMA},
    {VX_REG_USER[2], offsetof(VLX_USER_DATA, szName), VLX_SIZE_TOKUINMN},
    {VX_REG_USER[3], offsetof(VLX_USER_DATA, szDepartment), VLX_SIZE_BUNMN},
    {VX_REG_USER[4], offsetof(VLX_USER_DATA, szPostalCode), VLX_SIZE_ZIPNO},
    {VX_REG_USER[5], offsetof(VLX_USER_DATA, szAddressKana), VLX_SIZE_ADRSNMA},
    {VX_REG_USER[6], offsetof(VLX_USER_DATA, szAddress), VLX_SIZE_ADRSNMN},
    {VX_REG_USER[7], offsetof(VLX_USER_DATA, szAddressDetails), VLX_SIZE_SHOZAINMN},
    {VX_REG_USER[8], offsetof(VLX_USER_DATA, szTelephone), VLX_SIZE_BUTEL},
    {VX_REG_USER[9], offsetof(VLX_USER_DATA, szMail), VLX_SIZE_MAIL},
    {VX_REG_USER[10], offsetof(VLX_USER_DATA, szContactKana), VLX_SIZE_BUTANNMA},
    {VX_REG_USER[11], offsetof(VLX_USER_DATA, szContact), VLX_SIZE_BUTANNMN},
    // Read only: it comes from the key disk alone.
    {VX_REG_USER[12], offsetof(VLX_USER_DATA, szUserCode), VLX_SIZE_USERCODE},
};
constexpr std::size_t WRITTEN_FIELDS = sizeof USER_FIELDS / sizeof USER_FIELDS[0] - 1;

DWORD KindOf(DWORD dwStored) noexcept {
    return dwStored == CUSTOMER_KIND_CORPORATE ? VLX_CUSTOMER_CORPORATE : VLX_CUSTOMER_PERSONAL;
}

DWORD StoredKind(DWORD dwKind) noexcept {
    switch (dwKind) {
        case VLX_CUSTOMER_PERSONAL:
            return CUSTOMER_KIND_PERSONAL;
        case VLX_CUSTOMER_CORPORATE:
            return CUSTOMER_KIND_CORPORATE;
        default:
            return 0;
    }
}

}  // namespace

BOOL GetVlxUserSetting(VLX_USER_DATA *lpVlxUserData) noexcept {
    TRACE(TRACE_NOTE, ">lpVlxUserData=%p", static_cast<void *>(lpVlxUserData));
    std::memset(lpVlxUserData, 0, sizeof *lpVlxUserData);
    AutoRegKey key;
    OpenContractKey(&key);
    DWORD dwStored = 0;
    DWORD dwType = REG_DWORD;
    DWORD dwSize = sizeof dwStored;
    if (RegQueryValueEx(key.Get(), VX_REG_USER[VX_REG_USER_KIND], nullptr, &dwType,
                        reinterpret_cast<BYTE *>(&dwStored), &dwSize) == ERROR_SUCCESS) {
        lpVlxUserData->dwKind = KindOf(dwStored);
    }
    for (const CONTRACT_FIELD &field : USER_FIELDS) {
        ReadContractField(key.Get(), field, lpVlxUserData);
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

BOOL SetVlxUserSetting(const VLX_USER_DATA *lpVlxUserData) noexcept {
    TRACE(TRACE_NOTE, ">lpVlxUserData=%p", static_cast<const void *>(lpVlxUserData));
    AutoRegKey key;
    OpenContractKey(&key);
    const DWORD dwStored = StoredKind(lpVlxUserData->dwKind);
    (void)RegSetValueEx(key.Get(), VX_REG_USER[VX_REG_USER_KIND], 0, REG_DWORD,
                        reinterpret_cast<const BYTE *>(&dwStored), sizeof dwStored);
    for (std::size_t i = 0; i < WRITTEN_FIELDS; ++i) {
        WriteContractField(key.Get(), USER_FIELDS[i], lpVlxUserData, __func__);
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}
