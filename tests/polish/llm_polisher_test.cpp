#include "polish/llm_polisher.h"

#include <gtest/gtest.h>

#include <mutex>
#include <nlohmann/json.hpp>

#include "base/http_errors.h"
#include "polish/prompt_builder.h"
#include "support/loopback_server.h"

namespace tevra {
namespace {

using nlohmann::json;

std::string completion(const json& content) {
    return json{
        {"choices", json::array({{{"message", {{"role", "assistant"}, {"content", content}}},
                                  {"finish_reason", "stop"}}})}}
        .dump();
}

// A chat/completions service on loopback that records every request and gives
// the answer the test has set.
class LLMPolisherTest : public ::testing::Test {
protected:
    struct Seen {
        std::string path, authorization, contentType, body;
    };
    struct Answer {
        int status = 200;
        std::string body;
        bool stall = false;
    };

    void SetUp() override {
        server.server().Post(".*", [this](const httplib::Request& req, httplib::Response& res) {
            server.noteConnection(req);
            Answer a;
            {
                std::lock_guard lock(mutex);
                seen.push_back({req.path, req.get_header_value("Authorization"),
                                req.get_header_value("Content-Type"), req.body});
                a = answer;
            }
            if (a.stall) {
                server.stall(std::chrono::seconds(30));
            }
            res.status = a.status;
            res.set_content(a.body, "application/json");
        });
        server.start();
    }
    // Stopped before the members that the handler uses are gone.
    void TearDown() override { server.stop(); }

    LLMPolisher polisher(double timeout = LLMPolisher::kDefaultTimeout) {
        return LLMPolisher("groq", server.baseURL() + "/openai/v1", "sk-test", "llama-3.3-70b",
                           timeout);
    }
    void set(Answer a) {
        std::lock_guard lock(mutex);
        answer = std::move(a);
    }

    // The endpoint, both headers and a body of exactly the model, the
    // temperature and the two messages.
    static void expectChat(const Seen& s, const std::string& system, const std::string& user,
                           double temperature) {
        EXPECT_EQ(s.path, "/openai/v1/chat/completions");
        EXPECT_EQ(s.authorization, "Bearer sk-test");
        EXPECT_EQ(s.contentType, "application/json");
        const json body = json::parse(s.body);
        EXPECT_EQ(body.size(), 3u) << s.body;
        EXPECT_EQ(body.at("model"), "llama-3.3-70b");
        EXPECT_TRUE(body.at("temperature").is_number_float());
        EXPECT_DOUBLE_EQ(body.at("temperature").get<double>(), temperature);
        EXPECT_EQ(body.at("messages"), json::array({{{"role", "system"}, {"content", system}},
                                                    {{"role", "user"}, {"content", user}}}));
    }

