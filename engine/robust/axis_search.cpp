#include "engine/robust/axis_search.h"

#include <algorithm>
#include <cstdio>

namespace robust {
namespace {
struct Verdict {
  bool accepted = false;
  bool lowerSide = false;
  double area = 0;
  std::string why;
};

// How well the contour fits an axis: symmetric about it, or drawn as one half
// that meets it at both ends.
Verdict Judge(const Contour& contour, const ProfileAxis& axis, double gap) {
  Verdict v;
  for (bool lower : {false, true}) {
    ProfileAxis a = axis;
    a.lowerSide = lower;
    const Profile p = ComputeProfile(contour.curves, a, gap);
    if (!p.ok || p.area <= 0) {
      if (!p.problem.empty() && p.problem != "the contour bounds no region on this side of the axis") v.why = p.problem;
      continue;
    }
    const double tol = std::max(10 * gap, 0.01 * p.maxRadius);
    char text[200];
    if (p.otherSideArea > 0 && p.mirrorDeviation <= tol) {
      std::snprintf(text, sizeof text, "the contour is symmetric about it (sides differ by at most %.3g)%s",
                    p.mirrorDeviation, p.bodies > 1 ? ", the largest of several bodies along it" : "");
      v = {true, false, p.area, text};
      return v;
    }
    if (p.otherSideArea <= 0 && p.touchesAxisAtBothEnds) {
      v = {true, lower, p.area, std::string("the contour is drawn ") + (lower ? "below" : "above") +
                                    " it and meets it at both ends"};
      return v;
    }
    if (v.why.empty()) {
      if (p.otherSideArea > 0) std::snprintf(text, sizeof text, "the sides differ by %.3g, not a mirror image", p.mirrorDeviation);
      else std::snprintf(text, sizeof text, "the half drawn does not meet it at both ends");
      v.why = text;
    }
  }
  if (v.why.empty()) v.why = "no region of the contour lies along it";
  return v;
}

bool Horizontal(const CentreLine& c) { return std::fabs(c.b.y - c.a.y) <= 1e-6 * std::max(1.0, Dist(c.a, c.b)); }
bool Vertical(const CentreLine& c) { return std::fabs(c.b.x - c.a.x) <= 1e-6 * std::max(1.0, Dist(c.a, c.b)); }
}  // namespace

P2 AxisDirection(bool vertical) { return vertical ? P2{0, 1} : P2{1, 0}; }

AxisChoice ChooseAxis(const Contour& contour, double gap) {
  AxisChoice out;
  struct Candidate {
    ProfileAxis axis;
    std::string name;
  };
  std::vector<Candidate> candidates;
  for (const CentreLine& c : contour.centreLines) {
    const bool h = Horizontal(c), v = Vertical(c);
    if (!h && !v) continue;
    Candidate cand;
    cand.axis.origin = c.a;
    cand.axis.dir = AxisDirection(v);
    // The same line drawn in pieces is one candidate.
    bool seen = false;
    for (const Candidate& k : candidates) {
      const P2 d = c.a - k.axis.origin;
      if (Norm(k.axis.dir - cand.axis.dir) < 1e-9 && std::fabs(Cross(k.axis.dir, d)) <= gap) seen = true;
    }
    if (seen) continue;
    char text[300];
    std::snprintf(text, sizeof text, "centre line %s (%s at %s = %g, linetype %s, layer %s)", c.handle.c_str(),
                  h ? "horizontal" : "vertical", h ? "y" : "x", h ? c.a.y : c.a.x,
                  c.linetype.c_str(), c.layer.c_str());
    cand.name = text;
    candidates.push_back(cand);
  }
  const bool fromLines = !candidates.empty();
  if (!fromLines) {
    // No centre line: the mirror lines through the middle of the contour.
    double box[4] = {1e300, 1e300, -1e300, -1e300};
    for (const Seg& s : contour.curves) {
      double b[4];
      s.Box(b);
      box[0] = std::min(box[0], b[0]), box[1] = std::min(box[1], b[1]);
      box[2] = std::max(box[2], b[2]), box[3] = std::max(box[3], b[3]);
    }
    if (contour.curves.empty()) {
      out.problem = "the selection holds no contour";
      return out;
    }
    const P2 mid{0.5 * (box[0] + box[2]), 0.5 * (box[1] + box[3])};
    char text[200];
    std::snprintf(text, sizeof text, "the horizontal line y = %g through the middle of the contour", mid.y);
    candidates.push_back({{mid, AxisDirection(false), false}, text});
    std::snprintf(text, sizeof text, "the vertical line x = %g through the middle of the contour", mid.x);
    candidates.push_back({{mid, AxisDirection(true), false}, text});
  }
  int best = -1;
  Verdict bestVerdict;
  for (std::size_t i = 0; i < candidates.size(); ++i) {
    const Verdict v = Judge(contour, candidates[i].axis, gap);
    out.candidates.push_back(candidates[i].name + ": " + v.why);
    if (v.accepted && (best < 0 || v.area > bestVerdict.area)) {
      best = static_cast<int>(i);
      bestVerdict = v;
    }
  }
  if (best < 0) {
    out.problem = fromLines ? "no centre line of the selection is an axis the contour is symmetric about or meets "
                              "at both ends"
                            : "the selection has no centre line and the contour is not symmetric about a "
                              "horizontal or vertical line";
    return out;
  }
  out.found = true;
  out.axis = candidates[best].axis;
  // A centre line at right angles that crosses the part: a cross hole, or the
  // axis of a second body (a tee), in which case the part is not a body of
  // revolution about the chosen axis.
  if (fromLines) {
    const P2 u = out.axis.dir * (1 / Norm(out.axis.dir));
    ProfileAxis chosen = out.axis;
    const Profile p = ComputeProfile(contour.curves, chosen, gap);
    for (const CentreLine& c : contour.centreLines) {
      const P2 d = c.b - c.a;
      const double len = Norm(d);
      if (len <= 0 || std::fabs(Dot(d, u)) > 1e-6 * len) continue;
      const double s = Dot(c.a - out.axis.origin, u);
      const double r0 = Cross(u, c.a - out.axis.origin), r1 = Cross(u, c.b - out.axis.origin);
      if (!p.ok || s <= p.s0 + gap || s >= p.s1 - gap || std::min(r0, r1) > 0 || std::max(r0, r1) < 0) continue;
      out.warnings.push_back({"centre line " + c.handle +
                                  " crosses the part at right angles to its axis: a cross hole, or the axis of a "
                                  "second body (as in a pipe tee), and then the part is not a body of revolution",
                              out.axis.origin + u * s});
    }
  }
  out.axis.lowerSide = bestVerdict.lowerSide;
  out.reason = candidates[best].name + ", because " + bestVerdict.why;
  return out;
}

}  // namespace robust
