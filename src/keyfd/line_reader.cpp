// The line reader of the key disk's plain text files: Shift-JIS text with CR LF, LF or CR line
// ends.
//
// State: one block of the file (s_Block) and what is known between two lines (s_Line). Both are of
// the process, serve one file at a time and are brought back by READER_RESET:
//     reset -> reading (a block in memory) -> end of file (only READER_END_OF_FILE from here on).
#include <ntwin32/file.h>
#include <ntwin32/system.h>

#include "keyfd/keyfd.h"
#include "registry/trace.h"

static constexpr char TRACE_SOURCE[] = "keyfd";

static constexpr DWORD READER_BLOCK_SIZE = 0x40000;
static constexpr BYTE CARRIAGE_RETURN = 0x0D;
static constexpr BYTE LINE_FEED = 0x0A;
static constexpr BYTE END_MARK = 0x1A;

static struct {
    BYTE byBuffer[READER_BLOCK_SIZE];
    DWORD dwBufferLen;  // bytes not yet handed out
    const BYTE *lpSrc;  // the next one
    BOOL bEOF;
    DWORD dwFilePos;  // of the next byte
} s_Block;

static struct {
    BOOL bSkip;   // the last line ended at a CR: drop a following LF or end mark
    BOOL bKanji;  // the next byte is a trail byte
} s_Line;

DWORD isKanji(BYTE byChar) noexcept {
    TRACE(TRACE_NOTE, ">byChar=%c", byChar);
    if (IsDBCSLeadByte(byChar) == FALSE) {
        TRACE(TRACE_FAILURE, "<IsDBCSLeadByte() Failed!");
        return 0;
    }
    TRACE(TRACE_NOTE, "<return TRUE.");
    return 1;
}

BOOL GetFileChar(LONG hInput, BYTE *lpbyChar, DWORD *lpdwFilePos) noexcept {
    TRACE(TRACE_NOTE, ">hInput=%d,lpbyChar=%p,lpdwFilePos=%p", hInput,
          static_cast<void *>(lpbyChar), static_cast<void *>(lpdwFilePos));
    if (hInput == READER_RESET) {
        TRACE(TRACE_FAILURE, "hInput==-1!");
        s_Block.dwBufferLen = 0;
        s_Block.lpSrc = s_Block.byBuffer;
        s_Block.bEOF = FALSE;
        s_Block.dwFilePos = 0;
        return TRUE;
    }
    if (s_Block.bEOF != FALSE) {
        *lpbyChar = READER_END_OF_FILE;
        return TRUE;
    }
    *lpdwFilePos = s_Block.dwFilePos++;
    if (s_Block.dwBufferLen == 0) {
        DWORD dwRead = 0;
        if (ReadFile(hInput, s_Block.byBuffer, READER_BLOCK_SIZE, &dwRead, nullptr) == FALSE) {
            s_Block.bEOF = TRUE;
            *lpbyChar = READER_END_OF_FILE;
            TRACE(TRACE_FAILURE, "<ReadFile Failed");
            return FALSE;
        }
        s_Block.lpSrc = s_Block.byBuffer;
        s_Block.dwBufferLen = dwRead;
        if (dwRead == 0) {
            *lpbyChar = READER_END_OF_FILE;
            s_Block.bEOF = TRUE;
            return TRUE;
        }
    }
    *lpbyChar = *s_Block.lpSrc++;
    --s_Block.dwBufferLen;
    TRACE(TRACE_NOTE, "<return TRUE.");
    return TRUE;
}

// The line that one call of GetFileLine fills.
struct FILE_LINE {
    LONG hInput;
    char *cString;
    DWORD dwCapacity;  // what is left of it
    DWORD dwSize;
    DWORD *lpdwFilePos;
};

enum LINE_STEP {
    LINE_STEP_STORE,  // the byte belongs to the line
    LINE_STEP_AT_CR,  // the line ended at a CR
    LINE_STEP_AT_LF,  // at an LF or at the end of the file
    LINE_STEP_IS_FULL,
    LINE_STEP_FAILED,
};

static void StoreByte(FILE_LINE *lpLine, BYTE byChar) noexcept {
    lpLine->cString[lpLine->dwSize++] = static_cast<char>(byChar);
    --lpLine->dwCapacity;
}

