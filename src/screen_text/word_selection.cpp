#include "screen_text/word_selection.h"

#include <algorithm>
#include <cstdlib>
#include <map>
#include <numeric>

namespace tevra::WordSelection {
namespace {

enum class Axis { horizontal, vertical };

struct Gap {
    double centre = 0;
    double size = 0;
};

using Indices = std::vector<std::size_t>;

// The lines found so far and the column of each, shared by every level of
// one cut.
class XYCut {
public:
    XYCut(const std::vector<OCRWord>& words, double mh, double mw)
        : words_(words), mh_(mh), mw_(mw) {}

    void cut(const Indices& indices, int depth, std::int64_t column) {
        if (indices.size() >= 2 && depth < 25 && split(indices, depth, column)) {
            return;
        }
        appendLines(indices, column);
    }

    std::vector<Indices> lines;
    std::vector<std::int64_t> lineColumns;

private:
    const Rect& box(std::size_t i) const { return words_[i].rect; }

    // Cuts once and recurses, or tells that no cut applies.
    bool split(const Indices& indices, int depth, std::int64_t column) {
        double smallestX = box(indices.front()).minX();
        double largestX = box(indices.front()).maxX();
        for (std::size_t i : indices) {
            smallestX = std::min(smallestX, box(i).minX());
            largestX = std::max(largestX, box(i).maxX());
        }
        const double pageWidth = largestX - smallestX;
        const Gap x = widestGap(indices, Axis::horizontal);
        const Gap y = widestGap(indices, Axis::vertical);

        // Columns first, always.
        if (x.size >= std::max(0.05 * pageWidth, mw_)) {
            Indices left;
            Indices right;
            for (std::size_t i : indices) {
                (box(i).midX() < x.centre ? left : right).push_back(i);
            }
            if (!left.empty() && !right.empty()) {
                const std::int64_t c = nextColumn_;
                nextColumn_ += 2;
                cut(left, depth + 1, c);
                cut(right, depth + 1, c + 1);
                return true;
            }
        }
        if (y.size >= 1.3 * mh_) {
            Indices upper;
            Indices lower;
            for (std::size_t i : indices) {
                (box(i).midY() >= y.centre ? upper : lower).push_back(i);
            }
            if (!upper.empty() && !lower.empty()) {
                cut(upper, depth + 1, column);
                cut(lower, depth + 1, column);
                return true;
            }
        }
        return false;
    }

    Gap widestGap(const Indices& indices, Axis axis) const {
        std::vector<std::pair<double, double>> extents;
        extents.reserve(indices.size());
        for (std::size_t i : indices) {
            extents.push_back(axis == Axis::horizontal ? std::pair{box(i).minX(), box(i).maxX()}
                                                       : std::pair{box(i).minY(), box(i).maxY()});
        }
        std::stable_sort(extents.begin(), extents.end(),
                         [](const auto& a, const auto& b) { return a.first < b.first; });
        Gap gap;
        if (extents.size() < 2) {
            return gap;
        }
        double reach = extents.front().second;
        for (std::size_t k = 1; k < extents.size(); ++k) {
            const auto [low, high] = extents[k];
            // Strict: the first of several equally wide gaps wins.
            if (reach < low && gap.size < low - reach) {
                gap.size = low - reach;
                gap.centre = (reach + low) * 0.5;
            }
            reach = std::max(reach, high);
        }
        return gap;
    }

    void appendLines(Indices indices, std::int64_t column) {
        if (indices.empty()) {
            return;
        }
        std::stable_sort(indices.begin(), indices.end(), [this](std::size_t a, std::size_t b) {
            return box(a).midY() > box(b).midY();
        });
        Indices current;
        double lineY = 0;
        for (std::size_t i : indices) {
            const double y = box(i).midY();
            if (current.empty()) {
                current = {i};
                lineY = y;
            } else if (std::abs(y - lineY) < mh_ * 0.6) {
                const double n = static_cast<double>(current.size());
                current.push_back(i);
                lineY = (y + lineY * n) / (n + 1);
            } else {
                closeLine(std::move(current), column);
                current = {i};
                lineY = y;
            }
        }
        if (!current.empty()) {
            closeLine(std::move(current), column);
        }
    }

    void closeLine(Indices line, std::int64_t column) {
        std::stable_sort(line.begin(), line.end(), [this](std::size_t a, std::size_t b) {
            return box(a).minX() < box(b).minX();
        });
        lines.push_back(std::move(line));
        lineColumns.push_back(column);
    }

