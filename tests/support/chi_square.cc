#include "tests/support/chi_square.h"

#include <algorithm>
#include <cmath>
#include <sstream>

namespace {

// Regularised lower incomplete gamma P(s, x), by series for x < s + 1 and by
// continued fraction (Lentz) otherwise.
double lower_gamma_regularised(double s, double x) {
  if (x <= 0.0)
    return 0.0;
  double const log_prefix = s * std::log(x) - x - std::lgamma(s);
  if (x < s + 1.0) {
    double term = 1.0 / s;
    double sum = term;
    for (int k = 1; k < 10000; ++k) {
      term *= x / (s + k);
      sum += term;
      if (std::fabs(term) < std::fabs(sum) * 1e-15)
        break;
    }
    return std::exp(log_prefix) * sum;
  }
  double const tiny = 1e-300;
  double b = x + 1.0 - s;
  double c = 1.0 / tiny;
  double d = 1.0 / b;
  double h = d;
  for (int i = 1; i < 10000; ++i) {
    double const an = -i * (i - s);
    b += 2.0;
    d = an * d + b;
    if (std::fabs(d) < tiny)
      d = tiny;
    c = b + an / c;
    if (std::fabs(c) < tiny)
      c = tiny;
    d = 1.0 / d;
    double const delta = d * c;
    h *= delta;
    if (std::fabs(delta - 1.0) < 1e-15)
      break;
  }
  return 1.0 - std::exp(log_prefix) * h;
}

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

// The parts written one after another.
template <typename... Parts>
std::string text(Parts const&... parts) {
  std::ostringstream out;
  (out << ... << parts);
  return out.str();
}

template <typename... Parts>
ChiSquareResult failed(Parts const&... parts) {
  return ChiSquareResult{0.0, 0, 0.0, false, text(parts...)};
}

}  // namespace

double chi_square_alpha(int test_count) {
  return 1.0 - std::pow(1.0 - 0.01, 1.0 / static_cast<double>(test_count));
}

// The exact upper tail of the chi-square law: 1 - P(dof / 2, chi2 / 2).
double chi_square_p_value(double chi2, int dof) {
  return 1.0 - lower_gamma_regularised(0.5 * dof, 0.5 * chi2);
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
      return failed("sample ", i, " outside the domain: (", a, ", ", b, ")");
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
    return failed("density integrates to ", expected_total / n, ", not 1");
  return chi_square_of_cells(std::move(cells), alpha);
}

ChiSquareResult chi_square_of_cells(std::vector<std::pair<double, double>> cells, double alpha) {
  for (std::size_t k = 0; k < cells.size(); ++k)
    if (cells[k].first == 0.0 && cells[k].second > 0.0)
      return failed("cell ", k, " expects nothing but holds ", cells[k].second);
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
    return failed("fewer than two terms");
  double const p = chi_square_p_value(chi2, dof);
  return ChiSquareResult{chi2, dof, p, std::isfinite(p) && p >= alpha,
                         text("chi2 = ", chi2, ", dof = ", dof, ", p = ", p, ", alpha = ", alpha)};
}
