// The real HTTP client and the real WebSocket against real servers on this machine.
#include <gmock/gmock.h>
#include <openssl/pem.h>
#include <openssl/x509v3.h>

#include <atomic>
#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <cstdlib>
#include <future>
#include <list>
#include <thread>

#include "base/AsioLoop.h"
#include "base/Clock.h"
#include "services/net/BeastWebSocket.h"
#include "services/net/CurlHttpClient.h"

namespace vmr::test {
namespace {

namespace asio = boost::asio;
namespace http = boost::beast::http;
namespace websocket = boost::beast::websocket;
using asio::ip::tcp;
using boost::system::error_code;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Session = websocket::stream<tcp::socket>;

/// Accepts on a free port. Each connection runs `script` with blocking calls on a thread of its own; a socket error
/// ends it silently, which is how a script learns that its client has gone.
class LoopbackServer {
 public:
    explicit LoopbackServer(std::function<void(tcp::socket)> script) : script_(std::move(script)) {}
    /// Waits for the scripts to end: destroy the clients first.
    ~LoopbackServer() {
        ending_ = true;
        tcp::socket(context_).connect(acceptor_.local_endpoint());
    }
    /// "SCHEME://HOST:PORT/"
    std::string url(const std::string& scheme, const std::string& host = "127.0.0.1") const {
        return scheme + "://" + host + ":" + std::to_string(acceptor_.local_endpoint().port()) + "/";
    }

 private:
    void acceptAll() {
        while (true) {
            auto socket = std::make_shared<tcp::socket>(acceptor_.accept());
            if (ending_) return;
            connections_.emplace_back([this, socket] {
                try {
                    script_(std::move(*socket));
                } catch (const boost::system::system_error&) {
                }
            });
        }
    }

