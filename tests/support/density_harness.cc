#include "tests/support/density_harness.h"
#include "sampling/rays/ray_math.h"

#include <algorithm>
#include <cmath>
#include <sstream>
#include <utility>
#include <vector>

namespace {

using Vec2 = GMathVec2<double>;
using Vec3 = GMathVec3<double>;

double const two_pi = 2.0 * std::acos(-1.0);

Vec3 to_local(DensityFrame const& f, Vec3 const& p) {
  return Vec3(dot(p, f.x), dot(p, f.y), dot(p, f.z));
}

Vec3 to_world(DensityFrame const& f, double x, double y, double z) {
  return f.x * x + f.y * y + f.z * z;
}

// Gauss-Legendre nodes and weights on [-1, 1], four points (exact to degree 7).
double const gl_node[4] = {-0.8611363115940526, -0.3399810435848563, 0.3399810435848563,
                           0.8611363115940526};
double const gl_weight[4] = {0.3478548451374538, 0.6521451548625461, 0.6521451548625461,
                             0.3478548451374538};

// The integrand over a cell of (p, q) = (azimuth, theta) or (azimuth, r),
// measure folded in; the rule never evaluates a cell's edges, where the
// pole or a support's rim may sit.
struct CellIntegrand {
  DensityDomain domain;
  DensityFrame const& frame;
  Density const& density;

  double operator()(double phi, double q) const {
    double const c = std::cos(phi), s = std::sin(phi);
    if (domain == DensityDomain::disk)
      return density(to_world(frame, q * c, q * s, 0.0)) * q;
    double const st = std::sin(q);
    return density(to_world(frame, st * c, st * s, std::cos(q))) * st;
  }

  double gauss(double p0, double p1, double q0, double q1) const {
    double const hp = 0.5 * (p1 - p0), hq = 0.5 * (q1 - q0);
    double sum = 0.0;
    for (int i = 0; i < 4; ++i)
      for (int j = 0; j < 4; ++j)
        sum += gl_weight[i] * gl_weight[j] *
               (*this)(p0 + hp * (1.0 + gl_node[i]), q0 + hq * (1.0 + gl_node[j]));
    return sum * hp * hq;
  }

  // Refines `whole` (the rule over the cell) by halving along the axis whose
  // halves change it most, until both halvings agree with it within `tol`
  // or `depth` runs out. NaN stops at once and comes back.
  double adaptive(double p0, double p1, double q0, double q1, double whole, double tol,
                  int depth) const {
    double const pm = 0.5 * (p0 + p1), qm = 0.5 * (q0 + q1);
    double const pa = gauss(p0, pm, q0, q1), pb = gauss(pm, p1, q0, q1);
    double const qa = gauss(p0, p1, q0, qm), qb = gauss(p0, p1, qm, q1);
    double const ep = std::fabs(pa + pb - whole), eq = std::fabs(qa + qb - whole);
    if (!std::isfinite(ep + eq))
      return ep + eq;
    if ((ep <= tol && eq <= tol) || depth == 0)
      return 0.5 * (pa + pb + qa + qb);
    if (ep >= eq)
      return adaptive(p0, pm, q0, q1, pa, tol, depth - 1) +
             adaptive(pm, p1, q0, q1, pb, tol, depth - 1);
    return adaptive(p0, p1, q0, qm, qa, tol, depth - 1) +
           adaptive(p0, p1, qm, q1, qb, tol, depth - 1);
  }

  // Probability of the cell [a0, a1] x [b0, b1] of bin coordinates.
  double cell(double a0, double a1, double b0, double b1) const {
    double const p0 = two_pi * a0, p1 = two_pi * a1;
    double q0, q1;
    if (domain == DensityDomain::disk) {
      q0 = std::sqrt(b0);
      q1 = std::sqrt(b1);
    } else {
      q0 = std::acos(std::min(b1, 1.0));
      q1 = std::acos(std::max(b0, -1.0));
    }
    double const whole = gauss(p0, p1, q0, q1);
    return adaptive(p0, p1, q0, q1, whole, 1e-12 + 1e-5 * std::fabs(whole), 24);
  }
};

struct Bins {
  int na, nb;
  double b_min;  // height coordinate runs from b_min to 1

  Bins(DensityDomain domain, int angle_bins, int height_bins)
      : na(angle_bins), nb(height_bins), b_min(domain == DensityDomain::sphere ? -1.0 : 0.0) {}

