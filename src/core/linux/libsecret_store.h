#pragma once

#include <optional>
#include <string>
#include <string_view>

#include "core/secret_store.h"

namespace tevra {

// The freedesktop Secret Service (GNOME Keyring, KeePassXC, KWallet) through
// libsecret, on the session bus of the environment (DBUS_SESSION_BUS_ADDRESS,
// or $XDG_RUNTIME_DIR/bus). Items carry the attributes "service" and "account";
// new ones go into the default collection. A missing bus or keyring daemon
// costs one failed connection or one D-Bus error, never a hang beyond the D-Bus
// call's own time-out.
class LibsecretStore final : public SecretStore {
public:
    explicit LibsecretStore(std::string service = std::string(keychainService));

    std::optional<std::string> lookup(std::string_view account) override;
    bool store(std::string_view account, std::string_view data) override;
    bool erase(std::string_view account) override;

private:
    std::string service_;
};

}  // namespace tevra
