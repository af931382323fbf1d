#include "TestCertificate.h"

#include <openssl/pem.h>
#include <openssl/x509v3.h>
#include <unistd.h>

#include <cstdio>
#include <stdexcept>

namespace vmr::test {

namespace {
void must(bool done) {
    if (!done) throw std::runtime_error("the test certificate cannot be made");
}
}  // namespace

TestCertificate::TestCertificate() {
    EVP_PKEY* key = EVP_EC_gen("P-256");
    X509* certificate = X509_new();
    must(key && certificate);
    ASN1_INTEGER_set(X509_get_serialNumber(certificate), 1);
    X509_set_version(certificate, 2);
    X509_gmtime_adj(X509_getm_notBefore(certificate), -86400);
    X509_gmtime_adj(X509_getm_notAfter(certificate), 86400);
    X509_set_pubkey(certificate, key);
    X509_NAME* name = X509_get_subject_name(certificate);
    X509_NAME_add_entry_by_txt(name, "CN", MBSTRING_ASC, reinterpret_cast<const unsigned char*>("test"), -1, -1, 0);
    X509_set_issuer_name(certificate, name);
    X509_EXTENSION* names = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "DNS:localhost");
    must(names && X509_add_ext(certificate, names, -1) && X509_sign(certificate, key, EVP_sha256()));
    X509_EXTENSION_free(names);

    must(SSL_CTX_use_certificate(server_.native_handle(), certificate) == 1);
    must(SSL_CTX_use_PrivateKey(server_.native_handle(), key) == 1);
    file_ = std::filesystem::temp_directory_path() / ("vmr-test-" + std::to_string(::getpid()) + ".pem");
    std::FILE* out = std::fopen(file_.c_str(), "w");
    must(out && PEM_write_X509(out, certificate) == 1);
    std::fclose(out);
    X509_free(certificate);
    EVP_PKEY_free(key);
}

TestCertificate::~TestCertificate() {
    std::error_code ignored;
    std::filesystem::remove(file_, ignored);
}

}  // namespace vmr::test
