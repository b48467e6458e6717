#include "screen_text/focused_selection.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/virtual_main_queue.h"
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

    std::optional<ClipboardItem> selection;

    void post(const KeySequence& events) override {
        RecordingKeyInjector::post(events);
        if (selection) {
            clipboard_->restore({*selection});
        }
    }

private:
    std::shared_ptr<testing::RecordingClipboard> clipboard_;
};

const ClipboardItem kEarlier{{{"text/plain", "copied earlier"}, {"image/png", "\x89PNG"}}};

ClipboardItem plain(std::string text) {
    return {{{"text/plain", std::move(text)}}};
}

TEST(FocusedSelection, CopiesTheSelectionAndPutsTheClipboardBack) {
    struct Case {
        const char* name;
        ClipboardSnapshot before;
        std::optional<ClipboardItem> selection;
        bool secure = false;
        bool chordFails = false;
        std::optional<std::string> result;
        double doneAt;
        std::vector<std::string> journal;
    };
    const Case cases[] = {
        {"a selection keeps its blanks and line breaks",
         {kEarlier},
         plain("  picked text\n"),
         false,
         false,
         "  picked text\n",
         0.01,
         {"snapshot", "copySequence", "post", "restore 1", "restore 1"}},
        {"nothing selected: the full wait, and the snapshot written back all the same",
         {kEarlier},
         std::nullopt,
         false,
         false,
         std::nullopt,
         0.25,
         {"snapshot", "copySequence", "post", "restore 1"}},
        {"an empty clipboard stays empty",
         {},
         plain("word"),
         false,
         false,
         "word",
         0.01,
         {"snapshot", "copySequence", "post", "restore 1", "restore 0"}},
        {"only blanks is nothing",
         {kEarlier},
         plain(" \n\t "),
         false,
         false,
         std::nullopt,
         0.01,
         {"snapshot", "copySequence", "post", "restore 1", "restore 1"}},
        {"a picture without text is nothing",
         {kEarlier},
         ClipboardItem{{{"image/png", "\x89PNG..."}}},
         false,
         false,
         std::nullopt,
         0.01,
         {"snapshot", "copySequence", "post", "restore 1", "restore 1"}},
        {"a chord that cannot be made is not sent",
         {kEarlier},
         plain("never copied"),
         false,
         true,
         std::nullopt,
         0.25,
         {"snapshot", "copySequence", "restore 1"}},
        {"a password field: no key, no clipboard",
         {kEarlier},
         plain("secret"),
         true,
         false,
         std::nullopt,
         0,
         {}},
    };
    for (const Case& c : cases) {
        VirtualMainQueue queue;
        auto journal = std::make_shared<testing::Journal>();
        journal->clock = [&queue] { return queue.now(); };
        auto clipboard = std::make_shared<testing::RecordingClipboard>(journal);
        clipboard->items = c.before;
        auto app = std::make_shared<CopyingApplication>(journal, clipboard);
        app->selection = c.selection;
        app->canMakeEvents = !c.chordFails;
        auto secure = std::make_shared<testing::FakeSecureInput>();
        secure->active = c.secure;
        FocusedSelection reader(queue, clipboard, app, secure);

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
        EXPECT_EQ(journal->names(), c.journal) << c.name;
        EXPECT_EQ(clipboard->items, c.before) << c.name;
    }
}

}  // namespace
}  // namespace tevra