// A read failed: the line ends here with a zero byte, which is not counted.
static LINE_STEP FailLine(FILE_LINE *lpLine, const char *lpszMessage) noexcept {
    lpLine->cString[lpLine->dwSize] = '\0';
    TRACE_AS("GetFileLine", TRACE_FAILURE, "%s", lpszMessage);
    return LINE_STEP_FAILED;
}

static LINE_STEP ClassifyByte(BYTE byChar) noexcept {
    if (s_Line.bKanji != FALSE) {
        return LINE_STEP_STORE;
    }
    if (byChar == CARRIAGE_RETURN) {
        s_Line.bSkip = TRUE;
        return LINE_STEP_AT_CR;
    }
    return byChar == LINE_FEED || byChar == READER_END_OF_FILE ? LINE_STEP_AT_LF : LINE_STEP_STORE;
}

// The line's first byte, after the rest of a line end that the last line left behind.
static LINE_STEP FirstByte(FILE_LINE *lpLine, BYTE *lpbyChar) noexcept {
    if (GetFileChar(lpLine->hInput, lpbyChar, lpLine->lpdwFilePos) == FALSE) {
        return FailLine(lpLine, "<GetFileChar failed.return FALSE.");
    }
    if (s_Line.bSkip != FALSE && (*lpbyChar == LINE_FEED || *lpbyChar == END_MARK)) {
        if (GetFileChar(lpLine->hInput, lpbyChar, lpLine->lpdwFilePos) == FALSE) {
            return FailLine(lpLine, "<GetFileChar() failed.");
        }
        s_Line.bSkip = FALSE;
    }
    return ClassifyByte(*lpbyChar);
}

// Stores byChar and what follows it up to the line's end.
static LINE_STEP StoreLine(FILE_LINE *lpLine, BYTE byChar) noexcept {
    LINE_STEP eStep = LINE_STEP_STORE;
    while (eStep == LINE_STEP_STORE) {
        StoreByte(lpLine, byChar);
        if (lpLine->dwCapacity == 0) {
            return LINE_STEP_IS_FULL;  // bKanji stays as it was before this byte
        }
        s_Line.bKanji = s_Line.bKanji == FALSE && isKanji(byChar) != 0 ? TRUE : FALSE;
        if (GetFileChar(lpLine->hInput, &byChar, lpLine->lpdwFilePos) == FALSE) {
            return FailLine(lpLine, "<GetFileChar() failed.");
        }
        eStep = ClassifyByte(byChar);
    }
    return eStep;
}

static void TerminateLine(FILE_LINE *lpLine) noexcept {
    if (lpLine->dwCapacity > 1) {
        StoreByte(lpLine, LINE_FEED);
    }
    StoreByte(lpLine, '\0');
}

BOOL GetFileLine(LONG hInput, char *cString, DWORD *lpdwSize, DWORD *lpdwFilePos) noexcept {
    TRACE(TRACE_NOTE, ">hInput=%d,cString=%p,lpdwSize=%p,lpdwFilePos=%p", hInput,
          static_cast<void *>(cString), static_cast<void *>(lpdwSize),
          static_cast<void *>(lpdwFilePos));
    if (hInput == READER_RESET) {
        s_Line.bSkip = FALSE;
        s_Line.bKanji = FALSE;
        TRACE(TRACE_FAILURE, "<hInput==-1!");
        return GetFileChar(READER_RESET, nullptr, lpdwFilePos);
    }
    FILE_LINE line = {hInput, cString, *lpdwSize, 0, lpdwFilePos};
    *lpdwSize = 0;
    if (line.dwCapacity == 0) {
        TRACE(TRACE_FAILURE, "<no capacity.return FALSE.");
        return FALSE;
    }

    BYTE byChar = 0;
    LINE_STEP eStep = FirstByte(&line, &byChar);
    if (eStep == LINE_STEP_STORE) {
        eStep = StoreLine(&line, byChar);
    }
    if (eStep == LINE_STEP_AT_LF && line.dwSize == 0) {
        StoreByte(&line, '\0');
    }
    if (eStep != LINE_STEP_FAILED && line.dwCapacity > 0) {
        TerminateLine(&line);
        TRACE(TRACE_NOTE, "<return TRUE.");
    }
    *lpdwSize = line.dwSize;
    return eStep == LINE_STEP_FAILED ? FALSE : TRUE;
}
