// Alerts of the queue for the manager, with its module replaced.
#include "velox/manager_alert.h"

#include <gmock/gmock.h>

#include <cstring>

#include "fakes/libc.h"
#include "fakes/platform.h"
#include "fakes/registry.h"

namespace {

using ::testing::ElementsAre;

constexpr char kFunction[] = "KesSendAlertToManager";
constexpr char kAddressKey[] =
    "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT\\Address";
constexpr char kModule[] = "/opt/xev/kestro_sa/lib/amrvxmn.dll";

struct Called {
    int result = 0;
    std::string error;
    std::string destination, address, event_id;
    bool event_made = false;
};
Called called;

int TakeAlert(VLX_ALERT_DATA *data, VLX_MANAGER_PARAM *parameters,
              const VLX_MANAGER_ALERT *alert) noexcept {
    called.destination = data->lpszDestinationKey;
    called.address = parameters->lpszManagerIP;
    called.event_id = alert->lpszEventId;
    called.event_made = data->hEvent != 0;
    std::strcpy(data->lpszErrorMessage, called.error.c_str());
    return called.result;
}

class ManagerAlertTest : public fakes::PlatformTest {
  protected:
    void SetUp() override {
        PlatformTest::SetUp();
        called = {};
        fakes::StoreText(kAddressKey, "ManagerIP", "127.0.0.9");
        fakes::AddModule(kModule,
                         {{KESMANREPORT_ALERT_NAME, reinterpret_cast<void (*)()>(&TakeAlert)}});
    }
    void TearDown() override { EXPECT_EQ(fakes::LoadedModules(), 0); }

    int Send() {
        const VLX_MANAGER_ALERT alert = {
            "id-1", "SYSTEM", "source", "host01", "disk 1 failed", "[ALERT]\r\n", 1709600000, 2, 1};
        std::memset(error_, 'x', sizeof error_);
        return KesSendAlertToManager(&alert, error_);
    }

    char error_[VLX_ALERT_ERROR_CAPACITY];
};

TEST_F(ManagerAlertTest, HandsOverTheAlertWithTheManagersParameters) {
    EXPECT_EQ(Send(), 0);
    EXPECT_EQ(called.event_id, "id-1");
    EXPECT_EQ(called.address, "127.0.0.9");
    EXPECT_EQ(called.destination, "SOFTWARE\\XEV\\KESALERTMAN\\DESTINATION\\ID_LIST\\VELOXREPORT");
    EXPECT_TRUE(called.event_made);
    EXPECT_STREQ(error_, "");
    EXPECT_THAT(fakes::TraceLinesOf(kFunction), ElementsAre("0 >lpszEventId=id-1", "0 <return 0."));
}

TEST_F(ManagerAlertTest, GivesTheModulesResultAndItsReason) {
    called.result = 7;
    called.error = "the manager answered 503";
    EXPECT_EQ(Send(), 7);
    EXPECT_STREQ(error_, "the manager answered 503");
    EXPECT_THAT(fakes::TraceLinesOf(kFunction), ElementsAre("0 >lpszEventId=id-1", "1 <return 7."));
}

TEST_F(ManagerAlertTest, WithoutTheModuleNothingIsCalled) {
    fakes::FailCall("LoadLibrary");
    EXPECT_EQ(Send(), KES_MANAGER_NOT_CALLED);
    EXPECT_STREQ(error_, "");
    EXPECT_THAT(
        fakes::TraceLinesOf(kFunction),
        ElementsAre("0 >lpszEventId=id-1", std::string("1 LoadLibrary(") + kModule + ") failed.",
                    "1 <return -1."));
}

TEST_F(ManagerAlertTest, WithoutTheFunctionNothingIsCalled) {
    fakes::AddModule(kModule, {});
    EXPECT_EQ(Send(), KES_MANAGER_NOT_CALLED);
    EXPECT_THAT(fakes::TraceLinesOf(kFunction),
                ElementsAre("0 >lpszEventId=id-1", "1 GetProcAddress() failed.", "1 <return -1."));
}

TEST_F(ManagerAlertTest, WithoutMemoryForTheParametersNothingIsCalled) {
    fakes::FailAllocation(1);
    EXPECT_EQ(Send(), KES_MANAGER_NOT_CALLED);
    EXPECT_EQ(fakes::TraceLinesOf(kFunction).back(), "1 <GetManagerParam failed.return -1.");
    EXPECT_EQ(called.event_id, "");
}

TEST_F(ManagerAlertTest, AFailedEventIsHandedOnAsNone) {
    fakes::FailCall("CreateEvent");
    EXPECT_EQ(Send(), 0);
    EXPECT_FALSE(called.event_made);
}

}  // namespace
