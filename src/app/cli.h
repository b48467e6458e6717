#pragma once

namespace tevra::CLI {

// Tevra has no command-line mode of its own (tevractl is the command-line
// companion): this always declines, and the desktop program starts.
bool runIfRequested();

}  // namespace tevra::CLI
