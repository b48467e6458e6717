#include "support/desktop/peer_process.h"

#include <gtest/gtest.h>
#include <unistd.h>

#include <QApplication>
#include <QClipboard>
#include <QCoreApplication>
#include <QGuiApplication>
#include <QMimeData>
#include <QPlainTextEdit>
#include <QProcessEnvironment>
#include <QRegularExpression>
#include <QSocketNotifier>
#include <QTextStream>
#include <QTimer>
#include <cstdio>
#include <iostream>

#include "support/desktop/event_wait.h"

namespace tevra::testing {

PeerProcess::PeerProcess(const Options& options) : title_(options.title) {
    QStringList args{TEVRA_TEST_SUPPORT_DIR "/desktop/desktop_peer.py",
                     "--title",
                     QString::fromStdString(options.title),
                     "--wm-class",
                     QString::fromStdString(options.wmClass),
                     "--text",
                     QString::fromStdString(options.text)};
    if (options.password) {
        args << "--password";
    }
    if (options.textview) {
        args << "--textview";
    }
    if (options.sandboxed) {
        args << "--sandboxed";
    }
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    QObject::connect(&process_, &QProcess::readyReadStandardOutput, [this] { readLines(); });
    QProcessEnvironment environment = QProcessEnvironment::systemEnvironment();
    for (const auto& [name, value] : options.environment) {
        if (value) {
            environment.insert(QString::fromStdString(name), QString::fromStdString(*value));
        } else {
            environment.remove(QString::fromStdString(name));
        }
    }
    process_.setProcessEnvironment(environment);
    if (options.qt) {
        process_.start(QCoreApplication::applicationFilePath(),
                       {qtFlag, QString::fromStdString(options.title)});
    } else {
        process_.start("/usr/bin/python3", args);
    }
    if (!process_.waitForStarted(10000)) {
        ADD_FAILURE() << "the GTK peer did not start: " << process_.errorString().toStdString();
    }
}

PeerProcess::~PeerProcess() {
    if (process_.state() != QProcess::NotRunning) {
        process_.closeWriteChannel();
        if (!process_.waitForFinished(5000)) {
            process_.kill();
            process_.waitForFinished(5000);
        }
    }
}

void PeerProcess::readLines() {
    partial_ += process_.readAllStandardOutput();
    qsizetype end;
    while ((end = partial_.indexOf('\n')) >= 0) {
        const QByteArray line = partial_.left(end);
        partial_.remove(0, end + 1);
        nlohmann::json event = nlohmann::json::parse(line.toStdString(), nullptr, false);
        if (!event.is_discarded()) {
            unseen_.push_back(std::move(event));
        }
    }
}

std::optional<nlohmann::json> PeerProcess::waitFor(
    const std::string& event, double seconds,
    const std::function<bool(const nlohmann::json&)>& match) {
    std::optional<nlohmann::json> found;
    waitUntil(
        [&] {
            readLines();
            while (!unseen_.empty() && !found) {
                nlohmann::json next = std::move(unseen_.front());
                unseen_.pop_front();
                if (next.value("event", "") == event && (!match || match(next))) {
                    found = std::move(next);
                }
            }
            return found.has_value() || process_.state() == QProcess::NotRunning;
        },
        seconds);
    return found;
}

void PeerProcess::activate() {
    const QString exactTitle =
        "^" + QRegularExpression::escape(QString::fromStdString(title_)) + "$";
    xdotool({"search", "--sync", "--name", exactTitle, "windowactivate", "--sync"});
    ASSERT_TRUE(waitFor("ready", 20)) << "the GTK peer's window never became active with its "
                                         "field focused";
}

std::string xdotool(const QStringList& arguments) {
    QProcess process;
    process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process.start("xdotool", arguments);
    if (!process.waitForFinished(10000)) {
        process.kill();
        process.waitForFinished();
        ADD_FAILURE() << "xdotool " << arguments.join(' ').toStdString()
                      << " did not finish within 10 s";
        return {};
    }
    return process.readAllStandardOutput().trimmed().toStdString();
}

void PeerProcess::send(const std::string& command) {
    process_.write(QByteArray::fromStdString(command + "\n"));
    process_.waitForBytesWritten(5000);
}

std::int64_t PeerProcess::pid() const {
    return process_.processId();
}

ClipboardOwnerProcess::ClipboardOwnerProcess(
    std::initializer_list<std::pair<std::string, std::string>> formats) {
    nlohmann::json list = nlohmann::json::array();
    for (const auto& [type, data] : formats) {
        list.push_back({type, QByteArray::fromStdString(data).toBase64().toStdString()});
    }
    process_.setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process_.start(QCoreApplication::applicationFilePath(), {flag});
    process_.write(QByteArray::fromStdString(list.dump() + "\n"));
    QByteArray answer;
    const bool owned = waitUntil(
        [&] {
            answer += process_.readAllStandardOutput();
            return answer.contains("owned\n") || process_.state() == QProcess::NotRunning;
        },
        20);
    if (!owned || !answer.contains("owned\n")) {
        ADD_FAILURE() << "the clipboard owner did not take the clipboard";
    }
}

ClipboardOwnerProcess::~ClipboardOwnerProcess() {
    process_.closeWriteChannel();
    if (!process_.waitForFinished(5000)) {
        process_.kill();
        process_.waitForFinished(5000);
    }
}

int PeerProcess::serveQt(int argc, char** argv) {
    QApplication app(argc, argv);
    QPlainTextEdit field;
    field.setWindowTitle(QString::fromUtf8(argv[2]));
    const auto say = [](const nlohmann::json& event) {
        std::printf("%s\n", event.dump().c_str());
        std::fflush(stdout);
    };
    QObject::connect(&field, &QPlainTextEdit::textChanged, [&] {
        say({{"event", "text"}, {"text", field.toPlainText().toStdString()}});
    });
    bool ready = false;
    QTimer readiness;
    QObject::connect(&readiness, &QTimer::timeout, [&] {
        if (!ready && field.isActiveWindow() && field.hasFocus()) {
            ready = true;
            say({{"event", "ready"}, {"pid", QCoreApplication::applicationPid()}});
        }
    });
    readiness.start(50);
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buffer[256];
        if (::read(0, buffer, sizeof buffer) <= 0) {
            app.quit();
        }
    });
    field.resize(600, 300);
    field.show();
    field.setFocus();
    return app.exec();
}

int ClipboardOwnerProcess::serve(int argc, char** argv) {
    QGuiApplication app(argc, argv);
    std::string line;
    if (!std::getline(std::cin, line)) {
        return 1;
    }
    auto* data = new QMimeData;
    for (const auto& entry : nlohmann::json::parse(line)) {
        data->setData(QString::fromStdString(entry[0].get<std::string>()),
                      QByteArray::fromBase64(QByteArray::fromStdString(entry[1])));
    }
    QGuiApplication::clipboard()->setMimeData(data);
    std::printf("owned\n");
    std::fflush(stdout);
    // Serves the clipboard until the test closes our stdin.
    QSocketNotifier input(0, QSocketNotifier::Read);
    QObject::connect(&input, &QSocketNotifier::activated, [&] {
        char buffer[256];
        if (::read(0, buffer, sizeof buffer) <= 0) {
            app.quit();
        }
    });
    return app.exec();
}

}  // namespace tevra::testing
