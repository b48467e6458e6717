#include "support/pulse_test_server.h"

#include <fcntl.h>
#include <pthread.h>
#include <signal.h>
#include <spawn.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <sstream>
#include <stdexcept>

#include "support/child_process.h"

extern char** environ;

namespace tevra::testing {
namespace fs = std::filesystem;
namespace {

constexpr auto kStartDeadline = std::chrono::seconds(15);

std::string makeDirectory() {
    std::string pattern = (fs::temp_directory_path() / "tevra-pulse-XXXXXX").string();
    if (!mkdtemp(pattern.data())) {
        throw std::runtime_error("cannot make a directory for the test sound server");
    }
    return pattern;
}

// The server's environment: everything of ours except what would lead it to
// the user's session (their server, bus or display), with its own home.
std::vector<std::string> serverEnvironment(const std::string& directory) {
    static const std::vector<std::string> replaced = {
        "HOME=",         "XDG_RUNTIME_DIR=", "PULSE_RUNTIME_PATH=", "PULSE_STATE_PATH=",
        "PULSE_SERVER=", "PULSE_SINK=",      "PULSE_SOURCE=",       "DBUS_SESSION_BUS_ADDRESS=",
        "DISPLAY=",      "XDG_CONFIG_HOME="};
    std::vector<std::string> environment;
    for (char** e = environ; *e; ++e) {
        const std::string entry(*e);
        bool keep = true;
        for (const auto& prefix : replaced) {
            keep = keep && entry.rfind(prefix, 0) != 0;
        }
        if (keep) {
            environment.push_back(entry);
        }
    }
    environment.push_back("HOME=" + directory);
    environment.push_back("XDG_CONFIG_HOME=" + directory + "/config");
    environment.push_back("XDG_RUNTIME_DIR=" + directory);
    environment.push_back("PULSE_RUNTIME_PATH=" + directory);
    environment.push_back("PULSE_STATE_PATH=" + directory + "/state");
    return environment;
}

bool acceptsConnections(const std::string& path) {
    const int fd = socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0) {
        return false;
    }
    sockaddr_un address{};
    address.sun_family = AF_UNIX;
    std::snprintf(address.sun_path, sizeof(address.sun_path), "%s", path.c_str());
    const bool accepted =
        connect(fd, reinterpret_cast<const sockaddr*>(&address), sizeof(address)) == 0;
    close(fd);
    return accepted;
}

std::string setupScript(PulseTestServer::Microphone microphone, int rate, int channels,
                        const std::string& directory, const std::string& fifo) {
    std::ostringstream script;
    const std::string spec =
        " rate=" + std::to_string(rate) + " channels=" + std::to_string(channels);
    switch (microphone) {
        case PulseTestServer::Microphone::fed:
            script << "load-module module-null-sink sink_name=speakers\n"
                   << "load-module module-pipe-source source_name=microphone file=" << fifo
                   << " format=s16le" << spec << "\n"
                   << "set-default-source microphone\n";
            break;
        case PulseTestServer::Microphone::live:
            // Suspended until the player below is connected; see startPlayer.
            script << "load-module module-null-sink sink_name=speakers" << spec << "\n"
                   << "suspend-sink speakers 1\n"
                   << "set-default-source speakers.monitor\n";
            break;
        case PulseTestServer::Microphone::none:
            break;
    }
    // Last, so that the socket appears only when everything above is in place.
    script << "load-module module-native-protocol-unix auth-anonymous=1 socket=" << directory
           << "/native\n";
    return script.str();
}

}  // namespace

PulseTestServer::PulseTestServer(Microphone microphone, int sampleRate, int channels)
    : directory_(makeDirectory()),
      address_("unix:" + directory_ + "/native"),
      fifo_(directory_ + "/microphone.fifo"),
      sampleRate_(sampleRate),
      channels_(channels) {
    const std::string scriptPath = directory_ + "/setup.pa";
    std::ofstream(scriptPath) << setupScript(microphone, sampleRate, channels, directory_, fifo_);

    std::vector<std::string> argv = {"pulseaudio",
                                     "--daemonize=no",
                                     "--exit-idle-time=-1",
                                     "-n",
                                     "--use-pid-file=no",
                                     "--system=no",
                                     "--high-priority=no",
                                     "--realtime=no",
                                     "--log-target=file:" + directory_ + "/server.log",
                                     "-F",
                                     scriptPath};
    std::vector<char*> args;
    for (auto& a : argv) {
        args.push_back(a.data());
    }
    args.push_back(nullptr);
    std::vector<std::string> environment = serverEnvironment(directory_);
    std::vector<char*> envp;
    for (auto& e : environment) {
        envp.push_back(e.data());
    }
    envp.push_back(nullptr);

    const int spawned =
        posix_spawnp(&pid_, "pulseaudio", nullptr, nullptr, args.data(), envp.data());
    if (spawned != 0) {
        pid_ = -1;
        fs::remove_all(directory_);
        if (spawned == ENOENT) {
            throw std::runtime_error(
                "PulseAudio is not installed: the microphone tests need the pulseaudio program "
                "(scripts/install-deps installs it)");
        }
        throw std::runtime_error(std::string("cannot start pulseaudio: ") + std::strerror(spawned));
    }
    try {
        waitUntilListening();
        if (microphone == Microphone::live) {
            startPlayer(sampleRate, channels);
        }
    } catch (...) {
        shutDown();
        throw;
    }
}

PulseTestServer::~PulseTestServer() {
    shutDown();
}

