#include "engine/encircle_cal_info.h"

CEncircleCalInfo::CEncircleCalInfo()
    : m_tolPoint(MakeTol(0.0005)), m_tolLine(MakeTol(0.001)), m_tolFine(MakeTol(1e-6)) {}

AcGeTol CEncircleCalInfo::MakeTol(double value) {
  AcGeTol tol;
  tol.setEqualPoint(value);
  tol.setEqualVector(value);
  return tol;
}
