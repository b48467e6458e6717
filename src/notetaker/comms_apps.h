#pragma once

#include <map>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

// The applications a call happens in, by the class of their windows
// (WM_CLASS, lower-cased; a Flatpak or Snap build keeps its class).
namespace tevra::CommsApps {

// Applications made for talking: running is enough to name a call.
const std::map<std::string, std::string>& dedicated();
// Browsers, in which a meeting may run: only in front and with the microphone
// live. Every browser call is "Google Meet".
const std::map<std::string, std::string>& browsers();

// Which application a live microphone belongs to: the one in front if it is a
// dedicated one, or a browser while micHot; else the first dedicated one
// among those running, in their order; else none.
std::optional<std::string> activeCallApp(const std::optional<std::string>& frontmostClass,
                                         const std::vector<std::string>& runningClasses,
                                         bool micHot);

// The name of one class: dedicated applications always, browsers only while micHot.
std::optional<std::string> displayName(const std::optional<std::string>& windowClass, bool micHot);

}  // namespace tevra::CommsApps
