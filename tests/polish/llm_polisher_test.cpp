#include "polish/llm_polisher.h"

#include <gtest/gtest.h>

#include <chrono>
#include <mutex>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

#include "polish/prompt_builder.h"
#include "stt/weft_errors.h"
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

std::string parse(const std::string& content) {
    return LLMPolisher::parseChatJSON(completion(content));
}

TEST(LLMPolisherReply, FenceCountsOnlyAtTheVeryStart) {
    EXPECT_EQ(parse("Here:\n```\ncode\n```"), "Here:\n```\ncode\n```");
    EXPECT_EQ(parse("Hello there\n```"), "Hello there\n```");
    EXPECT_EQ(parse("```json{\"a\":1}```"), "{\"a\":1}");
    EXPECT_EQ(parse("```c++\nx++;\n```"), "++\nx++;") << "the tag is letters only";
}

TEST(LLMPolisherReply, OnlyTheOutermostQuoteCharactersGo) {
    EXPECT_EQ(parse("He said \"hi\" to me"), "He said \"hi\" to me");
    EXPECT_EQ(parse("\"Yes\" and \"no\""), "Yes\" and \"no");
    EXPECT_EQ(parse("\" padded \""), " padded ") << "no trimming after the quotes go";
    // A combining mark fuses with the quote into another character.
    EXPECT_EQ(parse("\"\u0301Hello\""), "\"\u0301Hello\"");
}

TEST(LLMPolisherReply, ShapeOfTheBody) {
    EXPECT_EQ(LLMPolisher::parseChatJSON(R"({"choices":[{"message":{"role":"assistant"}}]})"), "");
    EXPECT_EQ(LLMPolisher::parseChatJSON(
                  R"({"id":"x","choices":[{"message":{"content":"a"}},{"message":{}}]})"),
              "a");
    for (const char* body : {
             "<html>busy</html>",
             R"({"choices":null})",
             R"({"choices":[{"text":"a"}]})",
             R"({"choices":[{"message":{"content":"a"}},{"delta":{}}]})",
             R"({"choices":[{"message":{"content":42}}]})",
         }) {
        EXPECT_THROW(LLMPolisher::parseChatJSON(body), DecodingError) << body;
    }
}

// A chat/completions service on loopback: it records every request and gives
// the answer the test has set.
class LLMPolisherServer : public ::testing::Test {
protected:
    struct Seen {
        std::string path;
        std::string authorization;
        std::string contentType;
        std::string body;
    };
    struct Answer {
        int status = 200;
        std::string body;
        bool stall = false;
    };

    void SetUp() override {
        server_.server().Post(".*", [this](const httplib::Request& req, httplib::Response& res) {
            server_.noteConnection(req);
            Answer answer;
            {
                std::lock_guard lock(mutex_);
                seen_.push_back({req.path, req.get_header_value("Authorization"),
                                 req.get_header_value("Content-Type"), req.body});
                answer = answer_;
            }
            if (answer.stall) {
                server_.stall(std::chrono::seconds(30));
            }
            res.status = answer.status;
            res.set_content(answer.body, "application/json");
        });
        server_.start();
    }

    // Stopped here, before the members that the handler uses are gone.
    void TearDown() override { server_.stop(); }

    std::shared_ptr<LLMPolisher> polisher(double timeout = LLMPolisher::kDefaultTimeout) {
        return std::make_shared<LLMPolisher>("groq", server_.baseURL() + "/openai/v1", "sk-test",
                                             "llama-3.3-70b", timeout);
    }

    void answer(Answer a) {
        std::lock_guard lock(mutex_);
        answer_ = std::move(a);
    }
    void reply(const json& content) { answer({200, completion(content)}); }

    std::vector<Seen> seen() {
        std::lock_guard lock(mutex_);
        return seen_;
    }

    // Checks one request against the protocol: the endpoint, both headers and a
    // body of exactly the model, the temperature and the two messages.
    static void expectChat(const Seen& s, const std::string& system, const std::string& user,
                           double temperature) {
        EXPECT_EQ(s.path, "/openai/v1/chat/completions");
        EXPECT_EQ(s.authorization, "Bearer sk-test");
        EXPECT_EQ(s.contentType, "application/json");
        const json body = json::parse(s.body);
        EXPECT_EQ(body.size(), 3u) << "model, temperature and messages, nothing else";
        EXPECT_EQ(body.at("model"), "llama-3.3-70b");
        EXPECT_TRUE(body.at("temperature").is_number_float());
        EXPECT_DOUBLE_EQ(body.at("temperature").get<double>(), temperature);
        const json messages = json::array({
            json{{"role", "system"}, {"content", system}},
            json{{"role", "user"}, {"content", user}},
        });
        EXPECT_EQ(body.at("messages"), messages);
    }

