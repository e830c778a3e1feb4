// The option devices of the server: their codes in the registry, their descriptions in file 1.
#include <ntwin32/registry.h>
#include <ntwin32/system.h>
#include <registry/text.h>
#include <registry/trace.h>
#include <strings.h>
#include <velox/contract_items.h>

#include <algorithm>
#include <cstdint>
#include <cstring>

#include "contract_key.h"
#include "data_file.h"
#include "velox/contract.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr const char *OPTION_COUNT = VX_REG_OPTION[VX_REG_OPTION_COUNT];
constexpr const char *OPTION_CODE = VX_REG_OPTION[VX_REG_OPTION_CODE];

// The last number whose value is deleted when fewer options are stored.
constexpr std::int64_t LAST_DELETED = 99;

constexpr char LIST_HEADING[] = "[OPTION_LIST]\n";
constexpr char LIST_END[] = "[LIST_END]\n";

using OPTION_PIECE = char[VLX_OPTION_SIZE];
// "OPTCD" and a number.
using OPTION_NAME = char[32];

void FormatOptionName(OPTION_NAME &szName, std::int64_t qwNumber) noexcept {
    (void)FormatText(szName, sizeof szName, "%s%02lld", OPTION_CODE,
                     static_cast<long long>(qwNumber));
}

// Reads the items of one kind; the first matching line begins them.
void ReadKind(DATA_FILE *lpFile, const char *lpszHeading, ENTRY_LIST *lpList) noexcept {
    OPTION_PIECE szPiece;
    RewindDataFile(lpFile);
    while (ReadPiece(lpFile, szPiece, sizeof szPiece)) {
        CutLastByte(szPiece);
        if (strcasecmp(szPiece, lpszHeading) == 0) {
            ReadEntries(lpFile, sizeof szPiece, lpList);
            return;
        }
    }
}

