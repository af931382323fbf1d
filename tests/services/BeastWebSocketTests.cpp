// The real WebSocket against a real server on this machine.
#include <gmock/gmock.h>

#include <boost/asio/ssl/stream.hpp>
#include <boost/beast/core/buffers_to_string.hpp>
#include <boost/beast/core/flat_buffer.hpp>
#include <boost/beast/http.hpp>
#include <boost/beast/websocket.hpp>
#include <boost/beast/websocket/ssl.hpp>
#include <condition_variable>
#include <cstdlib>
#include <future>
#include <mutex>

#include "LoopbackServer.h"
#include "TestCertificate.h"
#include "services/BeastWebSocket.h"
#include "services/RelayClient.h"

namespace vmr::test {
namespace {

namespace beast = boost::beast;
namespace websocket = beast::websocket;
using testing::ElementsAre;
using testing::StartsWith;
using Session = websocket::stream<LoopbackServer::Socket>;
using SecureSession = websocket::stream<boost::asio::ssl::stream<LoopbackServer::Socket>>;

constexpr auto patience = std::chrono::seconds(30);
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
        changed_.wait_for(lock, patience, [&] { return lines_.size() >= count; });
        return lines_;
    }

 private:
    std::mutex mutex_;
    std::condition_variable changed_;
    std::vector<std::string> lines_;
};

std::string shown(const std::string& bytes) {
    return bytes.size() < 100 ? bytes
                              : std::to_string(bytes.size()) + " " + std::to_string(std::hash<std::string>()(bytes));
}

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
            story.tell((binary ? "binary " : "text ") + shown(bytes));
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
            session.read_message_max(relayLimit);
            session.accept();
            script(session);
        });
    }
    void TearDown() override {
        if (thread) onLoop([this] { socket.reset(); });
        thread.reset();
        server.reset();
    }

    Story story;
    std::unique_ptr<LoopbackServer> server;
    std::unique_ptr<AsioThread> thread = std::make_unique<AsioThread>("sockets");
    WebSocketFactory sockets = makeBeastWebSockets(thread->loop());
    std::unique_ptr<WebSocket> socket;
};

TEST_F(BeastSocket, MessagesGoBothWaysInOrderWhateverTheirSize) {
    serve([](Session& session) {
        for (int i = 0; i < 200; ++i) {
            const std::string message = readFrom(session);
            session.binary(i == 199);
            session.write(boost::asio::buffer(message));
        }
        const std::string snapshot(20 * 1024 * 1024, 's');
        session.text(true);
        session.write(boost::asio::buffer(snapshot));
        waitForEnd(session.next_layer());
    });
    const auto message = [](int i) { return std::to_string(i) + std::string(i % 7 == 0 ? 200000 : i, 'm'); };
    onLoop([&] {
        socket = sockets();
        socket->open(server->url("ws", "localhost"), relayLimit, events());
        for (int i = 0; i < 200; ++i) socket->sendText(message(i));
    });
    std::vector<std::string> expected{"open"};
    for (int i = 0; i < 200; ++i) expected.push_back((i == 199 ? "binary " : "text ") + shown(message(i)));
    expected.push_back("text " + shown(std::string(20 * 1024 * 1024, 's')));
    EXPECT_EQ(story.first(202), expected);
}

TEST_F(BeastSocket, ACloseFrameGivesItsCodeEvenIfTheServerKeepsTheLine) {
    serve([](Session& session) {
        // a close frame written by hand, after which the connection stays
        const unsigned char frame[] = {0x88, 2, 4006 >> 8, 4006 & 255};
        boost::asio::write(session.next_layer(), boost::asio::buffer(frame));
        waitForEnd(session.next_layer());
    });
    open(server->url("ws"));
    EXPECT_THAT(story.first(2), ElementsAre("open", "closed 4006"));
}

TEST_F(BeastSocket, OtherEndsAreFailures) {
    struct Case {
        const char* name;
        std::function<void(Session&)> script;
        std::string error;
    };
    const Case cases[] = {
        {"dropped", [](Session&) {}, "failed "},
        {"too large",
         [](Session& session) {
             session.write(boost::asio::buffer(std::string(70000, 'x')));
             readFrom(session);
         },
         "failed "},
        {"not UTF-8",
         [](Session& session) {
             session.write(boost::asio::buffer(std::string("\xff\xfe")));
             readFrom(session);
         },
         "failed "},
    };
    for (const auto& [name, script, error] : cases) {
        SCOPED_TRACE(name);
        Story told;
        serve(script);
        onLoop([&] {
            socket = sockets();
            auto made = events();
            made.onOpen = [&told] { told.tell("open"); };
            made.onFailed = [&told](const std::string& text) { told.tell("failed " + text); };
            socket->open(server->url("ws"), 60000, std::move(made));
        });
        EXPECT_THAT(told.first(2), ElementsAre("open", StartsWith(error)));
        onLoop([this] { socket.reset(); });
        server.reset();
    }
}

