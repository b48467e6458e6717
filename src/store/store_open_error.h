#pragma once

#include <string>

#include "base/error.h"

namespace tevra {

// The database file could not be opened, or what is there is not a database.
class StoreOpenError : public Error {
public:
    explicit StoreOpenError(std::string path)
        : Error("cannot open " + path), path_(std::move(path)) {}

    static constexpr const char* domain = "weft.sqlite";
    static constexpr int code = 1;

    const std::string& path() const { return path_; }

private:
    std::string path_;
};

// What is there is no database, or its tables cannot be brought up to date:
// the file will not open on a later try either.
class StoreDamagedError : public StoreOpenError {
public:
    StoreDamagedError(std::string path, std::string reason)
        : StoreOpenError(std::move(path)), reason_(std::move(reason)) {}

    const std::string& reason() const { return reason_; }

private:
    std::string reason_;
};

}  // namespace tevra
