#include "base/log.h"

#include <memory>
#include <mutex>
#include <utility>

#include "base/iso8601.h"
#include "base/user_dirs.h"

namespace tevra {

Logger::Logger(std::filesystem::path dir, WallClock clock)
    : clock_(std::move(clock)), file_(std::move(dir)), queue_("tevra.log") {}

void Logger::write(std::string message) {
    queue_.async([this, message = std::move(message)] {
        std::string line;
        line.reserve(message.size() + 24);
        line += '[';
        line += iso8601UTC(clock_());
        line += "] ";
        line += message;
        line += '\n';
        file_.append(line);
    });
}

void Logger::flush() {
    queue_.sync([] {});
}

namespace Log {

namespace {

struct ProcessLog {
    std::mutex mutex;
    std::shared_ptr<Logger> logger;  // made at the first write unless configured
};

ProcessLog& processLog() {
    static ProcessLog log;
    return log;
}

std::shared_ptr<Logger> current() {
    ProcessLog& log = processLog();
    std::lock_guard lock(log.mutex);
    if (!log.logger) {
        log.logger = std::make_shared<Logger>(UserDirs::data());
    }
    return log.logger;
}

// Swaps the logger under the lock, but lets the old one finish its queue
// outside it, so that writers are not held up while it drains.
void replace(std::shared_ptr<Logger> next) {
    ProcessLog& log = processLog();
    std::shared_ptr<Logger> previous;
    {
        std::lock_guard lock(log.mutex);
        previous = std::exchange(log.logger, std::move(next));
    }
    if (previous) {
        previous->flush();
    }
}

}  // namespace

void write(std::string message) {
    current()->write(std::move(message));
}

void configure(std::filesystem::path dir, WallClock clock) {
    replace(std::make_shared<Logger>(std::move(dir), std::move(clock)));
}

void reset() {
    replace(nullptr);
}

void flush() {
    ProcessLog& log = processLog();
    std::shared_ptr<Logger> logger;
    {
        std::lock_guard lock(log.mutex);
        logger = log.logger;
    }
    if (logger) {
        logger->flush();
    }
}

}  // namespace Log

}  // namespace tevra
