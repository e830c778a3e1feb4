// Stored passwords: base64 of nonce and secretbox under the host's key.
#include <amcrtcpy.h>
#include <sodium.h>

#include <cstring>

#include "boundary.h"
#include "password_key.h"

namespace {

constexpr std::size_t kOverhead = crypto_secretbox_NONCEBYTES + crypto_secretbox_MACBYTES;
constexpr std::size_t kMaxSealed = kOverhead + RAS_MAX_PASSWORD;
constexpr int kVariant = sodium_base64_VARIANT_ORIGINAL;

static_assert(sodium_base64_ENCODED_LEN(kMaxSealed, kVariant) == RAS_ENCODED_CAPACITY,
              "the longest password fills the field");

// Bytes that are wiped when they go.
template <std::size_t kSize>
struct Wiped {
    Wiped() = default;
    ~Wiped() { sodium_memzero(bytes, kSize); }
    Wiped(const Wiped &) = delete;
    Wiped &operator=(const Wiped &) = delete;
    unsigned char bytes[kSize] = {};
};

// libsodium may be initialised any number of times, from any thread.
bool IsSodiumReady() {
    return sodium_init() >= 0;
}

bool Encode(const char *password, std::size_t length, char *encoded, std::size_t capacity) {
    const std::size_t sealed_size = kOverhead + length;
    agent::PasswordKey key;
    if (sodium_base64_encoded_len(sealed_size, kVariant) > capacity || !IsSodiumReady() ||
        !key.LoadOrMake()) {
        return false;
    }
    unsigned char sealed[kMaxSealed];
    randombytes_buf(sealed, crypto_secretbox_NONCEBYTES);
    crypto_secretbox_easy(sealed + crypto_secretbox_NONCEBYTES,
                          reinterpret_cast<const unsigned char *>(password), length, sealed,
                          key.Bytes());
    return sodium_bin2base64(encoded, capacity, sealed, sealed_size, kVariant) != nullptr;
}

// The plain text with its terminator; its length, or -1 when the text does not authenticate.
int Decode(const char *text, std::size_t length, unsigned char *plain) {
    unsigned char sealed[kMaxSealed];
    std::size_t size = 0;
    agent::PasswordKey key;
    if (sodium_base642bin(sealed, sizeof sealed, text, length, nullptr, &size, nullptr, kVariant) !=
            0 ||
        size < kOverhead || !IsSodiumReady() || !key.Load() ||
        crypto_secretbox_open_easy(plain, sealed + crypto_secretbox_NONCEBYTES,
                                   size - crypto_secretbox_NONCEBYTES, sealed, key.Bytes()) != 0) {
        return -1;
    }
    return static_cast<int>(size - kOverhead);
}

bool DecodeInPlace(char *text, std::size_t capacity) {
    Wiped<RAS_MAX_PASSWORD> plain;
    const int length = Decode(text, ::strnlen(text, capacity), plain.bytes);
    // Nothing of the encoded text stays behind the plain one.
    sodium_memzero(text, capacity);
    if (length < 0) {
        return false;
    }
    std::memcpy(text, plain.bytes, static_cast<std::size_t>(length));
    return true;
}

}  // namespace

extern "C" {

BOOL Ras_Encode(const char *lpPassword, char *lpEncoded, DWORD dwCapacity) noexcept {
    return agent::AtBoundary([&] {
        if (lpPassword == nullptr || lpEncoded == nullptr) {
            return false;
        }
        const std::size_t length = ::strnlen(lpPassword, RAS_MAX_PASSWORD + 1);
        return length <= RAS_MAX_PASSWORD && Encode(lpPassword, length, lpEncoded, dwCapacity);
    });
}

BOOL Ras_Decode(char *lpText, int nLength) noexcept {
    if (lpText == nullptr || nLength <= 0) {
        return FALSE;
    }
    const auto capacity = static_cast<std::size_t>(nLength);
    return agent::AtBoundary([&] { return DecodeInPlace(lpText, capacity); });
}

}  // extern "C"
