#pragma once

#include <cstdio>
#include <cstdlib>

// An invariant of a fuzz target: when it breaks, libFuzzer sees a crash and
// keeps the input.
#define FUZZ_CHECK(condition)                                                          \
    do {                                                                               \
        if (!(condition)) {                                                            \
            std::fprintf(stderr, "%s:%d: FUZZ_CHECK(%s) failed\n", __FILE__, __LINE__, \
                         #condition);                                                  \
            std::abort();                                                              \
        }                                                                              \
    } while (false)
