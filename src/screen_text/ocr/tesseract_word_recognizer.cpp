#include "screen_text/ocr/tesseract_word_recognizer.h"

#include <algorithm>
#include <cmath>
#include <exception>
#include <future>

#include "base/serial_queue.h"
#include "screen_text/ocr/tesseract_engine.h"

namespace tevra {

// One engine and the thread that owns it; the engine is touched only there.
struct TesseractWordRecognizer::Worker {
    explicit Worker(int index) : queue("tevra.ocr." + std::to_string(index)) {}

    TesseractEngine& engine(const std::string& languages) {
        if (!loaded) {
            loaded = std::make_unique<TesseractEngine>(languages);
        }
        return *loaded;
    }

    std::unique_ptr<TesseractEngine> loaded;
    SerialQueue queue;  // last: its thread stops before the engine goes
};

namespace {

PixelRect pixelArea(const ScreenImage& image, const std::optional<Rect>& region) {
    if (!region) {
        return {0, 0, image.width, image.height};
    }
    auto clampX = [&](double v) {
        return std::clamp(static_cast<int>(std::lround(v * image.width)), 0, image.width);
    };
    auto clampY = [&](double v) {
        return std::clamp(static_cast<int>(std::lround(v * image.height)), 0, image.height);
    };
    const int left = clampX(region->minX());
    const int right = clampX(region->maxX());
    // Y up in the region, rows from the top in the picture.
    const int top = clampY(1.0 - region->maxY());
    const int bottom = clampY(1.0 - region->minY());
    return {left, top, right - left, bottom - top};
}

}  // namespace

TesseractWordRecognizer::TesseractWordRecognizer(std::string languages, int engines)
    : languages_(std::move(languages)) {
    for (int i = 0; i < std::max(1, engines); ++i) {
        workers_.push_back(std::make_unique<Worker>(i));
    }
}

TesseractWordRecognizer::~TesseractWordRecognizer() = default;

void TesseractWordRecognizer::warmUp() {
    for (auto& worker : workers_) {
        worker->queue.async([w = worker.get(), languages = languages_] {
            try {
                w->engine(languages);
            } catch (const std::exception&) {
                // The reading that needs it reports the failure.
            }
        });
    }
}

void TesseractWordRecognizer::release() {
    for (auto& worker : workers_) {
        worker->queue.async([w = worker.get()] { w->loaded.reset(); });
    }
}

std::vector<OCRWord> TesseractWordRecognizer::recognizeWords(const ScreenImage& image,
                                                             std::optional<Rect> region,
                                                             std::stop_token stop) {
    const PixelRect area = pixelArea(image, region);
    if (area.width <= 0 || area.height <= 0) {
        return {};
    }
    const auto grey = std::make_shared<const GreyImage>(toGrey(image));
    const std::vector<PixelRect> bands =
        splitIntoBands(*grey, area, static_cast<int>(workers_.size()));

    std::vector<std::future<std::vector<TesseractEngine::Line>>> results;
    for (std::size_t k = 0; k < bands.size(); ++k) {
        auto task = std::make_shared<std::packaged_task<std::vector<TesseractEngine::Line>()>>(
            [w = workers_[k].get(), languages = languages_, grey, band = bands[k], stop] {
                return w->engine(languages).recognise(*grey, band, stop);
            });
        results.push_back(task->get_future());
        workers_[k]->queue.async([task] { (*task)(); });
    }

    std::vector<OCRWord> words;
    std::exception_ptr failure;
    for (auto& result : results) {
        try {
            for (const auto& line : result.get()) {
                for (const auto& token : line) {
                    words.push_back(TesseractEngine::toWord(token, image.width, image.height));
                }
            }
        } catch (...) {
            if (!failure) {
                failure = std::current_exception();
            }
        }
    }
    if (failure) {
        std::rethrow_exception(failure);
    }
    return words;
}

}  // namespace tevra
