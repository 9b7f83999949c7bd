#include "sampling/patterns/permutation_builder.h"

#include <cmath>
#include <utility>

#include "platform/math/gmath_vec2.h"
#include "platform/random/grandom_fast_mt.h"
#include "sampling/patterns/radical_inverse.h"

namespace {

// Squared distance that consecutive points of the walk aim at.
constexpr double k_target_distance2 = 0.8;
// Most candidates weighed per step.
constexpr unsigned int k_max_candidates = 16;

// Point k of the seed-0 Hammersley set of the size whose inverse is given.
inline GMathVec2<double> hammersley_point(unsigned int const& k, double const& inv_count) {
  return GMathVec2<double>(radical_inverse_2(k), static_cast<double>(k) * inv_count);
}

// Entry j of the platform random table, j taken modulo its size.
inline unsigned int table_entry(unsigned int const& j) {
  return GRandomFastMt::m_table[j % GRandomFastMt::m_table_size];
}

}  // namespace

void build_indices(unsigned int* indices, unsigned int const& count) {
  double const inv_count = 1.0 / static_cast<double>(count);
  unsigned int const start = GRandomFastMt::m_table[0];
  std::swap(indices[0], indices[table_entry(start) % count]);
  GMathVec2<double> previous = hammersley_point(indices[0], inv_count);
  unsigned int candidate = 1;
  for (unsigned int i = 1; i < count; ++i) {
    unsigned int const left = count - i;
    unsigned int const quarter = left / 4;
    unsigned int const tries =
        quarter < 1 ? 1 : (quarter > k_max_candidates ? k_max_candidates : quarter);
    double best = 1e308;
    unsigned int chosen = i;
    GMathVec2<double> best_point = previous;
    for (unsigned int t = 0; t < tries; ++t) {
      unsigned int const position = i + table_entry(start + candidate) % left;
      ++candidate;
      GMathVec2<double> const point = hammersley_point(indices[position], inv_count);
      GMathVec2<double> const d = point - previous;
      double const error = std::fabs((d.x * d.x + d.y * d.y) - k_target_distance2);
      // Strict: among equally good candidates the first drawn stays.
      if (error < best) {
        best = error;
        chosen = position;
        best_point = point;
      }
    }
    std::swap(indices[i], indices[chosen]);
    previous = best_point;
  }
}
