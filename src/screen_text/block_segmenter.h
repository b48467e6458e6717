#pragma once

#include <string>
#include <vector>

#include "screen_text/rect.h"

namespace tevra {

// One recognised line of text and its box, normalised, Y up.
struct OCRLine {
    std::string text;
    Rect rect;

    bool operator==(const OCRLine&) const = default;
};

// Lines that belong together as a paragraph: their texts joined by blanks,
// their boxes united.
struct TextBlock {
    std::string text;
    Rect rect;

    bool operator==(const TextBlock&) const = default;
};

// Groups recognised lines into paragraph-like blocks by geometry alone: top
// of the screen first, a line joining the most recent block when it sits
// close below its last line, overlaps it sideways by more than 30% of the
// narrower of the two, and keeps the block under 0.6 of the image's height.
// Side-by-side columns in one list break each other up; for columns the
// word-level reading order is the tool.
namespace BlockSegmenter {

std::vector<TextBlock> blocks(const std::vector<OCRLine>& lines);

}  // namespace BlockSegmenter
}  // namespace tevra
