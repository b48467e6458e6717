#include "capture/linux/atspi_focus.h"

#include <atspi/atspi.h>

#include <memory>

namespace tevra {
namespace {

// A reference to a GObject that is dropped when it goes out of scope.
template <typename T>
using Ref = std::unique_ptr<T, decltype([](T* object) {
                                if (object) {
                                    g_object_unref(object);
                                }
                            })>;

// Calls that fail give their neutral value: the error itself is dropped here.
bool failed(GError*& error) {
    if (!error) {
        return false;
    }
    g_clear_error(&error);
    return true;
}

// A method call that gets no answer blocks the main thread for this long.
constexpr int kCallTimeoutMs = 400;
// Bounds the walk through an application that lacks the Collection interface.
constexpr int kWalkLimit = 3000;

bool hasState(AtspiAccessible* object, AtspiStateType state) {
    Ref<AtspiStateSet> states(atspi_accessible_get_state_set(object));
    return states && atspi_state_set_contains(states.get(), state);
}

Ref<AtspiAccessible> childAt(AtspiAccessible* parent, int index) {
    GError* error = nullptr;
    Ref<AtspiAccessible> child(atspi_accessible_get_child_at_index(parent, index, &error));
    failed(error);
    return child;
}

int childCount(AtspiAccessible* parent) {
    GError* error = nullptr;
    const int count = atspi_accessible_get_child_count(parent, &error);
    return failed(error) ? 0 : count;
}

// One query for the focused descendant, where the toolkit offers it.
Ref<AtspiAccessible> focusedByCollection(AtspiAccessible* window) {
    Ref<AtspiCollection> collection(atspi_accessible_get_collection_iface(window));
    if (!collection) {
        return nullptr;
    }
    Ref<AtspiStateSet> wanted(atspi_state_set_new(nullptr));
    atspi_state_set_add(wanted.get(), ATSPI_STATE_FOCUSED);
    Ref<AtspiMatchRule> rule(atspi_match_rule_new(
        wanted.get(), ATSPI_Collection_MATCH_ALL, nullptr, ATSPI_Collection_MATCH_ALL, nullptr,
        ATSPI_Collection_MATCH_ALL, nullptr, ATSPI_Collection_MATCH_ALL, FALSE));
    GError* error = nullptr;
    GArray* matches = atspi_collection_get_matches(
        collection.get(), rule.get(), ATSPI_Collection_SORT_ORDER_CANONICAL, 1, TRUE, &error);
    failed(error);
    if (!matches) {
        return nullptr;
    }
    Ref<AtspiAccessible> found;
    if (matches->len > 0) {
        found.reset(g_array_index(matches, AtspiAccessible*, 0));
        for (guint i = 1; i < matches->len; ++i) {
            g_object_unref(g_array_index(matches, AtspiAccessible*, i));
        }
    }
    g_array_free(matches, TRUE);
    return found;
}

// Depth first through what is showing, for toolkits without Collection.
Ref<AtspiAccessible> focusedByWalk(AtspiAccessible* node, int& budget) {
    const int count = childCount(node);
    for (int i = 0; i < count && budget > 0; ++i, --budget) {
        Ref<AtspiAccessible> child = childAt(node, i);
        if (!child) {
            continue;
        }
        Ref<AtspiStateSet> states(atspi_accessible_get_state_set(child.get()));
        if (!states) {
            continue;
        }
        if (atspi_state_set_contains(states.get(), ATSPI_STATE_FOCUSED)) {
            return child;
        }
        if (atspi_state_set_contains(states.get(), ATSPI_STATE_SHOWING)) {
            if (Ref<AtspiAccessible> found = focusedByWalk(child.get(), budget)) {
                return found;
            }
        }
    }
    return nullptr;
}

Ref<AtspiAccessible> focusedIn(AtspiAccessible* application) {
    // What the library holds of the application may be what the focus has
    // since left: every read starts afresh. (Switching the cache off instead
    // makes the library's own event handling call back into the bus while it
    // waits for an answer, which deadlocks.)
    atspi_accessible_clear_cache(application);
    const int windows = childCount(application);
    for (int i = 0; i < windows; ++i) {
        Ref<AtspiAccessible> window = childAt(application, i);
        if (!window || !hasState(window.get(), ATSPI_STATE_ACTIVE)) {
            continue;
        }
        if (Ref<AtspiAccessible> found = focusedByCollection(window.get())) {
            return found;
        }
        int budget = kWalkLimit;
        return focusedByWalk(window.get(), budget);
    }
    return nullptr;
}

std::optional<std::string> tailText(AtspiAccessible* element, int codePoints) {
    Ref<AtspiText> text(atspi_accessible_get_text_iface(element));
    if (!text) {
        return std::nullopt;
    }
    GError* error = nullptr;
    const int count = atspi_text_get_character_count(text.get(), &error);
    if (failed(error) || count < 0) {
        return std::nullopt;
    }
    const int start = count > codePoints ? count - codePoints : 0;
    gchar* value = atspi_text_get_text(text.get(), start, count, &error);
    if (failed(error) || !value) {
        return std::nullopt;
    }
    std::string out(value);
    g_free(value);
    return out;
}

}  // namespace

bool AtspiFocus::connect() {
    if (!tried_) {
        tried_ = true;
        // 0: connected now; 1: someone in this process already had.
        connected_ = atspi_init() <= 1;
        atspi_set_timeout(kCallTimeoutMs, kCallTimeoutMs * 5);
    }
    return connected_;
}

std::optional<AtspiFocus::Element> AtspiFocus::focused(std::int64_t pid, bool withText) {
    if (!connect()) {
        return std::nullopt;
    }
    Ref<AtspiAccessible> desktop(atspi_get_desktop(0));
    if (!desktop) {
        return std::nullopt;
    }
    // The registry's list of applications changes as they come and go.
    atspi_accessible_clear_cache(desktop.get());
    const int applications = childCount(desktop.get());
    for (int i = 0; i < applications; ++i) {
        Ref<AtspiAccessible> application = childAt(desktop.get(), i);
        if (!application) {
            continue;
        }
        if (pid != 0) {
            GError* error = nullptr;
            const guint appPid = atspi_accessible_get_process_id(application.get(), &error);
            if (failed(error) || static_cast<std::int64_t>(appPid) != pid) {
                continue;
            }
        }
        Ref<AtspiAccessible> element = focusedIn(application.get());
        if (!element) {
            if (pid != 0) {
                return std::nullopt;
            }
            continue;
        }
        GError* error = nullptr;
        Element out;
        out.isPassword =
            atspi_accessible_get_role(element.get(), &error) == ATSPI_ROLE_PASSWORD_TEXT;
        failed(error);
        if (withText && !out.isPassword) {
            out.text = tailText(element.get(), tailCodePoints);
        }
        return out;
    }
    return std::nullopt;
}

}  // namespace tevra
