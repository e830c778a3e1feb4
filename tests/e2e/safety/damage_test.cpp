// A damaged store: the server refuses it with a clear message and leaves it as it is, or proves it
// sound and gives every value. Cuts at every page boundary, and 400 random damages of 8 bytes.
#include <support/server.h>

#include <random>

#include "load.h"

namespace {

using test_support::ReadWholeFile;
using test_support::Server;

constexpr int kKeys = 40;
constexpr std::size_t kPage = 4096;
constexpr int kDamages = 400;

std::string KeyPath(int number) {
    return "DAMAGE\\GROUP" + std::to_string(number % 5) + "\\KEY" + std::to_string(number);
}

std::string TextOf(int number) {
    return std::string(static_cast<std::size_t>(50 * number), static_cast<char>('a' + number % 26));
}

void Fill() {
    for (int number = 0; number < kKeys; ++number) {
        HKEY key = 0;
        const std::string text = TextOf(number);
        ASSERT_EQ(RegCreateKey(HKEY_LOCAL_MACHINE, KeyPath(number).c_str(), &key), ERROR_SUCCESS);
        ASSERT_EQ(
            RegSetValueEx(key, "TEXT", 0, REG_SZ, reinterpret_cast<const BYTE *>(text.c_str()),
                          static_cast<DWORD>(text.size() + 1)),
            ERROR_SUCCESS);
    }
}

void ExpectFilled() {
    for (int number = 0; number < kKeys; ++number) {
        HKEY key = 0;
        std::string data(4096, '\0');
        auto size = static_cast<DWORD>(data.size());
        ASSERT_EQ(RegOpenKeyEx(HKEY_LOCAL_MACHINE, KeyPath(number).c_str(), 0, KEY_READ, &key),
                  ERROR_SUCCESS)
            << number;
        ASSERT_EQ(RegQueryValueEx(key, "TEXT", nullptr, nullptr,
                                  reinterpret_cast<BYTE *>(data.data()), &size),
                  ERROR_SUCCESS)
            << number;
        ASSERT_EQ(data.substr(0, size - 1), TextOf(number));
    }
}

class DamageTest : public ::testing::Test {
  protected:
    void SetUp() override {
        server_.Start();
        Fill();
        ASSERT_FALSE(HasFatalFailure());
        ASSERT_EQ(server_.Stop(), 0);
        sound_ = ReadWholeFile(DataFile());
        ASSERT_GT(sound_.size(), 10 * kPage);
    }

    std::string DataFile() const { return server_.StoreFolder() + "/data.mdb"; }

    void Replace(const std::string &bytes) {
        std::filesystem::remove(server_.StoreFolder() + "/lock.mdb");
        std::ofstream(DataFile(), std::ios::binary | std::ios::trunc) << bytes;
    }

    // Starts the server on such a file: true when it took it, with every value there.
    bool Survives(const std::string &bytes) {
        Replace(bytes);
        server_.ForgetLog();
        try {
            server_.Start();
        } catch (const std::runtime_error &error) {
            EXPECT_NE(std::string(error.what()).find("data.mdb"), std::string::npos)
                << "no clear message: " << error.what();
            EXPECT_EQ(ReadWholeFile(DataFile()), bytes) << "a refused store was changed";
            return false;
        }
        ExpectFilled();
        EXPECT_EQ(server_.Stop(), 0);
        return true;
    }

    Server server_{Server::Begin::kNotStarted};
    std::string sound_;
};

TEST_F(DamageTest, AStoreCutAtAPageIsRefusedOrWhole) {
    EXPECT_TRUE(Survives(sound_));
    int refused = 0;
    for (std::size_t size = kPage; size < sound_.size() && !HasFailure(); size += kPage)
        refused += Survives(sound_.substr(0, size)) ? 0 : 1;
    EXPECT_GT(refused, 0);
}

TEST_F(DamageTest, LessThanAPageIsRefused) {
    EXPECT_FALSE(Survives(sound_.substr(0, 100)));
}

TEST_F(DamageTest, RandomDamagesAreRefusedOrDoNoHarm) {
    std::minstd_rand random(4711);
    int refused = 0;
    for (int damage = 0; damage < kDamages && !HasFailure(); ++damage) {
        std::string bytes = sound_;
        const std::size_t at = random() % (bytes.size() - 8);
        for (std::size_t i = 0; i < 8; ++i)
            bytes[at + i] = static_cast<char>(random() % 256);
        refused += Survives(bytes) ? 0 : 1;
        if (HasFailure())
            ADD_FAILURE() << "damage " << damage << " at byte " << at;
    }
    EXPECT_GT(refused, kDamages / 10);
    RecordProperty("refused", refused);
}

}  // namespace
