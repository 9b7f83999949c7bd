#pragma once

// The body of Sampling::shuffle_index, inline for the sample loops that
// evaluate it once per sample (the Hammersley sub-sets): the index's bits
// from the lowest pick, at each halving of the count, the upper half (the
// larger one for an odd count) or the lower one.
inline unsigned int shuffled_index(unsigned int const& index, unsigned int const& count) {
  unsigned int result = 0;
  unsigned int m = count;
  unsigned int i = index;
  // The choice by masks rather than a branch: the bits of a hashed seed or
  // an index are as good as random, so a branch on them mispredicts every
  // other step.
  while (i != 0) {
    unsigned int const down = m >> 1;
    unsigned int const up = down + (m & 1u);
    unsigned int const upper = 0u - (i & 1u);  // all ones for the upper half
    result += up & upper;
    m = (down & upper) | (up & ~upper);
    i >>= 1;
  }
  return result;
}
