#pragma once

#include <memory>
#include <mutex>
#include <string>
#include <string_view>
#include <utility>
#include <vector>

#include "base/error.h"

namespace tevra {

struct HttpResponse {
    long status = 0;
    // Filled only for status 200: the body of any other answer is never kept.
    std::string body;
};

// A failure below HTTP: no connection, a time-out, a broken reply. The text is
// the transport's own.
class HttpTransportError : public MessageError {
public:
    using MessageError::MessageError;
};

// A 200 answer whose body went past the reader's limit; reading stopped there.
class HttpBodyTooLarge : public HttpTransportError {
public:
    using HttpTransportError::HttpTransportError;
};

struct HttpLimits {
    double inactivitySec = 30.0;  // no byte moving either way for this long fails
    double totalSec = 60.0;       // the whole exchange, connection included
    // Refuses every scheme but https, before any connection and on redirects.
    bool httpsOnly = false;
    // The certificate authorities to trust instead of the system's: only the
    // tests set it, for their loopback https servers.
    std::string trustedCAFile = {};
};

// A small blocking HTTP client over libcurl. It keeps a pool of easy handles so
// that calls from several threads run at once while each handle keeps its
// connection alive for the next call. Nothing is persisted: no cookies, no cache.
class HttpClient {
public:
    explicit HttpClient(HttpLimits limits);
    ~HttpClient();
    HttpClient(const HttpClient&) = delete;
    HttpClient& operator=(const HttpClient&) = delete;

    using Headers = std::vector<std::pair<std::string, std::string>>;

    // POSTs body (not copied) to url. Throws HttpTransportError when no HTTP
    // response arrived.
    HttpResponse post(const std::string& url, const Headers& headers, std::string_view body) const;

    // GETs url, reading at most maxBytes of a 200 body: reading stops at the
    // first byte past it, with HttpBodyTooLarge.
    HttpResponse get(const std::string& url, const Headers& headers,
                     std::size_t maxBytes = SIZE_MAX) const;

    const HttpLimits& limits() const { return limits_; }

private:
    struct Handle;
    std::unique_ptr<Handle> acquire() const;
    void release(std::unique_ptr<Handle> handle) const;
    HttpResponse perform(Handle& h, const std::string& url, const Headers& headers,
                         const std::string_view* body, std::size_t maxBytes) const;

    HttpLimits limits_;
    mutable std::mutex poolMutex_;
    mutable std::vector<std::unique_ptr<Handle>> pool_;
};

// Whether text is an absolute URL with a scheme and a host, as libcurl reads it.
bool isValidURL(const std::string& text);

// Appends a path component to a base URL with exactly one slash between them.
std::string appendPath(std::string_view baseURL, std::string_view component);

}  // namespace tevra
