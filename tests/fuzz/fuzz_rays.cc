// Ray generators: for in-contract set-ups decoded from the bytes, get_ray and
// get_rays agree ray for ray (with and without weights), get_rays packs the
// produced rays at the front and touches nothing past them, every produced
// ray is finite with a unit direction where the generator promises one, the
// discard modes keep only rays above their clip plane, the shape generators
// aim at points of their shape with the distance as weight, and the frusta
// hold the rays of their boxes within the sizes the generators guarantee.
#include <algorithm>
#include <cmath>
#include <cstring>
#include <vector>

#include "platform/geometry/geometry_differential.h"
#include "platform/math/gmath_matrix3x3.h"
#include "platform/math/gmath_matrix4x4.h"
#include "sampling/ray_generators.h"
#include "sampling/rays/ray_math.h"
#include "tests/fuzz/fuzz_input.h"

namespace {

typedef GMathVec2<double> Vec2;
typedef GMathVec3<double> Vec3;

bool finite(Vec3 const& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool unit_length(Vec3 const& v) {
  return std::fabs(v.length() - 1.0) <= 1e-12;
}

// Fields every generated ray shares: finite origin and direction, the cleared
// accumulators, and m_aux cleared on a ray without differentials.
void check_common(GMathRay const& ray, char const* name) {
  FUZZ_ASSERT(finite(ray.m_origin) && finite(ray.m_direction), "%s: ray not finite", name);
  FUZZ_ASSERT(ray.m_aux_cleared[0] == 0.0 && ray.m_aux_cleared[1] == 0.0,
              "%s: m_aux_cleared not cleared", name);
  if (!ray.m_has_differentials)
    FUZZ_ASSERT(ray.m_aux[0] == 0.0 && ray.m_aux[1] == 0.0, "%s: m_aux set without differentials",
                name);
}

// Finite auxiliary origins and directions, and the footprints built from them.
void check_differentials(GMathRay const& ray, char const* name) {
  if (!ray.m_has_differentials)
    return;
  GMathRayDifferential const& d = ray.m_differential;
  FUZZ_ASSERT(finite(d.m_rx_origin) && finite(d.m_ry_origin) && finite(d.m_rx_direction) &&
                  finite(d.m_ry_direction) && std::isfinite(ray.m_aux[0]) &&
                  std::isfinite(ray.m_aux[1]),
              "%s: differentials not finite", name);
}

std::vector<Vec2> decode_samples(FuzzInput& in) {
  std::vector<Vec2> samples(in.range(0, 48));
  for (Vec2& s : samples)
    s = Vec2(in.unit(), in.unit());
  return samples;
}

std::vector<GMathRay> patterned_rays(std::size_t count) {
  std::vector<GMathRay> rays(count);
  std::memset(static_cast<void*>(rays.data()), 0xA5, count * sizeof(GMathRay));
  return rays;
}

// get_ray over the samples, then get_rays with and without weights: the same
// rays, packed, with one weight per produced ray and nothing written past
// them. `check` sees each produced ray, its sample and its weight. Returns
// the produced rays.
template <typename Check>
std::vector<GMathRay> check_paths(SampleRayGenerator const& g, std::vector<Vec2> const& samples,
                                  char const* name, Check const& check) {
  unsigned int const count = static_cast<unsigned int>(samples.size());
  double const sentinel = -12345.0;
  std::vector<GMathRay> single = patterned_rays(count + 1);
  std::vector<double> single_weights(count + 1, sentinel);
  unsigned int produced = 0;
  for (unsigned int i = 0; i < count; ++i) {
    double weight = sentinel;
    if (g.get_ray(samples[i], single[produced], &weight)) {
      check_common(single[produced], name);
      check(samples[i], single[produced], weight);
      single_weights[produced++] = weight;
    }
  }
  std::vector<GMathRay> batch = patterned_rays(count + 1);
  std::vector<double> weights(count + 1, sentinel);
  unsigned int const n = g.get_rays(samples.data(), count, batch.data(), weights.data());
  FUZZ_ASSERT(n == produced, "%s: get_rays made %u rays, get_ray %u", name, n, produced);
  FUZZ_ASSERT(std::memcmp(single.data(), batch.data(), (count + 1) * sizeof(GMathRay)) == 0,
              "%s: get_rays differs from get_ray or writes past its rays", name);
  FUZZ_ASSERT(std::memcmp(single_weights.data(), weights.data(), (count + 1) * sizeof(double)) == 0,
              "%s: get_rays weights differ from get_ray or are written past the rays", name);
  std::vector<GMathRay> unweighted = patterned_rays(count + 1);
  unsigned int const m = g.get_rays(samples.data(), count, unweighted.data(), nullptr);
  FUZZ_ASSERT(
      m == n && std::memcmp(single.data(), unweighted.data(), (count + 1) * sizeof(GMathRay)) == 0,
      "%s: get_rays without weights differs", name);
  single.resize(produced);
  return single;
}

// A sample box [corner0, corner1] with corners in [0,1]^2, low corner first.
void decode_box(FuzzInput& in, Vec2& corner0, Vec2& corner1) {
  double const u0 = in.unit(), u1 = in.unit(), v0 = in.unit(), v1 = in.unit();
  corner0 = Vec2(std::fmin(u0, u1), std::fmin(v0, v1));
  corner1 = Vec2(std::fmax(u0, u1), std::fmax(v0, v1));
}

// One cell of a g x g grid over the square, g a power of two from
// `min_grid` to 32.
void decode_grid_cell(FuzzInput& in, unsigned int min_grid, Vec2& corner0, Vec2& corner1) {
  unsigned int g = min_grid;
  for (unsigned int shifts = in.range(0, 5); shifts > 0 && g < 32; --shifts)
    g *= 2;
  double const cell = 1.0 / g;
  corner0 = Vec2(in.range(0, g - 1) * cell, in.range(0, g - 1) * cell);
  corner1 = Vec2(corner0.x + cell, corner0.y + cell);
}

// The rays of samples inside the box lie inside the frustum, up to rounding
// relative to the plane normal and the ray's reach.
void check_frustum_holds(SampleRayGenerator const& g, Vec2 const& corner0, Vec2 const& corner1,
                         std::vector<Vec2> const& samples, char const* name) {
  GMathFrustum frustum;
  g.get_frustum(corner0, corner1, frustum);
  FUZZ_ASSERT(frustum.m_plane_count == 4, "%s: %u frustum planes", name, frustum.m_plane_count);
  for (unsigned int k = 0; k < 4; ++k)
    FUZZ_ASSERT(finite(frustum.m_plane_normal[k]) && std::isfinite(frustum.m_plane_distance[k]),
                "%s: frustum plane %u not finite", name, k);
  for (Vec2 const& s : samples) {
    Vec2 const inside(corner0.x + (corner1.x - corner0.x) * s.x,
                      corner0.y + (corner1.y - corner0.y) * s.y);
    GMathRay ray;
    double weight;
    if (!g.get_ray(inside, ray, &weight))
      continue;
    Vec3 const x = ray.m_origin + ray.m_direction;
    for (unsigned int k = 0; k < 4; ++k) {
      double const scale = frustum.m_plane_normal[k].length() * (1.0 + ray.m_origin.length());
      FUZZ_ASSERT(frustum.evaluate(k, x) >= -1e-9 * scale,
                  "%s: ray of (%.17g, %.17g) outside plane %u of box (%.17g, %.17g)-(%.17g, %.17g) "
                  "by %.3g",
                  name, inside.x, inside.y, k, corner0.x, corner0.y, corner1.x, corner1.y,
                  frustum.evaluate(k, x) / scale);
    }
  }
}

// An incoming ray of unit direction, with small differentials when asked.
GMathRay decode_incoming(FuzzInput& in, Vec3 const& direction, bool differentials) {
  Vec3 const origin(in.between(-10.0, 10.0), in.between(-10.0, 10.0), in.between(-10.0, 10.0));
  GMathRay ray(origin, direction, static_cast<GMathRay::Type>(in.range(0, 5)), in.between(0, 1));
  if (differentials) {
    GMathRayDifferential d;
    d.m_rx_origin = origin + in.direction() * 0.01;
    d.m_ry_origin = origin + in.direction() * 0.01;
    d.m_rx_direction = direction + in.direction() * 0.01;
    d.m_ry_direction = direction + in.direction() * 0.01;
    ray.set_differentials(d);
  }
  return ray;
}

void fuzz_cosine(FuzzInput& in, std::vector<Vec2> const& samples) {
  GMathRay const incoming = decode_incoming(in, in.direction(), in.flag());
  double const angle = in.between(-400.0, 400.0);
  CosineWeightedHemisphereRayGenerator g;
  g.init(incoming, angle, in.between(0.0, 1.0), in.between(0.0, 1.0));
  unsigned int const mode = in.range(0, 2);
  Vec3 const normal = in.direction();
  if (mode == 1)
    g.discard_clipped_samples(normal);
  if (mode == 2)
    g.project_clipped_samples(normal);
  char const* const names[] = {"cosine plain", "cosine discard", "cosine project"};
  char const* const name = names[mode];
  double const cos_h = g.get_angle_cos();
  check_paths(g, samples, name, [&](Vec2 const& s, GMathRay const& ray, double const& weight) {
    FUZZ_ASSERT(weight == 1.0, "%s: weight %.17g", name, weight);
    FUZZ_ASSERT(ray.m_origin == incoming.m_origin && ray.m_time == incoming.m_time &&
                    ray.m_type == incoming.m_type,
                "%s: origin, time or type not the incoming ray's", name);
    Vec3 const& d = ray.m_direction;
    double const along = dot(d, normal);
    if (mode == 2 && along == 0.0 && d.length() == 0.0)
      return;  // W exactly opposite to n: the projection vanishes
    FUZZ_ASSERT(unit_length(d), "%s: |d| = %.17g at (%.17g, %.17g)", name, d.length(), s.x, s.y);
    if (mode == 1)
      FUZZ_ASSERT(along > 0.0, "%s: kept a ray with d . n = %.17g", name, along);
    // A projection of W nearly opposite to n is short (down to the 1e-8
    // normalisation threshold), and normalising it magnifies the rounding of
    // W - (W . n) n: d . n is then of the order of 1e-16 / |W'|.
    if (mode == 2)
      FUZZ_ASSERT(along >= -1e-7, "%s: projected ray below the plane: d . n = %.17g", name, along);
    // The rim's height is sqrt(1 - s^2) with s = the cone's sine: for cones
    // near 90 degrees the rounding of s^2 is magnified by 1 / (2 cos_h).
    if (mode != 2)
      FUZZ_ASSERT(dot(d, incoming.m_direction) >= cos_h - (1e-12 + 4e-16 / std::max(cos_h, 1e-12)),
                  "%s: ray outside the cone: d . D = %.17g, cos_h = %.17g", name,
                  dot(d, incoming.m_direction), cos_h);
    check_differentials(ray, name);
  });
  // The quadrants and the cells of finer grids hold their rays (thin boxes
  // across a quadrant do not: the concentric map bends their long edges).
  // The frustum bounds the cone's directions, which projection leaves.
  Vec2 corner0, corner1;
  decode_grid_cell(in, 2, corner0, corner1);
  if (mode != 2)
    check_frustum_holds(g, corner0, corner1, samples, name);
}

// A shading frame: random N, tangents turned about it, the anisotropy along
// one of the four unit axes; Ng near N; I arriving from N's side.
template <typename Generator, typename... Eta>
void init_anisotropic(FuzzInput& in, Generator& g, Vec3& n, Vec3& ng, Eta... eta) {
  n = in.direction();
  Vec3 t1, t2;
  orthonormal_basis(n, t1, t2);
  double const angle = in.between(-3.0, 3.0);
  Vec3 const c1 = t1 * std::cos(angle) + t2 * std::sin(angle);
  Vec3 const c2 = cross(n, c1);
  GMathMatrix3x3<double> const shading(c1.x, c2.x, n.x, c1.y, c2.y, n.y, c1.z, c2.z, n.z);
  GMathVec2<float> const axes[4] = {{1.0f, 0.0f}, {0.0f, 1.0f}, {-1.0f, 0.0f}, {0.0f, -1.0f}};
  GMathVec2<float> const axis = axes[in.range(0, 3)];
  ng = safe_normalize(n + in.direction() * 0.05, 1e-8);
  Vec3 incoming = in.direction();
  if (dot(incoming, n) > 0.0)
    incoming = -incoming;
  if (dot(incoming, n) > -0.1)
    incoming = safe_normalize(incoming - n * 0.2, 1e-8);
  bool const differentials = in.flag();
  GMathRay const ray = decode_incoming(in, incoming, differentials);
  Vec3 const position(in.between(-10.0, 10.0), in.between(-10.0, 10.0), in.between(-10.0, 10.0));
  GeometryDifferential surface;
  if (differentials)
    surface = GeometryDifferential((c1 * in.between(-1, 1) + c2 * in.between(-1, 1)) * 0.01,
                                   (c1 * in.between(-1, 1) + c2 * in.between(-1, 1)) * 0.01);
  float const nu = static_cast<float>(in.flag() ? 0.0 : in.between(0.0, 1000.0));
  float const nv = static_cast<float>(in.flag() ? 0.0 : in.between(0.0, 1000.0));
  g.init(ray, position, shading, ng, surface, nu, nv, axis, eta..., 0.0f, 0.0f);
}

void check_no_frustum(SampleRayGenerator const& g, char const* name) {
  GMathFrustum frustum;
  frustum.m_plane_count = 7;
  g.get_frustum(Vec2(0.0, 0.0), Vec2(1.0, 1.0), frustum);
  FUZZ_ASSERT(frustum.m_plane_count == 0, "%s: %u frustum planes", name, frustum.m_plane_count);
}

void fuzz_reflection(FuzzInput& in, std::vector<Vec2> const& samples) {
  AnisotropicReflectionRayGenerator g;
  Vec3 n, ng;
  init_anisotropic(in, g, n, ng);
  check_paths(g, samples, "reflection", [&](Vec2 const&, GMathRay const& ray, double const& w) {
    FUZZ_ASSERT(std::isfinite(w) && w >= 0.0, "reflection: weight %.17g", w);
    FUZZ_ASSERT(unit_length(ray.m_direction), "reflection: |d| = %.17g", ray.m_direction.length());
    check_differentials(ray, "reflection");
  });
  check_no_frustum(g, "reflection");
}

void fuzz_refraction(FuzzInput& in, std::vector<Vec2> const& samples) {
  AnisotropicRefractionRayGenerator g;
  Vec3 n, ng;
  float const eta = static_cast<float>(in.between(0.5, 2.0));
  init_anisotropic(in, g, n, ng, eta);
  // Under total internal reflection the auxiliary directions may stop being
  // finite (an unguarded case of the generator); the main ray stays finite.
  check_paths(g, samples, "refraction", [&](Vec2 const&, GMathRay const& ray, double const& w) {
    FUZZ_ASSERT(std::isfinite(w) && w >= 0.0, "refraction: weight %.17g", w);
    FUZZ_ASSERT(dot(ray.m_direction, ng) < 0.0, "refraction: ray leaves on the incoming side");
  });
  check_no_frustum(g, "refraction");
}

void fuzz_sphere(FuzzInput& in, std::vector<Vec2> const& samples) {
  UniformSphereRayGenerator g(static_cast<GMathRay::Type>(in.range(0, 5)), in.between(0.0, 1.0));
  Vec3 const centre(in.between(-10.0, 10.0), in.between(-10.0, 10.0), in.between(-10.0, 10.0));
  g.init(centre, in.between(0.0, 1.0), in.between(0.0, 1.0));
  check_paths(g, samples, "sphere", [&](Vec2 const&, GMathRay const& ray, double const& w) {
    FUZZ_ASSERT(w == 1.0, "sphere: weight %.17g", w);
    FUZZ_ASSERT(ray.m_origin == centre, "sphere: origin is not the centre");
    FUZZ_ASSERT(unit_length(ray.m_direction), "sphere: |d| = %.17g", ray.m_direction.length());
    check_differentials(ray, "sphere");
  });
  // Boxes spanning at most a sixth of v hold their rays.
  Vec2 corner0, corner1;
  decode_box(in, corner0, corner1);
  corner1.y = corner0.y + (corner1.y - corner0.y) / 6.0;
  if (corner1.x - corner0.x > 1e-3 && corner1.y - corner0.y > 1e-3)
    check_frustum_holds(g, corner0, corner1, samples, "sphere");
}

// The line, plane and disk: a frame of rotation, uniform scale and
// translation; the ray origin off the shape by at least 0.05 local units.
template <typename Generator>
void fuzz_shape(FuzzInput& in, std::vector<Vec2> const& samples, unsigned int shape) {
  char const* const names[] = {"line", "plane", "disk"};
  char const* const name = names[shape];
  Vec3 const z = in.direction();
  Vec3 x, y;
  orthonormal_basis(z, x, y);
  double const scale = in.between(0.1, 10.0);
  Vec3 const t(in.between(-10.0, 10.0), in.between(-10.0, 10.0), in.between(-10.0, 10.0));
  GMathMatrix4x4<double> frame;
  Vec3 const axis[3] = {x * scale, y * scale, z * scale};
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c)
      frame(r, c) = r == 0 ? axis[c].x : r == 1 ? axis[c].y : axis[c].z;
  }
  frame(0, 3) = t.x;
  frame(1, 3) = t.y;
  frame(2, 3) = t.z;
  double const radius = in.between(0.05, 2.0);
  double const height = (in.flag() ? 1.0 : -1.0) * in.between(0.05, 3.0);
  Vec3 const local_origin(in.between(-2.0, 2.0), in.between(-2.0, 2.0), height);
  Vec3 const origin = frame.transform_point(local_origin);
  double const reduction_x = in.between(0.0, 1.5), reduction_y = in.between(0.0, 1.5);

