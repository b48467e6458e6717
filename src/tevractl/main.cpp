// tevractl: Tevra without the desktop. It builds its runtime exactly as the
// application does: the default data directory, keys from the environment and
// the keyring.
#include <iostream>
#include <map>

#include "base/log.h"
#include "core/linux/libsecret_store.h"
#include "core/weft_runtime.h"
#include "core/weft_settings.h"
#include "tevractl/commands.h"

int main(int argc, char** argv) {
    using namespace tevra;
    const std::vector<std::string> all(argv + 1, argv + argc);
    if (all.empty() || all[0] == "--help" || all[0] == "-h" || all[0] == "help") {
        std::cout << ctl::kUsage;
        return all.empty() ? 2 : 0;
    }
    // A running Tevra, driven over the session bus: no runtime of our own, so
    // that a shortcut's command costs no more than the call.
    using BusCommand = int (*)(const ctl::Args&, std::ostream&, std::ostream&);
    static const std::map<std::string, BusCommand> busCommands = {
        {"record", ctl::record}, {"window", ctl::window}, {"status", ctl::status}};
    const ctl::Args rest(all.begin() + 1, all.end());
    if (const auto bus = busCommands.find(all[0]); bus != busCommands.end()) {
        return bus->second(rest, std::cout, std::cerr);
    }
    if (all[0] == "notes" && !rest.empty() && (rest[0] == "start" || rest[0] == "stop")) {
        return ctl::notesControl(rest, std::cout, std::cerr);
    }

    using Command = int (*)(WeftRuntime&, const ctl::Args&, std::ostream&, std::ostream&);
    static const std::map<std::string, Command> commands = {
        {"dictate", ctl::dictate}, {"translate", ctl::translate},
        {"history", ctl::history}, {"stats", ctl::stats},
        {"keys", ctl::keys},       {"notes", ctl::notes},
        {"update", ctl::update},   {"ocr", ctl::ocr},
    };
    const auto it = commands.find(all[0]);
    if (it == commands.end()) {
        std::cerr << "tevractl: unknown command \"" << all[0] << "\"\n\n" << ctl::kUsage;
        return 2;
    }
    const ctl::Args args(all.begin() + 1, all.end());
    if (ctl::wantsHelp(args)) {
        std::cout << ctl::helpFor(all[0]);
        return 0;
    }
    WeftRuntime runtime(WeftSettings::defaultDir(), /*fetchKeys=*/true,
                        std::make_shared<LibsecretStore>());
    if (const auto& notice = runtime.storeNotice()) {
        // The log keeps it for later; the terminal says it now.
        Log::write(*notice);
        Log::flush();
        std::cerr << "tevractl: " << *notice << ".\n";
    }
    return it->second(runtime, args, std::cout, std::cerr);
}