TEST_F(BeastSocket, ARefusedConnectionFails) {
    server = std::make_unique<LoopbackServer>([](LoopbackServer::Socket peer) {
        beast::flat_buffer buffer;
        beast::http::request<beast::http::string_body> request;
        beast::http::read(peer, buffer, request);
        beast::http::response<beast::http::string_body> response{beast::http::status::forbidden, 11};
        response.prepare_payload();
        beast::http::write(peer, response);
    });
    open(server->url("ws"));
    EXPECT_THAT(story.first(1), ElementsAre("failed HTTP 403"));
    const auto url = server->url("ws");
    server.reset();
    for (const std::string& refused : {url, std::string("ws://relay.test/"), std::string("nonsense"),
                                       std::string("https://localhost/"), std::string("wss://no-such-host.invalid/")}) {
        SCOPED_TRACE(refused);
        const auto before = story.first(0).size();
        open(refused);
        const auto told = story.first(before + 1);
        ASSERT_EQ(told.size(), before + 1);
        EXPECT_THAT(told.back(), StartsWith("failed "));
    }
}

TEST_F(BeastSocket, CancelSendsItsCodeAndNoEventFollows) {
    Story server_;
    serve([&](Session& session) {
        boost::system::error_code error;
        beast::flat_buffer buffer;
        while (!error) session.read(buffer, error);
        server_.tell(error == websocket::error::closed ? "closed " + std::to_string(session.reason().code)
                                                       : error.message());
    });
    open(server->url("ws"));
    story.first(1);
    onLoop([this] {
        socket->sendText("last words");
        socket->cancel(1001);
        socket.reset();
    });
    EXPECT_THAT(server_.first(1), ElementsAre("closed 1001"));
    open(server->url("ws"));
    story.first(2);
    onLoop([this] { socket->cancel(1006); });  // no close frame may carry this one
    EXPECT_EQ(server_.first(2).at(1).find("closed"), std::string::npos);
    EXPECT_THAT(story.first(2), ElementsAre("open", "open"));
}

TEST_F(BeastSocket, MayBeDestroyedWithinItsOwnEventsAndWhileConnecting) {
    serve([](Session& session) {
        session.write(boost::asio::buffer(std::string("one")));
        session.write(boost::asio::buffer(std::string("two")));
        waitForEnd(session.next_layer());
    });
    for (const bool atOpen : {true, false}) {
        onLoop([&] {
            auto made = events();
            const auto end = [this, held = std::make_shared<std::string>("ended")] {
                socket.reset();
                story.tell(*held);
            };
            if (atOpen)
                made.onOpen = end;
            else
                made.onFrame = [end](const std::string&, bool) { end(); };
            socket = sockets();
            socket->open(server->url("ws"), relayLimit, std::move(made));
        });
        story.first(atOpen ? 1 : 3);
    }
    onLoop([this] {
        socket = sockets();
        socket->open(server->url("ws"), relayLimit, events());
        socket.reset();
    });
    EXPECT_THAT(story.first(3), ElementsAre("ended", "open", "ended"));
}

TEST_F(BeastSocket, ALoopThatEndsTakesAStandingConnectionWithIt) {
    RelayClient::setPrinter([](const std::string&) {});
    Story peer;
    serve([&](Session& session) {
        session.write(boost::asio::buffer(std::string(R"({"type":"hello"})")));
        waitForEnd(session.next_layer());
        peer.tell("ended");
    });
    AsioThread main("main");
    SystemClock clock;
    auto client = std::make_unique<RelayClient>(server->url("ws"), sockets, thread->loop(), main.loop(), clock);
    RelayClient::Callbacks callbacks;
    callbacks.onConnected = [this] { story.tell("connected"); };
    client->setCallbacks(std::move(callbacks));
    client->connect([](const std::function<void(TokenResult)>& done) { done({"t", std::nullopt}); });
    EXPECT_THAT(story.first(1), ElementsAre("connected"));
    thread->loop().quit();
    std::promise<void> ended;
    main.loop().post([&] {
        client.reset();  // what it leaves to its queue never runs
        ended.set_value();
    });
    ended.get_future().wait();
    thread.reset();
    EXPECT_THAT(peer.first(1), ElementsAre("ended"));
    RelayClient::setPrinter(nullptr);
}

