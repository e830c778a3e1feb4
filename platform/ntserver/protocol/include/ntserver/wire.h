// Messages as bytes: numbers of fixed width, little-endian; texts and data with their size (4
// bytes) before them; a truth as one byte, 0 or 1.
#ifndef NTSERVER_WIRE_H
#define NTSERVER_WIRE_H

#include <bit>
#include <concepts>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>
#include <tuple>

#include "ntserver/protocol.h"

namespace ntserver {

static_assert(std::endian::native == std::endian::little);

template <typename T>
concept WireNumber = std::unsigned_integral<T> && !std::same_as<T, bool>;

// Appends to a buffer.
class Encoder {
  public:
    explicit Encoder(std::string *bytes) noexcept : bytes_(*bytes) {}

    template <WireNumber Number>
    void Put(Number number) {
        Append(&number, sizeof number);
    }
    void Put(bool truth) { Put(static_cast<std::uint8_t>(truth)); }
    void Put(std::string_view text) {
        Put(static_cast<std::uint32_t>(text.size()));
        Append(text.data(), text.size());
    }
    template <typename Message>
    void PutMessage(const Message &message) {
        std::apply([this](const auto &...field) { (this->Put(field), ...); },
                   Message::Fields(message));
    }

  private:
    void Append(const void *from, std::size_t size) {
        bytes_.append(static_cast<const char *>(from), size);
    }

    std::string &bytes_;
};

// Takes from a payload; never past its end. Texts point into the payload.
class Decoder {
  public:
    explicit Decoder(std::string_view payload) noexcept : rest_(payload) {}

    template <WireNumber Number>
    bool Get(Number *number) noexcept {
        if (rest_.size() < sizeof *number)
            return false;
        std::memcpy(number, rest_.data(), sizeof *number);
        rest_.remove_prefix(sizeof *number);
        return true;
    }
    bool Get(bool *truth) noexcept {
        std::uint8_t byte = 0;
        if (!Get(&byte) || byte > 1)
            return false;
        *truth = byte != 0;
        return true;
    }
    bool Get(std::string_view *text) noexcept {
        std::uint32_t size = 0;
        if (!Get(&size) || size > rest_.size())
            return false;
        *text = rest_.substr(0, size);
        rest_.remove_prefix(size);
        return true;
    }
    template <typename Message>
    bool GetMessage(Message *message) noexcept {
        return std::apply([this](auto &...field) { return (this->Get(&field) && ...); },
                          Message::Fields(*message));
    }
    bool AtEnd() const noexcept { return rest_.empty(); }

  private:
    std::string_view rest_;
};

// A payload that is exactly one message.
template <typename Message>
bool DecodeWhole(std::string_view payload, Message *message) noexcept {
    Decoder decoder(payload);
    return decoder.GetMessage(message) && decoder.AtEnd();
}

// The frame's header, as numbers.
struct FrameHeader {
    std::uint32_t size = 0;
    std::uint16_t operation = 0;
    std::uint16_t tag = 0;

    static auto Fields(auto &self) { return std::tie(self.size, self.operation, self.tag); }
};

// Builds one frame at the end of a buffer: the header first, its size when the frame is complete.
class FrameBuilder {
  public:
    FrameBuilder(std::string *bytes, Operation operation, std::uint16_t tag)
        : bytes_(*bytes), start_(bytes->size()), encoder_(bytes) {
        encoder_.PutMessage(FrameHeader{0, static_cast<std::uint16_t>(operation), tag});
    }
    Encoder &Payload() noexcept { return encoder_; }
    std::size_t PayloadSize() const noexcept { return bytes_.size() - start_ - kHeaderSize; }
    void Finish() noexcept {
        const auto size = static_cast<std::uint32_t>(PayloadSize());
        std::memcpy(bytes_.data() + start_, &size, sizeof size);
    }

  private:
    std::string &bytes_;
    std::size_t start_;
    Encoder encoder_;
};

}  // namespace ntserver

#endif  // NTSERVER_WIRE_H
