#include "platform/random/grandom_mt.h"

namespace {
constexpr unsigned int k_shift = 397;
constexpr std::uint32_t k_matrix_a = 0x9908b0dfu;
constexpr std::uint32_t k_upper_mask = 0x80000000u;
constexpr std::uint32_t k_lower_mask = 0x7fffffffu;
}  // namespace

GRandomMt::GRandomMt() {
  seed(5489u);
}

GRandomMt::GRandomMt(unsigned int const& s) {
  seed(s);
}

void GRandomMt::seed(unsigned int const& s) {
  m_state[0] = s;
  for (unsigned int i = 1; i < k_state_size; ++i) {
    m_state[i] = 1812433253u * (m_state[i - 1] ^ (m_state[i - 1] >> 30)) + i;
  }
  m_index = k_state_size;
}

// The reference recurrence, split at the two wrap-around points so that no
// index needs a modulo.
void GRandomMt::twist() const {
  auto step = [](std::uint32_t const& upper, std::uint32_t const& lower, std::uint32_t const& far) {
    std::uint32_t const y = (upper & k_upper_mask) | (lower & k_lower_mask);
    return far ^ (y >> 1) ^ ((y & 1u) ? k_matrix_a : 0u);
  };
  unsigned int i = 0;
  for (; i < k_state_size - k_shift; ++i) {
    m_state[i] = step(m_state[i], m_state[i + 1], m_state[i + k_shift]);
  }
  for (; i < k_state_size - 1; ++i) {
    m_state[i] = step(m_state[i], m_state[i + 1], m_state[i + k_shift - k_state_size]);
  }
  m_state[k_state_size - 1] = step(m_state[k_state_size - 1], m_state[0], m_state[k_shift - 1]);
  m_index = 0;
}
