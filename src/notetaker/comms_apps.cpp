#include "notetaker/comms_apps.h"

#include "base/text.h"

namespace tevra::CommsApps {
namespace {

enum class Kind { dedicated, browser };

struct CallApp {
    const char* windowClass;
    const char* displayName;
    Kind kind;
};

// Adding an application is one line here.
constexpr CallApp kCallApps[] = {
    {"zoom", "Zoom", Kind::dedicated},
    {"teams-for-linux", "Teams", Kind::dedicated},
    {"microsoft teams - preview", "Teams", Kind::dedicated},
    {"slack", "Slack", Kind::dedicated},
    {"discord", "Discord", Kind::dedicated},
    {"webex", "Webex", Kind::dedicated},
    {"ciscocollabhost", "Webex", Kind::dedicated},
    {"google-chrome", "Google Meet", Kind::browser},
    {"chromium", "Google Meet", Kind::browser},
    {"chromium-browser", "Google Meet", Kind::browser},
    {"brave-browser", "Google Meet", Kind::browser},
    {"microsoft-edge", "Google Meet", Kind::browser},
    {"firefox", "Google Meet", Kind::browser},
    {"vivaldi-stable", "Google Meet", Kind::browser},
};

std::map<std::string, std::string> tableOf(Kind kind) {
    std::map<std::string, std::string> table;
    for (const CallApp& app : kCallApps) {
        if (app.kind == kind) {
            table.emplace(app.windowClass, app.displayName);
        }
    }
    return table;
}

std::optional<std::string> lookUp(const std::map<std::string, std::string>& table,
                                  const std::string& windowClass) {
    const auto it = table.find(text::lowercase(windowClass));
    return it == table.end() ? std::nullopt : std::optional(it->second);
}

}  // namespace

const std::map<std::string, std::string>& dedicated() {
    static const auto table = tableOf(Kind::dedicated);
    return table;
}

const std::map<std::string, std::string>& browsers() {
    static const auto table = tableOf(Kind::browser);
    return table;
}

std::optional<std::string> activeCallApp(const std::optional<std::string>& frontmostClass,
                                         const std::vector<std::string>& runningClasses,
                                         bool micHot) {
    if (frontmostClass) {
        if (auto name = lookUp(dedicated(), *frontmostClass)) {
            return name;
        }
        if (micHot) {
            if (auto name = lookUp(browsers(), *frontmostClass)) {
                return name;
            }
        }
    }
    for (const std::string& running : runningClasses) {
        if (auto name = lookUp(dedicated(), running)) {
            return name;
        }
    }
    return std::nullopt;
}

std::optional<std::string> displayName(const std::optional<std::string>& windowClass, bool micHot) {
    if (!windowClass) {
        return std::nullopt;
    }
    if (auto name = lookUp(dedicated(), *windowClass)) {
        return name;
    }
    return micHot ? lookUp(browsers(), *windowClass) : std::nullopt;
}

}  // namespace tevra::CommsApps
