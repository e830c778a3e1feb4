// The surroundings of a test with real mail servers.
#ifndef MAIL_FIXTURE_H
#define MAIL_FIXTURE_H

#include <gtest/gtest.h>

#include <mail_support/certificates.h>
#include <mail_support/server.h>
#include <mail_support/trace_recorder.h>
#include <support/environment.h>
#include <support/temp_folder.h>

class MailTest : public testing::Test {
  protected:
    test_support::TempFolder folder_;
    test_support::EnvironmentVariable run_{"KES_RUN", folder_ / "run"};
    test_support::EnvironmentVariable state_{"KES_STATE", folder_ / "state"};
    mail_support::Authority known_;
    mail_support::Certificate certificate_ =
        known_.Issue("DNS:mail.test.example,IP:" + mail_support::OwnLoopbackAddress());
    test_support::EnvironmentVariable authority_{"KES_CAFILE", known_.File()};
    mail_support::TraceRecorder trace_;
};

#endif  // MAIL_FIXTURE_H