    tevra::testing::LoopbackServer server_;
    std::mutex mutex_;
    std::vector<Seen> seen_;
    Answer answer_;
};

TEST_F(LLMPolisherServer, EachOperationSendsItsPromptsAndTemperature) {
    reply("Done.");
    const auto p = polisher();
    const PolishContext context{"Mail", "org.gnome.Evolution", "Re: lunch", std::nullopt,
                                "friendly"};
    const std::vector<std::string> dictionary = {"Kubernetes", "Tevra"};
    const std::vector<Replacement> replacements = {{"gonna", "going to"}};
    const std::vector<Snippet> snippets = {{"my address", "1 Main Street"}};

    EXPECT_EQ(p->polish("um hello there", context, dictionary, replacements, snippets), "Done.");
    EXPECT_EQ(p->instruct("write a haiku", context, dictionary), "Done.");
    EXPECT_EQ(p->compose("Be brief.", "Summarise this."), "Done.");
    EXPECT_EQ(p->compose("Translate.", "Dzień dobry", 0.2), "Done.");

    const auto requests = seen();
    ASSERT_EQ(requests.size(), 4u);
    expectChat(requests[0], PromptBuilder::system(dictionary, replacements, snippets),
               PromptBuilder::user("um hello there", context), 0.2);
    expectChat(requests[1], PromptBuilder::instructSystem(dictionary),
               PromptBuilder::user("write a haiku", context), 0.4);
    expectChat(requests[2], "Be brief.", "Summarise this.", 0.3);
    expectChat(requests[3], "Translate.", "Dzień dobry", 0.2);
}

TEST_F(LLMPolisherServer, RepliesAreCleanedBeforeTheyAreTyped) {
    const struct {
        json content;
        std::string expected;
    } cases[] = {
        {"  Plain reply.\n", "Plain reply."},
        {"```markdown\nDear Anna,\nthanks.\n```", "Dear Anna,\nthanks."},
        {"```\nNo tag here\n```", "No tag here"},
        {"```text\nNever closed", "Never closed"},
        {"```\n\"Quoted inside\"\n```", "Quoted inside"},
        {"\"", "\""},
    };
    const auto p = polisher();
    for (const auto& c : cases) {
        reply(c.content);
        EXPECT_EQ(p->compose("s", "u"), c.expected) << c.content;
    }
}

TEST_F(LLMPolisherServer, NothingLeftToTypeIsAnEmptyResponse) {
    const auto p = polisher();
    for (const std::string& body : {completion("\"\""), completion(nullptr), completion("```\n```"),
                                    std::string(R"({"choices":[]})")}) {
        answer({200, body});
        EXPECT_THROW(p->compose("s", "u"), WeftEmptyResponse) << body;
    }
    answer({200, R"({"error":{"message":"overloaded"}})"});
    EXPECT_THROW(p->compose("s", "u"), DecodingError) << "a missing choices key";
}

TEST_F(LLMPolisherServer, RefusalsCarryTheStatusAndAreNotRetried) {
    const struct {
        int status;
        std::string text;
    } cases[] = {
        {401, "HTTP 401 — check your API key"},
        {429, "HTTP 429 — rate limited, try again shortly"},
        {500, "HTTP 500"},
    };
    const auto p = polisher();
    for (const auto& c : cases) {
        answer({c.status, completion("ignored")});
        try {
            p->compose("s", "u");
            ADD_FAILURE() << "no error for " << c.status;
        } catch (const WeftHTTPError& e) {
            EXPECT_EQ(e.status(), c.status);
            EXPECT_EQ(e.description(), c.text);
        }
    }
    EXPECT_EQ(seen().size(), 3u);
}

TEST_F(LLMPolisherServer, TransportFailuresPassThrough) {
    answer({200, completion("too late"), true});
    try {
        polisher(1.0)->compose("s", "u");
        ADD_FAILURE() << "no time-out";
    } catch (const HttpTransportError& e) {
        EXPECT_EQ(e.description(), "The request timed out.");
    }
    const LLMPolisher nobody(
        "groq", "http://127.0.0.1:" + std::to_string(testing::LoopbackServer::closedPort()), "k",
        "m");
    EXPECT_THROW(nobody.compose("s", "u"), HttpTransportError);
}

TEST_F(LLMPolisherServer, OneObjectKeepsItsConnectionAlive) {
    reply("ok");
    const auto p = polisher();
    EXPECT_EQ(p->compose("s", "first"), "ok");
    EXPECT_EQ(p->compose("s", "second"), "ok");
    EXPECT_EQ(seen().size(), 2u);
    EXPECT_EQ(server_.connectionPorts().size(), 1u);
}

}  // namespace
}  // namespace tevra
