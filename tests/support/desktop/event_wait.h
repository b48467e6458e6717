#pragma once

#include <functional>

namespace tevra::testing {

// Runs the Qt event loop until done() holds or seconds of real time pass, and
// tells which. For waiting on events of other processes with a deadline.
bool waitUntil(const std::function<bool()>& done, double seconds);

}  // namespace tevra::testing
