// The actions that need no recording: translating the focused selection or
// the clipboard, the screenshot voice, the clipboard queue's keys, and the
// selection tool's text on its way into the history. They report on the HUD,
// never in the pill's recording sequence; the pipeline's part runs on a work
// thread and comes back on the main queue.
#include <chrono>

#include "app/app_delegate.h"
#include "base/error.h"
#include "base/text.h"
#include "store/history_store.h"

namespace tevra {

void AppDelegate::selectTool() {
    if (selection_) {
        selection_->toggle();
    }
}

std::string AppDelegate::chordName(int digit) const {
    if (hotkeyName_ == "hotkey") {
        return "Alt+" + std::to_string((digit + 1) % 10);
    }
    return runtime_->settings().talkKey + "+" + std::to_string(digit);
}

void AppDelegate::translateSelection() {
    if (recording_ || !services_.focusedSelection) {
        return;
    }
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    services_.focusedSelection->read([weak](std::optional<std::string> text) {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        if (!text) {
            self->hud_->error("select text first, then press " + self->chordName(7));
            return;
        }
        self->hud_->processing();
        self->services_.chime->processingStarted();
        self->runTranslate(*text, "selection");
    });
}

void AppDelegate::translateClipboardAction() {
    if (recording_ || !services_.clipboard) {
        return;
    }
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    services_.clipboard->textLater([weak](std::optional<std::string> text) {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        if (!text || text::trim(*text).empty()) {
            self->hud_->error("clipboard is empty \u2014 copy text first");
            return;
        }
        self->hud_->processing();
        self->services_.chime->processingStarted();
        self->runTranslate(*text, "clipboard");
    });
}

void AppDelegate::runTranslate(const std::string& text, const std::string& label) {
    auto self = shared_from_this();  // held until the work has ended
    std::shared_ptr<const Pipeline> pipeline = runtime_->pipeline();
    const std::string target = runtime_->settings().translateTarget;
    services_.work->run([self, pipeline, text, label, target]() mutable {
        std::optional<std::string> translated;
        std::string failure;
        try {
            translated = pipeline->translate(text, target);
        } catch (...) {
            failure = describe(std::current_exception());
        }
        MainQueue& queue = self->queue_;
        queue.post([self = std::move(self), translated = std::move(translated),
                    failure = std::move(failure), label, target] {
            if (!translated) {
                self->hud_->error("translate failed: " + text::prefixCharacters(failure, 60));
                self->services_.chime->processingFailed();
                self->pills().show();
                return;
            }
            self->log("translate " + label + " \u2192 " + target + ": " +
                      std::to_string(text::characterCount(*translated)) + " chars");
            self->pasteThen(*translated, [hud = self->hud_](bool pasted) {
                pasted ? hud->done() : hud->error(copiedMessage);
            });
            self->services_.chime->processingFinished();
            self->pills().show();
        });
    });
}

void AppDelegate::runScreenshotMode(const Mode& mode) {
    if (!services_.screenReader) {
        return;
    }
    PolishContext context = readContext();
    hud_->hide();  // not in the picture
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    services_.screenReader->captureAndRead(
        [weak, mode, context = std::move(context)](ScreenOCR::Result result) mutable {
            auto self = weak.lock();
            if (!self) {
                return;
            }
            if (const auto* error = std::get_if<std::exception_ptr>(&result)) {
                self->log("OCR failed: " + describe(*error));
                self->hud_->error(describe(*error));
                return;
            }
            self->hud_->processing();
            self->services_.chime->processingStarted();
            self->runModeOnScreenText(mode, std::get<std::string>(result), std::move(context));
        });
}

void AppDelegate::runModeOnScreenText(const Mode& mode, const std::string& text,
                                      PolishContext context) {
    auto self = shared_from_this();
    std::shared_ptr<const Pipeline> pipeline = runtime_->pipeline();
    services_.work->run([self, pipeline, mode, text, context = std::move(context)]() mutable {
        std::optional<std::string> polished;
        std::string failure;
        try {
            polished = pipeline->runModeOnText(mode, text, context).polished;
        } catch (...) {
            failure = describe(std::current_exception());
        }
        MainQueue& queue = self->queue_;
        queue.post(
            [self = std::move(self), polished = std::move(polished), failure = std::move(failure)] {
                if (!polished) {
                    self->hud_->error(failure);
                    self->services_.chime->processingFailed();
                    return;
                }
                self->pasteThen(*polished, [hud = self->hud_](bool pasted) {
                    pasted ? hud->done() : hud->error(copiedMessage);
                });
                self->services_.chime->processingFinished();
            });
    });
}

void AppDelegate::clipStackAdd() {
    if (!services_.clipboard) {
        return;
    }
    // The application is named as the key is pressed: the one the user copied in.
    std::optional<std::string> app;
    if (services_.focus) {
        if (const auto front = services_.focus->frontApplication()) {
            app = front->name;
        }
    }
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    services_.clipboard->textLater([weak, app](std::optional<std::string> text) {
        auto self = weak.lock();
        if (!self) {
            return;
        }
        if (!text || text::trim(*text).empty()) {
            self->hud_->error("Nothing on the clipboard");
            return;
        }
        ClipboardStack& queue = self->clipQueue_;
        if (!queue.push(*text, app, std::chrono::system_clock::now())) {
            self->hud_->error("Already queued");
            return;
        }
        self->services_.chime->processingFinished();
        self->hud_->error("Queued " + std::to_string(queue.count()) + " \u00b7 " +
                          std::string(PasteModes::label(queue.mode())));
    });
}

void AppDelegate::clipPaste() {
    const std::optional<std::string> text = clipQueue_.nextPaste(ClipboardStack::defaultSeparator);
    if (!text) {
        hud_->error("Queue is empty");
        return;
    }
    const std::size_t left = clipQueue_.count();
    // The notice follows the paste's outcome, so that it is the last word.
    pasteThen(*text, [hud = hud_, left](bool pasted) {
        if (!pasted) {
            hud->error(copiedMessage);
        }
        hud->error(left > 0 ? "Pasted \u00b7 " + std::to_string(left) + " left"
                            : "Pasted \u00b7 queue cleared");
    });
}

void AppDelegate::clipMode() {
    const PasteMode mode = clipQueue_.toggleMode();
    hud_->error("Paste mode: " + std::string(PasteModes::label(mode)));
}

void AppDelegate::wireSelection() {
    if (!selection_) {
        return;
    }
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    selection_->onMessage = [weak](const std::string& message) {
        if (auto self = weak.lock()) {
            self->hud_->error(message);
        }
    };
    selection_->onCopied = [weak](const std::string& raw) {
        if (auto self = weak.lock()) {
            self->handOffSelection(raw);
        }
    };
}

void AppDelegate::handOffSelection(const std::string& raw) {
    const auto& store = runtime_->store();
    std::optional<Mode> repair;
    if (store) {
        for (Mode& mode : store->modes()) {
            if (mode.isScreenshot && mode.enabled) {
                repair = std::move(mode);
                break;
            }
        }
    }
    if (!repair) {
        recordSelection(raw, raw, 0);
        return;
    }
    PolishContext context = readContext();
    const auto started = std::chrono::steady_clock::now();
    auto self = shared_from_this();
    std::shared_ptr<const Pipeline> pipeline = runtime_->pipeline();
    services_.work->run(
        [self, pipeline, mode = *repair, raw, context = std::move(context), started]() mutable {
            std::string polished = raw;
            int64_t polishMs = 0;
            std::optional<std::string> failure;
            try {
                const DictationResult result = pipeline->runModeOnText(mode, raw, context);
                if (!text::trim(result.polished).empty()) {
                    polished = result.polished;
                }
                polishMs = Pipeline::millisecondsSince(started);
            } catch (...) {
                failure = describe(std::current_exception());
            }
            MainQueue& queue = self->queue_;
            queue.post([self = std::move(self), raw, polished = std::move(polished), polishMs,
                        failure = std::move(failure)] {
                if (failure) {
                    self->log("selection repair failed, keeping raw: " + *failure);
                }
                if (polished != raw) {
                    self->pasteThen(polished, [](bool) {});
                }
                self->recordSelection(raw, polished, polishMs);
            });
        });
}

void AppDelegate::recordSelection(const std::string& raw, const std::string& polished,
                                  int64_t polishMs) {
    if (const auto& store = runtime_->store()) {
        HistoryRow row;
        row.app = "Screen selection";
        row.raw = raw;
        row.polished = polished;
        row.polishMs = polishMs;
        row.words = static_cast<int64_t>(text::countSpaceSeparated(polished));
        row.sttBackend = "select";
        row.polishBackend = polished == raw ? "select" : "select+repair";
        store->add(row);
    }
    pills().reload();
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    queue_.post([weak] {
        if (auto self = weak.lock(); self && self->uiState_) {
            self->uiState_->reload();
        }
    });
}

}  // namespace tevra
