// "veloxctl report security-open".
#include <records/manager.h>
#include <registry/keys.h>
#include <unistd.h>
#include <velox/mail_report.h>
#include <velox/report_method.h>
#include <velox/security.h>

#include "failure.h"
#include "manager/manager.h"
#include "method/method.h"
#include "registry.h"
#include "report/commands.h"
#include "report/outcome.h"
#include "settings/fields.h"
#include "terminal.h"
#include "trace.h"

namespace veloxctl::report {

namespace {

constexpr std::size_t kMaxProduct = 255;
constexpr int kNotAttempted = -1;

std::string ProductAsked(const Arguments &arguments) {
    std::string product = TerminalToStored(arguments.Get("PRODUCT"), "the product");
    if (product.empty() || product.size() > kMaxProduct) {
        Fail(EX_DATAERR, "the product: 1 to " + std::to_string(kMaxProduct) + " bytes are wanted");
    }
    return product;
}

// What a report by the method needs and lacks.
void CheckMethod(DWORD method) {
    if (method == VLX_METHOD_DIAL_UP) {
        Fail(EX_CONFIG,
             "the report method is dial-up, which cannot send an opening report; select "
             "another one with \"veloxctl method set\"");
    }
    if (method == VLX_METHOD_TRANS_TO_MANAGER && manager::Url().empty()) {
        Fail(EX_CONFIG, "no manager is set; set one with \"veloxctl manager set\"");
    }
}

std::string Goal(DWORD method) {
    if (method == VLX_METHOD_TRANS_TO_MANAGER) {
        return manager::Url();
    }
    char list[VX_DESTINATION_LIST_LENGTH + 1];
    if (GetVlxTo(list) == FALSE) {
        FailReport(VX_REPORT_NO_DESTINATION, {});
    }
    return list;
}

int StatusOfManager(int result) {
    switch (result) {
        case VLX_MANAGER_NOT_PREPARED:
            return EX_CONFIG;
        case VLX_MANAGER_NOT_DELIVERED:
            return EX_UNAVAILABLE;
        case VLX_MANAGER_REFUSED:
            return EX_PROTOCOL;
        default:
            return EX_SOFTWARE;
    }
}

[[noreturn]] void FailSecurityOpen(DWORD method, int result) {
    const std::string reason = KeptFailure();
    if (result == kNotAttempted) {
        if (geteuid() == 0 && method == VLX_METHOD_TRANS_TO_MANAGER) {
            Fail(EX_OSFILE, "the module " AMRVXMN_MODULE " cannot be loaded");
        }
        settings::FailToStore("the product's name");
    }
    if (method == VLX_METHOD_INTERNET_MAIL) {
        FailReport(result, reason);
    }
    Fail(StatusOfManager(result), "the opening report: " + StoredToTerminal(reason));
}

}  // namespace

int RunSecurityOpen(const Arguments &arguments) {
    (void)TerminalEncoding();  // before composing changes the locale
    const std::string product = ProductAsked(arguments);
    (void)ReadExistingKey(AM_KEY_ALERTREPORT);
    const DWORD method = method::Selected();
    CheckMethod(method);
    Print(std::string("Method: ") + method::NameOf(method) + "\n");
    Print("To: " + StoredToTerminal(Goal(method)) + "\n");
    FinishOutput();
    KeepFailuresOf({"amrpop", "amrsmtp", "amrvxmn"});
    const int result = SecurityOpenReport(product.c_str());
    if (result != 0) {
        FailSecurityOpen(method, result);
    }
    Print("Sent.\n");
    return EX_OK;
}

}  // namespace veloxctl::report
