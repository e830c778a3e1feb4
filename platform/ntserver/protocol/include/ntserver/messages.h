// The payloads of the protocol's frames. Each message lists its fields once, in their order on the
// wire, for writing and for reading.
#ifndef NTSERVER_MESSAGES_H
#define NTSERVER_MESSAGES_H

#include <cstdint>
#include <string_view>
#include <tuple>

namespace ntserver {

struct HelloRequest {
    std::uint32_t magic = 0;
    std::uint32_t version = 0;

    static auto Fields(auto &self) { return std::tie(self.magic, self.version); }
};

// What a client needs to know before it reads the store itself.
struct HelloAnswer {
    std::uint32_t version = 0;
    bool verified = false;         // whether the store may be mapped
    std::uint64_t generation = 0;  // of the daemon's service, see generation.h
    std::uint64_t pid_namespace_device = 0;
    std::uint64_t pid_namespace_inode = 0;
    std::uint64_t data_device = 0;
    std::uint64_t data_inode = 0;
    std::uint64_t data_size = 0;
    std::string_view folder;  // of the store

    static auto Fields(auto &self) {
        return std::tie(self.version, self.verified, self.generation, self.pid_namespace_device,
                        self.pid_namespace_inode, self.data_device, self.data_inode, self.data_size,
                        self.folder);
    }
};

// kOpenKey, kDeleteKey.
struct PathRequest {
    std::uint64_t key = 0;
    std::string_view path;

    static auto Fields(auto &self) { return std::tie(self.key, self.path); }
};

struct KeyAnswer {
    std::uint64_t key = 0;

    static auto Fields(auto &self) { return std::tie(self.key); }
};

struct CreateKeyRequest {
    std::uint64_t key = 0;
    std::string_view path;
    std::string_view class_text;

    static auto Fields(auto &self) { return std::tie(self.key, self.path, self.class_text); }
};

struct CreateKeyAnswer {
    std::uint64_t key = 0;
    bool created = false;

    static auto Fields(auto &self) { return std::tie(self.key, self.created); }
};

struct QueryValueRequest {
    std::uint64_t key = 0;
    std::string_view name;
    std::uint32_t capacity = 0;

    static auto Fields(auto &self) { return std::tie(self.key, self.name, self.capacity); }
};

// The data are empty when they are larger than the capacity that was asked with.
struct ValueAnswer {
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    std::string_view data;

    static auto Fields(auto &self) { return std::tie(self.type, self.size, self.data); }
};

struct SetValueRequest {
    std::uint64_t key = 0;
    std::string_view name;
    std::uint32_t type = 0;
    std::string_view data;

    static auto Fields(auto &self) { return std::tie(self.key, self.name, self.type, self.data); }
};

// kDeleteValue.
struct NameRequest {
    std::uint64_t key = 0;
    std::string_view name;

    static auto Fields(auto &self) { return std::tie(self.key, self.name); }
};

struct EnumKeyRequest {
    std::uint64_t key = 0;
    std::uint32_t index = 0;
    bool last_write = false;  // whether the time is wanted, which takes a look-up

    static auto Fields(auto &self) { return std::tie(self.key, self.index, self.last_write); }
};

struct EnumKeyAnswer {
    std::string_view name;
    std::string_view class_text;
    std::uint64_t last_write = 0;

    static auto Fields(auto &self) { return std::tie(self.name, self.class_text, self.last_write); }
};

// The capacity is that for the value's data.
struct EnumValueRequest {
    std::uint64_t key = 0;
    std::uint32_t index = 0;
    std::uint32_t capacity = 0;

    static auto Fields(auto &self) { return std::tie(self.key, self.index, self.capacity); }
};

struct EnumValueAnswer {
    std::string_view name;
    std::uint32_t type = 0;
    std::uint32_t size = 0;
    std::string_view data;

    static auto Fields(auto &self) { return std::tie(self.name, self.type, self.size, self.data); }
};

struct QueryKeyRequest {
    std::uint64_t key = 0;
    bool measure = false;  // whether the longest names and data are wanted, which takes a walk

    static auto Fields(auto &self) { return std::tie(self.key, self.measure); }
};

struct QueryKeyAnswer {
    std::uint32_t sub_keys = 0;
    std::uint32_t values = 0;
    std::uint32_t longest_sub_key = 0;
    std::uint32_t longest_class = 0;
    std::uint32_t longest_value_name = 0;
    std::uint32_t longest_value_data = 0;
    std::uint64_t last_write = 0;
    std::string_view class_text;

    static auto Fields(auto &self) {
        return std::tie(self.sub_keys, self.values, self.longest_sub_key, self.longest_class,
                        self.longest_value_name, self.longest_value_data, self.last_write,
                        self.class_text);
    }
};

// A kBatchChanges frame is a run of these. `same_path` stands for the path of the change before,
// which may have come in an earlier frame.
struct BatchChange {
    std::uint8_t operation = 0;  // as KES_REG_OPERATION counts
    bool same_path = false;
    std::string_view path;
    std::string_view name;
    std::uint32_t type = 0;
    std::string_view data;

    static auto Fields(auto &self) {
        return std::tie(self.operation, self.same_path, self.path, self.name, self.type, self.data);
    }
};

struct BatchCommitRequest {
    std::uint64_t key = 0;
    std::uint32_t changes = 0;  // that were sent

    static auto Fields(auto &self) { return std::tie(self.key, self.changes); }
};

struct BatchAnswer {
    std::uint32_t failed = 0;  // index of the change that failed, or their number

    static auto Fields(auto &self) { return std::tie(self.failed); }
};

struct ServerAnswer {
    std::string_view version;
    std::string_view folder;
    std::uint64_t keys = 0;
    std::uint64_t values = 0;
    std::uint64_t store_bytes = 0;
    std::uint64_t format = 0;
    std::uint32_t process_id = 0;
    std::uint32_t clients = 0;

    static auto Fields(auto &self) {
        return std::tie(self.version, self.folder, self.keys, self.values, self.store_bytes,
                        self.format, self.process_id, self.clients);
    }
};

struct VerifyAnswer {
    std::string_view damage;  // empty: the store is sound

    static auto Fields(auto &self) { return std::tie(self.damage); }
};

// kQueryServer and kVerify ask with nothing.
struct EmptyMessage {
    static auto Fields(auto &) { return std::tuple<>(); }
};

}  // namespace ntserver

#endif  // NTSERVER_MESSAGES_H