void PulseTestServer::shutDown() {
    stopping_ = true;
    if (playerPid_ > 0) {
        kill(playerPid_, SIGTERM);
        int status = 0;
        while (waitpid(playerPid_, &status, 0) < 0 && errno == EINTR) {
        }
        playerPid_ = -1;
    }
    if (pid_ > 0) {
        kill(pid_, SIGTERM);
        int status = 0;
        while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
        }
        pid_ = -1;
    }
    // With the server gone, a feeder still writing gets EPIPE and ends.
    for (auto& feeder : feeders_) {
        if (feeder.joinable()) {
            feeder.join();
        }
    }
    feeders_.clear();
    std::error_code ignored;
    fs::remove_all(directory_, ignored);
}

void PulseTestServer::waitUntilListening() {
    const std::string socket = directory_ + "/native";
    const auto deadline = std::chrono::steady_clock::now() + kStartDeadline;
    // The file appears when the server binds it, a moment before it listens:
    // only a connection that is accepted says the server is ready.
    while (!acceptsConnections(socket)) {
        int status = 0;
        if (waitpid(pid_, &status, WNOHANG) == pid_) {
            pid_ = -1;
            throw std::runtime_error("pulseaudio exited while starting:\n" + serverLog());
        }
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("pulseaudio did not start listening in time:\n" + serverLog());
        }
        // A socket's readiness has no event to wait on; this poll ends as
        // soon as the server accepts.
        usleep(2000);
    }
}

// A null sink with nothing playing renders in blocks of seconds, and a new
// recording of its monitor would wait for the next one. A player of silence
// asking for 10 ms keeps the sink on a short period, as a running microphone
// is; the sink waits suspended until the player is there, so that it starts
// on the short period instead of finishing a long block first.
void PulseTestServer::startPlayer(int sampleRate, int channels) {
    std::vector<std::string> argv = {"pacat",
                                     "--playback",
                                     "--server=" + address_,
                                     "--device=speakers",
                                     "--raw",
                                     "--format=s16le",
                                     "--rate=" + std::to_string(sampleRate),
                                     "--channels=" + std::to_string(channels),
                                     "--latency-msec=10",
                                     "/dev/zero"};
    std::vector<char*> args;
    for (auto& a : argv) {
        args.push_back(a.data());
    }
    args.push_back(nullptr);
    const int spawned = posix_spawnp(&playerPid_, "pacat", nullptr, nullptr, args.data(), environ);
    if (spawned != 0) {
        playerPid_ = -1;
        throw std::runtime_error(spawned == ENOENT ? "pacat is not installed (pulseaudio-utils; "
                                                     "scripts/install-deps installs it)"
                                                   : std::string("cannot start pacat: ") +
                                                         std::strerror(spawned));
    }
    const auto deadline = std::chrono::steady_clock::now() + kStartDeadline;
    while (countLines("sink-inputs") == 0) {
        if (std::chrono::steady_clock::now() > deadline) {
            throw std::runtime_error("pacat did not start playing in time");
        }
    }
    runProgram({"pactl", "--server=" + address_, "suspend-sink", "speakers", "0"});
    baselineClients_ = 1;
}

std::string PulseTestServer::serverLog() const {
    std::ifstream in(directory_ + "/server.log");
    std::ostringstream text;
    text << in.rdbuf();
    return text.str();
}

void PulseTestServer::feed(std::vector<int16_t> frames, double speed) {
    const std::size_t chunk = static_cast<std::size_t>(sampleRate_ / 100 * channels_);
    const auto period = std::chrono::duration<double>(0.01 / speed);
    feeders_.emplace_back([this, frames = std::move(frames), chunk, period] {
        // A write into a FIFO that lost its reader raises SIGPIPE; here it
        // should only end the write.
        sigset_t pipeSignal;
        sigemptyset(&pipeSignal);
        sigaddset(&pipeSignal, SIGPIPE);
        pthread_sigmask(SIG_BLOCK, &pipeSignal, nullptr);
        const int fd = open(fifo_.c_str(), O_WRONLY | O_CLOEXEC);
        if (fd < 0) {
            return;
        }
        // The microphone's own clock: 10 ms of sound per tick. A burst of
        // seconds at once would overrun the server's buffers and lose audio.
        auto due = std::chrono::steady_clock::now();
        for (std::size_t at = 0; at < frames.size() && !stopping_; at += chunk) {
            const char* data = reinterpret_cast<const char*>(frames.data() + at);
            std::size_t left = std::min(chunk, frames.size() - at) * sizeof(int16_t);
            while (left > 0) {
                const ssize_t n = write(fd, data, left);
                if (n < 0 && errno == EINTR) {
                    continue;
                }
                if (n <= 0) {
                    close(fd);
                    return;
                }
                data += n;
                left -= static_cast<std::size_t>(n);
            }
            due += std::chrono::duration_cast<std::chrono::steady_clock::duration>(period);
            std::this_thread::sleep_until(due);
        }
        close(fd);
    });
}

int PulseTestServer::countLines(const std::string& what) const {
    const std::string listing =
        runProgram({"pactl", "--server=" + address_, "list", "short", what});
    int lines = 0;
    std::istringstream in(listing);
    for (std::string line; std::getline(in, line);) {
        lines += line.empty() ? 0 : 1;
    }
    return lines;
}

std::string PulseTestServer::pactl(std::vector<std::string> arguments) const {
    arguments.insert(arguments.begin(), {"pactl", "--server=" + address_});
    return runProgram(arguments);
}

int PulseTestServer::recordStreamCount() const {
    return countLines("source-outputs");
}

int PulseTestServer::clientCount() const {
    return countLines("clients") - 1 - baselineClients_;
}

}  // namespace tevra::testing
