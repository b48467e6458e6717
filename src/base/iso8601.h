#pragma once

#include <chrono>
#include <string>

namespace tevra {

// "2026-11-22T22:06:37Z": UTC, whole seconds (a fraction is dropped), suffix Z.
std::string iso8601UTC(std::chrono::system_clock::time_point time);

}  // namespace tevra
