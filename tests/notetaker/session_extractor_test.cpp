// Extraction over the wire: the real chat client against loopback services,
// and what the model's replies, good and bad, come to.
#include "notetaker/session_extractor.h"

#include <gtest/gtest.h>

#include "notetaker/capture_prompt.h"
#include "polish/llm_polisher.h"
#include "support/loopback_services.h"

namespace tevra {
namespace {

constexpr double kNow = 1783252980;  // Sunday, 5 July 2026
const std::string kTranscript = "Me: I'll call the bank.\nThem: Send me the Q3 report.";

class ExtractionOverTheWire : public ::testing::Test {
protected:
    SessionExtractor extractor(std::vector<std::string> names = {"first", "second"}) {
        std::vector<std::shared_ptr<const PolishBackend>> polishers;
        for (const auto& name : names) {
            polishers.push_back(std::make_shared<LLMPolisher>(name, services.root(name), "k", "m"));
        }
        return SessionExtractor(std::move(polishers));
    }

    // The items of one reply from the first service, or the failure's text.
    std::variant<std::vector<CaptureItem>, std::string> extract(const std::string& reply) {
        services.chat("first", 200, reply);
        try {
            return extractor().extract(kTranscript, kNow);
        } catch (const ExtractionFailed& e) {
            return e.description();
        }
    }
    std::string lastAsked() { return services.chatRequests().back().name; }

