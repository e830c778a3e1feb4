// Base64, to know in which other forms a password could be seen.
#ifndef MAIL_SUPPORT_BASE64_H
#define MAIL_SUPPORT_BASE64_H

#include <string>

#include <openssl/evp.h>

namespace mail_support {

inline std::string Base64(const std::string &bytes) {
    std::string text((bytes.size() + 2) / 3 * 4 + 1, '\0');
    const int length = EVP_EncodeBlock(reinterpret_cast<unsigned char *>(text.data()),
                                       reinterpret_cast<const unsigned char *>(bytes.data()),
                                       static_cast<int>(bytes.size()));
    text.resize(static_cast<std::size_t>(length));
    return text;
}

}  // namespace mail_support

#endif  // MAIL_SUPPORT_BASE64_H
