#include "velox/user_information.h"

#include <amcrtcpy.h>
#include <fcntl.h>
#include <ntwin32/file.h>
#include <ntwin32/memory.h>
#include <records/key_disk.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <climits>
#include <cstdlib>
#include <cstring>
#include <utility>

#include "keyfd/disk_text.h"
#include "registry/handles.h"
#include "registry/text.h"
#include "user_items.h"

namespace {

constexpr std::size_t PATH_CAPACITY = 8192;
constexpr DWORD BUFFER_ROUNDING = 16;
// What is allocated beyond the file's size, before rounding.
constexpr DWORD BUFFER_MARGIN = 17;

// A block of zeroed bytes and its size, which the traces show.
struct FILE_TEXT {
    AutoMemory<char> bytes;
    DWORD dwSize;
};

// Puts a new array in the place of an older one, which is released.
bool AllocateItems(char ***puser_info) noexcept {
    constexpr std::size_t ITEMS_SIZE = USR_INFO_ITEM_COUNT * sizeof(char *);
    auto **lplpszItems = static_cast<char **>(std::calloc(1, ITEMS_SIZE));
    if (lplpszItems == nullptr) {
        TRACE_STEP(TRACE_MEMORY, "malloc error ,malloc size : %d", static_cast<int>(ITEMS_SIZE));
        return false;
    }
    if (*puser_info != nullptr) {
        FreeUSRInfo(puser_info);
    }
    *puser_info = lplpszItems;
    return true;
}

bool MakeFilePath(const char *pUsrPath, char (&szPath)[PATH_CAPACITY]) noexcept {
    const std::size_t dwLength = std::strlen(pUsrPath);
    const char *lpszSlash = dwLength > 0 && pUsrPath[dwLength - 1] == '/' ? "" : "/";
    if (!FormatText(szPath, sizeof szPath, "%s%s%s", pUsrPath, lpszSlash, KEYDISK_CUSTOMER_FILE)) {
        TRACE_STEP(TRACE_FAILURE, "path of %zu bytes is longer than %zu bytes", dwLength,
                   PATH_CAPACITY - sizeof KEYDISK_CUSTOMER_FILE - 1);
        return false;
    }
    TRACE_STEP(TRACE_NOTE, "szAMVLXUSR = %s", szPath);
    return true;
}

// Opens the file by the rule for removable media and takes its size.
bool OpenFile(const char *lpszPath, AutoDescriptor *file, off_t *lpSize) noexcept {
    *file->Put() = open(lpszPath, O_RDONLY | O_NOFOLLOW | O_NONBLOCK | O_CLOEXEC);
    if (!file->IsValid()) {
        TRACE_STEP(TRACE_MEMORY, "open AMVLXUSR.INF  error.  path:%s", lpszPath);
        return false;
    }
    struct stat status = {};
    if (fstat(file->Get(), &status) != 0) {
        TRACE_STEP(TRACE_MEMORY, "fstat AMVLXUSR.INF  error.  path:%s", lpszPath);
        return false;
    }
    if (!S_ISREG(status.st_mode)) {
        TRACE_STEP(TRACE_MEMORY, "open AMVLXUSR.INF  error.  path:%s", lpszPath);
        return false;
    }
    *lpSize = status.st_size;
    return true;
}

bool ReadBytes(const AutoDescriptor &file, off_t nSize, FILE_TEXT *lpText) noexcept {
    // What the traces show of a file that is too large is cut to their number.
    const auto dwTraced = static_cast<DWORD>(std::min<off_t>(nSize, INT_MAX - 2 * BUFFER_MARGIN));
    const DWORD dwAllocated = Sec_Usr_CalcSize(dwTraced + BUFFER_MARGIN);
    if (nSize > KES_MAX_MEDIA_FILE) {
        TRACE_STEP(TRACE_MEMORY, "read file error. size:%d", static_cast<int>(dwAllocated));
        return false;
    }
    lpText->dwSize = dwTraced;
    lpText->bytes.Reset(static_cast<char *>(std::calloc(1, dwAllocated)));
    if (!lpText->bytes.IsValid()) {
        TRACE_STEP(TRACE_MEMORY, "malloc error.  malloc size:%d", static_cast<int>(dwAllocated));
        return false;
    }
    if (read(file.Get(), lpText->bytes.Get(), lpText->dwSize) !=
        static_cast<ssize_t>(lpText->dwSize)) {
        TRACE_STEP(TRACE_MEMORY, "read file error. size:%d", static_cast<int>(dwAllocated));
        return false;
    }
    return true;
}

LONG ReadFileText(const char *lpszPath, FILE_TEXT *lpText) noexcept {
    AutoDescriptor file;
    off_t nSize = 0;
    if (!OpenFile(lpszPath, &file, &nSize)) {
        return USR_INFO_NOT_OPENED;
    }
    return ReadBytes(file, nSize, lpText) ? 0 : USR_INFO_FAILED;
}

bool AllocateText(AutoMemory<char> *text, std::size_t dwSize) noexcept {
    // One byte more, so that a text which fills its block ends.
    text->Reset(static_cast<char *>(std::calloc(dwSize + 1, 1)));
    if (!text->IsValid()) {
        TRACE_STEP(TRACE_MEMORY, "malloc error.  malloc size:%d", static_cast<int>(dwSize));
        return false;
    }
    return true;
}

bool ConvertText(const AutoGlobal &decoded, AutoMemory<char> *euc) noexcept {
    const auto *lpDecoded = static_cast<const char *>(decoded.Get());
    // Less than the file, of at most 4 MiB, that it was decoded from.
    const auto dwSize = static_cast<DWORD>(GlobalSize(decoded.Get()));
    AutoMemory<char> wide;
    if (!AllocateText(&wide, 2 * std::size_t{dwSize}) ||
        !AllocateText(euc, 2 * std::size_t{dwSize})) {
        return false;
    }
    const DISK_TEXT_RESULT eResult = ConvertDiskText(lpDecoded, dwSize, wide.Get(), euc->Get());
    TRACE_STEP(TRACE_NOTE, "1byte-JIS:%.*s", static_cast<int>(dwSize), lpDecoded);
    TRACE_STEP(TRACE_NOTE, "2byte-JIS:%s", wide.Get());
    TRACE_STEP(TRACE_NOTE, "nEUC:%s", euc->Get());
    if (eResult != DISK_TEXT_CONVERTED) {
        TRACE_STEP(TRACE_FAILURE, "%s() failed!!",
                   eResult == DISK_TEXT_NOT_WIDENED ? "kes_AnkZen" : "ecm_SJIStoEUC");
        return false;
    }
    return true;
}

bool DecodeText(FILE_TEXT file, AutoMemory<char> *euc) noexcept {
    AutoGlobal decoded;
    DWORD dwDecoded = 0;
    if (UUCdDeCodingFromMemory(file.bytes.Get(), file.dwSize, decoded.Put(), &dwDecoded) == FALSE) {
        TRACE_STEP(TRACE_FAILURE, "UUCdDeCodingFromMemory return false");
        return false;
    }
    file.bytes.Reset();
    return ConvertText(decoded, euc);
}

LONG ReadInformation(const char *pUsrPath, char ***puser_info) noexcept {
    if (pUsrPath == nullptr || puser_info == nullptr) {
        TRACE_STEP(TRACE_FAILURE, "%s", pUsrPath == nullptr ? "pUsrPath=NULL" : "puser_info=NULL");
        return USR_INFO_FAILED;
    }
    char szPath[PATH_CAPACITY];
    if (!AllocateItems(puser_info) || !MakeFilePath(pUsrPath, szPath)) {
        return USR_INFO_FAILED;
    }
    FILE_TEXT file = {};
    const LONG nRead = ReadFileText(szPath, &file);
    if (nRead != 0) {
        return nRead;
    }
    AutoMemory<char> euc;
    if (!DecodeText(std::move(file), &euc)) {
        return USR_INFO_FAILED;
    }
    return ReadUserItems(euc.Get(), static_cast<DWORD>(std::strlen(euc.Get())), *puser_info);
}

}  // namespace

