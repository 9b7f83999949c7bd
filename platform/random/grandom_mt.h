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

  // Next 32-bit output; advances the state.
  unsigned int genrand_int32() const;

 private:
  void twist() const;

  mutable std::uint32_t m_state[k_state_size];
  mutable unsigned int m_index;
};
