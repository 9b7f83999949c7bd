#include "examples/demo/mis_study.h"

#include <algorithm>
#include <cmath>
#include <fstream>

#include "examples/demo/loglog_plot.h"
#include "platform/random/grandom_mt.h"
#include "sampling/ray_generators.h"

char const* const MisStudy::k_strategies[3] = {"cosine", "light", "mis_balance"};

namespace {

constexpr double k_pi = 3.14159265358979323846;

// The shading point, its normal, and the light: a disk of radius k_radius
// centred at k_centre, its plane spanned by k_axis_x and k_axis_y (unit,
// orthogonal), tilted towards the point; its lowest rim stays above the
// surface, so every direction to it has a positive cosine.
GMathVec3<double> const k_point(0.0, 0.0, 0.0);
GMathVec3<double> const k_normal(0.0, 0.0, 1.0);
GMathVec3<double> const k_centre(0.6, 0.0, 0.5);
double const k_radius = 0.6;
double const k_tilt = 75.0 * k_pi / 180.0;
GMathVec3<double> const k_axis_x(0.0, 1.0, 0.0);
GMathVec3<double> const k_axis_y(std::sin(k_tilt), 0.0, std::cos(k_tilt));

double dot(GMathVec3<double> const& a, GMathVec3<double> const& b) {
  return a.x * b.x + a.y * b.y + a.z * b.z;
}

// Reflected radiance per unit solid angle of incoming light: a white
// Lambertian BRDF 1/pi, radiance 1 from the light (both faces), the cosine
// at the point.
double integrand(GMathVec3<double> const& direction) {
  return std::max(0.0, dot(direction, k_normal)) / k_pi;
}

// The exact value: the integrand over the light's area, cos_p |cos_l| /
// (pi t^2) dA, by the midpoint rule in (r^2, angle) where dA is constant.
double exact_value() {
  GMathVec3<double> const normal = cross(k_axis_x, k_axis_y);
  int const rings = 1200, sectors = 2400;
  double sum = 0.0;
  for (int i = 0; i < rings; ++i) {
    double const r = k_radius * std::sqrt((i + 0.5) / rings);
    for (int j = 0; j < sectors; ++j) {
      double const phi = 2.0 * k_pi * (j + 0.5) / sectors;
      GMathVec3<double> const target =
          k_centre + k_axis_x * (r * std::cos(phi)) + k_axis_y * (r * std::sin(phi));
      GMathVec3<double> const d = target - k_point;
      double const t2 = dot(d, d), t = std::sqrt(t2);
      sum += dot(d, k_normal) / t * std::fabs(dot(d, normal)) / t / (k_pi * t2);
    }
  }
  return sum * (k_pi * k_radius * k_radius) / (double(rings) * sectors);
}

double unit_random(GRandomMt& random) {
  return (random.genrand_int32() + 0.5) * (1.0 / 4294967296.0);
}

}  // namespace

MisStudy::MisStudy() : m_exact(exact_value()) {
  for (unsigned int n = k_min_count; n <= k_max_count; n *= 2)
    m_counts.push_back(n);
}

