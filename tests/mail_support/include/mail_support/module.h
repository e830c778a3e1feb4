// A run-time module out of the product's lib folder.
#ifndef MAIL_SUPPORT_MODULE_H
#define MAIL_SUPPORT_MODULE_H

#include <cstdlib>
#include <stdexcept>
#include <string>

#include <dlfcn.h>

namespace mail_support {

inline std::string ModulePath(const std::string &name) {
    const char *root = std::getenv("KES_ROOT");
    return std::string(root != nullptr ? root : "") + "/lib/" + name;
}

class Module {
  public:
    explicit Module(const std::string &name)
        : library_(::dlopen(ModulePath(name).c_str(), RTLD_NOW | RTLD_LOCAL)) {
        if (library_ == nullptr)
            throw std::runtime_error(::dlerror());
    }
    Module(const Module &) = delete;
    Module &operator=(const Module &) = delete;
    ~Module() { ::dlclose(library_); }

    template <typename Function>
    Function *Get(const char *name) const {
        void *address = ::dlsym(library_, name);
        if (address == nullptr)
            throw std::runtime_error(name);
        return reinterpret_cast<Function *>(address);
    }

  private:
    void *library_;
};

}  // namespace mail_support

#endif  // MAIL_SUPPORT_MODULE_H
