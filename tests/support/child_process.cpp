#include "support/child_process.h"

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

}  // namespace tevra::testing
