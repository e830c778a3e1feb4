// The store's file with any damage: the verification refuses it, or the store can be read from end
// to end and gives the values that were stored.
#include <fcntl.h>
#include <regstore/environment.h>
#include <regstore/verify.h>
#include <regstore/writer.h>
#include <unistd.h>

#include <cstdint>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <string>

namespace {

using regstore::KeyId;
using regstore::Status;

constexpr int kKeys = 30;
constexpr int kValues = 4;

void Expect(bool condition) {
    if (!condition)
        std::abort();
}

// Values that fill leaves, and some that need pages of their own.
std::string DataOf(int key, int value) {
    return std::string(static_cast<std::size_t>(key * (value == 0 ? 200 : 7)),
                       static_cast<char>('a' + (key + value) % 26));
}
std::string ValueName(int value) {
    return "VALUE" + std::to_string(value);
}

void Write(regstore::Writer &writer, int key) {
    KeyId id = 0;
    bool created = false;
    const std::string path = "GROUP" + std::to_string(key % 4) + "\\KEY" + std::to_string(key);
    Expect(writer.CreateKey(regstore::kRootKey, path, "class", &id, &created) == Status::kSuccess);
    for (int value = 0; value < kValues; ++value)
        Expect(writer.SetValue(id, ValueName(value), 1, DataOf(key, value)) == Status::kSuccess);
}

// A sound store's bytes, made by several transactions so that both heads and free pages are in use.
class Original {
  public:
    Original() {
        std::string pattern = std::filesystem::exists("/dev/shm") ? "/dev/shm/velox-fuzz-XXXXXX"
                                                                  : "/tmp/velox-fuzz-XXXXXX";
        Expect(::mkdtemp(pattern.data()) != nullptr);
        folder_ = pattern;
        std::string problem;
        const auto environment =
            regstore::Environment::Open(folder_, regstore::Access::kWrite, &problem);
        Expect(environment != nullptr);
        for (int key = 0; key < kKeys; ++key) {
            regstore::Writer writer(*environment);
            int code = 0;
            Expect(writer.Begin() == MDB_SUCCESS);
            if (key == 0)
                Expect(writer.Initialise() == Status::kSuccess);
            Write(writer, key);
            Expect(writer.Commit(&code) == Status::kSuccess);
        }
        const int file = ::open(DataFile().c_str(), O_RDONLY | O_CLOEXEC);
        bytes_.resize(std::filesystem::file_size(DataFile()));
        Expect(::read(file, bytes_.data(), bytes_.size()) == static_cast<ssize_t>(bytes_.size()));
        ::close(file);
    }
    Original(const Original &) = delete;
    Original &operator=(const Original &) = delete;
    ~Original() { std::filesystem::remove_all(folder_); }

    const std::string &Folder() const { return folder_; }
    std::string DataFile() const { return folder_ + "/data.mdb"; }
    const std::string &Bytes() const { return bytes_; }

  private:
    std::string folder_;
    std::string bytes_;
};

// Bytes 0 and 1: by how many pages the file is cut (0 to 3) and bytes beyond; then damages of five
// bytes each: where, and what.
std::string Damage(const std::string &original, const std::uint8_t *data, std::size_t size) {
    std::string bytes = original;
    for (std::size_t at = 2; at + 5 <= size; at += 5) {
        std::uint32_t place = 0;
        std::memcpy(&place, data + at, sizeof place);
        bytes[place % bytes.size()] = static_cast<char>(data[at + 4]);
    }
    const std::size_t cut = std::size_t{data[0]} % 4 * 4096 + data[1];
    bytes.resize(bytes.size() - cut);
    return bytes;
}

// Every item below a key, as deep as the registry may be.
void Walk(regstore::Reader &reader, KeyId key, std::size_t depth) {
    Expect(depth <= regstore::kMaxDepth);
    regstore::ValueItem value;
    for (std::uint32_t i = 0;
         reader.Enumeration().ValueAt(reader.Current(), key, i, &value) == Status::kSuccess; ++i)
        Expect(value.name.size() <= regstore::kMaxName);
    regstore::SubKeyItem sub_key;
    for (std::uint32_t i = 0;
         reader.Enumeration().SubKeyAt(reader.Current(), key, i, &sub_key) == Status::kSuccess; ++i)
        Walk(reader, sub_key.id, depth + 1);
}

// A value that is there is the one that was stored: an older state may lack it.
void CheckValues(const regstore::Snapshot &snapshot) {
    for (int key = 0; key < kKeys; ++key) {
        KeyId id = 0;
        const std::string path = "group" + std::to_string(key % 4) + "\\key" + std::to_string(key);
        if (regstore::FindKey(snapshot, regstore::kRootKey, path, &id) != Status::kSuccess)
            continue;
        for (int value = 0; value < kValues; ++value) {
            regstore::ValueRecord record;
            Expect(regstore::FindValue(snapshot, id, ValueName(value), &record) ==
                       Status::kSuccess &&
                   record.data == DataOf(key, value));
        }
    }
}

void ReadAll(const std::string &folder) {
    std::string problem;
    const auto environment = regstore::Environment::Open(folder, regstore::Access::kRead, &problem);
    Expect(environment != nullptr);
    int code = 0;
    const auto reader = regstore::Reader::Open(*environment, &code);
    Expect(reader != nullptr);
    const regstore::ReadScope scope(*reader);
    Expect(scope.Code() == MDB_SUCCESS);
    Walk(*reader, regstore::kRootKey, 0);
    CheckValues(scope.Current());
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t *data, std::size_t size) {
    static const Original original;
    if (size < 2)
        return 0;
    const std::string bytes = Damage(original.Bytes(), data, size);
    const int file = ::open(original.DataFile().c_str(), O_RDWR | O_TRUNC | O_CLOEXEC);
    Expect(::write(file, bytes.data(), bytes.size()) == static_cast<ssize_t>(bytes.size()));
    regstore::Heads heads;
    std::string damage;
    const bool has_heads = regstore::ReadHeads(file, &heads, &damage);
    const regstore::Verdict verdict =
        has_heads ? regstore::Verify(file, heads) : regstore::Verdict{false, damage, {}};
    ::close(file);
    Expect(verdict.sound || !verdict.damage.empty());
    Expect(verdict.sound || bytes != original.Bytes());
    if (verdict.sound)
        ReadAll(original.Folder());
    return 0;
}
