#pragma once

// Caller-contract checks. The library trusts its caller: in release builds
// these compile to nothing. Builds with SAMPLING_CHECKS defined (the test and
// sanitizer presets) abort with a message naming the broken contract, so a
// misuse shows up at its source instead of as a wrong picture later.
#if defined(SAMPLING_CHECKS)
#include <cstdio>
#include <cstdlib>

#define SAMPLING_CHECK(cond, message)                                                             \
  do {                                                                                            \
    if (!(cond)) {                                                                                \
      std::fprintf(stderr, "sampling: caller contract violated: %s (%s:%d)\n", message, __FILE__, \
                   __LINE__);                                                                     \
      std::abort();                                                                               \
    }                                                                                             \
  } while (0)
#else
#define SAMPLING_CHECK(cond, message) \
  do {                                \
  } while (0)
#endif
