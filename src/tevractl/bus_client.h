#pragma once

#include <cstdint>
#include <string>
#include <variant>
#include <vector>

// The client side of Tevra's control interface on the session bus.
namespace tevra::ctl::bus {

struct Reply {
    enum class Status {
        ok,
        refused,     // the running Tevra said no; message says why
        notRunning,  // nobody owns the name (and none could be started)
        noBus,       // no session bus to ask
        failed,      // anything else; message says what
    };
    Status status = Status::ok;
    std::string message;
    std::string value;  // a property's value
};

using Argument = std::variant<int32_t, std::string>;

// Calls a method of com.kestrum.Tevra1. With startIfNeeded the bus may start
// Tevra first where its service file is installed.
Reply call(const std::string& method, const std::vector<Argument>& arguments = {},
           bool startIfNeeded = true);
// Reads a property, never starting Tevra for it.
Reply property(const std::string& name);

}  // namespace tevra::ctl::bus
