// What every fuzz target uses to state a property: a broken property prints
// what was expected and aborts, which libFuzzer reports as a crash and keeps
// the input that caused it.
#pragma once

#include <cstdio>
#include <cstdlib>

#define FUZZ_CHECK(condition)                                                                         \
    do {                                                                                              \
        if (!(condition)) {                                                                           \
            std::fprintf(stderr, "%s:%d: property broken: %s\n", __FILE__, __LINE__, #condition);    \
            std::abort();                                                                             \
        }                                                                                             \
    } while (false)
