// Stored passwords and the host's key file.
#include <amcrtcpy.h>
#include <gtest/gtest.h>
#include <support/environment.h>
#include <support/temp_folder.h>
#include <sys/stat.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <filesystem>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace {

namespace fs = std::filesystem;

class Password : public testing::Test {
  protected:
    std::string KeyPath() const { return state_ / "ras.key"; }

    // Empty when it fails.
    static std::string Encode(const std::string &password) {
        char encoded[RAS_ENCODED_CAPACITY] = "";
        return Ras_Encode(password.c_str(), encoded, sizeof encoded) != FALSE ? encoded : "";
    }

    // The decoded text in the field of a record, with the result.
    struct Decoded {
        bool good;
        std::string text;
    };
    static Decoded Decode(const std::string &encoded) {
        char field[RAS_ENCODED_CAPACITY] = "";
        encoded.copy(field, sizeof field - 1);
        const BOOL good = Ras_Decode(field, static_cast<int>(encoded.size()));
        const std::string rest(field + std::strlen(field), field + sizeof field);
        EXPECT_EQ(rest.find_first_not_of('\0'), std::string::npos) << "something is left behind";
        return {good != FALSE, field};
    }
    static void ExpectNotDecoded(const std::string &encoded) {
        const Decoded decoded = Decode(encoded);
        EXPECT_FALSE(decoded.good) << encoded;
        EXPECT_EQ(decoded.text, "");
    }

    test_support::TempFolder state_;
    test_support::EnvironmentVariable variable_{"KES_STATE", state_.Path()};
};

TEST_F(Password, SurvivesEncodingAndDecoding) {
    std::string all;
    for (int byte = 1; byte < 152; ++byte) {
        all += static_cast<char>(byte);
    }
    for (const std::string &password :
         {std::string(), std::string("x"), std::string("pa ss\\word\""), std::string(151, 'x'), all,
          std::string("\xA1\xFE\xFF")}) {
        const std::string encoded = Encode(password);
        EXPECT_LT(encoded.size(), static_cast<std::size_t>(RAS_ENCODED_CAPACITY));
        if (password.size() > 1) {  // one letter may stand there by chance
            EXPECT_EQ(encoded.find(password), std::string::npos);
        }
        const Decoded decoded = Decode(encoded);
        EXPECT_TRUE(decoded.good);
        EXPECT_EQ(decoded.text, password);
    }
}

TEST_F(Password, IsPrintableWhenEncoded) {
    for (int i = 0; i < 50; ++i) {
        const std::string encoded = Encode(std::string(static_cast<std::size_t>(i * 3), '\xFF'));
        ASSERT_FALSE(encoded.empty());
        for (const char character : encoded) {
            EXPECT_TRUE(character > ' ' && character < 0x7F);
        }
    }
}

TEST_F(Password, IsEncodedAnewEachTime) {
    EXPECT_NE(Encode("secret"), Encode("secret"));
}

TEST_F(Password, FillsTheFieldAtItsLongest) {
    EXPECT_EQ(Encode(std::string(RAS_MAX_PASSWORD, 'x')).size(), RAS_ENCODED_CAPACITY - 1u);
    EXPECT_EQ(Encode(std::string(RAS_MAX_PASSWORD + 1, 'x')), "");
    EXPECT_EQ(Encode(std::string(100000, 'x')), "");
}

TEST_F(Password, IsEncodedWholeOrNotAtAll) {
    const std::size_t size = Encode("secret").size();
    char encoded[RAS_ENCODED_CAPACITY] = "former";
    EXPECT_EQ(Ras_Encode("secret", encoded, static_cast<DWORD>(size)), FALSE);
    EXPECT_EQ(Ras_Encode("secret", encoded, 0), FALSE);
    EXPECT_EQ(Ras_Encode(nullptr, encoded, sizeof encoded), FALSE);
    EXPECT_EQ(Ras_Encode("secret", nullptr, sizeof encoded), FALSE);
    EXPECT_STREQ(encoded, "former");
    EXPECT_NE(Ras_Encode("secret", encoded, static_cast<DWORD>(size + 1)), FALSE);
    EXPECT_EQ(std::strlen(encoded), size);
}

TEST_F(Password, IsDecodedUpToATerminatorInsideTheLength) {
    char field[RAS_ENCODED_CAPACITY] = "";
    Encode("secret").copy(field, sizeof field - 1);
    EXPECT_NE(Ras_Decode(field, sizeof field), FALSE);
    EXPECT_STREQ(field, "secret");
}

TEST_F(Password, DoesNotDecodeFromOtherTexts) {
    const std::string encoded = Encode("secret");
    for (std::size_t i = 0; i < encoded.size(); ++i) {
        std::string changed = encoded;
        changed[i] = changed[i] != 'A' ? 'A' : 'B';
        ExpectNotDecoded(changed);
        ExpectNotDecoded(encoded.substr(0, i));
    }
    ExpectNotDecoded("secret");
    ExpectNotDecoded(encoded + "AAAA");
    ExpectNotDecoded(std::string(256, 'A'));
    ExpectNotDecoded(std::string(256, '\xFF'));
}

