// One owner for every kind of resource that src/ holds. A policy names the type, the value that
// stands for "none" and the function that closes; an alias below is the name to use.
#ifndef REGISTRY_HANDLES_H
#define REGISTRY_HANDLES_H

#include <ntwin32/event.h>
#include <ntwin32/file.h>
#include <ntwin32/memory.h>
#include <ntwin32/module.h>
#include <ntwin32/registry.h>
#include <unistd.h>

#include <cstdlib>

// Owns at most one resource. Moving empties the source; resetting closes what was held first.
template <typename Policy>
class AutoHandle {
  public:
    using Type = typename Policy::Type;

    AutoHandle() noexcept = default;
    explicit AutoHandle(Type tValue) noexcept : m_tValue(tValue) {}
    AutoHandle(AutoHandle &&other) noexcept : m_tValue(other.Release()) {}
    AutoHandle &operator=(AutoHandle &&other) noexcept {
        if (this != &other) {
            Reset(other.Release());
        }
        return *this;
    }
    AutoHandle(const AutoHandle &) = delete;
    AutoHandle &operator=(const AutoHandle &) = delete;
    ~AutoHandle() { Reset(); }

    [[nodiscard]] bool IsValid() const noexcept { return m_tValue != Policy::None(); }
    [[nodiscard]] Type Get() const noexcept { return m_tValue; }

    // Closes what is held and gives the place for a call's out argument.
    [[nodiscard]] Type *Put() noexcept {
        Reset();
        return &m_tValue;
    }
    // Gives up the resource: the caller closes it.
    [[nodiscard]] Type Release() noexcept {
        const Type tValue = m_tValue;
        m_tValue = Policy::None();
        return tValue;
    }
    void Reset(Type tValue = Policy::None()) noexcept {
        const Type tOld = m_tValue;
        m_tValue = tValue;
        if (tOld != Policy::None() && tOld != tValue) {
            Policy::Close(tOld);
        }
    }

  private:
    Type m_tValue = Policy::None();
};

struct RegKeyPolicy {
    using Type = HKEY;
    static Type None() noexcept { return 0; }
    static void Close(Type hKey) noexcept { RegCloseKey(hKey); }
};

struct FilePolicy {
    using Type = HANDLE;
    static Type None() noexcept { return INVALID_HANDLE_VALUE; }
    static void Close(Type hFile) noexcept { CloseHandle(hFile); }
};

struct EventPolicy {
    using Type = HANDLE;
    static Type None() noexcept { return 0; }
    static void Close(Type hEvent) noexcept { CloseHandle(hEvent); }
};

struct ModulePolicy {
    using Type = HMODULE;
    static Type None() noexcept { return nullptr; }
    static void Close(Type hModule) noexcept { FreeLibrary(hModule); }
};

struct GlobalPolicy {
    using Type = HGLOBAL;
    static Type None() noexcept { return nullptr; }
    static void Close(Type hMem) noexcept { GlobalFree(hMem); }
};

struct DescriptorPolicy {
    using Type = int;
    static Type None() noexcept { return -1; }
    static void Close(Type nDescriptor) noexcept { close(nDescriptor); }
};

template <typename T>
struct MemoryPolicy {
    using Type = T *;
    static Type None() noexcept { return nullptr; }
    static void Close(Type lpMemory) noexcept { std::free(lpMemory); }
};

using AutoRegKey = AutoHandle<RegKeyPolicy>;
using AutoFile = AutoHandle<FilePolicy>;
using AutoDescriptor = AutoHandle<DescriptorPolicy>;
using AutoEvent = AutoHandle<EventPolicy>;
using AutoModule = AutoHandle<ModulePolicy>;
using AutoGlobal = AutoHandle<GlobalPolicy>;
// Memory of malloc or calloc; the type is that of its elements.
template <typename T>
using AutoMemory = AutoHandle<MemoryPolicy<T>>;

#endif  // REGISTRY_HANDLES_H
