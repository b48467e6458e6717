#include "core/backend_chain.h"

namespace tevra::BackendChain {
namespace {

std::vector<std::string> head(bool hasProxyToken) {
    return hasProxyToken ? std::vector<std::string>{"kestrum"} : std::vector<std::string>{};
}

}  // namespace

std::vector<std::string> stt(const std::string& sttProvider, const std::vector<std::string>& order,
                             const std::vector<std::string>& defaultOrder,
                             const std::set<std::string>& available, bool hasProxyToken) {
    std::vector<std::string> chain = head(hasProxyToken);
    if (sttProvider == "auto" || sttProvider.empty()) {
        for (const auto& name : order.empty() ? defaultOrder : order) {
            if (available.contains(name)) {
                chain.push_back(name);
            }
        }
    } else if (available.contains(sttProvider)) {
        chain.push_back(sttProvider);
    }
    return chain;
}

std::vector<std::string> polish(const std::string& polishProvider,
                                const std::set<std::string>& available, bool hasProxyToken) {
    if (polishProvider == "rules") {
        return {};
    }
    std::vector<std::string> chain = head(hasProxyToken);
    const std::vector<std::string> tail = polishProvider == "groq" || polishProvider == "openai"
                                              ? std::vector<std::string>{polishProvider}
                                              : std::vector<std::string>{"groq", "openai"};
    for (const auto& name : tail) {
        if (available.contains(name)) {
            chain.push_back(name);
        }
    }
    return chain;
}

}  // namespace tevra::BackendChain
