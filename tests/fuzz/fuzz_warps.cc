// Warps and the index shuffle: outputs stay in their domains, directions are
// unit, frames orthonormal and right-handed, densities are numbers and
// inverses lead back, for any in-contract input.
#include <cmath>

#include "sampling/sampling.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

double dot(GMathVec3<double> const& a, GMathVec3<double> const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

void check_frame(GMathVec3<double> const& d, GMathVec3<double> const& t, GMathVec3<double> const& b,
                 char const* warp) {
  GMathVec3<double> const c = cross(t, b);
  FUZZ_ASSERT(std::fabs(d.length() - 1.0) <= 1e-12, "%s: |d| = %.17g", warp, d.length());
  FUZZ_ASSERT(std::fabs(t.length() - 1.0) <= 1e-12, "%s: |t| = %.17g", warp, t.length());
  FUZZ_ASSERT(std::fabs(b.length() - 1.0) <= 1e-12, "%s: |b| = %.17g", warp, b.length());
  FUZZ_ASSERT(std::fabs(dot(t, b)) <= 1e-12 && std::fabs(dot(t, d)) <= 1e-12, "%s: not orthogonal",
              warp);
  FUZZ_ASSERT((c - d).length() <= 1e-12, "%s: t x b != d", warp);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzInput in(data, size);
  double const u = in.unit();
  double const v = in.unit();
  double const s = in.unit();

  double radius, angle;
  Sampling::to_unit_disk(u, v, radius, angle);
  double const k = 0.78539816339725;
  FUZZ_ASSERT(radius >= 0.0 && radius <= 1.0, "radius %.17g at (%.17g, %.17g)", radius, u, v);
  FUZZ_ASSERT(angle > -k && angle <= 7 * k + 1e-15, "angle %.17g at (%.17g, %.17g)", angle, u, v);

  GMathVec3<double> d, t, b;
  Sampling::disk_concentric(u, v, d, t, b);
  FUZZ_ASSERT(d.z == 0.0 && d.length() <= 1.0 + 1e-15, "disk point off the disk");

  Sampling::hemisphere_cosine_concentric(u, v, d, t, b, 1.0);
  FUZZ_ASSERT(d.z >= 0.0, "cosine direction below the plane");
  check_frame(d, t, b, "hemisphere_cosine_concentric");
  Sampling::hemisphere_uniform(u, v, d, t, b, 1.0);
  check_frame(d, t, b, "hemisphere_uniform");
  Sampling::sphere_uniform(u, v, d, t, b);
  check_frame(d, t, b, "sphere_uniform");
  Sampling::sphere_cosine(u, v, d, t, b);
  check_frame(d, t, b, "sphere_cosine");

  // A scaled hemisphere warp stays in the cone whose half-angle has sine s.
  Sampling::hemisphere_uniform_concentric(u, v, d, s);
  FUZZ_ASSERT(d.z >= std::sqrt(1.0 - s * s) - 1e-12, "outside the cone: z %.17g, s %.17g", d.z, s);
  Sampling::hemisphere_cosine(u, v, d, s);
  FUZZ_ASSERT(d.z >= std::sqrt(1.0 - s * s) - 1e-12, "outside the cone: z %.17g, s %.17g", d.z, s);

  // At every sample a density is a number >= 0 (infinite at a singular
  // point, never NaN), and the inverse leads back to the sample.
  struct Hemisphere {
    char const* name;
    void (*warp)(double const&, double const&, GMathVec3<double>&, double const&);
    double (*pdf)(GMathVec3<double> const&, double const&);
    void (*inverse)(GMathVec3<double> const&, double const&, double&, double&);
  };
  Hemisphere const hemispheres[] = {
      {"hemisphere_uniform", &Sampling::hemisphere_uniform, &Sampling::hemisphere_uniform_pdf,
       &Sampling::hemisphere_uniform_inverse},
      {"hemisphere_uniform_concentric", &Sampling::hemisphere_uniform_concentric,
       &Sampling::hemisphere_uniform_concentric_pdf,
       &Sampling::hemisphere_uniform_concentric_inverse},
      {"hemisphere_cosine", &Sampling::hemisphere_cosine, &Sampling::hemisphere_cosine_pdf,
       &Sampling::hemisphere_cosine_inverse},
      {"hemisphere_cosine_concentric", &Sampling::hemisphere_cosine_concentric,
       &Sampling::hemisphere_cosine_concentric_pdf,
       &Sampling::hemisphere_cosine_concentric_inverse}};
  for (Hemisphere const& w : hemispheres) {
    GMathVec3<double> again;
    double iu, iv;
    w.warp(u, v, d, s);
    double const pdf = w.pdf(d, s);
    FUZZ_ASSERT(pdf >= 0.0, "%s_pdf = %.17g at (%.17g, %.17g), s %.17g", w.name, pdf, u, v, s);
    w.inverse(d, s, iu, iv);
    w.warp(iu, iv, again, s);
    // Compared on the disk point (x, y) the direction is lifted from: z =
    // sqrt(1 - rho^2) turns an ulp of rho into 1e-8 at the horizon of a cone
    // with s just below 1, however exact the inverse.
    FUZZ_ASSERT(std::hypot(again.x - d.x, again.y - d.y) <= 1e-9,
                "%s_inverse: (%.17g, %.17g) s %.17g to (%.17g, %.17g)", w.name, u, v, s, iu, iv);
  }
  double du, dv;
  Sampling::disk_concentric(u, v, d);
  Sampling::disk_concentric_inverse(d, du, dv);
  Sampling::disk_concentric(du, dv, t);
  FUZZ_ASSERT((t - d).length() <= 1e-9, "disk_concentric_inverse at (%.17g, %.17g)", u, v);

  unsigned int const count = in.range(0, 1u << 20);
  unsigned int const index = in.u32();
  unsigned int const position = Sampling::shuffle_index(index, count);
  FUZZ_ASSERT(position <= count, "shuffle_index(%u, %u) = %u", index, count, position);
  if (index < count)
    FUZZ_ASSERT(position < count, "shuffle_index(%u, %u) = %u", index, count, position);
  return 0;
}
