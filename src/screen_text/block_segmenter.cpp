#include "screen_text/block_segmenter.h"

#include <algorithm>

#include "base/text.h"

namespace tevra::BlockSegmenter {
namespace {

Rect unionOf(const std::vector<const OCRLine*>& block) {
    Rect out = block.front()->rect;
    for (const OCRLine* line : block) {
        out = out.united(line->rect);
    }
    return out;
}

bool joins(const std::vector<const OCRLine*>& block, const OCRLine& line, double gapLow,
           double gapHigh) {
    const Rect blockRect = unionOf(block);
    const OCRLine& lastLine = *block.back();
    const double gap = lastLine.rect.minY() - line.rect.maxY();
    const double overlap = std::max(0.0, std::min(blockRect.maxX(), line.rect.maxX()) -
                                             std::max(blockRect.minX(), line.rect.minX()));
    const double narrower = std::min(blockRect.width, line.rect.width);
    const double span = blockRect.maxY() - line.rect.minY();
    return gapLow <= gap && gap < gapHigh && narrower > 0 && overlap / narrower > 0.3 && span < 0.6;
}

}  // namespace

std::vector<TextBlock> blocks(const std::vector<OCRLine>& lines) {
    std::vector<const OCRLine*> kept;
    for (const OCRLine& line : lines) {
        // Blanks and tabs only: a line holding a line break is kept.
        if (!text::trimBlanks(line.text).empty()) {
            kept.push_back(&line);
        }
    }
    if (kept.empty()) {
        return {};
    }
    std::vector<double> heights;
    for (const OCRLine* line : kept) {
        heights.push_back(line->rect.height);
    }
    std::sort(heights.begin(), heights.end());
    const double median = heights[heights.size() / 2];

    std::stable_sort(kept.begin(), kept.end(), [](const OCRLine* a, const OCRLine* b) {
        return a->rect.maxY() > b->rect.maxY();
    });
    const double gapLow = median * -0.3;
    const double gapHigh = median * 0.8;

    // Only the most recent block is ever open.
    std::vector<std::vector<const OCRLine*>> open;
    for (const OCRLine* line : kept) {
        if (!open.empty() && joins(open.back(), *line, gapLow, gapHigh)) {
            open.back().push_back(line);
        } else {
            open.push_back({line});
        }
    }

    std::vector<TextBlock> out;
    for (const auto& block : open) {
        TextBlock result{"", unionOf(block)};
        for (const OCRLine* line : block) {
            if (line != block.front()) {
                result.text += ' ';
            }
            result.text += line->text;
        }
        out.push_back(std::move(result));
    }
    return out;
}

}  // namespace tevra::BlockSegmenter
