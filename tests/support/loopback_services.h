#pragma once

#include <functional>
#include <map>
#include <mutex>
#include <nlohmann/json.hpp>
#include <string>
#include <string_view>
#include <vector>

#include "support/loopback_server.h"

namespace tevra::testing {

// Speech and chat services behind one loopback server, each under a root of
// its own, ROOT = baseURL/NAME/v1: chat/completions answers with the status
// and message content set for NAME, audio/transcriptions with what `speech`
// makes of the uploaded WAV. Every request is kept.
class LoopbackServices {
public:
    struct Reply {
        int status = 200;
        std::string body;
    };
    using SpeechAnswer = std::function<Reply(std::string_view wav)>;

    LoopbackServices();                      // running; speech answers 500 until told otherwise
    ~LoopbackServices() { server_.stop(); }  // before the handlers' state goes

    std::string root(const std::string& name) const {
        return server_.baseURL() + "/" + name + "/v1";
    }
    void chat(const std::string& name, int status, std::string content);
    void speech(SpeechAnswer answer);

    struct ChatRequest {
        std::string name;
        nlohmann::json body;
        std::string message(int i) const { return body.at("messages").at(i).at("content"); }
    };
    std::vector<ChatRequest> chatRequests() const;
    std::vector<std::string> speechRequests() const;  // the WAV files, in order

private:
    LoopbackServer server_;
    mutable std::mutex mutex_;
    std::map<std::string, Reply> chats_;
    SpeechAnswer speech_;
    std::vector<ChatRequest> chatRequests_;
    std::vector<std::string> speechRequests_;
};

}  // namespace tevra::testing
