// What is asked of the daemon itself.
#include <algorithm>
#include <cstring>

#include <ntwin32/registry.h>
#include <ntwin32/system.h>

#include "registry_arguments.h"
#include "registry_client.h"

using namespace win32;
using ntserver::Operation;
using regstore::Status;

namespace {

// Copies what fits; such texts are told to people.
void CopyCut(std::string_view text, char *buffer, std::size_t capacity) noexcept {
    const std::size_t size = std::min(text.size(), capacity - 1);
    std::memcpy(buffer, text.data(), size);
    buffer[size] = '\0';
}

template <typename Answer>
Status AskServer(Operation operation, std::chrono::milliseconds limit, ThreadState **state,
                 Answer *answer) {
    const Status status = PrepareThread(state);
    return status != Status::kSuccess
               ? status
               : (*state)->connection.Read(operation, ntserver::EmptyMessage{}, answer, limit);
}

}  // namespace

LONG KesRegQueryServer(KES_REG_SERVER_INFO *lpInfo) NTWIN32_NOEXCEPT {
    if (lpInfo == nullptr)
        return ERROR_INVALID_PARAMETER;
    return Guard([&] {
        ThreadState *state = nullptr;
        ntserver::ServerAnswer answer;
        const Status status =
            AskServer(Operation::kQueryServer, ntserver::kCallLimit, &state, &answer);
        if (status != Status::kSuccess)
            return status;
        *lpInfo = {};
        CopyCut(answer.version, lpInfo->szVersion, sizeof lpInfo->szVersion);
        CopyCut(answer.folder, lpInfo->szStore, sizeof lpInfo->szStore);
        lpInfo->qwKeys = answer.keys;
        lpInfo->qwValues = answer.values;
        lpInfo->qwStoreBytes = answer.store_bytes;
        lpInfo->qwFormat = answer.format;
        lpInfo->dwProcessId = answer.process_id;
        lpInfo->dwClients = answer.clients;
        return status;
    });
}

LONG KesRegVerify(char *lpMessage, DWORD cbMessage) NTWIN32_NOEXCEPT {
    if (lpMessage != nullptr && cbMessage == 0)
        return ERROR_INVALID_PARAMETER;
    return Guard([&] {
        ThreadState *state = nullptr;
        ntserver::VerifyAnswer answer;
        const Status status =
            AskServer(Operation::kVerify, ntserver::kVerifyLimit, &state, &answer);
        if (status != Status::kSuccess || answer.damage.empty())
            return status;
        if (lpMessage != nullptr)
            CopyCut(answer.damage, lpMessage, cbMessage);
        return Status::kInvalidData;
    });
}

int CheckNTserverReady(void) NTWIN32_NOEXCEPT {
    // On a connection of its own, because an open one tells nothing about now.
    const LONG result = Guard([] {
        Connection connection;
        return connection.Open(ntserver::kReadyLimit);
    });
    return result == ERROR_SUCCESS || result == ERROR_ACCESS_DENIED ? 0 : -1;
}
