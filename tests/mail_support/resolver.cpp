#include "mail_support/resolver.h"

#include <arpa/inet.h>
#include <dlfcn.h>
#include <netdb.h>
#include <atomic>

namespace mail_support {

namespace {

std::atomic<Resolver *> the_resolver = nullptr;

}  // namespace

Resolver::Resolver() {
    the_resolver = this;
}

Resolver::~Resolver() {
    std::unique_lock lock(mutex_);
    ending_ = true;
    changed_.notify_all();
    changed_.wait(lock, [this] { return running_ == 0; });
    the_resolver = nullptr;
}

void Resolver::Know(const std::string &name, const std::vector<std::string> &addresses) {
    const std::lock_guard lock(mutex_);
    addresses_[name] = addresses;
}

void Resolver::StallAt(const std::string &name) {
    const std::lock_guard lock(mutex_);
    stalling_name_ = name;
}

std::vector<std::string> Resolver::LookUp(const std::string &name) {
    std::unique_lock lock(mutex_);
    ++running_;
    if (name == stalling_name_)
        changed_.wait(lock, [this] { return ending_; });
    --running_;
    changed_.notify_all();
    const auto found = addresses_.find(name);
    return found == addresses_.end() ? std::vector<std::string>() : found->second;
}

namespace {

bool IsAddress(const char *text) {
    in6_addr ignored{};
    return ::inet_pton(AF_INET, text, &ignored) == 1 || ::inet_pton(AF_INET6, text, &ignored) == 1;
}

}  // namespace

}  // namespace mail_support

// The C library frees a list node by node, so that lists of several look-ups can be joined.
extern "C" __attribute__((visibility("default"))) int getaddrinfo(const char *name,
                                                                  const char *service,
                                                                  const addrinfo *hints,
                                                                  addrinfo **result) {
    static const auto system =
        reinterpret_cast<decltype(&::getaddrinfo)>(::dlsym(RTLD_NEXT, "getaddrinfo"));
    mail_support::Resolver *resolver = mail_support::the_resolver;
    if (resolver == nullptr || name == nullptr || mail_support::IsAddress(name))
        return system(name, service, hints, result);
    *result = nullptr;
    addrinfo **end = result;
    for (const std::string &address : resolver->LookUp(name)) {
        if (system(address.c_str(), service, hints, end) != 0)
            continue;
        while (*end != nullptr)
            end = &(*end)->ai_next;
    }
    return *result == nullptr ? EAI_NONAME : 0;
}
