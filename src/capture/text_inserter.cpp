#include "capture/text_inserter.h"

#include <utility>

namespace tevra {

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

bool TextInserter::insert(std::string_view text) {
    ClipboardSnapshot snapshot = clipboard_->snapshot();
    clipboard_->setText(text, /*transient=*/true);
    // From here on the text is on the clipboard, whatever follows.

    // Checked here as well as at the start of a capture: a capture that began
    // outside a password field can end inside one.
    if (!keys_->isAvailable() || secureInput_->isActive()) {
        return false;
    }
    std::optional<KeySequence> chord = keys_->pasteSequence();
    if (!chord) {
        return false;
    }
    if (keys_->pasteReadsPrimary()) {
        clipboard_->setPrimaryText(text);
    }

    // The timers hold the clipboard and the snapshot strongly: the restore must
    // happen even if the inserter is gone by then.
    MainQueue* queue = &queue_;
    queue_.after(pasteDelaySec, [queue, keys = keys_, clipboard = clipboard_,
                                 chord = std::move(*chord), snapshot = std::move(snapshot)] {
        keys->post(chord);
        queue->after(restoreDelaySec, [clipboard, snapshot] {
            // An empty clipboard before means the dictated text stays.
            if (!snapshot.empty()) {
                clipboard->restore(snapshot);
            }
        });
    });
    return true;
}

}  // namespace tevra
