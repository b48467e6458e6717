// Reads, writes and deletes one key through the keyring of the session bus
// that the environment names, and prints what each call gave:
//   read=none write=false delete=false
#include <iostream>

#include "core/keychain.h"
#include "core/linux/libsecret_store.h"

int main() {
    tevra::LibsecretStore store("com.kestrum.tevra.probe");
    const auto value = tevra::Keychain::read(store, "GROQ_API_KEY");
    const bool written = tevra::Keychain::write(store, "GROQ_API_KEY", "probe");
    const bool deleted = tevra::Keychain::remove(store, "GROQ_API_KEY");
    std::cout << "read=" << value.value_or("none") << " write=" << std::boolalpha << written
              << " delete=" << deleted << "\n";
    return 0;
}
