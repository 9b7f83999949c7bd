#pragma once

// The body of Sampling::shuffle_index, inline for the sample loops that
// evaluate it once per sample (the Hammersley sub-sets): the index's bits
// from the lowest pick, at each halving of the count, the upper half (the
// larger one for an odd count) or the lower one.
inline unsigned int shuffled_index(unsigned int const& index, unsigned int const& count) {
  unsigned int result = 0;
  unsigned int m = count;
  unsigned int i = index;
  // Once the count is down to 0 every further step adds 0: stopping there
  // spares a hashed 32-bit seed its upper bits (about 24 of 32 steps for a
  // count of 256), each a branch as good as random.
  while (i != 0 && m != 0) {
    unsigned int const down = m >> 1;
    unsigned int const up = down + (m & 1u);
    if (i & 1u) {
      result += up;
      m = down;
    } else {
      m = up;
    }
    i >>= 1;
  }
  return result;
}
