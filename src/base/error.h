#pragma once

#include <exception>
#include <string>

namespace tevra {

// Base of every typed error. description() carries the exact text that the
// orchestrator shows or logs; what() returns the same text for generic handlers.
// The text is built once, when the error is raised, so that both may be read
// from any thread.
class Error : public std::exception {
public:
    const std::string& description() const noexcept { return text_; }
    const char* what() const noexcept override { return text_.c_str(); }

protected:
    explicit Error(std::string text) : text_(std::move(text)) {}

private:
    std::string text_;
};

// An error whose text is fixed when it is raised: transport failures, decoding
// failures and other texts that come from a lower layer and are only carried.
class MessageError : public Error {
public:
    explicit MessageError(std::string message) : Error(std::move(message)) {}
};

// The description of any exception, for the chains that collect failure texts.
inline std::string describe(const std::exception& e) {
    if (auto* err = dynamic_cast<const Error*>(&e)) {
        return err->description();
    }
    return e.what();
}

// The description of an error carried as a value, as callbacks hand it on.
inline std::string describe(const std::exception_ptr& error) {
    if (!error) {
        return "";
    }
    try {
        std::rethrow_exception(error);
    } catch (const std::exception& e) {
        return describe(e);
    } catch (...) {
        return "unknown error";
    }
}

}  // namespace tevra
