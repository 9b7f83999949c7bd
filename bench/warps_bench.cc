// Every warp of Sampling over an array of 4096 samples, each beside a plain
// loop written straight from its formula with the library's decimal angle
// constants (same outputs, checked before timing) and the store bound of the
// same output records.

#include <benchmark/benchmark.h>

#include <cmath>
#include <type_traits>
#include <vector>

#include "bench/bench_support.h"
#include "sampling/sampling.h"
#include "sampling/warps.h"

namespace {

using Vec3 = GMathVec3<double>;
unsigned const k_count = 4096;
double const k_pi = bench::k_plain_pi;
double const k_two_pi = bench::k_plain_two_pi;
double const k_half_pi = bench::k_plain_half_pi;
double const k_scale = 0.9;  // radius scale of the hemisphere warps

// Output records: a polar pair, a point, or a point with its frame.
struct Polar {
  double r, phi;
};
struct Point {
  Vec3 d;
};
struct Frame {
  Vec3 d, t, b;
};

using bench::plain_concentric;

// (cos phi rho, sin phi rho, z), the tangent of increasing phi and the
// bitangent towards +z.
void polar(double const& phi, double const& rho, double const& z, Point& o) {
  o.d = Vec3(std::cos(phi) * rho, std::sin(phi) * rho, z);
}
void polar(double const& phi, double const& rho, double const& z, Frame& o) {
  o.d = Vec3(std::cos(phi) * rho, std::sin(phi) * rho, z);
  o.t = Vec3(-std::sin(phi), std::cos(phi), 0.0);
  o.b = Vec3(-z * std::cos(phi), -z * std::sin(phi), rho);
}

struct ToUnitDisk {
  using Out = Polar;
  static void library(double const& u, double const& v, Out& o) {
    Sampling::to_unit_disk(u, v, o.r, o.phi);
  }
  static void plain(double const& u, double const& v, Out& o) {
    plain_concentric(u, v, o.r, o.phi);
  }
};

struct DiskConcentric {
  using Out = Point;
  static void library(double const& u, double const& v, Out& o) {
    Sampling::disk_concentric(u, v, o.d);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double r, phi;
    plain_concentric(u, v, r, phi);
    polar(phi, r, 0.0, o);
  }
};

struct DiskConcentricFrame {
  using Out = Frame;
  static void library(double const& u, double const& v, Out& o) {
    Sampling::disk_concentric(u, v, o.d, o.t, o.b);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double r, phi;
    plain_concentric(u, v, r, phi);
    o.d = Vec3(std::cos(phi) * r, std::sin(phi) * r, 0.0);
    o.t = Vec3(std::cos(phi), std::sin(phi), 0.0);
    o.b = Vec3(-std::sin(phi), std::cos(phi), 0.0);
  }
};

// The hemisphere and sphere warps: (phi, rho, z) of a sample, then polar().
template <typename O>
struct HemisphereUniform {
  using Out = O;
  static constexpr bool k_second_sine = true;  // a sine besides the sincos
  static void library(double const& u, double const& v, Point& o) {
    Sampling::hemisphere_uniform(u, v, o.d, k_scale);
  }
  static void library(double const& u, double const& v, Frame& o) {
    Sampling::hemisphere_uniform(u, v, o.d, o.t, o.b, k_scale);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double const rho = std::sin(u * k_half_pi) * k_scale;
    polar(k_two_pi * v, rho, std::sqrt(1.0 - rho * rho), o);
  }
};

template <typename O>
struct HemisphereUniformConcentric {
  using Out = O;
  static constexpr bool k_second_sine = true;  // a sine besides the sincos
  static void library(double const& u, double const& v, Point& o) {
    Sampling::hemisphere_uniform_concentric(u, v, o.d, k_scale);
  }
  static void library(double const& u, double const& v, Frame& o) {
    Sampling::hemisphere_uniform_concentric(u, v, o.d, o.t, o.b, k_scale);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double r, phi;
    plain_concentric(u, v, r, phi);
    double const rho = std::sin(r * k_half_pi) * k_scale;
    polar(phi, rho, std::sqrt(1.0 - rho * rho), o);
  }
};

template <typename O>
struct HemisphereCosine {
  using Out = O;
  static void library(double const& u, double const& v, Point& o) {
    Sampling::hemisphere_cosine(u, v, o.d, k_scale);
  }
  static void library(double const& u, double const& v, Frame& o) {
    Sampling::hemisphere_cosine(u, v, o.d, o.t, o.b, k_scale);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double const rho = u * k_scale;
    polar(k_two_pi * v, rho, std::sqrt(1.0 - rho * rho), o);
  }
};

template <typename O>
struct HemisphereCosineConcentric {
  using Out = O;
  static void library(double const& u, double const& v, Point& o) {
    Sampling::hemisphere_cosine_concentric(u, v, o.d, k_scale);
  }
  static void library(double const& u, double const& v, Frame& o) {
    Sampling::hemisphere_cosine_concentric(u, v, o.d, o.t, o.b, k_scale);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double r, phi;
    plain_concentric(u, v, r, phi);
    double const rho = r * k_scale;
    polar(phi, rho, std::sqrt(1.0 - rho * rho), o);
  }
};

template <typename O>
struct SphereUniform {
  using Out = O;
  static void library(double const& u, double const& v, Point& o) {
    Sampling::sphere_uniform(u, v, o.d);
  }
  static void library(double const& u, double const& v, Frame& o) {
    Sampling::sphere_uniform(u, v, o.d, o.t, o.b);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double const z = 1.0 - u * 2.0;
    polar(k_two_pi * v, std::sqrt(1.0 - z * z), z, o);
  }
};

template <typename O>
struct SphereCosine {
  using Out = O;
  static constexpr bool k_second_sine = true;  // a sine besides the sincos
  static void library(double const& u, double const& v, Point& o) {
    Sampling::sphere_cosine(u, v, o.d);
  }
  static void library(double const& u, double const& v, Frame& o) {
    Sampling::sphere_cosine(u, v, o.d, o.t, o.b);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double const z = std::sin(k_half_pi - u * k_pi);
    polar(k_two_pi * v, std::sqrt(1.0 - z * z), z, o);
  }
};

// The exported entry against its inline body from sampling/warps.h as the
// reference: x_reference is the price of the call per sample.
template <typename O, typename W>
struct Inline {
  using Out = O;
  static void library(double const& u, double const& v, Out& o) { W::exported(u, v, o.d); }
  static void plain(double const& u, double const& v, Out& o) { W::inlined(u, v, o.d); }
};
struct SphereUniformCall {
  static void exported(double const& u, double const& v, Vec3& d) {
    Sampling::sphere_uniform(u, v, d);
  }
  static void inlined(double const& u, double const& v, Vec3& d) {
    sampling::warps::sphere_uniform(u, v, d);
  }
};
struct HemisphereCosineConcentricCall {
  static void exported(double const& u, double const& v, Vec3& d) {
    Sampling::hemisphere_cosine_concentric(u, v, d, k_scale);
  }
  static void inlined(double const& u, double const& v, Vec3& d) {
    sampling::warps::hemisphere_cosine_concentric(u, v, d, k_scale);
  }
};

// Whether a warp calls libm's sine besides its sincos (false unless the warp
// says so).
template <typename W, typename = void>
struct SecondSine : std::false_type {};
template <typename W>
struct SecondSine<W, std::void_t<decltype(W::k_second_sine)>>
    : std::integral_constant<bool, W::k_second_sine> {};

template <typename W>
void BM_Warp(benchmark::State& state) {
  using Out = typename W::Out;
  static std::vector<GMathVec2<double>> const in = bench::unit_samples(k_count, 5);
  std::vector<Out> out(k_count), check(k_count);
  auto const library = [&] {
    for (unsigned i = 0; i < k_count; ++i)
      W::library(in[i].x, in[i].y, out[i]);
  };
  auto const plain = [&] {
    for (unsigned i = 0; i < k_count; ++i)
      W::plain(in[i].x, in[i].y, check[i]);
  };
  library();
  plain();
  if (!bench::check_same(state, out, check))
    return;
  // The floor of a bit-exact warp in place of the bare store bound: per
  // sample the libm calls its formula needs (glibc's, whose bits the warps
  // keep) and the record's store: one cosine/sine pair in the first two
  // components, and for the warps that also take a sine of u (the uniform
  // hemispheres, the cosine sphere) that sine in the third.
  std::vector<Out> floor_out(k_count);
  auto const floor = [&] {
    Out prototype = check[1];
    benchmark::DoNotOptimize(&prototype);
    for (unsigned i = 0; i < k_count; ++i) {
      Out o = prototype;
      double* const pair = reinterpret_cast<double*>(&o);
      sampling::warps::detail::cos_sin(in[i].y * k_two_pi, pair[0], pair[1]);
      if constexpr (SecondSine<W>::value)
        pair[2] = std::sin(in[i].x * k_half_pi);
      floor_out[i] = o;
    }
    benchmark::DoNotOptimize(floor_out.data());
    benchmark::ClobberMemory();
  };
  bench::run(state, k_count, library, plain, floor);
}

BENCHMARK_TEMPLATE(BM_Warp, ToUnitDisk);
BENCHMARK_TEMPLATE(BM_Warp, DiskConcentric);
BENCHMARK_TEMPLATE(BM_Warp, DiskConcentricFrame);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereUniform<Point>);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereUniform<Frame>);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereUniformConcentric<Point>);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereUniformConcentric<Frame>);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereCosine<Point>);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereCosine<Frame>);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereCosineConcentric<Point>);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereCosineConcentric<Frame>);
BENCHMARK_TEMPLATE(BM_Warp, SphereUniform<Point>);
BENCHMARK_TEMPLATE(BM_Warp, SphereUniform<Frame>);
BENCHMARK_TEMPLATE(BM_Warp, SphereCosine<Point>);
BENCHMARK_TEMPLATE(BM_Warp, SphereCosine<Frame>);
BENCHMARK_TEMPLATE(BM_Warp, Inline<Point, SphereUniformCall>);
BENCHMARK_TEMPLATE(BM_Warp, Inline<Point, HemisphereCosineConcentricCall>);

}  // namespace
