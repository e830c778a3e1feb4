#include "handles.h"

#include <ntwin32/file.h>

#include <cstdint>
#include <mutex>
#include <utility>
#include <vector>

#include "last_error.h"

namespace win32 {
namespace {

constexpr unsigned kSlotBits = 16;
constexpr std::size_t kMaxSlots = (std::size_t{1} << kSlotBits) - 1;
constexpr std::uint32_t kGenerations = 1u << (31 - kSlotBits);

struct Slot {
    Object object;
    std::uint32_t generation = 0;
};

class HandleTable {
  public:
    HANDLE Insert(Object object) {
        const std::lock_guard lock(mutex_);
        std::size_t index = 0;
        if (!free_.empty()) {
            index = free_.back();
            free_.pop_back();
        } else if (slots_.size() < kMaxSlots) {
            index = slots_.size();
            slots_.emplace_back();
            free_.reserve(slots_.capacity());  // so that Remove needs no memory
        } else {
            return 0;
        }
        slots_[index].object = std::move(object);
        return HandleOf(index);
    }

    Object Find(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        const Slot *slot = SlotOf(handle);
        return slot != nullptr ? slot->object : Object{};
    }

    // Hands the object out, so that it ends outside the lock.
    Object Remove(HANDLE handle) {
        const std::lock_guard lock(mutex_);
        Slot *slot = SlotOf(handle);
        if (slot == nullptr) {
            return {};
        }
        slot->generation = (slot->generation + 1) % kGenerations;
        free_.push_back(static_cast<std::size_t>(slot - slots_.data()));
        return std::exchange(slot->object, Object{});
    }

  private:
    HANDLE HandleOf(std::size_t index) const {
        return static_cast<HANDLE>(slots_[index].generation << kSlotBits) |
               static_cast<HANDLE>(index + 1);
    }

    Slot *SlotOf(HANDLE handle) {
        if (handle <= 0 || handle > INT32_MAX) {
            return nullptr;
        }
        const auto number = static_cast<std::size_t>(handle) & kMaxSlots;
        if (number == 0 || number > slots_.size()) {
            return nullptr;
        }
        Slot &slot = slots_[number - 1];
        const bool open = slot.object.index() != 0 && HandleOf(number - 1) == handle;
        return open ? &slot : nullptr;
    }

    std::mutex mutex_;
    std::vector<Slot> slots_;
    std::vector<std::size_t> free_;
};

// Lives as long as the process: destructors that run at its end may still close handles.
HandleTable &Table() {
    static auto *table = new HandleTable;
    return *table;
}

}  // namespace

HANDLE InsertObject(Object object) {
    return Table().Insert(std::move(object));
}

template <typename Kind>
std::shared_ptr<Kind> FindObject(HANDLE handle) {
    const Object object = Table().Find(handle);
    const auto *found = std::get_if<std::shared_ptr<Kind>>(&object);
    return found != nullptr ? *found : nullptr;
}

template std::shared_ptr<File> FindObject(HANDLE handle);
template std::shared_ptr<Event> FindObject(HANDLE handle);

bool RemoveObject(HANDLE handle) {
    return Table().Remove(handle).index() != 0;
}

}  // namespace win32

extern "C" BOOL CloseHandle(HANDLE hObject) noexcept {
    return win32::AtBoundary(BOOL{FALSE}, [&] {
        return win32::RemoveObject(hObject) ? TRUE : win32::Fail(ERROR_INVALID_HANDLE, FALSE);
    });
}
