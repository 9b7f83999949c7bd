// Ray generators: for in-contract set-ups decoded from the bytes, get_ray and
// get_rays agree ray for ray (with and without weights), get_rays packs the
// produced rays at the front and touches nothing past them, and every
// produced ray is finite and holds what its generator promises: the cosine
// rays inside their cone with spreads of atan(tx) and atan(ty) and the
// density cos / (pi' sin^2 h), kept or flattened by the clip modes; the sphere
// rays built from the warp's frame; the mirror and Snell directions of the
// chosen anisotropic normal; the shape rays aiming at the sample's point with
// the distance as weight, auxiliary rays at the target moved along the sides,
// densities t^2 / |cos| times the area density. The frusta hold the rays of
// their boxes within the sizes the generators guarantee, and a box of one
// point collapses.
#include <algorithm>
#include <cmath>

#include "platform/math/gmath_matrix4x4.h"
#include "sampling/sampling.h"
#include "tests/fuzz/fuzz_input.h"
#include "tests/rays/anisotropic_test_support.h"

namespace {

typedef GMathVec2<double> Vec2;
typedef GMathVec3<double> Vec3;

bool finite(Vec3 const& v) {
  return std::isfinite(v.x) && std::isfinite(v.y) && std::isfinite(v.z);
}

bool unit_length(Vec3 const& v, double const& tol = 1e-12) {
  return std::fabs(v.length() - 1.0) <= tol;
}

// The tangent of the angle between unit vectors (infinite from a quarter
// turn on).
double tan_between(Vec3 const& a, Vec3 const& b) {
  double const c = dot(a, b);
  return c > 0.0 ? cross(a, b).length() / c : INFINITY;
}

// `a` is a unit vector turned from the unit vector `d` by atan(t), to `tol`.
bool turned_by(Vec3 const& a, Vec3 const& d, double const& t, double const& tol) {
  double const c = 1.0 / std::sqrt(t * t + 1.0), s = c == 0.0 ? 1.0 : c * t;
  return unit_length(a, tol) && std::fabs(dot(a, d) - c) <= tol &&
         std::fabs(cross(a, d).length() - s) <= tol;
}

// Fields every generated ray shares: finite origin and direction, the cleared
// accumulators, m_aux cleared on a ray without differentials, and (unless
// `any_differentials`) finite auxiliary rays and footprints.
void check_common(GMathRay const& ray, char const* name, bool any_differentials) {
  GMathRayDifferential const& d = ray.m_differential;
  FUZZ_ASSERT(finite(ray.m_origin) && finite(ray.m_direction), "%s: ray not finite", name);
  FUZZ_ASSERT(ray.m_aux_cleared[0] == 0.0 && ray.m_aux_cleared[1] == 0.0,
              "%s: m_aux_cleared not cleared", name);
  if (!ray.m_has_differentials)
    FUZZ_ASSERT(ray.m_aux[0] == 0.0 && ray.m_aux[1] == 0.0, "%s: m_aux set without differentials",
                name);
  else if (!any_differentials)
    FUZZ_ASSERT(finite(d.m_rx_origin) && finite(d.m_ry_origin) && finite(d.m_rx_direction) &&
                    finite(d.m_ry_direction) && std::isfinite(ray.m_aux[0]) &&
                    std::isfinite(ray.m_aux[1]),
                "%s: differentials not finite", name);
}

// get_ray over the samples, then get_rays with and without weights: the same
// rays, packed, with one weight per produced ray and nothing written past
// them. `check` sees each produced ray, its sample and its weight.
template <typename Check>
void check_paths(SampleRayGenerator const& g, std::vector<Vec2> const& samples, char const* name,
                 Check const& check, bool any_differentials = false) {
  unsigned int const count = static_cast<unsigned int>(samples.size());
  double const sentinel = -12345.0;
  std::vector<GMathRay> single = patterned_rays(count + 1);
  std::vector<double> single_weights(count + 1, sentinel);
  unsigned int produced = 0;
  for (unsigned int i = 0; i < count; ++i) {
    double weight = sentinel;
    if (g.get_ray(samples[i], single[produced], &weight)) {
      check_common(single[produced], name, any_differentials);
      check(samples[i], single[produced], weight);
      single_weights[produced++] = weight;
    }
  }
  for (bool const weighted : {true, false}) {
    std::vector<GMathRay> batch = patterned_rays(count + 1);
    std::vector<double> weights(count + 1, sentinel);
    unsigned int const n =
        g.get_rays(samples.data(), count, batch.data(), weighted ? weights.data() : nullptr);
    FUZZ_ASSERT(n == produced &&
                    std::memcmp(single.data(), batch.data(), (count + 1) * sizeof(GMathRay)) == 0 &&
                    std::memcmp(weighted ? single_weights.data() : weights.data(), weights.data(),
                                (count + 1) * sizeof(double)) == 0,
                "%s: get_rays (weighted %d) differs from get_ray or writes past its rays", name,
                weighted);
  }
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
                  "%s: ray of (%.17g, %.17g) outside plane %u by %.3g", name, inside.x, inside.y, k,
                  frustum.evaluate(k, x) / scale);
    }
  }
}

