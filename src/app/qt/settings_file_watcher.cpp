#include "app/qt/settings_file_watcher.h"

#include <QFile>
#include <QFileInfo>

namespace tevra {

SettingsFileWatcher::SettingsFileWatcher(const QString& path, std::function<void()> onChange)
    : path_(path), onChange_(std::move(onChange)), content_(read()) {
    // The directory sees a file renamed over the old one; the file itself an
    // edit in place. A watch on a replaced file is gone, so check() renews it.
    watcher_.addPath(QFileInfo(path_).absolutePath());
    if (QFileInfo::exists(path_)) {
        watcher_.addPath(path_);
    }
    QObject::connect(&watcher_, &QFileSystemWatcher::directoryChanged, [this] { check(); });
    QObject::connect(&watcher_, &QFileSystemWatcher::fileChanged, [this] { check(); });
}

QByteArray SettingsFileWatcher::read() const {
    QFile file(path_);
    return file.open(QIODevice::ReadOnly) ? file.readAll() : QByteArray();
}

void SettingsFileWatcher::check() {
    if (QFileInfo::exists(path_) && !watcher_.files().contains(path_)) {
        watcher_.addPath(path_);
    }
    QByteArray content = read();
    if (content == content_) {
        return;
    }
    content_ = std::move(content);
    if (onChange_) {
        onChange_();
    }
}

}  // namespace tevra
