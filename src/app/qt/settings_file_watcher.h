#pragma once

#include <QByteArray>
#include <QFileSystemWatcher>
#include <QString>
#include <functional>

namespace tevra {

// Notices a change to a file made by someone else: an edit in place, or a
// new file renamed over it, as editors and atomic saves do. Only a change of
// content counts; a save of the same bytes, or changes to other files in the
// same directory, do not. Runs on the thread of the event loop.
class SettingsFileWatcher {
public:
    SettingsFileWatcher(const QString& path, std::function<void()> onChange);

private:
    void check();
    QByteArray read() const;

    QString path_;
    std::function<void()> onChange_;
    QByteArray content_;
    QFileSystemWatcher watcher_;
};

}  // namespace tevra
