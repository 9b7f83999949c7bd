// Surface scattering over small meshes decoded from the bytes (triangles and
// quads, several groups, degenerate faces, moving vertices, a lifted
// evaluation): every descriptor names a primitive of the selected group with
// coordinates in [0, 1] (u + v <= 1 on triangles), the arrays agree in
// length, white noise places exactly the count on a surface with area, blue
// noise keeps points of one tree at least the spacing apart, calls repeat
// bit for bit, the short and long overloads agree, and empty requests empty
// the outputs. Counts and densities stay below a few hundred points.
#include <cmath>
#include <cstring>

#include "platform/core/core_array.h"
#include "platform/geometry/geometry_mesh.h"
#include "platform/geometry/geometry_primitive_sample_descriptor.h"
#include "sampling/sampling.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/support/placement.h"

namespace {

typedef GMathVec3<double> Vec3;
typedef CoreArray<GeometryPrimitiveSampleDescriptor> Descriptors;
typedef CoreArray<Vec3> Vectors;
unsigned int const k_all_groups = 0xFFFFFFFFu;

// Same length and the same bytes.
template <typename T>
bool same(CoreArray<T> const& a, CoreArray<T> const& b) {
  return a.count() == b.count() &&
         (a.empty() || std::memcmp(a.data(), b.data(), a.count() * sizeof(T)) == 0);
}

// A mesh of 1 to 8 faces over 3 to 10 vertices on a coarse grid, so that
// repeated and collinear vertices (degenerate faces) are common; groups 0-3.
void decode_mesh(FuzzInput& in, GeometryMesh& mesh) {
  unsigned int const vertex_count = in.range(3, 10);
  for (unsigned int i = 0; i < vertex_count; ++i)
    mesh.add_vertex(Vec3(in.range(0, 4) * 0.5 - 1.0, in.range(0, 4) * 0.5 - 1.0,
                         in.flag() ? 0.0 : in.between(-1.0, 1.0)));
  if (in.flag())
    mesh.set_vertex_velocity(in.range(0, vertex_count - 1),
                             Vec3(in.between(-1, 1), in.between(-1, 1), in.between(-1, 1)));
  unsigned int const face_count = in.range(1, 8);
  for (unsigned int f = 0; f < face_count; ++f) {
    unsigned int const a = in.range(0, vertex_count - 1), b = in.range(0, vertex_count - 1),
                       c = in.range(0, vertex_count - 1), group = in.range(0, 3);
    if (in.flag())
      mesh.add_triangle(a, b, c, group);
    else
      mesh.add_quad(a, b, c, in.range(0, vertex_count - 1), group);
  }
  if (in.flag())
    mesh.set_sample_scalar(in.between(-0.1, 0.1));
}

// Rotation about z, uniform scale and translation.
GMathMatrix4x4<double> decode_matrix(FuzzInput& in) {
  double const angle = in.between(-3.2, 3.2), scale = in.between(0.25, 4.0);
  GMathMatrix4x4<double> m = scaled_and_moved(1.0, 1.0, 1.0, in.between(-5.0, 5.0),
                                              in.between(-5.0, 5.0), in.between(-5.0, 5.0));
  m(0, 0) = std::cos(angle) * scale;
  m(0, 1) = -std::sin(angle) * scale;
  m(1, 0) = std::sin(angle) * scale;
  m(1, 1) = std::cos(angle) * scale;
  m(2, 2) = scale;
  return m;
}

void check_descriptors(GeometryMesh const& mesh, Descriptors const& descriptors, unsigned int group,
                       char const* entry) {
  for (unsigned int i = 0; i < descriptors.count(); ++i) {
    GeometryPrimitiveSampleDescriptor const& d = descriptors[i];
    FUZZ_ASSERT(d.m_primitive < mesh.get_primitive_count(), "%s: descriptor %u names primitive %u",
                entry, i, d.m_primitive);
    FUZZ_ASSERT(group == k_all_groups || mesh.get_primitive_group(d.m_primitive) == group,
                "%s: primitive %u is not of group %u", entry, d.m_primitive, group);
    FUZZ_ASSERT(d.m_u >= 0.0f && d.m_u <= 1.0f && d.m_v >= 0.0f && d.m_v <= 1.0f,
                "%s: coordinates (%.9g, %.9g) outside [0, 1]", entry, d.m_u, d.m_v);
    if (mesh.get_primitive_vertex_count(d.m_primitive) == 3)
      FUZZ_ASSERT(d.m_u + d.m_v <= 1.0f, "%s: (%.9g, %.9g) not folded into the triangle", entry,
                  d.m_u, d.m_v);
  }
}

typedef bool (*ShortCount)(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                           unsigned int const&, Descriptors&, double&, unsigned int const&);
typedef bool (*LongCount)(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                          unsigned int const&, Descriptors&, Vectors&, Vectors&, Vectors&, double&,
                          unsigned int const&);
typedef bool (*ShortDensity)(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                             double const&, Descriptors&, double&, unsigned int const&);
typedef bool (*LongDensity)(CtxEval const&, GeometryObject const&, GMathMatrix4x4<double> const&,
                            double const&, Descriptors&, Vectors&, Vectors&, Vectors&, double&,
                            unsigned int const&);

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzInput in(data, size);
  GeometryMesh mesh;
  decode_mesh(in, mesh);
  GMathMatrix4x4<double> const matrix = decode_matrix(in);
  CtxEval const context(in.between(0.0, 1.0));
  unsigned int const group = in.flag() ? k_all_groups : in.range(0, 4);
  bool const blue = in.flag();
  bool const by_density = in.flag();

  // The selected area, as the scattering measures it.
  double total_area = 0.0;
  for (unsigned int p = 0; p < mesh.get_primitive_count(); ++p)
    if (group == k_all_groups || mesh.get_primitive_group(p) == group)
      total_area += mesh.get_primitive_area(context, p, matrix);

