// The commands that drive a running Tevra over the session bus: what its keys
// do, for a desktop shortcut or a script.
#include <ostream>

#include "tevractl/bus_client.h"
#include "tevractl/commands.h"

namespace tevra::ctl {
namespace {

// One line and status 1 for any answer but yes.
int told(const std::string& command, const bus::Reply& reply, std::ostream& err) {
    switch (reply.status) {
        case bus::Reply::Status::ok:
            return 0;
        case bus::Reply::Status::notRunning:
            err << "tevractl " << command << ": Tevra is not running\n";
            return 1;
        case bus::Reply::Status::noBus:
            err << "tevractl " << command << ": no session bus to reach Tevra on (" << reply.message
                << ")\n";
            return 1;
        case bus::Reply::Status::refused:
        case bus::Reply::Status::failed:
            err << "tevractl " << command << ": " << reply.message << "\n";
            return 1;
    }
    return 1;
}

int32_t slotOption(const Parsed& p) {
    return p.values.contains("--mode")
               ? static_cast<int32_t>(parseNumber("--mode", p.values.at("--mode")))
               : 0;
}

}  // namespace

int record(const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("record", args, out, err, [&]() -> int {
        const Parsed p = parse(args, {"--mode"}, {});
        if (p.positional.size() != 1) {
            throw UsageError{"say start, finish, toggle or cancel"};
        }
        const std::string& what = p.positional[0];
        if (what == "start") {
            return told("record", bus::call("StartCapture", {slotOption(p)}), err);
        }
        if (what == "toggle") {
            return told("record", bus::call("ToggleCapture", {slotOption(p)}), err);
        }
        if (p.values.contains("--mode")) {
            throw UsageError{"--mode goes with start and toggle"};
        }
        if (what == "finish") {
            return told("record", bus::call("FinishCapture", {}, false), err);
        }
        if (what == "cancel") {
            return told("record", bus::call("CancelCapture", {}, false), err);
        }
        throw UsageError{"say start, finish, toggle or cancel, not \"" + what + "\""};
    });
}

int window(const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("window", args, out, err, [&]() -> int {
        if (!parse(args, {}, {}).positional.empty()) {
            throw UsageError{"window takes nothing more"};
        }
        return told("window", bus::call("ShowWindow"), err);
    });
}

int notesControl(const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("notes", args, out, err, [&]() -> int {
        const Parsed p = parse(args, {"--app"}, {});
        if (p.positional.size() != 1) {
            throw UsageError{"say start or stop"};
        }
        if (p.positional[0] == "start") {
            const std::string app = p.values.contains("--app") ? p.values.at("--app") : "";
            return told("notes", bus::call("StartNotes", {app}), err);
        }
        if (p.values.contains("--app")) {
            throw UsageError{"--app goes with start"};
        }
        return told("notes", bus::call("StopNotes", {}, false), err);
    });
}

int status(const Args& args, std::ostream& out, std::ostream& err) {
    return guarded("status", args, out, err, [&]() -> int {
        if (!parse(args, {}, {}).positional.empty()) {
            throw UsageError{"status takes nothing more"};
        }
        const bus::Reply capture = bus::property("State");
        if (capture.status != bus::Reply::Status::ok) {
            return told("status", capture, err);
        }
        const bus::Reply notes = bus::property("NotetakerState");
        if (notes.status != bus::Reply::Status::ok) {
            return told("status", notes, err);
        }
        out << "capture: " << capture.value << "\n"
            << "notetaker: " << notes.value << "\n";
        // Older Tevras have no paths to tell; X11 has no choice to name.
        if (const bus::Reply paths = bus::property("Paths");
            paths.status == bus::Reply::Status::ok && !paths.value.empty()) {
            out << "session: " << paths.value << "\n";
        }
        return 0;
    });
}

}  // namespace tevra::ctl
