// CosineWeightedHemisphereRayGenerator::get_rays over 1024 samples, per
// clipping mode (plain, discard, project), kind of differentials (0 = incoming
// ray without differentials: the rays still get the cone's spread; 1 = with
// incoming differentials; 2 = none at all: an incoming ray without them and
// a negative angle) and weight array, beside a plain reference written from
// the cone's formulas (rays and weights checked bit for bit before timing)
// and the store bound of the rays and weights written.

#include <benchmark/benchmark.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <string>
#include <vector>

#include "bench/bench_support.h"
#include "sampling/ray_generators.h"

namespace {

using Vec3 = GMathVec3<double>;
constexpr unsigned int k_ray_count = 1024;
double const k_pi = bench::k_plain_pi;
double const k_degree = bench::k_plain_pi / 180;

GMathRay bench_incoming_ray(bool differentials) {
  Vec3 d(0.3, 0.5, 0.8);
  d = d * (1.0 / d.length());
  GMathRay ray(Vec3(1.0, 2.0, 3.0), d);
  if (differentials) {
    GMathRayDifferential diff;
    diff.m_rx_origin = ray.m_origin + Vec3(0.01, 0.0, 0.0);
    diff.m_ry_origin = ray.m_origin + Vec3(0.0, 0.01, 0.0);
    diff.m_rx_direction = d * 0.999 + Vec3(0.0447, 0.0, 0.0);
    diff.m_ry_direction = d * 0.999 + Vec3(0.0, 0.0447, 0.0);
    ray.set_differentials(diff);
  }
  return ray;
}

enum Mode { k_plain = 0, k_discard = 1, k_project = 2 };

using bench::plain_dot;
using bench::plain_normalize;

// The cone about the incoming direction n, half-angle h: the concentric map's
// radius r and angle phi give s = r sin h, c = sqrt(1 - s^2), the direction
// t1 s cos phi + t2 s sin phi + n c with the tangents of increasing phi and
// of increasing r; the auxiliary directions turn towards those tangents by
// the cone's spread, atan((1 - reduction) h), plus the incoming spread.
struct CosineReference {
  Mode mode;
  Vec3 clip;
  GMathRay middle;  // origin, type, time and differential origins
  Vec3 t1, t2, n;
  double sin_h, cx, sx, cy, sy;

  CosineReference(GMathRay const& ray, double const& angle, double const& reduction, Mode m,
                  Vec3 const& clip_normal)
      : mode(m), clip(clip_normal), middle(ray), n(ray.m_direction) {
    double a = std::fabs(angle) * k_degree;
    a = a > 0.0 ? (a >= k_pi ? k_pi : a) : 0.0;
    double const h = 0.5 * a;
    sin_h = std::sin(h);
    t1 = plain_normalize(cross(Vec3(0.0, 1.0, 0.0), n));
    t2 = cross(n, t1);
    if (angle <= 1e-8 && !ray.m_has_differentials)
      return;
    double tx = (1.0 - reduction) * h, ty = (1.0 - reduction) * h, rx = 0.0, ry = 0.0;
    GMathRayDifferential const& in = ray.m_differential;
    if (ray.m_has_differentials) {
      double ccx = plain_dot(n, in.m_rx_direction), ccy = plain_dot(n, in.m_ry_direction);
      ccx = ccx <= 0.0 ? 0.0 : (ccx >= 1.0 ? 1.0 : ccx);  // cosines clamped to [0, 1]
      ccy = ccy <= 0.0 ? 0.0 : (ccy >= 1.0 ? 1.0 : ccy);
      tx += std::sqrt(1.0 - ccx * ccx) / ccx;
      ty += std::sqrt(1.0 - ccy * ccy) / ccy;
      Vec3 const ox = in.m_rx_origin - ray.m_origin, oy = in.m_ry_origin - ray.m_origin;
      rx = std::sqrt(plain_dot(ox, t1) * plain_dot(ox, t1) + plain_dot(ox, t2) * plain_dot(ox, t2));
      ry = std::sqrt(plain_dot(oy, t1) * plain_dot(oy, t1) + plain_dot(oy, t2) * plain_dot(oy, t2));
    }
    cx = 1.0 / std::sqrt(tx * tx + 1.0);
    sx = cx * tx;
    cy = 1.0 / std::sqrt(ty * ty + 1.0);
    sy = cy * ty;
    GMathRayDifferential d;
    d.m_rx_origin = ray.m_origin + t1 * rx;
    d.m_ry_origin = ray.m_origin + t2 * ry;
    d.m_rx_direction = n * cx + t1 * sx;
    d.m_ry_direction = n * cy + t2 * sy;
    middle.set_differentials(d);
  }

