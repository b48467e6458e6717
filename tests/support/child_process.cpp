#include "support/child_process.h"

#include <fcntl.h>
#include <signal.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cerrno>
#include <cstring>
#include <stdexcept>

extern char** environ;

namespace tevra::testing {

std::string runProgram(const std::vector<std::string>& argv) {
    const std::string& program = argv.at(0);
    int out[2];
    if (pipe(out) != 0) {
        throw std::runtime_error("pipe: " + std::string(std::strerror(errno)));
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, out[1], STDOUT_FILENO);
    posix_spawn_file_actions_addclose(&actions, out[0]);
    std::vector<char*> args;
    for (const auto& a : argv) {
        args.push_back(const_cast<char*>(a.c_str()));
    }
    args.push_back(nullptr);
    pid_t pid = 0;
    const int spawned =
        posix_spawnp(&pid, program.c_str(), &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    close(out[1]);
    if (spawned != 0) {
        close(out[0]);
        if (spawned == ENOENT) {
            throw std::runtime_error(program +
                                     " is not installed; scripts/install-deps installs it");
        }
        throw std::runtime_error(program + ": " + std::strerror(spawned));
    }
    std::string output;
    char buffer[4096];
    for (;;) {
        const ssize_t n = read(out[0], buffer, sizeof buffer);
        if (n > 0) {
            output.append(buffer, static_cast<std::size_t>(n));
        } else if (n == 0 || errno != EINTR) {
            break;
        }
    }
    close(out[0]);
    int status = 0;
    while (waitpid(pid, &status, 0) < 0 && errno == EINTR) {
    }
    if (!WIFEXITED(status) || WEXITSTATUS(status) != 0) {
        throw std::runtime_error(program + " failed (status " + std::to_string(status) + ")");
    }
    return output;
}

BackgroundProgram::BackgroundProgram(const std::vector<std::string>& argv) {
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    posix_spawn_file_actions_addopen(&actions, STDOUT_FILENO, "/dev/null", O_WRONLY, 0);
    std::vector<char*> args;
    for (const auto& a : argv) {
        args.push_back(const_cast<char*>(a.c_str()));
    }
    args.push_back(nullptr);
    const int spawned =
        posix_spawnp(&pid_, argv.at(0).c_str(), &actions, nullptr, args.data(), environ);
    posix_spawn_file_actions_destroy(&actions);
    if (spawned != 0) {
        pid_ = -1;
        throw std::runtime_error(
            spawned == ENOENT ? argv[0] + " is not installed; scripts/install-deps installs it"
                              : argv[0] + ": " + std::strerror(spawned));
    }
}

void BackgroundProgram::stop() {
    if (pid_ <= 0) {
        return;
    }
    kill(pid_, SIGTERM);
    int status = 0;
    while (waitpid(pid_, &status, 0) < 0 && errno == EINTR) {
    }
    pid_ = -1;
}

bool BackgroundProgram::isRunning() {
    int status = 0;
    if (pid_ > 0 && waitpid(pid_, &status, WNOHANG) == pid_) {
        pid_ = -1;
    }
    return pid_ > 0;
}

}  // namespace tevra::testing
