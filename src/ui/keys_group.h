#pragma once

#include <map>
#include <memory>
#include <optional>
#include <string>
#include <string_view>

#include "ui/observers.h"
#include "ui/ui_state.h"

namespace tevra {

// The Keys group of the Settings page: for each service, whether a key is
// present and where it comes from, and a field that saves a key into the
// keyring (an empty one removes it). A key, once saved, is never read back
// into a field and never written to the log. Keyring calls run on the work
// pool; their results come back on the main queue, where the runtime then
// takes the new keys.
class KeysGroup : public std::enable_shared_from_this<KeysGroup> {
public:
    struct Service {
        const char* label;
        const char* account;  // the environment variable and the keyring account
    };
    static constexpr Service services[] = {{"Groq", "GROQ_API_KEY"},
                                           {"OpenAI", "OPENAI_API_KEY"},
                                           {"DeepInfra", "DEEPINFRA_API_KEY"},
                                           {"Fireworks", "FIREWORKS_API_KEY"},
                                           {"Tevra relay token", "TEVRA_PROXY_TOKEN"}};
    static constexpr const char* title = "Keys";
    static constexpr const char* note =
        "Keys for the speech and language services, kept in your desktop's keyring. A key set "
        "in the environment wins over the keyring. Leave a field empty and save to remove a "
        "key.";
    static constexpr const char* saveLabel = "Save key";

    enum class Source { unknown, none, environment, keyring };

    // Reads where each key comes from at once.
    static std::shared_ptr<KeysGroup> create(UIState& state);

    Source source(std::string_view account) const;
    // "not set", "in the keyring", "from the environment (GROQ_API_KEY), which wins", "checking…".
    std::string status(std::string_view account) const;
    // What went wrong with the last save, for the user; empty after a good one.
    const std::string& problem() const { return problem_; }
    bool isBusy() const { return busy_ > 0; }

    // Looks again at the environment and the keyring.
    void refresh();
    // Saves the key (trimmed; blank removes it), then reads every key again
    // and hands them to the runtime. done, if any, runs on the main queue
    // with whether the keyring took it.
    void save(std::string_view account, std::string value, std::function<void(bool)> done = {});

    [[nodiscard]] Observers::Token observe(std::function<void()> observer) {
        return observers_.add(std::move(observer));
    }

private:
    explicit KeysGroup(UIState& state);
    struct Reading;
    // Runs on the work pool: an optional write, then every key read anew.
    void readOffMain(std::optional<std::pair<std::string, std::string>> write,
                     std::function<void(bool)> done);
    void take(const Reading& reading);

    UIState& state_;
    std::map<std::string, Source, std::less<>> sources_;
    std::string problem_;
    int busy_ = 0;
    Observers observers_;
};

}  // namespace tevra