  Vec3 world(double const& x, double const& y, double const& z) const {
    return t1 * x + t2 * y + n * z;
  }

  void build(Vec3 const& w, Vec3 const& u, Vec3 const& v, GMathRay& ray) const {
    ray.m_origin = middle.m_origin;
    ray.set_direction(w);
    ray.m_type = middle.m_type;
    ray.m_time = middle.m_time;
    if (middle.m_has_differentials) {
      GMathRayDifferential d = middle.m_differential;
      d.m_rx_direction = w * cx + u * sx;
      d.m_ry_direction = w * cy + v * sy;
      ray.set_differentials(d);
    } else {
      ray.m_has_differentials = false;
      ray.m_aux[0] = ray.m_aux[1] = 0.0;
    }
    ray.m_aux_cleared[0] = ray.m_aux_cleared[1] = 0.0;
  }

  unsigned int operator()(GMathVec2<double> const* samples, unsigned int const& count,
                          GMathRay* rays, double* weights) const {
    unsigned int written = 0;
    for (unsigned int i = 0; i < count; ++i) {
      double r, phi;
      bench::plain_concentric(samples[i].x, samples[i].y, r, phi);
      double const s = r * sin_h, c = std::sqrt(1.0 - s * s);
      Vec3 w = world(std::cos(phi) * s, std::sin(phi) * s, c);
      Vec3 u = world(-std::sin(phi), std::cos(phi), 0.0);
      Vec3 v = world(-c * std::cos(phi), -c * std::sin(phi), s);
      double const d = plain_dot(w, clip);
      if (mode == k_discard && !(d > 0.0))
        continue;
      if (mode == k_project && d < 0.0) {
        w = plain_normalize(w - clip * d);
        u = plain_normalize(u - w * plain_dot(u, w));
        v = plain_normalize(v - w * plain_dot(v, w));
      }
      build(w, u, v, rays[written]);
      if (weights)
        weights[written] = 1.0;
      ++written;
    }
    return written;
  }
};

void BM_CosineGetRays(benchmark::State& state) {
  Mode const mode = static_cast<Mode>(state.range(0));
  int const kind = static_cast<int>(state.range(1));
  bool const weighted = state.range(2) != 0;
  GMathRay const incoming = bench_incoming_ray(kind == 1);
  double const angle = kind == 2 ? -120.0 : 120.0;
  CosineWeightedHemisphereRayGenerator generator;
  generator.init(incoming, angle, 0.5, 0.5);
  // A clipping plane that cuts the cone near its axis, so that the discard
  // and project modes take both branches.
  GMathMatrix4x4<double> const& m = generator.get_matrix();
  Vec3 const normal(m(0, 0), m(1, 0), m(2, 0));
  if (mode == k_discard)
    generator.discard_clipped_samples(normal);
  if (mode == k_project)
    generator.project_clipped_samples(normal);
  static std::vector<GMathVec2<double>> const samples = bench::unit_samples(k_ray_count, 2024);
  CosineReference const reference(incoming, angle, 0.5, mode, normal);
  bench::run_generator(state, generator, samples, weighted, reference);
  // The floor: the sincos of each sample's concentric angle and the ray's
  // store (counters floor_ns_per_item and x_floor).
  std::vector<double> angles(samples.size());
  for (std::size_t i = 0; i < samples.size(); ++i) {
    double r;
    bench::plain_concentric(samples[i].x, samples[i].y, r, angles[i]);
  }
  GMathRay prototype;
  reference.build(incoming.m_direction, incoming.m_direction, incoming.m_direction, prototype);
  bench::report_sincos_floor(state, angles, prototype);
  state.SetLabel(std::string(mode == k_plain     ? "plain"
                             : mode == k_discard ? "discard"
                                                 : "project") +
                 (kind == 0   ? "/cone-spread-only"
                  : kind == 1 ? "/incoming-differentials"
                              : "/no-differentials") +
                 (weighted ? "/weights" : "/no-weights"));
}
BENCHMARK(BM_CosineGetRays)
    ->ArgNames({"mode", "diff", "weights"})
    ->ArgsProduct({{k_plain, k_discard, k_project}, {0, 1, 2}, {0, 1}});

// The textbook path the plain rays are held against: concentric disk sample,
// cosine lift, an orthonormal frame about the normal from its z component
// alone (the branchless construction of Duff et al.) and a ray of origin and
// direction (48 bytes) per sample, in full-precision pi. It computes other
// bits than the library (whose rays are 240-byte records with inverse
// direction, cleared differentials and tracer fields), so only the times are
// compared: x reference is the library over this path.
struct TextbookRay {
  Vec3 origin, direction;
};

// The textbook rays of samples[0..count-1] about the unit normal n, packed
// at the front; with a clip normal only those strictly above its plane.
// Returns the number written.
unsigned int textbook_rays(GMathVec2<double> const* samples, unsigned int const& count,
                           Vec3 const& origin, Vec3 const& n, Vec3 const* clip, TextbookRay* rays) {
  double const sign = std::copysign(1.0, n.z);
  double const a = -1.0 / (sign + n.z);
  double const b = n.x * n.y * a;
  Vec3 const t1(1.0 + sign * n.x * n.x * a, sign * b, -sign * n.x);
  Vec3 const t2(b, sign + n.y * n.y * a, -n.y);
  unsigned int written = 0;
  for (unsigned int i = 0; i < count; ++i) {
    double const ox = 2.0 * samples[i].x - 1.0, oy = 2.0 * samples[i].y - 1.0;
    double r = 0.0, theta = 0.0;
    if (ox != 0.0 || oy != 0.0) {
      if (std::fabs(ox) > std::fabs(oy)) {
        r = ox;
        theta = M_PI / 4 * (oy / ox);
      } else {
        r = oy;
        theta = M_PI / 2 - M_PI / 4 * (ox / oy);
      }
    }
    double const x = r * std::cos(theta), y = r * std::sin(theta);
    double const z = std::sqrt(std::max(0.0, 1.0 - x * x - y * y));
    Vec3 const direction = t1 * x + t2 * y + n * z;
    if (clip && !(plain_dot(direction, *clip) > 0.0))
      continue;
    rays[written].origin = origin;
    rays[written].direction = direction;
    ++written;
  }
  return written;
}

// Plain rays without differentials (plain and discard modes, the full
// hemisphere as an ambient-occlusion renderer asks for) against the textbook
// path; the store bound is that of the library's records.
void BM_CosineRaysVsTextbook(benchmark::State& state) {
  Mode const mode = static_cast<Mode>(state.range(0));
  GMathRay const incoming = bench_incoming_ray(false);
  CosineWeightedHemisphereRayGenerator generator;
  generator.init(incoming, -180.0, 1.0, 1.0);
  if (mode == k_discard)
    generator.discard_clipped_samples(incoming.m_direction);
  static std::vector<GMathVec2<double>> const samples = bench::unit_samples(k_ray_count, 2024);
  std::vector<GMathRay> rays(k_ray_count);
  std::vector<TextbookRay> textbook(k_ray_count);
  bench::run(
      state, k_ray_count,
      [&] { generator.get_rays(samples.data(), k_ray_count, rays.data(), nullptr); },
      [&] {
        textbook_rays(samples.data(), k_ray_count, incoming.m_origin, incoming.m_direction,
                      mode == k_discard ? &incoming.m_direction : nullptr, textbook.data());
        benchmark::DoNotOptimize(textbook.data());
      },
      [&] { bench::store_records(rays.data(), k_ray_count, rays[1]); });
  state.SetLabel(mode == k_plain ? "plain/no-differentials" : "discard/no-differentials");
}
BENCHMARK(BM_CosineRaysVsTextbook)->ArgNames({"mode"})->Arg(k_plain)->Arg(k_discard);

// The ambient-occlusion pattern of a renderer: per hit, the generator aimed
// along the shading normal (full hemisphere, no differentials), samples
// below the geometric normal's plane discarded, and a few rays (8, as the
// demo asks). Items are samples; init and the clip set-up are part of each
// hit's cost. x reference: against the plain formulas (the cone's reference
// built per hit, rays checked bit for bit); x textbook: against the textbook
// frame and rays per hit with the same discard test.
void BM_CosineOcclusionHits(benchmark::State& state) {
  constexpr unsigned int k_hits = 128;
  constexpr unsigned int k_per_hit = 8;
  std::vector<GMathVec2<double>> const samples = bench::unit_samples(k_hits * k_per_hit, 77);
  std::vector<GMathVec2<double>> const frames = bench::unit_samples(3 * k_hits, 78);
  std::vector<GMathRay> hits(k_hits);
  std::vector<Vec3> clips(k_hits);
  for (unsigned int h = 0; h < k_hits; ++h) {
    // Shading normals uniform over the sphere; geometric normals tilted off
    // them by up to about 0.3 radians.
    double const z = 2.0 * frames[3 * h].x - 1.0, phi = 2.0 * k_pi * frames[3 * h].y;
    double const rho = std::sqrt(1.0 - z * z);
    Vec3 const n(rho * std::cos(phi), rho * std::sin(phi), z);
    hits[h] = GMathRay(Vec3(frames[3 * h + 1].x, frames[3 * h + 1].y, frames[3 * h + 2].x), n);
    clips[h] = plain_normalize(n + Vec3(0.3, -0.2, 0.1) * frames[3 * h + 2].y);
  }
  std::vector<GMathRay> rays(k_hits * k_per_hit), check(k_hits * k_per_hit);
  std::vector<TextbookRay> textbook(k_hits * k_per_hit);
  CosineWeightedHemisphereRayGenerator generator;
  auto library = [&] {
    unsigned int total = 0;
    for (unsigned int h = 0; h < k_hits; ++h) {
      generator.init(hits[h], -180.0, 1.0, 1.0);
      generator.discard_clipped_samples(clips[h]);
      total += generator.get_rays(&samples[h * k_per_hit], k_per_hit, &rays[total], nullptr);
    }
    return total;
  };
  auto reference = [&] {
    unsigned int total = 0;
    for (unsigned int h = 0; h < k_hits; ++h) {
      CosineReference const cone(hits[h], -180.0, 1.0, k_discard, clips[h]);
      total += cone(&samples[h * k_per_hit], k_per_hit, &check[total], nullptr);
    }
    return total;
  };
  unsigned int const written = library();
  if (written != reference()) {
    state.SkipWithError("library and reference write different ray counts");
    return;
  }
  if (!bench::check_same_rays(state, rays.data(), check.data(), written))
    return;
  bench::run(
      state, k_hits * k_per_hit, [&] { benchmark::DoNotOptimize(library()); },
      [&] { benchmark::DoNotOptimize(reference()); },
      [&] { bench::store_records(check.data(), written, check[0]); });
  double const textbook_ns = bench::ns_per_call(
      [&] {
        unsigned int total = 0;
        for (unsigned int h = 0; h < k_hits; ++h)
          total += textbook_rays(&samples[h * k_per_hit], k_per_hit, hits[h].m_origin,
                                 hits[h].m_direction, &clips[h], &textbook[total]);
        benchmark::DoNotOptimize(total);
        benchmark::DoNotOptimize(textbook.data());
      },
      state.iterations());
  double const per_item = textbook_ns / (k_hits * k_per_hit);
  state.counters["textbook_ns_per_item"] = per_item;
  state.counters["x_textbook"] = state.counters["ns_per_item"].value / per_item;
  state.counters["rays_kept"] = static_cast<double>(written) / (k_hits * k_per_hit);
}
BENCHMARK(BM_CosineOcclusionHits);

}  // namespace
