#include "mail_support/certificates.h"

#include <stdexcept>
#include <vector>

#include <cstdio>

#include <openssl/pem.h>
#include <openssl/x509.h>

#include "mail_support/process.h"

namespace mail_support {

namespace {

void MakeCertificate(const std::string &file, const std::string &key,
                     const std::vector<std::string> &options) {
    std::vector<std::string> command = {
        "openssl", "req",   "-x509", "-newkey", "ec", "-pkeyopt", "ec_paramgen_curve:prime256v1",
        "-nodes",  "-days", "2",     "-keyout", key,  "-out",     file};
    command.insert(command.end(), options.begin(), options.end());
    const Finished openssl = Run(command);
    if (openssl.status != 0)
        throw std::runtime_error("openssl req failed: " + openssl.output);
}

struct CloseFile {
    void operator()(std::FILE *file) const { std::fclose(file); }
};
struct FreeCertificate {
    void operator()(X509 *certificate) const { X509_free(certificate); }
};
struct FreeKey {
    void operator()(EVP_PKEY *key) const { EVP_PKEY_free(key); }
};

std::unique_ptr<std::FILE, CloseFile> Open(const std::string &file, const char *mode) {
    std::unique_ptr<std::FILE, CloseFile> opened(std::fopen(file.c_str(), mode));
    if (opened == nullptr)
        throw std::runtime_error("cannot open " + file);
    return opened;
}

// Signs a certificate anew, with a time that is over.
void Outdate(const std::string &file, const std::string &authority_key) {
    constexpr long kDay = 24 * 60 * 60;
    const std::unique_ptr<X509, FreeCertificate> certificate(
        PEM_read_X509(Open(file, "r").get(), nullptr, nullptr, nullptr));
    const std::unique_ptr<EVP_PKEY, FreeKey> key(
        PEM_read_PrivateKey(Open(authority_key, "r").get(), nullptr, nullptr, nullptr));
    if (certificate == nullptr || key == nullptr ||
        X509_gmtime_adj(X509_getm_notBefore(certificate.get()), -2 * kDay) == nullptr ||
        X509_gmtime_adj(X509_getm_notAfter(certificate.get()), -kDay) == nullptr ||
        X509_sign(certificate.get(), key.get(), EVP_sha256()) == 0 ||
        PEM_write_X509(Open(file, "w").get(), certificate.get()) != 1)
        throw std::runtime_error("cannot outdate " + file);
}

}  // namespace

Authority::Authority() : file_(folder_ / "authority.pem"), key_(folder_ / "authority.key") {
    MakeCertificate(file_, key_, {"-subj", "/CN=Test authority"});
}

Certificate Authority::Issue(const std::string &names) const {
    static int number = 0;
    const std::string base = folder_ / ("server" + std::to_string(++number));
    Certificate certificate = {base + ".pem", base + ".key"};
    MakeCertificate(certificate.certificate_file, certificate.key_file,
                    {"-subj", "/CN=Test server", "-addext", "subjectAltName=" + names, "-addext",
                     "basicConstraints=critical,CA:FALSE", "-CA", file_, "-CAkey", key_});
    return certificate;
}

Certificate Authority::IssueExpired(const std::string &names) const {
    Certificate certificate = Issue(names);
    Outdate(certificate.certificate_file, key_);
    return certificate;
}

TlsContext MakeTlsContext(const Certificate *certificate) {
    if (certificate == nullptr)
        return {};
    TlsContext context(SSL_CTX_new(TLS_server_method()));
    if (context == nullptr ||
        SSL_CTX_use_certificate_chain_file(context.get(), certificate->certificate_file.c_str()) !=
            1 ||
        SSL_CTX_use_PrivateKey_file(context.get(), certificate->key_file.c_str(),
                                    SSL_FILETYPE_PEM) != 1)
        throw std::runtime_error("cannot use the certificate " + certificate->certificate_file);
    SSL_CTX_set_mode(context.get(),
                     SSL_MODE_ENABLE_PARTIAL_WRITE | SSL_MODE_ACCEPT_MOVING_WRITE_BUFFER);
    return context;
}

}  // namespace mail_support
