#pragma once

#include <cstdio>
#include <string>
#include <vector>

#include "platform/math/gmath_vec2.h"

class Gallery;

// Convergence study: the error of the plain Monte Carlo estimate
// (1/N) sum f(x_i) of the integral of f over [0,1]^2, for every sampler of
// the table and every integrand with a closed-form integral, as a function of
// N = 16, 32, ..., 4096. Each point is the root mean square error over
// k_trials independently seeded runs; the slope of log RMSE against log N,
// fitted by least squares, is the convergence order (-1/2 for random points,
// near -1 or better for stratified and low-discrepancy ones on smooth or
// piecewise-smooth integrands).
class ConvergenceStudy {
 public:
  static constexpr unsigned int k_trials = 48;
  static constexpr unsigned int k_min_count = 16;
  static constexpr unsigned int k_max_count = 4096;

  // Writes the count samples of run `trial` into samples[]; returns false
  // when the sampler does not produce that count (the point is left out).
  typedef bool (*FillSamples)(unsigned int count, unsigned int trial, GMathVec2<double>* samples);
  struct Sampler {
    char const* name;
    FillSamples fill;
  };
  struct Integrand {
    char const* name;
    char const* description;
    double (*f)(double x, double y);
    double exact;
  };

  ConvergenceStudy();

  // Runs every sampler on every integrand.
  void run();
  // convergence.csv: integrand, sampler, count, rmse (rows only where the
  // sampler serves the count).
  bool write_csv(std::string const& path) const;
  // One log-log SVG per integrand, listed in the gallery.
  bool write_plots(Gallery& gallery) const;
  // The slope table, one row per sampler, one column per integrand.
  void print_slopes(std::FILE* out) const;

  // The samplers of the study.
  static std::vector<Sampler> samplers();
  static std::vector<Integrand> integrands();

 private:
  std::vector<unsigned int> m_counts;
  std::vector<Sampler> m_samplers;
  std::vector<Integrand> m_integrands;
  // m_rmse[(integrand * samplers + sampler) * counts + count]; negative where
  // the sampler does not serve the count.
  std::vector<double> m_rmse;

  double rmse(std::size_t integrand, std::size_t sampler, std::size_t count) const;
  double slope(std::size_t integrand, std::size_t sampler) const;
};
