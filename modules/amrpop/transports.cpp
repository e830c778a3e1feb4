#include "transports.h"

#include <utility>

namespace amrpop {

HTRANSPORT Transports::Add(std::shared_ptr<LogIn> log_in) {
    const std::lock_guard lock(mutex_);
    const HTRANSPORT handle = last_ + 1;
    log_ins_.emplace(handle, std::move(log_in));
    last_ = handle;
    return handle;
}

std::shared_ptr<LogIn> Transports::Find(HTRANSPORT handle) {
    const std::lock_guard lock(mutex_);
    const auto found = log_ins_.find(handle);
    return found == log_ins_.end() ? nullptr : found->second;
}

bool Transports::Remove(HTRANSPORT handle) {
    // The transport goes outside the lock: closing its connection may take a moment.
    std::shared_ptr<LogIn> removed;
    const std::lock_guard lock(mutex_);
    const auto found = log_ins_.find(handle);
    if (found == log_ins_.end())
        return false;
    removed = std::move(found->second);
    log_ins_.erase(found);
    return true;
}

}  // namespace amrpop