// A box of one point collapses every side to a zero plane through the
// origin (but the two across the line's strip).
void check_point_box(SampleRayGenerator const& g, FuzzInput& in, Vec3 const& origin, bool line) {
  Vec2 const c(in.unit(), in.unit());
  GMathFrustum f;
  g.get_frustum(c, c, f);
  for (unsigned int k = 0; k < 4; ++k)
    FUZZ_ASSERT(
        f.m_plane_count == 4 && f.m_plane_point[k] == origin &&
            ((line && k % 2) || (f.m_plane_normal[k] == Vec3() && f.m_plane_distance[k] == 0.0)),
        "point box of (%.17g, %.17g): plane %u", c.x, c.y, k);
}

// An incoming ray of unit direction, with small differentials when asked.
GMathRay decode_incoming(FuzzInput& in, Vec3 const& direction, bool differentials) {
  Vec3 const origin(in.between(-10.0, 10.0), in.between(-10.0, 10.0), in.between(-10.0, 10.0));
  GMathRay ray(origin, direction, static_cast<GMathRay::Type>(in.range(0, 5)), in.between(0, 1));
  if (differentials) {
    GMathRayDifferential d;
    d.m_rx_origin = origin + in.direction() * 0.01;
    d.m_ry_origin = origin + in.direction() * 0.01;
    // At times turned a quarter or more away from the ray: an infinite spread.
    Vec3 const turned = in.flag() ? direction * -in.unit() : direction;
    d.m_rx_direction = safe_normalize(turned + in.direction() * 0.01, 1e-8);
    d.m_ry_direction = safe_normalize(direction + in.direction() * 0.01, 1e-8);
    ray.set_differentials(d);
  }
  return ray;
}

