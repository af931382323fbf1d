#include "services/net/CurlHttpClient.h"

#include <curl/curl.h>

#include <algorithm>
#include <chrono>
#include <cmath>
#include <condition_variable>
#include <mutex>
#include <optional>
#include <thread>
#include <vector>

#include "base/Fatal.h"
#include "services/net/NetworkRules.h"

namespace vmr {

namespace {

constexpr std::size_t largestAnswer = 64u * 1024 * 1024;
constexpr int idlePollMilliseconds = 60000;
constexpr int endPollMilliseconds = 20;
constexpr std::string_view proxySchemes[] = {"http", "https", "socks4", "socks4a", "socks5", "socks5h"};

struct Transfer {
    std::uint64_t id = 0;
    HttpRequest request;
    HttpResponse response;
    TrustStore trust;
    std::string proxy, proxyUser, proxyPassword;
    std::chrono::steady_clock::time_point endsBy;
    CURL* easy = nullptr;
    curl_slist* headers = nullptr;
    char errorText[CURL_ERROR_SIZE] = {};

    Transfer() = default;
    Transfer(const Transfer&) = delete;
    Transfer& operator=(const Transfer&) = delete;
    ~Transfer() { release(); }

    void release() {
        if (easy) curl_easy_cleanup(easy);
        curl_slist_free_all(headers);
        easy = nullptr;
        headers = nullptr;
    }
};

std::size_t takeBody(char* bytes, std::size_t, std::size_t count, void* context) {
    auto& body = static_cast<Transfer*>(context)->response.body;
    if (body.size() + count > largestAnswer) return 0;
    body.append(bytes, count);
    return count;
}

void setMethod(Transfer& transfer) {
    const HttpRequest& request = transfer.request;
    if (request.method == "GET" && request.body.empty()) return;
    if (!request.body.empty() || request.method == "POST") {
        curl_easy_setopt(transfer.easy, CURLOPT_POST, 1L);
        curl_easy_setopt(transfer.easy, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(request.body.size()));
        curl_easy_setopt(transfer.easy, CURLOPT_POSTFIELDS, request.body.data());
    }
    if (request.method == "HEAD") curl_easy_setopt(transfer.easy, CURLOPT_NOBODY, 1L);
    if (request.method != "POST") curl_easy_setopt(transfer.easy, CURLOPT_CUSTOMREQUEST, request.method.c_str());
}

void setHeaders(Transfer& transfer) {
    const auto add = [&transfer](const std::string& line) {
        if (auto* longer = curl_slist_append(transfer.headers, line.c_str())) transfer.headers = longer;
    };
    for (const auto& [name, value] : transfer.request.headers)
        add(value.empty() ? name + ";" : name + ": " + value);  // libcurl's form of a header without a value is "name;"
    add("Expect:");                                             // no extra round trip before a body
    curl_easy_setopt(transfer.easy, CURLOPT_HTTPHEADER, transfer.headers);
}

// A redirect repeats what was sent, to whomever the answer names: none is followed where that could be a secret.
bool mayBeRedirected(const HttpRequest& request) {
    return request.body.empty() && request.headers.empty() && (request.method == "GET" || request.method == "HEAD");
}

void setTrust(Transfer& transfer) {
    const auto orNull = [](const std::string& text) { return text.empty() ? nullptr : text.c_str(); };
    const TrustStore& trust = transfer.trust;
    if (!trust.file.empty() || !trust.folder.empty()) {
        curl_easy_setopt(transfer.easy, CURLOPT_CAINFO, orNull(trust.file));
        curl_easy_setopt(transfer.easy, CURLOPT_CAPATH, orNull(trust.folder));
    }
    if (!trust.system.empty())
        curl_easy_setopt(transfer.easy, CURLOPT_SSL_OPTIONS, static_cast<long>(CURLSSLOPT_NATIVE_CA));
}

// An empty text turns libcurl's own reading of the environment off.
void setProxy(Transfer& transfer) {
    curl_easy_setopt(transfer.easy, CURLOPT_PROXY, transfer.proxy.c_str());
    curl_easy_setopt(transfer.easy, CURLOPT_NOPROXY, "");
    if (transfer.proxyUser.empty()) return;
    curl_easy_setopt(transfer.easy, CURLOPT_PROXYUSERNAME, transfer.proxyUser.c_str());
    curl_easy_setopt(transfer.easy, CURLOPT_PROXYPASSWORD, transfer.proxyPassword.c_str());
}

bool prepare(Transfer& transfer) {
    transfer.easy = curl_easy_init();
    if (!transfer.easy) return false;
    const auto set = [easy = transfer.easy](CURLoption option, auto value) { curl_easy_setopt(easy, option, value); };
    set(CURLOPT_PRIVATE, static_cast<void*>(&transfer));
    set(CURLOPT_ERRORBUFFER, transfer.errorText);
    set(CURLOPT_NOSIGNAL, 1L);    // signals would reach other threads
    set(CURLOPT_QUICK_EXIT, 1L);  // dropping a transfer does not wait for the system's resolver
    set(CURLOPT_URL, transfer.request.url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, mayBeRedirected(transfer.request) ? 1L : 0L);
    set(CURLOPT_MAXREDIRS, 5L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_ACCEPT_ENCODING, "");  // every encoding that libcurl can unpack
    const auto left = std::chrono::ceil<std::chrono::milliseconds>(transfer.endsBy - std::chrono::steady_clock::now());
    set(CURLOPT_TIMEOUT_MS, std::max(1L, static_cast<long>(left.count())));
    set(CURLOPT_WRITEFUNCTION, takeBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(&transfer));
    setTrust(transfer);
    setProxy(transfer);
    setMethod(transfer);
    setHeaders(transfer);
    return true;
}

bool hasControl(const std::string& text) {
    return std::any_of(text.begin(), text.end(), [](char c) { return static_cast<unsigned char>(c) < 32 || c == 127; });
}

/// Why the request must not be sent, if so. A line break in a header would smuggle in a second header.
std::optional<std::string> refusal(const HttpRequest& request, const std::optional<Url>& url) {
    if (!url) return "not an address";
    if (url->scheme != "https" && (url->scheme != "http" || !url->loopback))
        return "only https: is allowed, or http: to this machine";
    if (request.method.empty() || hasControl(request.method)) return "not a request method";
    for (const auto& [name, value] : request.headers)
        if (name.empty() || hasControl(name) || hasControl(value)) return "a header holds a control character";
    return std::nullopt;
}

}  // namespace

/// The transfers and the thread that carries them. The thread owns it too, so that an end need not wait for it.
class CurlHttpClient::Worker {
 public:
    /// Hands an answer to the client; runs on the main loop.
    using Answer = std::function<void(std::uint64_t id, HttpResponse response)>;