    const std::vector<OCRWord>& words_;
    double mh_;
    double mw_;
    std::int64_t nextColumn_ = 1;
};

}  // namespace

double median(std::vector<double> values) {
    if (values.empty()) {
        return 0;
    }
    std::sort(values.begin(), values.end());
    return values[values.size() / 2];
}

WordLayout readingOrderColumns(const std::vector<OCRWord>& words) {
    WordLayout out;
    if (words.empty()) {
        return out;
    }
    std::vector<double> heights;
    std::vector<double> widths;
    for (const OCRWord& word : words) {
        heights.push_back(word.rect.height);
        widths.push_back(word.rect.width);
    }
    XYCut xy(words, median(heights), median(widths));
    Indices all(words.size());
    std::iota(all.begin(), all.end(), 0);
    xy.cut(all, 0, 0);

    for (std::size_t line = 0; line < xy.lines.size(); ++line) {
        for (std::size_t i : xy.lines[line]) {
            out.ordered.push_back(words[i]);
            out.lineOf.push_back(static_cast<std::int64_t>(line));
            out.column.push_back(xy.lineColumns[line]);
        }
    }
    return out;
}

std::int64_t windowKey(const Rect& word, const std::vector<Rect>& windows) {
    const double area = std::max(word.width * word.height, 1e-9);
    for (std::size_t k = 0; k < windows.size(); ++k) {
        const auto common = word.intersection(windows[k]);
        if (common && common->width * common->height / area >= 0.5) {
            return static_cast<std::int64_t>(k);
        }
    }
    return -1;
}

WordLayout readingOrderColumns(const std::vector<OCRWord>& words,
                               const std::vector<Rect>& windows) {
    if (windows.empty()) {
        return readingOrderColumns(words);
    }
    // Keys ascending, -1 (on no window) last.
    auto keyOrder = [](std::int64_t a, std::int64_t b) {
        return a == -1 ? false : b == -1 ? true : a < b;
    };
    std::map<std::int64_t, std::vector<OCRWord>, decltype(keyOrder)> groups(keyOrder);
    for (const OCRWord& word : words) {
        groups[windowKey(word.rect, windows)].push_back(word);
    }

    WordLayout out;
    std::int64_t nextLine = 0;
    std::int64_t columnBase = 0;
    for (const auto& [key, group] : groups) {
        const WordLayout local = readingOrderColumns(group);
        std::map<std::int64_t, std::int64_t> renumbered;
        std::int64_t largestColumn = 0;
        for (std::size_t k = 0; k < local.ordered.size(); ++k) {
            auto [it, fresh] = renumbered.try_emplace(local.lineOf[k], nextLine);
            if (fresh) {
                ++nextLine;
            }
            out.ordered.push_back(local.ordered[k]);
            out.lineOf.push_back(it->second);
            out.column.push_back(columnBase + local.column[k]);
            largestColumn = std::max(largestColumn, local.column[k]);
        }
        columnBase += largestColumn + 1;
    }
    return out;
}

LineLayout readingOrder(const std::vector<OCRWord>& words) {
    WordLayout layout = readingOrderColumns(words);
    return {std::move(layout.ordered), std::move(layout.lineOf)};
}

LineLayout readingOrder(const std::vector<OCRWord>& words, const std::vector<Rect>& windows) {
    WordLayout layout = readingOrderColumns(words, windows);
    return {std::move(layout.ordered), std::move(layout.lineOf)};
}

std::vector<std::int64_t> dragSelection(std::int64_t anchor, std::int64_t focus,
                                        const std::vector<OCRWord>& words, double tolerance) {
    const auto count = static_cast<std::int64_t>(words.size());
    if (anchor < 0 || focus < 0 || anchor >= count || focus >= count) {
        return {};
    }
    const double a = words[anchor].rect.midY();
    const double f = words[focus].rect.midY();
    const double yLow = std::min(a, f) - tolerance;
    const double yHigh = std::max(a, f) + tolerance;
    std::vector<std::int64_t> out;
    for (std::int64_t i = std::min(anchor, focus); i <= std::max(anchor, focus); ++i) {
        const double y = words[i].rect.midY();
        if (yLow <= y && y <= yHigh) {
            out.push_back(i);
        }
    }
    return out;
}

std::string text(std::vector<std::int64_t> indices, const std::vector<OCRWord>& words,
                 const std::vector<std::int64_t>& lineOf) {
    const auto limit = static_cast<std::int64_t>(std::min(words.size(), lineOf.size()));
    std::erase_if(indices, [limit](std::int64_t i) { return i < 0 || i >= limit; });
    std::sort(indices.begin(), indices.end());
    std::string out;
    for (std::size_t k = 0; k < indices.size(); ++k) {
        if (k > 0) {
            out += lineOf[indices[k]] == lineOf[indices[k - 1]] ? " " : "\n";
        }
        out += words[indices[k]].text;
    }
    return out;
}

std::vector<std::int64_t> range(std::int64_t a, std::int64_t b) {
    std::vector<std::int64_t> out;
    for (std::int64_t i = std::min(a, b); i <= std::max(a, b); ++i) {
        out.push_back(i);
    }
    return out;
}

}  // namespace tevra::WordSelection
