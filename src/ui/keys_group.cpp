#include "ui/keys_group.h"

#include "core/keychain.h"
#include "core/weft_runtime.h"

namespace tevra {

struct KeysGroup::Reading {
    bool wrote = true;
    std::map<std::string, Source, std::less<>> sources;
    ProviderKeys keys;
    std::optional<std::string> proxyToken;
};

KeysGroup::KeysGroup(UIState& state) : state_(state) {}

std::shared_ptr<KeysGroup> KeysGroup::create(UIState& state) {
    auto group = std::shared_ptr<KeysGroup>(new KeysGroup(state));
    group->refresh();
    return group;
}

KeysGroup::Source KeysGroup::source(std::string_view account) const {
    const auto found = sources_.find(account);
    return found == sources_.end() ? Source::unknown : found->second;
}

std::string KeysGroup::status(std::string_view account) const {
    switch (source(account)) {
        case Source::unknown:
            return "checking\u2026";
        case Source::none:
            return "not set";
        case Source::keyring:
            return "in the keyring";
        case Source::environment:
            return "from the environment (" + std::string(account) + "), which wins";
    }
    return {};
}

void KeysGroup::refresh() {
    readOffMain(std::nullopt, {});
}

void KeysGroup::save(std::string_view account, std::string value, std::function<void(bool)> done) {
    readOffMain(std::make_pair(std::string(account), std::move(value)), std::move(done));
}

void KeysGroup::readOffMain(std::optional<std::pair<std::string, std::string>> write,
                            std::function<void(bool)> done) {
    ++busy_;
    observers_.notify();
    std::shared_ptr<SecretStore> secrets = state_.runtime.secrets();
    if (!secrets) {
        secrets = std::make_shared<NoSecretStore>();
    }
    Credentials::Environment environment = state_.services().environment;
    if (!environment) {
        environment = Credentials::processEnvironment;
    }
    MainQueue& queue = *state_.services().queue;
    std::weak_ptr<KeysGroup> weak = weak_from_this();
    auto work = [secrets, environment, write = std::move(write), done = std::move(done), &queue,
                 weak]() mutable {
        Reading reading;
        if (write) {
            reading.wrote = Keychain::write(*secrets, write->first, write->second);
            // The key leaves memory as soon as the keyring has it.
            std::fill(write->second.begin(), write->second.end(), '\0');
        }
        for (const Service& service : services) {
            const auto value = environment(service.account);
            if (value && !value->empty()) {
                reading.sources[service.account] = Source::environment;
            } else {
                reading.sources[service.account] =
                    Keychain::read(*secrets, service.account) ? Source::keyring : Source::none;
            }
        }
        reading.keys = Credentials::fetch(*secrets, 6.0, environment);
        reading.proxyToken = Credentials::proxyToken(*secrets, environment);
        queue.post([weak, reading = std::move(reading), done = std::move(done)] {
            // Whoever asked lives no longer than the group.
            if (auto self = weak.lock()) {
                self->take(reading);
                if (done) {
                    done(reading.wrote);
                }
            }
        });
    };
    if (const auto& pool = state_.services().work) {
        pool->run(std::move(work));
    } else {
        work();
    }
}

void KeysGroup::take(const Reading& reading) {
    --busy_;
    sources_ = reading.sources;
    problem_ = reading.wrote ? std::string()
                             : "The keyring did not take the key: is a Secret Service (GNOME "
                               "Keyring, KWallet, KeePassXC) running?";
    WeftRuntime& runtime = state_.runtime;
    if (runtime.keys() != reading.keys || runtime.proxyToken() != reading.proxyToken) {
        runtime.useCredentials(reading.keys, reading.proxyToken);
    }
    observers_.notify();
}

}  // namespace tevra
