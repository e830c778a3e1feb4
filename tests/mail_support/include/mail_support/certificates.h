// Certificates for servers on loopback, made with the openssl command.
#ifndef MAIL_SUPPORT_CERTIFICATES_H
#define MAIL_SUPPORT_CERTIFICATES_H

#include <memory>
#include <string>

#include <openssl/ssl.h>
#include <support/temp_folder.h>

namespace mail_support {

struct Certificate {
    std::string certificate_file;
    std::string key_file;
};

// An authority in a folder of its own. Everything throws std::runtime_error when openssl fails.
class Authority {
  public:
    Authority();

    // The authority's own certificate: the file for KES_CAFILE.
    const std::string &File() const { return file_; }
    // A server certificate; names is an openssl list like "DNS:mail.example,IP:127.0.0.1".
    Certificate Issue(const std::string &names) const;
    // One whose time is over since yesterday.
    Certificate IssueExpired(const std::string &names) const;

  private:
    test_support::TempFolder folder_;
    std::string file_;
    std::string key_;
};

struct FreeTlsContext {
    void operator()(SSL_CTX *context) const { SSL_CTX_free(context); }
};
using TlsContext = std::unique_ptr<SSL_CTX, FreeTlsContext>;

// A server's TLS settings; null without a certificate.
TlsContext MakeTlsContext(const Certificate *certificate);

}  // namespace mail_support

#endif  // MAIL_SUPPORT_CERTIFICATES_H
