// A certificate for "localhost" that nobody trusts unless told to.
#pragma once

#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include <boost/asio/ssl/context.hpp>
#include <cstdio>
#include <filesystem>

namespace vmr::test {

/// Made anew for every object, signed by itself.
class TestCertificate {
 public:
    TestCertificate() {
        EVP_PKEY* key = EVP_EC_gen("P-256");
        X509* certificate = X509_new();
        X509_set_version(certificate, 2);
        X509_gmtime_adj(X509_getm_notBefore(certificate), -86400);
        X509_gmtime_adj(X509_getm_notAfter(certificate), 86400);
        X509_set_pubkey(certificate, key);
        X509_EXTENSION* names = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "DNS:localhost");
        X509_add_ext(certificate, names, -1);
        X509_EXTENSION_free(names);
        X509_sign(certificate, key, EVP_sha256());
        SSL_CTX_use_certificate(server.native_handle(), certificate);
        SSL_CTX_use_PrivateKey(server.native_handle(), key);
        std::FILE* out = std::fopen(file.c_str(), "w");
        PEM_write_X509(out, certificate);
        std::fclose(out);
        X509_free(certificate);
        EVP_PKEY_free(key);
    }
    ~TestCertificate() { std::filesystem::remove(file); }
    TestCertificate(const TestCertificate&) = delete;
    TestCertificate& operator=(const TestCertificate&) = delete;

    /// What a server presents the certificate with.
    boost::asio::ssl::context server{boost::asio::ssl::context::tls_server};
    /// The certificate as PEM, to be trusted by a client.
    const std::filesystem::path file =
        std::filesystem::temp_directory_path() / ("vmr-test-" + std::to_string(::getpid()) + ".pem");
};

}  // namespace vmr::test
