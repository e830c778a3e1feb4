#include "transport.h"

#include <map>

#include "fakes/platform.h"
#include "fakes/registry.h"
#include "velox/mail_base.h"

namespace transport {

namespace {

BOOL Init(HTRANSPORT *handle, const TRANSPORTINFO *info) noexcept {
    TheModule().calls.emplace_back("init");
    TheModule().info = *info;
    *handle = TheModule().handle;
    return TheModule().init ? TRUE : FALSE;
}

BOOL Answer(const char *call, HTRANSPORT handle, bool answer) {
    TheModule().calls.push_back(call + (" " + std::to_string(handle)));
    return answer ? 2 : FALSE;  // any number but 0 is a success
}

BOOL Connect(HTRANSPORT handle) noexcept {
    return Answer("connect", handle, TheModule().connect);
}

BOOL Disconnect(HTRANSPORT handle) noexcept {
    return Answer("disconnect", handle, TheModule().disconnect);
}

BOOL Release(HTRANSPORT handle) noexcept {
    return Answer("release", handle, TheModule().release);
}

}  // namespace

Module &TheModule() {
    static Module module;
    return module;
}

void Add(const std::string &without) {
    TheModule() = {};
    std::map<std::string, void (*)()> functions = {
        {"TransportInit", reinterpret_cast<void (*)()>(&Init)},
        {"TransportConnect", reinterpret_cast<void (*)()>(&Connect)},
        {"TransportDisconnect", reinterpret_cast<void (*)()>(&Disconnect)},
        {"TransportRelease", reinterpret_cast<void (*)()>(&Release)}};
    functions.erase(without);
    fakes::AddModule("amrpop.dll", functions);
}

void StoreSettings() {
    fakes::StoreNumber(AMAM_DEFAULT_BASE_PATH, "POPFlag", 1);
    fakes::StoreNumber(AMAM_DEFAULT_BASE_PATH, "POPPort", 1100);
    fakes::StoreText(AMAM_DEFAULT_BASE_PATH, "POPServer", "pop.example");
    fakes::StoreText(AMAM_DEFAULT_BASE_PATH, "POPUser", "reporter");
    fakes::StoreText(AMAM_DEFAULT_BASE_PATH, "POPPass", fakes::FakePassword(kPassword));
    fakes::StoreNumber(AMAM_DEFAULT_BASE_PATH, "POPTime", 0);
}

}  // namespace transport
