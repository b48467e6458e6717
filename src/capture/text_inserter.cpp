#include "capture/text_inserter.h"

#include <string>
#include <utility>

namespace tevra {
namespace {

// One paste on its way. The timers hold it, and with it the clipboard and the
// snapshot, strongly: the restore must happen even if the inserter is gone.
struct Paste : std::enable_shared_from_this<Paste> {
    MainQueue* queue;
    std::shared_ptr<Clipboard> clipboard;
    std::shared_ptr<KeyInjector> keys;
    std::string text;
    KeySequence chord;
    bool primary = false;
    TextInserter::Sent sent;
    ClipboardSnapshot snapshot;

    void start(ClipboardSnapshot taken) {
        snapshot = std::move(taken);
        clipboard->setText(text, /*transient=*/true);
        if (primary) {
            clipboard->setPrimaryText(text);
        }
        queue->after(TextInserter::pasteDelaySec, [self = shared_from_this()] { self->post(0); });
    }

    void post(double waited) {
        if (keys->modifiersHeld()) {
            if (waited < TextInserter::modifierWaitSec) {
                queue->after(TextInserter::modifierPollSec, [self = shared_from_this(), waited] {
                    self->post(waited + TextInserter::modifierPollSec);
                });
                return;
            }
            // Still held: any chord now would be another one. The text stays
            // on the clipboard for the user.
            tell(false);
            return;
        }
        keys->post(chord);
        queue->after(TextInserter::restoreDelaySec, [self = shared_from_this()] {
            // An empty clipboard before means the dictated text stays.
            if (!self->snapshot.empty()) {
                self->clipboard->restore(self->snapshot);
            }
        });
        tell(true);
    }

    void tell(bool pasted) {
        if (sent) {
            sent(pasted);
        }
    }
};

}  // namespace

TextInserter::TextInserter(MainQueue& queue, std::shared_ptr<Clipboard> clipboard,
                           std::shared_ptr<KeyInjector> keys,
                           std::shared_ptr<SecureInput> secureInput)
    : queue_(queue),
      clipboard_(std::move(clipboard)),
      keys_(std::move(keys)),
      secureInput_(std::move(secureInput)) {}

bool TextInserter::canAutoPaste() const {
    return keys_->isAvailable();
}

void TextInserter::prepare() {
    clipboard_->prefetch();
}

bool TextInserter::insert(std::string_view text, Sent sent) {
    // Checked here as well as at the start of a capture: a capture that began
    // outside a password field can end inside one.
    std::optional<KeySequence> chord;
    if (keys_->isAvailable() && !secureInput_->isActive()) {
        chord = keys_->pasteSequence();
    }
    if (!chord) {
        clipboard_->setText(text, /*transient=*/true);
        return false;
    }
    auto paste = std::make_shared<Paste>();
    paste->queue = &queue_;
    paste->clipboard = clipboard_;
    paste->keys = keys_;
    paste->text = std::string(text);
    paste->chord = std::move(*chord);
    paste->primary = keys_->pasteReadsPrimary();
    paste->sent = std::move(sent);
    clipboard_->snapshotLater(
        [paste](ClipboardSnapshot snapshot) { paste->start(std::move(snapshot)); });
    return true;
}

}  // namespace tevra
