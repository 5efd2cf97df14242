#include "host/ge/nurb_curve3d.h"

#include <algorithm>
#include <vector>

AcGeNurbCurve3d::AcGeNurbCurve3d(int degree, const AcGeDoubleArray& knots,
                                 const AcGePoint3dArray& controlPoints, const AcGeDoubleArray& weights,
                                 bool isPeriodic)
    : m_degree(degree), m_knots(knots), m_ctrl(controlPoints), m_weights(weights), m_periodic(isPeriodic) {
  // All weights equal to one is the same curve without the rational cost.
  bool allOne = true;
  for (double w : m_weights) allOne = allOne && w == 1.0;
  if (allOne) m_weights.removeAll();
  m_valid = checkValid();
}

bool AcGeNurbCurve3d::checkValid() const {
  const int n = m_ctrl.length();
  if (m_degree < 1 || n < m_degree + 1) return false;
  if (m_knots.length() != n + m_degree + 1) return false;
  if (!m_weights.isEmpty() && m_weights.length() != n) return false;
  for (int i = 1; i < m_knots.length(); ++i)
    if (!(m_knots[i] >= m_knots[i - 1])) return false;
  for (double w : m_weights)
    if (!(w > 0)) return false;
  return m_knots[m_degree] < m_knots[n];
}

void AcGeNurbCurve3d::getInterval(AcGeInterval& interval) const {
  if (!isValid()) {
    interval.set(0, 0);
    return;
  }
  interval.set(m_knots[m_degree], m_knots[m_ctrl.length()]);
}

int AcGeNurbCurve3d::findSpan(double t) const {
  const int n = m_ctrl.length() - 1;
  if (t >= m_knots[n + 1]) {
    // The end of the range belongs to the last non-empty span.
    int s = n;
    while (s > m_degree && m_knots[s] >= m_knots[n + 1]) --s;
    return s;
  }
  if (t <= m_knots[m_degree]) {
    int s = m_degree;
    while (s < n && m_knots[s + 1] <= m_knots[m_degree]) ++s;
    return s;
  }
  // Binary search for knots[s] <= t < knots[s + 1].
  int lo = m_degree, hi = n + 1;
  while (hi - lo > 1) {
    const int mid = (lo + hi) / 2;
    if (t < m_knots[mid]) hi = mid;
    else lo = mid;
  }
  return lo;
}

void AcGeNurbCurve3d::eval(double t, AcGePoint3d& point, AcGeVector3d& deriv) const {
  if (!isValid()) {
    point = m_ctrl.isEmpty() ? AcGePoint3d() : m_ctrl[0];
    deriv = AcGeVector3d();
    return;
  }
  const int p = m_degree;
  const int span = findSpan(t);
  // Basis functions and their first derivatives (the triangular scheme).
  // The rows live on the stack for the usual degrees: curves are evaluated
  // thousands of times in a row (sampling, extents, lengths).
  const std::size_t w1 = static_cast<std::size_t>(p) + 1;
  constexpr std::size_t kStack = 8;
  // Not cleared: every entry is written before it is read.
  double stack[4 * kStack + kStack * kStack];
  std::vector<double> heap;
  double* rows = stack;
  if (w1 > kStack) {
    heap.assign(4 * w1 + w1 * w1, 0.0);
    rows = heap.data();
  }
  double* const left = rows;
  double* const right = left + w1;
  double* const n0 = right + w1;
  double* const n1 = n0 + w1;
  double* const table = n1 + w1;  // (p+1) x (p+1), by rows
  auto ndu = [&](int row, int col) -> double& { return table[static_cast<std::size_t>(row) * w1 + col]; };
  ndu(0, 0) = 1.0;
  for (int j = 1; j <= p; ++j) {
    left[j] = t - m_knots[span + 1 - j];
    right[j] = m_knots[span + j] - t;
    double saved = 0.0;
    for (int r = 0; r < j; ++r) {
      ndu(j, r) = right[r + 1] + left[j - r];
      const double tmp = ndu(j, r) != 0 ? ndu(r, j - 1) / ndu(j, r) : 0.0;
      ndu(r, j) = saved + right[r + 1] * tmp;
      saved = left[j - r] * tmp;
    }
    ndu(j, j) = saved;
  }
  for (int j = 0; j <= p; ++j) n0[j] = ndu(j, p);
  for (int r = 0; r <= p; ++r) {
    double d = 0;
    if (r >= 1) {
      const double den = ndu(p, r - 1);
      if (den != 0) d += ndu(r - 1, p - 1) / den;
    }
    if (r <= p - 1) {
      const double den = ndu(p, r);
      if (den != 0) d -= ndu(r, p - 1) / den;
    }
    n1[r] = d * p;
  }
  // Homogeneous point A(t), weight w(t) and their derivatives.
  AcGeVector3d a, da;
  double w = 0, dw = 0;
  for (int j = 0; j <= p; ++j) {
    const int i = span - p + j;
    const double wi = m_weights.isEmpty() ? 1.0 : m_weights[i];
    const AcGeVector3d c = m_ctrl[i].asVector() * wi;
    a += c * n0[j];
    da += c * n1[j];
    w += wi * n0[j];
    dw += wi * n1[j];
  }
  const AcGeVector3d c = a / w;
  point = AcGePoint3d(c.x, c.y, c.z);
  deriv = (da - c * dw) / w;
}

AcGePoint3d AcGeNurbCurve3d::evalPoint(double t) const {
  AcGePoint3d p;
  AcGeVector3d d;
  eval(t, p, d);
  return p;
}

AcGeVector3d AcGeNurbCurve3d::evalDeriv(double t) const {
  AcGePoint3d p;
  AcGeVector3d d;
  eval(t, p, d);
  return d;
}

