// The set-up data files. A file is read whole when it is opened (KES_MAX_MEDIA_FILE bytes at most)
// and handed out in pieces as fgets() cuts it: at most capacity - 1 bytes, the line end included. A
// longer line comes as several pieces, and the readers of the sections rely on that.
#ifndef AMRSET_DATA_FILE_H
#define AMRSET_DATA_FILE_H

#include <ntwin32/system.h>
#include <registry/handles.h>

#include <cstddef>
#include <cstdint>

struct DATA_FILE {
    AutoMemory<char> text;
    std::size_t dwSize = 0;
    std::size_t dwPosition = 0;
};

// A list of the caller: what is beyond the capacity is counted and not stored.
struct ENTRY_LIST {
    char **lplpEntries = nullptr;
    std::uint64_t qwCapacity = 0;
    std::uint64_t qwCount = 0;
};

// The folder that "%KesDir%" names and a file's name behind it.
inline constexpr std::size_t KES_DIRECTORY_SIZE = 4096;
inline constexpr std::size_t DATA_PATH_SIZE = KES_DIRECTORY_SIZE + 32;

// Stores the path of a set-up data file of the system's language. False when "%KesDir%" cannot be
// expanded.
[[nodiscard]] bool DataFilePath(char (&szPath)[DATA_PATH_SIZE], LANGID wLanguage,
                                int nFile) noexcept;

// False when the file cannot be opened or read whole; traces of what happened name szFunction.
[[nodiscard]] bool OpenDataFile(DATA_FILE *lpFile, const char *lpszPath,
                                const char *szFunction) noexcept;

inline void RewindDataFile(DATA_FILE *lpFile) noexcept {
    lpFile->dwPosition = 0;
}

// The next piece; false at the end of the file. A piece ends at its first zero byte.
[[nodiscard]] bool ReadPiece(DATA_FILE *lpFile, char *lpszPiece, std::size_t dwCapacity) noexcept;

// Removes the last byte, whatever it is; an empty text stays empty.
void CutLastByte(char *lpszText) noexcept;

// Reads on behind the first piece that equals the heading line without regard to case; false when
// there is none.
[[nodiscard]] bool FindLine(DATA_FILE *lpFile, const char *lpszLine,
                            std::size_t dwCapacity) noexcept;

// Counts an entry and stores it where the list has room.
void AddEntry(ENTRY_LIST *lpList, const char *lpszEntry) noexcept;

// Adds the pieces up to the line "[END]" or the end of the file, each without its last byte.
void ReadEntries(DATA_FILE *lpFile, std::size_t dwCapacity, ENTRY_LIST *lpList) noexcept;

#endif  // AMRSET_DATA_FILE_H
