#pragma once

#include <string>

#include "core/error.h"

namespace tevra {

// The database file could not be opened, or what is there is not a database.
class StoreOpenError : public Error {
public:
    explicit StoreOpenError(std::string path) : path_(std::move(path)) {}

    static constexpr const char* domain = "weft.sqlite";
    static constexpr int code = 1;

    const std::string& path() const { return path_; }
    std::string description() const override { return "cannot open " + path_; }

private:
    std::string path_;
};

}  // namespace tevra
