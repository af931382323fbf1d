// The real WebSocket against a real server on this machine.
#include <gmock/gmock.h>

#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <condition_variable>
#include <cstdlib>
#include <future>
#include <mutex>

#include "LoopbackServer.h"
#include "TestCertificate.h"
#include "base/AsioLoop.h"
#include "services/BeastWebSocket.h"

namespace vmr::test {
namespace {

namespace beast = boost::beast;
namespace websocket = beast::websocket;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::StartsWith;
using Session = websocket::stream<LoopbackServer::Socket>;
using SecureSession = websocket::stream<boost::asio::ssl::stream<LoopbackServer::Socket>>;

constexpr std::size_t relayLimit = 67108864;

/// What happened, in order, from any thread.
class Story {
 public:
    void tell(std::string what) {
        std::lock_guard lock(mutex_);
        lines_.push_back(std::move(what));
        changed_.notify_all();
    }
    /// The story once it has `count` lines, or what there is when patience ends.
    std::vector<std::string> first(std::size_t count) {
        std::unique_lock lock(mutex_);
        changed_.wait_for(lock, std::chrono::seconds(30), [&] { return lines_.size() >= count; });
        return lines_;
    }

 private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> lines_;
};

/// The next message; throws when there is none.
template <class Stream>
std::string readFrom(Stream& session) {
    beast::flat_buffer buffer;
    session.read(buffer);
    return beast::buffers_to_string(buffer.data());
}

class BeastSocket : public testing::Test {
 protected:
    /// Runs `work` on the sockets' thread and waits for it.
    void onLoop(const std::function<void()>& work) {
        std::promise<void> done;
        thread->loop().post([&] {
            work();
            done.set_value();
        });
        done.get_future().wait();
    }
    WebSocket::Events events() {
        WebSocket::Events made;
        made.onOpen = [this] { story.tell("open"); };
        made.onFrame = [this](const std::string& bytes, bool binary) {
            story.tell((binary ? "binary " : "text ") + bytes);
        };
        made.onClosed = [this](int code) { story.tell("closed " + std::to_string(code)); };
        made.onFailed = [this](const std::string& error) { story.tell("failed " + error); };
        made.onSendFailed = [this](const std::string& error) { story.tell("send failed " + error); };
        return made;
    }
    void open(const std::string& url, std::size_t limit = relayLimit) {
        onLoop([&] {
            socket = sockets();
            socket->open(url, limit, events());
        });
    }
    void serve(std::function<void(Session&)> script) {
        server = std::make_unique<LoopbackServer>([script = std::move(script)](LoopbackServer::Socket peer) {
            Session session(std::move(peer));
            session.accept();
            script(session);
        });
    }
    void TearDown() override {
        onLoop([this] { socket.reset(); });
        thread.reset();  // and with it what still lingers
        server.reset();
    }

    Story story;
    std::unique_ptr<LoopbackServer> server;
    std::unique_ptr<AsioThread> thread = std::make_unique<AsioThread>("sockets");
    WebSocketFactory sockets = makeBeastWebSockets(thread->loop());
    std::unique_ptr<WebSocket> socket;
};

TEST_F(BeastSocket, EveryEndIsToldOnce) {
    const auto say = [](const std::string& text) {
        return [text](Session& session) {
            session.write(boost::asio::buffer(text));
            readFrom(session);
        };
    };
    struct Case {
        const char* name;
        std::function<void(Session&)> script;
        std::string end;
    };
    const Case cases[] = {
        {"dropped", [](Session&) {}, "failed "},
        {"too large", say(std::string(70000, 'x')), "failed "},
        {"not UTF-8", say("\xff\xfe"), "failed "},
        {"a close frame by hand, after which the connection stays",
         [](Session& session) {
             const unsigned char frame[] = {0x88, 2, 4006 >> 8, 4006 & 255};
             boost::asio::write(session.next_layer(), boost::asio::buffer(frame));
             waitForEnd(session.next_layer());
         },
         "closed 4006"},
    };
    std::size_t told = 0;
    for (const auto& [name, script, end] : cases) {
        SCOPED_TRACE(name);
        serve(script);
        open(server->url("ws"), 60000);
        const auto lines = story.first(told += 2);
        ASSERT_EQ(lines.size(), told);
        EXPECT_EQ(lines[told - 2], "open");
        EXPECT_THAT(lines[told - 1], StartsWith(end));
    }
}

TEST_F(BeastSocket, ARefusedConnectionFails) {
    std::size_t told = 0;
    for (const std::string url : {"ws://relay.test/", "ws://127.0.0.1:1/", "nonsense", "https://localhost/"}) {
        open(url);
        const auto lines = story.first(++told);
        ASSERT_EQ(lines.size(), told) << url;
        EXPECT_THAT(lines.back(), StartsWith("failed ")) << url;
    }
}

TEST_F(BeastSocket, CancelSendsItsCodeAndNoEventFollows) {
    Story peer;
    serve([&](Session& session) {
        boost::system::error_code error;
        beast::flat_buffer buffer;
        while (!error) session.read(buffer, error);
        peer.tell(error == websocket::error::closed ? "closed " + std::to_string(session.reason().code) : "dropped");
    });
    for (const int code : {1001, 1006}) {  // no close frame may carry the second
        open(server->url("ws"));
        story.first(code == 1001 ? 1 : 2);
        onLoop([&] {
            socket->sendText("last words");
            socket->cancel(code);
            socket.reset();
        });
        peer.first(code == 1001 ? 1 : 2);
    }
    EXPECT_THAT(peer.first(2), ElementsAre("closed 1001", "dropped"));
    EXPECT_THAT(story.first(2), ElementsAre("open", "open"));
}

TEST_F(BeastSocket, MayBeDestroyedWithinItsOwnEventsAndWhileConnecting) {
    serve([](Session& session) {
        for (const std::string text : {"one", "two"}) session.write(boost::asio::buffer(text));
        waitForEnd(session.next_layer());
    });
    onLoop([&] {
        auto made = events();
        made.onFrame = [this, held = std::make_shared<std::string>("ended")](const std::string&, bool) {
            socket.reset();
            story.tell(*held);
        };
        socket = sockets();
        socket->open(server->url("ws"), relayLimit, std::move(made));
    });
    story.first(2);
    onLoop([this] {
        socket = sockets();
        socket->open(server->url("ws"), relayLimit, events());
        socket.reset();
    });
    EXPECT_THAT(story.first(2), ElementsAre("open", "ended"));
}

TEST_F(BeastSocket, SecureConnectionsCheckTheAuthorityAndTheName) {
    TestCertificate certificate;
    server = std::make_unique<LoopbackServer>([&](LoopbackServer::Socket peer) {
        SecureSession session(std::move(peer), certificate.server);
        session.next_layer().handshake(boost::asio::ssl::stream_base::server);
        session.accept();
        session.close(websocket::close_code::try_again_later);
    });
    open(server->url("wss", "localhost"));  // nobody trusts it yet
    EXPECT_THAT(story.first(1), ElementsAre(HasSubstr("certificate verify failed")));
    ASSERT_EQ(setenv("SSL_CERT_FILE", certificate.file.c_str(), 1), 0);
    sockets = makeBeastWebSockets(thread->loop());
    open(server->url("wss", "127.0.0.1"));  // not the name it is made out to
    EXPECT_THAT(story.first(2).back(), HasSubstr("certificate verify failed"));
    open(server->url("wss", "localhost"));
    EXPECT_EQ(story.first(4).back(), "closed 1013");
    unsetenv("SSL_CERT_FILE");
    server.reset();
}

}  // namespace
}  // namespace vmr::test
