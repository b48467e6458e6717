#pragma once

#include <exception>
#include <string>

namespace tevra {

// Base of every typed error. description() carries the exact text that the
// orchestrator shows or logs; what() returns the same text for generic handlers.
class Error : public std::exception {
public:
    virtual std::string description() const = 0;

    const char* what() const noexcept override {
        try {
            cached_ = description();
        } catch (...) {
            cached_.clear();
        }
        return cached_.c_str();
    }

private:
    mutable std::string cached_;
};

// An error whose text is fixed when it is raised: transport failures, decoding
// failures and other texts that come from a lower layer and are only carried.
class MessageError : public Error {
public:
    explicit MessageError(std::string message) : message_(std::move(message)) {}
    std::string description() const override { return message_; }

private:
    std::string message_;
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
