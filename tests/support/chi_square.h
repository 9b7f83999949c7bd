#pragma once

#include <functional>
#include <sstream>
#include <string>
#include <utility>
#include <vector>

// Chi-square goodness-of-fit test of a 2D sample distribution against a
// density, for the distribution tests of every suite.
//
// The caller maps each sample to a point (a, b) of a rectangle of bins where
// the Jacobian is constant or folded into the density, and supplies the
// density over that rectangle. Expected counts come from Simpson integration
// per cell; cells with expected count below 5 are pooled.

struct ChiSquareDomain {
  double a_min, a_max;
  double b_min, b_max;
  int a_bins;  // odd, so that no edge sits on a symmetry line
  int b_bins;
};

struct ChiSquareResult {
  double chi2;
  int dof;
  double p_value;
  bool passed;
  std::string message;  // what failed, with chi2, dof and p
};

// Significance level per test: 0.01 split by the Sidak correction over
// `test_count` distribution tests.
double chi_square_alpha(int test_count);

// Upper tail probability of the chi-square law, by the Wilson-Hilferty
// cube-root normal approximation (close for the hundreds of degrees of
// freedom of the suite's tests).
double chi_square_p_value(double chi2, int dof);

// Runs the test on `n` samples. `sample(i, a, b)` writes the bin
// coordinates of sample i and returns false when the sample lies outside the
// domain (which fails the test). `density(a, b)` integrates to 1 over the
// domain.
ChiSquareResult chi_square_test(ChiSquareDomain const& domain, int n,
                                std::function<bool(int, double&, double&)> const& sample,
                                std::function<double(double, double)> const& density, double alpha);

// The test over cells already counted, each (expected, observed): a cell
// that expects nothing but holds samples fails; cells expecting fewer than 5
// are pooled, smallest first. Does not check the expected total.
ChiSquareResult chi_square_of_cells(std::vector<std::pair<double, double>> cells, double alpha);

// A failed result whose message is the parts written one after another.
template <typename... Parts>
ChiSquareResult chi_square_failure(Parts const&... parts) {
  std::ostringstream out;
  (out << ... << parts);
  return ChiSquareResult{0.0, 0, 0.0, false, out.str()};
}
