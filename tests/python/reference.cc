// Reference values for the Python tests, computed by the library through
// its one-at-a-time paths: Sampler2d::get_sample per index where the package
// fills arrays with get_all_samples, SampleRayGenerator::get_ray per sample
// where the package calls get_rays.
//
//   sampling_python_reference <entry> <numbers...>  < samples  > values
//
// The numbers are the entry's arguments in the order of the C++ calls below
// (Python writes them with repr, which strtod reads back exactly); stdin holds
// float64 (u, v) pairs and stdout receives float64 values, both raw.

#include <cstdio>
#include <cstdlib>
#include <string>
#include <vector>

#include "sampling/ray_generators.h"
#include "sampling/samplers.h"
#include "sampling/sampling.h"

namespace {

using Vec2 = GMathVec2<double>;
using Vec3 = GMathVec3<double>;

struct Arguments {
  char** next;
  char** end;
  double real() {
    if (next == end) {
      std::fprintf(stderr, "reference: too few arguments\n");
      std::exit(2);
    }
    return std::strtod(*next++, nullptr);
  }
  unsigned int u32() { return static_cast<unsigned int>(real()); }
  Vec3 vec3() {
    double const x = real(), y = real();
    return Vec3(x, y, real());
  }
  GMathMatrix4x4<double> matrix4() {
    GMathMatrix4x4<double> m;
    for (double& e : m.m)
      e = real();
    return m;
  }
};

std::vector<Vec2> read_samples() {
  std::vector<Vec2> samples;
  Vec2 s;
  while (std::fread(&s, sizeof(s), 1, stdin) == 1)
    samples.push_back(s);
  return samples;
}

void put(double const& value) {
  std::fwrite(&value, sizeof(value), 1, stdout);
}
void put(Vec2 const& v) {
  put(v.x), put(v.y);
}
void put(Vec3 const& v) {
  put(v.x), put(v.y), put(v.z);
}

// N, the samples one by one, P, then per packet its count, box and samples.
void sampler(Sampler2d& s, bool stream) {
  std::vector<Vec2> all(s.get_sample_count());
  if (stream)  // one stream of draws: the stratified sampler
    s.get_all_samples(all.data());
  else
    for (unsigned int i = 0; i < all.size(); ++i)
      s.get_sample(i, all[i]);
  put(all.size());
  for (Vec2 const& p : all)
    put(p);
  put(s.get_packet_count());
  std::vector<Vec2> packet(all.size() + 2);
  for (unsigned int p = 0; p < s.get_packet_count(); ++p) {
    Vec2 c0, c1;
    unsigned int const n = s.get_packet_samples(p, packet.data(), c0, c1);
    put(n), put(c0), put(c1);
    for (unsigned int i = 0; i < n; ++i)
      put(packet[i]);
  }
}

GMathRay incoming(Arguments& a) {
  Vec3 const origin = a.vec3();
  Vec3 const direction = a.vec3();
  bool const has = a.real() != 0.0;
  GMathRayDifferential d;
  d.m_rx_origin = a.vec3(), d.m_rx_direction = a.vec3();
  d.m_ry_origin = a.vec3(), d.m_ry_direction = a.vec3();
  double const time = a.real();
  GMathRay ray(origin, direction, static_cast<GMathRay::Type>(a.u32()), time);
  if (has)
    ray.set_differentials(d);
  return ray;
}

template <typename G>
void shape_clip(G& g, Arguments& a) {
  bool const discard = a.real() != 0.0;
  Vec3 const n = a.vec3();
  if (discard)
    g.discard_clipped_samples(n);
}

// Per produced ray: origin, direction, weight, differentials, flag, time,
// type, aux, the density of the direction, and after the rays the density of
// the shape's targets (0 without a shape); or per box: points, normals,
// distances, plane count.
template <typename G>
void generate(G const& g, bool frusta, std::vector<Vec2> const& samples,
              double const& target_pdf = 0.0) {
  if (frusta) {
    for (std::size_t i = 0; i + 1 < samples.size(); i += 2) {
      GMathFrustum f;
      g.get_frustum(samples[i], samples[i + 1], f);
      for (Vec3 const& p : f.m_plane_point)
        put(p);
      for (Vec3 const& n : f.m_plane_normal)
        put(n);
      for (double const& d : f.m_plane_distance)
        put(d);
      put(f.m_plane_count);
    }
    return;
  }
  for (Vec2 const& s : samples) {
    GMathRay r;
    double w;
    if (!g.get_ray(s, r, &w))
      continue;
    put(r.m_origin), put(r.m_direction), put(w);
    put(r.m_differential.m_rx_origin), put(r.m_differential.m_rx_direction);
    put(r.m_differential.m_ry_origin), put(r.m_differential.m_ry_direction);
    put(r.m_has_differentials), put(r.m_time), put(r.m_type), put(r.m_aux[0]), put(r.m_aux[1]);
    put(g.pdf(r.m_direction));
  }
  put(target_pdf);
}

void rays(std::string const& kind, bool frusta, Arguments& a) {
  std::vector<Vec2> const samples = read_samples();
  if (kind == "cosine") {
    CosineWeightedHemisphereRayGenerator g;
    GMathRay const ray = incoming(a);
    double const angle = a.real(), srx = a.real(), sry = a.real();
    g.init(ray, angle, srx, sry);
    double const mode = a.real();
    Vec3 const n = a.vec3();
    if (mode == 1.0)
      g.discard_clipped_samples(n);
    else if (mode == 2.0)
      g.project_clipped_samples(n);
    generate(g, frusta, samples);
  } else if (kind == "reflection" || kind == "refraction") {
    GMathRay const ray = incoming(a);
    Vec3 const position = a.vec3();
    GMathMatrix3x3<double> shading;
    for (double& e : shading.m)
      e = a.real();
    Vec3 const ng = a.vec3();
    GeometryDifferential dp;
    dp.m_dpdx = a.vec3(), dp.m_dpdy = a.vec3();
    float const nu = a.real(), nv = a.real();
    GMathVec2<float> direction;
    direction.x = a.real(), direction.y = a.real();
    float const eta = a.real(), srx = a.real(), sry = a.real();
    if (kind == "reflection") {
      AnisotropicReflectionRayGenerator g;
      g.init(ray, position, shading, ng, dp, nu, nv, direction, srx, sry);
      generate(g, frusta, samples);
    } else {
      AnisotropicRefractionRayGenerator g;
      g.init(ray, position, shading, ng, dp, nu, nv, direction, eta, srx, sry);
      generate(g, frusta, samples);
    }
  } else {
    GMathRay::Type const type = static_cast<GMathRay::Type>(a.u32());
    double const time = a.real();
    Vec3 const origin = a.vec3();
    if (kind == "sphere") {
      UniformSphereRayGenerator g(type, time);
      double const srx = a.real();
      g.init(origin, srx, a.real());
      generate(g, frusta, samples);
      return;
    }
    GMathMatrix4x4<double> const frame = a.matrix4();
    if (kind == "line") {
      LineRayGenerator g(type, time);
      g.init(origin, frame, a.real());
      shape_clip(g, a);
      generate(g, frusta, samples, g.pdf_length());
    } else if (kind == "plane") {
      PlaneRayGenerator g(type, time);
      double const srx = a.real();
      g.init(origin, frame, srx, a.real());
      shape_clip(g, a);
      generate(g, frusta, samples, g.pdf_area());
    } else {
      DiskRayGenerator g(type, time);
      double const radius = a.real(), srx = a.real();
      g.init(origin, frame, radius, srx, a.real());
      shape_clip(g, a);
      generate(g, frusta, samples, g.pdf_area());
    }
  }
}

}  // namespace

