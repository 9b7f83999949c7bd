#include "platform/random/grandom_mt.h"

namespace {
constexpr unsigned int k_shift = 397;
constexpr std::uint32_t k_matrix_a = 0x9908b0dfu;
constexpr std::uint32_t k_upper_mask = 0x80000000u;
constexpr std::uint32_t k_lower_mask = 0x7fffffffu;
}  // namespace

GRandomMt::GRandomMt() { seed(5489u); }

GRandomMt::GRandomMt(unsigned int const& s) { seed(s); }

void GRandomMt::seed(unsigned int const& s) {
  m_state[0] = s;
  for (unsigned int i = 1; i < k_state_size; ++i) {
    m_state[i] = 1812433253u * (m_state[i - 1] ^ (m_state[i - 1] >> 30)) + i;
  }
  m_index = k_state_size;
}

void GRandomMt::twist() const {
  for (unsigned int i = 0; i < k_state_size; ++i) {
    std::uint32_t const y =
        (m_state[i] & k_upper_mask) | (m_state[(i + 1) % k_state_size] & k_lower_mask);
    std::uint32_t const mag = (y & 1u) ? k_matrix_a : 0u;
    m_state[i] = m_state[(i + k_shift) % k_state_size] ^ (y >> 1) ^ mag;
  }
  m_index = 0;
}

unsigned int GRandomMt::genrand_int32() const {
  if (m_index >= k_state_size) twist();
  std::uint32_t y = m_state[m_index++];
  y ^= y >> 11;
  y ^= (y << 7) & 0x9d2c5680u;
  y ^= (y << 15) & 0xefc60000u;
  y ^= y >> 18;
  return y;
}
