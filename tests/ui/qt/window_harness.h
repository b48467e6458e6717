#pragma once

#include <QAbstractButton>
#include <QApplication>
#include <QLineEdit>
#include <QPixmap>
#include <QWidget>
#include <memory>
#include <optional>
#include <string>

#include "base/virtual_main_queue.h"
#include "core/weft_runtime.h"
#include "store/history_store.h"
#include "support/desktop/screenshots.h"
#include "support/fake_microphone_access.h"
#include "support/memory_secret_store.h"
#include "support/scoped_env.h"
#include "support/temp_dir.h"
#include "ui/qt/main_window.h"
#include "ui/qt/theme.h"
#include "ui/ui_state.h"

namespace tevra::testing {

// The main window on a real store in a temp dir, a keyring in memory and
// virtual time, with no key in the environment. Widgets are found the way a
// screen reader finds them: by their accessible names.
struct WindowHarness {
    WindowHarness() {
        secrets = std::make_shared<MemorySecretStore>();
        runtime = std::make_unique<WeftRuntime>(dir.path(), true, secrets);
        UIServices services;
        services.queue = &queue;
        services.notifications = &notifications;
        services.microphone = microphone;
        services.fullUserName = [] { return std::string("Ann Smith"); };
        services.applyAppearance = [](const std::string& appearance) {
            Theme::applyAppearance(appearance);
        };
        state = std::make_shared<UIState>(*runtime, nullptr, std::move(services));
    }

    MainWindow& window() {
        if (!main) {
            main = std::make_unique<MainWindow>(*state, [] {});
            main->resize(980, 720);
        }
        return *main;
    }

    template <typename T = QWidget>
    static T* find(QWidget* root, const QString& name) {
        for (T* widget : root->findChildren<T*>()) {
            if (widget->accessibleName() == name && widget->isVisibleTo(root)) {
                return widget;
            }
        }
        return nullptr;
    }
    // Widgets added to a shown page appear once the events have run.
    template <typename T = QWidget>
    T* find(const QString& name) {
        QApplication::processEvents();
        return find<T>(&window(), name);
    }
    // Types into the named field and presses the named button.
    bool enter(const QString& fieldName, const QString& text, const QString& buttonName) {
        auto* field = find<QLineEdit>(fieldName);
        auto* button = find<QAbstractButton>(buttonName);
        if (!field || !button) {
            return false;
        }
        field->setText(text);
        button->click();
        QApplication::processEvents();
        return true;
    }
    bool press(const QString& buttonName) {
        auto* button = find<QAbstractButton>(buttonName);
        if (!button) {
            return false;
        }
        button->click();
        QApplication::processEvents();
        return true;
    }
    // The window as drawn now, into the build's screenshots folder: as on a
    // common screen, and as on a screen at twice the density (name@2x).
    QString screenshot(const QString& name, QWidget* widget = nullptr) {
        QWidget* target = widget ? widget : &window();
        target->show();
        QApplication::processEvents();
        QPixmap dense(target->size() * 2);
        dense.setDevicePixelRatio(2);
        target->render(&dense);
        saveScreenshot(name + "@2x", dense.toImage());
        return saveScreenshot(name, target->grab().toImage());
    }

    ScopedEnv env{{{"GROQ_API_KEY", std::nullopt},
                   {"OPENAI_API_KEY", std::nullopt},
                   {"DEEPINFRA_API_KEY", std::nullopt},
                   {"FIREWORKS_API_KEY", std::nullopt},
                   {"TEVRA_PROXY_TOKEN", std::nullopt}}};
    TempDir dir;
    VirtualMainQueue queue;
    NotificationCenter notifications{queue};
    std::shared_ptr<MemorySecretStore> secrets;
    std::shared_ptr<FakeMicrophoneAccess> microphone = std::make_shared<FakeMicrophoneAccess>();
    std::unique_ptr<WeftRuntime> runtime;
    std::shared_ptr<UIState> state;
    std::unique_ptr<MainWindow> main;
};

}  // namespace tevra::testing
