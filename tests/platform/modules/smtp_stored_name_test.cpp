// The name that a certificate must be for: the stored server name, where the stored address is the
// server's.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>

#include <mail_support/certificates.h>
#include <mail_support/sending.h>
#include <mail_support/smtp_server.h>
#include <mail_support/trace_recorder.h>
#include <ntwin32/registry.h>
#include <support/environment.h>
#include <support/server.h>
#include <support/title.h>

namespace {

using namespace mail_support;

constexpr char kSettings[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\BASESETTING\\REPORT\\VeloxReport(Internet Mail)\\Setting";

struct Case {
    const char *title;
    const char *server;   // null: no such value
    const char *address;  // null: no such value
    DWORD status;
};

class StoredNameTest : public testing::TestWithParam<Case> {
  protected:
    void Store(const char *name, const char *text) {
        HKEY key = 0;
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, kSettings, 0, KEY_ALL_ACCESS, &key),
                  ERROR_SUCCESS);
        const LONG result =
            text == nullptr
                ? RegDeleteValue(key, name)
                : RegSetValueEx(key, name, 0, REG_SZ, reinterpret_cast<const BYTE *>(text),
                                static_cast<DWORD>(std::string(text).size() + 1));
        RegCloseKey(key);
        ASSERT_EQ(result, ERROR_SUCCESS);
    }

    test_support::Server registry_;
    Authority known_;
    test_support::EnvironmentVariable authority_{"KES_CAFILE", known_.File()};
    Certificate certificate_ = known_.Issue("DNS:mail.test.example");
};

TEST_P(StoredNameTest, IsWhatTheCertificateMustBeFor) {
    const Case &row = GetParam();
    Store("Server", row.server);
    Store("IP", row.address);
    const TraceRecorder trace;
    SmtpServer server({.certificate = &certificate_});
    const Sent sent = Send({.port = server.Port(), .option = MAIL_OPTION_STARTTLS_REQUIRED});
    EXPECT_EQ(sent.status, row.status) << trace.AllText();
    EXPECT_EQ(server.Mails().size(), row.status == MAIL_STATUS_SENT ? 1U : 0U);
    if (row.status != MAIL_STATUS_SENT) {
        EXPECT_THAT(sent.answer, testing::HasSubstr("certificate subject name"));
    }
}

const std::string kLongName = std::string(300, 'a');

INSTANTIATE_TEST_SUITE_P(
    Each, StoredNameTest,
    testing::Values(Case{"NameAndAddress", "mail.test.example", "127.0.0.1", 0},
                    Case{"AddressWithLeadingZeros", "mail.test.example", "127.000.00.1", 0},
                    Case{"NameInOtherCase", "Mail.Test.EXAMPLE", "127.0.0.1", 0},
                    Case{"NameWithFinalDot", "mail.test.example.", "127.0.0.1", 0},
                    Case{"NameOfAnotherAddress", "mail.test.example", "127.0.0.2", 1},
                    Case{"AnotherName", "other.test.example", "127.0.0.1", 1},
                    Case{"AddressAsName", "127.0.0.1", "127.0.0.1", 1},
                    Case{"EmptyName", "", "127.0.0.1", 1},
                    Case{"NoHostName", "mail/test", "127.0.0.1", 1},
                    Case{"TooLongName", kLongName.c_str(), "127.0.0.1", 1},
                    Case{"NameMissing", nullptr, "127.0.0.1", 1},
                    Case{"AddressMissing", "mail.test.example", nullptr, 1}),
    test_support::Title());

}  // namespace
