#pragma once
// Window and crossing selections of many boxes at once, as selectByBox
// makes them one by one: the extents of each entity are computed once and
// the boxes that may hold it are found through their sorted left edges.
#include <vector>

#include "host/db/operations.h"

namespace host {

struct SelectionBox {
  AcGePoint3d corner1, corner2;  // any two opposite corners
};

// One selection per box, in the boxes' order; each holds exactly what
// selectByBox(db, corner1, corner2, mode) holds, in model space order.
std::vector<AcDbObjectIdArray> selectByBoxes(const AcDbDatabase* db, const std::vector<SelectionBox>& boxes,
                                             SelectMode mode);

}  // namespace host