    static std::shared_ptr<Worker> start(MainLoop& main, Answer answer) {
        auto worker = std::make_shared<Worker>(main, std::move(answer));
        worker->thread_ = std::thread([worker] { worker->run(); });
        return worker;
    }

    Worker(MainLoop& main, Answer answer) : main_(&main), answer_(std::move(answer)), multi_(curl_multi_init()) {
        if (!multi_) fatal("libcurl gives no multi handle");
    }

    void add(std::shared_ptr<Transfer> transfer) {
        std::lock_guard lock(mutex_);
        waiting_.push_back(std::move(transfer));
        curl_multi_wakeup(multi_);
    }

    /// Once, on the main thread: no answer comes any more. Waits a moment for the last words, and leaves a thread
    /// behind that is held up for longer.
    void end() {
        std::unique_lock lock(mutex_);
        main_ = nullptr;
        endBy_ = std::chrono::steady_clock::now() + lastWordPatience;
        curl_multi_wakeup(multi_);  // before the lock goes: the handle ends with the thread
        const bool ended = changed_.wait_until(lock, *endBy_ + threadPatience, [this] { return ended_; });
        lock.unlock();
        ended ? thread_.join() : thread_.detach();
    }

    /// The answer of a request that is not sent.
    void refuse(std::uint64_t id, std::string reason) {
        HttpResponse response;
        response.transportError = std::move(reason);
        answer(id, std::move(response));
    }

 private:
    static constexpr std::chrono::milliseconds lastWordPatience{400}, threadPatience{100};

    void run() {
        while (goesOn()) {
            int active = 0;
            curl_multi_perform(multi_, &active);
            int left = 0;
            while (const CURLMsg* message = curl_multi_info_read(multi_, &left))
                if (message->msg == CURLMSG_DONE) finish(message->easy_handle, message->data.result);
            curl_multi_poll(multi_, nullptr, 0, ending_ ? endPollMilliseconds : idlePollMilliseconds, nullptr);
        }
        for (const auto& transfer : running_) curl_multi_remove_handle(multi_, transfer->easy);
        running_.clear();
        curl_multi_cleanup(multi_);
        std::lock_guard lock(mutex_);
        ended_ = true;
        changed_.notify_all();
    }

