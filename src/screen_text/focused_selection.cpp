#include "screen_text/focused_selection.h"

#include <cstdint>
#include <utility>

#include "base/text.h"
#include "capture/text_inserter.h"

namespace tevra {
namespace {

// One read under way: what the clipboard held, and the count before the copy.
struct Read {
    MainQueue* queue;
    std::shared_ptr<Clipboard> clipboard;
    std::shared_ptr<KeyInjector> keys;
    FocusedSelection::Completion completion;
    ClipboardSnapshot snapshot;
    std::int64_t countBefore = 0;
    int attempt = 0;
};

void finish(const std::shared_ptr<Read>& read, std::optional<std::string> text) {
    // Whatever happened, the clipboard goes back to what it was: an empty
    // snapshot empties it.
    read->clipboard->restore(read->snapshot);
    if (text && text::trim(*text).empty()) {
        text.reset();
    }
    read->completion(std::move(text));
}

void poll(const std::shared_ptr<Read>& read) {
    read->queue->after(FocusedSelection::attemptIntervalSec, [read] {
        if (read->clipboard->changeCount() != read->countBefore) {
            read->clipboard->textLater(
                [read](std::optional<std::string> text) { finish(read, std::move(text)); });
        } else if (++read->attempt >= FocusedSelection::attempts) {
            finish(read, std::nullopt);
        } else {
            poll(read);
        }
    });
}

void copy(const std::shared_ptr<Read>& read) {
    read->clipboard->snapshotLater([read](ClipboardSnapshot snapshot) {
        read->snapshot = std::move(snapshot);
        read->countBefore = read->clipboard->changeCount();
        // A chord that cannot be made is not sent; the wait then finds nothing.
        if (const auto chord = read->keys->copySequence()) {
            read->keys->post(*chord);
        }
        poll(read);
    });
}

// The copy chord is not sent while the user still holds a key that would make
// it another chord or keep it from the application (the Alt of Alt+8, the
// chord key itself), as with the paste.
void copyOnceLetGo(const std::shared_ptr<Read>& read, double waited) {
    if (!read->keys->modifiersHeld()) {
        copy(read);
        return;
    }
    if (waited >= TextInserter::modifierWaitSec) {
        read->completion(std::nullopt);  // the clipboard was not touched
        return;
    }
    read->queue->after(TextInserter::modifierPollSec, [read, waited] {
        copyOnceLetGo(read, waited + TextInserter::modifierPollSec);
    });
}

}  // namespace

FocusedSelection::FocusedSelection(MainQueue& queue, std::shared_ptr<Clipboard> clipboard,
                                   std::shared_ptr<KeyInjector> keys,
                                   std::shared_ptr<SecureInput> secureInput)
    : queue_(queue),
      clipboard_(std::move(clipboard)),
      keys_(std::move(keys)),
      secureInput_(std::move(secureInput)) {}

void FocusedSelection::read(Completion completion) {
    if (!keys_->isAvailable() || secureInput_->isActive()) {
        queue_.post([completion = std::move(completion)] { completion(std::nullopt); });
        return;
    }
    copyOnceLetGo(
        std::make_shared<Read>(Read{&queue_, clipboard_, keys_, std::move(completion), {}, 0, 0}),
        0);
}

}  // namespace tevra
