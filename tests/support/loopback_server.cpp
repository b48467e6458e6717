#include "support/loopback_server.h"

#include <netinet/in.h>
#include <sys/socket.h>
#include <unistd.h>

#include <stdexcept>

#include "support/test_tls.h"

namespace tevra::testing {

LoopbackServer::LoopbackServer() : server_(std::make_unique<httplib::Server>()), scheme_("http") {
    bind();
}

LoopbackServer::LoopbackServer(const TestTLS& tls)
    : server_(std::make_unique<httplib::SSLServer>(tls.certFile.c_str(), tls.keyFile.c_str())),
      scheme_("https") {
    if (!server_->is_valid()) {
        throw std::runtime_error("loopback server: cannot load " + tls.certFile.string());
    }
    bind();
}

void LoopbackServer::bind() {
    // Production servers disable Nagle; without this, small replies on a kept-alive
    // connection wait for the client's delayed acknowledgement (about 40 ms).
    server_->set_tcp_nodelay(true);
    port_ = server_->bind_to_any_port("127.0.0.1");
    if (port_ <= 0) {
        throw std::runtime_error("loopback server: no free port on 127.0.0.1");
    }
}

LoopbackServer::~LoopbackServer() {
    stop();
}

void LoopbackServer::start() {
    thread_ = std::thread([this] { server_->listen_after_bind(); });
}

void LoopbackServer::stop() {
    {
        std::lock_guard lock(mutex_);
        stopped_ = true;
    }
    stopping_.notify_all();
    server_->stop();
    if (thread_.joinable()) {
        thread_.join();
    }
}

std::string LoopbackServer::baseURL() const {
    return scheme_ + "://127.0.0.1:" + std::to_string(port_);
}

void LoopbackServer::stall(std::chrono::milliseconds d) {
    std::unique_lock lock(mutex_);
    stopping_.wait_for(lock, d, [this] { return stopped_; });
}

void LoopbackServer::noteConnection(const httplib::Request& req) {
    std::lock_guard lock(mutex_);
    ports_.insert(req.remote_port);
}

std::set<int> LoopbackServer::connectionPorts() const {
    std::lock_guard lock(mutex_);
    return ports_;
}

int LoopbackServer::closedPort() {
    // Bind an ephemeral port, learn its number, and close it again.
    const int fd = ::socket(AF_INET, SOCK_STREAM, 0);
    sockaddr_in addr{};
    addr.sin_family = AF_INET;
    addr.sin_addr.s_addr = htonl(INADDR_LOOPBACK);
    addr.sin_port = 0;
    socklen_t len = sizeof addr;
    if (fd < 0 || ::bind(fd, reinterpret_cast<sockaddr*>(&addr), sizeof addr) != 0 ||
        ::getsockname(fd, reinterpret_cast<sockaddr*>(&addr), &len) != 0) {
        throw std::runtime_error("closedPort: cannot bind 127.0.0.1");
    }
    const int port = ntohs(addr.sin_port);
    ::close(fd);
    return port;
}

std::vector<FormPart> readMultipart(const httplib::ContentReader& reader) {
    std::vector<FormPart> parts;
    reader(
        [&](const httplib::MultipartFormData& header) {
            parts.push_back(FormPart{header.name, header.filename, header.content_type, {}});
            return true;
        },
        [&](const char* data, size_t length) {
            parts.back().content.append(data, length);
            return true;
        });
    return parts;
}

}  // namespace tevra::testing