    asio::io_context context_;
    tcp::acceptor acceptor_{context_, {asio::ip::address_v4::loopback(), 0}};
    const std::function<void(tcp::socket)> script_;
    std::atomic<bool> ending_ = false;
    std::vector<std::jthread> connections_;
    std::jthread thread_{[this] { acceptAll(); }};
};

/// Reads until the client ends the connection, and then throws.
template <class Stream>
void waitForEnd(Stream& stream) {
    char bytes[4096];
    while (true) stream.read_some(asio::buffer(bytes));
}

/// A certificate for "localhost" that nobody trusts unless told to, made anew and signed by itself.
struct TestCertificate {
    TestCertificate() {
        X509* const made = certificate.get();
        X509_set_version(made, 2);
        X509_gmtime_adj(X509_getm_notBefore(made), -86400);
        X509_gmtime_adj(X509_getm_notAfter(made), 86400);
        X509_set_pubkey(made, key.get());
        X509_EXTENSION* names = X509V3_EXT_conf_nid(nullptr, nullptr, NID_subject_alt_name, "DNS:localhost");
        X509_add_ext(made, names, -1);
        X509_EXTENSION_free(names);
        X509_sign(made, key.get(), EVP_sha256());
        SSL_CTX_use_certificate(server.native_handle(), made);
        SSL_CTX_use_PrivateKey(server.native_handle(), key.get());
    }
    const std::shared_ptr<EVP_PKEY> key{EVP_EC_gen("P-256"), EVP_PKEY_free};
    const std::shared_ptr<X509> certificate{X509_new(), X509_free};
    asio::ssl::context server{asio::ssl::context::tls_server};  ///< presents it
};

/// Answers one request by what its path asks for.
void answer(tcp::socket peer) {
    boost::beast::flat_buffer buffer;
    http::request<http::string_body> request;
    http::read(peer, buffer, request);
    http::response<http::string_body> response{http::status::bad_request, 11, "told " + request.body()};
    if (request.target() == "/drop") return;
    if (request.target() == "/hang") return waitForEnd(peer);
    if (request.target() == "/huge") response.body().assign(65 * 1024 * 1024, 'h');
    if (request.target() == "/redirect") {
        response.result(http::status::found);
        response.set(http::field::location, "http://127.0.0.1:" + std::to_string(peer.local_endpoint().port()) + "/");
    }
    response.prepare_payload();
    response.keep_alive(false);
    http::write(peer, response);
}

HttpRequest to(const std::string& url) { return {"POST", url, {}, "", 30}; }

TEST(CurlHttp, EachRequestHasItsAnswerPastAnyProxyOrATransportError) {
    TestCertificate certificate;
    LoopbackServer server(answer), secure([&](tcp::socket peer) {
        asio::ssl::stream<tcp::socket>(std::move(peer), certificate.server).handshake(asio::ssl::stream_base::server);
        ADD_FAILURE() << "the client trusts what nobody vouches for";
    });
    const std::string url = server.url("http");
    std::vector<HttpRequest> requests{to(url + "hang"), to(url)};
    requests[0].timeoutSeconds = 0.2;
    requests[1].headers = {{"Authorization", "Bearer a\r\nX-Smuggled: b"}};
    for (const auto& other : {url + "drop", url + "redirect", url + "huge", std::string("http://example.test/"),
                              std::string("file:///etc/hostname"), std::string("nonsense"),
                              std::string("http://127.0.0.1:1/"), secure.url("https", "localhost")})
        requests.push_back(to(other));
    const std::size_t failing = requests.size();
    for (int i = 0; i < 30; ++i) {
        requests.push_back(to(url));
        requests.back().body = std::to_string(i) + std::string("\0z", 2);
    }

    setenv("http_proxy", "http://127.0.0.1:1", 1);
    AsioLoop main;
    CurlHttpClient client(main);
    std::vector<HttpResponse> responses(requests.size());
    std::size_t waiting = requests.size();
    for (std::size_t i = 0; i < requests.size(); ++i)
        client.send(requests[i], [&, i](HttpResponse response) {
            EXPECT_TRUE(main.isCurrent());
            responses[i] = std::move(response);
            if (--waiting == 0) main.quit();
        });
    main.after(30, [&] { main.quit(); });
    main.run();
    unsetenv("http_proxy");
    ASSERT_EQ(waiting, 0u);
    for (std::size_t i = 0; i < requests.size(); ++i) {
        const bool fails = i < failing;
        EXPECT_EQ(responses[i].status, fails ? 0 : 400) << requests[i].url;
        EXPECT_EQ(responses[i].body, fails ? "" : "told " + requests[i].body) << requests[i].url;
        EXPECT_EQ(responses[i].transportError.value_or("").empty(), !fails) << requests[i].url;
    }
    EXPECT_THAT(*responses[failing - 1].transportError, HasSubstr("certificate"));
}

TEST(CurlHttp, AClientThatIsGoneAnswersNoMore) {
    LoopbackServer server(answer);
    AsioLoop main;
    auto held = std::make_shared<int>(0);
    auto client = std::make_unique<CurlHttpClient>(main);
    for (const std::string& url : {server.url("http") + "hang", server.url("http"), std::string("nonsense")})
        client->send(to(url), [held](const HttpResponse&) { ADD_FAILURE() << "answered"; });
    client.reset();
    main.post([&] { main.quit(); });
    main.run();
    EXPECT_EQ(held.use_count(), 1);
}

class BeastSocket : public testing::Test {
 protected:
    void tell(const std::string& what) {
        story.push_back(what);
        if (story.size() >= wanted) loop.quit();
    }
    /// Runs the loop until the story has `count` more lines, or patience ends; takes the story.
    std::vector<std::string> next(std::size_t count) {
        wanted = count;
        const auto patience = loop.after(30, [this] { loop.quit(); });
        loop.run();
        loop.cancel(patience);
        return std::exchange(story, {});
    }
    void open(const std::string& url) {
        socket = sockets();
        socket->open(url, 60000,
                     {.onOpen = [this] { tell("open"); },
                      .onFrame =
                          [this, held = std::make_shared<std::string>("ended by ")](const std::string& bytes, bool) {
                              socket.reset();
                              tell(*held + bytes);
                          },
                      .onClosed = [this](int code) { tell("closed " + std::to_string(code)); },
                      .onFailed = [this](const std::string& error) { tell("failed " + error); },
                      .onSendFailed = [this](const std::string& error) { tell("send failed " + error); }});
    }
    std::string serve(std::function<void(Session&)> script) {
        servers.emplace_back([script = std::move(script)](tcp::socket peer) {
            Session session(std::move(peer));
            session.accept();
            script(session);
            boost::beast::flat_buffer answer;
            session.read(answer);
        });
        return servers.back().url("ws");
    }

