#include "data_file.h"

#include <ntwin32/file.h>
#include <registry/folder.h>
#include <registry/text.h>
#include <registry/trace.h>
#include <strings.h>

#include <algorithm>
#include <cstdlib>
#include <cstring>

#include "velox/contract.h"

static constexpr char TRACE_SOURCE[] = "amrset";

namespace {

constexpr char FILE_1_JP[] = "/data/J_vxsadm1.txt";
constexpr char FILE_2_JP[] = "/data/J_vxsadm2.txt";
constexpr char FILE_1_EN[] = "/data/E_vxsadm1.txt";
constexpr char FILE_2_EN[] = "/data/E_vxsadm2.txt";

// The first block of memory for a file; the files that are shipped fit into it.
constexpr std::size_t FIRST_BLOCK = 0x10000;
// The longest piece that any reader asks for, terminator included.
constexpr std::size_t LONGEST_PIECE = VLX_OPTION_SIZE;

// A block of twice the size with the same text; false without memory.
bool Grow(DATA_FILE *lpFile, std::size_t *lpdwCapacity, const char *szFunction) noexcept {
    const std::size_t dwCapacity = *lpdwCapacity == 0 ? FIRST_BLOCK : *lpdwCapacity * 2;
    AutoMemory<char> block(static_cast<char *>(std::malloc(dwCapacity)));
    if (!block.IsValid()) {
        TRACE_AS(szFunction, TRACE_MEMORY, "malloc %zu failed.", dwCapacity);
        return false;
    }
    if (lpFile->dwSize > 0) {
        std::memcpy(block.Get(), lpFile->text.Get(), lpFile->dwSize);
    }
    lpFile->text = std::move(block);
    *lpdwCapacity = dwCapacity;
    return true;
}

// Reads to the end; the platform fails the read that would pass its limit.
bool ReadWhole(DATA_FILE *lpFile, HANDLE hFile, const char *szFunction) noexcept {
    std::size_t dwCapacity = 0;
    for (;;) {
        if (lpFile->dwSize == dwCapacity && !Grow(lpFile, &dwCapacity, szFunction)) {
            return false;
        }
        DWORD dwRead = 0;
        if (ReadFile(hFile, lpFile->text.Get() + lpFile->dwSize,
                     static_cast<DWORD>(dwCapacity - lpFile->dwSize), &dwRead, nullptr) == FALSE) {
            TRACE_AS(szFunction, TRACE_FAILURE, "ReadFile failed.");
            return false;
        }
        if (dwRead == 0) {
            return true;
        }
        lpFile->dwSize += dwRead;
    }
}

}  // namespace

const char *GetEnvLang() noexcept {
    const char *lpszLang = secure_getenv("LANG");
    TRACE(TRACE_NOTE, "<lang=%s", TextOrNull(lpszLang));
    return lpszLang;
}

int GetFileByEnv(char *buf, const char *basepath, int fileflag) noexcept {
    TRACE(TRACE_NOTE, ">buf=%p,basepath=%s,fileflag=%d", static_cast<void *>(buf), basepath,
          fileflag);
    const char *lpszLang = GetEnvLang();
    const bool bJapanese = lpszLang != nullptr && std::strncmp(lpszLang, "ja", 2) == 0;
    const char *lpszFile = nullptr;
    if (fileflag == VLX_DATA_FILE_1) {
        lpszFile = bJapanese ? FILE_1_JP : FILE_1_EN;
    } else {
        // Without LANG file 2 is the Japanese one although file 1 is the English one.
        lpszFile = bJapanese || lpszLang == nullptr ? FILE_2_JP : FILE_2_EN;
    }
    const std::size_t dwLength = std::strlen(basepath);
    std::memmove(buf, basepath, dwLength + 1);
    std::memcpy(buf + dwLength, lpszFile, std::strlen(lpszFile) + 1);
    TRACE(TRACE_NOTE, "<buf=%s", buf);
    return 0;
}

bool DataFilePath(char (&szPath)[DATA_PATH_SIZE], LANGID wLanguage, int nFile) noexcept {
    char szDirectory[KES_DIRECTORY_SIZE] = {};
    if (!ExpandProductFolder(szDirectory)) {
        return false;
    }
    const bool bJapanese = wLanguage == LANGID_JAPANESE;
    const char *lpszFile1 = bJapanese ? FILE_1_JP : FILE_1_EN;
    const char *lpszFile2 = bJapanese ? FILE_2_JP : FILE_2_EN;
    return FormatText(szPath, sizeof szPath, "%s%s", szDirectory,
                      nFile == VLX_DATA_FILE_1 ? lpszFile1 : lpszFile2);
}

bool OpenDataFile(DATA_FILE *lpFile, const char *lpszPath, const char *szFunction) noexcept {
    const AutoFile file(CreateFile(lpszPath, GENERIC_READ, FILE_SHARE_READ, nullptr, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, 0));
    if (!file.IsValid()) {
        return false;
    }
    *lpFile = {};
    return ReadWhole(lpFile, file.Get(), szFunction);
}

bool ReadPiece(DATA_FILE *lpFile, char *lpszPiece, std::size_t dwCapacity) noexcept {
    const std::size_t dwMost = std::min(dwCapacity - 1, lpFile->dwSize - lpFile->dwPosition);
    if (dwMost == 0) {
        return false;
    }
    const char *lpszFrom = lpFile->text.Get() + lpFile->dwPosition;
    const void *lpEnd = std::memchr(lpszFrom, '\n', dwMost);
    const std::size_t dwLength =
        lpEnd == nullptr
            ? dwMost
            : static_cast<std::size_t>(static_cast<const char *>(lpEnd) - lpszFrom) + 1;
    std::memcpy(lpszPiece, lpszFrom, dwLength);
    lpszPiece[dwLength] = '\0';
    lpFile->dwPosition += dwLength;
    return true;
}

void CutLastByte(char *lpszText) noexcept {
    const std::size_t dwLength = std::strlen(lpszText);
    if (dwLength > 0) {
        lpszText[dwLength - 1] = '\0';
    }
}

bool FindLine(DATA_FILE *lpFile, const char *lpszLine, std::size_t dwCapacity) noexcept {
    char szPiece[LONGEST_PIECE];
    while (ReadPiece(lpFile, szPiece, dwCapacity)) {
        if (strcasecmp(szPiece, lpszLine) == 0) {
            return true;
        }
    }
    return false;
}

void AddEntry(ENTRY_LIST *lpList, const char *lpszEntry) noexcept {
    if (lpList->qwCount < lpList->qwCapacity) {
        std::memcpy(lpList->lplpEntries[lpList->qwCount], lpszEntry, std::strlen(lpszEntry) + 1);
    }
    ++lpList->qwCount;
}

void ReadEntries(DATA_FILE *lpFile, std::size_t dwCapacity, ENTRY_LIST *lpList) noexcept {
    char szPiece[LONGEST_PIECE];
    while (ReadPiece(lpFile, szPiece, dwCapacity) && strcasecmp(szPiece, "[END]\n") != 0) {
        CutLastByte(szPiece);
        AddEntry(lpList, szPiece);
    }
}
