#include "mail_support/handing_over.h"

#include <array>

#include "mail_support/module.h"

namespace mail_support {

namespace {

template <typename Call>
HandedOver HandOver(const Manager &manager, Call call) {
    std::string host = manager.host;
    std::string address = manager.address;
    VLX_MANAGER_PARAM parameters = {};
    parameters.lpszHost = host.data();
    parameters.lpszManagerIP = address.data();
    parameters.dwPort = manager.port;
    // Nothing may be written behind the text's capacity.
    std::array<char, VLX_ALERT_ERROR_CAPACITY + 1> error{};
    error.back() = '~';
    VLX_ALERT_DATA alert = {};
    alert.lpszErrorMessage = error.data();
    HandedOver handed;
    const Module module(AMRVXMN_MODULE);
    const auto start = std::chrono::steady_clock::now();
    handed.result = call(module, &alert, &parameters);
    handed.elapsed = std::chrono::duration_cast<std::chrono::milliseconds>(
        std::chrono::steady_clock::now() - start);
    handed.error = error.back() == '~' ? error.data() : "overrun";
    return handed;
}

}  // namespace

HandedOver HandOverOpening(const Manager &manager) {
    return HandOver(
        manager, [](const Module &module, VLX_ALERT_DATA *data, VLX_MANAGER_PARAM *parameters) {
            return module.Get<AMVLXMANREPORT_OPEN>(AMVLXMANREPORT_OPEN_NAME)(data, parameters);
        });
}

HandedOver HandOverAlert(const Manager &manager, const VLX_MANAGER_ALERT *alert) {
    return HandOver(manager, [alert](const Module &module, VLX_ALERT_DATA *data,
                                     VLX_MANAGER_PARAM *parameters) {
        return module.Get<KESMANREPORT_ALERT>(KESMANREPORT_ALERT_NAME)(data, parameters, alert);
    });
}

}  // namespace mail_support
