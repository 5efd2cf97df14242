#pragma once
// envline outline: its options, read from the command line.
#include <array>
#include <optional>
#include <string>
#include <vector>

#include "app/cli/commands.h"
#include "app/cli/console.h"
#include "output/solid_export.h"
#include "ui/single_outline_run.h"

namespace cli {

struct OutlineOptions {
  Console con;
  std::vector<std::string> inputs;                // the drawings, in order
  std::string outDir;                             // --out-dir
  bool writeOnFailure = false;                    // --write-on-failure
  // The drawing being worked on and where it goes (set per drawing).
  std::string input, output;
  std::string png, svg, sat, step, stl;
  SolidOrientation orientation = SolidOrientation::kDrawing;
  double stlTolerance = 0.01;
  int units = -1;  // $INSUNITS code from --units; -1: the drawing's
  bool keepSolid = false;
  std::optional<std::array<double, 4>> window, crossing;
  std::vector<std::string> handles, layers;
  std::optional<AcGePoint3d> centre;
  bool autoCentre = false, json = false, inPlace = false;
  SingleOutlineSettings settings;
  OutlineDriver driver = OutlineDriver::kSlabs;
  bool exact = false;                          // --method exact
  std::optional<std::array<double, 4>> axis;   // --axis
  double gap = 0, chordTol = 0.001;            // robust tolerances (gap 0: from the part)
  std::string tool;                            // --tool
  bool allTools = false;
  std::string exactOnly;                       // the first option given that only the exact method reads
};

// Reads the arguments; returns 0 to go on, -1 after printing the help, else
// the exit code of a usage error (reported).
int ParseOutlineOptions(const Args& args, OutlineOptions& o);
// Where the drawing input goes: -o, DIR/NAME under --out-dir, or itself.
std::string OutlineOutputFor(const OutlineOptions& o, const std::string& input);

}  // namespace cli
