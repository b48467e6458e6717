#pragma once

#include <atomic>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <string>
#include <vector>

#include "base/main_queue.h"
#include "base/serial_queue.h"
#include "capture/clipboard.h"
#include "capture/wayland/wayland_connection.h"

namespace tevra {

// The Wayland clipboard through the data-control protocol, which a
// compositor offers to clipboard tools: it reads every type the selection
// offers and sets the selection without having the focus, so the restore
// after a paste brings back exactly what was there. Reads happen on a thread
// of their own; the selection Tevra sets is served from the connection's.
class DataControlClipboard : public Clipboard,
                             public std::enable_shared_from_this<DataControlClipboard> {
public:
    // Null when the compositor offers no data control or no seat.
    static std::shared_ptr<DataControlClipboard> create(MainQueue& queue,
                                                        std::shared_ptr<WaylandConnection> wayland);
    ~DataControlClipboard() override;

    ClipboardSnapshot snapshot() override;
    void snapshotLater(std::function<void(ClipboardSnapshot)> done) override;
    void prefetch() override;
    void setText(std::string_view text, bool transient) override;
    void setPrimaryText(std::string_view text) override;
    void restore(const ClipboardSnapshot& snapshot) override;
    std::optional<std::string> text() override;
    std::int64_t changeCount() override;

    // Seconds a selection's owner has to hand over one type's data.
    static constexpr int readTimeoutMs = 2000;

    struct State;  // lives on the connection's thread

private:
    DataControlClipboard(MainQueue& queue, std::shared_ptr<WaylandConnection> wayland);
    // The bytes of one type of the current selection, nullopt when the owner
    // gave nothing in time or the selection changed meanwhile.
    std::optional<std::string> receive(const std::string& type, std::uint64_t generation);
    void setSelection(ClipboardItem item, bool primary);
    struct Read;
    std::shared_ptr<Read> startRead();

    MainQueue& queue_;
    std::shared_ptr<WaylandConnection> wayland_;
    std::shared_ptr<State> state_;
    std::shared_ptr<Read> read_;  // main thread only
    SerialQueue reader_{"tevra.wayland-clipboard"};
};

}  // namespace tevra