TEST_F(Password, DoesNotDecodeOnAnotherHost) {
    const std::string encoded = Encode("secret");
    fs::rename(KeyPath(), state_ / "old.key");
    ExpectNotDecoded(encoded);
    EXPECT_FALSE(fs::exists(KeyPath())) << "decoding makes no key";
    EXPECT_NE(Encode("other"), "");
    ExpectNotDecoded(encoded);
    fs::rename(state_ / "old.key", KeyPath());
    EXPECT_EQ(Decode(encoded).text, "secret");
}

TEST_F(Password, DecodesNothingFromNothing) {
    char field[4] = "abc";
    EXPECT_EQ(Ras_Decode(nullptr, 3), FALSE);
    EXPECT_EQ(Ras_Decode(field, 0), FALSE);
    EXPECT_EQ(Ras_Decode(field, -1), FALSE);
    EXPECT_STREQ(field, "abc");
}

using KeyFile = Password;

TEST_F(KeyFile, IsMadeOnceForTheOwnerAlone) {
    const mode_t former = ::umask(0);
    ASSERT_NE(Encode("secret"), "");
    ::umask(former);
    struct stat status = {};
    ASSERT_EQ(::lstat(KeyPath().c_str(), &status), 0);
    EXPECT_TRUE(S_ISREG(status.st_mode));
    EXPECT_EQ(status.st_mode & ALLPERMS, 0600u);
    EXPECT_EQ(status.st_size, 32);
    EXPECT_EQ(status.st_nlink, 1u);
    const std::string key = test_support::ReadWholeFile(KeyPath());
    ASSERT_NE(Encode("secret"), "");
    EXPECT_EQ(test_support::ReadWholeFile(KeyPath()), key);
    EXPECT_EQ(std::distance(fs::directory_iterator(state_.Path()), fs::directory_iterator()), 1)
        << "temporary files are left";
}

TEST_F(KeyFile, IsNeverReplaced) {
    for (const std::string &content : {std::string(), std::string(31, 'k'), std::string(33, 'k')}) {
        state_.Write("ras.key", content);
        ASSERT_EQ(::chmod(KeyPath().c_str(), 0600), 0);
        EXPECT_EQ(Encode("secret"), "");
        EXPECT_EQ(test_support::ReadWholeFile(KeyPath()), content);
    }
}

TEST_F(KeyFile, IsUsedWhenItIsSafe) {
    state_.Write("ras.key", std::string(32, 'k'));
    ASSERT_EQ(::chmod(KeyPath().c_str(), 0600), 0);
    const std::string encoded = Encode("secret");
    ASSERT_NE(encoded, "");
    for (const mode_t mode : {0640u, 0604u, 0620u, 0602u}) {
        ASSERT_EQ(::chmod(KeyPath().c_str(), mode), 0);
        EXPECT_EQ(Encode("secret"), "") << mode;
        ExpectNotDecoded(encoded);
    }
    ASSERT_EQ(::chmod(KeyPath().c_str(), 0400), 0);
    EXPECT_EQ(Decode(encoded).text, "secret");
}

TEST_F(KeyFile, IsNoLinkAndNoPipe) {
    const std::string real = state_.Write("real.key", std::string(32, 'k'));
    ASSERT_EQ(::chmod(real.c_str(), 0600), 0);
    fs::create_symlink(real, KeyPath());
    EXPECT_EQ(Encode("secret"), "");
    fs::remove(KeyPath());
    fs::create_symlink(state_ / "missing", KeyPath());
    EXPECT_EQ(Encode("secret"), "");
    EXPECT_FALSE(fs::exists(state_ / "missing"));
    fs::remove(KeyPath());
    ASSERT_EQ(::mkfifo(KeyPath().c_str(), 0600), 0);
    EXPECT_EQ(Encode("secret"), "");
}

TEST_F(KeyFile, NeedsTheStateFolder) {
    variable_.Set(state_ / "missing");
    EXPECT_EQ(Encode("secret"), "");
    EXPECT_FALSE(fs::exists(state_ / "missing"));
    variable_.Set("relative");
    EXPECT_EQ(Encode("secret"), "");
    ExpectNotDecoded("secret");
}

TEST_F(KeyFile, IsOneForAllWhoMakeItAtOnce) {
    for (int round = 0; round < 10; ++round) {
        fs::remove(KeyPath());
        const test_support::TempFolder results;
        std::vector<pid_t> children;
        for (int child = 0; child < 6; ++child) {
            const pid_t process = ::fork();
            if (process == 0) {
                results.Write(std::to_string(child), Encode("secret"));
                ::_exit(0);
            }
            children.push_back(process);
        }
        for (const pid_t process : children) {
            int status = -1;
            ASSERT_EQ(::waitpid(process, &status, 0), process);
            EXPECT_EQ(status, 0);
        }
        for (int child = 0; child < 6; ++child) {
            const std::string encoded =
                test_support::ReadWholeFile(results / std::to_string(child));
            EXPECT_EQ(Decode(encoded).text, "secret");
        }
    }
}

TEST_F(KeyFile, IsOneForAllThreads) {
    std::vector<std::string> encoded(4);
    std::vector<std::thread> threads;
    threads.reserve(encoded.size());
    for (std::string &text : encoded) {
        threads.emplace_back([&text] { text = Encode("secret"); });
    }
    for (std::thread &thread : threads) {
        thread.join();
    }
    for (const std::string &text : encoded) {
        EXPECT_EQ(Decode(text).text, "secret");
    }
}

}  // namespace
