#pragma once
// A picture of a drawing with its outline drawn over it: PNG or SVG (by the
// file's extension). The drawing is shown in muted colours, the outline in a
// strong one, with the tool's axis and a scale bar.
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "host/db/database.h"

struct DrawingPictureOptions {
  AcDbObjectId outline;           // drawn on top, when set
  std::optional<double> axisY;    // the tool's axis, drawn as a centre line
  // An axis in any direction: a point on it and its direction (x, y, dx, dy).
  std::optional<std::array<double, 4>> axisLine;
  // Places to mark (a circle and a number) with what each mark means.
  struct Mark {
    double x = 0, y = 0;
    std::string text;
  };
  std::vector<Mark> marks;
  std::vector<std::string> notes;  // lines written under the title
  // The part of the drawing to show (x0, y0, x1, y1); the whole drawing when unset.
  std::optional<std::array<double, 4>> window;
  int width = 1600;               // pixels (the height follows the view)
  std::string title;              // written in the top left corner
};

// False with a message when the picture could not be written.
bool WriteDrawingPicture(const AcDbDatabase& db, const std::string& path, const DrawingPictureOptions& options,
                         std::string& error);
