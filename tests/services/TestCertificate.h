// A certificate for "localhost" that only this test trusts.
#pragma once

#include <boost/asio/ssl/context.hpp>
#include <filesystem>

namespace vmr::test {

/// Made anew for every object, signed by itself.
class TestCertificate {
 public:
    TestCertificate();
    ~TestCertificate();
    TestCertificate(const TestCertificate&) = delete;
    TestCertificate& operator=(const TestCertificate&) = delete;

    /// What a server presents the certificate with.
    boost::asio::ssl::context& server() { return server_; }
    /// The certificate as PEM, to be trusted by a client.
    const std::filesystem::path& file() const { return file_; }

 private:
    boost::asio::ssl::context server_{boost::asio::ssl::context::tls_server};
    std::filesystem::path file_;
};

}  // namespace vmr::test
