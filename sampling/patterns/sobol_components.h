#pragma once

// The first two components of the Sobol sequence as 32-bit fractions
// (element n maps to value * 2^-32). Internal: inlined where used.

#include "sampling/patterns/radical_inverse.h"

// Component 1: all 32 bits of n reversed (reverse_bits, shared with the
// base-2 radical inverse).

// Component 2: the XOR of the direction numbers of the set bits of n. The
// direction numbers start at 0x80000000 and each is the previous one XOR
// itself shifted right by one: 0x80000000, 0xC0000000, 0xA0000000,
// 0xF0000000, 0x88000000, ...
inline unsigned int sobol_2(unsigned int n) {
  unsigned int r = 0;
  unsigned int d = 0x80000000u;
  while (n != 0) {
    if (n & 1u)
      r ^= d;
    d ^= d >> 1;
    n >>= 1;
  }
  return r;
}
