#pragma once

#include <string>
#include <utility>
#include <vector>

#include "capture/hotkey_backend.h"

namespace tevra::testing {

// Stands in for the orchestrator behind a hotkey backend: records every
// callback by name, and keeps isCapturing as the orchestrator would (a start
// begins a capture; a finish or a cancel ends it).
class RecordingHotkeyCalls {
public:
    std::vector<std::string> calls;
    bool capturing = false;

    void wire(HotkeyBackend& backend) {
        backend.isCapturing = [this] { return capturing; };
        backend.onSlotStart = [this](int slot) { record("start " + std::to_string(slot), true); };
        backend.onSlotFinish = [this] { record("finish", false); };
        backend.onCancel = [this] { record("cancel", false); };
        backend.onDictateTranslateStart = [this] { record("translate start", true); };
        backend.onDictateTranslateFinish = [this] { record("translate finish", false); };
        backend.onSelectTool = [this] { calls.push_back("select"); };
        backend.onTranslateSelection = [this] { calls.push_back("translate selection"); };
        backend.onTranslateClipboard = [this] { calls.push_back("translate clipboard"); };
        backend.onClipStack = [this] { calls.push_back("clip stack"); };
        backend.onClipPaste = [this] { calls.push_back("clip paste"); };
        backend.onClipMode = [this] { calls.push_back("clip mode"); };
    }

    // The calls since the last look.
    std::vector<std::string> take() { return std::exchange(calls, {}); }

private:
    void record(std::string call, bool nowCapturing) {
        calls.push_back(std::move(call));
        capturing = nowCapturing;
    }
};

}  // namespace tevra::testing
