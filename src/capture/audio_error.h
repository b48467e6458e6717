#pragma once

#include <string>

#include "base/error.h"

namespace tevra {

// Why the microphone could not start. The domain and codes are stable: the
// orchestrator logs them and shows the text as it stands.
class AudioError : public Error {
public:
    enum class Code { noInputDevice = 1, cannotConvert = 2 };

    explicit AudioError(Code code) : Error(textOf(code)), code_(code) {}

    static constexpr const char* domain = "tevra.audio";
    Code code() const { return code_; }

private:
    static std::string textOf(Code code) {
        switch (code) {
            case Code::noInputDevice:
                return "no input device available";
            case Code::cannotConvert:
                return "cannot convert mic format";
        }
        return "audio error";
    }

    Code code_;
};

}  // namespace tevra
