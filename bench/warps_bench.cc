// The main warps of Sampling over an array of 4096 samples, each beside a
// plain loop written straight from the polar formulas with the library's
// decimal angle constants (same outputs, checked before timing).

#include <benchmark/benchmark.h>

#include <cmath>
#include <cstring>
#include <vector>

#include "platform/random/grandom_mt.h"
#include "sampling/sampling.h"

namespace {

using Vec3 = GMathVec3<double>;
unsigned const k_count = 4096;
double const k_two_pi = 6.283185307178;
double const k_half_pi = 1.5707963267945;
double const k_quarter_pi = 0.78539816339725;

struct Out {
  Vec3 d, t, b;
};

std::vector<GMathVec2<double>> const& inputs() {
  static std::vector<GMathVec2<double>> const samples = [] {
    std::vector<GMathVec2<double>> s(k_count);
    GRandomMt mt(5);
    for (auto& p : s) {
      p.x = mt.genrand_int32() * 0x1.00000001p-32;
      p.y = mt.genrand_int32() * 0x1.00000001p-32;
    }
    return s;
  }();
  return samples;
}

// Concentric square-to-disk map in polar form, sector by sector.
void plain_disk(double const& u, double const& v, double& r, double& phi) {
  double const a = u * 2.0 - 1.0, b = v * 2.0 - 1.0;
  if (a > -b) {
    if (a > b) {
      r = a;
      phi = (b / a) * k_quarter_pi;
    } else {
      r = b;
      phi = (2.0 - a / b) * k_quarter_pi;
    }
  } else if (a >= b) {
    r = -b;
    phi = -b > 0.0 ? (a / (-b) + 6.0) * k_quarter_pi : 0.0;
  } else {
    r = -a;
    phi = -a > 0.0 ? (4.0 - b / (-a)) * k_quarter_pi : 0.0;
  }
}

void polar(double const& phi, double const& rho, double const& z, Vec3& d) {
  d = Vec3(std::cos(phi) * rho, std::sin(phi) * rho, z);
}

struct ToUnitDisk {
  static void library(double const& u, double const& v, Out& o) {
    Sampling::to_unit_disk(u, v, o.d.x, o.d.y);
  }
  static void plain(double const& u, double const& v, Out& o) { plain_disk(u, v, o.d.x, o.d.y); }
};

struct DiskConcentric {
  static void library(double const& u, double const& v, Out& o) {
    Sampling::disk_concentric(u, v, o.d);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double r, phi;
    plain_disk(u, v, r, phi);
    polar(phi, r, 0.0, o.d);
  }
};

struct HemisphereCosineConcentric {
  static void library(double const& u, double const& v, Out& o) {
    Sampling::hemisphere_cosine_concentric(u, v, o.d, 1.0);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double r, phi;
    plain_disk(u, v, r, phi);
    double const rho = r * 1.0;
    polar(phi, rho, std::sqrt(1.0 - rho * rho), o.d);
  }
};

struct SphereUniform {
  static void library(double const& u, double const& v, Out& o) {
    Sampling::sphere_uniform(u, v, o.d);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double const z = 1.0 - u * 2.0;
    polar(k_two_pi * v, std::sqrt(1.0 - z * z), z, o.d);
  }
};

struct HemisphereUniformFrame {
  static void library(double const& u, double const& v, Out& o) {
    Sampling::hemisphere_uniform(u, v, o.d, o.t, o.b, 1.0);
  }
  static void plain(double const& u, double const& v, Out& o) {
    double const phi = k_two_pi * v;
    double const rho = std::sin(u * k_half_pi) * 1.0;
    double const z = std::sqrt(1.0 - rho * rho);
    polar(phi, rho, z, o.d);
    o.t = Vec3(-std::sin(phi), std::cos(phi), 0.0);
    o.b = Vec3(-z * std::cos(phi), -z * std::sin(phi), rho);
  }
};

template <typename W, bool Plain>
void BM_Warp(benchmark::State& state) {
  auto const& in = inputs();
  std::vector<Out> out(k_count), check(k_count);
  for (unsigned i = 0; i < k_count; ++i) {
    W::library(in[i].x, in[i].y, out[i]);
    W::plain(in[i].x, in[i].y, check[i]);
  }
  if (std::memcmp(out.data(), check.data(), k_count * sizeof(Out)) != 0) {
    state.SkipWithError("library and plain loop differ");
  }
  for (auto _ : state) {
    for (unsigned i = 0; i < k_count; ++i) {
      if (Plain) {
        W::plain(in[i].x, in[i].y, out[i]);
      } else {
        W::library(in[i].x, in[i].y, out[i]);
      }
    }
    benchmark::DoNotOptimize(out.data());
    benchmark::ClobberMemory();
  }
  state.SetItemsProcessed(state.iterations() * k_count);
}

BENCHMARK_TEMPLATE(BM_Warp, ToUnitDisk, false);
BENCHMARK_TEMPLATE(BM_Warp, ToUnitDisk, true);
BENCHMARK_TEMPLATE(BM_Warp, DiskConcentric, false);
BENCHMARK_TEMPLATE(BM_Warp, DiskConcentric, true);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereCosineConcentric, false);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereCosineConcentric, true);
BENCHMARK_TEMPLATE(BM_Warp, SphereUniform, false);
BENCHMARK_TEMPLATE(BM_Warp, SphereUniform, true);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereUniformFrame, false);
BENCHMARK_TEMPLATE(BM_Warp, HemisphereUniformFrame, true);

}  // namespace
