// The security opening report, with the mail report and the manager's module replaced.
#include "velox/security.h"

#include <gmock/gmock.h>
#include <ntwin32/registry.h>

#include <cstring>
#include <optional>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"
#include "records/manager.h"
#include "velox/mail_report.h"

namespace {

using ::testing::Contains;
using ::testing::ElementsAre;
using ::testing::IsEmpty;

constexpr char kReportKey[] = "SOFTWARE\\XEV\\KESALERTMAN\\ALERTREPORT";
constexpr char kMethodKey[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\REPORT\\VELOXREPORT\\SETTING";
constexpr char kAddressKey[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";
constexpr char kModule[] = "/opt/xev/kestro_sa/lib/amrvxmn.dll";

// What the replaced calls were given, and what they give.
struct Report {
    int calls = 0;
    int result = 0;
    std::optional<std::string> product;  // stored while the report was sent
};

struct MailReport : Report {
    bool recipient_known = true;
    DWORD kind = 0;
    std::string subject;
    std::string recipient;
    bool has_message = false;
    bool error_buffer_is_empty = false;
};

struct ManagerReport : Report {
    std::string destination;
    std::string manager_ip;
    bool event_made = false;
    bool rest_is_zero = false;
};

MailReport mail;
ManagerReport manager;

// All of the alert record but its three fields.
bool RestIsZero(const VLX_ALERT_DATA &alert) {
    VLX_ALERT_DATA rest = alert;
    rest.lpszDestinationKey = nullptr;
    rest.lpszErrorMessage = nullptr;
    rest.hEvent = 0;
    const VLX_ALERT_DATA zero = {};
    return std::memcmp(&rest, &zero, sizeof rest) == 0;
}

int AMVlxManReport_Open(VLX_ALERT_DATA *alert, VLX_MANAGER_PARAM *parameters) noexcept {
    ++manager.calls;
    manager.product = fakes::Text(kReportKey, "ReportProduct");
    manager.destination = alert->lpszDestinationKey;
    manager.manager_ip = parameters->lpszManagerIP;
    manager.event_made = alert->hEvent != 0;
    manager.rest_is_zero = RestIsZero(*alert);
    std::memset(alert->lpszErrorMessage, 'e', VLX_ALERT_ERROR_CAPACITY);
    return manager.result;
}

}  // namespace

BOOL GetVlxTo(char *szMailTo) noexcept {
    if (mail.recipient_known) {
        std::strcpy(szMailTo, "centre@maintenance.example");
    }
    return mail.recipient_known ? TRUE : FALSE;
}

int AMAMVeloxTestReport(char *lpszResult, DWORD dwKind, const char *lpszSubject,
                        const char *lpszETo, const char *lpszMessage) noexcept {
    ++mail.calls;
    mail.product = fakes::Text(kReportKey, "ReportProduct");
    mail.kind = dwKind;
    mail.subject = lpszSubject;
    mail.recipient = lpszETo;
    mail.has_message = lpszMessage != nullptr;
    const char zero[512] = {};
    mail.error_buffer_is_empty = std::memcmp(lpszResult, zero, sizeof zero) == 0;
    return mail.result;
}

DWORD GetEOpening() noexcept {
    return 0;
}

namespace {

class SecurityTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        mail = {};
        manager = {};
        fakes::CreateKey(kReportKey);
        SelectMethod("Internet Mail");
        fakes::StoreText(kAddressKey, "ManagerIP", "192.0.2.1");
        // The value is deleted through a handle that is closed by then.
        expected_closed_handle_calls_ = 1;
    }

    static void SelectMethod(const char *text) {
        fakes::StoreText(kMethodKey, "SelectedMethod", text);
    }
    static void AddManagerModule() {
        fakes::AddModule(
            kModule, {{"AMVlxManReport_Open", reinterpret_cast<void (*)()>(AMVlxManReport_Open)}});
    }
    static std::vector<std::string> OwnTrace() { return fakes::TraceLinesOf("SecurityOpenReport"); }
};

TEST_F(SecurityTest, SendsByMailWhileTheProductIsStored) {
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), 0);
    EXPECT_EQ(mail.calls, 1);
    EXPECT_EQ(mail.product, "PRODUCT");
    EXPECT_EQ(mail.kind, 2U);
    EXPECT_EQ(mail.subject, "Velox Alert Notification");
    EXPECT_EQ(mail.recipient, "centre@maintenance.example");
    EXPECT_FALSE(mail.has_message);
    EXPECT_TRUE(mail.error_buffer_is_empty);
    EXPECT_EQ(fakes::Text(kReportKey, "ReportProduct"), std::nullopt);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "0 Send Security open report ok.", "0 <"));
    EXPECT_EQ(fakes::Trace().front().source, "security");
    EXPECT_EQ(fakes::Calls()[0].detail, std::string(kReportKey) + " sam=0x3");
}

TEST_F(SecurityTest, TheSubjectIsTranslated) {
    fakes::TheLibc().catalogue = {{"messages:Velox Alert Notification", "TRANSLATED"}};
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), 0);
    EXPECT_EQ(mail.subject, "TRANSLATED");
}

TEST_F(SecurityTest, AFailedMailGivesItsResult) {
    mail.result = -14;
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -14);
    EXPECT_EQ(fakes::Text(kReportKey, "ReportProduct"), std::nullopt);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "1 Send Security Opening report failed.", "0 <"));
}

TEST_F(SecurityTest, WithoutARecipientNothingIsSent) {
    mail.recipient_known = false;
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_EQ(mail.calls, 0);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "1 GetVlxTo failed.", "0 <"));
}

