#pragma once

#include <QProcess>
#include <cstdint>
#include <deque>
#include <functional>
#include <map>
#include <nlohmann/json.hpp>
#include <optional>
#include <string>
#include <vector>

namespace tevra::testing {

// The GTK application of desktop_peer.py in a process of its own: one window
// with a text field, reporting what happens to it as JSON lines. With qt, a
// Qt window of the test executable's own stands in, reporting "ready" and
// "text" alike.
class PeerProcess {
public:
    struct Options {
        std::string title = "Tevra desktop peer";
        std::string wmClass = "TevraPeer";
        std::string text = "";
        bool password = false;
        bool textview = false;
        bool sandboxed = false;  // its window names another process, as in a Flatpak
        bool qt = false;
        // Set, or with nullopt removed, in the peer's environment.
        std::map<std::string, std::optional<std::string>> environment = {};
    };

    explicit PeerProcess(const Options& options);
    ~PeerProcess();
    PeerProcess(const PeerProcess&) = delete;
    PeerProcess& operator=(const PeerProcess&) = delete;

    // The first unseen event of that name for which match holds, waiting up to
    // seconds for it; events before it are passed over.
    std::optional<nlohmann::json> waitFor(
        const std::string& event, double seconds,
        const std::function<bool(const nlohmann::json&)>& match = {});
    // Activates the window through xdotool and waits until it is active with
    // its field focused.
    void activate();
    void send(const std::string& command);

    std::int64_t pid() const;

    // The argument with which the test executable becomes the Qt peer.
    static constexpr const char* qtFlag = "--qt-peer";
    static int serveQt(int argc, char** argv);

private:
    void readLines();

    std::string title_;
    QProcess process_;
    QByteArray partial_;
    std::deque<nlohmann::json> unseen_;
};

// Runs xdotool with the arguments and returns what it printed, trimmed; fails
// the test if it does not finish within ten seconds.
std::string xdotool(const QStringList& arguments);

// A second client that owns the clipboard with the given formats, as another
// application does after a copy. It lives until destroyed.
class ClipboardOwnerProcess {
public:
    explicit ClipboardOwnerProcess(
        std::initializer_list<std::pair<std::string, std::string>> formats);
    ~ClipboardOwnerProcess();
    ClipboardOwnerProcess(const ClipboardOwnerProcess&) = delete;
    ClipboardOwnerProcess& operator=(const ClipboardOwnerProcess&) = delete;

    // The argument with which the test executable becomes such an owner.
    static constexpr const char* flag = "--own-clipboard";
    // Run by the test executable's main when given the flag: reads the formats
    // from stdin, owns the clipboard and serves it until stdin closes.
    static int serve(int argc, char** argv);

private:
    QProcess process_;
};

}  // namespace tevra::testing
