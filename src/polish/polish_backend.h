#pragma once

#include <string>
#include <vector>

#include "base/error.h"
#include "polish/polish_context.h"
#include "polish/replacement.h"

namespace tevra {

// Raised by a polisher that cannot follow free instructions.
class InstructUnsupported : public Error {
public:
    explicit InstructUnsupported(std::string backendName)
        : Error(backendName + " cannot execute instructions (needs an LLM)"),
          backend(std::move(backendName)) {}
    std::string backend;
};

// Everything that can clean text up. Implementations are immutable and may be
// called from several threads; each call blocks until it has an answer.
class PolishBackend {
public:
    virtual ~PolishBackend() = default;

    virtual std::string name() const = 0;

    virtual std::string polish(const std::string& transcript, const PolishContext& context,
                               const std::vector<std::string>& dictionary,
                               const std::vector<Replacement>& replacements,
                               const std::vector<Snippet>& snippets) const = 0;

    virtual std::string instruct(const std::string& /*transcript*/,
                                 const PolishContext& /*context*/,
                                 const std::vector<std::string>& /*dictionary*/) const {
        throw InstructUnsupported(name());
    }

    virtual std::string compose(const std::string& /*system*/, const std::string& /*user*/,
                                double /*temperature*/) const {
        throw InstructUnsupported(name());
    }

    std::string compose(const std::string& system, const std::string& user) const {
        return compose(system, user, 0.3);
    }
};

}  // namespace tevra
