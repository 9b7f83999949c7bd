// get_rays of the shape generators (uniform sphere, line, plane, disk) on
// 1024 samples, per mode (plain, discard), weight array and differentials,
// each beside a plain reference written from the shape formulas (rays and
// weights checked bit for bit before timing) and the store bound of the rays
// and weights written.

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "sampling/ray_generators.h"

namespace {

using Vec2 = GMathVec2<double>;
using Vec3 = GMathVec3<double>;
constexpr unsigned int k_count = 1024;
double const k_pi = bench::k_plain_pi;
double const k_two_pi = bench::k_plain_two_pi;

// A rotated, scaled and moved frame, and an origin off every shape.
GMathMatrix4x4<double> bench_frame() {
  GMathMatrix4x4<double> m;
  double const c = 0.8, s = 0.6;
  m(0, 0) = 2.0 * c;
  m(0, 1) = -1.5 * s;
  m(1, 0) = 2.0 * s;
  m(1, 1) = 1.5 * c;
  m(0, 3) = 0.5;
  m(1, 3) = -0.25;
  m(2, 3) = 1.0;
  return m;
}
Vec3 const k_origin(0.3, 0.2, 4.0);
double const k_disk_radius = 0.75;

enum Shape { k_sphere, k_line, k_plane, k_disk };

// ---- Plain references -------------------------------------------------------

using bench::plain_concentric;
using bench::plain_dot;
using bench::plain_normalize;

// Unit sphere about the centre: z = 1 - 2u, azimuth 2 pi v; the auxiliary
// directions turn by atan((1 - reduction) 2 pi) towards the tangent and
// atan((1 - reduction) pi) towards the bitangent.
struct SphereReference {
  Vec3 centre;
  double c0, s0, c1, s1;
  SphereReference(Vec3 const& c, double const& reduction) : centre(c) {
    double const a = (1.0 - reduction) * k_two_pi, b = (1.0 - reduction) * k_pi;
    c0 = 1.0 / std::sqrt(a * a + 1.0);
    s0 = c0 * a;
    c1 = 1.0 / std::sqrt(b * b + 1.0);
    s1 = c1 * b;
  }
  unsigned int operator()(Vec2 const* samples, unsigned int const& count, GMathRay* rays,
                          double* weights) const {
    for (unsigned int i = 0; i < count; ++i) {
      double const z = 1.0 - samples[i].x * 2.0, rho = std::sqrt(1.0 - z * z);
      double const phi = k_two_pi * samples[i].y;
      Vec3 const d(std::cos(phi) * rho, std::sin(phi) * rho, z);
      Vec3 const t(-std::sin(phi), std::cos(phi), 0.0);
      Vec3 const b(-z * std::cos(phi), -z * std::sin(phi), rho);
      GMathRay& ray = rays[i];
      ray.m_origin = centre;
      ray.set_direction(d);
      ray.m_type = GMathRay::k_type_probe;
      ray.m_time = 0.0;
      GMathRayDifferential diff;
      diff.m_rx_origin = centre;
      diff.m_ry_origin = centre;
      diff.m_rx_direction = d * c0 + t * s0;
      diff.m_ry_direction = d * c1 + b * s1;
      ray.set_differentials(diff);
      ray.m_aux_cleared[0] = ray.m_aux_cleared[1] = 0.0;
      if (weights)
        weights[i] = 1.0;
    }
    return count;
  }
};

// Line, plane and disk: the ray from the origin towards the frame's image of
// the shape's local point, its length as weight; differentials aim at the
// target moved by the frame's images of (s, 0, 0) and (0, s, 0), times the
// diameter for the disk (the line:
// at the target turned about the segment); discard keeps the points strictly
// on the clip normal's side.
struct ShapeReference {
  Shape shape;
  GMathMatrix4x4<double> frame;
  Vec3 origin, clip_normal, dx, dy;
  bool discard, differentials;

  Vec3 local_point(Vec2 const& s) const {
    if (shape == k_line)
      return Vec3(s.x - 0.5, 0.0, 0.0);
    if (shape == k_plane)
      return Vec3(s.x - 0.5, s.y - 0.5, 0.0);
    double r, phi;
    plain_concentric(s.x, s.y, r, phi);
    return Vec3(std::cos(phi) * r * k_disk_radius, std::sin(phi) * r * k_disk_radius,
                0.0 * k_disk_radius);
  }

