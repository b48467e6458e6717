#pragma once

#include <string>
#include <vector>

#include "polish/replacement.h"
#include "store/history_row.h"

namespace tevra {

// What the pipeline reads from and writes to the history database. Every
// operation is synchronous and safe from any thread, and none reports failure.
class PipelineStore {
public:
    virtual ~PipelineStore() = default;
    virtual std::vector<std::string> dictionary() const = 0;
    virtual std::vector<Replacement> replacements() const = 0;
    virtual std::vector<Snippet> snippets() const = 0;
    virtual void add(const HistoryRow& row) = 0;
};

}  // namespace tevra
