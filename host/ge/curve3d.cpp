#include "host/ge/curve3d.h"

#include <algorithm>
#include <cmath>
#include <limits>
#include <numbers>

namespace host {
namespace {

// 10-point Gauss-Legendre nodes and weights on [-1, 1].
constexpr double kNodes[5] = {0.1488743389816312, 0.4333953941292472, 0.6794095682990244,
                              0.8650633666889845, 0.9739065285171717};
constexpr double kWeights[5] = {0.2955242247147529, 0.2692667193099963, 0.2190863625159820,
                                0.1494513491505806, 0.0666713443086881};

double gauss10(const AcGeCurve3d& c, double a, double b) {
  const double h = (b - a) / 2, m = (a + b) / 2;
  double s = 0;
  for (int i = 0; i < 5; ++i) {
    s += kWeights[i] * (c.evalDeriv(m - h * kNodes[i]).length() + c.evalDeriv(m + h * kNodes[i]).length());
  }
  return s * h;
}

// Pieces an integration may split into before it takes what it has.
constexpr int kMaxPieces = 1 << 14;

double adaptive(const AcGeCurve3d& c, double a, double b, double whole, double absTol, int depth, int& budget) {
  const double m = (a + b) / 2;
  const double left = gauss10(c, a, m), right = gauss10(c, m, b);
  if (depth >= 40 || --budget <= 0 || !std::isfinite(left + right) || std::fabs(left + right - whole) <= absTol)
    return left + right;
  const double l = adaptive(c, a, m, left, absTol / 2, depth + 1, budget);
  return l + adaptive(c, m, b, right, absTol / 2, depth + 1, budget);
}

}  // namespace

double integrateSpeed(const AcGeCurve3d& curve, double a, double b, double relTol) {
  if (a == b) return 0;
  if (b < a) std::swap(a, b);
  const double whole = gauss10(curve, a, b);
  if (!std::isfinite(whole)) return whole;
  const double absTol = std::max(std::fabs(whole) * relTol, 1e-15);
  int budget = kMaxPieces;
  return adaptive(curve, a, b, whole, absTol, 0, budget);
}

double sweepEnd(double& start, double end, bool strict) {
  constexpr double kTurn = 2 * std::numbers::pi;
  if (!std::isfinite(start) || !std::isfinite(end)) return end;
  if (std::fabs(start) > 1e9 || std::fabs(end) > 1e9) {
    // A turn no longer changes such numbers reliably: work from [0, 2pi).
    const double d = end - start;
    start = std::fmod(start, kTurn);
    if (start < 0) start += kTurn;
    end = start + (std::isfinite(d) ? std::fmod(d, kTurn) : 0);
  }
  const auto before = [&](double e) { return strict ? e <= start : e < start; };
  // Turn by turn, as the usual one or two turns have always been added.
  for (int i = 0; i < 4 && before(end); ++i) end += kTurn;
  if (before(end)) end += std::ceil((start - end) / kTurn) * kTurn;
  while (before(end)) end += kTurn;
  return end;
}

}  // namespace host

AcGePoint3d AcGeCurve3d::startPoint() const {
  AcGeInterval i;
  getInterval(i);
  return evalPoint(i.lowerBound());
}

AcGePoint3d AcGeCurve3d::endPoint() const {
  AcGeInterval i;
  getInterval(i);
  return evalPoint(i.upperBound());
}

double AcGeCurve3d::length(double fromParam, double toParam, double relTol) const {
  const double lo = std::min(fromParam, toParam), hi = std::max(fromParam, toParam);
  AcGeDoubleArray breaks;
  breakParams(breaks);
  double total = 0, a = lo;
  for (double k : breaks) {
    if (k <= a || k >= hi) continue;
    total += host::integrateSpeed(*this, a, k, relTol);
    a = k;
  }
  return total + host::integrateSpeed(*this, a, hi, relTol);
}

double AcGeCurve3d::length() const {
  AcGeInterval i;
  getInterval(i);
  return length(i.lowerBound(), i.upperBound());
}

void AcGeCurve3d::getSamplePoints(int numSample, AcGePoint3dArray& points) const {
  points.removeAll();
  const int n = std::max(numSample, 2);
  AcGeInterval i;
  getInterval(i);
  const double a = i.lowerBound(), b = i.upperBound();
  for (int k = 0; k < n; ++k) {
    // The last sample is the end parameter itself, not a rounded sum.
    const double t = k == n - 1 ? b : a + (b - a) * k / (n - 1);
    points.append(evalPoint(t));
  }
}

AcGePoint3d AcGeCurve3d::closestPointTo(const AcGePoint3d& point, const AcGeTol&) const {
  // Coarse sampling followed by Newton refinement on the squared distance.
  AcGeInterval iv;
  getInterval(iv);
  const double a = iv.lowerBound(), b = iv.upperBound();
  constexpr int kSamples = 64;
  double best = a, bestD = std::numeric_limits<double>::max();
  for (int k = 0; k <= kSamples; ++k) {
    const double t = a + (b - a) * k / kSamples;
    const double d = evalPoint(t).distanceTo(point);
    if (d < bestD) {
      bestD = d;
      best = t;
    }
  }
  double t = best;
  const double h = (b - a) * 1e-7;
  for (int it = 0; it < 30; ++it) {
    const AcGeVector3d d1 = evalDeriv(t);
    const AcGeVector3d diff = evalPoint(t) - point;
    const double g = diff.dotProduct(d1);
    const AcGeVector3d d2 = (evalDeriv(std::min(t + h, b)) - evalDeriv(std::max(t - h, a))) /
                            (std::min(t + h, b) - std::max(t - h, a));
    const double gp = d1.dotProduct(d1) + diff.dotProduct(d2);
    if (gp <= 0) break;
    const double next = std::clamp(t - g / gp, a, b);
    if (std::fabs(next - t) < 1e-15 * std::max(1.0, std::fabs(t))) {
      t = next;
      break;
    }
    t = next;
  }
  const AcGePoint3d p = evalPoint(t);
  return p.distanceTo(point) <= bestD ? p : evalPoint(best);
}
