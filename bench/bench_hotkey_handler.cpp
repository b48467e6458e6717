// The hotkey path sees every keystroke on the desktop; for the keys it does
// not handle it must cost next to nothing (target: under 20 µs per event).
#include <benchmark/benchmark.h>

#include <memory>

#include "base/virtual_main_queue.h"
#include "capture/fn_hotkey_monitor.h"
#include "capture/hotkey_monitor.h"
#include "capture/key_event_decoder.h"
#include "capture/key_symbols.h"
#include "support/recording_desktop_keyboard.h"

namespace {

using tevra::DesktopKeyboard;
using Kind = DesktopKeyboard::Event::Kind;

constexpr uint32_t keyQ = 0x71;

// The display thread's share: a raw key event of some other key.
void BM_DecoderRawEventOfAnotherKey(benchmark::State& state) {
    tevra::KeyEventDecoder decoder;
    decoder.setTalkKey(105);
    uint8_t code = 10;
    for (auto _ : state) {
        benchmark::DoNotOptimize(decoder.observed(code, true));
        benchmark::DoNotOptimize(decoder.observed(code, false));
        code = code == 100 ? 10 : code + 1;
    }
    state.SetItemsProcessed(state.iterations() * 2);
}
BENCHMARK(BM_DecoderRawEventOfAnotherKey);

// The main thread's share: a key that is neither the talk key nor a chord,
// with the talk key up and with it down.
void BM_FnMonitorUnhandledKey(benchmark::State& state) {
    tevra::VirtualMainQueue queue;
    auto monitor = std::make_shared<tevra::FnHotkeyMonitor>(
        queue, std::make_unique<tevra::testing::RecordingDesktopKeyboard>());
    monitor->start();
    if (state.range(0) == 1) {
        monitor->handle({Kind::talkKeyDown, 0xffe4});
    }
    const DesktopKeyboard::Event down{Kind::keyDown, keyQ};
    const DesktopKeyboard::Event up{Kind::keyUp, keyQ};
    for (auto _ : state) {
        monitor->handle(down);
        monitor->handle(up);
        benchmark::ClobberMemory();
    }
    state.SetItemsProcessed(state.iterations() * 2);
    state.SetLabel(state.range(0) == 1 ? "talk key down" : "talk key up");
}
BENCHMARK(BM_FnMonitorUnhandledKey)->Arg(0)->Arg(1);

void BM_AltMonitorUnhandledKey(benchmark::State& state) {
    tevra::VirtualMainQueue queue;
    auto monitor = std::make_shared<tevra::HotkeyMonitor>(
        queue, std::make_unique<tevra::testing::RecordingDesktopKeyboard>(), 6);
    monitor->start();
    const DesktopKeyboard::Event down{Kind::keyDown, keyQ};
    for (auto _ : state) {
        monitor->handle(down);
    }
    state.SetItemsProcessed(state.iterations());
}
BENCHMARK(BM_AltMonitorUnhandledKey);

}  // namespace
