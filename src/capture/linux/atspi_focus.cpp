#include "capture/linux/atspi_focus.h"

#include <atspi/atspi.h>

#include <chrono>
#include <condition_variable>
#include <future>
#include <mutex>
#include <thread>

namespace tevra {
namespace {

// A reference to a GObject that is dropped when it goes out of scope.
struct Unref {
    void operator()(void* object) const {
        if (object) {
            g_object_unref(object);
        }
    }
};
template <typename T>
using Ref = std::unique_ptr<T, Unref>;

template <typename T>
Ref<T> retained(T* object) {
    return Ref<T>(object ? static_cast<T*>(g_object_ref(object)) : nullptr);
}

// Calls that fail give their neutral value: the error itself is dropped here.
bool failed(GError*& error) {
    if (!error) {
        return false;
    }
    g_clear_error(&error);
    return true;
}

// A method call that gets no answer holds the listening thread this long.
constexpr int kCallTimeoutMs = 400;
// Bounds the first look's walk through an application without Collection.
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

// The events that move the focus.
constexpr const char* kEvents[] = {"object:state-changed:focused", "window:activate",
                                   "window:deactivate"};

// The focused element inside one window.
Ref<AtspiAccessible> focusedIn(AtspiAccessible* window) {
    if (Ref<AtspiAccessible> found = focusedByCollection(window)) {
        return found;
    }
    int budget = kWalkLimit;
    return focusedByWalk(window, budget);
}

// The focused element of whichever application has an active window: the
// first look, before any focus event has come.
Ref<AtspiAccessible> focusedOnTheDesktop() {
    Ref<AtspiAccessible> desktop(atspi_get_desktop(0));
    if (!desktop) {
        return nullptr;
    }
    const int applications = childCount(desktop.get());
    for (int a = 0; a < applications; ++a) {
        Ref<AtspiAccessible> application = childAt(desktop.get(), a);
        const int windows = application ? childCount(application.get()) : 0;
        for (int w = 0; w < windows; ++w) {
            Ref<AtspiAccessible> window = childAt(application.get(), w);
            if (!window || !hasState(window.get(), ATSPI_STATE_ACTIVE)) {
                continue;
            }
            return focusedIn(window.get());
        }
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

// The application's name on the accessibility bus, known without asking it:
// an object carries it from the event or the reply that named it.
std::string busName(AtspiAccessible* element) {
    const AtspiObject* object = ATSPI_OBJECT(element);
    return object && object->app && object->app->bus_name ? object->app->bus_name : "";
}

bool isPasswordField(AtspiAccessible* element) {
    GError* error = nullptr;
    const AtspiRole role = atspi_accessible_get_role(element, &error);
    return !failed(error) && role == ATSPI_ROLE_PASSWORD_TEXT;
}

}  // namespace

// Everything of libatspi lives on the listener's thread, in a main context of
// its own: the library is not thread-safe, and its events and calls must not
// run on the program's main loop.
struct AtspiFocus::Listener {
    GMainContext* context = g_main_context_new();
    GMainLoop* loop = g_main_loop_new(context, FALSE);
    std::thread thread;

    std::mutex mutex;
    std::condition_variable ready;
    bool started = false;
    bool connected = false;
    // What the main thread may read at once.
    bool hasFocus = false;
    bool focusIsPassword = false;

    // The listener thread's own.
    Ref<AtspiAccessible> focus;
    std::string focusBusName;
    AtspiEventListener* events = nullptr;

    void run() {
        g_main_context_push_thread_default(context);
        // 0: connected now; 1: someone in this process already had.
        const bool ok = atspi_init() <= 1;
        if (ok) {
            atspi_set_main_context(context);
            atspi_set_timeout(kCallTimeoutMs, kCallTimeoutMs * 5);
            events = atspi_event_listener_new(&Listener::onEvent, this, nullptr);
            for (const char* type : kEvents) {
                GError* error = nullptr;
                atspi_event_listener_register(events, type, &error);
                failed(error);
            }
            setFocus(focusedOnTheDesktop());
        }
        {
            std::lock_guard lock(mutex);
            started = true;
            connected = ok;
        }
        ready.notify_all();
        if (ok) {
            g_main_loop_run(loop);
            for (const char* type : kEvents) {
                atspi_event_listener_deregister(events, type, nullptr);
            }
            g_object_unref(events);
        }
        focus.reset();
        g_main_context_pop_thread_default(context);
    }

    void setFocus(Ref<AtspiAccessible> element) {
        const bool password = element && isPasswordField(element.get());
        focusBusName = element ? busName(element.get()) : "";
        focus = std::move(element);
        std::lock_guard lock(mutex);
        hasFocus = focus != nullptr;
        focusIsPassword = password;
    }

    static void onEvent(AtspiEvent* event, void* data) {
        auto* self = static_cast<Listener*>(data);
        const std::string type = event->type ? event->type : "";
        AtspiAccessible* source = event->source;
        // A field losing the focus says nothing of where it went, and toolkits
        // let it go and take it back around a window's activation: only a new
        // focus replaces the old one, so that a password field is never
        // forgotten in between.
        if (type.starts_with("object:state-changed:focused") && source && event->detail1 != 0) {
            self->setFocus(retained(source));
        } else if (type.starts_with("window:activate") && source) {
            // The field that has the focus in a window just activated, in case
            // its own event came before the application was known here.
            if (Ref<AtspiAccessible> found = focusedIn(source)) {
                self->setFocus(std::move(found));
            }
        } else if (type.starts_with("window:deactivate") && source && self->focus &&
                   busName(source) == self->focusBusName) {
            // The focus left the application, perhaps for a window that
            // publishes nothing (a terminal without accessibility): where it
            // is now, the active windows tell.
            self->setFocus(focusedOnTheDesktop());
        }
        g_boxed_free(ATSPI_TYPE_EVENT, event);
    }

    // Reads the focused element's text on the listener's thread.
    std::optional<Element> readFocus() {
        if (!focus) {
            return std::nullopt;
        }
        Element out;
        out.isPassword = isPasswordField(focus.get());
        if (!out.isPassword) {
            out.text = tailText(focus.get(), tailCodePoints);
        }
        return out;
    }
};

// Never destroyed: its thread may be inside the library when the process
// ends, and the library's own state lives as long.
AtspiFocus::Listener* AtspiFocus::processListener() {
    static AtspiFocus::Listener* const listener = [] {
        auto* made = new AtspiFocus::Listener();
        made->thread = std::thread([made] { made->run(); });
        made->thread.detach();
        return made;
    }();
    return listener;
}

AtspiFocus::AtspiFocus() : listener_(processListener()) {}

AtspiFocus::~AtspiFocus() = default;

bool AtspiFocus::waitUntilListening(int timeoutMs) {
    std::unique_lock lock(listener_->mutex);
    listener_->ready.wait_for(lock, std::chrono::milliseconds(timeoutMs),
                              [this] { return listener_->started; });
    return listener_->started && listener_->connected;
}

std::optional<AtspiFocus::Element> AtspiFocus::focused(bool withText) {
    if (!withText) {
        std::lock_guard lock(listener_->mutex);
        if (!listener_->hasFocus) {
            return std::nullopt;
        }
        return Element{listener_->focusIsPassword, std::nullopt};
    }
    // The call goes to the listener's thread; an application that does not
    // answer in time leaves the text unknown, and the answer, when it comes,
    // to nobody.
    struct Request {
        Listener* listener;
        std::promise<std::optional<Element>> answer;
    };
    auto* request = new Request{listener_, {}};
    auto answer = request->answer.get_future();
    g_main_context_invoke_full(
        listener_->context, G_PRIORITY_DEFAULT,
        [](gpointer data) -> gboolean {
            auto* asked = static_cast<Request*>(data);
            asked->answer.set_value(asked->listener->readFocus());
            return G_SOURCE_REMOVE;
        },
        request, [](gpointer data) { delete static_cast<Request*>(data); });
    if (answer.wait_for(std::chrono::milliseconds(textWaitMs)) != std::future_status::ready) {
        return std::nullopt;
    }
    return answer.get();
}

}  // namespace tevra
