#pragma once
// A picture of a drawing with its outline drawn over it: PNG or SVG (by the
// file's extension). The drawing is shown in muted colours, the outline in a
// strong one, with the tool's axis and a scale bar.
#include <array>
#include <optional>
#include <string>

#include "host/db/database.h"

struct DrawingPictureOptions {
  AcDbObjectId outline;           // drawn on top, when set
  std::optional<double> axisY;    // the tool's axis, drawn as a centre line
  // The part of the drawing to show (x0, y0, x1, y1); the whole drawing when unset.
  std::optional<std::array<double, 4>> window;
  int width = 1600;               // pixels (the height follows the view)
  std::string title;              // written in the top left corner
};

// False with a message when the picture could not be written.
bool WriteDrawingPicture(const AcDbDatabase& db, const std::string& path, const DrawingPictureOptions& options,
                         std::string& error);
