#include "screen_text/focused_selection.h"

#include <cstdint>
#include <utility>

#include "base/text.h"

namespace tevra {
namespace {

// One read under way: what the clipboard held, and the count before the copy.
struct Read {
    MainQueue* queue;
    std::shared_ptr<Clipboard> clipboard;
    ClipboardSnapshot snapshot;
    std::int64_t countBefore;
    FocusedSelection::Completion completion;
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
            finish(read, read->clipboard->text());
        } else if (++read->attempt >= FocusedSelection::attempts) {
            finish(read, std::nullopt);
        } else {
            poll(read);
        }
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
    auto read = std::make_shared<Read>(
        Read{&queue_, clipboard_, clipboard_->snapshot(), 0, std::move(completion)});
    read->countBefore = clipboard_->changeCount();
    // A chord that cannot be made is not sent; the wait then finds nothing.
    if (const auto chord = keys_->copySequence()) {
        keys_->post(*chord);
    }
    poll(read);
}

}  // namespace tevra