    testing::LoopbackServices services;
};

TEST_F(ExtractionOverTheWire, AnyStructuredReplyEndsTheSearchAndProseHandsOver) {
    const std::string note = R"({"kind":"note","title":"Anna moves in May"})";
    services.chat("second", 200, "[" + note + "," + note + "]");
    const struct {
        std::string reply;
        size_t items;  // or, with SIZE_MAX, the second service's answer
    } cases[] = {
        {"```json\n{\"items\":[" + note + "]}\n```", 1},
        {"Here is what I found:\n```json\n[" + note + "]\n```\nAnything else?", 1},
        {"Sure! {\"items\": [" + note + "]} Hope this helps.", 1},
        {"{}", 0},
        {R"({"items":"none"})", 0},
        {"[]", 0},
        {R"({"items":[1,"two",null,[3],)" + note + "]}", 1},
        {"42", SIZE_MAX},
        {"\"just a string\"", SIZE_MAX},
        {"I found nothing worth keeping.", SIZE_MAX},
        {"{\"items\": [", SIZE_MAX},
    };
    for (const auto& c : cases) {
        const auto result = extract(c.reply);
        ASSERT_TRUE(std::holds_alternative<std::vector<CaptureItem>>(result)) << c.reply;
        const auto& items = std::get<std::vector<CaptureItem>>(result);
        EXPECT_EQ(items.size(), c.items == SIZE_MAX ? 1u : c.items) << c.reply;
        const bool handedOver = lastAsked() == "second";
        EXPECT_EQ(handedOver, c.items == SIZE_MAX) << c.reply;
    }
}

TEST_F(ExtractionOverTheWire, EachItemIsReadTolerantlyAndJudgedByItsConfidence) {
    const auto item = [](std::string fields) {
        return R"({"kind":"task","title":"Pay rent",)" + fields + "}";
    };
    const CaptureItem base{.kind = CaptureKind::task,
                           .title = "Pay rent",
                           .speaker = Speaker::unknown,
                           .owner = Speaker::me,
                           .confidence = 0.7};
    auto with = [&](auto change) {
        CaptureItem i = base;
        change(i);
        return std::optional(i);
    };
    const struct {
        std::string json;
        std::optional<CaptureItem> expected;
    } cases[] = {
        {item(R"("confidence":"0.9")"), with([](auto& i) { i.confidence = 0.9; })},
        {item(R"("confidence":"high")"), base},
        {item(R"("confidence":1.7)"), with([](auto& i) { i.confidence = 1; })},
        {item(R"("confidence":-1)"), std::nullopt},
        {item(R"("confidence":0.5)"), std::nullopt},
        {item(R"("confidence":0.55)"), with([](auto& i) { i.confidence = 0.55; })},
        {item(R"("speaker":"Them")"), with([](auto& i) { i.speaker = i.owner = Speaker::them; })},
        {item(R"("speaker":"them","owner":"me")"),
         with([](auto& i) { i.speaker = Speaker::them; })},
        {item(R"("speaker":"boss")"), base},
        {item(R"("owner":"unknown")"), with([](auto& i) { i.owner = Speaker::unknown; })},
        {item(R"("detail":"  \t","when":null,"evidence":7)"), base},
        {item(R"("detail":" by card ","evidence":"pay the rent")"), with([](auto& i) {
             i.detail = " by card ";
             i.evidence = "pay the rent";
         })},
        {item(R"("when":"the 30th","due":"2026-02-30","time":"25:00")"),
         with([](auto& i) { i.whenText = "the 30th"; })},
        {item(R"("due":"2026-07-10","time":"09:30")"), with([](auto& i) {
             i.dueISO = "2026-07-10";
             i.dueTime = "09:30";
         })},
        {item(R"("due":"2026-7-10","time":"9:30pm")"), base},
        {item(R"("due":"2026-7-010","time":"10:000")"), base},  // strict ICU takes these
        {R"({"kind":"TASK","title":"  Pay rent\n"})", base},
        {R"({"kind":" task","title":"Pay rent"})", std::nullopt},
        {R"({"kind":"reminder","title":"Pay rent"})", std::nullopt},
        {R"({"kind":"task","title":" \n"})", std::nullopt},
        {R"({"kind":"task"})", std::nullopt},
    };
    for (const auto& c : cases) {
        const auto result = extract("{\"items\":[" + c.json + "]}");
        const auto& items = std::get<std::vector<CaptureItem>>(result);
        EXPECT_EQ(items.empty() ? std::nullopt : std::optional(items[0]), c.expected) << c.json;
    }
}

TEST_F(ExtractionOverTheWire, RepeatsMergeIntoTheFirstSeenWithoutMixingKinds) {
    const auto result = extract(R"({"items":[
      {"kind":"task","title":"Call the bank","confidence":0.6,"evidence":"call the bank"},
      {"kind":"task","title":"call the bank!","speaker":"them","owner":"them","confidence":0.9,
       "due":"2026-07-06","evidence":""},
      {"kind":"task","title":"Send the Q3 report","confidence":0.8},
      {"kind":"task","title":"Send Q3 report","when":"by Friday","confidence":0.7},
      {"kind":"task","title":"Pay rent","confidence":0.9},
      {"kind":"task","title":"Pay tax","confidence":0.9},
      {"kind":"note","title":"alpha beta gamma delta","confidence":0.9},
      {"kind":"note","title":"alpha beta gamma epsilon","detail":"merged at 0.6","confidence":0.6},
      {"kind":"note","title":"one two three","confidence":0.9},
      {"kind":"note","title":"one two four","confidence":0.9},
      {"kind":"note","title":"Go to it","confidence":0.9},
      {"kind":"note","title":"Go at it","confidence":0.9},
      {"kind":"event","title":"Concert","confidence":0.9},
      {"kind":"task","title":"Concert","confidence":0.9},
      {"kind":"note","title":"vague idea","confidence":0.3},
      {"kind":"note","title":"Vague idea.","confidence":0.3}
    ]})");
    std::vector<std::string> titles;
    for (const auto& item : std::get<std::vector<CaptureItem>>(result)) {
        titles.push_back(item.title);
    }
    EXPECT_EQ(titles, (std::vector<std::string>{"call the bank!", "Send the Q3 report", "Pay rent",
                                                "Pay tax", "alpha beta gamma delta",
                                                "one two three", "one two four", "Go to it",
                                                "Go at it", "Concert", "Concert"}));
    const auto& items = std::get<std::vector<CaptureItem>>(result);
    // The surer mention leads; the other lends what it knows.
    EXPECT_EQ(items[0].owner, Speaker::them);
    EXPECT_EQ(items[0].dueISO, "2026-07-06");
    EXPECT_EQ(items[0].evidence, "call the bank");
    EXPECT_EQ(items[0].confidence, 0.9);
    EXPECT_EQ(items[1].whenText, "by Friday");
    EXPECT_EQ(items[4].detail, "merged at 0.6");
}

TEST_F(ExtractionOverTheWire, WhenEveryBackendFailsTheLastReasonIsKept) {
    services.chat("second", 200, "Sorry, I can't help with that.");
    EXPECT_EQ(std::get<std::string>(extract("")), "extraction failed: non-JSON reply from second");
    const auto asked = services.chatRequests().back();
    EXPECT_EQ(asked.body["temperature"], 0.0);
    EXPECT_EQ(asked.message(0), CapturePrompt::system(kNow));
    EXPECT_EQ(asked.message(1), kTranscript);

    services.chat("second", 500, "");
    EXPECT_EQ(std::get<std::string>(extract("no JSON here")), "extraction failed: HTTP 500");
    try {
        SessionExtractor({}).extract(kTranscript, kNow);
        ADD_FAILURE() << "no backend, yet no failure";
    } catch (const ExtractionFailed& e) {
        EXPECT_EQ(e.reason, "no LLM backend available");
    }
}

}  // namespace
}  // namespace tevra
