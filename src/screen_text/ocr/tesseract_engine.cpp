#include "screen_text/ocr/tesseract_engine.h"

#include <leptonica/allheaders.h>
#include <omp.h>
#include <tesseract/baseapi.h>
#include <tesseract/ocrclass.h>
#include <tesseract/resultiterator.h>

#include <algorithm>
#include <cmath>
#include <optional>

#include "base/error.h"
#include "base/text.h"

namespace tevra {
namespace {

// The first Unicode scalar of UTF-8 text; 0 when there is none.
char32_t firstScalar(std::string_view s) {
    if (s.empty()) {
        return 0;
    }
    const auto lead = static_cast<unsigned char>(s[0]);
    const int length = lead < 0x80 ? 1 : lead < 0xe0 ? 2 : lead < 0xf0 ? 3 : 4;
    if (static_cast<int>(s.size()) < length) {
        return 0;
    }
    char32_t value = length == 1   ? lead
                     : length == 2 ? lead & 0x1f
                     : length == 3 ? lead & 0x0f
                                   : lead & 0x07;
    for (int k = 1; k < length; ++k) {
        value = (value << 6) | (static_cast<unsigned char>(s[k]) & 0x3f);
    }
    return value;
}

// Letters and punctuation of scripts written without blanks between words:
// Han, kana, the CJK symbols and the full-width forms.
bool unspaced(char32_t c) {
    return (c >= 0x2e80 && c <= 0x30ff) || (c >= 0x3100 && c <= 0x312f) ||
           (c >= 0x31a0 && c <= 0x9fff) || (c >= 0xf900 && c <= 0xfaff) ||
           (c >= 0xfe30 && c <= 0xfe4f) || (c >= 0xff00 && c <= 0xffef) ||
           (c >= 0x20000 && c <= 0x3ffff);
}

std::string languagePackages(const std::string& languages) {
    std::string packages;
    std::size_t start = 0;
    while (start <= languages.size()) {
        const std::size_t end = std::min(languages.find('+', start), languages.size());
        std::string code = languages.substr(start, end - start);
        std::replace(code.begin(), code.end(), '_', '-');
        packages += (packages.empty() ? "tesseract-ocr-" : " tesseract-ocr-") + code;
        start = end + 1;
    }
    return packages;
}

// Screen text is small for Tesseract: at its own size, whole lines of the
// 13-pixel type of most desktops go missing. Twice as large, they are read;
// layout analysis then takes about 40% longer, while the line recogniser,
// which scales every line to its own height anyway, costs the same. (An
// enlargement of 1.5 blurs the strokes into letters that are not there.)
constexpr double kEnlargement = 2.0;

struct PixDestroyer {
    void operator()(Pix* pix) const { pixDestroy(&pix); }
};
using PixPtr = std::unique_ptr<Pix, PixDestroyer>;

// The area as a picture of its own, enlarged. (Tesseract's SetRectangle
// would feed its line recogniser rows from elsewhere in the picture.)
PixPtr enlargedArea(const GreyImage& image, PixelRect area) {
    PixPtr pix(pixCreate(area.width, area.height, 8));
    if (!pix) {
        return nullptr;
    }
    l_uint32* data = pixGetData(pix.get());
    const int wordsPerLine = pixGetWpl(pix.get());
    for (int y = 0; y < area.height; ++y) {
        l_uint32* line = data + y * wordsPerLine;
        for (int x = 0; x < area.width; ++x) {
            SET_DATA_BYTE(line, x, image.at(area.left + x, area.top + y));
        }
    }
    return PixPtr(pixScale(pix.get(), kEnlargement, kEnlargement));
}

PixelRect backToImage(PixelRect area, int left, int top, int right, int bottom) {
    auto shrink = [](int v) { return static_cast<int>(std::lround(v / kEnlargement)); };
    return {area.left + shrink(left), area.top + shrink(top), shrink(right) - shrink(left),
            shrink(bottom) - shrink(top)};
}

bool cancelled(void* stop, int) {
    return static_cast<std::stop_token*>(stop)->stop_requested();
}

}  // namespace

TesseractEngine::TesseractEngine(const std::string& languages)
    : api_(std::make_unique<tesseract::TessBaseAPI>()) {
    // No nested, and so no parallel, OpenMP region in this process: each
    // engine keeps to the thread that calls it.
    omp_set_max_active_levels(0);
    if (api_->Init(nullptr, languages.c_str(), tesseract::OEM_LSTM_ONLY) != 0) {
        throw MessageError("Tesseract cannot load the languages " + languages + ": install " +
                           languagePackages(languages));
    }
    // Tesseract's own notes ("Estimating resolution", ...) are of no use here.
    api_->SetVariable("debug_file", "/dev/null");
    // Otsu's threshold per tile rather than one for the page: a dark terminal
    // beside a light editor keeps the text of both.
    api_->SetVariable("thresholding_method", "1");
    api_->SetPageSegMode(tesseract::PSM_AUTO);
}

TesseractEngine::~TesseractEngine() {
    api_->End();
}

std::vector<TesseractEngine::Line> TesseractEngine::recognise(const GreyImage& image,
                                                              PixelRect area,
                                                              std::stop_token stop) {
    omp_set_max_active_levels(0);
    PixPtr picture = enlargedArea(image, area);
    if (!picture) {
        return {};
    }
    api_->SetImage(picture.get());
    // A screen has about 96 dots per inch, and the picture is enlarged.
    api_->SetSourceResolution(static_cast<int>(96 * kEnlargement));
    tesseract::ETEXT_DESC monitor;
    monitor.cancel = cancelled;
    monitor.cancel_this = &stop;
    api_->Recognize(&monitor);

    std::vector<Line> lines;
    std::unique_ptr<tesseract::ResultIterator> it(api_->GetIterator());
    if (!it || it->Empty(tesseract::RIL_WORD)) {
        api_->Clear();
        return lines;
    }
    std::vector<Token> pieces;
    auto closeLine = [&] {
        if (!pieces.empty()) {
            lines.push_back(joinPieces(pieces));
            pieces.clear();
        }
    };
    do {
        if (it->IsAtBeginningOf(tesseract::RIL_TEXTLINE)) {
            closeLine();
        }
        std::unique_ptr<char[]> word(it->GetUTF8Text(tesseract::RIL_WORD));
        int left = 0;
        int top = 0;
        int right = 0;
        int bottom = 0;
        if (!word || !it->BoundingBox(tesseract::RIL_WORD, &left, &top, &right, &bottom)) {
            continue;
        }
        std::string token = text::trim(word.get());
        if (!token.empty()) {
            pieces.push_back({std::move(token), backToImage(area, left, top, right, bottom)});
        }
    } while (it->Next(tesseract::RIL_WORD));
    closeLine();
    api_->Clear();
    return lines;
}

TesseractEngine::Line TesseractEngine::joinPieces(const std::vector<Token>& pieces) {
    Line out;
    for (const Token& piece : pieces) {
        const auto last =
            out.empty() ? std::optional<char32_t>() : text::lastScalar(out.back().text);
        if (last && unspaced(*last) && unspaced(firstScalar(piece.text))) {
            Token& joined = out.back();
            const int right =
                std::max(joined.box.left + joined.box.width, piece.box.left + piece.box.width);
            const int bottom =
                std::max(joined.box.top + joined.box.height, piece.box.top + piece.box.height);
            joined.box.left = std::min(joined.box.left, piece.box.left);
            joined.box.top = std::min(joined.box.top, piece.box.top);
            joined.box.width = right - joined.box.left;
            joined.box.height = bottom - joined.box.top;
            joined.text += piece.text;
        } else {
            out.push_back(piece);
        }
    }
    return out;
}

std::string TesseractEngine::lineText(const Line& line) {
    std::string out;
    for (const Token& token : line) {
        if (!out.empty()) {
            out += ' ';
        }
        out += token.text;
    }
    return out;
}

OCRWord TesseractEngine::toWord(const Token& token, int imageWidth, int imageHeight) {
    const double w = imageWidth;
    const double h = imageHeight;
    const PixelRect& b = token.box;
    return {token.text, Rect{b.left / w, 1.0 - (b.top + b.height) / h, b.width / w, b.height / h}};
}

}  // namespace tevra