DWORD Sec_Usr_CalcSize(DWORD n) noexcept {
    return (n + BUFFER_ROUNDING - 1) / BUFFER_ROUNDING * BUFFER_ROUNDING;
}

LONG GetUSRInfo(const char *pUsrPath, char ***puser_info) noexcept {
    TRACE(TRACE_NOTE, ">pUsrPath=%s,puser_info=%p", TextOrNull(pUsrPath),
          static_cast<void *>(puser_info));
    const LONG nResult = ReadInformation(pUsrPath, puser_info);
    if (nResult == USR_INFO_NOT_OPENED || nResult == USR_INFO_FAILED) {
        FreeUSRInfo(puser_info);
    }
    TRACE(TRACE_NOTE, "< return %d", nResult);
    return nResult;
}

void FreeUSRInfo(char ***puser_info) noexcept {
    if (puser_info == nullptr) {
        TRACE(TRACE_NOTE, "< puser_info = NULL");
        return;
    }
    if (*puser_info == nullptr) {
        TRACE(TRACE_NOTE, "< *puser_info = NULL");
        return;
    }
    for (int nItem = 0; nItem < USR_INFO_ITEM_COUNT; ++nItem) {
        std::free((*puser_info)[nItem]);
    }
    std::free(*puser_info);
    *puser_info = nullptr;
}
