#include "screen_text/selection_state.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <limits>

#include "base/text.h"

namespace tevra {
namespace {

bool contains(const Rect& r, ViewPoint p) {
    return p.x >= r.minX() && p.x < r.maxX() && p.y >= r.minY() && p.y < r.maxY();
}

Rect grown(const Rect& r, double dx, double dy) {
    return {r.x - dx, r.y - dy, r.width + 2 * dx, r.height + 2 * dy};
}

constexpr std::size_t kPreviewCharacters = 44;

}  // namespace

SelectionState::SelectionState(double viewWidth, double viewHeight,
                               const std::vector<OCRWord>& words, const std::vector<Rect>& windows)
    : width_(viewWidth), height_(viewHeight) {
    WordLayout layout = windows.empty() ? WordSelection::readingOrderColumns(words)
                                        : WordSelection::readingOrderColumns(words, windows);
    words_ = std::move(layout.ordered);
    lineOf_ = std::move(layout.lineOf);
    columnOf_ = std::move(layout.column);

    std::vector<double> heights;
    for (std::size_t i = 0; i < words_.size(); ++i) {
        if (i == 0 || lineOf_[i] != lineOf_[i - 1]) {
            lines_.emplace_back();
        }
        lines_.back().push_back(static_cast<std::int64_t>(i));
        wordWindow_.push_back(WordSelection::windowKey(words_[i].rect, windows));
        heights.push_back(words_[i].rect.height);
    }
    for (const auto& line : lines_) {
        lineWindow_.push_back(line.empty() ? -1 : wordWindow_[line.front()]);
    }
    if (!heights.empty()) {
        medWordH_ = WordSelection::median(std::move(heights));
    }
}

void SelectionState::resize(double viewWidth, double viewHeight) {
    width_ = viewWidth;
    height_ = viewHeight;
}

Rect SelectionState::viewBox(std::size_t word) const {
    const Rect& r = words_[word].rect;
    return {r.x * width_, r.y * height_, r.width * width_, r.height * height_};
}

Rect SelectionState::panelRect() const {
    return {width_ - panelWidth, 0, panelWidth, height_};
}

bool SelectionState::inPanel(ViewPoint point) const {
    return contains(panelRect(), point);
}

void SelectionState::clearPending() {
    anchor_.reset();
    focus_.reset();
}

std::optional<std::int64_t> SelectionState::wordIndex(
    ViewPoint point, std::optional<std::int64_t> window,
    std::optional<std::pair<double, double>> columnX) const {
    std::optional<std::size_t> best;
    double bestScore = std::numeric_limits<double>::infinity();
    for (std::size_t line = 0; line < lines_.size(); ++line) {
        if (window && lineWindow_[line] != *window) {
            continue;
        }
        if (columnX) {
            const auto [lo, hi] = lineNormXRange(line);
            if (!(lo <= columnX->second + columnPad && hi >= columnX->first - columnPad)) {
                continue;
            }
        }
        double lo = std::numeric_limits<double>::infinity();
        double hi = -std::numeric_limits<double>::infinity();
        double sumY = 0;
        for (std::int64_t i : lines_[line]) {
            const Rect box = viewBox(static_cast<std::size_t>(i));
            lo = std::min(lo, box.minX());
            hi = std::max(hi, box.maxX());
            sumY += box.midY();
        }
        const double meanY = sumY / static_cast<double>(lines_[line].size());
        const double dx = point.x < lo ? lo - point.x : point.x > hi ? point.x - hi : 0;
        const double score = std::abs(meanY - point.y) + dx * 0.5;
        // Strict: on a tie the earlier line stays.
        if (score < bestScore) {
            bestScore = score;
            best = line;
        }
    }
    if (!best) {
        return std::nullopt;
    }
    const auto& words = lines_[*best];
    for (std::int64_t i : words) {
        const Rect box = viewBox(static_cast<std::size_t>(i));
        if (box.minX() <= point.x && point.x <= box.maxX()) {
            return i;
        }
    }
    if (point.x <= viewBox(static_cast<std::size_t>(words.front())).minX()) {
        return words.front();
    }
    if (point.x >= viewBox(static_cast<std::size_t>(words.back())).maxX()) {
        return words.back();
    }
    std::optional<std::int64_t> nearest;
    double nearestDistance = std::numeric_limits<double>::infinity();
    for (std::int64_t i : words) {
        const Rect box = viewBox(static_cast<std::size_t>(i));
        const double distance =
            std::min(std::abs(box.minX() - point.x), std::abs(box.maxX() - point.x));
        if (distance < nearestDistance) {
            nearestDistance = distance;
            nearest = i;
        }
    }
    return nearest;
}

std::pair<double, double> SelectionState::lineNormXRange(std::size_t line) const {
    double lo = std::numeric_limits<double>::infinity();
    double hi = -std::numeric_limits<double>::infinity();
    for (std::int64_t i : lines_[line]) {
        lo = std::min(lo, words_[i].rect.minX());
        hi = std::max(hi, words_[i].rect.maxX());
    }
    return {lo, hi};
}

bool SelectionState::mouseDown(ViewPoint point) {
    dragged_ = false;
    if (inPanel(point)) {
        clearPending();
        return false;
    }
    anchor_ = focus_ = wordIndex(point, std::nullopt, std::nullopt);
    anchorWindow_ = anchor_ ? wordWindow_[*anchor_] : noAnchorWindow;
    return true;
}

bool SelectionState::mouseDragged(ViewPoint point) {
    if (!anchor_) {
        return false;
    }
    dragged_ = true;
    const auto window =
        anchorWindow_ == noAnchorWindow ? std::nullopt : std::optional(anchorWindow_);
    // A drag cannot leave the window it began in: over another window the
    // focus snaps to the nearest line of the anchor's.
    if (const auto index = wordIndex(point, window, std::nullopt)) {
        focus_ = index;
    }
    return true;
}

bool SelectionState::mouseUp(ViewPoint point) {
    if (inPanel(point)) {
        for (const PanelRow& row : panelRows()) {
            if (contains(row.closeBox, point) || contains(row.row, point)) {
                captured_.erase(captured_.begin() + static_cast<std::ptrdiff_t>(row.selection));
                break;
            }
        }
        clearPending();
        return true;
    }
    if (const auto pick = pending(); pick && !pick->empty()) {
        if (std::find(captured_.begin(), captured_.end(), *pick) == captured_.end()) {
            captured_.push_back(*pick);
        }
    }
    clearPending();
    return true;
}

bool SelectionState::mouseMoved(ViewPoint point) {
    if (inPanel(point)) {
        const bool had = hoverLine_.has_value();
        hoverLine_.reset();
        return had;
    }
    std::optional<std::int64_t> line;
    if (const auto index = wordIndex(point, std::nullopt, std::nullopt)) {
        line = lineOf_[*index];
    }
    const bool changed = line != hoverLine_;
    hoverLine_ = line;
    return changed;
}

SelectionState::KeyResult SelectionState::keyDown(Key key) const {
    switch (key) {
        case Key::returnKey:
        case Key::keypadEnter:
            return KeyResult::copy;
        case Key::escape:
            return KeyResult::cancel;
        case Key::other:
            break;
    }
    return KeyResult::ignored;
}

std::string SelectionState::copiedText() const {
    std::string out;
    for (std::size_t k = 0; k < captured_.size(); ++k) {
        if (k > 0) {
            out += "\n\n";
        }
        out += WordSelection::text(captured_[k], words_, lineOf_);
    }
    return out;
}

std::optional<std::vector<std::int64_t>> SelectionState::pending() const {
    if (!anchor_ || !focus_) {
        return std::nullopt;
    }
    if (dragged_) {
        return WordSelection::range(*anchor_, *focus_);
    }
    return lines_[static_cast<std::size_t>(lineOf_[*anchor_])];
}

std::vector<SelectionState::PanelRow> SelectionState::panelRows() const {
    std::vector<PanelRow> rows;
    const Rect panel = panelRect();
    double y = panel.maxY() - 64;
    for (std::size_t k = 0; k < captured_.size(); ++k) {
        y -= 46;
        if (y < 60) {
            break;
        }
        const Rect row{panel.minX() + 10, y + 6, panelWidth - 20, 38};
        rows.push_back({k, row, Rect{row.maxX() - 26, row.midY() - 9, 18, 18}});
    }
    return rows;
}

std::string SelectionState::panelHeader() const {
    return "Copied  (" + std::to_string(captured_.size()) + ")";
}

std::string SelectionState::preview(std::size_t selection) const {
    std::string flat = WordSelection::text(captured_.at(selection), words_, lineOf_);
    std::replace(flat.begin(), flat.end(), '\n', ' ');
    if (text::characterCount(flat) <= kPreviewCharacters) {
        return flat;
    }
    return text::prefixCharacters(flat, kPreviewCharacters) + "\u2026";
}

std::optional<Rect> SelectionState::hoverRect() const {
    if (anchor_ || !hoverLine_ || *hoverLine_ < 0 ||
        *hoverLine_ >= static_cast<std::int64_t>(lines_.size())) {
        return std::nullopt;
    }
    const auto& line = lines_[static_cast<std::size_t>(*hoverLine_)];
    Rect box = viewBox(static_cast<std::size_t>(line.front()));
    for (std::int64_t i : line) {
        box = box.united(viewBox(static_cast<std::size_t>(i)));
    }
    return grown(box, 2, 3);
}

std::vector<Rect> SelectionState::selectionRects(const std::vector<std::int64_t>& indices) const {
    std::vector<std::int64_t> lineOrder;
    std::vector<Rect> boxes;
    for (std::int64_t i : indices) {
        if (i < 0 || i >= static_cast<std::int64_t>(words_.size())) {
            continue;
        }
        const Rect box = viewBox(static_cast<std::size_t>(i));
        const auto at = std::find(lineOrder.begin(), lineOrder.end(), lineOf_[i]);
        if (at == lineOrder.end()) {
            lineOrder.push_back(lineOf_[i]);
            boxes.push_back(box);
        } else {
            Rect& united = boxes[static_cast<std::size_t>(at - lineOrder.begin())];
            united = united.united(box);
        }
    }
    for (Rect& box : boxes) {
        box = grown(box, 2, 3);
    }
    return boxes;
}

std::string SelectionState::debugLinesDump() const {
    std::string out;
    for (std::size_t line = 0; line < lines_.size(); ++line) {
        double sumY = 0;
        double minX = std::numeric_limits<double>::infinity();
        std::string words;
        for (std::int64_t i : lines_[line]) {
            sumY += words_[i].rect.midY();
            minX = std::min(minX, words_[i].rect.minX());
            if (!words.empty()) {
                words += ' ';
            }
            words += words_[i].text;
        }
        char head[96];
        std::snprintf(head, sizeof head, "L%-3d c%-3d y=%.3f x=%.3f  ", static_cast<int>(line),
                      static_cast<int>(columnOf_[lines_[line].front()]),
                      sumY / static_cast<double>(lines_[line].size()), minX);
        out += head + words + "\n";
    }
    return out;
}

std::string SelectionState::debugDragText(std::int64_t from, std::int64_t to) const {
    return WordSelection::text(WordSelection::range(from, to), words_, lineOf_);
}

}  // namespace tevra
