#include "capture/qt/qt_clipboard.h"

#include <QClipboard>
#include <QGuiApplication>
#include <QMimeData>
#include <QString>
#include <utility>

namespace tevra {
namespace {

// Formats that Qt lists but that are no data of the owner's: the selection
// protocol's own targets, and the image that Qt derives from the owner's image
// formats. Restored, they would be served as data.
bool isDerivedFormat(const QString& format) {
    static const QStringList derived = {
        "TARGETS", "TIMESTAMP",        "MULTIPLE",        "SAVE_TARGETS",
        "DELETE",  "INSERT_SELECTION", "INSERT_PROPERTY", "application/x-qt-image"};
    return derived.contains(format);
}

// GTK serves text/plain with the line ends of that MIME type, CR LF; the text
// the user selected had plain line feeds.
std::string plainLineEnds(QString text) {
    return text.replace(QStringLiteral("\r\n"), QStringLiteral("\n")).toStdString();
}

}  // namespace

QtClipboard::QtClipboard(std::shared_ptr<ClipboardReader> reader)
    : clipboard_(QGuiApplication::clipboard()),
      reader_(std::move(reader)),
      changes_(std::make_shared<std::atomic<std::int64_t>>(0)) {
    // Qt hears of other owners through XFixes selection events, and of its own
    // changes directly: both arrive here.
    watch_ = QObject::connect(clipboard_, &QClipboard::dataChanged,
                              [changes = changes_] { ++*changes; });
}

QtClipboard::~QtClipboard() {
    QObject::disconnect(watch_);
}

ClipboardSnapshot QtClipboard::snapshot() {
    const QMimeData* data = clipboard_->mimeData(QClipboard::Clipboard);
    if (!data) {
        return {};
    }
    ClipboardData item;
    for (const QString& format : data->formats()) {
        if (isDerivedFormat(format)) {
            continue;
        }
        const QByteArray bytes = data->data(format);
        // A format whose owner gives no data is left out; the others survive.
        if (bytes.isEmpty()) {
            continue;
        }
        item.formats.emplace_back(format.toStdString(), bytes.toStdString());
    }
    if (item.formats.empty()) {
        return {};
    }
    return {std::move(item)};
}

std::shared_ptr<QtClipboard::Read> QtClipboard::startRead() {
    auto read = std::make_shared<Read>();
    read->atChange = changeCount();
    reader_->read([read](ClipboardSnapshot snapshot) {
        read->done = true;
        read->snapshot = std::move(snapshot);
        for (auto& done : std::exchange(read->waiting, {})) {
            done(read->snapshot);
        }
    });
    return read;
}

void QtClipboard::prefetch() {
    if (reader_ && (!read_ || read_->atChange != changeCount())) {
        read_ = startRead();
    }
}

void QtClipboard::snapshotLater(std::function<void(ClipboardSnapshot)> done) {
    if (!reader_) {
        done(snapshot());
        return;
    }
    // What was read ahead serves only if the clipboard has not changed since.
    if (!read_ || read_->atChange != changeCount()) {
        read_ = startRead();
    }
    if (read_->done) {
        done(read_->snapshot);
    } else {
        read_->waiting.push_back(std::move(done));
    }
}

void QtClipboard::setText(std::string_view text, bool transient) {
    auto* data = new QMimeData;
    data->setText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
    if (transient) {
        data->setData(passwordManagerHint, "secret");
    }
    clipboard_->setMimeData(data, QClipboard::Clipboard);
}

void QtClipboard::setPrimaryText(std::string_view text) {
    clipboard_->setText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())),
                        QClipboard::Selection);
}

void QtClipboard::restore(const ClipboardSnapshot& snapshot) {
    if (snapshot.empty()) {
        clipboard_->clear(QClipboard::Clipboard);
        return;
    }
    auto* data = new QMimeData;
    for (const ClipboardData& item : snapshot) {
        for (const auto& [type, bytes] : item.formats) {
            const QString format = QString::fromStdString(type);
            if (!data->hasFormat(format)) {
                data->setData(format, QByteArray::fromStdString(bytes));
            }
        }
    }
    clipboard_->setMimeData(data, QClipboard::Clipboard);
}

std::optional<std::string> QtClipboard::text() {
    const QMimeData* data = clipboard_->mimeData(QClipboard::Clipboard);
    if (!data || !data->hasText()) {
        return std::nullopt;
    }
    return plainLineEnds(data->text());
}

void QtClipboard::textLater(std::function<void(std::optional<std::string>)> done) {
    if (!reader_) {
        done(text());
        return;
    }
    snapshotLater([done = std::move(done)](const ClipboardSnapshot& snapshot) {
        for (const ClipboardData& item : snapshot) {
            for (const auto& [format, bytes] : item.formats) {
                if (format == "text/plain") {
                    done(plainLineEnds(QString::fromStdString(bytes)));
                    return;
                }
            }
        }
        done(std::nullopt);
    });
}

std::int64_t QtClipboard::changeCount() {
    return *changes_;
}

}  // namespace tevra
