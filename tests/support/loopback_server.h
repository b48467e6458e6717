#pragma once

#include <httplib.h>

#include <atomic>
#include <chrono>
#include <condition_variable>
#include <memory>
#include <mutex>
#include <set>
#include <string>
#include <thread>
#include <vector>

namespace tevra::testing {

struct TestTLS;

// A real HTTP/1.1 server on 127.0.0.1 and a free port, for tests that drive the
// product's HTTP clients over the wire. Register handlers on server(), then start().
class LoopbackServer {
public:
    LoopbackServer();
    // An https server presenting the certificate of tls.
    explicit LoopbackServer(const TestTLS& tls);
    ~LoopbackServer();
    LoopbackServer(const LoopbackServer&) = delete;
    LoopbackServer& operator=(const LoopbackServer&) = delete;

    httplib::Server& server() { return *server_; }
    void start();
    void stop();

    int port() const { return port_; }
    std::string baseURL() const;  // "http://127.0.0.1:<port>", or https

    // Sleeps in a handler for up to d, returning early when the server stops,
    // so that a test of a slow answer never holds up its own tear-down.
    void stall(std::chrono::milliseconds d);

    // Remote ports of the connections that carried requests so far: one port
    // for several requests means the client kept its connection alive.
    void noteConnection(const httplib::Request& req);
    std::set<int> connectionPorts() const;

    // A port on which nothing listens, for refused connections.
    static int closedPort();

private:
    void bind();

    std::unique_ptr<httplib::Server> server_;
    std::string scheme_;
    int port_ = -1;
    std::thread thread_;
    mutable std::mutex mutex_;
    std::condition_variable stopping_;
    bool stopped_ = false;
    std::set<int> ports_;
};

// One part of a multipart/form-data body, in the order the body holds them.
struct FormPart {
    std::string name;
    std::string filename;
    std::string contentType;
    std::string content;
};

// Reads a multipart request body with httplib's own multipart parser.
std::vector<FormPart> readMultipart(const httplib::ContentReader& reader);

}  // namespace tevra::testing
