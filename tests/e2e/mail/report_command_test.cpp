// "veloxctl report": the preview, failures in words, and received mails turned back into text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>
#include <sysexits.h>

#include <string>

#include <mail_support/base64.h>
#include <mail_support/smtp_server.h>
#include <support/encoding.h>
#include <support/title.h>

#include "mailbox.h"
#include "report_fixture.h"

namespace {

using testing::ContainsRegex;
using testing::HasSubstr;
using testing::Not;
using veloxctl_test::Result;
using veloxctl_test::Veloxctl;

using ReportPreviewTest = ReportTest;

TEST_F(ReportPreviewTest, IsTheReportsText) {
    EXPECT_EQ(MustSucceed({"report", "preview"}), Shown(ExpectedReport(false, "C")));
    EXPECT_EQ(MustSucceed({"report", "preview", "--kind", "2"}), Shown(ExpectedReport(false, "A")));
    const std::string message = folder_.Write("message", "opened\n");
    EXPECT_EQ(MustSucceed({"report", "preview", "--kind", "0", "--message", message}),
              Shown(ExpectedReport(false, "X", "opened\n")));
    EXPECT_EQ(Opening(), 0U);
}

TEST_F(ReportPreviewTest, InJapaneseAndRaw) {
    language_.Set("ja_JP");
    EXPECT_EQ(MustSucceed({"report", "preview"}), Shown(ExpectedReport(true, "C")));
    EXPECT_EQ(MustSucceed({"report", "preview", "--raw"}),
              test_support::ToEuc(ExpectedReport(true, "C")));
}

TEST_F(ReportPreviewTest, AMessageBelongsToTheOpeningReport) {
    const Result result = Veloxctl({"report", "preview", "--message", "-"});
    EXPECT_EQ(result.status, EX_USAGE);
    EXPECT_THAT(result.errors, HasSubstr("--message belongs to kind 0"));
}

struct Failure {
    const char *title;
    const char *changes;  // .reg lines
    int status;
    const char *message;
};

class ReportFailureTest : public ReportTest, public testing::WithParamInterface<Failure> {};

TEST_P(ReportFailureTest, IsToldInWordsWithItsCause) {
    mail_support::SmtpServer server({});
    UseServer("127.0.0.1", server.Port());
    Import(GetParam().changes);
    const Result result = Veloxctl({"report", "test"});
    EXPECT_EQ(result.status, GetParam().status);
    EXPECT_THAT(result.errors, HasSubstr(GetParam().message));
    EXPECT_EQ(server.Connections(), 0);
    EXPECT_EQ(Opening(), 0U);
    EXPECT_EQ(Registered(), 0U);
}

#define DESTINATION \
    "[HKLM\\SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address]\n"
#define MAIL                                                                        \
    "[HKLM\\SOFTWARE\\XEV\\KESAlertMan\\BaseSetting\\Report\\VeloxReport(Internet " \
    "Mail)\\Setting]\n"
#define SETUP "[HKLM\\SOFTWARE\\XEV\\VLXService\\SETUP]\n"
#define CONTRACT "[HKLM\\SOFTWARE\\XEV\\VLXService\\SETTING]\n"

const std::string kManyAddresses = DESTINATION "\"ETo\"=\"" + [] {
    std::string list;
    for (int number = 0; number < 101; ++number)
        list += "a@b,";
    return list;
}() + "\"\n";

INSTANTIATE_TEST_SUITE_P(
    Each, ReportFailureTest,
    testing::Values(
        Failure{"NoDestination", DESTINATION "\"ETo\"=\"\"\n", EX_CONFIG,
                "the destination list holds no address (-4); ETo of HKEY_LOCAL_MACHINE\\SOFTWARE"},
        Failure{"NoList", DESTINATION "\"ETo\"=-\n", EX_CONFIG, "Address is missing\n"},
        Failure{"ManyAddresses", kManyAddresses.c_str(), EX_CONFIG, "more than 100 addresses"},
        Failure{"InnerBlank", DESTINATION "\"ETo\"=\"a b@c\"\n", EX_CONFIG, "blank inside (-6)"},
        Failure{"NoServer", MAIL "\"IP\"=-\n", EX_CONFIG,
                "no SMTP server address is set (-7); IP of HKEY_LOCAL_MACHINE\\SOFTWARE"},
        Failure{"NoSender", MAIL "\"Address\"=\"\"\n", EX_CONFIG,
                "no sender address is set (-8); Address of "},
        Failure{"NoCustomerMail", CONTRACT "\"MAIL\"=\"\"\n", EX_CONFIG,
                "the contract data hold no mail address (-9); MAIL of HKEY_LOCAL_MACHINE\\SOFTWARE"
                "\\XEV\\VLXService\\SETTING is empty\n"},
        Failure{"NoVersion", SETUP "\"VERSION\"=-\n", EX_CONFIG,
                "the report cannot be composed (-10); VERSION of "},
        Failure{"LongVersion", SETUP "\"VERSION\"=\"3.1/LINUX/LINUX/LINUX\"\n", EX_CONFIG,
                "VERSION is \"3.1/LINUX/LINUX/LINUX\" and may have 19 bytes: every import of a key "
                "disk lengthens it"},
        Failure{"NoContract", CONTRACT "\"KAISHAKBN\"=dword:2\n", EX_CONFIG,
                "(-10); KAISHAKBN of HKEY_LOCAL_MACHINE\\SOFTWARE\\XEV\\VLXService\\SETTING is 2 "
                "and must be 1 or 99"},
        Failure{"NoOptions", CONTRACT "\"OPTCDN\"=-\n", EX_CONFIG, "(-10); OPTCDN of "},
        Failure{"BadSender", MAIL "\"Address\"=\"a<b\"\n", EX_SOFTWARE,
                "the module amrsmtp.dll refused the mail (-17); not sent, status 4: bad argument: "
                "the sender holds the byte 3C at position 2"},
        Failure{"NoPopFlag", MAIL "\"POPFlag\"=-\n", EX_UNAVAILABLE,
                "the log-in to the POP server failed (-18); POPFlag is missing"}),
    test_support::Title());

using ReportVerboseTest = ReportTest;

TEST_F(ReportVerboseTest, ShowsEveryStepWithItsTimeAndTheServersAnswer) {
    mail_support::SmtpServer server({});
    UseServer("127.0.0.1", server.Port());
    const Result result = Veloxctl({"-v", "report", "test"});
    EXPECT_EQ(result.status, EX_OK);
    EXPECT_THAT(
        result.errors,
        ContainsRegex("[0-9]\\.[0-9]+ 0 amrsmtp SendMailWithSMTP: [0-9]+ ms, client: MAIL"));
    EXPECT_THAT(result.errors, HasSubstr("server: 250 recipient accepted\n"));
    EXPECT_THAT(result.output,
                HasSubstr("A success records EOpening 2 (it is 0 now), and SETTING 1 unless"));
}

TEST_F(ReportVerboseTest, TheServersWordsAreInTheMessage) {
    mail_support::SmtpServer server({.misdeeds = {{"RCPT", {"550 no such user\r\n"}}}});
    UseServer("127.0.0.1", server.Port());
    const Result result = Veloxctl({"report", "test"});
    EXPECT_EQ(result.status, EX_PROTOCOL);
    EXPECT_THAT(result.errors,
                HasSubstr("veloxctl: the SMTP server refused the sender or a destination (-15); "
                          "not sent, status 2: RCPT: the server said \"550 no such user\"\n"));
}

constexpr char kHeaders[] =
    "From: agent@server.example\nTo: centre@maintenance.example\nSubject: =?UTF-8?B?5pel5pys?=\n"
    "Date: Sat, 21 Nov 2026 12:00:00 +0900\nMIME-Version: 1.0\n";

std::string EncodedReport() {
    return Encode(test_support::ToEuc("日本\r\ntext\r\n"));
}

std::string WithCrLf(const std::string &text) {
    std::string result;
    for (const char byte : text)
        result += byte == '\n' ? std::string("\r\n") : std::string(1, byte);
    return result;
}

struct Received {
    const char *title;
    std::string (*mail)();
};

class ReportDecodeTest : public ReportTest, public testing::WithParamInterface<Received> {};

TEST_P(ReportDecodeTest, GivesTheText) {
    const std::string mail = GetParam().mail();
    EXPECT_EQ(MustSucceed({"report", "decode"}, mail), "日本\ntext\n");
    const std::string file = folder_.Write("mail", mail);
    EXPECT_EQ(MustSucceed({"report", "decode", file, "--raw"}),
              test_support::ToEuc("日本\r\ntext\r\n"));
}

INSTANTIATE_TEST_SUITE_P(
    Each, ReportDecodeTest,
    testing::Values(
        Received{"Plain", [] { return std::string(kHeaders) + "\n" + EncodedReport(); }},
        Received{"CrLf", [] { return WithCrLf(std::string(kHeaders) + "\n" + EncodedReport()); }},
        Received{"Base64",
                 [] {
                     return std::string(kHeaders) +
                            "Content-Type: text/plain\nContent-Transfer-Encoding: base64\n\n" +
                            mail_support::Base64(EncodedReport()) + "\n";
                 }},
        Received{"QuotedPrintable",
                 [] {
                     std::string body;
                     for (const char byte : EncodedReport())
                         body += byte == '=' ? std::string("=3D") : std::string(1, byte);
                     return std::string(kHeaders) +
                            "Content-Type: text/plain\n"
                            "Content-Transfer-Encoding: quoted-printable\n\n" +
                            body;
                 }},
        Received{"SecondPart",
                 [] {
                     return std::string(kHeaders) +
                            "Content-Type: multipart/mixed; boundary=b\n\n--b\nContent-Type: "
                            "text/plain\n\nhello\n--b\nContent-Type: text/plain\n\n" +
                            EncodedReport() + "\n--b--\n";
                 }},
        Received{"Attached",
                 [] {
                     return "Subject: fwd\nMIME-Version: 1.0\nContent-Type: message/rfc822\n\n" +
                            std::string(kHeaders) + "\n" + EncodedReport();
                 }},
        Received{"Footer",
                 [] {
                     return std::string(kHeaders) + "\nbefore\n" + EncodedReport() +
                            "_______\nlist footer\n";
                 }},
        Received{"BareLines", [] { return EncodedReport(); }},
        Received{"MailboxOfOne",
                 [] {
                     return "From agent Sat Nov 21 12:00:00 2026\n" + std::string(kHeaders) + "\n" +
                            EncodedReport() + "\n";
                 }}),
    test_support::Title());

using ReportDecodeFileTest = ReportTest;

TEST_F(ReportDecodeFileTest, AMailboxIsShownMailByMail) {
    const std::string mail = "From agent Sat Nov 21 12:00:00 2026\n" + std::string(kHeaders) +
                             "\n" + EncodedReport() + "\n";
    const std::string heading =
        ": 日本, from agent@server.example, Sat, 21 Nov 2026 12:00:00 +0900\n日本\ntext\n";
    EXPECT_EQ(MustSucceed({"report", "decode"}, mail + mail), "== 1" + heading + "== 2" + heading);
}

struct Useless {
    const char *title;
    std::string text;
    const char *message;
};

class ReportDecodeRefusalTest : public ReportTest, public testing::WithParamInterface<Useless> {};

TEST_P(ReportDecodeRefusalTest, NamesTheFileAndTheCause) {
    const std::string file = folder_.Write("mail", GetParam().text);
    const Result result = Veloxctl({"report", "decode", file});
    EXPECT_EQ(result.status, EX_DATAERR);
    EXPECT_EQ(result.errors, "veloxctl: " + file + ": " + GetParam().message + "\n");
    EXPECT_EQ(result.output, "");
}

INSTANTIATE_TEST_SUITE_P(
    Each, ReportDecodeRefusalTest,
    testing::Values(Useless{"Empty", "", "it holds no encoded report"},
                    Useless{"AnotherMail", std::string(kHeaders) + "\nhello\n",
                            "it holds no encoded report"},
                    Useless{"NoEnd", std::string(kHeaders) + "\nbegin 644 a\n#86)C\n",
                            "it holds no encoded report"},
                    Useless{"Damaged", std::string(kHeaders) + "\nbegin 644 a\n#8{)C\n`\nend\n",
                            "the encoded report is damaged"},
                    Useless{"OneOfTwoDamaged",
                            "From a\nSubject: s\n\nbegin 644 a\n#86)C\n`\nend\n\nFrom a\nSubject: "
                            "s\n\nbegin 644 a\n#8{)C\n`\nend\n",
                            "the encoded report is damaged"}),
    test_support::Title());

TEST_F(ReportDecodeFileTest, AnAbsentFileIsNamed) {
    const Result result = Veloxctl({"report", "decode", folder_ / "absent"});
    EXPECT_EQ(result.status, EX_NOINPUT);
    EXPECT_THAT(result.errors, HasSubstr((folder_ / "absent") + ": "));
}

}  // namespace
