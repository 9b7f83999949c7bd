#pragma once

#include "platform/platform_export.h"

// A fixed table of precomputed Mersenne Twister outputs, for code that wants
// reproducible pseudo-random 32-bit values without carrying a generator.
//
// Our choice of contents, fixed for all time because results are derived from
// it: 65536 entries, entry j being output j + 1 of MT19937 seeded with 5489
// (so entry 0 is the very first output, 3499211612). The table is generated
// at build time (fast_mt_table_gen.cc) into read-only data; nothing runs when
// the library loads.
class PLATFORM_API GRandomFastMt {
 public:
  static unsigned int const* const m_table;
  static constexpr unsigned int m_table_size = 65536;
};
