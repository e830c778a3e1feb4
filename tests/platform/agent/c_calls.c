// Calls of the agent's libraries from C.
#include <amcregac.h>
#include <amcrtcpy.h>

#include <ntwin32/memory.h>

#include <stdlib.h>
#include <string.h>

BOOL CallAgentFromC(void);

// Encodes a text, decodes it again and converts it.
BOOL CallAgentFromC(void) {
    const char text[] = "some text";
    char converted[2 * sizeof text];
    void *encoded = NULL;
    HGLOBAL decoded = NULL;
    DWORD encoded_size = 0;
    DWORD decoded_size = 0;
    BOOL good = AMACEXSetRegistryNumber(0);
    good = good && UUCdEnCodingToMemory(text, sizeof text, &encoded, &encoded_size);
    good = good && UUCdDeCodingFromMemory(encoded, encoded_size, &decoded, &decoded_size);
    good = good && decoded_size == sizeof text && memcmp(decoded, text, sizeof text) == 0;
    good = good && kes_AnkZen(text, sizeof text, sizeof converted, converted) != 0;
    good = good && ecm_SJIStoEUC(text, sizeof text, sizeof converted, converted) != 0;
    good = good && strcmp(converted, text) == 0;
    free(encoded);
    GlobalFree(decoded);
    return good;
}
