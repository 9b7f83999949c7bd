#include "examples/demo/convergence.h"

#include <cmath>
#include <fstream>

#include "examples/demo/loglog_plot.h"
#include "examples/demo/pixel_sample_sets.h"
#include "examples/demo/svg_canvas.h"
#include "platform/random/grandom_mt.h"
#include "sampling/patterns/radical_inverse.h"
#include "sampling/samplers.h"

namespace {

constexpr double k_pi = 3.14159265358979323846;

// ---- Samplers -------------------------------------------------------------

unsigned int trial_seed(unsigned int trial) {
  return hash_u32(trial + 1u);
}

// Baseline: independent uniform points, 32-bit outputs of the Mersenne
// Twister mapped to [0,1] as the library's random modes do.
bool fill_random(unsigned int count, unsigned int trial, GMathVec2<double>* samples) {
  GRandomMt random(trial_seed(trial));
  for (unsigned int i = 0; i < count; ++i) {
    samples[i].x = unit_from_u32(random.genrand_int32());
    samples[i].y = unit_from_u32(random.genrand_int32());
  }
  return true;
}

// Jitter 1 over an n x n grid: only square counts.
bool fill_stratified(unsigned int count, unsigned int trial, GMathVec2<double>* samples) {
  unsigned int const n = static_cast<unsigned int>(std::lround(std::sqrt(count)));
  if (n * n != count)
    return false;
  GRandomMt random(trial_seed(trial));
  StratifiedSampler2d sampler;
  sampler.init(random, n, n, n, n, 1.0, 1.0);
  sampler.get_all_samples(samples);
  return true;
}

bool fill_hammersley(unsigned int count, unsigned int trial, GMathVec2<double>* samples) {
  HammersleySampler2d sampler;
  sampler.init(trial_seed(trial), count, 1);
  sampler.get_all_samples(samples);
  return true;
}

// Set `trial mod 3` of a Hammersley set of 3N points split into three: an odd
// split takes every third point, which keeps each set spread over the
// square. (An even split would hand out neighbouring pairs of the shuffled
// order, so one of its sets alone covers only part of the u range and is a
// biased estimate that never converges: its sets are meant to be used
// together, as the hits of a pixel use them.)
bool fill_hammersley_subset(unsigned int count, unsigned int trial, GMathVec2<double>* samples) {
  constexpr unsigned int sets = 3;
  HammersleySampler2d sampler;
  sampler.init_sub(trial_seed(trial), sets, trial % sets, count);
  sampler.get_all_samples(samples);
  return true;
}

// N consecutive points of the Halton sequence in bases 2 and 3, starting at
// the trial's element: any run of consecutive elements is as well spread.
bool fill_halton(unsigned int count, unsigned int trial, GMathVec2<double>* samples) {
  HaltonSampler2d sampler;
  sampler.init(trial_seed(trial), count, 1, 3);
  sampler.get_all_samples(samples);
  return true;
}

// A hierarchical pattern of N points made of its four sets of N/4, each
// written after the previous one: the way the hits of one pixel share a
// pattern in the render. The sets never repeat a point, so together they are
// the whole pattern. (One set alone is a short run of consecutive points in
// the random, Halton and Sobol modes, but in the Hammersley mode it is a
// walk of far jumps that favours the corners and edges of the square: a
// biased estimate on its own, like an even Hammersley sub-set.) The
// Hammersley mode serves patterns of up to 2048 points and would fall back to
// its Halton pattern above, so its row stops at N = 2048.
constexpr unsigned int k_hierarchical_sets = 4;
constexpr unsigned int k_hammersley_pattern_limit = 2048;
template <HierarchicalSampler2d::Mode mode>
bool fill_hierarchical(unsigned int count, unsigned int trial, GMathVec2<double>* samples) {
  if (mode == HierarchicalSampler2d::HAMMERSLEY && count > k_hammersley_pattern_limit)
    return false;
  unsigned int const set_size = count / k_hierarchical_sets;
  HierarchicalSampler2d sampler(mode);
  for (unsigned int set = 0; set < k_hierarchical_sets; ++set) {
    sampler.init(trial_seed(trial), set_size, k_hierarchical_sets, set);
    sampler.get_all_samples(samples + set * set_size);
  }
  return true;
}

// ---- Integrands -----------------------------------------------------------

// Disk of radius 0.4 about (0.5, 0.5): integral = pi 0.4^2 = 0.16 pi.
double disk(double x, double y) {
  double const dx = x - 0.5, dy = y - 0.5;
  return dx * dx + dy * dy < 0.16 ? 1.0 : 0.0;
}

// Triangle (0.1, 0.1), (0.9, 0.3), (0.4, 0.9): integral = its area
// = |(0.8)(0.8) - (0.3)(0.2)| / 2 = 0.29. Inside when on the left of all
// three counter-clockwise edges.
double triangle(double x, double y) {
  auto left = [x, y](double ax, double ay, double bx, double by) {
    return (bx - ax) * (y - ay) - (by - ay) * (x - ax) >= 0.0;
  };
  return left(0.1, 0.1, 0.9, 0.3) && left(0.9, 0.3, 0.4, 0.9) && left(0.4, 0.9, 0.1, 0.1) ? 1.0
                                                                                          : 0.0;
}

// exp(-|p - c|^2 / (2 s^2)) with c = (0.5, 0.5), s = 0.2: separable, so
// integral = (s sqrt(2 pi) erf(0.5 / (s sqrt 2)))^2.
constexpr double k_sigma = 0.2;
double gaussian(double x, double y) {
  double const dx = x - 0.5, dy = y - 0.5;
  return std::exp(-(dx * dx + dy * dy) / (2.0 * k_sigma * k_sigma));
}
double gaussian_integral() {
  double const one_axis =
      k_sigma * std::sqrt(2.0 * k_pi) * std::erf(0.5 / (k_sigma * std::sqrt(2.0)));
  return one_axis * one_axis;
}

// (1 + 2x)(1 + y) = 1 + 2x + y + 2xy: integral = (1 + 1)(1 + 1/2) = 3.
double bilinear(double x, double y) {
  return (1.0 + 2.0 * x) * (1.0 + y);
}

}  // namespace

