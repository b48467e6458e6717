#include "notetaker/linux/x11_running_applications.h"

#include <algorithm>

#include "base/text.h"

namespace tevra {

X11RunningApplications::X11RunningApplications(std::shared_ptr<X11Connection> x)
    : x_(std::move(x)) {}

std::optional<std::string> X11RunningApplications::classOf(X11Connection::Window window) const {
    if (window == 0) {
        return std::nullopt;
    }
    const auto hint = x_->classHint(window);
    if (!hint || hint->className.empty()) {
        return std::nullopt;
    }
    return text::lowercase(hint->className);
}

std::optional<std::string> X11RunningApplications::frontmost() {
    if (!x_) {
        return std::nullopt;
    }
    return classOf(x_->activeWindow());
}

std::vector<std::string> X11RunningApplications::running() {
    std::vector<std::string> classes;
    if (!x_) {
        return classes;
    }
    for (const X11Connection::Window window : x_->clientList()) {
        auto windowClass = classOf(window);
        if (windowClass &&
            std::find(classes.begin(), classes.end(), *windowClass) == classes.end()) {
            classes.push_back(std::move(*windowClass));
        }
    }
    return classes;
}

}  // namespace tevra