void fuzz_cosine(FuzzInput& in, std::vector<Vec2> const& samples) {
  GMathRay const incoming = decode_incoming(in, in.direction(), in.flag());
  double const angles[6] = {0.0, 1e-8, 1e-3, 180.0, 400.0, -90.0};
  double const angle = in.flag() ? angles[in.range(0, 5)] : in.between(-400.0, 400.0);
  double const reduction_x = in.between(0.0, 1.0), reduction_y = in.between(0.0, 1.0);
  CosineWeightedHemisphereRayGenerator g;
  g.init(incoming, angle, reduction_x, reduction_y);
  // The spreads: the cone's half angle less its reduction, plus the incoming
  // ray's. Only a positive angle gives rays differentials of their own.
  GMathRayDifferential const& in_diff = incoming.m_differential;
  bool const spread = incoming.m_has_differentials;
  double const h = std::atan2(g.get_angle_sin(), g.get_angle_cos());
  double const in_tx = spread ? tan_between(in_diff.m_rx_direction, incoming.m_direction) : 0.0;
  double const in_ty = spread ? tan_between(in_diff.m_ry_direction, incoming.m_direction) : 0.0;
  double const tx = (1.0 - reduction_x) * h + in_tx, ty = (1.0 - reduction_y) * h + in_ty;
  // The generator takes an incoming spread from the cosine c of its angle as
  // sqrt(1 - c^2) / c: a rounding of c by a few 1e-16 moves it by that over the
  // tangent, and by at most 3e-8 (the square root of the rounding) near 0.
  // An axis within 1e-8 of the Y axis gets the fixed frame of Y, which is
  // orthonormal to it only to the axis's distance from Y.
  double const off_y = std::hypot(incoming.m_direction.x, incoming.m_direction.z);
  double const tol = 1e-12 + (off_y <= 1e-8 ? 4.0 * off_y : 0.0);
  double const tol_x = tol + (spread ? std::min(3e-8, 1e-15 / in_tx) : 0.0);
  double const tol_y = tol + (spread ? std::min(3e-8, 1e-15 / in_ty) : 0.0);
  unsigned int const mode = in.range(0, 2);
  Vec3 const normal = in.direction();
  if (mode == 1)
    g.discard_clipped_samples(normal);
  if (mode == 2)
    g.project_clipped_samples(normal);
  char const* const names[] = {"cosine plain", "cosine discard", "cosine project"};
  char const* const name = names[mode];
  double const cos_h = g.get_angle_cos();
  CosineWeightedHemisphereRayGenerator plain = g;
  plain.disable_clipping();
  check_paths(g, samples, name, [&](Vec2 const& s, GMathRay const& ray, double const& weight) {
    FUZZ_ASSERT(weight == 1.0, "%s: weight %.17g", name, weight);
    FUZZ_ASSERT(ray.m_origin == incoming.m_origin && ray.m_time == incoming.m_time &&
                    ray.m_type == incoming.m_type,
                "%s: origin, time or type not the incoming ray's", name);
    Vec3 const& d = ray.m_direction;
    double const along = dot(d, normal);
    if (mode == 2 && along == 0.0 && d.length() == 0.0)
      return;  // W exactly opposite to n: the projection vanishes
    FUZZ_ASSERT(unit_length(d, tol) && (mode != 1 || along > 0.0),
                "%s: |d| = %.17g, d . n = %.17g at (%.17g, %.17g)", name, d.length(), along, s.x,
                s.y);
    // A projection of W nearly opposite to n is short (down to the 1e-8
    // normalisation threshold), and normalising it magnifies the rounding of
    // W - (W . n) n: d . n is then of the order of 1e-16 / |W'|.
    if (mode == 2)
      FUZZ_ASSERT(along >= -1e-7, "%s: projected ray below the plane: d . n = %.17g", name, along);
    // Projection keeps the rays above the plane bit for bit and flattens the
    // others onto the nearest direction of the plane, with unit auxiliary
    // directions (built on tangents projected as well: a short projection's
    // rounding, over its length, leaves them off unit by as much).
    // The auxiliary directions are turned from the ray by atan(tx)
    // perpendicular to the axis (azimuthal) and by atan(ty) within the plane
    // of the ray and the axis (polar); the footprint keeps the incoming
    // offsets' lengths within the plane perpendicular to the axis.
    Vec3 const& axis = incoming.m_direction;
    Vec3 const& rx = ray.m_differential.m_rx_direction;
    Vec3 const& ry = ray.m_differential.m_ry_direction;
    Vec3 const foot = in_diff.m_rx_origin - incoming.m_origin;
    // The footprint is measured in the plane of the axis's frame: near Y,
    // Y's, tilted from the axis's by up to off_y.
    double const foot_tol = 1e-12 + (off_y <= 1e-8 ? 4.0 * off_y * foot.length() : 0.0);
    FUZZ_ASSERT(ray.m_has_differentials == (spread || angle > 1e-8), "%s: differentials", name);
    FUZZ_ASSERT(
        mode == 2 || !ray.m_has_differentials ||
            (turned_by(rx, d, tx, tol_x) && turned_by(ry, d, ty, tol_y) &&
             std::fabs(dot(rx - d * dot(rx, d), axis)) <= tol &&
             std::fabs(dot(ry - d * dot(ry, d), cross(axis, d))) <= tol &&
             std::fabs((ray.m_differential.m_rx_origin - ray.m_origin).length() -
                       (spread ? (foot - axis * dot(foot, axis)).length() : 0.0)) <= foot_tol),
        "%s: auxiliary rays of (%.17g, %.17g)", name, s.x, s.y);
    GMathRay w = ray;  // a ray without differentials keeps the record's
    plain.get_ray(s, w, nullptr);
    Vec3 const flat = w.m_direction - normal * dot(w.m_direction, normal);
    GMathRayDifferential const& aux = ray.m_differential;
    if (mode == 2)
      FUZZ_ASSERT(dot(w.m_direction, normal) >= 0.0
                      ? same_ray_bits(ray, w)
                      : flat.length() < 1e-6 ||
                            ((d - flat * (1.0 / flat.length())).length() <= 1e-12 / flat.length() &&
                             (!ray.m_has_differentials ||
                              (unit_length(aux.m_rx_direction, tol + 1e-15 / flat.length()) &&
                               unit_length(aux.m_ry_direction, tol + 1e-15 / flat.length())))),
                  "%s: ray of (%.17g, %.17g) not kept or flattened", name, s.x, s.y);
    // The rim's height is sqrt(1 - s^2) with s = the cone's sine: for cones
    // near 90 degrees the rounding of s^2 is magnified by 1 / (2 cos_h).
    // Within the cone (inside its rim) the density is cos / (pi' sin^2 h);
    // below sin^2 h = 1e-12 the rounding of cos decides. Near Y the frame's
    // tangents lean on the axis by up to off_y, which moves cos by up to
    // 2 off_y sin h, so the rim may fall inside by that over sin^2 h.
    double const s2 = g.get_angle_sin() * g.get_angle_sin();
    double const rim = 0.4999 - (off_y <= 1e-8 ? 2.0 * off_y / std::sqrt(s2) : 0.0);
    FUZZ_ASSERT(mode == 2 || s2 < 1e-12 ||
                    std::fmax(std::fabs(s.x - 0.5), std::fabs(s.y - 0.5)) > rim ||
                    std::fabs(g.pdf(d) * (k_sampling_pi * s2) - dot(d, axis)) <= 1e-9 + tol,
                "%s: pdf %.17g at (%.17g, %.17g)", name, g.pdf(d), s.x, s.y);
    FUZZ_ASSERT(mode == 2 || dot(d, axis) >= cos_h - (tol + 4e-16 / std::max(cos_h, 1e-12)),
                "%s: ray outside the cone: d . D = %.17g, cos_h = %.17g", name, dot(d, axis),
                cos_h);
  });
  // The quadrants and the cells of finer grids hold their rays (thin boxes
  // across a quadrant do not: the concentric map bends their long edges).
  // The frustum bounds the cone's directions, which projection leaves.
  Vec2 corner0, corner1;
  decode_grid_cell(in, 2, corner0, corner1);
  if (mode != 2)
    check_frustum_holds(g, corner0, corner1, samples, name);
  check_point_box(g, in, incoming.m_origin, false);
}

