// Run-time modules: where they may lie, whom they must belong to, what their handles do.
#include <ntwin32/file.h>
#include <ntwin32/module.h>

#include <gtest/gtest.h>
#include <support/environment.h>
#include <support/temp_folder.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <string>

namespace {

namespace fs = std::filesystem;

// A product root with the module "sample.dll" in its lib folder.
class Module : public testing::Test {
  protected:
    Module() {
        fs::create_directory(Lib());
        CopyTo(Lib() + "/sample.dll");
    }

    std::string Lib() const { return root_ / "lib"; }
    static void CopyTo(const std::string &path) { fs::copy_file(SAMPLE_MODULE, path); }

    static void ExpectRefused(const std::string &name, DWORD error) {
        EXPECT_EQ(LoadLibrary(name.c_str()), nullptr) << name;
        EXPECT_EQ(GetLastError(), error) << name;
    }
    static void ExpectLoads(const std::string &name) {
        HMODULE module = LoadLibrary(name.c_str());
        EXPECT_NE(module, nullptr) << name << ": error " << GetLastError();
        EXPECT_NE(FreeLibrary(module), FALSE);
    }

    test_support::TempFolder root_;
    test_support::EnvironmentVariable variable_{"KES_ROOT", root_.Path()};
};

using Answer = int (*)(int);

TEST_F(Module, LoadsByItsAbsolutePath) {
    HMODULE module = LoadLibrary((Lib() + "/sample.dll").c_str());
    ASSERT_NE(module, nullptr);
    const auto answer = reinterpret_cast<Answer>(GetProcAddress(module, "SampleAnswer"));
    ASSERT_NE(answer, nullptr);
    EXPECT_EQ(answer(20), 41);
    EXPECT_NE(FreeLibrary(module), FALSE);
}

TEST_F(Module, LoadsByItsBareName) {
    ExpectLoads("sample.dll");
}

TEST_F(Module, LoadsFromBelowTheFolder) {
    fs::create_directory(Lib() + "/more");
    CopyTo(Lib() + "/more/sample.dll");
    ExpectLoads(Lib() + "/more/sample.dll");
}

TEST_F(Module, LoadsWhenTheProductIsReachedThroughALink) {
    fs::create_directory_symlink(root_.Path(), root_ / "link");
    variable_.Set(root_ / "link");
    ExpectLoads(root_ / "link/lib/sample.dll");
    ExpectLoads(Lib() + "/sample.dll");
    ExpectLoads("sample.dll");
}

TEST_F(Module, IsMissing) {
    ExpectRefused("missing.dll", ERROR_MOD_NOT_FOUND);
    ExpectRefused(Lib() + "/missing.dll", ERROR_MOD_NOT_FOUND);
    ExpectRefused("", ERROR_MOD_NOT_FOUND);
    EXPECT_EQ(LoadLibrary(nullptr), nullptr);
}

TEST_F(Module, IsNotSoughtByARelativePath) {
    fs::current_path(root_.Path());
    ExpectRefused("lib/sample.dll", ERROR_MOD_NOT_FOUND);
    ExpectRefused("./lib/sample.dll", ERROR_MOD_NOT_FOUND);
    fs::current_path("/");
}

TEST_F(Module, IsNotSoughtWithoutAProduct) {
    variable_.Set(root_ / "missing");
    ExpectRefused("sample.dll", ERROR_MOD_NOT_FOUND);
    ExpectRefused(Lib() + "/sample.dll", ERROR_MOD_NOT_FOUND);
    variable_.Set("lib");
    ExpectRefused("sample.dll", ERROR_MOD_NOT_FOUND);
}

TEST_F(Module, LiesOutside) {
    CopyTo(root_ / "sample.dll");
    fs::create_directory(root_ / "library");
    CopyTo(root_ / "library/sample.dll");
    ExpectRefused(root_ / "sample.dll", ERROR_ACCESS_DENIED);
    ExpectRefused(root_ / "library/sample.dll", ERROR_ACCESS_DENIED);
    ExpectRefused(Lib() + "/../sample.dll", ERROR_ACCESS_DENIED);
    ExpectRefused("..", ERROR_ACCESS_DENIED);
    ExpectRefused(".", ERROR_ACCESS_DENIED);
    fs::create_symlink(root_ / "sample.dll", Lib() + "/link.dll");
    ExpectRefused("link.dll", ERROR_ACCESS_DENIED);
}

TEST_F(Module, IsNoLibrary) {
    root_.Write("lib/text.dll", "not a library");
    ExpectRefused("text.dll", ERROR_MOD_NOT_FOUND);
    fs::create_directory(Lib() + "/folder.dll");
    ExpectRefused("folder.dll", ERROR_ACCESS_DENIED);
    ASSERT_EQ(::mkfifo((Lib() + "/pipe.dll").c_str(), 0600), 0);
    ExpectRefused("pipe.dll", ERROR_ACCESS_DENIED);
}

// The rules that hold for root alone.
class ModuleOfRoot : public Module {
  protected:
    void SetUp() override {
        if (::geteuid() != 0) {
            GTEST_SKIP() << "needs root";
        }
    }
    void ChangeMode(const std::string &path, mode_t mode) {
        ASSERT_EQ(::chmod(path.c_str(), mode), 0);
    }
    const std::string module_ = Lib() + "/sample.dll";
};

TEST_F(ModuleOfRoot, IsNotWritableByOthers) {
    ChangeMode(module_, 0757);
    ExpectRefused("sample.dll", ERROR_ACCESS_DENIED);
    ChangeMode(module_, 0755);
    ExpectLoads("sample.dll");
}

TEST_F(ModuleOfRoot, LiesInAFolderThatIsNotWritableByOthers) {
    ChangeMode(Lib(), 0757);
    ExpectRefused("sample.dll", ERROR_ACCESS_DENIED);
    ChangeMode(Lib(), 01777);
    ExpectRefused("sample.dll", ERROR_ACCESS_DENIED);
}

TEST_F(ModuleOfRoot, IsNotWritableByAForeignGroup) {
    ChangeMode(module_, 0775);
    ExpectLoads("sample.dll");  // the group is root's
    ASSERT_EQ(::chown(module_.c_str(), 0, 12345), 0);
    ChangeMode(module_, 0775);
    ExpectRefused("sample.dll", ERROR_ACCESS_DENIED);
}

TEST_F(ModuleOfRoot, BelongsToRoot) {
    ASSERT_EQ(::chown(module_.c_str(), 12345, 0), 0);
    ExpectRefused("sample.dll", ERROR_ACCESS_DENIED);
    ASSERT_EQ(::chown(module_.c_str(), 0, 0), 0);
    ASSERT_EQ(::chown(Lib().c_str(), 12345, 0), 0);
    ExpectRefused("sample.dll", ERROR_ACCESS_DENIED);
}

TEST_F(Module, KeepsItsSymbolsToItself) {
    HMODULE module = LoadLibrary("sample.dll");
    HMODULE self = LoadLibrary("sample.dll");
    EXPECT_EQ(module, self) << "loaded once, used twice";
    EXPECT_EQ(GetProcAddress(module, "SampleMissing"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_PROC_NOT_FOUND));
    EXPECT_EQ(GetProcAddress(module, nullptr), nullptr);
    EXPECT_NE(FreeLibrary(module), FALSE);
    EXPECT_NE(GetProcAddress(module, "SampleAnswer"), nullptr) << "one use is left";
    EXPECT_NE(FreeLibrary(module), FALSE);
    EXPECT_EQ(GetProcAddress(module, "SampleAnswer"), nullptr);
    EXPECT_EQ(GetLastError(), static_cast<DWORD>(ERROR_INVALID_HANDLE));
    EXPECT_EQ(FreeLibrary(module), FALSE);
}

TEST_F(Module, IsNoHandleOfAnythingElse) {
    int other = 0;
    EXPECT_EQ(FreeLibrary(nullptr), FALSE);
    EXPECT_EQ(FreeLibrary(&other), FALSE);
    EXPECT_EQ(GetProcAddress(nullptr, "malloc"), nullptr);
    EXPECT_EQ(GetProcAddress(&other, "malloc"), nullptr);
}

}  // namespace