std::vector<ConvergenceStudy::Sampler> ConvergenceStudy::samplers() {
  // The table every result of the study comes from. The hierarchical
  // Hammersley mode reads the shared table that Sampling::init creates.
  return {{"random", fill_random},
          {"stratified", fill_stratified},
          {"hammersley", fill_hammersley},
          {"hammersley_sub3", fill_hammersley_subset},
          {"halton", fill_halton},
          {"hier_random", fill_hierarchical<HierarchicalSampler2d::RANDOM>},
          {"hier_hammersley", fill_hierarchical<HierarchicalSampler2d::HAMMERSLEY>},
          {"hier_halton", fill_hierarchical<HierarchicalSampler2d::HALTON>},
          {"hier_sobol", fill_hierarchical<HierarchicalSampler2d::SOBOL>}};
}

std::vector<ConvergenceStudy::Integrand> ConvergenceStudy::integrands() {
  return {{"disk", "indicator of the disk of radius 0.4 about the centre", disk, 0.16 * k_pi},
          {"triangle", "indicator of the triangle (0.1,0.1) (0.9,0.3) (0.4,0.9)", triangle, 0.29},
          {"gaussian", "Gaussian of sigma 0.2 about the centre", gaussian, gaussian_integral()},
          {"bilinear", "bilinear function (1 + 2x)(1 + y)", bilinear, 3.0}};
}

ConvergenceStudy::ConvergenceStudy() : m_samplers(samplers()), m_integrands(integrands()) {
  for (unsigned int n = k_min_count; n <= k_max_count; n *= 2)
    m_counts.push_back(n);
}

double ConvergenceStudy::rmse(std::size_t integrand, std::size_t sampler, std::size_t count) const {
  return m_rmse[(integrand * m_samplers.size() + sampler) * m_counts.size() + count];
}

void ConvergenceStudy::run() {
  std::size_t const ni = m_integrands.size(), ns = m_samplers.size(), nc = m_counts.size();
  m_rmse.assign(ni * ns * nc, 0.0);
  std::vector<GMathVec2<double>> samples(k_max_count);
  for (std::size_t s = 0; s < ns; ++s) {
    for (std::size_t c = 0; c < nc; ++c) {
      unsigned int const n = m_counts[c];
      std::vector<double> squared(ni, 0.0);
      bool served = true;
      for (unsigned int trial = 0; trial < k_trials && served; ++trial) {
        served = m_samplers[s].fill(n, trial, samples.data());
        for (std::size_t i = 0; i < ni && served; ++i) {
          double sum = 0.0;
          for (unsigned int k = 0; k < n; ++k)
            sum += m_integrands[i].f(samples[k].x, samples[k].y);
          double const error = sum / n - m_integrands[i].exact;
          squared[i] += error * error;
        }
      }
      for (std::size_t i = 0; i < ni; ++i) {
        m_rmse[(i * ns + s) * nc + c] = served ? std::sqrt(squared[i] / k_trials) : -1.0;
      }
    }
  }
}