TEST_F(SecurityTest, WithoutAProductNothingIsTouched) {
    const auto before = fakes::Dump();
    expected_closed_handle_calls_ = 0;
    EXPECT_EQ(SecurityOpenReport(nullptr), -1);
    EXPECT_EQ(SecurityOpenReport(""), -1);
    EXPECT_EQ(fakes::Dump(), before);
    EXPECT_THAT(fakes::Calls(), IsEmpty());
    EXPECT_THAT(OwnTrace()[1], ::testing::StartsWith("1 <SecName=(nil)"));
}

TEST_F(SecurityTest, WithoutTheReportKeyNothingIsSent) {
    fakes::DeleteTree(kReportKey);
    expected_closed_handle_calls_ = 0;
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_EQ(mail.calls, 0);
    EXPECT_THAT(
        OwnTrace(),
        ElementsAre("0 >", "1 SOFTWARE\\XEV\\KESALERTMAN\\ALERTREPORT key doesn't exist", "0 <"));
    // The deletion is issued all the same, on a handle that was never opened.
    EXPECT_EQ(fakes::CallCount("RegDeleteValue"), 1);
}

TEST_F(SecurityTest, AProductThatCannotBeStoredIsNotReported) {
    fakes::FailCall("RegSetValueEx");
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_EQ(mail.calls, 0);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "1 RegSetValueEx(ReportProduct) failed.", "0 <"));
}

TEST_F(SecurityTest, WithoutAMethodNothingIsSent) {
    SelectMethod("Pigeon");
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "1 AMGetVlxMethod () failed.", "0 <"));
    EXPECT_EQ(fakes::Text(kReportKey, "ReportProduct"), std::nullopt);
}

TEST_F(SecurityTest, DialUpCannotSendAnOpeningReport) {
    SelectMethod("Dial-up");
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >",
                                        "1 method 1 unable to send open report."
                                        "[0:internet mail|1:dial up|2:transtomanager]",
                                        "0 <"));
    EXPECT_EQ(fakes::CallCount("RegSetValueEx"), 1);
    EXPECT_EQ(fakes::Text(kReportKey, "ReportProduct"), std::nullopt);
}

class ManagerReportTest : public SecurityTest {
  protected:
    void SetUp() override {
        SecurityTest::SetUp();
        SelectMethod("TransToManager");
    }
};

TEST_F(ManagerReportTest, HandsTheAlertToTheModule) {
    AddManagerModule();
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), 0);
    EXPECT_EQ(manager.calls, 1);
    EXPECT_EQ(manager.product, "PRODUCT");
    EXPECT_EQ(manager.destination, "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT");
    EXPECT_EQ(manager.manager_ip, "192.0.2.1");
    EXPECT_TRUE(manager.event_made);
    EXPECT_TRUE(manager.rest_is_zero);
    EXPECT_EQ(mail.calls, 0);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "0 Send Security open report ok.", "0 <"));
    EXPECT_THAT(fakes::Calls(),
                Contains(::testing::Field(&fakes::Call::detail, "manual=0 signalled=0 name=null")));
}

TEST_F(ManagerReportTest, GivesTheModulesResult) {
    AddManagerModule();
    manager.result = 503;
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), 503);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "1 Send Security Opening report failed.", "0 <"));
}

TEST_F(ManagerReportTest, AMissingModuleIsNamedWithItsPath) {
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_THAT(OwnTrace(),
                ElementsAre("0 >", "1 LoadLibrary(/opt/xev/kestro_sa/lib/amrvxmn.dll) failed.",
                            "1 Send Security Opening report failed.", "0 <"));
}

TEST_F(ManagerReportTest, AModuleWithoutTheEntryIsUnloaded) {
    fakes::AddModule(kModule, {});
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "1 GetProcAddress() failed.",
                                        "1 Send Security Opening report failed.", "0 <"));
}

TEST_F(ManagerReportTest, ParametersThatCannotBeReadEndTheReport) {
    fakes::FailAllocation(1);
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "1 GetManagerParam failed.", "0 <"));
}

TEST_F(ManagerReportTest, WithoutMemoryForTheErrorTextTheModuleIsNotCalled) {
    AddManagerModule();
    fakes::FailAllocation(3);  // after the two texts of the parameters
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), -1);
    EXPECT_EQ(manager.calls, 0);
    EXPECT_THAT(OwnTrace(), ElementsAre("0 >", "2 AlertData.lpszErrorMessage malloc failed.",
                                        "1 Send Security Opening report failed.", "0 <"));
}

TEST_F(ManagerReportTest, WithoutAnEventTheReportGoesOut) {
    AddManagerModule();
    fakes::FailCall("CreateEvent");
    EXPECT_EQ(SecurityOpenReport("PRODUCT"), 0);
    EXPECT_FALSE(manager.event_made);
}

TEST_F(ManagerReportTest, EveryFailedCallLeavesNothingOpen) {
    AddManagerModule();
    ASSERT_EQ(SecurityOpenReport("PRODUCT"), 0);
    const int calls = static_cast<int>(fakes::Calls().size());
    for (int nth = 1; nth <= calls; ++nth) {
        TearDown();
        SetUp();
        AddManagerModule();
        fakes::FailAnyCall(nth);
        const int result = SecurityOpenReport("PRODUCT");
        EXPECT_TRUE(result == 0 || result == -1) << nth;
        expected_closed_handle_calls_ = fakes::ClosedHandleCalls();
    }
}

}  // namespace
