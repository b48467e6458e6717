#pragma once

#include <functional>

#include "capture/clipboard.h"

namespace tevra {

// Reads everything the clipboard's owner offers, on a thread of its own, so
// that an owner slow to answer (a browser encoding a large image in ten
// formats) never holds up the main thread.
class ClipboardReader {
public:
    virtual ~ClipboardReader() = default;
    // done gets the snapshot on the main queue once it has been read.
    virtual void read(std::function<void(ClipboardSnapshot)> done) = 0;
};

}  // namespace tevra
