// Calls of libNTwin32 from C.
#include <ntwin32/event.h>
#include <ntwin32/file.h>
#include <ntwin32/memory.h>
#include <ntwin32/module.h>
#include <ntwin32/system.h>

#include <string.h>

BOOL CallWin32FromC(const char *file_name, const char *text);

// Reads the file into a block and compares it with the text.
BOOL CallWin32FromC(const char *file_name, const char *text) {
    const DWORD size = (DWORD)strlen(text);
    const HANDLE file = CreateFile(file_name, GENERIC_READ, FILE_SHARE_READ, NULL, OPEN_EXISTING,
                                   FILE_ATTRIBUTE_NORMAL, 0);
    const HANDLE event = CreateEvent(NULL, TRUE, TRUE, NULL);
    HGLOBAL block = GlobalAlloc(GMEM_ZEROINIT, size);
    DWORD count = 0;
    BOOL same = file != INVALID_HANDLE_VALUE && event != 0 && block != NULL;
    same = same && ReadFile(file, block, size, &count, NULL) && count == GlobalSize(block) &&
           memcmp(block, text, size) == 0;
    same = same && WaitForSingleObject(event, INFINITE) == WAIT_OBJECT_0;
    same = same && IsDBCSLeadByte(0x81) && GetProcAddress(NULL, "main") == NULL;
    GlobalFree(block);
    return CloseHandle(event) && CloseHandle(file) && same;
}
