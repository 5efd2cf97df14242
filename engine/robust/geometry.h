#pragma once
// Plane geometry of the robust outline: points, line segments and circular
// arcs, and where they meet. Pure value code with no drawing in sight.
#include <cmath>
#include <vector>

namespace robust {

struct P2 {
  double x = 0, y = 0;
};
inline P2 operator+(P2 a, P2 b) { return {a.x + b.x, a.y + b.y}; }
inline P2 operator-(P2 a, P2 b) { return {a.x - b.x, a.y - b.y}; }
inline P2 operator*(P2 a, double s) { return {a.x * s, a.y * s}; }
inline double Dot(P2 a, P2 b) { return a.x * b.x + a.y * b.y; }
inline double Cross(P2 a, P2 b) { return a.x * b.y - a.y * b.x; }
inline double Norm(P2 a) { return std::hypot(a.x, a.y); }
inline double Dist(P2 a, P2 b) { return Norm(a - b); }

// A line segment from a to b, or a circular arc about c of radius r running
// counter-clockwise from angle t0 to angle t1 (t0 < t1 ≤ t0 + 2π); a and b
// are then the arc's end points.
struct Seg {
  P2 a, b;
  bool arc = false;
  P2 c;
  double r = 0, t0 = 0, t1 = 0;
  int source = -1;  // the contour curve it came from

  static Seg Line(P2 a, P2 b, int source = -1);
  static Seg Arc(P2 c, double r, double t0, double t1, int source = -1);
  P2 PointAtAngle(double t) const { return {c.x + r * std::cos(t), c.y + r * std::sin(t)}; }
  // The parameter of a point on the curve: the fraction along a line, the
  // angle (unwrapped into [t0 - π, t0 + 2π - π]) on an arc.
  double ParamOf(P2 p) const;
  P2 PointAt(double param) const;
  double ParamStart() const { return arc ? t0 : 0.0; }
  double ParamEnd() const { return arc ? t1 : 1.0; }
  // Distance from p to the curve and the parameter of the nearest point.
  double Distance(P2 p, double* param = nullptr) const;
  // The box of the curve: x0, y0, x1, y1.
  void Box(double box[4]) const;
};

// Whether two curves lie on one line or one circle (within tol).
bool SameSupport(const Seg& u, const Seg& v, double tol);

// Points where the supports of u and v (the infinite line, the full circle)
// meet; none for parallel lines or circles that do not meet. Tangent contact
// within tol gives the one touching point.
std::vector<P2> SupportIntersections(const Seg& u, const Seg& v, double tol);

// Points where the curves themselves meet (ends within tol count).
std::vector<P2> CurveIntersections(const Seg& u, const Seg& v, double tol);

// Whether the angle t lies within [t0 - slack, t1 + slack] modulo 2π.
bool AngleWithin(double t, double t0, double t1, double slack);

}  // namespace robust

namespace robust {
// The edge of a polyline from p to q with the given bulge, as a segment or a
// counter-clockwise arc (running from q to p when the bulge is negative).
Seg EdgeFromBulge(P2 p, P2 q, double bulge);
}  // namespace robust
