/*
 * Memory blocks of libNTwin32.
 *
 * Conventions
 *  1. A block belongs to whoever called GlobalAlloc, or to whom a function's text hands it, and is
 *     released with GlobalFree, never with free().
 *  2. A block's size is the size that was asked for, to the byte.
 *  3. Thread safety: every function may be called from any thread.
 */
#ifndef NTWIN32_MEMORY_H
#define NTWIN32_MEMORY_H

#include <stddef.h>

#include <ntwin32/types.h>

#ifdef __cplusplus
extern "C" {
#endif

#define GMEM_FIXED 0x0000u
#define GMEM_ZEROINIT 0x0040u

/*
 * Allocates cbBytes bytes, zeroed with GMEM_ZEROINIT; null when there is no memory. A block of 0
 * bytes is valid and has an address of its own. uFlags other than the two above give null.
 */
NTWIN32_API HGLOBAL GlobalAlloc(UINT uFlags, size_t cbBytes) NTWIN32_NOEXCEPT;

/* The size of a block in bytes, exactly as asked for; 0 for null and for what is no such block. */
NTWIN32_API size_t GlobalSize(HGLOBAL hMem) NTWIN32_NOEXCEPT;

/* Releases a block (null is accepted) and gives null; gives hMem back when it is no such block. */
NTWIN32_API HGLOBAL GlobalFree(HGLOBAL hMem) NTWIN32_NOEXCEPT;

#ifdef __cplusplus
}
#endif

#endif