void AcGeNurbCurve3d::breakParams(AcGeDoubleArray& params) const {
  for (int i = m_degree + 1; i < m_ctrl.length(); ++i)
    if (params.isEmpty() || m_knots[i] != params.last()) params.append(m_knots[i]);
}

namespace {

// Solves A x = b for a matrix of bandwidth bw given row by row; B-spline
// collocation matrices are totally positive, so no pivoting is needed.
bool solveBanded(std::vector<std::vector<double>>& a, std::vector<AcGeVector3d>& b, int bw) {
  const int n = static_cast<int>(b.size());
  for (int k = 0; k < n; ++k) {
    if (a[k][k] == 0) return false;
    for (int r = k + 1; r < std::min(n, k + bw + 1); ++r) {
      const double f = a[r][k] / a[k][k];
      if (f == 0) continue;
      for (int c = k; c < std::min(n, k + 2 * bw + 1); ++c) a[r][c] -= f * a[k][c];
      b[r] -= b[k] * f;
    }
  }
  for (int k = n - 1; k >= 0; --k) {
    AcGeVector3d s = b[k];
    for (int c = k + 1; c < std::min(n, k + 2 * bw + 1); ++c) s -= b[c] * a[k][c];
    b[k] = s / a[k][k];
  }
  return true;
}

// Cubic basis values at t for the given span of knots.
void cubicBasis(const std::vector<double>& U, int span, double t, double out[4]) {
  double left[4], right[4];
  out[0] = 1.0;
  for (int j = 1; j <= 3; ++j) {
    left[j] = t - U[span + 1 - j];
    right[j] = U[span + j] - t;
    double saved = 0.0;
    for (int r = 0; r < j; ++r) {
      const double den = right[r + 1] + left[j - r];
      const double tmp = den != 0 ? out[r] / den : 0.0;
      out[r] = saved + right[r + 1] * tmp;
      saved = left[j - r] * tmp;
    }
    out[j] = saved;
  }
}

}  // namespace

AcGeNurbCurve3d AcGeNurbCurve3d::interpolate(const AcGePoint3dArray& fit, const AcGeVector3d& startTangent,
                                             const AcGeVector3d& endTangent) {
  const int n = fit.length() - 1;  // fit points Q0..Qn
  if (n < 1) return {};
  // Chord-length parameters on [0, 1].
  std::vector<double> u(n + 1, 0.0);
  double total = 0;
  for (int k = 1; k <= n; ++k) total += fit[k].distanceTo(fit[k - 1]);
  if (total == 0) return {};
  for (int k = 1; k <= n; ++k) u[k] = u[k - 1] + fit[k].distanceTo(fit[k - 1]) / total;
  u[n] = 1.0;

  // End derivatives with respect to the normalised parameter. A missing
  // tangent is the derivative of the parabola through the three points at
  // that end (Bessel's end condition); two points give a straight line.
  auto bessel = [&](int i0, int i1, int i2) {
    const double h1 = u[i1] - u[i0], h2 = u[i2] - u[i1];
    const AcGeVector3d d1 = (fit[i1] - fit[i0]) / h1, d2 = (fit[i2] - fit[i1]) / h2;
    return d1 * ((2 * h1 + h2) / (h1 + h2)) - d2 * (h1 / (h1 + h2));
  };
  AcGeVector3d d0, dn;
  if (!startTangent.isZeroLength()) d0 = startTangent.normal() * total;
  else d0 = n < 2 ? fit[n] - fit[0] : bessel(0, 1, 2);
  if (!endTangent.isZeroLength()) dn = endTangent.normal() * total;
  else dn = n < 2 ? fit[n] - fit[0] : bessel(n, n - 1, n - 2);

  // Knots {0,0,0,0,u1..u(n-1),1,1,1,1}; control points P0..P(n+2).
  std::vector<double> U;
  U.insert(U.end(), 4, 0.0);
  for (int k = 1; k < n; ++k) U.push_back(u[k]);
  U.insert(U.end(), 4, 1.0);
  const int m = n + 3;  // control points
  AcGePoint3dArray P;
  P.setLogicalLength(m);
  P[0] = fit[0];
  P[1] = fit[0] + d0 * (U[4] / 3.0);
  P[m - 1] = fit[n];
  P[m - 2] = fit[n] - dn * ((1.0 - U[m - 1]) / 3.0);
  if (n >= 2) {
    // Interior conditions C(u_k) = Q_k for k = 1..n-1 in unknowns P2..Pn.
    const int unknowns = n - 1;
    std::vector<std::vector<double>> A(unknowns, std::vector<double>(unknowns, 0.0));
    std::vector<AcGeVector3d> rhs(unknowns);
    for (int k = 1; k < n; ++k) {
      const int span = k + 3;  // U[span] = u_k
      double N[4];
      cubicBasis(U, span, u[k], N);
      AcGeVector3d r = fit[k].asVector();
      for (int j = 0; j < 4; ++j) {
        const int idx = span - 3 + j;  // control point index
        if (idx < 2 || idx > n) {
          r -= P[idx].asVector() * N[j];
        } else {
          A[k - 1][idx - 2] += N[j];
        }
      }
      rhs[k - 1] = r;
    }
    if (!solveBanded(A, rhs, 3)) return {};
    for (int i = 0; i < unknowns; ++i) P[i + 2] = AcGePoint3d(rhs[i].x, rhs[i].y, rhs[i].z);
  }
  AcGeDoubleArray knots;
  for (double k : U) knots.append(k);
  return AcGeNurbCurve3d(3, knots, P);
}