// The work of both kind functions; every record names the one that was called.
BOOL ListKinds(VLX_OPTION_KIND *lpKinds, DWORD dwKindCapacity, std::uint64_t qwItemCapacity,
               DWORD *lpdwKinds, const char *szFunction) noexcept {
    const LANGID wLanguage = GetSystemDefaultLangID();
    *lpdwKinds = wLanguage == LANGID_JAPANESE ? VLX_OPTION_KINDS_JAPANESE : VLX_OPTION_KINDS_OTHER;
    char szPath[DATA_PATH_SIZE];
    if (!DataFilePath(szPath, wLanguage, VLX_DATA_FILE_1)) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<ExpandEnvironmentStrings failed.return FALSE.");
        return FALSE;
    }
    DATA_FILE file;
    if (!OpenDataFile(&file, szPath, szFunction)) {
        TRACE_AS(szFunction, TRACE_MEMORY, "<fopen %s failed.return FALSE.", szPath);
        return FALSE;
    }
    const DWORD dwKinds = std::min(dwKindCapacity, *lpdwKinds);
    for (DWORD i = 0; i < dwKinds; ++i) {
        ENTRY_LIST list = {lpKinds[i].lplpItems, qwItemCapacity};
        ReadKind(&file, lpKinds[i].lpszHeading, &list);
        lpKinds[i].dwItems = static_cast<DWORD>(list.qwCount);
    }
    TRACE_AS(szFunction, TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

// Turns "code " into the whole line of the option list that begins so, where there is one.
void DescribeOption(DATA_FILE *lpFile, OPTION_PIECE &szOption) noexcept {
    const std::size_t dwLength = std::strlen(szOption);
    OPTION_PIECE szPiece;
    RewindDataFile(lpFile);
    if (!FindLine(lpFile, LIST_HEADING, sizeof szPiece)) {
        return;
    }
    while (ReadPiece(lpFile, szPiece, sizeof szPiece) && strcasecmp(szPiece, LIST_END) != 0) {
        if (std::strncmp(szPiece, szOption, dwLength) == 0) {
            std::memcpy(szOption, szPiece, sizeof szPiece);
            return;
        }
    }
}

void ReadOptions(HKEY hKey, DATA_FILE *lpFile, DWORD dwOptions, ENTRY_LIST *lpList) noexcept {
    const DWORD dwLast = std::min<DWORD>(dwOptions, VLX_MAX_OPTIONS);
    for (DWORD i = 1; i <= dwLast; ++i) {
        OPTION_NAME szName;
        FormatOptionName(szName, i);
        char szCode[VLX_FIELD_SIZE];
        OPTION_PIECE szOption;
        if (!QueryContractText(hKey, {szName, 0, VLX_SIZE_OPTCD}, szCode) ||
            !FormatText(szOption, sizeof szOption, "%s ", szCode)) {
            continue;
        }
        DescribeOption(lpFile, szOption);
        CutLastByte(szOption);
        AddEntry(lpList, szOption);
    }
}

// The work of both reading functions; every record names the one that was called.
BOOL ListOptions(ENTRY_LIST *lpList, std::int64_t *lpqwOptions, const char *szFunction) noexcept {
    char szPath[DATA_PATH_SIZE];
    if (!DataFilePath(szPath, GetSystemDefaultLangID(), VLX_DATA_FILE_1)) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<ExpandEnvironmentStrings() failed.return FALSE.");
        return FALSE;
    }
    *lpqwOptions = 0;
    AutoRegKey key;
    OpenContractKey(&key);
    DATA_FILE file;
    if (!OpenDataFile(&file, szPath, szFunction)) {
        key.Reset();
        TRACE_AS(szFunction, TRACE_MEMORY, "<fopen %s failed.return FALSE.", szPath);
        return FALSE;
    }
    DWORD dwOptions = 0;
    DWORD dwType = REG_DWORD;
    DWORD dwSize = sizeof dwOptions;
    if (RegQueryValueEx(key.Get(), OPTION_COUNT, nullptr, &dwType,
                        reinterpret_cast<BYTE *>(&dwOptions), &dwSize) != ERROR_SUCCESS) {
        TRACE_AS(szFunction, TRACE_FAILURE, "<RegQueryValueEx OPTCDN failed.return TRUE.");
        return TRUE;
    }
    ReadOptions(key.Get(), &file, dwOptions, lpList);
    *lpqwOptions = static_cast<std::int64_t>(lpList->qwCount);
    key.Reset();
    TRACE_AS(szFunction, TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

bool IsInOptionList(DATA_FILE *lpFile, const char *lpszOption) noexcept {
    OPTION_PIECE szPiece;
    RewindDataFile(lpFile);
    if (!FindLine(lpFile, LIST_HEADING, sizeof szPiece)) {
        return false;
    }
    while (ReadPiece(lpFile, szPiece, sizeof szPiece) && strcasecmp(szPiece, LIST_END) != 0) {
        CutLastByte(szPiece);
        if (strcasecmp(szPiece, lpszOption) == 0) {
            return true;
        }
    }
    return false;
}

// Stores one option: of a line of the option list only the code, anything else as it is given.
void StoreOption(HKEY hKey, DATA_FILE *lpFile, std::int64_t qwNumber,
                 const char *lpszOption) noexcept {
    OPTION_PIECE szCode;
    if (IsInOptionList(lpFile, lpszOption) && CopyText(szCode, lpszOption)) {
        szCode[std::strcspn(szCode, " ")] = '\0';
        lpszOption = szCode;
    }
    OPTION_NAME szName;
    FormatOptionName(szName, qwNumber);
    (void)RegSetValueEx(hKey, szName, 0, REG_SZ, reinterpret_cast<const BYTE *>(lpszOption),
                        static_cast<DWORD>(std::strlen(lpszOption) + 1));
}

// Writes the number of options and deletes the codes behind the last one.
void StoreOptionCount(HKEY hKey, std::int64_t qwOptions) noexcept {
    const auto dwOptions = static_cast<DWORD>(qwOptions);
    (void)RegSetValueEx(hKey, OPTION_COUNT, 0, REG_DWORD,
                        reinterpret_cast<const BYTE *>(&dwOptions), sizeof dwOptions);
    for (std::int64_t i = qwOptions + 1; i <= LAST_DELETED; ++i) {
        OPTION_NAME szName;
        FormatOptionName(szName, i);
        (void)RegDeleteValue(hKey, szName);
    }
}

}  // namespace

void itoc(int a, char *buf) noexcept {
    constexpr std::size_t NUMBER_SIZE = 11;  // "2147483647" and its terminator
    if (a < 0) {
        (void)CopyText(buf, NUMBER_SIZE, "error");
    } else {
        (void)FormatText(buf, NUMBER_SIZE, "%d", a);
    }
}

BOOL GetVlxOptKindList(VLX_OPTION_KIND *OptionKind) noexcept {
    TRACE(TRACE_NOTE, ">OptionKind=%p", static_cast<void *>(OptionKind));
    DWORD dwKinds = 0;
    return ListKinds(OptionKind, UINT32_MAX, UINT64_MAX, &dwKinds, __func__);
}

BOOL GetVlxOptKindListBounded(VLX_OPTION_KIND *OptionKind, DWORD kindCapacity, DWORD itemCapacity,
                              DWORD *kindLen) noexcept {
    TRACE(TRACE_NOTE, ">OptionKind=%p,kindCapacity=%u,itemCapacity=%u,kindLen=%p",
          static_cast<void *>(OptionKind), kindCapacity, itemCapacity,
          static_cast<void *>(kindLen));
    return ListKinds(OptionKind, kindCapacity, itemCapacity, kindLen, __func__);
}

BOOL GetVlxOptSetting(char **optionList, int64_t *optionLen) noexcept {
    TRACE(TRACE_NOTE, ">optionList=%p,optionLen=%p", static_cast<void *>(optionList),
          static_cast<void *>(optionLen));
    ENTRY_LIST list = {optionList, UINT64_MAX};
    return ListOptions(&list, optionLen, __func__);
}

BOOL GetVlxOptSettingBounded(char **optionList, int64_t optionCapacity,
                             int64_t *optionLen) noexcept {
    TRACE(TRACE_NOTE, ">optionList=%p,optionCapacity=%lld,optionLen=%p",
          static_cast<void *>(optionList), static_cast<long long>(optionCapacity),
          static_cast<void *>(optionLen));
    ENTRY_LIST list = {optionList,
                       optionCapacity > 0 ? static_cast<std::uint64_t>(optionCapacity) : 0};
    return ListOptions(&list, optionLen, __func__);
}

BOOL SetVlxOptSetting(const char *const *optionList, int64_t optionLen) noexcept {
    TRACE(TRACE_NOTE, ">optionList=%p,optionLen=%ld", static_cast<const void *>(optionList),
          static_cast<long>(optionLen));
    if (optionLen < 0) {
        TRACE(TRACE_FAILURE, "<optionLen is negative.return FALSE.");
        return FALSE;
    }
    char szPath[DATA_PATH_SIZE];
    if (!DataFilePath(szPath, GetSystemDefaultLangID(), VLX_DATA_FILE_1)) {
        TRACE(TRACE_FAILURE, "<ExpandEnvironmentStrings() failed.return FALSE.");
        return FALSE;
    }
    AutoRegKey key;
    OpenContractKey(&key);
    DATA_FILE file;
    if (!OpenDataFile(&file, szPath, __func__)) {
        key.Reset();
        TRACE(TRACE_MEMORY, "<fopen %s failed.return FALSE.", szPath);
        return FALSE;
    }
    for (std::int64_t i = 0; i < optionLen; ++i) {
        StoreOption(key.Get(), &file, i + 1, optionList[i]);
    }
    StoreOptionCount(key.Get(), optionLen);
    key.Reset();
    TRACE(TRACE_NOTE, "<return TRUE");
    return TRUE;
}