    // Takes what waits; false once it is time to end.
    bool goesOn() {
        std::vector<std::shared_ptr<Transfer>> taken;
        std::chrono::steady_clock::time_point endBy;
        {
            std::lock_guard lock(mutex_);
            ending_ = endBy_.has_value();
            endBy = endBy_.value_or(endBy);
            taken.swap(waiting_);
        }
        for (auto& transfer : taken) {
            if (prepare(*transfer) && curl_multi_add_handle(multi_, transfer->easy) == CURLM_OK)
                running_.push_back(std::move(transfer));
            else
                refuse(transfer->id, "libcurl could not take the request");
        }
        return !ending_ || (lastWordsLeft() && std::chrono::steady_clock::now() < endBy);
    }

    bool lastWordsLeft() const {
        return std::any_of(running_.begin(), running_.end(), [](const auto& one) { return one->request.lastWord; });
    }

    void finish(CURL* easy, CURLcode result) {
        const auto found =
            std::find_if(running_.begin(), running_.end(), [easy](const auto& one) { return one->easy == easy; });
        const std::shared_ptr<Transfer> transfer = std::move(*found);
        running_.erase(found);
        curl_multi_remove_handle(multi_, easy);
        if (result != CURLE_OK)
            return refuse(transfer->id, *transfer->errorText ? transfer->errorText : curl_easy_strerror(result));
        long status = 0;
        curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
        transfer->response.status = static_cast<int>(status);
        answer(transfer->id, std::move(transfer->response));
    }

    void answer(std::uint64_t id, HttpResponse response) {
        std::lock_guard lock(mutex_);
        if (main_) main_->post([answer = answer_, id, response = std::move(response)] { answer(id, response); });
    }

    std::mutex mutex_;  // guards the next four
    MainLoop* main_;    // null once the end has begun
    std::optional<std::chrono::steady_clock::time_point> endBy_;
    std::vector<std::shared_ptr<Transfer>> waiting_;
    bool ended_ = false;
    std::condition_variable changed_;
    const Answer answer_;
    CURLM* const multi_;
    std::vector<std::shared_ptr<Transfer>> running_;  // the thread's own, as is the next
    bool ending_ = false;
    std::thread thread_;
};

CurlHttpClient::CurlHttpClient(MainLoop& main, std::shared_ptr<ProxyFinder> proxies)
    : main_(main), proxies_(std::move(proxies)) {
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (ready != CURLE_OK) fatal("libcurl does not start");
    worker_ = Worker::start(main, weak_([this](std::uint64_t id, const HttpResponse& response) {
                                // out of the list first: what it calls may send again or end the client
                                const auto waiting = waiting_.extract(id);
                                if (!waiting.empty() && waiting.mapped()) waiting.mapped()(response);
                            }));
}

CurlHttpClient::~CurlHttpClient() { worker_->end(); }

void CurlHttpClient::send(HttpRequest request, Done done) {
    const std::uint64_t id = ++lastId_;
    waiting_.emplace(id, std::move(done));
    const auto url = parseUrl(request.url);
    if (auto reason = refusal(request, url)) return worker_->refuse(id, std::move(*reason));
    auto transfer = std::make_shared<Transfer>();
    transfer->id = id;
    transfer->request = std::move(request);
    transfer->trust = TrustStore::find(environment);
    const double limit = std::clamp(transfer->request.timeoutSeconds, 0.001, 86400.0);
    transfer->endsBy = std::chrono::steady_clock::now() + std::chrono::milliseconds(std::llround(limit * 1000));
    // the thread takes the transfer over: it alone ends what libcurl knows of it
    auto question =
        proxies_->find(*url, proxySchemes, main_,
                       [this, id, transfer = std::move(transfer)](const std::optional<Proxy>& proxy) mutable {
                           endAsking(id);
                           if (proxy && !proxy->problem.empty()) return worker_->refuse(id, proxy->problem);
                           if (proxy) {
                               transfer->proxy = proxy->address();
                               transfer->proxyUser = proxy->user;
                               transfer->proxyPassword = proxy->password;
                           }
                           worker_->add(std::move(transfer));
                       });
    if (!question) return;
    const auto timer = main_.after(limit, weak_([this, id] {
                                       endAsking(id);
                                       worker_->refuse(id, "the system does not say in time which proxy to use");
                                   }));
    asking_.emplace(id, Asking{std::move(question), timer});
}

void CurlHttpClient::endAsking(std::uint64_t id) {
    const auto asking = asking_.extract(id);
    if (!asking.empty()) main_.cancel(asking.mapped().limit);
}

}  // namespace vmr
