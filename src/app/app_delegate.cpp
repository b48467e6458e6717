#include "app/app_delegate.h"

#include <charconv>
#include <cstdlib>
#include <variant>

#include "base/error.h"
#include "base/text.h"
#include "capture/fn_hotkey_map.h"
#include "store/history_store.h"
#include "stt/wav.h"

namespace tevra {
namespace {

constexpr const char* kSecureInputMessage = "secure input active (password field?)";

// A number of seconds as a plain decimal: "0.2", "1.0", "0.123456789".
std::string plainDecimal(double value) {
    char buffer[64];
    const auto end = std::to_chars(buffer, buffer + sizeof buffer, value).ptr;
    std::string text(buffer, end);
    if (text.find_first_of(".en") == std::string::npos) {
        text += ".0";
    }
    return text;
}

// Takes every pill call while there are no pills.
class NoPill : public Pill {
public:
    void startRecording() override {}
    void updateLevel(double) override {}
    void processing() override {}
    void done() override {}
    void error() override {}
    void finishRecording() override {}
    void reload() override {}
    void show() override {}
};

}  // namespace

Pill& AppDelegate::pills() {
    static NoPill none;
    return pill_ ? *pill_ : none;
}

struct AppDelegate::Outcome {
    struct Succeeded {
        DictationResult result;
        std::string logLine;
    };
    struct PipelineFailed {
        std::string description;
    };
    struct Failed {
        std::string description;
        AudioRecorder::Samples samples;
    };
    std::variant<Succeeded, PipelineFailed, Failed> value;
};

std::shared_ptr<AppDelegate> AppDelegate::create(AppServices services) {
    return std::shared_ptr<AppDelegate>(new AppDelegate(std::move(services)));
}

AppDelegate::AppDelegate(AppServices services)
    : services_(std::move(services)),
      queue_(*services_.queue),
      statusItem_(services_.statusItem),
      hud_(services_.hud),
      recorder_(services_.recorder),
      selection_(services_.selection),
      recordingStarted_(queue_.now()) {}

AppDelegate::~AppDelegate() {
    if (axWatch_) {
        axWatch_->cancel();
    }
    if (maxDurationTimer_) {
        maxDurationTimer_->cancel();
    }
    if (hotkey_) {
        hotkey_->stop();
    }
}

void AppDelegate::log(const std::string& line) const {
    if (services_.log) {
        services_.log(line);
    }
}

void AppDelegate::wireHotkeyCallbacks(HotkeyBackend& backend) {
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    auto action = [weak](void (AppDelegate::*operation)()) {
        return [weak, operation] {
            if (auto self = weak.lock()) {
                ((*self).*operation)();
            }
        };
    };
    backend.onSlotStart = [weak](int slot) {
        if (auto self = weak.lock()) {
            self->startSlot(slot);
        }
    };
    backend.onSlotFinish = action(&AppDelegate::finishCapture);
    backend.isCapturing = [weak] {
        auto self = weak.lock();
        return self && self->recording_;
    };
    backend.onCancel = action(&AppDelegate::cancelCapture);
    backend.onSelectTool = action(&AppDelegate::selectTool);
    backend.onTranslateSelection = action(&AppDelegate::translateSelection);
    backend.onTranslateClipboard = action(&AppDelegate::translateClipboardAction);
    backend.onClipStack = action(&AppDelegate::clipStackAdd);
    backend.onClipPaste = action(&AppDelegate::clipPaste);
    backend.onClipMode = action(&AppDelegate::clipMode);
    backend.onDictateTranslateStart = action(&AppDelegate::startDictateTranslate);
    backend.onDictateTranslateFinish = action(&AppDelegate::finishCapture);
}

void AppDelegate::startSlot(int slot) {
    const auto& store = runtime_ ? runtime_->store() : nullptr;
    if (!store) {
        return;
    }
    const std::optional<Mode> mode = store->mode(slot);
    if (!mode || recording_) {
        return;
    }
    log(hotkeyLabel(*mode) + " \u2192 " + mode->name);
    if (mode->isScreenshot) {
        runScreenshotMode(*mode);
        return;
    }
    activeMode_ = mode;
    translateCapture_ = false;
    beginRecording(hotkeyLabel(*mode), mode->name);
}

void AppDelegate::startDictateTranslate() {
    if (recording_) {
        return;
    }
    log("Fn 9 \u2192 dictate\u2192translate (" + runtime_->settings().translateTarget + ")");
    activeMode_.reset();
    translateCapture_ = true;
    beginRecording("Fn 9", "translate");
}

void AppDelegate::beginRecording(const std::string&, const std::string&) {
    recording_ = true;
    captureStateMayHaveChanged();
    recordingStarted_ = queue_.now();
    const std::uint64_t capture = ++captureNumber_;
    if (hotkey_) {
        hotkey_->enableCancelKey();
    }
    pills().startRecording();
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    recorder_->start(
        [weak](float level) {
            if (auto self = weak.lock()) {
                self->pills().updateLevel(level);
            }
        },
        [weak, capture](std::exception_ptr error) {
            if (auto self = weak.lock(); self && error) {
                self->microphoneFailed(capture, error);
            }
        });
    if (maxDurationTimer_) {
        maxDurationTimer_->cancel();
    }
    maxDurationTimer_ = queue_.after(maxCaptureSeconds, [weak] {
        if (auto self = weak.lock()) {
            self->finishCapture();
        }
    });
    // The microphone is already opening: asked only now, the password test
    // cannot delay the first sample. A capture in a password field is
    // dropped before anything is sent.
    if (services_.secureInput->isActive()) {
        recorder_->stop();
        endCaptureState();
        pills().finishRecording();
        hud_->error(kSecureInputMessage);
        return;
    }
    services_.inserter->prepare();
}

void AppDelegate::microphoneFailed(std::uint64_t capture, std::exception_ptr error) {
    log("MIC FAILED: " + describe(error));
    // A failure that arrives after its capture ended must not end the next one.
    if (recording_ && capture == captureNumber_) {
        endCaptureState();
        pills().error();
    }
    hud_->error("microphone unavailable \u2014 check Settings \u2192 Microphone");
}

void AppDelegate::finishCapture() {
    if (!recording_) {
        return;
    }
    const std::optional<Mode> mode = activeMode_;
    const bool translate = translateCapture_;
    AudioRecorder::Samples samples = recorder_->stop();
    const double elapsed = queue_.now() - recordingStarted_;
    const bool kept = elapsed > minCaptureSeconds && samples.size() > minCaptureSamples;
    // Counted before the recording ends, so that watchers see it go straight
    // from recording to processing.
    const bool processed = kept && (translate || mode);
    if (processed) {
        ++processing_;
    }
    endCaptureState();

    if (kept) {
        if (!processed) {
            pills().finishRecording();
            return;
        }
        pills().processing();
        services_.chime->processingStarted();
        // Read now, on the main thread: the application the user dictated into.
        process(std::move(samples), mode, translate, readContext());
        return;
    }
    log("discarded: " + std::to_string(samples.size()) + " samples in " + plainDecimal(elapsed) +
        "s");
    if (samples.empty() && elapsed > silentMicrophoneSeconds) {
        pills().error();
        hud_->error("no audio \u2014 allow Tevra in Settings \u2192 Microphone");
    } else {
        pills().finishRecording();
    }
}

void AppDelegate::cancelCapture() {
    if (!recording_) {
        return;
    }
    log("cancelled (Esc)");
    recorder_->stop();
    endCaptureState();
    pills().finishRecording();
}

void AppDelegate::endCaptureState() {
    recording_ = false;
    captureStateMayHaveChanged();
    activeMode_.reset();
    translateCapture_ = false;
    if (maxDurationTimer_) {
        maxDurationTimer_->cancel();
    }
    if (hotkey_) {
        hotkey_->disableCancelKey();
    }
}

void AppDelegate::process(AudioRecorder::Samples samples, std::optional<Mode> mode, bool translate,
                          PolishContext context) {
    if (!runtime_) {
        std::abort();  // start-up always makes the runtime first
    }
    auto self = shared_from_this();  // held until the work has ended
    std::shared_ptr<const Pipeline> pipeline = runtime_->pipeline();
    const std::string target = runtime_->settings().translateTarget;
    services_.work->run([self, pipeline, samples = std::move(samples), mode, translate,
                         context = std::move(context), target]() mutable {
        Outcome outcome;
        try {
            if (translate) {
                DictationResult result = pipeline->dictateToTranslate(
                    samples, AudioRecorder::sampleRate, target, context);
                std::string line = "dictate\u2192translate(" + target + ") " +
                                   std::to_string(result.sttMs) + "ms stt + " +
                                   std::to_string(result.polishMs) + "ms translate";
                outcome.value = Outcome::Succeeded{std::move(result), std::move(line)};
            } else {
                DictationResult result =
                    pipeline->runMode(*mode, samples, AudioRecorder::sampleRate, context);
                std::string line = mode->name + ": " + std::to_string(result.sttMs) + "ms stt + " +
                                   std::to_string(result.polishMs) + "ms compose";
                outcome.value = Outcome::Succeeded{std::move(result), std::move(line)};
            }
        } catch (const PipelineError& error) {
            outcome.value = Outcome::PipelineFailed{error.description()};
        } catch (...) {
            outcome.value = Outcome::Failed{describe(std::current_exception()), std::move(samples)};
        }
        // The delegate's last reference must never drop on a work thread.
        MainQueue& queue = self->queue_;
        queue.post(
            [self = std::move(self), outcome = std::move(outcome)] { self->deliver(outcome); });
    });
}

PolishContext AppDelegate::readContext() const {
    const auto& store = runtime_->store();
    return services_.contextReader->snapshot(store ? store->toneProfiles()
                                                   : std::vector<ToneProfile>{});
}

void AppDelegate::pasteThen(const std::string& text, std::function<void(bool pasted)> pasted) {
    std::weak_ptr<AppDelegate> weak = weak_from_this();
    auto told = std::make_shared<std::function<void(bool)>>(std::move(pasted));
    const bool onItsWay = services_.inserter->insert(text, [weak, told](bool went) {
        if (auto self = weak.lock()) {
            (*told)(went);
        }
    });
    if (!onItsWay) {
        (*told)(false);
    }
}

void AppDelegate::pasteFromPill(const std::string& text) {
    pasteThen(text, [this](bool pasted) {
        if (!pasted) {
            hud_->error(copiedMessage);
        }
    });
}

void AppDelegate::deliver(const Outcome& outcome) {
    --processing_;
    captureStateMayHaveChanged();
    if (const auto* success = std::get_if<Outcome::Succeeded>(&outcome.value)) {
        log(success->logLine);
        std::weak_ptr<AppDelegate> weak = weak_from_this();
        // The pill's check mark waits for the paste to go out.
        const bool onItsWay =
            services_.inserter->insert(success->result.polished, [weak](bool pasted) {
                auto self = weak.lock();
                if (!self) {
                    return;
                }
                if (pasted) {
                    self->pills().done();
                    return;
                }
                self->log("paste held back: a modifier key stayed down");
                self->pills().error();
                self->hud_->error(copiedMessage);
            });
        if (!onItsWay) {
            pills().error();
            hud_->error(copiedMessage);
        }
        services_.chime->processingFinished();
        pills().reload();
        if (uiState_) {
            uiState_->reload();  // an open window shows the new row
        }
        return;
    }
    pills().error();
    if (const auto* failure = std::get_if<Outcome::PipelineFailed>(&outcome.value)) {
        hud_->error(failure->description);
        services_.chime->processingFailed();
        return;
    }
    const auto& failure = std::get<Outcome::Failed>(outcome.value);
    const ByteBuffer wav = WAV::data(failure.samples, AudioRecorder::sampleRate);
    runtime_->saveFailedAudio(std::string_view(wav.data(), wav.size()));
    log("FAILED: " + failure.description);
    hud_->error("failed (audio saved): " + text::prefixCharacters(failure.description, 70));
    services_.chime->processingFailed();
}

}  // namespace tevra
