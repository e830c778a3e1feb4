#include "keydisk/customer_code.h"

#include <amcrtcpy.h>
#include <ntwin32/memory.h>

#include <cstdlib>
#include <new>

namespace veloxctl::keydisk {

bool DecodeCustomerFile(std::string_view file, std::string *text) {
    HGLOBAL block = nullptr;
    DWORD size = 0;
    if (UUCdDeCodingFromMemory(file.data(), static_cast<DWORD>(file.size()), &block, &size) ==
        FALSE) {
        return false;
    }
    text->assign(static_cast<const char *>(block), size);
    GlobalFree(block);
    return true;
}

std::string EncodeCustomerFile(std::string_view text) {
    void *block = nullptr;
    DWORD size = 0;
    if (UUCdEnCodingToMemory(text.data(), static_cast<DWORD>(text.size()), &block, &size) ==
        FALSE) {
        throw std::bad_alloc();
    }
    std::string file(static_cast<const char *>(block), size);
    std::free(block);
    return file;
}

}  // namespace veloxctl::keydisk
