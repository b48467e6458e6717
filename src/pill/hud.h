#pragma once

#include <string>

namespace tevra {

// The small meter panel at the bottom centre of the main screen, for what does
// not run on the pill: translations, screenshot voices and notices. It has no
// text: a notice is a shake of orange bars, and the words passed to error()
// reach nobody but the call site's reader. Every operation returns at once,
// may be called from any thread, and does its work on the main queue.
class Hud {
public:
    virtual ~Hud() = default;

    // A wave of bars until the next call.
    virtual void processing() = 0;
    // The bars fall away to a check mark; hides after 0.85 s.
    virtual void done() = 0;
    // Orange glow and a shake; hides after 1.7 s. The message is not shown.
    virtual void error(const std::string& message) = 0;
    // Off the screen, its timers stopped.
    virtual void hide() = 0;
};

}  // namespace tevra