double ConvergenceStudy::slope(std::size_t integrand, std::size_t sampler) const {
  double sx = 0.0, sy = 0.0, sxx = 0.0, sxy = 0.0;
  unsigned int points = 0;
  for (std::size_t c = 0; c < m_counts.size(); ++c) {
    double const e = rmse(integrand, sampler, c);
    if (!(e > 0.0))
      continue;
    double const x = std::log(static_cast<double>(m_counts[c])), y = std::log(e);
    sx += x;
    sy += y;
    sxx += x * x;
    sxy += x * y;
    ++points;
  }
  if (points < 2)
    return std::nan("");
  return (points * sxy - sx * sy) / (points * sxx - sx * sx);
}

bool ConvergenceStudy::write_csv(std::string const& path) const {
  std::ofstream out(path);
  if (!out)
    return false;
  out << "integrand,sampler,count,rmse\n";
  out.precision(9);
  for (std::size_t i = 0; i < m_integrands.size(); ++i) {
    for (std::size_t s = 0; s < m_samplers.size(); ++s) {
      for (std::size_t c = 0; c < m_counts.size(); ++c) {
        if (rmse(i, s, c) < 0.0)
          continue;
        out << m_integrands[i].name << ',' << m_samplers[s].name << ',' << m_counts[c] << ','
            << rmse(i, s, c) << '\n';
      }
    }
  }
  out.close();
  return static_cast<bool>(out);
}

bool ConvergenceStudy::write_plots(Gallery& gallery) const {
  std::vector<double> const counts(m_counts.begin(), m_counts.end());
  for (std::size_t i = 0; i < m_integrands.size(); ++i) {
    LogLogPlot plot(std::string("RMSE against N, log-log: ") + m_integrands[i].name, "samples N",
                    "RMSE");
    for (std::size_t s = 0; s < m_samplers.size(); ++s) {
      // Say on the plot where a row ends early (hier_hammersley at 2048).
      std::vector<double> errors(m_counts.size());
      unsigned int last = 0;
      for (std::size_t c = 0; c < m_counts.size(); ++c) {
        errors[c] = rmse(i, s, c);
        last = errors[c] > 0.0 ? m_counts[c] : last;
      }
      std::string const note =
          SvgCanvas::format("slope %.2f", slope(i, s)) +
          (last < k_max_count ? ", N \u2264 " + std::to_string(last) : std::string());
      plot.add_series(m_samplers[s].name, counts, errors, note);
    }
    plot.add_guide(-0.5, "N^-1/2");
    plot.add_guide(-1.0, "N^-1");
    std::string const file = std::string("convergence_") + m_integrands[i].name + ".svg";
    if (!plot.save(
            gallery, file,
            std::string("Convergence on the ") + m_integrands[i].description + ": RMSE over " +
                std::to_string(k_trials) +
                " seeds against N, one line per sampler, dashed grey guides of slope -1/2 and "
                "-1; hier_hammersley stops at N = 2048, the mode's largest pattern."))
      return false;
  }
  return true;
}

void ConvergenceStudy::print_slopes(std::FILE* out) const {
  std::fprintf(out,
               "convergence: fitted slope of log RMSE against log N (N = %u .. %u, %u seeds)\n",
               k_min_count, k_max_count, k_trials);
  std::fprintf(out, "  %-20s", "sampler");
  for (Integrand const& integrand : m_integrands)
    std::fprintf(out, " %9s", integrand.name);
  std::fprintf(out, "\n");
  for (std::size_t s = 0; s < m_samplers.size(); ++s) {
    std::fprintf(out, "  %-20s", m_samplers[s].name);
    for (std::size_t i = 0; i < m_integrands.size(); ++i) {
      std::fprintf(out, " %9.2f", slope(i, s));
    }
    std::fprintf(out, "\n");
  }
  std::fprintf(out, "  (hier_hammersley: N up to %u, the mode's largest pattern)\n",
               k_hammersley_pattern_limit);
}
