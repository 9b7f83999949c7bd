#include "tests/support/chi_square.h"

#include <algorithm>
#include <cmath>

namespace {

// Simpson's rule over one cell, 4 x 4 sub-intervals.
double integrate_cell(std::function<double(double, double)> const& f, double a0, double a1,
                      double b0, double b1) {
  int const m = 4;
  double const ha = (a1 - a0) / m;
  double const hb = (b1 - b0) / m;
  double sum = 0.0;
  for (int i = 0; i <= m; ++i) {
    double const wa = (i == 0 || i == m) ? 1.0 : (i % 2 ? 4.0 : 2.0);
    for (int j = 0; j <= m; ++j) {
      double const wb = (j == 0 || j == m) ? 1.0 : (j % 2 ? 4.0 : 2.0);
      sum += wa * wb * f(a0 + i * ha, b0 + j * hb);
    }
  }
  return sum * ha * hb / 9.0;
}

}  // namespace

double chi_square_alpha(int test_count) {
  return 1.0 - std::pow(1.0 - 0.01, 1.0 / static_cast<double>(test_count));
}

double chi_square_p_value(double chi2, int dof) {
  double const v = 2.0 / (9.0 * dof);
  double const z = (std::cbrt(chi2 / dof) - (1.0 - v)) / std::sqrt(v);
  return 0.5 * std::erfc(z / std::sqrt(2.0));
}

ChiSquareResult chi_square_test(ChiSquareDomain const& domain, int n,
                                std::function<bool(int, double&, double&)> const& sample,
                                std::function<double(double, double)> const& density,
                                double alpha) {
  int const na = domain.a_bins;
  int const nb = domain.b_bins;
  double const wa = (domain.a_max - domain.a_min) / na;
  double const wb = (domain.b_max - domain.b_min) / nb;
  std::vector<double> observed(static_cast<size_t>(na) * nb, 0.0);
  double const slack_a = 1e-4 * (domain.a_max - domain.a_min);
  double const slack_b = 1e-4 * (domain.b_max - domain.b_min);
  for (int i = 0; i < n; ++i) {
    double a = 0.0, b = 0.0;
    bool const inside = sample(i, a, b);
    bool const in_range = a >= domain.a_min - slack_a && a <= domain.a_max + slack_a &&
                          b >= domain.b_min - slack_b && b <= domain.b_max + slack_b;
    if (!inside || !in_range)
      return chi_square_failure("sample ", i, " outside the domain: (", a, ", ", b, ")");
    int ia = static_cast<int>((a - domain.a_min) / wa);
    int ib = static_cast<int>((b - domain.b_min) / wb);
    ia = std::min(std::max(ia, 0), na - 1);
    ib = std::min(std::max(ib, 0), nb - 1);
    observed[static_cast<size_t>(ib) * na + ia] += 1.0;
  }
  std::vector<std::pair<double, double>> cells;  // (expected, observed)
  double expected_total = 0.0;
  for (int ib = 0; ib < nb; ++ib) {
    for (int ia = 0; ia < na; ++ia) {
      double const a0 = domain.a_min + ia * wa;
      double const b0 = domain.b_min + ib * wb;
      double const e = n * integrate_cell(density, a0, a0 + wa, b0, b0 + wb);
      expected_total += e;
      cells.emplace_back(e, observed[static_cast<size_t>(ib) * na + ia]);
    }
  }
  if (!(std::fabs(expected_total - n) <= 1e-3 * n))
    return chi_square_failure("density integrates to ", expected_total / n, ", not 1");
  return chi_square_of_cells(std::move(cells), alpha);
}

ChiSquareResult chi_square_of_cells(std::vector<std::pair<double, double>> cells, double alpha) {
  for (std::size_t k = 0; k < cells.size(); ++k)
    if (cells[k].first == 0.0 && cells[k].second > 0.0)
      return chi_square_failure("cell ", k, " expects nothing but holds ", cells[k].second);
  // Cells expecting fewer than 5 samples are pooled, smallest first, until
  // the pool expects 5; a remainder is a term of its own.
  std::sort(cells.begin(), cells.end());
  double chi2 = 0.0, pool_e = 0.0, pool_o = 0.0;
  int terms = 0;
  for (std::size_t k = 0; k <= cells.size(); ++k) {
    if (k < cells.size()) {
      pool_e += cells[k].first;
      pool_o += cells[k].second;
    }
    if (pool_e >= 5.0 || (k == cells.size() && pool_e > 0.0)) {
      chi2 += (pool_o - pool_e) * (pool_o - pool_e) / pool_e;
      ++terms;
      pool_e = pool_o = 0.0;
    }
  }
  int const dof = terms - 1;
  if (dof < 1)
    return chi_square_failure("fewer than two terms");
  double const p = chi_square_p_value(chi2, dof);
  ChiSquareResult result =
      chi_square_failure("chi2 = ", chi2, ", dof = ", dof, ", p = ", p, ", alpha = ", alpha);
  result.chi2 = chi2, result.dof = dof, result.p_value = p;
  result.passed = std::isfinite(p) && p >= alpha;
  return result;
}
