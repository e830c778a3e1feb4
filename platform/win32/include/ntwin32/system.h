/*
 * What libNTwin32 tells about the machine, the product and the system's language.
 *
 * Conventions
 *  1. Functions that give BOOL give non-zero on success and 0 on failure; output buffers then hold
 *     what the function's text says.
 *  2. Capacities are in bytes and count the terminating zero. What does not fit is never cut: the
 *     call fails.
 *  3. Environment variables are read with secure_getenv(): a program with raised rights ignores
 * them.
 *  4. Thread safety: every function may be called from any thread.
 */
#ifndef NTWIN32_SYSTEM_H
#define NTWIN32_SYSTEM_H

#include <stddef.h>

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Language identifiers of the Win32 documentation. */
#define LANGID_ENGLISH_US 1033
#define LANGID_JAPANESE 1041

/*
 * Stores the computer's name in lpBuffer. On entry *nSize is the capacity, on success the length
 * without terminator. Fails when the name with its terminator does not fit; *nSize is then the size
 * needed.
 */
NTWIN32_API BOOL GetComputerName(char *lpBuffer, DWORD *nSize) NTWIN32_NOEXCEPT;

/*
 * Replaces each %NAME% of lpSrc by the environment variable NAME and stores the text in lpDst
 * (capacity nSize). "%KesDir%" is the variable KesDir, or the product's root folder when it is not
 * set or empty; any other unknown name stays as it stands. Gives the size of the whole text with
 * terminator (larger than nSize: it did not fit, lpDst then holds an empty text), or 0 on failure.
 */
NTWIN32_API DWORD ExpandEnvironmentStrings(const char *lpSrc, char *lpDst,
                                           DWORD nSize) NTWIN32_NOEXCEPT;

/* The system's language: LANGID_JAPANESE for any "ja…", otherwise LANGID_ENGLISH_US. It comes from
   KES_LANG, else LANG in /etc/locale.conf, else LANG in /etc/default/locale, else it is English. */
NTWIN32_API LANGID GetSystemDefaultLangID(void) NTWIN32_NOEXCEPT;

/*
 * Stores the name of the system's language for setlocale() in lpBuffer (capacity cbBuffer): an
 * EUC-JP locale ("ja_JP.eucJP") for any Japanese setting, because all stored texts are EUC-JP, else
 * the setting as it stands, "en_US" without any. On failure the buffer keeps its content.
 */
NTWIN32_API BOOL GetSystemDefaultLANG(char *lpBuffer, DWORD cbBuffer) NTWIN32_NOEXCEPT;

/* Non-zero for a lead byte of a double-byte character of Shift-JIS: 81 to 9F and E0 to FC. */
NTWIN32_API BOOL IsDBCSLeadByte(BYTE TestChar) NTWIN32_NOEXCEPT;

/*
 * Asks the registry server daemon itself (connect and hello, at most 2 s): 0 when it answers or
 * refuses access, -1 when it is not running.
 */
NTWIN32_API int CheckNTserverReady(void) NTWIN32_NOEXCEPT;

/* Stores the product's root folder ("/opt/xev/kestro_sa", or KES_ROOT) without trailing slash. */
NTWIN32_API BOOL GetKesRootPath(char *lpBuffer, DWORD cbBuffer) NTWIN32_NOEXCEPT;

/* Stores the folder of the product's state ("/var/opt/xev/kestro_sa", or KES_STATE) likewise. */
NTWIN32_API BOOL GetKesStatePath(char *lpBuffer, DWORD cbBuffer) NTWIN32_NOEXCEPT;

/*
 * Stores one line that names the operating system's distribution: the first line of its release
 * file
 * (/etc/redhat-release and its kin), else PRETTY_NAME of os-release, else an empty text. A line
 * that does not fit is cut at the capacity. Non-zero when a line was found.
 */
NTWIN32_API BOOL getOSDistribution(char *lpBuffer, DWORD cbBuffer) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
