#include "sampling/surface/random_placement.h"

#include "sampling/surface/area_table.h"

void place_random_samples(unsigned int const& count, double const& density,
                          CoreArray<PrimitiveArea> const& table,
                          CoreArray<GeometryPrimitiveSampleDescriptor>& descriptors) {
  GRandomMt rng;
  rng.seed(k_surface_seed);
  descriptors.resize(count);
  unsigned int placed = 0;
  double carried = 0.0;
  for (PrimitiveArea const& entry : table) {
    double const expected = entry.m_area * density;
    unsigned int n = truncate_to_u32(expected);
    carried = carried + (expected - static_cast<double>(n));
    if (carried + 0.5 > 1.0) {
      unsigned int const extra = truncate_to_u32(carried + 0.5);
      n = n + extra;
      carried = carried - static_cast<double>(extra);
    }
    if (placed + n >= count)
      n = count - placed;
    for (unsigned int i = 0; i < n; ++i) {
      double u = draw_unit(rng);
      double v = draw_unit(rng);
      fold_to_triangle(entry.m_vertex_count, u, v);
      descriptors[placed + i] = GeometryPrimitiveSampleDescriptor{
          entry.m_primitive, static_cast<float>(u), static_cast<float>(v)};
    }
    placed = placed + n;
    if (placed == count)
      break;
  }
  descriptors.resize_keep(placed);
}
