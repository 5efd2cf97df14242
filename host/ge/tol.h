#pragma once
// Geometric tolerance: the distance within which two points are equal and the
// amount within which two unit vectors are equal (parallel).
class AcGeTol {
 public:
  AcGeTol() = default;
  double equalPoint() const { return m_equalPoint; }
  double equalVector() const { return m_equalVector; }
  void setEqualPoint(double value) { m_equalPoint = value; }
  void setEqualVector(double value) { m_equalVector = value; }

 private:
  double m_equalPoint = 1e-10;
  double m_equalVector = 1e-12;
};

// The host's global default tolerance, used where a caller passes none.
struct AcGeContext {
  static AcGeTol gTol;
};