    TestCertificate certificate;
    std::list<LoopbackServer> servers;  // outlive the clients, which end with the loop
    std::vector<std::string> story;     // what happened, in order
    std::size_t wanted = 0;
    AsioLoop loop;
    WebSocketFactory sockets = makeBeastWebSockets(loop);
    std::unique_ptr<WebSocket> socket;
};

TEST_F(BeastSocket, EveryEndIsToldOnceAlsoToOneThatDestroysItself) {
    const auto say = [](const std::string& text) {
        return [text](Session& session) { session.write(asio::buffer(text)); };
    };
    const auto closeByHand = [](Session& session) {
        const unsigned char frame[] = {0x88, 2, 4006 >> 8, 4006 & 255};
        asio::write(session.next_layer(), asio::buffer(frame));
        waitForEnd(session.next_layer());  // the connection itself stays
    };
    const std::pair<std::string, std::string> cases[] = {
        {serve([](Session& session) { session.next_layer().close(); }), "failed "},
        {serve(say(std::string(70000, 'x'))), "failed "},
        {serve(say("\xff\xfe")), "failed "},
        {serve(closeByHand), "closed 4006"},
        {serve([&](Session& session) { say("one")(session), say("two")(session); }), "ended by one"}};
    for (const auto& [url, end] : cases) {
        open(url);
        EXPECT_THAT(next(2), ElementsAre("open", StartsWith(end)));
    }
    for (const char* url : {"ws://relay.test/", "ws://127.0.0.1:1/", "nonsense", "https://localhost/"}) {
        open(url);
        EXPECT_THAT(next(1), ElementsAre(StartsWith("failed "))) << url;
    }
}

TEST_F(BeastSocket, CancelSendsItsCodeAndNoEventFollows) {
    const auto url = serve([this](Session& session) {
        error_code error;
        boost::beast::flat_buffer buffer;
        while (!error) session.read(buffer, error);
        loop.post([this, closed = error == websocket::error::closed, code = session.reason().code] {
            tell(closed ? "peer closed " + std::to_string(code) : "peer dropped");
        });
    });
    for (const auto& [code, end] : {std::pair(1001, "peer closed 1001"), {1006, "peer dropped"}}) {
        open(url);
        next(1);
        socket->sendText("last words");
        socket->cancel(code);  // no close frame may carry 1006
        socket.reset();
        EXPECT_THAT(next(1), ElementsAre(end));
    }
    open(url);
    socket.reset();  // while it connects
    loop.after(0.05, [this] { tell("later"); });
    EXPECT_THAT(next(1), ElementsAre("later"));
}

TEST_F(BeastSocket, AThreadThatFinishesSaysGoodbyeAndWaitsForNobody) {
    std::promise<int> code;
    const auto polite = serve([&](Session& session) {
        error_code error;
        boost::beast::flat_buffer buffer;
        while (!error) session.read(buffer, error);
        code.set_value(session.reason().code);
    });
    const auto deaf = serve([](Session& session) { waitForEnd(session.next_layer()); });
    const SystemClock clock;
    const auto endsWithin = [&clock](const AsioThread& thread, double seconds) {
        const double until = clock.monotonic() + seconds;
        while (!thread.ended() && clock.monotonic() < until) std::this_thread::yield();
        return thread.ended();
    };
    for (const auto& [url, hurried] : {std::pair(polite, false), {deaf, false}, {deaf, true}}) {
        auto thread = std::make_unique<AsioThread>("velmora.test");
        std::promise<void> opened;
        std::unique_ptr<WebSocket> mine = makeBeastWebSockets(thread->loop())();
        thread->loop().every(1, 1, [] {});
        WebSocket::Events events;
        events.onOpen = [&] { opened.set_value(); };
        thread->loop().post([&, address = url] { mine->open(address, 60000, events); });
        opened.get_future().wait();
        thread->loop().post([&mine] {
            mine->cancel(1001);
            mine.reset();
        });
        const double before = clock.monotonic();
        thread->finish();
        if (url == polite) {
            EXPECT_TRUE(endsWithin(*thread, 30));
            EXPECT_EQ(code.get_future().get(), 1001);
        } else {
            EXPECT_FALSE(endsWithin(*thread, 0.1)) << "the other side has not answered";
            if (hurried) {
                thread->quit();
                EXPECT_TRUE(endsWithin(*thread, 30));
            }
        }
        thread.reset();
        EXPECT_LT(clock.monotonic() - before, AsioThread::patience + 2) << "a deaf server holds nobody up";
    }
}

TEST_F(BeastSocket, SecureConnectionsCheckTheAuthorityAndTheName) {
    servers.emplace_back([&](tcp::socket peer) {
        websocket::stream<asio::ssl::stream<tcp::socket>> session(std::move(peer), certificate.server);
        session.next_layer().handshake(asio::ssl::stream_base::server);
        session.accept();
        session.close(websocket::close_code::try_again_later);
    });
    const LoopbackServer& server = servers.back();
    open(server.url("wss", "localhost"));  // nobody trusts it yet
    EXPECT_THAT(next(1), ElementsAre(HasSubstr("certificate verify failed")));
    const std::string file = testing::TempDir() + "/services-" + std::to_string(::getpid()) + ".pem";
    std::FILE* out = std::fopen(file.c_str(), "w");
    PEM_write_X509(out, certificate.certificate.get());
    std::fclose(out);
    ASSERT_EQ(setenv("SSL_CERT_FILE", file.c_str(), 1), 0);
    sockets = makeBeastWebSockets(loop);
    open(server.url("wss", "127.0.0.1"));  // not the name it is made out to
    EXPECT_THAT(next(1), ElementsAre(HasSubstr("certificate verify failed")));
    open(server.url("wss", "localhost"));
    EXPECT_THAT(next(2), ElementsAre("open", "closed 1013"));
    unsetenv("SSL_CERT_FILE");
    std::remove(file.c_str());
}

}  // namespace
}  // namespace vmr::test
