#include "screen_text/focused_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/virtual_main_queue.h"
#include "capture/text_inserter.h"
#include "support/recording_capture.h"

namespace tevra {
namespace {

using ::testing::ElementsAre;

// The focused application: the copy chord puts its selection on the
// clipboard, as plain text or as an image only; with nothing selected the
// chord changes nothing.
class CopyingApplication : public testing::RecordingKeyInjector {
public:
    CopyingApplication(std::shared_ptr<testing::Journal> journal,
                       std::shared_ptr<testing::RecordingClipboard> clipboard)
        : RecordingKeyInjector(std::move(journal)), clipboard_(std::move(clipboard)) {}

    std::optional<ClipboardData> selection;

    void post(const KeySequence& events) override {
        RecordingKeyInjector::post(events);
        if (selection) {
            clipboard_->restore({*selection});
        }
    }

private:
    std::shared_ptr<testing::RecordingClipboard> clipboard_;
};

const ClipboardData kEarlier{{{"text/plain", "copied earlier"}, {"image/png", "\x89PNG"}}};

ClipboardData plain(std::string text) {
    return {{{"text/plain", std::move(text)}}};
}

TEST(FocusedSelection, CopiesTheSelectionAndPutsTheClipboardBack) {
    enum Setup { normal, secure, noChord, emptyBefore, altHeldBriefly, altHeldOn };
    const std::vector<std::string> copied = {"snapshot", "copySequence", "post", "restore 1",
                                             "restore 1"};
    struct Case {
        const char* name;
        Setup setup;
        std::optional<ClipboardData> selection;
        std::optional<std::string> result;
        double doneAt;
        std::vector<std::string> journal;
    };
    const Case cases[] = {
        {"an empty clipboard stays empty",
         emptyBefore,
         plain("word"),
         "word",
         0.01,
         {"snapshot", "copySequence", "post", "restore 1", "restore 0"}},
        {"only blanks is nothing", normal, plain(" \n\t "), std::nullopt, 0.01, copied},
        {"a selection keeps its blanks and line breaks", normal, plain("  picked text\n"),
         "  picked text\n", 0.01, copied},
        {"a picture without text is nothing", normal, ClipboardData{{{"image/png", "\x89PNG"}}},
         std::nullopt, 0.01, copied},
        {"a chord that cannot be made is not sent",
         noChord,
         plain("never copied"),
         std::nullopt,
         0.25,
         {"snapshot", "copySequence", "restore 1"}},
        {"a password field: no key, no clipboard", secure, plain("secret"), std::nullopt, 0, {}},
        {"the Alt of Alt+8 is let go first", altHeldBriefly, plain("word"), "word", 0.05, copied},
        {"a key held on: no copy, no clipboard",
         altHeldOn,
         plain("word"),
         std::nullopt,
         TextInserter::modifierWaitSec,
         {}},
    };
    for (const Case& c : cases) {
        VirtualMainQueue queue;
        auto journal = std::make_shared<testing::Journal>();
        auto clipboard = std::make_shared<testing::RecordingClipboard>(journal);
        const ClipboardSnapshot before =
            c.setup == emptyBefore ? ClipboardSnapshot{} : ClipboardSnapshot{kEarlier};
        clipboard->items = before;
        auto app = std::make_shared<CopyingApplication>(journal, clipboard);
        app->selection = c.selection;
        app->canMakeEvents = c.setup != noChord;
        app->modifierChecksHeld = c.setup == altHeldBriefly ? 2 : c.setup == altHeldOn ? 1000 : 0;
        auto secureInput = std::make_shared<testing::FakeSecureInput>();
        secureInput->active = c.setup == secure;
        FocusedSelection reader(queue, clipboard, app, secureInput);

        std::optional<std::optional<std::string>> result;
        double doneAt = -1;
        reader.read([&](std::optional<std::string> text) {
            result = std::move(text);
            doneAt = queue.now();
        });
        queue.runPending();
        queue.advance(1.0);
        ASSERT_TRUE(result) << c.name;
        EXPECT_EQ(*result, c.result) << c.name;
        EXPECT_NEAR(doneAt, c.doneAt, 1e-9) << c.name;
        std::vector<std::string> calls = journal->names();
        std::erase(calls, "modifiersHeld");
        EXPECT_EQ(calls, c.journal) << c.name;
        EXPECT_EQ(clipboard->items, before) << c.name;
    }
}

}  // namespace
}  // namespace tevra