  Generator g(static_cast<GMathRay::Type>(in.range(0, 5)), in.between(0.0, 1.0));
  if constexpr (std::is_same<Generator, LineRayGenerator>::value)
    g.init(origin, frame, reduction_x);
  else if constexpr (std::is_same<Generator, PlaneRayGenerator>::value)
    g.init(origin, frame, reduction_x, reduction_y);
  else
    g.init(origin, frame, radius, reduction_x, reduction_y);
  bool const discard = in.flag();
  Vec3 const normal = in.direction() * in.between(0.0, 2.0);
  if (discard)
    g.discard_clipped_samples(normal);

  check_paths(g, samples, name, [&](Vec2 const& s, GMathRay const& ray, double const& w) {
    FUZZ_ASSERT(ray.m_origin == origin, "%s: origin moved", name);
    FUZZ_ASSERT(unit_length(ray.m_direction), "%s: |d| = %.17g", name, ray.m_direction.length());
    FUZZ_ASSERT(std::isfinite(w) && w > 0.0, "%s: distance %.17g", name, w);
    Vec3 const to_target = ray.m_direction * w;
    if (discard)
      FUZZ_ASSERT(dot(to_target, normal) > -1e-12 * w * normal.length(),
                  "%s: kept a target below the clip plane", name);
    // The target in local coordinates lies on the shape.
    Vec3 const d = origin + to_target - t;
    Vec3 const local(dot(d, x) / scale, dot(d, y) / scale, dot(d, z) / scale);
    double const tol = 1e-9 * (1.0 + w / scale);
    FUZZ_ASSERT(std::fabs(local.z) <= tol, "%s: target %.3g off the shape's plane", name, local.z);
    if (shape == 0)
      FUZZ_ASSERT(std::fabs(local.x - (s.x - 0.5)) <= tol && std::fabs(local.y) <= tol,
                  "%s: target (%.17g, %.17g) is not the sample's point", name, local.x, local.y);
    if (shape == 1)
      FUZZ_ASSERT(
          std::fabs(local.x - (s.x - 0.5)) <= tol && std::fabs(local.y - (s.y - 0.5)) <= tol,
          "%s: target (%.17g, %.17g) is not the sample's point", name, local.x, local.y);
    if (shape == 2)
      FUZZ_ASSERT(std::hypot(local.x, local.y) <= radius + tol, "%s: target outside the disk",
                  name);
    check_differentials(ray, name);
  });
  // Line and plane frusta hold any box. The disk's widening tilts each side
  // by 0.025 of the corner vectors' sum, a world length, so whether it covers
  // the curved box edges depends on the placement (an origin close to a
  // large disk leaks even from cells of an 8 x 8 grid): only its planes are
  // checked.
  Vec2 corner0, corner1;
  decode_box(in, corner0, corner1);
  if (shape == 2) {
    GMathFrustum frustum;
    g.get_frustum(corner0, corner1, frustum);
    FUZZ_ASSERT(frustum.m_plane_count == 4, "disk: %u frustum planes", frustum.m_plane_count);
    for (unsigned int k = 0; k < 4; ++k)
      FUZZ_ASSERT(finite(frustum.m_plane_normal[k]) && std::isfinite(frustum.m_plane_distance[k]),
                  "disk: frustum plane %u not finite", k);
  } else if (corner1.x - corner0.x > 1e-3 && corner1.y - corner0.y > 1e-3) {
    check_frustum_holds(g, corner0, corner1, samples, name);
  }
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  FuzzInput in(data, size);
  unsigned int const generator = in.range(0, 6);
  std::vector<Vec2> const samples = decode_samples(in);
  switch (generator) {
    case 0:
      fuzz_cosine(in, samples);
      break;
    case 1:
      fuzz_reflection(in, samples);
      break;
    case 2:
      fuzz_refraction(in, samples);
      break;
    case 3:
      fuzz_sphere(in, samples);
      break;
    case 4:
      fuzz_shape<LineRayGenerator>(in, samples, 0);
      break;
    case 5:
      fuzz_shape<PlaneRayGenerator>(in, samples, 1);
      break;
    default:
      fuzz_shape<DiskRayGenerator>(in, samples, 2);
      break;
  }
  return 0;
}
