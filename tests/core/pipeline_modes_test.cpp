#include <gtest/gtest.h>

#include "core/pipeline.h"
#include "polish/mode_defaults.h"
#include "polish/prompt_builder.h"
#include "polish/rules_polisher.h"
#include "stt/wav.h"
#include "stt/weft_errors.h"
#include "support/recording_backends.h"

namespace tevra {
namespace {

using testing::ScriptedPolisher;

std::string failure(const std::function<void()>& call) {
    try {
        call();
    } catch (const PipelineError& e) {
        return e.description();
    }
    return "(no PipelineError)";
}

class PipelineModesTest : public ::testing::Test {
protected:
    Pipeline make(std::vector<std::shared_ptr<const PolishBackend>> polishers,
                  WeftSettings settings = annAtAcme()) {
        return Pipeline(std::make_shared<TranscriptionRouter>(
                            std::vector<std::shared_ptr<const TranscriptionBackend>>{stt}),
                        std::move(polishers), store, std::move(settings));
    }
    static WeftSettings annAtAcme() {
        WeftSettings s;
        s.userFirstName = "Ann";
        s.userLastName = "Lee";
        s.userCompany = "Acme";
        s.signatureStyle = "full";
        return s;
    }

    std::shared_ptr<testing::ScriptedTranscriber> stt =
        testing::ScriptedTranscriber::returning("groq", "tell bob the invoice is late", "en");
    std::shared_ptr<testing::RecordingStore> store = std::make_shared<testing::RecordingStore>();
    const std::vector<int16_t> speech = std::vector<int16_t>(24000, 2000);
    const PolishContext mail{"Mail", "org.gnome.Evolution", "Re: invoice", std::nullopt, "warm"};
    const Mode email = ModeDefaults::seed().at(2);
};

TEST_F(PipelineModesTest, AVoiceComposesWithItsPromptAndSignsOff) {
    store->dictionaryWords = {"Acme"};
    store->replacementRules = {Replacement{"bob", "Bob"}};
    store->snippetList = {Snippet{"addr", "1 Main St"}};
    auto broken = ScriptedPolisher::failing("groq", WeftHTTPError(500));
    auto working = ScriptedPolisher::returning("openai", "Hi Bob,\nthe invoice is late.");

    const auto result = make({broken, working}).runMode(email, speech, 16000, mail);
    EXPECT_EQ(result.polished, "Hi Bob,\nthe invoice is late.\n\nAnn Lee\nAcme");
    EXPECT_EQ(result.raw, "tell bob the invoice is late");
    EXPECT_EQ(result.polishBackend, "mode:Email");
    const auto asked = working->composed();
    ASSERT_EQ(asked.size(), 1u);
    EXPECT_EQ(asked[0].system,
              PromptBuilder::system(email, store->dictionaryWords, store->replacementRules,
                                    store->snippetList, "Ann Lee of Acme"));
    EXPECT_EQ(asked[0].user, PromptBuilder::user("tell bob the invoice is late", mail));
    EXPECT_DOUBLE_EQ(asked[0].temperature, 0.3);
    ASSERT_EQ(store->rows().size(), 1u);
    EXPECT_EQ(store->rows()[0].durationMs, 1500);
    EXPECT_EQ(store->rows()[0].polishBackend, "mode:Email");

    // The sign-off follows the voice's switch and the user's details; the
    // switch's own text is never printed.
    auto model = ScriptedPolisher::returning("groq", "Body.");
    Mode marked = email;
    marked.signature = "Sent from my phone";
    EXPECT_EQ(make({model}).runMode(marked, speech, 16000, {}).polished, "Body.\n\nAnn Lee\nAcme");
    marked.signature = "";
    EXPECT_EQ(make({model}).runMode(marked, speech, 16000, {}).polished, "Body.");
    WeftSettings nobody;
    nobody.signatureStyle = "full";
    EXPECT_EQ(make({model}, nobody).runMode(email, speech, 16000, {}).polished, "Body.");
}

TEST_F(PipelineModesTest, EncodedAudioAndScreenTextPaths) {
    auto model = ScriptedPolisher::returning("groq", "Clean text.");
    // Encoded audio: no silence test and no history.
    const auto fromWav =
        make({model}).runModeOnWav(email, WAV::data(std::vector<int16_t>(1600), 16000), mail);
    EXPECT_EQ(fromWav.polished, "Clean text.\n\nAnn Lee\nAcme");
    EXPECT_EQ(fromWav.polishBackend, "mode:Email");
    EXPECT_TRUE(store->rows().empty());

    // Text handed in is not transcribed, and counts as read off the screen.
    const auto fromText = make({model}).runModeOnText(ModeDefaults::seed().at(3), " 0rder ", mail);
    EXPECT_EQ(stt->calls().size(), 1u);
    EXPECT_EQ(model->composed().back().user, PromptBuilder::user(" 0rder ", mail));
    EXPECT_EQ(fromText.raw, " 0rder ");
    EXPECT_EQ(fromText.language, "zh") << "the voice's output language";
    EXPECT_EQ(fromText.sttBackend, "ocr");
    EXPECT_EQ(fromText.polishBackend, "mode:Formal message — 中文");
    ASSERT_EQ(store->rows().size(), 1u);
    EXPECT_EQ(store->rows()[0].sttBackend, "ocr");
    EXPECT_EQ(store->rows()[0].durationMs, 0);
}

TEST_F(PipelineModesTest, NearSilenceStopsEverySpokenPathBeforeTheNetwork) {
    const Pipeline p = make({ScriptedPolisher::returning("groq", "never")});
    const std::vector<int16_t> quiet(16000, 119);
    const std::string nearSilent = "no speech detected (audio near-silent)";
    EXPECT_EQ(failure([&] { p.runMode(email, quiet, 16000, {}); }), nearSilent);
    EXPECT_EQ(failure([&] { p.instruct(quiet, 16000, {}); }), nearSilent);
    EXPECT_EQ(failure([&] { p.dictateToTranslate(quiet, 16000, "de", {}); }), nearSilent);
    EXPECT_TRUE(stt->calls().empty());
}

TEST_F(PipelineModesTest, InstructionsAndTranslationsNeedAModelAndHaveNoRuleFallback) {
    store->dictionaryWords = {"Tevra"};
    WeftSettings off = annAtAcme();
    off.polishEnabled = false;
    auto model = ScriptedPolisher::returning("openai", "A haiku.");
    const auto result =
        make({std::make_shared<RulesPolisher>(), model}, off).instruct(speech, 16000, mail);
    EXPECT_EQ(result.polished, "A haiku.") << "no sign-off on an instruction";
    EXPECT_EQ(result.polishBackend, "instruct:openai");
    EXPECT_EQ(model->instructed(), std::vector<std::string>{"tell bob the invoice is late"});
    EXPECT_EQ(model->lastDictionary(), store->dictionaryWords);
    make({model}).instruct(WAV::data(speech, 16000), 777, {});
    ASSERT_EQ(store->rows().size(), 2u);
    EXPECT_EQ(store->rows()[1].durationMs, 777);

    const std::string noModel = "command failed: no LLM backend available";
    EXPECT_EQ(failure([&] { make({}).instruct(speech, 16000, {}); }), noModel);
    EXPECT_EQ(failure([&] { make({}).translate("Dzień dobry", "en"); }), noModel);
    EXPECT_EQ(failure([&] { make({}).dictateToTranslate(speech, 16000, "de", mail); }), noModel);
    EXPECT_EQ(failure([&] { make({model}).translate(" \n\t ", "en"); }),
              "transcription came back empty");
    auto broken = ScriptedPolisher::failing("groq", WeftHTTPError(503));
    EXPECT_EQ(failure([&] {
                  make({broken, std::make_shared<RulesPolisher>()}).instruct(speech, 16000, {});
              }),
              "command failed: rules cannot execute instructions (needs an LLM)");
    EXPECT_EQ(
        failure([&] {
            make({ScriptedPolisher::failing("a", WeftHTTPError(401)), broken}).translate("x", "en");
        }),
        "command failed: HTTP 503");
    EXPECT_EQ(store->rows().size(), 2u) << "nothing failed is stored";
}

TEST_F(PipelineModesTest, DictationEndsInATranslation) {
    auto model = ScriptedPolisher::returning("groq", "Sag Bob, die Rechnung ist spät.");
    const auto result = make({model}).dictateToTranslate(speech, 16000, "de", mail);
    EXPECT_EQ(result.raw, "tell bob the invoice is late");
    EXPECT_EQ(result.polished, "Sag Bob, die Rechnung ist spät.");
    EXPECT_EQ(result.polishBackend, "translate:de");
    EXPECT_EQ(model->composed().at(0).system, PromptBuilder::translateSystem("de"));
    ASSERT_EQ(store->rows().size(), 1u);
    EXPECT_EQ(store->rows()[0].polishBackend, "translate:de");
    auto broken = ScriptedPolisher::failing("openai", WeftHTTPError(503));
    EXPECT_EQ(make({broken, model}).translate("Dzień dobry", "de"),
              "Sag Bob, die Rechnung ist spät.");
    EXPECT_EQ(store->rows().size(), 1u) << "a translation alone is not history";
}

}  // namespace
}  // namespace tevra
