#include "capture/text_inserter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "core/virtual_main_queue.h"
#include "support/recording_capture.h"

namespace tevra {
namespace {

using ::testing::ElementsAre;
using testing::Journal;
using ::testing::Pair;

struct InserterRig {
    VirtualMainQueue queue;
    std::shared_ptr<Journal> journal = std::make_shared<Journal>();
    std::shared_ptr<testing::RecordingClipboard> clipboard =
        std::make_shared<testing::RecordingClipboard>(journal);
    std::shared_ptr<testing::RecordingKeyInjector> keys =
        std::make_shared<testing::RecordingKeyInjector>(journal);
    std::shared_ptr<testing::FakeSecureInput> secure = std::make_shared<testing::FakeSecureInput>();
    TextInserter inserter{queue, clipboard, keys, secure};

    InserterRig() {
        journal->clock = [this] { return queue.now(); };
    }
};

const ClipboardItem kImageAndText{{{"text/plain", "earlier"}, {"image/png", "\x89PNG..."}}};

TEST(TextInserter, PastesAfterThirtyMillisecondsAndRestoresEverythingAfterAnotherOnePointTwo) {
    InserterRig rig;
    const ClipboardItem files{{{"text/uri-list", "file:///tmp/a.pdf"}, {"x-special/x", "copy"}}};
    rig.clipboard->items = {kImageAndText, files};

    EXPECT_TRUE(rig.inserter.insert("Dictated text."));
    // The text is on the clipboard at once, marked so that managers skip it.
    EXPECT_EQ(rig.clipboard->text(), "Dictated text.");
    EXPECT_TRUE(rig.clipboard->lastSetWasTransient);
    EXPECT_TRUE(rig.keys->posted.empty());

    rig.queue.advance(10.0);
    EXPECT_THAT(rig.journal->entries,
                ElementsAre(Pair(0.0, "snapshot"), Pair(0.0, "setText Dictated text."),
                            Pair(0.0, "pasteSequence"), Pair(0.03, "post"),
                            Pair(::testing::DoubleNear(1.23, 1e-9), "restore 2")));
    ASSERT_EQ(rig.keys->posted.size(), 1u);
    EXPECT_EQ(rig.keys->posted[0], rig.keys->chord);
    // Two items come back as two items, each with all its types.
    EXPECT_EQ(rig.clipboard->items, (ClipboardSnapshot{kImageAndText, files}));
    EXPECT_EQ(rig.queue.pendingCount(), 0);
}

TEST(TextInserter, RestoresWhatCouldBeReadAndLeavesTheTextOnAnEmptyClipboard) {
    {
        InserterRig rig;
        rig.clipboard->items = {kImageAndText};
        rig.clipboard->unreadable = {"image/png"};
        ASSERT_TRUE(rig.inserter.insert("x"));
        rig.queue.advance(1.3);
        EXPECT_EQ(rig.clipboard->items, (ClipboardSnapshot{{{{"text/plain", "earlier"}}}}));
    }
    {
        InserterRig rig;
        ASSERT_TRUE(rig.inserter.insert("kept"));
        rig.queue.advance(5.0);
        EXPECT_THAT(rig.journal->names(),
                    ElementsAre("snapshot", "setText kept", "pasteSequence", "post"));
        EXPECT_EQ(rig.clipboard->text(), "kept");
    }
}

TEST(TextInserter, LeavesTheTextOnTheClipboardWhenThePasteCannotBePosted) {
    enum class Block { noInputControl, secureInput, noEvents };
    for (Block block : {Block::noInputControl, Block::secureInput, Block::noEvents}) {
        InserterRig rig;
        rig.clipboard->items = {kImageAndText};
        rig.keys->available = block != Block::noInputControl;
        rig.secure->active = block == Block::secureInput;
        rig.keys->canMakeEvents = block != Block::noEvents;

        EXPECT_FALSE(rig.inserter.insert("for the user"));
        rig.queue.advance(10.0);
        EXPECT_EQ(rig.clipboard->text(), "for the user");
        EXPECT_TRUE(rig.keys->posted.empty());
        EXPECT_EQ(rig.queue.pendingCount(), 0) << "no timer runs when nothing was pasted";
    }
}

TEST(TextInserter, AsksForSecureInputAtEveryInsertAndTellsWhetherItCanPaste) {
    InserterRig rig;
    EXPECT_TRUE(rig.inserter.insert("a"));
    rig.secure->active = true;  // the capture ended inside a password field
    EXPECT_FALSE(rig.inserter.insert("b"));
    EXPECT_EQ(rig.secure->asked, 2);

    EXPECT_TRUE(rig.inserter.canAutoPaste());
    rig.keys->available = false;
    EXPECT_FALSE(rig.inserter.canAutoPaste());
}

TEST(TextInserter, TwoQuickInsertsEachRestoreTheirOwnSnapshot) {
    InserterRig rig;
    rig.clipboard->items = {kImageAndText};
    ASSERT_TRUE(rig.inserter.insert("first"));
    rig.queue.advance(0.5);
    ASSERT_TRUE(rig.inserter.insert("second"));  // its snapshot holds "first"
    rig.queue.advance(0.8);                      // the first restore has run
    EXPECT_EQ(rig.clipboard->items, (ClipboardSnapshot{kImageAndText}));
    rig.queue.advance(1.0);
    EXPECT_EQ(rig.clipboard->text(), "first");
    EXPECT_EQ(rig.keys->posted.size(), 2u);
}

TEST(TextInserter, TheRestoreOutlivesTheInserter) {
    VirtualMainQueue queue;
    auto journal = std::make_shared<Journal>();
    auto clipboard = std::make_shared<testing::RecordingClipboard>(journal);
    clipboard->items = {kImageAndText};
    {
        TextInserter inserter(queue, clipboard,
                              std::make_shared<testing::RecordingKeyInjector>(journal),
                              std::make_shared<testing::FakeSecureInput>());
        ASSERT_TRUE(inserter.insert("gone"));
    }
    queue.advance(2.0);
    EXPECT_EQ(clipboard->items, (ClipboardSnapshot{kImageAndText}));
}

}  // namespace
}  // namespace tevra
