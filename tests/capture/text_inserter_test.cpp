#include "capture/text_inserter.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "base/virtual_main_queue.h"
#include "support/recording_capture.h"

namespace tevra {
namespace {

using ::testing::ElementsAre;
using ::testing::Pair;

struct InserterRig {
    VirtualMainQueue queue;
    std::shared_ptr<testing::Journal> journal = std::make_shared<testing::Journal>();
    std::shared_ptr<testing::RecordingClipboard> clipboard =
        std::make_shared<testing::RecordingClipboard>(journal);
    std::shared_ptr<testing::RecordingKeyInjector> keys =
        std::make_shared<testing::RecordingKeyInjector>(journal);
    std::shared_ptr<testing::FakeSecureInput> secure = std::make_shared<testing::FakeSecureInput>();
    std::optional<TextInserter> inserter{std::in_place, queue, clipboard, keys, secure};

    InserterRig() {
        journal->clock = [this] { return queue.now(); };
    }
};

const ClipboardData kImageAndText{{{"text/plain", "earlier"}, {"image/png", "\x89PNG..."}}};

TEST(TextInserter, PastesAfterThirtyMillisecondsAndRestoresEverythingAfterAnotherOnePointTwo) {
    InserterRig rig;
    const ClipboardData files{{{"text/uri-list", "file:///tmp/a.pdf"}, {"x-special/x", "copy"}}};
    rig.clipboard->items = {kImageAndText, files};

    EXPECT_TRUE(rig.inserter->insert("Dictated text."));
    // The text is on the clipboard at once, marked so that managers skip it.
    EXPECT_EQ(rig.clipboard->text(), "Dictated text.");
    EXPECT_TRUE(rig.clipboard->lastSetWasTransient);
    rig.inserter.reset();  // the restore outlives the inserter
    rig.queue.advance(10.0);
    EXPECT_THAT(
        rig.journal->entries,
        ElementsAre(Pair(0.0, "pasteSequence"), Pair(0.0, "snapshot"),
                    Pair(0.0, "setText Dictated text."), Pair(0.03, "modifiersHeld"),
                    Pair(0.03, "post"), Pair(::testing::DoubleNear(1.23, 1e-9), "restore 2")));
    EXPECT_EQ(rig.keys->posted, std::vector<KeySequence>{rig.keys->chord});
    // Two items come back as two items, each with all its types.
    EXPECT_EQ(rig.clipboard->items, (ClipboardSnapshot{kImageAndText, files}));
    EXPECT_EQ(rig.queue.pendingCount(), 0);
}

TEST(TextInserter, RestoresWhatCouldBeReadAndLeavesTheTextOnAnEmptyClipboard) {
    InserterRig rig;
    rig.clipboard->items = {kImageAndText};
    rig.clipboard->unreadable = {"image/png"};
    ASSERT_TRUE(rig.inserter->insert("x"));
    rig.queue.advance(1.3);
    EXPECT_EQ(rig.clipboard->items, (ClipboardSnapshot{{{{"text/plain", "earlier"}}}}));

    InserterRig empty;
    ASSERT_TRUE(empty.inserter->insert("kept"));
    empty.queue.advance(5.0);
    EXPECT_THAT(empty.journal->names(),
                ElementsAre("pasteSequence", "snapshot", "setText kept", "modifiersHeld", "post"));
    EXPECT_EQ(empty.clipboard->text(), "kept");

    // A terminal that pastes the primary selection gets the text there too.
    InserterRig terminal;
    terminal.keys->readsPrimary = true;
    ASSERT_TRUE(terminal.inserter->insert("ls -l"));
    terminal.queue.advance(5.0);
    EXPECT_THAT(terminal.journal->names(),
                ElementsAre("pasteSequence", "snapshot", "setText ls -l", "setPrimary ls -l",
                            "modifiersHeld", "post"));
}

TEST(TextInserter, LeavesTheTextOnTheClipboardWhenThePasteCannotBePosted) {
    enum class Block { noInputControl, secureInput, noEvents };
    for (Block block : {Block::noInputControl, Block::secureInput, Block::noEvents}) {
        InserterRig rig;
        rig.clipboard->items = {kImageAndText};
        rig.keys->available = block != Block::noInputControl;
        rig.secure->active = block == Block::secureInput;
        rig.keys->canMakeEvents = block != Block::noEvents;
        EXPECT_EQ(rig.inserter->canAutoPaste(), block != Block::noInputControl);

        EXPECT_FALSE(rig.inserter->insert("for the user"));
        rig.queue.advance(10.0);
        EXPECT_EQ(rig.clipboard->text(), "for the user");
        EXPECT_TRUE(rig.keys->posted.empty());
        EXPECT_EQ(rig.queue.pendingCount(), 0) << "no timer runs when nothing was pasted";
    }
    // Secure input is asked at every insert: a capture may end in a password field.
    InserterRig rig;
    EXPECT_TRUE(rig.inserter->insert("a"));
    rig.secure->active = true;
    EXPECT_FALSE(rig.inserter->insert("b"));
    EXPECT_EQ(rig.secure->asked, 2);
}

TEST(TextInserter, AHeldModifierIsWaitedForAndAPasteThatWouldBeAnotherChordIsGivenUp) {
    // Let go within the wait: the chord goes out then, and the clipboard
    // comes back 1.2 s after it.
    InserterRig rig;
    rig.clipboard->items = {kImageAndText};
    rig.keys->modifierChecksHeld = 5;
    std::optional<bool> sent;
    ASSERT_TRUE(rig.inserter->insert("typed", [&](bool pasted) { sent = pasted; }));
    rig.queue.advance(TextInserter::pasteDelaySec + 4 * TextInserter::modifierPollSec);
    EXPECT_TRUE(rig.keys->posted.empty());
    rig.queue.advance(TextInserter::modifierPollSec);
    EXPECT_EQ(rig.keys->posted.size(), 1u);
    EXPECT_EQ(sent, true);
    rig.queue.advance(TextInserter::restoreDelaySec);
    EXPECT_EQ(rig.clipboard->items, (ClipboardSnapshot{kImageAndText}));

    // Held throughout: no chord at all, and the text stays for the user.
    InserterRig held;
    held.clipboard->items = {kImageAndText};
    held.keys->modifierChecksHeld = 1000;
    sent.reset();
    ASSERT_TRUE(held.inserter->insert("typed", [&](bool pasted) { sent = pasted; }));
    held.queue.advance(10.0);
    EXPECT_TRUE(held.keys->posted.empty());
    EXPECT_EQ(sent, false);
    EXPECT_EQ(held.clipboard->text(), "typed");
    EXPECT_EQ(held.queue.pendingCount(), 0);
}

TEST(TextInserter, TwoQuickInsertsEachRestoreTheirOwnSnapshot) {
    InserterRig rig;
    rig.clipboard->items = {kImageAndText};
    ASSERT_TRUE(rig.inserter->insert("first"));
    rig.queue.advance(0.5);
    ASSERT_TRUE(rig.inserter->insert("second"));  // its snapshot holds "first"
    rig.queue.advance(0.8);                       // the first restore has run
    EXPECT_EQ(rig.clipboard->items, (ClipboardSnapshot{kImageAndText}));
    rig.queue.advance(1.0);
    EXPECT_EQ(rig.clipboard->text(), "first");
    EXPECT_EQ(rig.keys->posted.size(), 2u);
}

}  // namespace
}  // namespace tevra