void MisStudy::run() {
  CosineWeightedHemisphereRayGenerator cosine;
  cosine.init(GMathRay(k_point, k_normal), 180.0, 1.0, 1.0);
  GMathVec3<double> const z = cross(k_axis_x, k_axis_y);
  GMathMatrix4x4<double> frame;
  double const rows[3][4] = {{k_axis_x.x, k_axis_y.x, z.x, k_centre.x},
                             {k_axis_x.y, k_axis_y.y, z.y, k_centre.y},
                             {k_axis_x.z, k_axis_y.z, z.z, k_centre.z}};
  for (int r = 0; r < 3; ++r)
    for (int c = 0; c < 4; ++c)
      frame(r, c) = rows[r][c];
  DiskRayGenerator light;
  light.init(k_point, frame, k_radius, 1.0, 1.0);

  std::size_t const nc = m_counts.size();
  m_rmse.assign(3 * nc, 0.0);
  std::vector<GMathVec2<double>> samples(k_max_count);
  std::vector<GMathRay> rays(k_max_count);
  GRandomMt random;
  for (std::size_t c = 0; c < nc; ++c) {
    unsigned int const n = m_counts[c], half = n / 2;
    double squared[3] = {0.0, 0.0, 0.0};
    for (unsigned int trial = 0; trial < k_trials; ++trial) {
      random.seed(1000003u * trial + n);
      for (unsigned int k = 0; k < n; ++k)
        samples[k] = GMathVec2<double>(unit_random(random), unit_random(random));
      // The single strategies use all n samples; MIS gives the first half to
      // the cosine generator and the second half to the light.
      double estimate[3] = {0.0, 0.0, 0.0};
      unsigned int const nr_cosine = cosine.get_rays(samples.data(), n, rays.data(), nullptr);
      for (unsigned int k = 0; k < nr_cosine; ++k) {
        GMathVec3<double> const& d = rays[k].m_direction;
        double const pl = light.pdf(d);
        if (pl > 0.0) {
          double const f = integrand(d), pc = cosine.pdf(d);
          estimate[0] += f / pc;
          if (k < half)
            estimate[2] += f / (half * pc + half * pl);
        }
      }
      unsigned int const nr_light = light.get_rays(samples.data(), n, rays.data(), nullptr);
      for (unsigned int k = 0; k < nr_light; ++k) {
        GMathVec3<double> const& d = rays[k].m_direction;
        double const f = integrand(d), pl = light.pdf(d), pc = cosine.pdf(d);
        estimate[1] += f / pl;
        if (k >= half)
          estimate[2] += f / (half * pc + half * pl);
      }
      estimate[0] /= n;
      estimate[1] /= n;
      for (int s = 0; s < 3; ++s)
        squared[s] += (estimate[s] - m_exact) * (estimate[s] - m_exact);
    }
    for (int s = 0; s < 3; ++s)
      m_rmse[s * nc + c] = std::sqrt(squared[s] / k_trials);
  }
}

bool MisStudy::write_csv(std::string const& path) const {
  std::ofstream out(path);
  if (!out)
    return false;
  out << "strategy,count,rmse\n";
  out.precision(9);
  for (int s = 0; s < 3; ++s)
    for (std::size_t c = 0; c < m_counts.size(); ++c)
      out << k_strategies[s] << ',' << m_counts[c] << ',' << m_rmse[s * m_counts.size() + c]
          << '\n';
  out.close();
  return static_cast<bool>(out);
}

bool MisStudy::write_plot(Gallery& gallery) const {
  LogLogPlot plot("Direct lighting from a disk light: RMSE against N, log-log", "rays N", "RMSE");
  std::vector<double> const counts(m_counts.begin(), m_counts.end());
  std::size_t const nc = m_counts.size();
  for (unsigned int s = 0; s < 3; ++s) {
    plot.add_series(k_strategies[s], counts,
                    std::vector<double>(m_rmse.begin() + s * nc, m_rmse.begin() + (s + 1) * nc),
                    "");
  }
  return plot.save(gallery, "mis_direct_lighting.svg",
                   "Direct lighting from a tilted disk light at a Lambertian point: RMSE over " +
                       std::to_string(k_trials) +
                       " seeds against N for cosine rays, rays towards the light, and N/2 of "
                       "each combined by the balance heuristic with the generators' pdf().");
}

void MisStudy::print_heading(std::FILE* out) {
  std::fprintf(out, "mis: direct lighting from a disk light, RMSE over %u seeds per N\n", k_trials);
}

void MisStudy::print_table(std::FILE* out) const {
  std::fprintf(out, "  exact value %.9f\n", m_exact);
  std::fprintf(out, "  %6s %12s %12s %12s\n", "N", k_strategies[0], k_strategies[1],
               k_strategies[2]);
  std::size_t const nc = m_counts.size();
  for (std::size_t c = 0; c < nc; ++c)
    std::fprintf(out, "  %6u %12.3e %12.3e %12.3e\n", m_counts[c], m_rmse[c], m_rmse[nc + c],
                 m_rmse[2 * nc + c]);
}
