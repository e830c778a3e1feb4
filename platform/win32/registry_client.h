// How a registry function gets at the store: by this thread's map of it, or by its connection.
//
// State: every thread that calls a registry function has a ThreadState: a connection, and, when the
// process may map the store, a share in the process's one mapping with a reader of its own. All
// states stand in one list, so that a forked child can leave what belongs to its parent. The
// generation that a state has seen tells whether its mapping still is the daemon's store.
//
// Locks: one, over the list of states and of mappings; nothing else is locked while it is held. No
// lock is taken by a read that finds its thread's reader in order.
#ifndef WIN32_REGISTRY_CLIENT_H
#define WIN32_REGISTRY_CLIENT_H

#include <chrono>
#include <memory>
#include <new>

#include <ntwin32/types.h>

#include "ntserver/answers.h"
#include "registry_connection.h"
#include "registry_mapping.h"
#include "regstore/environment.h"
#include "regstore/status.h"

namespace win32 {

struct ThreadState {
    Connection connection;
    std::shared_ptr<Mapping> mapping;          // null: reads ask the daemon
    std::unique_ptr<regstore::Reader> reader;  // of the mapping
    std::uint64_t generation = 0;              // the mapping's, when it was last found in order
    unsigned hello_number = 0;                 // the hello that mapping and reader follow
    ntserver::Deadline next_hello{};           // no earlier, while the daemon is away

    bool ReaderIsInOrder() const noexcept {
        return reader != nullptr && mapping->Service().Value() == generation;
    }
};

// Null until the thread's first call that needs it. One word in the thread's static block: a read
// must not pay for finding it.
extern __thread ThreadState *t_state __attribute__((tls_model("initial-exec")));

// Makes this thread ready to read: kSuccess with *state, or why it cannot.
regstore::Status PrepareToRead(ThreadState **state);
// Makes this thread's state, without a connection yet.
regstore::Status PrepareThread(ThreadState **state);

// The result of a registry function. What an exception stands for is lack of memory: nothing else
// is thrown below.
inline LONG ToResult(regstore::Status status) noexcept {
    return static_cast<LONG>(status);
}

template <typename Function>
LONG Guard(Function function) noexcept {
    try {
        return ToResult(function());
    } catch (...) {
        return ERROR_NOT_ENOUGH_MEMORY;
    }
}

// Takes the answer to a request from this thread's map of the store or, where there is none, from
// the daemon, and hands it out while it is valid.
template <typename Answer, typename Request, typename HandOut>
LONG ReadRegistry(ntserver::Operation operation, const Request &request,
                  HandOut hand_out) noexcept {
    return Guard([&]() -> regstore::Status {
        ThreadState *state = t_state;
        if (__builtin_expect(state == nullptr || !state->ReaderIsInOrder(), 0)) {
            const regstore::Status status = PrepareToRead(&state);
            if (status != regstore::Status::kSuccess)
                return status;
        }
        Answer answer;
        if (state->reader != nullptr) {
            const regstore::ReadScope scope(*state->reader);
            // A store that outgrew a small map, or a lack of memory: the daemon can still tell.
            if (scope.Code() == MDB_SUCCESS) {
                const regstore::Status status =
                    ntserver::AnswerTo(request, *state->reader, &answer);
                return status == regstore::Status::kSuccess ? hand_out(answer) : status;
            }
        }
        const regstore::Status status = state->connection.Read(operation, request, &answer);
        return status == regstore::Status::kSuccess ? hand_out(answer) : status;
    });
}

// Makes a change: always by the daemon.
template <typename Request, typename Answer>
LONG ChangeRegistry(ntserver::Operation operation, const Request &request,
                    Answer *answer) noexcept {
    return Guard([&]() -> regstore::Status {
        ThreadState *state = nullptr;
        const regstore::Status status = PrepareThread(&state);
        if (status != regstore::Status::kSuccess)
            return status;
        return state->connection.Change(operation, request, answer);
    });
}

}  // namespace win32

#endif  // WIN32_REGISTRY_CLIENT_H
