#include "capture/linux/x_display_thread.h"

#include <poll.h>
#include <sys/eventfd.h>
#include <unistd.h>

#include <cstdint>

namespace tevra {

std::unique_ptr<XDisplayThread> XDisplayThread::open(const std::string& displayName,
                                                     std::string& error) {
    std::unique_ptr<XDisplayThread> self(new XDisplayThread());
    self->wakeFd_ = eventfd(0, EFD_CLOEXEC | EFD_NONBLOCK);
    if (self->wakeFd_ < 0) {
        error = "cannot make an event descriptor";
        return nullptr;
    }
    std::promise<std::string> opened;
    auto result = opened.get_future();
    self->thread_ = std::thread(&XDisplayThread::run, self.get(), displayName, std::move(opened));
    error = result.get();
    if (!error.empty()) {
        self->thread_.join();
        return nullptr;
    }
    return self;
}

XDisplayThread::~XDisplayThread() {
    {
        std::lock_guard lock(mutex_);
        stopping_ = true;
    }
    wake();
    if (thread_.joinable()) {
        thread_.join();
    }
    if (wakeFd_ >= 0) {
        ::close(wakeFd_);
    }
}

void XDisplayThread::setEventHandler(EventHandler handler) {
    call([this, handler = std::move(handler)](Display*) mutable { handler_ = std::move(handler); });
}

void XDisplayThread::enqueue(std::function<void()> work) {
    {
        std::lock_guard lock(mutex_);
        work_.push_back(std::move(work));
    }
    wake();
}

void XDisplayThread::wake() {
    const uint64_t one = 1;
    // A full counter already means "wake up"; nothing to do about a failure.
    [[maybe_unused]] auto written = ::write(wakeFd_, &one, sizeof one);
}

bool XDisplayThread::runQueuedWork() {
    std::deque<std::function<void()>> work;
    bool stopping = false;
    {
        std::lock_guard lock(mutex_);
        work.swap(work_);
        stopping = stopping_;
    }
    for (auto& item : work) {
        item();
    }
    return !stopping;
}

void XDisplayThread::run(const std::string& displayName, std::promise<std::string> opened) {
    display_ = XOpenDisplay(displayName.empty() ? nullptr : displayName.c_str());
    if (display_ == nullptr) {
        const char* name = XDisplayName(displayName.empty() ? nullptr : displayName.c_str());
        opened.set_value(std::string("cannot open X display \"") + (name ? name : "") + "\"");
        return;
    }
    opened.set_value({});

    pollfd fds[2] = {{ConnectionNumber(display_), POLLIN, 0}, {wakeFd_, POLLIN, 0}};
    while (runQueuedWork()) {
        // XPending flushes the requests of the work above and reads what the
        // server has sent, including events that an XSync queued meanwhile.
        while (XPending(display_) > 0) {
            XEvent event;
            XNextEvent(display_, &event);
            if (handler_) {
                handler_(display_, event);
            }
        }
        fds[0].revents = fds[1].revents = 0;
        ::poll(fds, 2, -1);
        if (fds[1].revents & POLLIN) {
            uint64_t count = 0;
            [[maybe_unused]] auto got = ::read(wakeFd_, &count, sizeof count);
        }
    }
    // Work queued while stopping still gets its answer.
    runQueuedWork();
    XCloseDisplay(display_);
    display_ = nullptr;
}

}  // namespace tevra
