#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "screen_text/word_selection.h"

namespace tevra {

// A point in the overlay's view: points from the bottom left, Y up, as the
// words' normalised boxes are once scaled by the view's size.
struct ViewPoint {
    double x = 0;
    double y = 0;
};

// The selection tool's interaction state, apart from any toolkit: the words
// in reading order with their lines and windows, the picks collected so far,
// the one under way and the line under the pointer, and the rules by which
// mouse and keys change them. The overlay's view feeds it events in view
// coordinates and draws what it describes. Main thread only.
class SelectionState {
public:
    static constexpr double panelWidth = 260;
    static constexpr double columnPad = 0.03;
    // A window key of the anchor that stands for no anchor word.
    static constexpr std::int64_t noAnchorWindow = -2;

    // One row of the side panel: the pick it shows, its rectangle and the box
    // of its cross, in view coordinates.
    struct PanelRow {
        std::size_t selection = 0;
        Rect row;
        Rect closeBox;
    };

    enum class Key { returnKey, keypadEnter, escape, other };
    enum class KeyResult { copy, cancel, ignored };

    // The view's size in points, the recognised words in any order, and the
    // screen's windows front to back in the words' coordinates.
    SelectionState(double viewWidth, double viewHeight, const std::vector<OCRWord>& words,
                   const std::vector<Rect>& windows);

    void resize(double viewWidth, double viewHeight);

    // Each event tells whether the view must be drawn again.
    bool mouseDown(ViewPoint point);
    bool mouseDragged(ViewPoint point);
    bool mouseUp(ViewPoint point);
    bool mouseMoved(ViewPoint point);
    // Return or keypad Enter copies every pick (copiedText()); Escape cancels.
    KeyResult keyDown(Key key) const;
    // The texts of all kept picks, in the order taken, separated by a blank line.
    std::string copiedText() const;

    // Hit testing: the word at a point, among the lines of one window key and
    // near a normalised column interval when those are given.
    std::optional<std::int64_t> wordIndex(ViewPoint point, std::optional<std::int64_t> window,
                                          std::optional<std::pair<double, double>> columnX) const;
    // The smallest minX and largest maxX of a line's words, normalised.
    std::pair<double, double> lineNormXRange(std::size_t line) const;

    // What the view draws, in view coordinates.
    Rect panelRect() const;
    std::vector<PanelRow> panelRows() const;
    std::string panelHeader() const;
    // The text of a pick on one line, cut to 44 characters with "…".
    std::string preview(std::size_t selection) const;
    // The hover line's rounded rectangle, when no pick is under way.
    std::optional<Rect> hoverRect() const;
    // One rectangle per line of a set of words: their union, grown by 2 points
    // sideways and 3 up and down. Indices out of range are skipped.
    std::vector<Rect> selectionRects(const std::vector<std::int64_t>& indices) const;
    // The pick under way: the closed range of a drag, or the anchor's line.
    std::optional<std::vector<std::int64_t>> pending() const;

    const std::vector<OCRWord>& words() const { return words_; }
    const std::vector<std::int64_t>& lineOf() const { return lineOf_; }
    const std::vector<std::int64_t>& columnOf() const { return columnOf_; }
    const std::vector<std::vector<std::int64_t>>& lines() const { return lines_; }
    const std::vector<std::int64_t>& wordWindow() const { return wordWindow_; }
    const std::vector<std::int64_t>& lineWindow() const { return lineWindow_; }
    const std::vector<std::vector<std::int64_t>>& captured() const { return captured_; }
    std::optional<std::int64_t> hoverLine() const { return hoverLine_; }
    double medWordH() const { return medWordH_; }
    std::size_t orderedWordCount() const { return words_.size(); }
    // A word's box in view coordinates.
    Rect viewBox(std::size_t word) const;

    // Inspection: one line per reading line, "L%-3d c%-3d y=%.3f x=%.3f  words\n"
    // with the line's column, the mean of its words' normalised centres in y
    // and their smallest normalised x.
    std::string debugLinesDump() const;
    // The text that a drag from one word to another copies.
    std::string debugDragText(std::int64_t from, std::int64_t to) const;

private:
    bool inPanel(ViewPoint point) const;
    void clearPending();

    double width_;
    double height_;
    std::vector<OCRWord> words_;
    std::vector<std::int64_t> lineOf_;
    std::vector<std::int64_t> columnOf_;
    std::vector<std::vector<std::int64_t>> lines_;
    std::vector<std::int64_t> wordWindow_;
    std::vector<std::int64_t> lineWindow_;
    double medWordH_ = 0.02;

    std::vector<std::vector<std::int64_t>> captured_;
    std::optional<std::int64_t> anchor_;
    std::optional<std::int64_t> focus_;
    std::int64_t anchorWindow_ = noAnchorWindow;
    std::optional<std::int64_t> hoverLine_;
    bool dragged_ = false;
};

}  // namespace tevra