    testing::LoopbackServer server;
    std::mutex mutex;
    std::vector<Seen> seen;
    Answer answer;
};

TEST_F(LLMPolisherTest, EachOperationSendsItsPromptsAndTemperatureOnOneConnection) {
    set({200, completion("Done.")});
    const auto p = polisher();
    const PolishContext context{"Mail", "org.gnome.Evolution", "Re: lunch", std::nullopt,
                                "friendly"};
    const std::vector<std::string> dictionary = {"Kubernetes", "Tevra"};
    const std::vector<Replacement> replacements = {{"gonna", "going to"}};
    const std::vector<Snippet> snippets = {{"my address", "1 Main Street"}};

    EXPECT_EQ(p.polish("um hello there", context, dictionary, replacements, snippets), "Done.");
    EXPECT_EQ(p.instruct("write a haiku", context, dictionary), "Done.");
    EXPECT_EQ(p.compose("Be brief.", "Summarise this."), "Done.");
    EXPECT_EQ(p.compose("Translate.", "Dzień dobry", 0.2), "Done.");

    ASSERT_EQ(seen.size(), 4u);
    expectChat(seen[0], PromptBuilder::system(dictionary, replacements, snippets),
               PromptBuilder::user("um hello there", context), 0.2);
    expectChat(seen[1], PromptBuilder::instructSystem(dictionary),
               PromptBuilder::user("write a haiku", context), 0.4);
    expectChat(seen[2], "Be brief.", "Summarise this.", 0.3);
    expectChat(seen[3], "Translate.", "Dzień dobry", 0.2);
    EXPECT_EQ(server.connectionPorts().size(), 1u) << "the connection is kept alive";
}

TEST_F(LLMPolisherTest, RepliesAreCleanedOfFencesAndOuterQuotes) {
    const std::pair<json, std::string> cases[] = {
        {"  Plain reply.\n", "Plain reply."},
        {"```markdown\nDear Anna,\nthanks.\n```", "Dear Anna,\nthanks."},
        {"```\nNo tag here\n```", "No tag here"},
        {"```text\nNever closed", "Never closed"},
        {"```\n\"Quoted inside\"\n```", "Quoted inside"},
        {"```json{\"a\":1}```", "{\"a\":1}"},
        {"```c++\nx++;\n```", "++\nx++;"},                   // the tag is letters only
        {"Here:\n```\ncode\n```", "Here:\n```\ncode\n```"},  // a fence counts only at the start
        {"\"", "\""},
        {"He said \"hi\" to me", "He said \"hi\" to me"},
        {"\"Yes\" and \"no\"", "Yes\" and \"no"},
        {"\" padded \"", " padded "},            // no trimming after the quotes go
        {"\"\u0301Hello\"", "\"\u0301Hello\""},  // a combining mark fuses with the quote
    };
    const auto p = polisher();
    for (const auto& [content, expected] : cases) {
        set({200, completion(content)});
        EXPECT_EQ(p.compose("s", "u"), expected) << content;
    }
    EXPECT_EQ(LLMPolisher::parseChatJSON(
                  R"({"id":"x","choices":[{"message":{"content":"a"}},{"message":{}}]})"),
              "a");
}

TEST_F(LLMPolisherTest, EmptyOrMalformedRepliesAndRefusalsFail) {
    const auto p = polisher();
    for (const std::string& body : {completion("\"\""), completion(nullptr), completion("```\n```"),
                                    std::string(R"({"choices":[]})")}) {
        set({200, body});
        EXPECT_THROW(p.compose("s", "u"), WeftEmptyResponse) << body;
    }
    for (const char* body :
         {R"({"error":{"message":"overloaded"}})", "<html>busy</html>", R"({"choices":null})",
          R"({"choices":[{"text":"a"}]})", R"({"choices":[{"message":{"content":42}}]})",
          R"({"choices":[{"message":{"content":"a"}},{"delta":{}}]})"}) {
        set({200, body});
        EXPECT_THROW(p.compose("s", "u"), DecodingError) << body;
    }
    for (const auto& [status, text] : std::vector<std::pair<int, std::string>>{
             {401, "HTTP 401 — check your API key"},
             {429, "HTTP 429 — rate limited, try again shortly"},
             {500, "HTTP 500"}}) {
        set({status, completion("ignored")});
        try {
            p.compose("s", "u");
            ADD_FAILURE() << "no error for " << status;
        } catch (const WeftHTTPError& e) {
            EXPECT_EQ(e.description(), text);
        }
    }
    EXPECT_EQ(seen.size(), 13u) << "nothing is retried";
}

TEST_F(LLMPolisherTest, TransportFailuresPassThrough) {
    set({200, completion("too late"), true});
    try {
        polisher(1.0).compose("s", "u");
        ADD_FAILURE() << "no time-out";
    } catch (const HttpTransportError& e) {
        EXPECT_EQ(e.description(), "The request timed out.");
    }
    const LLMPolisher nobody(
        "groq", "http://127.0.0.1:" + std::to_string(testing::LoopbackServer::closedPort()), "k",
        "m");
    EXPECT_THROW(nobody.compose("s", "u"), HttpTransportError);
}

}  // namespace
}  // namespace tevra
