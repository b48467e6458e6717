#include "clipboard/clipboard_stack.h"

#include <utility>

#include "base/text.h"

namespace tevra {

namespace PasteModes {

std::string_view rawValue(PasteMode mode) {
    return mode == PasteMode::all ? "all" : "oneByOne";
}

std::optional<PasteMode> fromRawValue(std::string_view raw) {
    for (PasteMode mode : allCases) {
        if (rawValue(mode) == raw) {
            return mode;
        }
    }
    return std::nullopt;
}

std::string_view label(PasteMode mode) {
    return mode == PasteMode::all ? "All at once" : "One by one";
}

PasteMode toggled(PasteMode mode) {
    return mode == PasteMode::all ? PasteMode::oneByOne : PasteMode::all;
}

}  // namespace PasteModes

bool ClipboardStack::push(std::string text, std::optional<std::string> app,
                          std::chrono::system_clock::time_point at) {
    if (text::trim(text).empty()) {
        return false;
    }
    // Only the newest is compared: a text may come back after another one.
    if (!items_.empty() && items_.back().text == text) {
        return false;
    }
    items_.push_back(ClipboardItem{std::move(text), std::move(app), at});
    if (items_.size() > maxItems) {
        items_.erase(items_.begin(), items_.end() - static_cast<long>(maxItems));
    }
    return true;
}

std::string ClipboardStack::joined(std::string_view separator) const {
    std::string out;
    for (std::size_t i = 0; i < items_.size(); ++i) {
        if (i > 0) {
            out += separator;
        }
        out += items_[i].text;
    }
    return out;
}

std::optional<std::string> ClipboardStack::preview(std::string_view separator) const {
    if (items_.empty()) {
        return std::nullopt;
    }
    return mode_ == PasteMode::oneByOne ? items_.front().text : joined(separator);
}

std::optional<std::string> ClipboardStack::nextPaste(std::string_view separator) {
    if (items_.empty()) {
        return std::nullopt;
    }
    if (mode_ == PasteMode::oneByOne) {
        std::string text = std::move(items_.front().text);
        items_.erase(items_.begin());
        return text;
    }
    std::string text = joined(separator);
    items_.clear();
    return text;
}

PasteMode ClipboardStack::toggleMode() {
    mode_ = PasteModes::toggled(mode_);
    return mode_;
}

bool ClipboardStack::remove(long index) {
    if (index < 0 || index >= static_cast<long>(items_.size())) {
        return false;
    }
    items_.erase(items_.begin() + index);
    return true;
}

}  // namespace tevra
