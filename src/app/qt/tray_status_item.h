#pragma once

#include <QMenu>
#include <QSystemTrayIcon>
#include <functional>
#include <string>

#include "app/status_item.h"

namespace tevra {

// Tevra's icon in the system tray: its tool tip names the voices on their
// keys, and its menu holds what the program offers from there.
class TrayStatusItem : public StatusItem {
public:
    // onOpen runs on a click on the icon and on "Open Tevra"; onQuit on "Quit Tevra".
    TrayStatusItem(std::function<void()> onOpen, std::function<void()> onQuit);

    void setToolTip(const std::string& text) override;
    void show() override;
    void setNotesEntry(const std::string& label, bool enabled,
                       std::function<void()> action) override;
    QString toolTip() const { return icon_.toolTip(); }
    const QMenu& menu() const { return menu_; }
    // What a click on the icon does.
    void activate() const;
    // The icon, drawn here so that it looks the same under every icon theme.
    static QIcon drawIcon();

private:
    QMenu menu_;
    std::function<void()> onOpen_;
    QAction* notes_ = nullptr;  // hidden until the notetaker runs
    std::function<void()> notesAction_;
    QSystemTrayIcon icon_;
};

}  // namespace tevra
