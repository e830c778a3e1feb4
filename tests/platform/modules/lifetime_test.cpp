// The modules as modules: what they export, that they can be loaded again and again, and that
// nothing of the process's surroundings changes what they do.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <chrono>
#include <optional>
#include <set>
#include <sstream>
#include <string>

#include <amcregac.h>
#include <mail_support/census.h>
#include <mail_support/logging_in.h>
#include <mail_support/module.h>
#include <mail_support/pop_server.h>
#include <mail_support/process.h>
#include <mail_support/sending.h>
#include <mail_support/server.h>
#include <mail_support/smtp_server.h>
#include <session/deadline.h>
#include <support/server.h>
#include <support/title.h>

#include "module_fixture.h"

namespace {

using namespace mail_support;
using testing::UnorderedElementsAre;

std::set<std::string> Exports(const std::string &module) {
    const Finished nm = Run({"nm", "-D", "--defined-only", "--format=posix", ModulePath(module)});
    EXPECT_EQ(nm.status, 0) << nm.output;
    std::istringstream lines(nm.output);
    std::set<std::string> names;
    for (std::string line; std::getline(lines, line);)
        names.insert(line.substr(0, line.find(' ')));
    return names;
}

TEST(ModuleExportsTest, Smtp) {
    EXPECT_THAT(Exports(AMRSMTP_MODULE),
                UnorderedElementsAre("SendMailWithSMTP", "KesSendMailWithId"));
}

TEST(ModuleExportsTest, Pop) {
    EXPECT_THAT(Exports(AMRPOP_MODULE),
                UnorderedElementsAre("TransportInit", "TransportConnect", "TransportDisconnect",
                                     "TransportRelease"));
}

using ModuleLifetimeTest = ModuleTest;

// By amcregac.dll, loaded for the call.
std::string MailSettingsKey() {
    const Module registry("amcregac.dll");
    auto *const get_path =
        registry.Get<decltype(AMACBSGetMethodRegistryPath)>("AMACBSGetMethodRegistryPath");
    HKEY root = 0;
    char path[256] = "";
    DWORD size = sizeof path;
    EXPECT_NE(get_path("Report", "VeloxReport(Internet Mail)", &root, path, &size), FALSE);
    return path;
}

// Each call of the helpers loads its module, uses it and unloads it.
TEST_F(ModuleLifetimeTest, LoadedUsedAndUnloadedThreeTimes) {
    const test_support::Server registry;
    SmtpServer smtp({});
    PopServer pop({});
    (void)MailSettingsKey();  // the process has opened the registry
    const Census before;
    for (int times = 0; times < 3; ++times) {
        EXPECT_THAT(MailSettingsKey(), testing::EndsWith("VeloxReport(Internet Mail)\\Setting"));
        EXPECT_TRUE(LogIn({.port = pop.Port()}).disconnect);
        EXPECT_EQ(Send({.port = smtp.Port()}).status, MAIL_STATUS_SENT);
        EXPECT_TRUE(NothingLeftSince(before));
    }
    EXPECT_EQ(smtp.Mails().size(), 3U);
    EXPECT_EQ(pop.LogIns(), 3);
}

// libcurl and GMime do not survive being unloaded: the modules only look as if they were.
TEST_F(ModuleLifetimeTest, UnloadingKeepsTheCode) {
    for (const char *name : {AMRSMTP_MODULE, AMRPOP_MODULE}) {
        { const Module module(name); }
        void *kept = ::dlopen(ModulePath(name).c_str(), RTLD_NOW | RTLD_NOLOAD);
        EXPECT_NE(kept, nullptr) << name;
        ::dlclose(kept);
    }
}

TEST_F(ModuleLifetimeTest, SeveralThreadsAtATime) {
    std::vector<std::thread> threads;
    std::array<DWORD, 4> status{};
    std::array<std::unique_ptr<SmtpServer>, 4> servers;
    for (std::size_t number = 0; number < status.size(); ++number) {
        servers[number] = std::make_unique<SmtpServer>(SmtpBehaviour{});
        status[number] = 99;
        threads.emplace_back([&status, &servers, number] {
            status[number] = Send({.port = servers[number]->Port()}).status;
        });
    }
    for (std::thread &thread : threads)
        thread.join();
    EXPECT_THAT(status, testing::Each(MAIL_STATUS_SENT));
}

TEST_F(ModuleLifetimeTest, ProxiesOfTheEnvironmentAreNotUsed) {
    const ClosedPort nobody;
    const std::string proxy = "http://127.0.0.1:" + std::to_string(nobody.Port());
    const test_support::EnvironmentVariable all("ALL_PROXY", proxy);
    const test_support::EnvironmentVariable all_small("all_proxy", proxy);
    const test_support::EnvironmentVariable smtp_proxy("smtp_proxy", proxy);
    const test_support::EnvironmentVariable pop_proxy("pop3_proxy", proxy);
    SmtpServer smtp({});
    PopServer pop({});
    EXPECT_EQ(Send({.port = smtp.Port()}).status, MAIL_STATUS_SENT);
    EXPECT_TRUE(LogIn({.port = pop.Port()}).disconnect);
}

struct AllowanceCase {
    const char *title;
    std::optional<std::string> variable;
    int seconds;
};

class AllowanceTest : public testing::TestWithParam<AllowanceCase> {};

TEST_P(AllowanceTest, ComesFromTheEnvironment) {
    const test_support::EnvironmentVariable deadline("KES_MAIL_DEADLINE", GetParam().variable);
    EXPECT_EQ(session::Allowance(), std::chrono::seconds(GetParam().seconds));
}

INSTANTIATE_TEST_SUITE_P(
    Each, AllowanceTest,
    testing::Values(AllowanceCase{"Unset", std::nullopt, 60}, AllowanceCase{"Empty", "", 60},
                    AllowanceCase{"Shortest", "1", 1}, AllowanceCase{"Longest", "600", 600},
                    AllowanceCase{"Nought", "0", 60}, AllowanceCase{"TooLong", "601", 60},
                    AllowanceCase{"Negative", "-5", 60}, AllowanceCase{"WithUnit", "5s", 60},
                    AllowanceCase{"Huge", "99999999999999999999", 60}),
    test_support::Title());

}  // namespace
