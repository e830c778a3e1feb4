// How amrpop.dll protects a log-in: TLS from the first byte on port 995, else STLS when offered.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <optional>
#include <string>

#include <mail_support/certificates.h>
#include <mail_support/logging_in.h>
#include <mail_support/pop_server.h>
#include <mail_support/trace_recorder.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;

constexpr unsigned kTlsPort = 995;

class PopTlsTest : public ModuleTest {
  protected:
    PopTlsTest() { authority_.Set(known_.File()); }

    // A server on the port of TLS from the first byte, at an address of this process alone.
    PopBehaviour FromTheFirstByte(const Certificate &certificate) {
        return {.certificate = &certificate,
                .tls_from_the_first_byte = true,
                .address = OwnLoopbackAddress(),
                .port = kTlsPort};
    }

    Authority known_;
    Authority unknown_;
    TraceRecorder trace_;
};

TEST_F(PopTlsTest, FromTheFirstByteOnItsPort) {
    const Certificate certificate = known_.Issue("IP:" + OwnLoopbackAddress());
    PopServer server(FromTheFirstByte(certificate));
    EXPECT_TRUE(LogIn({.server = OwnLoopbackAddress(), .port = kTlsPort}).disconnect)
        << trace_.AllText();
    EXPECT_EQ(server.EncryptedLogIns(), 1);
    EXPECT_TRUE(trace_.Has(0, "the connection is encrypted"));
}

TEST_F(PopTlsTest, PasswordGoesToNobodyOnThatPortWithoutAGoodCertificate) {
    const Certificate certificate = unknown_.Issue("IP:" + OwnLoopbackAddress());
    PopServer server(FromTheFirstByte(certificate));
    EXPECT_FALSE(LogIn({.server = OwnLoopbackAddress(), .port = kTlsPort}).connect);
    EXPECT_TRUE(trace_.Has(1, "log-in failed, TLS: SSL certificate problem")) << trace_.AllText();
    EXPECT_TRUE(server.Commands().empty());
}

TEST_F(PopTlsTest, ClearTextServerOnThatPortFails) {
    SetDeadline(std::chrono::seconds(2));
    PopServer server({.address = OwnLoopbackAddress(), .port = kTlsPort});
    EXPECT_FALSE(LogIn({.server = OwnLoopbackAddress(), .port = kTlsPort}).connect);
    EXPECT_TRUE(trace_.Has(1, "log-in failed, TLS: ")) << trace_.AllText();
}

TEST_F(PopTlsTest, UpgradeWhenOffered) {
    const Certificate certificate = known_.Issue("IP:127.0.0.1");
    PopServer server({.certificate = &certificate});
    EXPECT_TRUE(LogIn({.port = server.Port()}).disconnect) << trace_.AllText();
    EXPECT_EQ(server.EncryptedLogIns(), 1);
    EXPECT_TRUE(trace_.Has(0, "client: STLS"));
    EXPECT_TRUE(trace_.Has(0, "the connection is encrypted"));
}

TEST_F(PopTlsTest, ClearTextWhenNotOffered) {
    PopServer server({});
    EXPECT_TRUE(LogIn({.port = server.Port()}).disconnect);
    EXPECT_TRUE(trace_.Has(0, "the connection is clear text"));
}

TEST_F(PopTlsTest, ClearTextWhenRefused) {
    const Certificate certificate = known_.Issue("IP:127.0.0.1");
    PopServer server({.misdeeds = {{"STLS", {"-ERR not now\r\n"}}}, .certificate = &certificate});
    EXPECT_TRUE(LogIn({.port = server.Port()}).disconnect) << trace_.AllText();
    EXPECT_EQ(server.EncryptedLogIns(), 0);
    EXPECT_TRUE(trace_.Has(0, "server: -ERR not now"));
    EXPECT_TRUE(trace_.Has(0, "the connection is clear text"));
}

// Without the upgrade the log-in would go on in clear text, so a bad certificate takes nothing
// away.
TEST_F(PopTlsTest, BadCertificateOfAnUpgradeIsTraced) {
    const Certificate certificate = unknown_.Issue("IP:127.0.0.1");
    PopServer server({.certificate = &certificate});
    EXPECT_TRUE(LogIn({.port = server.Port()}).disconnect) << trace_.AllText();
    EXPECT_EQ(server.EncryptedLogIns(), 1);
    EXPECT_TRUE(trace_.Has(1, "certificate of 127.0.0.1 not accepted: "));
}

}  // namespace