// A shading point decoded from the bytes (as the generators' tests draw
// theirs), exponents from 0 to 1000.
struct FuzzSource {
  FuzzInput& in;
  double any() { return in.between(-1.0, 1.0); }
  Vec3 direction() { return in.direction(); }
  unsigned int pick4() { return in.range(0, 3); }
};

template <typename Generator, typename... Eta>
anisotropic_test::Shading init_anisotropic(FuzzInput& in, Generator& g, Eta... eta) {
  FuzzSource src{in};
  float const nu = static_cast<float>(in.flag() ? 0.0 : in.between(0.0, 1000.0));
  float const nv = static_cast<float>(in.flag() ? 0.0 : in.between(0.0, 1000.0));
  anisotropic_test::Shading const s = anisotropic_test::shading_from(src, nu, nv, in.flag());
  anisotropic_test::init(g, s, eta...);
  // No frustum: the planes are counted out.
  GMathFrustum frustum;
  frustum.m_plane_count = 7;
  g.get_frustum(Vec2(0.0, 0.0), Vec2(1.0, 1.0), frustum);
  FUZZ_ASSERT(frustum.m_plane_count == 0, "anisotropic: %u frustum planes", frustum.m_plane_count);
  return s;
}

// The ray is I mirrored about the chosen candidate normal.
void fuzz_reflection(FuzzInput& in, std::vector<Vec2> const& samples) {
  AnisotropicReflectionRayGenerator g;
  anisotropic_test::Shading const sh = init_anisotropic(in, g);
  Vec3 const& i = sh.incoming.m_direction;
  check_paths(g, samples, "reflection", [&](Vec2 const& s, GMathRay const& ray, double const& w) {
    FUZZ_ASSERT(w == 1.0 && ray.m_origin == sh.position && ray.m_time == sh.incoming.m_time &&
                    ray.m_type == GMathRay::k_type_reflection,
                "reflection: weight, origin, time or type");
    double spread;
    bool retried;
    Vec3 const n = anisotropic_test::mirror_normal(g, i, sh.geometric_normal, s, spread, retried);
    Vec3 const& r = ray.m_direction;
    FUZZ_ASSERT(unit_length(r) && (r - (i - n * (2.0 * dot(i, n)))).length() <= 1e-12,
                "reflection: ray of (%.17g, %.17g) is not I mirrored", s.x, s.y);
    // The density (but from v = 0: a normal in the surface) is the normal's
    // over the Jacobian 4 |R . H|, counted once or twice (when the half-turned
    // normal is retried into the same ray). A normal so close to the surface
    // that its density underflows to 0 gives the ray density 0.
    typedef AnisotropicLobe<AnisotropicReflectionRayGenerator> Lobe;
    Vec3 const h = safe_normalize(r - i, 1e-8), local = Lobe::global_to_local(g, h);
    double const normal_pdf = Lobe::normal_pdf(g, local.z > 0.0 ? local : -local);
    double const ways = g.pdf(r) * 4.0 * std::fabs(dot(r, h)) / normal_pdf;
    FUZZ_ASSERT(s.y == 0.0 || (normal_pdf == 0.0 && g.pdf(r) == 0.0) ||
                    std::fabs(ways - 1.0) <= 1e-9 || std::fabs(ways - 2.0) <= 1e-9,
                "reflection: density of (%.17g, %.17g) counts %.17g ways", s.x, s.y, ways);
  });
}