  double a_edge(int i) const { return static_cast<double>(i) / na; }
  double b_edge(int j) const { return b_min + (1.0 - b_min) * j / nb; }
  int a_index(double a) const { return std::min(static_cast<int>(a * na), na - 1); }
  int b_index(double b) const {
    return std::min(std::max(static_cast<int>((b - b_min) / (1.0 - b_min) * nb), 0), nb - 1);
  }
};

// Per-cell probabilities, cell (i, j) at j * na + i.
std::vector<double> cell_probabilities(DensityDomain domain, Density const& density,
                                       DensityFrame const& frame, Bins const& bins) {
  CellIntegrand const integrand{domain, frame, density};
  std::vector<double> cells;
  cells.reserve(static_cast<size_t>(bins.na) * bins.nb);
  for (int j = 0; j < bins.nb; ++j)
    for (int i = 0; i < bins.na; ++i)
      cells.push_back(
          integrand.cell(bins.a_edge(i), bins.a_edge(i + 1), bins.b_edge(j), bins.b_edge(j + 1)));
  return cells;
}

// Bin coordinates (angle / 2pi, r^2 or cos theta) of a sampler's output, or
// false when it lies off the domain by more than 1e-4.
bool bin_coordinates(DensityDomain domain, Vec3 const& local, double& a, double& b) {
  double const tol = 1e-4;
  a = std::atan2(local.y, local.x) / two_pi;
  if (a < 0.0)
    a += 1.0;
  if (domain == DensityDomain::disk) {
    b = local.x * local.x + local.y * local.y;
    return std::fabs(local.z) <= tol && b <= (1.0 + tol) * (1.0 + tol);
  }
  double const length = local.length();
  b = local.z / length;
  bool const on_sphere = std::fabs(length - 1.0) <= tol;
  return on_sphere && (domain == DensityDomain::sphere || local.z >= -tol);
}

}  // namespace

ChiSquareResult chi_square_density(DensityDomain domain, DensitySampler const& sampler,
                                   Density const& density, DensityTestOptions const& options) {
  Bins const bins(domain, options.angle_bins, options.height_bins);
  std::vector<double> observed(static_cast<size_t>(bins.na) * bins.nb, 0.0);
  double declined = 0.0;
  UniformSquare uniform(options.seed);
  for (int k = 0; k < options.samples; ++k) {
    Vec2 const uv = uniform();
    Vec3 out;
    if (!sampler(uv, out)) {
      declined += 1.0;
      continue;
    }
    double a, b;
    if (!bin_coordinates(domain, to_local(options.frame, out), a, b))
      return chi_square_failure("sample of (", uv.x, ", ", uv.y, ") off the domain: (", out.x, ", ",
                                out.y, ", ", out.z, ")");
    observed[static_cast<size_t>(bins.b_index(b)) * bins.na + bins.a_index(a)] += 1.0;
  }
  std::vector<double> const p = cell_probabilities(domain, density, options.frame, bins);
  double integral = 0.0;
  std::vector<std::pair<double, double>> cells;  // (expected, observed)
  for (std::size_t k = 0; k < p.size(); ++k) {
    integral += p[k];
    cells.emplace_back(options.samples * p[k], observed[k]);
  }
  // A sampler that declines nothing must meet a normalised density; one that
  // declines some meets the declined share in one more cell.
  bool const normalised = std::fabs(integral - 1.0) <= 1e-3;
  if (!(integral <= 1.0 + 1e-3) || (declined == 0.0 && !normalised))
    return chi_square_failure("density integrates to ", integral, ", not 1");
  if (declined > 0.0 || !normalised)
    cells.emplace_back(options.samples * std::max(1.0 - integral, 0.0), declined);
  ChiSquareResult result = chi_square_of_cells(std::move(cells), options.alpha);
  std::ostringstream integral_text;
  integral_text.precision(9);
  integral_text << ", integral = " << integral;
  result.message += integral_text.str();
  return result;
}

double integrate_density(DensityDomain domain, Density const& density, DensityFrame const& frame) {
  DensityTestOptions const defaults;
  std::vector<double> const p = cell_probabilities(
      domain, density, frame, Bins(domain, defaults.angle_bins, defaults.height_bins));
  double integral = 0.0;
  for (double const c : p)
    integral += c;
  return integral;
}