  unsigned int const count = in.range(0, 200);
  double const density = total_area > 0.0 ? in.unit() * 200.0 / total_area : in.between(0, 10);
  char const* const entry = blue ? (by_density ? "blue_noise_density" : "blue_noise_count")
                                 : (by_density ? "random_noise_density" : "random_noise_count");

  // Outputs start non-empty, so that emptying is seen.
  Descriptors descriptors, again, long_descriptors;
  Vectors positions, vectors_a, vectors_b;
  descriptors.resize(3);
  positions.resize(5);
  double spacing = -1.0, again_spacing = -1.0, long_spacing = -1.0;
  bool ok, ok_again, ok_long;
  // The short entry twice and the long one once, for an amount that is a
  // count or a density.
  auto const call = [&](auto short_entry, auto long_entry, auto const& amount) {
    ok = short_entry(context, mesh, matrix, amount, descriptors, spacing, group);
    ok_again = short_entry(context, mesh, matrix, amount, again, again_spacing, group);
    ok_long = long_entry(context, mesh, matrix, amount, long_descriptors, positions, vectors_a,
                         vectors_b, long_spacing, group);
  };
  if (by_density)
    call(blue ? static_cast<ShortDensity>(&Sampling::surface_blue_noise_density)
              : static_cast<ShortDensity>(&Sampling::surface_random_noise_density),
         blue ? static_cast<LongDensity>(&Sampling::surface_blue_noise_density)
              : static_cast<LongDensity>(&Sampling::surface_random_noise_density),
         density);
  else
    call(blue ? static_cast<ShortCount>(&Sampling::surface_blue_noise_count)
              : static_cast<ShortCount>(&Sampling::surface_random_noise_count),
         blue ? static_cast<LongCount>(&Sampling::surface_blue_noise_count)
              : static_cast<LongCount>(&Sampling::surface_random_noise_count),
         count);
  FUZZ_ASSERT(ok && ok_again && ok_long, "%s: returned false", entry);
  FUZZ_ASSERT(
      same(descriptors, again) && std::memcmp(&spacing, &again_spacing, sizeof(double)) == 0,
      "%s: a repeated call differs", entry);
  FUZZ_ASSERT(same(descriptors, long_descriptors) &&
                  std::memcmp(&spacing, &long_spacing, sizeof(double)) == 0,
              "%s: the long overload differs from the short one", entry);
  unsigned int const n = static_cast<unsigned int>(descriptors.count());
  FUZZ_ASSERT(positions.count() == n && vectors_a.count() == n && vectors_b.count() == n,
              "%s: %u descriptors but %zu, %zu, %zu vectors", entry, n, positions.count(),
              vectors_a.count(), vectors_b.count());
  check_descriptors(mesh, descriptors, group, entry);

  // The requested number: empty for 0, at most the request, exact for white
  // noise on a surface with area.
  double const expected = by_density ? std::floor(total_area * density) : count;
  if (expected == 0.0 && (by_density || count == 0))
    FUZZ_ASSERT(n == 0, "%s: %u points for an empty request", entry, n);
  FUZZ_ASSERT(n <= expected + 1.0, "%s: %u points for %.17g", entry, n, expected);
  if (!blue && !by_density && total_area > 0.0 && std::isfinite(total_area))
    FUZZ_ASSERT(n == count, "%s: %u points for a count of %u", entry, n, count);
  if (n > 0)
    FUZZ_ASSERT((std::isfinite(spacing) && spacing > 0.0) || (!by_density && total_area == 0.0),
                "%s: spacing %.17g", entry, spacing);
  if (mesh.get_sample_scalar() == 0.0)
    for (unsigned int i = 0; i < n; ++i)
      FUZZ_ASSERT(std::isfinite(positions[i].x) && std::isfinite(positions[i].y) &&
                      std::isfinite(positions[i].z),
                  "%s: position %u not finite", entry, i);

  // Blue noise: points of one tree at least the spacing apart. The darts are
  // kept apart at their double (u, v); the positions come from the
  // descriptors' float (u, v), each off by up to 2^-24, which moves a point
  // by up to 2^-24 (|dP/du| + |dP/dv|): no world edge of these meshes reaches
  // 16 (vertices within [-1, 1]^3, scale up to 4, a velocity up to sqrt(3)).
  double const slack = 2.0 * 0x1p-24 * 2.0 * 16.0;
  if (blue && spacing > 0.0) {
    for (unsigned int i = 0; i < n; ++i)
      for (unsigned int j = i + 1; j < n; ++j) {
        if (mesh.get_primitive_group(descriptors[i].m_primitive) !=
            mesh.get_primitive_group(descriptors[j].m_primitive))
          continue;
        Vec3 const d = positions[i] - positions[j];
        double const distance = std::sqrt(d.x * d.x + d.y * d.y + d.z * d.z);
        FUZZ_ASSERT(!(distance < spacing - slack),
                    "%s: points %u and %u %.17g apart, spacing %.17g", entry, i, j, distance,
                    spacing);
      }
  }

  // The placeholder leaves everything as it was.
  Vectors const before = positions;
  Descriptors const descriptors_before = descriptors;
  double uniform_spacing = spacing;
  FUZZ_ASSERT(!Sampling::surface_uniform(context, mesh, matrix, density, descriptors, positions,
                                         vectors_a, vectors_b, uniform_spacing, group, in.flag()),
              "surface_uniform returned true");
  FUZZ_ASSERT(same(descriptors, descriptors_before) && same(positions, before) &&
                  std::memcmp(&uniform_spacing, &spacing, sizeof(double)) == 0,
              "surface_uniform changed its outputs");
  return 0;
}