TEST_F(BeastSocket, SecureConnectionsCheckTheAuthorityAndTheName) {
    TestCertificate certificate;
    Story names;
    server = std::make_unique<LoopbackServer>([&](LoopbackServer::Socket peer) {
        SecureSession session(std::move(peer), certificate.server());
        session.next_layer().handshake(boost::asio::ssl::stream_base::server);
        const char* name = SSL_get_servername(session.next_layer().native_handle(), TLSEXT_NAMETYPE_host_name);
        session.accept();
        names.tell(name ? name : "none");
        session.write(boost::asio::buffer(readFrom(session)));
        session.close(websocket::close_code::try_again_later);
    });
    open(server->url("wss", "localhost"));  // nobody trusts it yet
    EXPECT_THAT(story.first(1), ElementsAre(testing::HasSubstr("certificate verify failed")));

    ASSERT_EQ(setenv("SSL_CERT_FILE", certificate.file().c_str(), 1), 0);
    sockets = makeBeastWebSockets(thread->loop());
    open(server->url("wss", "127.0.0.1"));  // not the name it is made out to
    EXPECT_THAT(story.first(2).back(), testing::HasSubstr("certificate verify failed"));

    open(server->url("wss", "localhost"));
    onLoop([this] { socket->sendText("hello"); });
    const auto told = story.first(5);
    unsetenv("SSL_CERT_FILE");
    ASSERT_EQ(told.size(), 5u);
    EXPECT_THAT(std::vector(told.begin() + 2, told.end()), ElementsAre("open", "text hello", "closed 1013"));
    EXPECT_THAT(names.first(1), ElementsAre("localhost"));
    onLoop([this] { socket.reset(); });
    server.reset();
}

TEST_F(BeastSocket, CarriesARelayClientAcrossThreads) {
    RelayClient::setPrinter([](const std::string&) {});
    serve([](Session& session) {
        session.write(boost::asio::buffer(std::string(R"({"type":"hello","email":"a@b"})")));
        const std::string asked = readFrom(session);
        for (int i = 0; i < 500; ++i)
            session.write(boost::asio::buffer(R"({"type":"event","channel":"c","payload":)" + std::to_string(i) + "}"));
        session.write(
            boost::asio::buffer(R"({"type":"snapshot","channel":"c","data":")" + std::string(3000000, 'x') + "\"}"));
        session.write(boost::asio::buffer(R"({"type":"batch","channel":"asked","events":[)" + asked + "]}"));
        waitForEnd(session.next_layer());
    });
    AsioThread main("main");
    SystemClock clock;
    std::unique_ptr<RelayClient> client;
    int events = 0;
    main.loop().post([&] {
        client = std::make_unique<RelayClient>(server->url("ws"), sockets, thread->loop(), main.loop(), clock);
        RelayClient::Callbacks callbacks;
        callbacks.onConnected = [&] { story.tell("connected"); };
        callbacks.onPrepare = [](const std::string&, JsonView payload) -> std::any { return payload.text().size(); };
        callbacks.onChannelMessage = [&](const ChannelMessage& message, const std::string& type) {
            if (type == "event" && message.payload.integer() == events) ++events;
            if (type == "snapshot") story.tell(std::to_string(std::any_cast<std::size_t>(message.prepared)));
            if (type == "batch") story.tell(message.payload.text());
        };
        client->setCallbacks(std::move(callbacks));
        client->subscribe({"c"});
        client->connect([](const std::function<void(TokenResult)>& done) { done({"t", std::nullopt}); });
    });
    EXPECT_THAT(story.first(3), ElementsAre("connected", "3000002", R"({"action":"subscribe","channels":["c"]})"));
    std::promise<int> ended;
    main.loop().post([&] {
        client.reset();
        ended.set_value(events);
    });
    EXPECT_EQ(ended.get_future().get(), 500);
    onLoop([] {});
    RelayClient::setPrinter(nullptr);
}

}  // namespace
}  // namespace vmr::test
