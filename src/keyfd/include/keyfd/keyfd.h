/*
 * The key-disk import of vlxfd: the driver, the import, and the readers below them.
 *
 * Conventions
 *  1. Results are those of each function's text; every step is traced, source "keyfd". The records
 *     of all stages of CheckKeyFD name the function "CheckKeyFD".
 *  2. Nothing is undone: what a stage stored stays stored when a later stage fails.
 *  3. Not thread-safe: one reader of lines and one locale serve the process.
 */
#ifndef KEYFD_KEYFD_H
#define KEYFD_KEYFD_H

#include <ntwin32/types.h>

// Results of CheckKeyFD.
inline constexpr DWORD KEYFD_IMPORTED = 0;
inline constexpr DWORD KEYFD_FAILED = 1;
inline constexpr DWORD KEYFD_NOT_MOUNTED = 4;

// Results of GetOpenMsgfromFD, the exit statuses of vlxfd.
inline constexpr LONG SETUP_DONE = 1;
inline constexpr LONG SETUP_REGISTRY_FAILED = 0;
inline constexpr LONG SETUP_NOT_MOUNTED = 100;
inline constexpr LONG SETUP_IMPORT_FAILED = 200;

// Imports the key disk and does the registry steps that follow it.
LONG GetOpenMsgfromFD() noexcept;

// Capacity of a description of the operating system, terminator included.
inline constexpr DWORD OS_DESCRIPTION_CAPACITY = 20;

// Writes "LINUX", "LINUX(RH)", "LINUX(TB)" or "LINUX(ML)" into lpszDescription
// (OS_DESCRIPTION_CAPACITY bytes; null: only traced). Always TRUE.
LONG GetosDescri(char *lpszDescription) noexcept;

// Stores the computer's name as "SYSNMN". 1 when it is stored, else 0.
LONG SetRealComputerName() noexcept;

// Finds the key disk in the mount table and imports its three files. dwDrive is not used.
DWORD CheckKeyFD(DWORD dwDrive) noexcept;

// The index of the last byte of the first run of CR and LF bytes at or after dwStartPos (dwSize - 1
// without one). -1: the start is not below dwSize, is a line break, or is the last byte. 0: a zero
// byte comes first.
LONG GetCRLF(DWORD dwStartPos, const char *buffer, DWORD dwSize) noexcept;

// 1 for the lead byte of a double-byte character, else 0.
DWORD isKanji(BYTE byChar) noexcept;

// What GetFileChar delivers at the end of the file, and the handle that resets the reader.
inline constexpr BYTE READER_END_OF_FILE = 0xFF;
inline constexpr LONG READER_RESET = -1;

// The next byte of the file hInput and its position. At the end it delivers READER_END_OF_FILE.
// 0 when the read failed; the reader then stays at its end until it is reset. With READER_RESET the
// pointers may be null.
BOOL GetFileChar(LONG hInput, BYTE *lpbyChar, DWORD *lpdwFilePos) noexcept;

// The next line of the file hInput, ended by LF and a zero byte whatever ended it in the file.
// *lpdwSize: capacity of cString on entry, bytes stored (zero byte included) on return. A line that
// fills the capacity comes in pieces, the full ones without LF and zero byte; with one byte left
// there is a zero byte only. An empty line that LF or the end of the file ended begins with a zero
// byte. *lpdwFilePos: position of the last byte read. 0 when a read failed or the capacity is 0.
BOOL GetFileLine(LONG hInput, char *cString, DWORD *lpdwSize, DWORD *lpdwFilePos) noexcept;

#endif  // KEYFD_KEYFD_H
