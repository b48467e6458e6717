#include "support/loopback_services.h"

namespace tevra::testing {

LoopbackServices::LoopbackServices() {
    speech_ = [](std::string_view) { return Reply{500, ""}; };
    server_.server().Post(R"(/(\w+)/v1/chat/completions)", [this](const httplib::Request& req,
                                                                  httplib::Response& res) {
        std::lock_guard lock(mutex_);
        chatRequests_.push_back({req.matches[1], nlohmann::json::parse(req.body)});
        const Reply& reply = chats_[req.matches[1]];
        res.status = reply.status;
        res.set_content(
            nlohmann::json{{"choices", {{{"message", {{"content", reply.body}}}}}}}.dump(),
            "application/json");
    });
    server_.server().Post(R"(/(\w+)/v1/audio/transcriptions)",
                          [this](const httplib::Request&, httplib::Response& res,
                                 const httplib::ContentReader& reader) {
                              std::string wav;
                              for (auto& part : readMultipart(reader)) {
                                  if (part.name == "file") {
                                      wav = std::move(part.content);
                                  }
                              }
                              std::lock_guard lock(mutex_);
                              speechRequests_.push_back(wav);
                              const Reply reply = speech_(wav);
                              res.status = reply.status;
                              res.set_content(reply.body, "application/json");
                          });
    server_.start();
}

void LoopbackServices::chat(const std::string& name, int status, std::string content) {
    std::lock_guard lock(mutex_);
    chats_[name] = {status, std::move(content)};
}

void LoopbackServices::speech(SpeechAnswer answer) {
    std::lock_guard lock(mutex_);
    speech_ = std::move(answer);
}

std::vector<LoopbackServices::ChatRequest> LoopbackServices::chatRequests() const {
    std::lock_guard lock(mutex_);
    return chatRequests_;
}

std::vector<std::string> LoopbackServices::speechRequests() const {
    std::lock_guard lock(mutex_);
    return speechRequests_;
}

}  // namespace tevra::testing
