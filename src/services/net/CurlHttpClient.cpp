#include "services/net/CurlHttpClient.h"

#include <curl/curl.h>

#include <algorithm>
#include <map>
#include <mutex>
#include <thread>

#include "base/Fatal.h"
#include "services/net/Url.h"

namespace vmr {

namespace {

constexpr std::size_t largestAnswer = 64u * 1024 * 1024;
constexpr int idlePollMilliseconds = 60000;

struct Transfer {
    HttpRequest request;
    HttpClient::Done done;  // main thread only
    HttpResponse response;
    bool loopback = false;
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

bool prepare(Transfer& transfer) {
    transfer.easy = curl_easy_init();
    if (!transfer.easy) return false;
    const auto set = [easy = transfer.easy](CURLoption option, auto value) { curl_easy_setopt(easy, option, value); };
    set(CURLOPT_PRIVATE, static_cast<void*>(&transfer));
    set(CURLOPT_ERRORBUFFER, transfer.errorText);
    set(CURLOPT_NOSIGNAL, 1L);  // signals would reach other threads
    set(CURLOPT_URL, transfer.request.url.c_str());
    set(CURLOPT_PROTOCOLS_STR, "http,https");
    set(CURLOPT_REDIR_PROTOCOLS_STR, "https");
    set(CURLOPT_FOLLOWLOCATION, 1L);
    set(CURLOPT_MAXREDIRS, 5L);
    set(CURLOPT_SSL_VERIFYPEER, 1L);
    set(CURLOPT_SSL_VERIFYHOST, 2L);
    set(CURLOPT_SSLVERSION, static_cast<long>(CURL_SSLVERSION_TLSv1_2));
    set(CURLOPT_ACCEPT_ENCODING, "");  // every encoding that libcurl can unpack
    set(CURLOPT_TIMEOUT_MS, static_cast<long>(std::clamp(transfer.request.timeoutSeconds, 0.001, 86400.0) * 1000));
    set(CURLOPT_WRITEFUNCTION, takeBody);
    set(CURLOPT_WRITEDATA, static_cast<void*>(&transfer));
    if (transfer.loopback) set(CURLOPT_PROXY, "");  // a proxy cannot reach this machine's own servers
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

class CurlHttpClient::Worker {
 public:
    explicit Worker(MainLoop& main) : main_(main), multi_(curl_multi_init()) {
        if (!multi_) fatal("libcurl gives no multi handle");
        thread_ = std::thread([this] { run(); });
    }

    ~Worker() {
        {
            std::lock_guard lock(mutex_);
            ending_ = true;
        }
        curl_multi_wakeup(multi_);
        thread_.join();
        for (auto& [easy, transfer] : running_) curl_multi_remove_handle(multi_, easy);
        running_.clear();
        curl_multi_cleanup(multi_);
    }

    void send(HttpRequest request, Done done) {
        auto transfer = std::make_shared<Transfer>();
        transfer->done = std::move(done);
        const auto url = parseUrl(request.url);
        transfer->loopback = url && url->loopback;
        if (auto reason = refusal(request, url)) {
            transfer->response.transportError = std::move(reason);
            return answer(std::move(transfer));
        }
        transfer->request = std::move(request);
        {
            std::lock_guard lock(mutex_);
            waiting_.push_back(std::move(transfer));
        }
        curl_multi_wakeup(multi_);
    }

 private:
    using Shared = std::shared_ptr<Transfer>;

    void run() {
        while (takeWaiting()) {
            int active = 0;
            curl_multi_perform(multi_, &active);
            int left = 0;
            while (const CURLMsg* message = curl_multi_info_read(multi_, &left))
                if (message->msg == CURLMSG_DONE) finish(message->easy_handle, message->data.result);
            curl_multi_poll(multi_, nullptr, 0, idlePollMilliseconds, nullptr);
        }
    }

    bool takeWaiting() {
        std::vector<Shared> taken;
        {
            std::lock_guard lock(mutex_);
            if (ending_) return false;
            taken.swap(waiting_);
        }
        for (Shared& transfer : taken) {
            if (prepare(*transfer) && curl_multi_add_handle(multi_, transfer->easy) == CURLM_OK) {
                running_.emplace(transfer->easy, std::move(transfer));
            } else {
                transfer->response.transportError = "libcurl could not take the request";
                answer(std::move(transfer));
            }
        }
        return true;
    }

    void finish(CURL* easy, CURLcode result) {
        auto node = running_.extract(easy);
        Shared transfer = std::move(node.mapped());
        curl_multi_remove_handle(multi_, easy);
        if (result == CURLE_OK) {
            long status = 0;
            curl_easy_getinfo(easy, CURLINFO_RESPONSE_CODE, &status);
            transfer->response.status = static_cast<int>(status);
        } else {
            transfer->response.body.clear();
            transfer->response.transportError = *transfer->errorText ? transfer->errorText : curl_easy_strerror(result);
        }
        transfer->release();
        answer(std::move(transfer));
    }

    void answer(Shared transfer) {
        main_.post([alive = std::weak_ptr(alive_), transfer = std::move(transfer)] {
            // moved out of the request first: what the callback captures must be destroyed on the main thread
            const Done done = std::move(transfer->done);
            if (!alive.expired() && done) done(std::move(transfer->response));
        });
    }

    MainLoop& main_;
    CURLM* const multi_;
    const std::shared_ptr<int> alive_ = std::make_shared<int>(0);
    std::mutex mutex_;  // guards the two below
    std::vector<Shared> waiting_;
    bool ending_ = false;
    std::map<CURL*, Shared> running_;  // the thread's own
    std::thread thread_;
};

CurlHttpClient::CurlHttpClient(MainLoop& main) {
    static const CURLcode ready = curl_global_init(CURL_GLOBAL_DEFAULT);
    if (ready != CURLE_OK) fatal("libcurl does not start");
    worker_ = std::make_unique<Worker>(main);
}

CurlHttpClient::~CurlHttpClient() = default;

void CurlHttpClient::send(HttpRequest request, Done done) { worker_->send(std::move(request), std::move(done)); }

}  // namespace vmr
