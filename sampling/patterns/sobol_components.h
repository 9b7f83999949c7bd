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

// sobol_2 eight bits at a time: the XOR over the set bits is the XOR of
// four partial XORs, one per byte of n, each looked up in a table of the
// 256 combinations of that byte's eight direction numbers. XOR is
// associative and commutative, so the integer is the same; no branch per bit.
struct Sobol2ByteTables {
  unsigned int entry[4][256];
};

constexpr Sobol2ByteTables make_sobol_2_byte_tables() {
  Sobol2ByteTables t{};
  unsigned int d = 0x80000000u;
  for (unsigned int byte = 0; byte < 4; ++byte) {
    unsigned int directions[8] = {};
    for (unsigned int j = 0; j < 8; ++j) {
      directions[j] = d;
      d ^= d >> 1;
    }
    for (unsigned int b = 0; b < 256; ++b) {
      unsigned int r = 0;
      for (unsigned int j = 0; j < 8; ++j) {
        if (b & (1u << j))
          r ^= directions[j];
      }
      t.entry[byte][b] = r;
    }
  }
  return t;
}

inline constexpr Sobol2ByteTables k_sobol_2_byte_tables = make_sobol_2_byte_tables();

inline unsigned int sobol_2_by_bytes(unsigned int const& n) {
  Sobol2ByteTables const& t = k_sobol_2_byte_tables;
  return t.entry[0][n & 0xFFu] ^ t.entry[1][(n >> 8) & 0xFFu] ^ t.entry[2][(n >> 16) & 0xFFu] ^
         t.entry[3][n >> 24];
}
