#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "screen_text/rect.h"

namespace tevra {

// One recognised token, without whitespace, and its box normalised to the
// captured image, Y up.
struct OCRWord {
    std::string text;
    Rect rect;

    bool operator==(const OCRWord&) const = default;
};

// Words in reading order, with each word's line number (from 0, in reading
// order, no gaps) and column id (a label, unique per column, neither
// consecutive nor ordered left to right).
struct WordLayout {
    std::vector<OCRWord> ordered;
    std::vector<std::int64_t> lineOf;
    std::vector<std::int64_t> column;
};

// The geometry of the selection tool: lines, columns and a reading order for
// the words found on a screen, and the text of a set of selected words.
//
// The page is cut by a recursive XY cut: on the widest vertical strip of
// white space first (columns, read left then right), else on the widest
// horizontal one (bands, read top then bottom), and each leaf is split into
// lines by a running mean of the words' centres. With the screen's windows
// given front to back, each window is read by itself and the words on no
// window last, so that the text of two windows never mixes.
namespace WordSelection {

// The element at index count / 2 of the sorted values: the upper median,
// no averaging. 0 for no values.
double median(std::vector<double> values);

WordLayout readingOrderColumns(const std::vector<OCRWord>& words);
WordLayout readingOrderColumns(const std::vector<OCRWord>& words, const std::vector<Rect>& windows);

// The same, without the columns.
struct LineLayout {
    std::vector<OCRWord> ordered;
    std::vector<std::int64_t> lineOf;
};
LineLayout readingOrder(const std::vector<OCRWord>& words);
LineLayout readingOrder(const std::vector<OCRWord>& words, const std::vector<Rect>& windows);

// The key of the first window that holds at least half of the word's box (a
// word of no area counts as 1e-9), or -1 when none does.
std::int64_t windowKey(const Rect& word, const std::vector<Rect>& windows);

// The indices from anchor to focus, either way round, whose words' centres
// lie within tolerance of the band between the two words' centres.
std::vector<std::int64_t> dragSelection(std::int64_t anchor, std::int64_t focus,
                                        const std::vector<OCRWord>& words, double tolerance);

// The selected words in reading order: a blank between words of one line, a
// line break between lines. Indices out of range are skipped; a repeated
// index repeats its word.
std::string text(std::vector<std::int64_t> indices, const std::vector<OCRWord>& words,
                 const std::vector<std::int64_t>& lineOf);

// All integers from min(a, b) to max(a, b), ascending.
std::vector<std::int64_t> range(std::int64_t a, std::int64_t b);

}  // namespace WordSelection
}  // namespace tevra
