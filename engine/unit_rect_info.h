#pragma once
// One cell of a subdivision of the drawing: its box and the distinct points
// that fall in it.
#include <vector>

#include "engine/line_info.h"
#include "engine/remove_line_dir.h"
#include "engine/vk_rect.h"

class CUnitRectInfo {
 public:
  CUnitRectInfo() = default;

  // Appends pt unless a held point equals it within tol.
  void AddPoint(AcGePoint3d pt, AcGeTol tol);
  // Orders the points for a viewing direction (coordinates within 1e-6 agree):
  // 0: x up, then y up; 1: x up, then y down; 2: y down, then x down;
  // 3 and any other value: y down, then x up.
  void Sort(E_RemoveLine_Dir dir);

  CVKRect m_rect{true};
  std::vector<CLineInfo> m_lines;       // the lines that cross the cell
  std::vector<int> m_cells;             // indices of neighbouring cells
  std::vector<AcGePoint3d> m_pts;
};
