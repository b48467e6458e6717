#pragma once

#include <cstddef>
#include <memory>
#include <vector>

#include "capture/focus_probe.h"
#include "polish/polish_context.h"
#include "polish/tone_profile.h"

namespace tevra {

// Reads where a dictation is going, just before its text is made: the focused
// application, its window title, what the focused field already holds, and the
// tone that the user's profiles give it. Never fails: a read that fails leaves
// its field empty.
class ContextReader {
public:
    // The longest tail of the focused field that is kept, in characters.
    static constexpr std::size_t focusedTextLimit = 1500;

    explicit ContextReader(std::shared_ptr<FocusProbe> probe);

    PolishContext snapshot(const std::vector<ToneProfile>& toneProfiles) const;

private:
    std::shared_ptr<FocusProbe> probe_;
};

}  // namespace tevra