  unsigned int operator()(Vec2 const* samples, unsigned int const& count, GMathRay* rays,
                          double* weights) const {
    unsigned int n = 0;
    for (unsigned int i = 0; i < count; ++i) {
      Vec3 const to = frame.transform_point(local_point(samples[i])) - origin;
      if (discard && !(plain_dot(to, clip_normal) > 0.0))
        continue;
      double const distance = std::sqrt(to.x * to.x + to.y * to.y + to.z * to.z);
      GMathRay& ray = rays[n];
      ray.m_type = GMathRay::k_type_probe;
      ray.m_time = 0.0;
      ray.m_origin = origin;
      ray.set_direction(to * (1.0 / distance));
      ray.m_aux_cleared[0] = ray.m_aux_cleared[1] = 0.0;
      if (differentials) {
        GMathRayDifferential diff;
        diff.m_rx_origin = origin;
        diff.m_ry_origin = origin;
        diff.m_rx_direction = plain_normalize(to + dx);
        diff.m_ry_direction = plain_normalize(to + (shape == k_line ? cross(dx, to) : dy));
        ray.set_differentials(diff);
      } else {
        ray.m_has_differentials = false;
        ray.m_aux[0] = ray.m_aux[1] = 0.0;
      }
      if (weights)
        weights[n] = distance;
      ++n;
    }
    return n;
  }
};

// ---- Benchmarks ---------------------------------------------------------------

void shape_rays(benchmark::State& state, Shape shape, bool discard, bool weighted,
                bool differentials) {
  // A spread reduction of 1 switches the differentials off.
  double const reduction = differentials ? 0.5 : 1.0;
  GMathMatrix4x4<double> const frame = bench_frame();
  UniformSphereRayGenerator sphere;
  LineRayGenerator line;
  PlaneRayGenerator plane;
  DiskRayGenerator disk;
  sphere.init(k_origin, reduction, reduction);
  line.init(k_origin, frame, reduction);
  plane.init(k_origin, frame, reduction, reduction);
  disk.init(k_origin, frame, k_disk_radius, reduction, reduction);
  ShapeReference reference{shape,  frame,  k_origin, Vec3(0.0, 0.0, 0.0),
                           Vec3(), Vec3(), discard,  differentials};
  if (differentials) {
    reference.dx = frame.transform_vector(Vec3(1.0 - reduction, 0.0, 0.0));
    reference.dy = frame.transform_vector(Vec3(0.0, 1.0 - reduction, 0.0));
    if (shape == k_disk) {  // fractions of the diameter
      reference.dx = reference.dx * (k_disk_radius * 2.0);
      reference.dy = reference.dy * (k_disk_radius * 2.0);
    }
  }
  if (discard) {
    // A plane through the origin, the shape's centre and its local x axis:
    // it keeps about half the samples (all of the line's or none, so the
    // line's plane is tilted off its axis).
    Vec3 const centre(frame(0, 3), frame(1, 3), frame(2, 3));
    Vec3 const x_axis(frame(0, 0), frame(1, 0), frame(2, 0));
    Vec3 const y_axis(frame(0, 1), frame(1, 1), frame(2, 1));
    reference.clip_normal = cross(centre - k_origin, shape == k_line ? y_axis : x_axis);
    line.discard_clipped_samples(reference.clip_normal);
    plane.discard_clipped_samples(reference.clip_normal);
    disk.discard_clipped_samples(reference.clip_normal);
  }
  SampleRayGenerator const* const generators[4] = {&sphere, &line, &plane, &disk};
  static std::vector<Vec2> const samples = bench::unit_samples(k_count, 12345);
  bench::RaysReference plain;
  if (shape == k_sphere)
    plain = SphereReference(k_origin, reduction);
  else
    plain = reference;
  bench::run_generator(state, *generators[shape], samples, weighted, plain);
  // The sphere and the disk call sincos once per ray: their floor is that
  // call and the ray's store (counters floor_ns_per_item and x_floor).
  if (shape == k_sphere || shape == k_disk) {
    std::vector<double> angles(samples.size());
    for (std::size_t i = 0; i < samples.size(); ++i) {
      double r;
      if (shape == k_sphere)
        angles[i] = bench::k_plain_two_pi * samples[i].y;
      else
        bench::plain_concentric(samples[i].x, samples[i].y, r, angles[i]);
    }
    GMathRay prototype;
    plain(samples.data(), 1, &prototype, nullptr);
    bench::report_sincos_floor(state, angles, prototype);
  }
}

[[maybe_unused]] int const k_registered = [] {
  char const* const names[4] = {"Sphere", "Line", "Plane", "Disk"};
  for (int shape = k_sphere; shape <= k_disk; ++shape) {
    for (int discard = 0; discard < 2; ++discard) {
      for (int differentials = 0; differentials < 2; ++differentials) {
        // The sphere has no clipping and always carries differentials.
        if (shape == k_sphere && (discard || !differentials))
          continue;
        for (int weighted = 0; weighted < 2; ++weighted) {
          std::string const name = std::string("BM_ShapeRays/") + names[shape] +
                                   (discard ? "/discard" : "/plain") +
                                   (weighted ? "/weights" : "/no_weights") +
                                   (differentials ? "/differentials" : "/no_differentials");
          benchmark::RegisterBenchmark(name.c_str(), shape_rays, static_cast<Shape>(shape),
                                       discard != 0, weighted != 0, differentials != 0);
        }
      }
    }
  }
  return 0;
}();

}  // namespace
