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
constexpr unsigned int sobol_2(unsigned int n) {
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

// The top four bits of both components over a run of 16 indices: for a
// base index b with its low four bits clear, b + j (j < 16) has the bits of b
// and of j apart, so reverse_bits(b + j) = reverse_bits(b) ^ reverse_bits(j)
// and sobol_2(b + j) = sobol_2(b) ^ sobol_2(j), and the parts of j touch only
// the top four bits (the first four direction numbers lie there). After a
// scramble the top nibble of element j is that of the base XOR j's nibble;
// entry [h][j] holds that nibble times 2^28 as a double, for every h: the
// low 28 bits and the top four then add exactly to the element's double.
struct SobolRunTops {
  double u[16][16];
  double v[16][16];
};

constexpr SobolRunTops make_sobol_run_tops() {
  SobolRunTops t{};
  for (unsigned int h = 0; h < 16; ++h) {
    for (unsigned int j = 0; j < 16; ++j) {
      unsigned int const reversed = reverse_bits(j) >> 28;
      t.u[h][j] = static_cast<double>((h ^ reversed) << 28);
      t.v[h][j] = static_cast<double>((h ^ (sobol_2(j) >> 28)) << 28);
    }
  }
  return t;
}

inline constexpr SobolRunTops k_sobol_run_tops = make_sobol_run_tops();
