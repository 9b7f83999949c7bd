#pragma once

#include <cstdint>

#include "platform/platform_export.h"

// MT19937, the 32-bit Mersenne Twister of Matsumoto and Nishimura.
//
// Its output stream equals std::mt19937's for the same seed. genrand_int32()
// is const and advances mutable state: a generator is handed to samplers by
// const-free reference but may sit inside const owners, and drawing is not a
// change of the generator's identity. A generator must not be used by two
// threads at once.
class PLATFORM_API GRandomMt {
 public:
  static constexpr unsigned int k_state_size = 624;

  // Seeded with 5489, the reference default.
  GRandomMt();
  explicit GRandomMt(unsigned int const& s);

  // Restarts the stream from seed s (the reference init_genrand).
  void seed(unsigned int const& s);

  // Next 32-bit output; advances the state. Inline: samplers draw once or
  // twice per sample, so the tempering runs in their loops and only the
  // refill of the state (once every 624 draws) is a call.
  unsigned int genrand_int32() const {
    if (m_index >= k_state_size)
      twist();
    std::uint32_t y = m_state[m_index++];
    y ^= y >> 11;
    y ^= (y << 7) & 0x9d2c5680u;
    y ^= (y << 15) & 0xefc60000u;
    y ^= y >> 18;
    return y;
  }

 private:
  // Regenerates the 624 state words.
  void twist() const;

  mutable std::uint32_t m_state[k_state_size];
  mutable unsigned int m_index;
};
