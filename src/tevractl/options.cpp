#include "tevractl/options.h"

namespace tevra::ctl {
namespace {

constexpr const char* kEndOfOptions = "--";

bool isAsciiLetter(char c) {
    return (c >= 'a' && c <= 'z') || (c >= 'A' && c <= 'Z');
}

// "-x" or "--word-with-dashes": what a user means as an option. A text that
// starts with a dash but holds a digit first, a blank or anything else is not.
bool looksLikeOption(const std::string& a) {
    const size_t dashes = a.starts_with("--") ? 2 : a.starts_with("-") ? 1 : 0;
    if (dashes == 0 || a.size() == dashes || !isAsciiLetter(a[dashes])) {
        return false;
    }
    for (size_t i = dashes; i < a.size(); ++i) {
        const char c = a[i];
        if (!isAsciiLetter(c) && !(c >= '0' && c <= '9') && c != '-' && c != '_' && c != '=') {
            return false;
        }
    }
    return true;
}

}  // namespace

Parsed parse(const Args& args, const std::set<std::string>& valueOptions,
             const std::set<std::string>& flagOptions) {
    Parsed parsed;
    for (size_t i = 0; i < args.size(); ++i) {
        const std::string& a = args[i];
        const size_t equals = a.starts_with("--") ? a.find('=') : std::string::npos;
        if (a == kEndOfOptions) {
            parsed.positional.insert(parsed.positional.end(), args.begin() + i + 1, args.end());
            break;
        } else if (valueOptions.contains(a)) {
            if (i + 1 >= args.size()) {
                throw UsageError{a + " needs a value"};
            }
            parsed.values[a] = args[++i];
        } else if (equals != std::string::npos && valueOptions.contains(a.substr(0, equals))) {
            parsed.values[a.substr(0, equals)] = a.substr(equals + 1);
        } else if (flagOptions.contains(a)) {
            parsed.flags.insert(a);
        } else if (looksLikeOption(a)) {
            throw UsageError{"unknown option " + a};
        } else {
            parsed.positional.push_back(a);
        }
    }
    return parsed;
}

int64_t parseNumber(const std::string& option, const std::string& text) {
    try {
        size_t used = 0;
        const long long value = std::stoll(text, &used);
        if (used == text.size() && value >= 0) {
            return value;
        }
    } catch (const std::exception&) {
    }
    throw UsageError{option + " takes a whole number, not \"" + text + "\""};
}

bool wantsHelp(const Args& args) {
    for (const auto& a : args) {
        if (a == kEndOfOptions) {
            return false;
        }
        if (a == "--help" || a == "-h") {
            return true;
        }
    }
    return false;
}

}  // namespace tevra::ctl