// A sample gives a ray exactly when a candidate normal refracts I below Ng,
// and then that direction: Snell's law and the plane of I and H for a
// transmitted one (to 1e-7: eta^2 is rounded to float), tangential to H
// under total internal reflection.
void fuzz_refraction(FuzzInput& in, std::vector<Vec2> const& samples) {
  AnisotropicRefractionRayGenerator g;
  float const eta = static_cast<float>(in.between(0.5, 2.0));
  anisotropic_test::Shading const sh = init_anisotropic(in, g, eta);
  Vec3 const &i = sh.incoming.m_direction, &ng = sh.geometric_normal;
  for (Vec2 const& s : samples) {
    GMathRay ray;
    FUZZ_ASSERT(g.get_ray(s, ray, nullptr) ==
                    anisotropic_test::expected_refraction(g, i, ng, eta, s).produced,
                "refraction: a ray of (%.17g, %.17g) made or missed", s.x, s.y);
  }
  // Under total internal reflection the auxiliary directions may stop being
  // finite (an unguarded case of the generator); the main ray stays finite.
  auto const check = [&](Vec2 const& s, GMathRay const& ray, double const& w) {
    FUZZ_ASSERT(w == 1.0 && ray.m_origin == sh.position && ray.m_time == sh.incoming.m_time &&
                    ray.m_type == GMathRay::k_type_refraction,
                "refraction: weight, origin, time or type");
    anisotropic_test::Refracted const e = anisotropic_test::expected_refraction(g, i, ng, eta, s);
    Vec3 const &t = ray.m_direction, &h = e.normal;
    double const sin_i = cross(i, h).length(), sin_t = cross(t, h).length();
    FUZZ_ASSERT(t == e.direction && dot(t, ng) < 0.0 && std::fabs(dot(cross(i, h), t)) <= 1e-12,
                "refraction: ray of (%.17g, %.17g) not the chosen one", s.x, s.y);
    FUZZ_ASSERT(e.transmits ? std::fabs(eta * sin_i - sin_t) <= 1e-7 && dot(t, h) < 0.0 &&
                                  std::fabs(t.length() - 1.0) <= 1e-7
                            : std::fabs(dot(t, h)) <= 1e-12,
                "refraction: ray of (%.17g, %.17g) breaks Snell's law", s.x, s.y);
    // A transmitted ray's density is the normal's times |T . H| / |eta I - T|^2,
    // counted once or twice (the half-turned normal retried); 0 where the
    // normal's density underflows.
    typedef AnisotropicLobe<AnisotropicRefractionRayGenerator> Lobe;
    Vec3 const bend = i * eta - t;
    double const normal_pdf = Lobe::normal_pdf(g, Lobe::global_to_local(g, h));
    double const ways = g.pdf(t) * dot(bend, bend) / (normal_pdf * -dot(t, h));
    // T's direction is off Snell's by up to a few float roundings (eta^2 is
    // rounded to float): the half vector rebuilt from the bend turns by that
    // over |bend|, and pow magnifies it by the exponents.
    double const tol = 2.5e-7 * (2.0 + sh.nu + sh.nv) / bend.length();
    FUZZ_ASSERT(!e.transmits || s.y == 0.0 || (normal_pdf == 0.0 && g.pdf(t) == 0.0) ||
                    std::fabs(ways - 1.0) <= tol || std::fabs(ways - 2.0) <= tol,
                "refraction: density of (%.17g, %.17g) counts %.17g ways", s.x, s.y, ways);
  };
  check_paths(g, samples, "refraction", check, true);
}

