#include "registry_client.h"

#include <algorithm>
#include <mutex>
#include <vector>

#include <pthread.h>

namespace win32 {

__thread ThreadState *t_state __attribute__((tls_model("initial-exec"))) = nullptr;

namespace {

using regstore::Status;

// How often a mapping process asks whether a daemon that is away has come back.
constexpr std::chrono::milliseconds kHelloInterval{200};

struct Process {
    std::mutex lock;
    std::vector<ThreadState *> states;
    std::shared_ptr<Mapping> mapping;              // of the last hello
    std::vector<std::weak_ptr<Mapping>> replaced;  // may still be read by other threads
    pthread_key_t key = 0;
};

// Never destroyed: threads may outlive the end of main().
Process &TheProcess();

void EndThread(void *pointer) {
    auto *const state = static_cast<ThreadState *>(pointer);
    Process &process = TheProcess();
    const std::scoped_lock held(process.lock);
    std::erase(process.states, state);
    t_state = nullptr;
    // The reader needs its mapping to the end, and a mapping ends under the lock.
    state->reader.reset();
    delete state;
}

void BeforeFork() {
    TheProcess().lock.lock();
}

void AfterForkInParent() {
    TheProcess().lock.unlock();
}

// The child owns none of the parent's reader slots, locks and connections: it forgets the first two
// without touching them and closes its copies of the connections, so that their end is seen.
void AfterForkInChild() {
    Process &process = TheProcess();
    if (process.mapping != nullptr)
        process.mapping->Abandon();
    for (ThreadState *state : process.states) {
        if (state->mapping != nullptr)
            state->mapping->Abandon();
        if (state->reader != nullptr)
            state->reader->Abandon();
        delete state;
    }
    process.states.clear();
    process.mapping.reset();
    process.replaced.clear();
    t_state = nullptr;
    ::pthread_setspecific(process.key, nullptr);
    process.lock.unlock();
}

Process *NewProcess() {
    auto *const process = new Process;
    ::pthread_key_create(&process->key, EndThread);
    ::pthread_atfork(BeforeFork, AfterForkInParent, AfterForkInChild);
    return process;
}

Process &TheProcess() {
    static Process *const process = NewProcess();
    return *process;
}

// The process's mapping of the store that a hello told of: one that there is, because a process
// must not open a store twice, or a new one. Null: this process has to ask the daemon.
std::shared_ptr<Mapping> ShareMapping(Process &process, const ntserver::HelloAnswer &hello) {
    if (process.mapping != nullptr && process.mapping->IsOf(hello))
        return process.mapping;
    std::shared_ptr<Mapping> found;
    for (const std::weak_ptr<Mapping> &known : process.replaced) {
        std::shared_ptr<Mapping> mapping = known.lock();
        if (mapping != nullptr && mapping->IsOf(hello))
            found = std::move(mapping);
    }
    if (found == nullptr)
        found = Mapping::Open(hello);
    std::erase_if(process.replaced, [](const auto &known) { return known.expired(); });
    if (process.mapping != nullptr)
        process.replaced.push_back(process.mapping);
    process.mapping = found;
    return found;
}

// Brings mapping and reader in line with the last hello.
void FollowHello(ThreadState *state) {
    const ntserver::HelloAnswer &hello = state->connection.Hello().answer;
    state->hello_number = state->connection.HelloNumber();
    state->generation = hello.generation;
    if (state->mapping != nullptr && hello.verified && state->mapping->IsOf(hello))
        return;
    Process &process = TheProcess();
    const std::scoped_lock held(process.lock);
    state->reader.reset();
    state->mapping.reset();
    if (hello.verified)
        state->mapping = ShareMapping(process, hello);
    int code = 0;
    if (state->mapping != nullptr)
        state->reader = regstore::Reader::Open(state->mapping->Store(), &code);
}

// The mapping's generation changed: the daemon ended, or another began. While it is away, what is
// mapped is still the registry.
void RenewHello(ThreadState *state) {
    const ntserver::Deadline now = ntserver::Clock::now();
    const std::uint64_t generation = state->mapping->Service().Value();
    const bool runs = generation % 2 != 0;
    if (!runs && now < state->next_hello)
        return;
    state->next_hello = now + kHelloInterval;
    if (state->connection.Open(ntserver::kReadyLimit) == Status::kSuccess)
        FollowHello(state);
    else if (runs)
        state->generation = generation;
}

}  // namespace

Status PrepareThread(ThreadState **state) {
    if (t_state == nullptr) {
        Process &process = TheProcess();
        auto made = std::make_unique<ThreadState>();
        const std::scoped_lock held(process.lock);
        process.states.push_back(made.get());
        if (::pthread_setspecific(process.key, made.get()) != 0) {
            process.states.pop_back();
            return Status::kNoMemory;
        }
        t_state = made.release();
    }
    *state = t_state;
    return Status::kSuccess;
}

Status PrepareToRead(ThreadState **state) {
    Status status = PrepareThread(state);
    if (status != Status::kSuccess)
        return status;
    ThreadState *const mine = *state;
    if (mine->reader != nullptr) {
        RenewHello(mine);
        if (mine->reader != nullptr)
            return Status::kSuccess;
    }
    status = mine->connection.MakeReady();
    if (status == Status::kSuccess && mine->hello_number != mine->connection.HelloNumber())
        FollowHello(mine);
    return status;
}

}  // namespace win32
