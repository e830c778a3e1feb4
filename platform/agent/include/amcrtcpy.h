/*
 * libamcrtcpy: helpers of the server agent. Registry writes, the UU codec, code conversion and the
 * password helper.
 *
 * Conventions
 *  1. Every function gives non-zero on success and 0 on failure. Outputs are untouched on failure
 *     unless a function's text says otherwise.
 *  2. Decoded blocks are released with GlobalFree (ntwin32/memory.h), encoded ones with free().
 *  3. Sizes and lengths are in bytes.
 *  4. Null pointers that must not be null give 0.
 *  5. Thread safety: every function may be called from any thread.
 */
#ifndef AMCRTCPY_H
#define AMCRTCPY_H

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

/* Creates the key lpKey below hRoot, or finds it there. */
NTWIN32_API BOOL AMACRERegCreateKey(HKEY hRoot, const char *lpKey) NTWIN32_NOEXCEPT;

/* Stores lpText as REG_SZ, terminator included, in an existing key; fails when the key is missing.
 */
NTWIN32_API BOOL AMACRERegWriteSz(HKEY hRoot, const char *lpKey, const char *lpValueName,
                                  const char *lpText) NTWIN32_NOEXCEPT;

/* Stores dwNumber as REG_DWORD in an existing key; fails when the key is missing. */
NTWIN32_API BOOL AMACRERegWriteDword(HKEY hRoot, const char *lpKey, const char *lpValueName,
                                     DWORD dwNumber) NTWIN32_NOEXCEPT;

/*
 * Decodes the file lpPath, which holds the uuencode form of POSIX (historical or base64 body).
 * *lphDecoded receives a GlobalAlloc block of exactly *lpdwSize bytes that the caller releases.
 * CR LF line ends, stripped trailing blanks and one 0x1A after "end" are accepted; a truncated,
 * trailing or malformed body fails, never giving partial text. The file is opened by the rule for
 * removable media (ntwin32/file.h).
 */
NTWIN32_API BOOL UUCdDeCodingFromFile(const char *lpPath, HGLOBAL *lphDecoded,
                                      DWORD *lpdwSize) NTWIN32_NOEXCEPT;

/* The same for dwSize bytes at lpData. */
NTWIN32_API BOOL UUCdDeCodingFromMemory(const void *lpData, DWORD dwSize, HGLOBAL *lphDecoded,
                                        DWORD *lpdwDecodedSize) NTWIN32_NOEXCEPT;

/*
 * Encodes dwSize bytes into the historical uuencode form ("begin 644 ..." to "end"), lines ended by
 * LF. *lplpEncoded receives a malloc block of *lpdwEncodedSize bytes, without a terminator counted,
 * followed by a zero byte; the caller releases it with free().
 */
NTWIN32_API BOOL UUCdEnCodingToMemory(const void *lpData, DWORD dwSize, void **lplpEncoded,
                                      DWORD *lpdwEncodedSize) NTWIN32_NOEXCEPT;

/*
 * Converts the half-width katakana (A1 to DF) of a Shift-JIS text to full-width ones; voiced and
 * semi-voiced marks join the half-width katakana before them where Shift-JIS has the character.
 * Everything else is copied. Reading stops at dwSourceLength bytes or at the first zero byte; the
 * result is terminated when dwDestSize leaves room for the zero. Fails when the result does not
 * fit.
 */
NTWIN32_API int kes_AnkZen(const char *lpSource, DWORD dwSourceLength, DWORD dwDestSize,
                           char *lpDest) NTWIN32_NOEXCEPT;

/*
 * Converts Shift-JIS (code page 932) to EUC-JP (EUC-JP-MS: IBM extensions take 3 bytes) under the
 * same rules. Fails on bytes that are no Shift-JIS and when the result does not fit.
 */
NTWIN32_API int ecm_SJIStoEUC(const char *lpSource, DWORD dwSourceLength, DWORD dwDestSize,
                              char *lpDest) NTWIN32_NOEXCEPT;

/* Capacity that a buffer for an encoded password must have, and the longest password, in bytes. */
#define RAS_ENCODED_CAPACITY 257
#define RAS_MAX_PASSWORD 151

/*
 * Encodes the password lpPassword (at most RAS_MAX_PASSWORD bytes) into a printable text of at most
 * RAS_ENCODED_CAPACITY bytes, terminator included, in lpEncoded (capacity dwCapacity):
 * authenticated encryption under the host's key file, which is made on first use.
 */
NTWIN32_API BOOL Ras_Encode(const char *lpPassword, char *lpEncoded,
                            DWORD dwCapacity) NTWIN32_NOEXCEPT;

/*
 * Turns an encoded password of nLength bytes back into plain text, in place. A text that does not
 * authenticate under the host's key becomes the empty text; the result is 0 then.
 */
NTWIN32_API BOOL Ras_Decode(char *lpText, int nLength) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
