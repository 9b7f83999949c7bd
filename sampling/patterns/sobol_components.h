#pragma once

// The first two components of the Sobol sequence as 32-bit fractions
// (element n maps to value * 2^-32). Internal: inlined where used.

// Component 1: all 32 bits of n reversed (bit 0 to bit 31 and so on), the
// base-2 radical inverse as an integer.
inline unsigned int reverse_bits(unsigned int n) {
  n = ((n >> 1) & 0x55555555u) | ((n & 0x55555555u) << 1);
  n = ((n >> 2) & 0x33333333u) | ((n & 0x33333333u) << 2);
  n = ((n >> 4) & 0x0F0F0F0Fu) | ((n & 0x0F0F0F0Fu) << 4);
  n = ((n >> 8) & 0x00FF00FFu) | ((n & 0x00FF00FFu) << 8);
  return (n >> 16) | (n << 16);
}

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