int main(int argc, char** argv) {
  if (argc < 2)
    return 2;
  Sampling::init();
  std::string const entry = argv[1];
  Arguments a{argv + 2, argv + argc};
  if (entry == "stratified") {
    GRandomMt random(a.u32());
    StratifiedSampler2d s;
    unsigned int const cx = a.u32(), cy = a.u32(), px = a.u32(), py = a.u32();
    double const jx = a.real();
    s.init(random, cx, cy, px, py, jx, a.real());
    sampler(s, true);
  } else if (entry == "hierarchical") {
    HierarchicalSampler2d s(static_cast<HierarchicalSampler2d::Mode>(a.u32()));
    unsigned int const seed = a.u32(), count = a.u32(), sets = a.u32();
    s.init(seed, count, sets, a.u32());
    sampler(s, false);
  } else if (entry == "hammersley" || entry == "hammersley_sub" || entry == "halton") {
    // seed, count_x, count_y[, packet sizes]; seed, sets, set, count; seed,
    // count_x, count_y, base.
    unsigned int const seed = a.u32(), n1 = a.u32(), n2 = a.u32();
    HammersleySampler2d h;
    HaltonSampler2d halton;
    if (entry == "halton")
      halton.init(seed, n1, n2, a.u32());
    else if (entry == "hammersley_sub")
      h.init_sub(seed, n1, n2, a.u32());
    else if (a.next == a.end)
      h.init(seed, n1, n2);
    else {
      unsigned int const px = a.u32();
      h.init(seed, n1, n2, px, a.u32());
    }
    sampler(entry == "halton" ? static_cast<Sampler2d&>(halton) : h, false);
  } else if (entry == "rays" || entry == "frusta") {
    std::string const kind = argc > 2 ? argv[2] : "";
    a.next++;
    rays(kind, entry == "frusta", a);
  } else {
    return 2;
  }
  Sampling::destroy();
  return 0;
}
