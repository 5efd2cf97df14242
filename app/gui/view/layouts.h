#pragma once
// The drawing's layouts as a user picks them: model space, then every paper
// space in tab order, named as the drawing names them.
#include <QtCore/QString>

#include <vector>

#include "host/db/database.h"

namespace gui {

struct LayoutEntry {
  QString name;        // "模型" for model space; the layout's name, else its block's
  AcDbObjectId block;  // the block table record the layout draws
};

// Paper spaces are the block records "*Paper_Space..."; their names and
// order come from the layout objects of the dictionary "ACAD_LAYOUT" (the
// entry's key; in the object's text, group 71 for the tab order and the
// group 330 that names the block record). A paper space without a layout object keeps its block's
// name and comes last.
std::vector<LayoutEntry> DrawingLayouts(const AcDbDatabase* db);

}  // namespace gui
