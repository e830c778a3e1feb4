#include "failure.h"

#include <algorithm>
#include <cerrno>
#include <cstdio>
#include <cstring>

namespace veloxctl {

namespace {

struct RegistryError {
    LONG code;
    int status;
    const char *text;
};

constexpr RegistryError kRegistryErrors[] = {
    {ERROR_FILE_NOT_FOUND, EX_NOINPUT, "it does not exist"},
    {ERROR_ACCESS_DENIED, EX_NOPERM, "access is denied (only root writes the registry)"},
    {ERROR_INVALID_HANDLE, EX_SOFTWARE, "the handle names no key"},
    {ERROR_NOT_ENOUGH_MEMORY, EX_OSERR, "there is not enough memory"},
    {ERROR_INVALID_DATA, EX_DATAERR, "the registry store is damaged"},
    {ERROR_INVALID_PARAMETER, EX_USAGE,
     "a limit of the registry is exceeded (names 255 bytes, depth 512, data 1 MiB)"},
    {ERROR_DISK_FULL, EX_IOERR, "the disk is full; nothing was written"},
    {ERROR_BAD_PATHNAME, EX_USAGE, "a name in the key's path is empty"},
    {ERROR_MORE_DATA, EX_TEMPFAIL, "it changed while it was read"},
    {ERROR_NO_MORE_ITEMS, EX_TEMPFAIL, "it changed while it was read"},
    {ERROR_REGISTRY_IO_FAILED, EX_IOERR, "the registry store or its server failed"},
    {ERROR_KEY_DELETED, EX_TEMPFAIL, "the key was deleted meanwhile"},
    {ERROR_SERVICE_NOT_ACTIVE, EX_UNAVAILABLE, "the registry server KESntserver is not running"},
    {ERROR_TIMEOUT, EX_TEMPFAIL, "the registry server did not answer in time"},
};

const RegistryError *Find(LONG error) {
    const auto *found = std::ranges::find(kRegistryErrors, error, &RegistryError::code);
    return found == std::end(kRegistryErrors) ? nullptr : found;
}

int StatusOfErrno(int error_number) {
    switch (error_number) {
        case ENOENT:
        case ENOTDIR:
        case EISDIR:
            return EX_NOINPUT;
        case EACCES:
        case EPERM:
        case EROFS:
            return EX_NOPERM;
        case EEXIST:
            return EX_CANTCREAT;
        default:
            return EX_IOERR;
    }
}

}  // namespace

void Complain(const std::string &message) {
    std::string line = "veloxctl: ";
    for (const char byte : message) {
        // File names and words of the command line may hold what a terminal would obey.
        if (static_cast<unsigned char>(byte) < 0x20 || byte == 0x7F) {
            char escaped[8];
            std::snprintf(escaped, sizeof(escaped), "\\x%02x", static_cast<unsigned char>(byte));
            line += escaped;
        } else {
            line += byte;
        }
    }
    line += '\n';
    std::fflush(stdout);
    std::fputs(line.c_str(), stderr);
}

std::string RegistryErrorText(LONG error) {
    const RegistryError *known = Find(error);
    return known != nullptr ? known->text : "registry error " + std::to_string(error);
}

int RegistryErrorStatus(LONG error) {
    const RegistryError *known = Find(error);
    return known != nullptr ? known->status : EX_SOFTWARE;
}

void FailRegistry(const std::string &subject, LONG error) {
    Fail(RegistryErrorStatus(error), subject + ": " + RegistryErrorText(error));
}

void FailSystem(const std::string &subject, int error_number) {
    Fail(StatusOfErrno(error_number), subject + ": " + std::strerror(error_number));
}

}  // namespace veloxctl