// Every ray is the one built field by field from Sampling::sphere_uniform's
// frame: from the centre, the auxiliary directions turned by atan(A) towards
// the tangent and atan(B) towards the bitangent, A = (1 - rx) 2pi and
// B = (1 - ry) pi.
void fuzz_sphere(FuzzInput& in, std::vector<Vec2> const& samples) {
  GMathRay::Type const type = static_cast<GMathRay::Type>(in.range(0, 5));
  double const time = in.between(0.0, 1.0), rx = in.between(0.0, 1.5), ry = in.between(0.0, 1.5);
  UniformSphereRayGenerator g(type, time);
  Vec3 const centre(in.between(-10.0, 10.0), in.between(-10.0, 10.0), in.between(-10.0, 10.0));
  g.init(centre, rx, ry);
  double const a = (1.0 - rx) * k_sampling_two_pi, b = (1.0 - ry) * k_sampling_pi;
  double const cos_x = 1.0 / std::sqrt(a * a + 1.0), cos_y = 1.0 / std::sqrt(b * b + 1.0);
  check_paths(g, samples, "sphere", [&](Vec2 const& s, GMathRay const& ray, double const& w) {
    Vec3 d, tangent, bitangent;
    Sampling::sphere_uniform(s.x, s.y, d, tangent, bitangent);
    GMathRay plain(centre, d, type, time);
    GMathRayDifferential differential;
    differential.m_rx_origin = differential.m_ry_origin = centre;
    differential.m_rx_direction = d * cos_x + tangent * (cos_x * a);
    differential.m_ry_direction = d * cos_y + bitangent * (cos_y * b);
    plain.set_differentials(differential);
    FUZZ_ASSERT(w == 1.0 && same_ray_bits(ray, plain), "sphere: ray of (%.17g, %.17g) differs", s.x,
                s.y);
  });
  // Boxes spanning at most a sixth of v hold their rays.
  Vec2 corner0, corner1;
  decode_box(in, corner0, corner1);
  corner1.y = corner0.y + (corner1.y - corner0.y) / 6.0;
  if (corner1.x - corner0.x > 1e-3 && corner1.y - corner0.y > 1e-3)
    check_frustum_holds(g, corner0, corner1, samples, "sphere");
  check_point_box(g, in, centre, false);
}

