#include "support/subprocess.h"

#include <fcntl.h>
#include <poll.h>
#include <spawn.h>
#include <sys/wait.h>
#include <unistd.h>

#include <cstring>
#include <stdexcept>

extern char** environ;

namespace tevra::testing {

ProcessResult runProcess(const std::vector<std::string>& argv,
                         const std::map<std::string, std::optional<std::string>>& environment) {
    std::map<std::string, std::string> env;
    for (char** e = environ; *e; ++e) {
        const std::string entry(*e);
        const auto eq = entry.find('=');
        env[entry.substr(0, eq)] = eq == std::string::npos ? "" : entry.substr(eq + 1);
    }
    for (const auto& [name, value] : environment) {
        if (value) {
            env[name] = *value;
        } else {
            env.erase(name);
        }
    }
    std::vector<std::string> envStrings;
    for (const auto& [name, value] : env) {
        envStrings.push_back(name + "=" + value);
    }
    std::vector<char*> envp;
    for (auto& s : envStrings) {
        envp.push_back(s.data());
    }
    envp.push_back(nullptr);
    std::vector<std::string> args = argv;
    std::vector<char*> argvp;
    for (auto& a : args) {
        argvp.push_back(a.data());
    }
    argvp.push_back(nullptr);

    int outPipe[2];
    int errPipe[2];
    if (pipe(outPipe) != 0 || pipe(errPipe) != 0) {
        throw std::runtime_error("runProcess: pipe failed");
    }
    posix_spawn_file_actions_t actions;
    posix_spawn_file_actions_init(&actions);
    posix_spawn_file_actions_adddup2(&actions, outPipe[1], STDOUT_FILENO);
    posix_spawn_file_actions_adddup2(&actions, errPipe[1], STDERR_FILENO);
    posix_spawn_file_actions_addclose(&actions, outPipe[0]);
    posix_spawn_file_actions_addclose(&actions, errPipe[0]);
    posix_spawn_file_actions_addopen(&actions, STDIN_FILENO, "/dev/null", O_RDONLY, 0);
    pid_t pid = 0;
    const int rc =
        posix_spawnp(&pid, args[0].c_str(), &actions, nullptr, argvp.data(), envp.data());
    posix_spawn_file_actions_destroy(&actions);
    close(outPipe[1]);
    close(errPipe[1]);
    if (rc != 0) {
        close(outPipe[0]);
        close(errPipe[0]);
        throw std::runtime_error("runProcess: cannot start " + args[0] + ": " + std::strerror(rc));
    }

    ProcessResult result;
    pollfd fds[2] = {{outPipe[0], POLLIN, 0}, {errPipe[0], POLLIN, 0}};
    std::string* sinks[2] = {&result.out, &result.err};
    int open = 2;
    while (open > 0) {
        if (poll(fds, 2, -1) < 0) {
            break;
        }
        for (int i = 0; i < 2; ++i) {
            if (fds[i].fd >= 0 && (fds[i].revents & (POLLIN | POLLHUP))) {
                char buffer[4096];
                const ssize_t n = read(fds[i].fd, buffer, sizeof buffer);
                if (n > 0) {
                    sinks[i]->append(buffer, static_cast<size_t>(n));
                } else {
                    close(fds[i].fd);
                    fds[i].fd = -1;
                    --open;
                }
            }
        }
    }
    int status = 0;
    waitpid(pid, &status, 0);
    result.exitCode = WIFEXITED(status) ? WEXITSTATUS(status) : -1;
    return result;
}

}  // namespace tevra::testing
