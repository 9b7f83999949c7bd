#pragma once

#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstdio>
#include <cstdlib>

#include "platform/math/gmath_vec2.h"
#include "platform/math/gmath_vec3.h"

// Decodes fuzz bytes into in-contract arguments. Reading past the end yields
// zeros, so every input decodes to something valid.
class FuzzInput {
 public:
  FuzzInput(std::uint8_t const* data, std::size_t size) : m_data(data), m_size(size) {}

  std::uint32_t u32() {
    std::uint32_t v = 0;
    for (int i = 0; i < 4; ++i)
      v = (v << 8) | byte();
    return v;
  }
  // An integer in [lo, hi].
  unsigned int range(unsigned int lo, unsigned int hi) {
    return lo + static_cast<unsigned int>(u32() % (static_cast<std::uint64_t>(hi) - lo + 1));
  }
  // A double in [0, 1], with the ends and values next to them well represented.
  double unit() {
    switch (byte() % 8) {
      case 0:
        return 0.0;
      case 1:
        return 1.0;
      case 2:
        return std::nextafter(1.0, 0.0);
      case 3:
        return 0.5;
      default:
        return static_cast<double>(u32()) / 4294967295.0;
    }
  }
  // A double in [lo, hi].
  double between(double lo, double hi) { return lo + (hi - lo) * unit(); }
  // A unit vector: three coordinates in [-1, 1], normalised, or the z axis
  // when they are too short to give a direction.
  GMathVec3<double> direction() {
    GMathVec3<double> const v(between(-1.0, 1.0), between(-1.0, 1.0), between(-1.0, 1.0));
    double const length = v.length();
    if (!(length > 1e-3))
      return GMathVec3<double>(0.0, 0.0, 1.0);
    return v * (1.0 / length);
  }
  bool flag() { return byte() & 1u; }
  bool exhausted() const { return m_pos >= m_size; }

 private:
  std::uint8_t byte() { return m_pos < m_size ? m_data[m_pos++] : 0; }

  std::uint8_t const* m_data;
  std::size_t m_size;
  std::size_t m_pos = 0;
};

// Aborts with a message: libFuzzer reports the input that got here.
#define FUZZ_ASSERT(cond, ...)                               \
  do {                                                       \
    if (!(cond)) {                                           \
      std::fprintf(stderr, "invariant broken: %s: ", #cond); \
      std::fprintf(stderr, __VA_ARGS__);                     \
      std::fprintf(stderr, "\n");                            \
      std::abort();                                          \
    }                                                        \
  } while (0)