// 1 - the spread reduction clamped to [0, 1], a NaN counting as 0: the share
// of the shape's side (the disk's diameter) an auxiliary target moves by.
double share(double const& reduction) {
  return reduction >= 1.0 ? 0.0 : (reduction > 0.0 ? 1.0 - reduction : 1.0);
}

// A spread reduction: in [0, 1.5], or one of the clamp's edge cases.
double decode_reduction(FuzzInput& in) {
  double const edges[7] = {NAN, -3.0, 0.0, 1.0, 7.0, 0.9999, 1.0 - 1e-12};
  return in.flag() ? edges[in.range(0, 6)] : in.between(0.0, 1.5);
}

// The line, plane and disk: a frame of rotation, unequal scales and
// translation; the ray origin off the shape by at least 0.05 local units.
template <typename Generator>
void fuzz_shape(FuzzInput& in, std::vector<Vec2> const& samples, unsigned int shape) {
  char const* const names[] = {"line", "plane", "disk"};
  char const* const name = names[shape];
  // Orthonormal axes (the library's basis of a direction within 1e-8 of the
  // Y axis is orthonormal to it only to that distance).
  Vec3 axis[3];
  axis[2] = in.direction();
  orthonormal_basis(axis[2], axis[0], axis[1]);
  axis[0] = unit(axis[0] - axis[2] * dot(axis[0], axis[2]));
  axis[1] = cross(axis[2], axis[0]);
  double const scale[3] = {in.between(0.1, 10.0), in.between(0.1, 10.0), in.between(0.1, 10.0)};
  Vec3 const t(in.between(-10.0, 10.0), in.between(-10.0, 10.0), in.between(-10.0, 10.0));
  GMathMatrix4x4<double> frame;
  for (int r = 0; r < 3; ++r) {
    for (int c = 0; c < 3; ++c)
      frame(r, c) = axis[c][r] * scale[c];
    frame(r, 3) = t[r];
  }
  double const radius = in.between(0.05, 2.0);
  double const height = (in.flag() ? 1.0 : -1.0) * in.between(0.05, 3.0);
  Vec3 const local_origin(in.between(-2.0, 2.0), in.between(-2.0, 2.0), height);
  Vec3 const origin = frame.transform_point(local_origin);
  double const reduction_x = decode_reduction(in), reduction_y = decode_reduction(in);
  double const size = shape == 2 ? 2.0 * radius : 1.0;
  Vec3 const dx = axis[0] * (scale[0] * share(reduction_x) * size);
  Vec3 const dy = axis[1] * (scale[1] * share(reduction_y) * size);
  bool const differentials = share(reduction_x) > 0.0 || (shape > 0 && share(reduction_y) > 0.0);
  // Targets spread uniformly: per world area 1 / (the shape's local area
  // times the frame's unit area); the line has no density per solid angle.
  double const area_pdf =
      shape == 0
          ? 0.0
          : 1.0 / ((shape == 2 ? k_sampling_pi * radius * radius : 1.0) * scale[0] * scale[1]);

  GMathRay::Type const type = static_cast<GMathRay::Type>(in.range(0, 5));
  double const time = in.between(0.0, 1.0);
  Generator g(type, time);
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
    FUZZ_ASSERT(ray.m_origin == origin && ray.m_type == type && ray.m_time == time &&
                    unit_length(ray.m_direction) && std::isfinite(w) && w > 0.0,
                "%s: origin, type, time, |d| %.17g or distance %.17g", name,
                ray.m_direction.length(), w);
    Vec3 const to_target = ray.m_direction * w;
    if (discard)
      FUZZ_ASSERT(dot(to_target, normal) > -1e-12 * w * normal.length(),
                  "%s: kept a target below the clip plane", name);
    // The target in local coordinates lies on the shape.
    Vec3 const d = origin + to_target - t;
    Vec3 const local(dot(d, axis[0]) / scale[0], dot(d, axis[1]) / scale[1],
                     dot(d, axis[2]) / scale[2]);
    double const tol = 1e-9 * (1.0 + w / std::fmin(std::fmin(scale[0], scale[1]), scale[2]));
    FUZZ_ASSERT(std::fabs(local.z) <= tol, "%s: target %.3g off the shape's plane", name, local.z);
    Vec2 const want(s.x - 0.5, shape == 1 ? s.y - 0.5 : 0.0);
    FUZZ_ASSERT(shape == 2
                    ? std::hypot(local.x, local.y) <= radius + tol
                    : std::fabs(local.x - want.x) <= tol && std::fabs(local.y - want.y) <= tol,
                "%s: target (%.17g, %.17g) is not the sample's point", name, local.x, local.y);
    // The auxiliary rays aim at the target moved by dx and dy (the line's y
    // one by dx x (target - origin)).
    FUZZ_ASSERT(ray.m_has_differentials == differentials, "%s: differentials switched", name);
    // The density per solid angle is the area density times t^2 / |cos|
    // (off the shape's edge, where the rounding of the target decides).
    double const pdf = area_pdf * w * w / std::fabs(dot(ray.m_direction, axis[2]));
    FUZZ_ASSERT(std::fmax(std::fabs(s.x - 0.5), std::fabs(s.y - 0.5)) > 0.4999 ||
                    std::fabs(g.pdf(ray.m_direction) - pdf) <= 1e-9 * pdf,
                "%s: pdf %.17g, not %.17g", name, g.pdf(ray.m_direction), pdf);
    Vec3 const ax = to_target + dx, ay = to_target + (shape == 0 ? cross(dx, to_target) : dy);
    double const reach = 1.0 + w + dx.length() + dy.length() * (1.0 + w);
    FUZZ_ASSERT(!differentials || ax.length() < 1e-6 || ay.length() < 1e-6 ||
                    ((ray.m_differential.m_rx_direction - ax * (1.0 / ax.length())).length() <=
                         1e-12 * reach / ax.length() &&
                     (ray.m_differential.m_ry_direction - ay * (1.0 / ay.length())).length() <=
                         1e-12 * reach / ay.length()),
                "%s: auxiliary rays of (%.17g, %.17g) miss their moved targets", name, s.x, s.y);
    FUZZ_ASSERT(!differentials || (ray.m_differential.m_rx_origin == origin &&
                                   ray.m_differential.m_ry_origin == origin),
                "%s: auxiliary origins", name);
  });
  // Line and plane frusta hold any box. The disk's widening tilts each side
  // by 0.025 of the corner vectors' sum, a world length, so whether it covers
  // the curved box edges depends on the placement (an origin close to a
  // large disk leaks even from cells of an 8 x 8 grid): only its planes are
  // checked.
  Vec2 corner0, corner1;
  decode_box(in, corner0, corner1);
  if (shape != 2 && corner1.x - corner0.x > 1e-3 && corner1.y - corner0.y > 1e-3)
    check_frustum_holds(g, corner0, corner1, samples, name);
  check_point_box(g, in, origin, shape == 0);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(std::uint8_t const* data, std::size_t size) {
  typedef void (*Fuzz)(FuzzInput&, std::vector<Vec2> const&);
  Fuzz const generators[7] = {
      &fuzz_cosine,
      &fuzz_reflection,
      &fuzz_refraction,
      &fuzz_sphere,
      [](FuzzInput& in, std::vector<Vec2> const& s) { fuzz_shape<LineRayGenerator>(in, s, 0); },
      [](FuzzInput& in, std::vector<Vec2> const& s) { fuzz_shape<PlaneRayGenerator>(in, s, 1); },
      [](FuzzInput& in, std::vector<Vec2> const& s) { fuzz_shape<DiskRayGenerator>(in, s, 2); }};
  FuzzInput in(data, size);
  unsigned int const generator = in.range(0, 6);
  std::vector<Vec2> samples(in.range(0, 48));
  for (Vec2& s : samples)
    s = Vec2(in.unit(), in.unit());
  generators[generator](in, samples);
  return 0;
}
