// The orchestrator's actions that need no recording: the two translations,
// the screenshot voice, the clipboard queue, and the selection tool's text on
// its way into the history.
#include "app/app_delegate_rig.h"
#include "base/text.h"

namespace tevra {
namespace {

using namespace tevra::testing;

class SideActionsTest : public AppDelegateTest {
protected:
    // What the user sees, hears and gets pasted, in order; then the
    // selection tool's history row, if one was written.
    std::vector<std::string> story() const {
        std::vector<std::string> out;
        for (const std::string& entry : journal->names()) {
            for (const char* prefix : {"hud ", "play ", "setText ", "pill "}) {
                if (entry.starts_with(prefix)) {
                    out.push_back(entry);
                }
            }
        }
        const auto& store = app->runtime()->store();
        if (const auto rows = store ? store->recent(1) : std::vector<HistoryRow>{};
            !rows.empty() && rows[0].app == "Screen selection") {
            out.push_back("row " + rows[0].polishBackend + " " + std::to_string(rows[0].words) +
                          ": " + rows[0].polished);
        }
        return out;
    }

    void relaunch() {
        launch();
        journal->entries.clear();
        logs.clear();
    }

    void setClipboard(const std::string& text) {
        clipboard->items = {ClipboardData{{{"text/plain", text}}}};
    }
};

TEST_F(SideActionsTest, EachActionReportsItsOutcome) {
    const std::string raw = "Quartrly  numbers\nup";  // as the selection tool read it
    std::string reason = "quota exceeded ";           // a failure, cut at 60 characters, not bytes
    for (int i = 0; i < 50; ++i) {
        reason += "\u00e9";
    }
    auto answer = [&](std::string text) { model = [text](const std::string&) { return text; }; };
    // A language backend that breaks beyond what the clean-up's fallbacks
    // catch: the pipeline call itself fails.
    auto breakTheModel = [&] { model = [](const std::string&) -> std::string { throw 42; }; };
    const std::string copied = "hud error " + std::string(AppDelegate::copiedMessage);
    struct Case {
        const char* name;
        std::function<void()> act;
        std::vector<std::string> story;
        std::string log = "";  // a line the log must hold
    };
    const std::vector<Case> cases = {
        {"the selection, translated in place",
         [&] { focusedApp->selected = "bonjour", answer("hello"), app->translateSelection(); },
         {"setText bonjour", "hud processing", "play start", "setText hello", "play done",
          "pill show", "hud done"},
         "translate selection \u2192 en: 5 chars"},
        {"nothing selected",
         [&] { app->translateSelection(); },
         {"hud error select text first, then press Control_R+7"}},
        {"the clipboard, translated, blanks and all",
         [&] { setClipboard(" Guten Tag\n"), answer("Good day"), app->translateClipboardAction(); },
         {"hud processing", "play start", "setText Good day", "play done", "pill show", "hud done"},
         "translate clipboard \u2192 en: 8 chars"},
        {"a blank clipboard",
         [&] { setClipboard(" \n"), app->translateClipboardAction(); },
         {"hud error clipboard is empty \u2014 copy text first"}},
        {"a translation that fails",
         [&] {
             setClipboard("Guten Tag");
             model = [&](const std::string&) -> std::string { throw MessageError(reason); };
             app->translateClipboardAction();
         },
         {"hud processing", "play start",
          "hud error translate failed: " + text::prefixCharacters("command failed: " + reason, 60),
          "play fail", "pill show"}},
        {"no translation during a capture",
         [&] {
             focusedApp->selected = "bonjour", setClipboard("Guten Tag"), app->startSlot(0);
             app->translateSelection(), app->translateClipboardAction(), app->cancelCapture();
         },
         {"pill startRecording", "pill finishRecording"}},
        {"the screenshot voice, in a password field too",
         [&] {
             secure->active = true, region->writes = "png", lines->lines = {"Q3", "numbers"};
             answer("Q3 numbers."), app->startSlot(5);
         },
         {"hud hide", "hud processing", "play start", "setText Q3 numbers.", copied, "play done"},
         "OCR: 2 lines, 10 chars"},
        {"a region given up",
         [&] { app->startSlot(5); },
         {"hud hide", "hud error screenshot cancelled"},
         "OCR failed: screenshot cancelled"},
        {"the screenshot voice fails",
         [&] { region->writes = "png", lines->lines = {"Q3"}, breakTheModel(), app->startSlot(5); },
         {"hud hide", "hud processing", "play start", "hud error unknown error", "play fail"}},
        {"a selection repaired by the screenshot voice",
         [&] { answer("Quarterly numbers up"), selectionTool->onCopied(raw); },
         {"setText Quarterly numbers up", "pill reload",
          "row select+repair 3: Quarterly numbers up"}},
        {"a blank repair keeps the selection",
         [&] { answer(" \n"), selectionTool->onCopied(raw); },
         {"pill reload", "row select 2: " + raw}},
        {"a failing repair keeps the selection",
         [&] { breakTheModel(), selectionTool->onCopied(raw); },
         {"pill reload", "row select 2: " + raw},
         "selection repair failed, keeping raw: unknown error"},
        {"no enabled screenshot voice: the selection as it is",
         [&] {
             Mode voice = *app->runtime()->store()->mode(5);
             voice.enabled = false;
             app->runtime()->store()->saveMode(voice);
             selectionTool->onCopied(raw);
         },
         {"pill reload", "row select 2: " + raw}},
        {"no history: the selection is dropped",
         [&] {
             TearDown();
             std::filesystem::remove_all(data.path());
             std::filesystem::create_directories(data / "weft.sqlite/inside");
             relaunch();
             selectionTool->onCopied(raw);
         },
         {"pill reload"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TearDown();
        std::filesystem::remove_all(data.path());
        std::filesystem::create_directories(data.path());
        secure->active = false;
        region->writes.reset();
        focusedApp->selected.reset();
        relaunch();
        c.act();
        settle();
        EXPECT_EQ(story(), c.story);
        if (!c.log.empty()) {
            EXPECT_THAT(logs, Contains(c.log));
        }
    }
}

TEST_F(SideActionsTest, TheClipboardQueueGathersAndPastesInEitherMode) {
    focus->front = FrontApplication{"Firefox", "firefox", 7, 9};
    relaunch();
    app->clipStackAdd();
    setClipboard("one");
    app->clipStackAdd();
    app->clipStackAdd();
    app->startSlot(0);  // the queue's keys work during a capture
    setClipboard("two\n");
    app->clipStackAdd();
    app->cancelCapture();
    settle();
    ASSERT_EQ(app->clipQueue().count(), 2u);
    EXPECT_EQ(app->clipQueue().items()[0].app, "Firefox");
    app->clipPaste();
    settle();
    app->clipPaste();
    app->clipMode();
    EXPECT_THAT(story(),
                ElementsAre("hud error Nothing on the clipboard", "play done",
                            "hud error Queued 1 \u00b7 All at once", "hud error Already queued",
                            "pill startRecording", "play done",
                            "hud error Queued 2 \u00b7 All at once", "pill finishRecording",
                            "setText one\ntwo\n", "hud error Pasted \u00b7 queue cleared",
                            "hud error Queue is empty", "hud error Paste mode: One by one"));

    // One by one, with the paste refused: the notice comes all the same, and
    // the queue has given up its oldest text.
    journal->entries.clear();
    keys->available = false;
    for (const char* text : {"a", "b"}) {
        setClipboard(text);
        app->clipStackAdd();
    }
    app->clipPaste();
    settle();
    EXPECT_THAT(hudCalls(), ElementsAre("hud error Queued 1 \u00b7 One by one",
                                        "hud error Queued 2 \u00b7 One by one",
                                        "hud error " + std::string(AppDelegate::copiedMessage),
                                        "hud error Pasted \u00b7 1 left"));
    EXPECT_EQ(app->clipQueue().items().front().text, "b");
}

}  // namespace
}  // namespace tevra
