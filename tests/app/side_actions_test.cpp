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
    // What the user sees, hears and gets pasted, in order.
    std::vector<std::string> story() const {
        std::vector<std::string> out;
        for (const std::string& entry : journal->names()) {
            for (const char* prefix : {"hud ", "play ", "setText ", "pill "}) {
                if (entry.starts_with(prefix)) {
                    out.push_back(entry);
                }
            }
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

    // A language backend that breaks down beyond what the clean-up's
    // fallbacks catch: the pipeline call itself fails.
    void breakTheModel() {
        model = [](const std::string&) -> std::string { throw 42; };
    }
};

const std::string kLongReason = "quota exceeded \u2014 " + [] {
    std::string accents;
    for (int i = 0; i < 40; ++i) {
        accents += "\u00e9";
    }
    return accents;
}();

TEST_F(SideActionsTest, EachActionReportsItsOutcomeOnTheHud) {
    struct Case {
        const char* name;
        std::function<void()> act;
        std::vector<std::string> story;
        std::string log = "";  // a line the log must hold; empty: none asked for
    };
    const std::string copied = AppDelegate::copiedMessage;
    const std::vector<Case> cases = {
        {"the selection, translated in place",
         [&] {
             focusedApp->selected = "bonjour";
             model = [](const std::string&) { return std::string("hello"); };
             app->translateSelection();
         },
         {"setText bonjour", "hud processing", "play start", "setText hello", "play done",
          "pill show", "hud done"},
         "translate selection \u2192 en: 5 chars"},
        {"nothing selected",
         [&] { app->translateSelection(); },
         {"hud error select text first, then press Control_R+7"}},
        {"the clipboard, translated",
         [&] {
             setClipboard(" Guten Tag\n");
             model = [](const std::string& text) { return "[" + text + "]"; };
             app->translateClipboardAction();
         },
         {"hud processing", "play start", "setText [ Guten Tag\n]", "play done", "pill show",
          "hud done"},
         "translate clipboard \u2192 en: 13 chars"},
        {"a blank clipboard",
         [&] { setClipboard(" \n"), app->translateClipboardAction(); },
         {"hud error clipboard is empty \u2014 copy text first"}},
        {"a translation that fails says why in 60 characters",
         [&] {
             setClipboard("Guten Tag");
             model = [](const std::string&) -> std::string { throw MessageError(kLongReason); };
             app->translateClipboardAction();
         },
         {"hud processing", "play start",
          "hud error translate failed: " +
              text::prefixCharacters("command failed: " + kLongReason, 60),
          "play fail", "pill show"}},
        {"a translation is refused during a capture",
         [&] {
             focusedApp->selected = "bonjour";
             setClipboard("Guten Tag");
             app->startSlot(0);
             app->translateSelection();
             app->translateClipboardAction();
             app->cancelCapture();
         },
         {"pill startRecording", "pill finishRecording"}},
        {"the screenshot voice reads a region, in a password field too",
         [&] {
             secure->active = true;
             region->writes = "png";
             lines->lines = {"Quarterly", "numbers"};
             model = [](const std::string&) { return std::string("Quarterly numbers."); };
             app->startSlot(5);
         },
         {"hud hide", "hud processing", "play start", "setText Quarterly numbers.",
          "hud error " + copied, "play done"},
         "OCR: 2 lines, 17 chars"},
        {"a region given up",
         [&] { app->startSlot(5); },
         {"hud hide", "hud error screenshot cancelled"},
         "OCR failed: screenshot cancelled"},
        {"the screenshot voice's clean-up fails",
         [&] {
             region->writes = "png";
             lines->lines = {"Quarterly"};
             breakTheModel();
             app->startSlot(5);
         },
         {"hud hide", "hud processing", "play start", "hud error unknown error", "play fail"}},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TearDown();
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

TEST_F(SideActionsTest, TheSelectionToolsTextGoesIntoTheHistoryRepairedByTheScreenshotVoice) {
    enum Setup { noStore, voiceDisabled, repaired, repairBlank, repairFails };
    struct Case {
        const char* name;
        Setup setup;
        std::vector<std::string> story;
        std::string polished, polishBackend;
    };
    const std::string raw = "Quartrly  numbers\nup";
    const std::vector<Case> cases = {
        {"without a history", noStore, {"pill reload"}, "", ""},
        {"without an enabled screenshot voice", voiceDisabled, {"pill reload"}, raw, "select"},
        {"repaired, pasted over the selection",
         repaired,
         {"setText Quarterly numbers up", "pill reload"},
         "Quarterly numbers up",
         "select+repair"},
        {"a blank repair keeps the text", repairBlank, {"pill reload"}, raw, "select"},
        {"a failing repair keeps the text", repairFails, {"pill reload"}, raw, "select"},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        TearDown();
        std::filesystem::remove_all(data.path());
        std::filesystem::create_directories(c.setup == noStore ? data / "weft.sqlite/inside"
                                                               : data.path());
        model = [&c](const std::string&) {
            return std::string(c.setup == repairBlank ? " \n" : "Quarterly numbers up");
        };
        relaunch();
        const auto& store = app->runtime()->store();
        if (c.setup == voiceDisabled) {
            Mode screenshot = *store->mode(5);
            screenshot.enabled = false;
            store->saveMode(screenshot);
        } else if (c.setup == repairFails) {
            breakTheModel();
        }
        selectionTool->onCopied(raw);
        settle();
        EXPECT_EQ(story(), c.story);
        if (c.setup == repairFails) {
            EXPECT_THAT(logs, Contains(HasSubstr("selection repair failed, keeping raw: ")));
        }
        if (!store) {
            continue;
        }
        const HistoryRow row = store->recent(1).at(0);
        EXPECT_EQ(row.app, "Screen selection");
        EXPECT_EQ(row.raw, raw);
        EXPECT_EQ(row.polished, c.polished);
        EXPECT_EQ(row.words, c.setup == repaired ? 3 : 2);
        EXPECT_EQ(row.sttBackend, "select");
        EXPECT_EQ(row.polishBackend, c.polishBackend);
    }
}

}  // namespace
}  // namespace tevra
