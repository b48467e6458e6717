#pragma once

#include <string>

// The windows' look: the desktop's own style and colours, or Fusion in a
// light or dark palette where the user pins one or no platform theme exists.
namespace tevra::Theme {

// "system", "light" or "dark"; anything else reads as "system".
void applyAppearance(const std::string& appearance);
// Whether the windows are dark now.
bool isDark();

}  // namespace tevra::Theme
