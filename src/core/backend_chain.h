#pragma once

#include <set>
#include <string>
#include <vector>

// Which backends to try, in which order, from the user's choice and the keys at
// hand. Pure functions over backend names; the relay ("kestrum") stands first
// wherever there is a token.
namespace tevra::BackendChain {

std::vector<std::string> stt(const std::string& sttProvider, const std::vector<std::string>& order,
                             const std::vector<std::string>& defaultOrder,
                             const std::set<std::string>& available, bool hasProxyToken);

std::vector<std::string> polish(const std::string& polishProvider,
                                const std::set<std::string>& available, bool hasProxyToken);

}  // namespace tevra::BackendChain
