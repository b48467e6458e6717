#include "base/http_client.h"

#include <curl/curl.h>

#include <chrono>
#include <cstdint>

namespace tevra {
namespace {

// libcurl's global state is set up once, before the first handle.
void ensureGlobalInit() {
    static const bool initialised = [] {
        curl_global_init(CURL_GLOBAL_DEFAULT);
        return true;
    }();
    (void)initialised;
}

struct Transfer {
    CURL* curl = nullptr;
    std::string body;
    std::size_t maxBytes = SIZE_MAX;
    bool overflow = false;

    // Inactivity: the moment a byte last moved, either way.
    std::chrono::steady_clock::duration idleLimit{};
    std::chrono::steady_clock::time_point lastActivity = std::chrono::steady_clock::now();
    curl_off_t lastDown = 0;
    curl_off_t lastUp = 0;
    bool idleTimeout = false;
};

// libcurl calls this at least once a second, and on every movement of data.
int onProgress(void* userdata, curl_off_t, curl_off_t downNow, curl_off_t, curl_off_t upNow) {
    auto* t = static_cast<Transfer*>(userdata);
    const auto now = std::chrono::steady_clock::now();
    if (downNow != t->lastDown || upNow != t->lastUp) {
        t->lastDown = downNow;
        t->lastUp = upNow;
        t->lastActivity = now;
        return 0;
    }
    if (now - t->lastActivity >= t->idleLimit) {
        t->idleTimeout = true;
        return 1;  // aborts the transfer
    }
    return 0;
}

size_t onWrite(char* data, size_t size, size_t count, void* userdata) {
    auto* t = static_cast<Transfer*>(userdata);
    const size_t n = size * count;
    long status = 0;
    curl_easy_getinfo(t->curl, CURLINFO_RESPONSE_CODE, &status);
    if (status != 200) {
        return n;  // a failed answer's body is drained, never kept
    }
    if (t->body.size() + n > t->maxBytes) {
        t->overflow = true;
        return 0;  // aborts the transfer
    }
    t->body.append(data, n);
    return n;
}

struct SlistDeleter {
    void operator()(curl_slist* l) const { curl_slist_free_all(l); }
};

}  // namespace

struct HttpClient::Handle {
    CURL* curl = nullptr;
    Handle() : curl(curl_easy_init()) {}
    ~Handle() { curl_easy_cleanup(curl); }
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
};

HttpClient::HttpClient(HttpLimits limits) : limits_(limits) {
    ensureGlobalInit();
}

HttpClient::~HttpClient() = default;

std::unique_ptr<HttpClient::Handle> HttpClient::acquire() const {
    {
        std::lock_guard lock(poolMutex_);
        if (!pool_.empty()) {
            auto h = std::move(pool_.back());
            pool_.pop_back();
            return h;
        }
    }
    auto h = std::make_unique<Handle>();
    if (!h->curl) {
        throw HttpTransportError("could not create an HTTP handle");
    }
    return h;
}

void HttpClient::release(std::unique_ptr<Handle> handle) const {
    std::lock_guard lock(poolMutex_);
    pool_.push_back(std::move(handle));
}

HttpResponse HttpClient::post(const std::string& url, const Headers& headers,
                              std::string_view body) const {
    auto h = acquire();
    auto response = perform(*h, url, headers, &body, SIZE_MAX);
    release(std::move(h));
    return response;
}

HttpResponse HttpClient::get(const std::string& url, const Headers& headers,
                             std::size_t maxBytes) const {
    auto h = acquire();
    auto response = perform(*h, url, headers, nullptr, maxBytes);
    release(std::move(h));
    return response;
}

HttpResponse HttpClient::perform(Handle& h, const std::string& url, const Headers& headers,
                                 const std::string_view* body, std::size_t maxBytes) const {
    CURL* c = h.curl;
    // Reset clears per-request options but keeps the handle's live connections.
    curl_easy_reset(c);

    Transfer transfer;
    transfer.curl = c;
    transfer.maxBytes = maxBytes;
    transfer.idleLimit = std::chrono::duration_cast<std::chrono::steady_clock::duration>(
        std::chrono::duration<double>(limits_.inactivitySec));
    char errorText[CURL_ERROR_SIZE] = {0};

    std::unique_ptr<curl_slist, SlistDeleter> headerList;
    auto add = [&headerList](const std::string& line) {
        curl_slist* next = curl_slist_append(headerList.get(), line.c_str());
        if (next) {
            (void)headerList.release();
            headerList.reset(next);
        }
    };
    for (const auto& [name, value] : headers) {
        add(name + ": " + value);
    }
    // Without this, libcurl waits for "100 Continue" before sending large bodies.
    add("Expect:");

    curl_easy_setopt(c, CURLOPT_URL, url.c_str());
    curl_easy_setopt(c, CURLOPT_HTTPHEADER, headerList.get());
    curl_easy_setopt(c, CURLOPT_ERRORBUFFER, errorText);
    curl_easy_setopt(c, CURLOPT_NOSIGNAL, 1L);
    curl_easy_setopt(c, CURLOPT_FOLLOWLOCATION, 0L);
    curl_easy_setopt(c, CURLOPT_WRITEFUNCTION, &onWrite);
    curl_easy_setopt(c, CURLOPT_WRITEDATA, &transfer);
    curl_easy_setopt(c, CURLOPT_TIMEOUT_MS, static_cast<long>(limits_.totalSec * 1000.0));
    curl_easy_setopt(c, CURLOPT_CONNECTTIMEOUT_MS,
                     static_cast<long>(limits_.inactivitySec * 1000.0));
    // libcurl's own low-speed check averages over several seconds, so an upload
    // burst would hide the first seconds of silence; inactivity is timed here.
    curl_easy_setopt(c, CURLOPT_NOPROGRESS, 0L);
    curl_easy_setopt(c, CURLOPT_XFERINFOFUNCTION, &onProgress);
    curl_easy_setopt(c, CURLOPT_XFERINFODATA, &transfer);
    if (limits_.httpsOnly) {
        curl_easy_setopt(c, CURLOPT_PROTOCOLS_STR, "https");
        curl_easy_setopt(c, CURLOPT_REDIR_PROTOCOLS_STR, "https");
    }
    if (!limits_.trustedCAFile.empty()) {
        curl_easy_setopt(c, CURLOPT_CAINFO, limits_.trustedCAFile.c_str());
        curl_easy_setopt(c, CURLOPT_CAPATH, nullptr);
    }
    if (body) {
        curl_easy_setopt(c, CURLOPT_POST, 1L);
        curl_easy_setopt(c, CURLOPT_POSTFIELDS, body->data());
        curl_easy_setopt(c, CURLOPT_POSTFIELDSIZE_LARGE, static_cast<curl_off_t>(body->size()));
    } else {
        curl_easy_setopt(c, CURLOPT_HTTPGET, 1L);
    }

    const CURLcode rc = curl_easy_perform(c);
    if (rc != CURLE_OK) {
        if (transfer.overflow) {
            throw HttpBodyTooLarge("response larger than " + std::to_string(maxBytes) + " bytes");
        }
        if (rc == CURLE_OPERATION_TIMEDOUT || transfer.idleTimeout) {
            throw HttpTransportError("The request timed out.");
        }
        std::string text = curl_easy_strerror(rc);
        if (errorText[0] != '\0') {
            text += ": ";
            text += errorText;
        }
        throw HttpTransportError(text);
    }
    HttpResponse response;
    curl_easy_getinfo(c, CURLINFO_RESPONSE_CODE, &response.status);
    if (response.status == 200) {
        response.body = std::move(transfer.body);
    }
    return response;
}

bool isValidURL(const std::string& text) {
    CURLU* url = curl_url();
    if (!url) {
        return false;
    }
    bool valid = curl_url_set(url, CURLUPART_URL, text.c_str(), 0) == CURLUE_OK;
    if (valid) {
        char* host = nullptr;
        valid = curl_url_get(url, CURLUPART_HOST, &host, 0) == CURLUE_OK && host && *host;
        curl_free(host);
    }
    curl_url_cleanup(url);
    return valid;
}

std::string appendPath(std::string_view baseURL, std::string_view component) {
    std::string url(baseURL);
    while (!url.empty() && url.back() == '/') {
        url.pop_back();
    }
    while (!component.empty() && component.front() == '/') {
        component.remove_prefix(1);
    }
    url += '/';
    url += component;
    return url;
}

}  // namespace tevra
