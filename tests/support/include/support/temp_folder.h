// A private folder that lives as long as its test.
#ifndef SUPPORT_TEMP_FOLDER_H
#define SUPPORT_TEMP_FOLDER_H

#include <cstdlib>
#include <filesystem>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <string>
#include <string_view>
#include <system_error>

namespace test_support {

class TempFolder {
  public:
    TempFolder() {
        std::string pattern =
            (std::filesystem::temp_directory_path() / "velox-test-XXXXXX").string();
        if (::mkdtemp(pattern.data()) == nullptr) {
            throw std::runtime_error("cannot make a folder like " + pattern);
        }
        path_ = pattern;
    }
    TempFolder(const TempFolder &) = delete;
    TempFolder &operator=(const TempFolder &) = delete;
    ~TempFolder() {
        std::error_code ignored;
        std::filesystem::remove_all(path_, ignored);
    }

    const std::string &Path() const { return path_; }
    std::string operator/(std::string_view name) const { return path_ + "/" + std::string(name); }

    // Writes a file of the folder and gives its path.
    std::string Write(std::string_view name, std::string_view content) const {
        std::string path = *this / name;
        std::ofstream file(path, std::ios::binary | std::ios::trunc);
        file.write(content.data(), static_cast<std::streamsize>(content.size()));
        if (!file.flush()) {
            throw std::runtime_error("cannot write " + path);
        }
        return path;
    }

  private:
    std::string path_;
};

// The whole content of a file; empty when it cannot be read.
inline std::string ReadWholeFile(const std::string &path) {
    std::ifstream file(path, std::ios::binary);
    return {std::istreambuf_iterator<char>(file), {}};
}

}  // namespace test_support

#endif  // SUPPORT_TEMP_FOLDER_H
