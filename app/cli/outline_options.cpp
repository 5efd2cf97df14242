#include "app/cli/outline_options.h"

#include <cstdio>
#include <filesystem>

#include "app/cli/arguments.h"
#include "output/units.h"

namespace cli {

namespace {
const char* const kOutlineHelp =
    "usage: envline outline DRAWING.dxf -o OUT.dxf [selection] --centre X,Y|auto|--axis X1,Y1,X2,Y2 [options]\n"
    "       envline outline DRAWING.dxf... --out-dir DIR [selection] --centre ... [options]\n"
    "\n"
    "Computes the envelope line of the tool drawn in DRAWING.dxf and writes the\n"
    "drawing with the outline added (a closed polyline on layer TempEncircleLine,\n"
    "the drawing's arcs restored as bulges) to OUT.dxf. Several drawings take the\n"
    "same options, one after the other, each written to DIR under its own name.\n"
    "\n"
    "selection (default: every entity of model space)\n"
    "  --window X1,Y1,X2,Y2      entities wholly inside the window\n"
    "  --crossing X1,Y1,X2,Y2    entities inside or crossing it\n"
    "  --handles H1,H2,...       entities by handle\n"
    "  --layer NAME              only entities on this layer (repeatable)\n"
    "  --tool NUMBER             the drawing frame tagged with this tool number (its box is the window)\n"
    "  --all-tools               every tagged drawing frame, one outline each\n"
    "axis\n"
    "  --centre X,Y              a point on the tool's (horizontal) axis\n"
    "  --axis X1,Y1,X2,Y2        the axis as a line, in any direction\n"
    "  --centre auto             the centre line the contour is symmetric about or meets at both\n"
    "                            ends; without centre lines, the contour's mirror line\n"
    "method\n"
    "  --method robust|exact     robust (default): the largest radius of the part's body at each\n"
    "                            point of the axis; exact: the dialog's algorithm as designed\n"
    "  --gap G                   robust: pieces closer than G meet (default: 0.0004 of the\n"
    "                            part's size, 0.04 mm on a 100 mm tool)\n"
    "  --chord-tol T             robust: ellipses and splines as chords within T (0.001)\n"
    "  --side upper|lower        calculation side, 上半边 or 下半边 (default upper)\n"
    "exact method only (with --method exact; given without it they are a usage error)\n"
    "  --driver slabs|hatch      slab cutting (default) or the\n"
    "                            boundary of the region between a frame and the tool\n"
    "  --keep-dashed             do not leave out dashed and centre lines\n"
    "  --vertical-ends           close the outline with vertical ends\n"
    "  --point-tol T             point tolerance (0.0005)\n"
    "  --line-tol T              line tolerance (0.001)\n"
    "  --fine-tol T              horizontal/vertical tolerance (1e-6)\n"
    "  --arc-step S              chord length for arcs and splines (0.3)\n"
    "  --break-length L          left/right recognition length (5)\n"
    "output\n"
    "  -o OUT.dxf                the drawing with its outline (never DRAWING.dxf itself)\n"
    "  --out-dir DIR             DIR/NAME.dxf for each drawing NAME.dxf (needed for several)\n"
    "  --in-place                write the result into DRAWING.dxf itself\n"
    "  --write-on-failure        write the drawing also when no outline was made (exit 3);\n"
    "                            without it a failed run writes no drawing\n"
    "  --png FILE, --svg FILE    a picture of the drawing with the outline over it (one\n"
    "                            drawing; also on failure: it shows the reason)\n"
    "  --json                    the result as JSON on standard output (an array for\n"
    "                            several drawings or --all-tools; an error as an object\n"
    "                            with status, message, exit_code)\n"
    "  --quiet                   nothing but errors (and --json)\n"
    "  --verbose                 also what was read, selected, computed and written, with times\n"
    "  --sat FILE, --step FILE, --stl FILE\n"
    "                            the solid of the outline, revolved about the axis\n"
    "  --orient drawing|z        the solid as drawn (default) or along +Z from the origin\n"
    "  --stl-tolerance T         chordal tolerance of the STL mesh (0.01 mm)\n"
    "  --units U                 the drawing's unit (mm, cm, m, inch, ft, ...) instead of\n"
    "                            its $INSUNITS; SAT, STEP and STL carry millimetres\n"
    "  --keep-solid              keep the solid in the written drawing (a 3DSOLID)\n"
    "\n"
    "Every outline is checked: closed, simple, no edge of no length, both ends on the\n"
    "axis; an outline that fails is not written (exit 3, with the reason).\n"
    "\n"
    "Exit codes: 0 outline made, 3 no outline (for several drawings or tools: some),\n"
    "2 bad usage, 1 unreadable input or unwritable output.\n"
    "\n"
    "Examples:\n"
    "  envline outline drill.dxf -o drill_out.dxf --window 0,-20,120,20 --centre auto --png drill.png\n"
    "      one tool by its window, the axis found, a picture to look at\n"
    "  envline outline drill.dxf -o drill_out.dxf --centre 0,0 --step drill.step --units mm\n"
    "      the whole drawing about the axis through (0, 0), and its solid\n"
    "  envline outline sheet.dxf -o sheet_out.dxf --all-tools --centre auto --json\n"
    "      every tagged frame of a sheet ('envline info sheet.dxf' lists them)\n"
    "  envline outline a.dxf b.dxf c.dxf --out-dir out/ --centre auto\n"
    "      three drawings, written to out/a.dxf, out/b.dxf, out/c.dxf\n";

}  // namespace

int ParseOutlineOptions(const Args& args, OutlineOptions& o) {
  o.con = Console::scan("outline", args);
  auto usage = [&](const std::string& m) { return o.con.usage(m); };
  auto value = [&](std::size_t& i) -> const std::string* { return i + 1 < args.size() ? &args[++i] : nullptr; };
  for (std::size_t i = 0; i < args.size(); ++i) {
    const std::string& a = args[i];
    std::vector<double> v;
    for (const char* option : {"--driver", "--keep-dashed", "--vertical-ends", "--point-tol", "--line-tol", "--fine-tol",
                               "--arc-step", "--break-length"})
      if (a == option && o.exactOnly.empty()) o.exactOnly = a;
    if (a == "-h" || a == "--help") {
      std::fputs(kOutlineHelp, stdout);
      return -1;
    } else if (a == "-o" || a == "--output") {
      const std::string* s = value(i);
      if (!s) return usage("-o needs a file name");
      o.output = *s;
    } else if (a == "--window" || a == "--crossing") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 4)) return usage(a + " needs X1,Y1,X2,Y2");
      (a == "--window" ? o.window : o.crossing) = std::array<double, 4>{v[0], v[1], v[2], v[3]};
    } else if (a == "--handles") {
      const std::string* s = value(i);
      if (!s) return usage("--handles needs H1,H2,...");
      o.handles = SplitList(*s);
    } else if (a == "--layer") {
      const std::string* s = value(i);
      if (!s) return usage("--layer needs a layer name");
      o.layers.push_back(*s);
    } else if (a == "--centre" || a == "--center") {
      const std::string* s = value(i);
      if (!s) return usage("--centre needs X,Y or auto");
      if (*s == "auto") o.autoCentre = true;
      else if (SplitNumbers(*s, v, 2)) o.centre = AcGePoint3d(v[0], v[1], 0);
      else return usage("--centre needs X,Y or auto, not '" + *s + "'");
    } else if (a == "--method") {
      const std::string* s = value(i);
      if (!s || (*s != "robust" && *s != "exact")) return usage("--method is robust or exact");
      o.exact = *s == "exact";
    } else if (a == "--axis") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 4) || (v[0] == v[2] && v[1] == v[3]))
        return usage("--axis needs X1,Y1,X2,Y2, two different points of the axis");
      o.axis = std::array<double, 4>{v[0], v[1], v[2], v[3]};
    } else if (a == "--gap" || a == "--chord-tol") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 1) || !(v[0] > 0)) return usage(a + " needs a positive number");
      (a == "--gap" ? o.gap : o.chordTol) = v[0];
    } else if (a == "--tool") {
      const std::string* s = value(i);
      if (!s || s->empty()) return usage("--tool needs a tool number");
      o.tool = *s;
    } else if (a == "--all-tools") {
      o.allTools = true;
    } else if (a == "--side") {
      const std::string* s = value(i);
      if (s && (*s == "upper" || *s == "上半边")) o.settings.nSide = 0;
      else if (s && (*s == "lower" || *s == "下半边")) o.settings.nSide = 1;
      else return usage("--side is upper or lower");
    } else if (a == "--driver") {
      const std::string* s = value(i);
      if (s && *s == "slabs") o.driver = OutlineDriver::kSlabs;
      else if (s && *s == "hatch") o.driver = OutlineDriver::kHatch;
      else return usage("--driver is slabs or hatch");
    } else if (a == "--keep-dashed") {
      o.settings.bRemoveDashed = false;
    } else if (a == "--vertical-ends") {
      o.settings.bVerticalEnds = true;
    } else if (a == "--point-tol" || a == "--line-tol" || a == "--fine-tol" || a == "--arc-step" ||
               a == "--break-length") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 1) || !(v[0] > 0)) return usage(a + " needs a positive number");
      double& field = a == "--point-tol"  ? o.settings.dPointTol
                      : a == "--line-tol" ? o.settings.dLineTol
                      : a == "--fine-tol" ? o.settings.dFineTol
                      : a == "--arc-step" ? o.settings.dStep
                                          : o.settings.dBreakLength;
      field = v[0];
    } else if (a == "--png" || a == "--svg") {
      const std::string* s = value(i);
      if (!s) return usage(a + " needs a file name");
      (a == "--png" ? o.png : o.svg) = *s;
    } else if (a == "--sat" || a == "--step" || a == "--stl") {
      const std::string* s = value(i);
      if (!s) return usage(a + " needs a file name");
      (a == "--sat" ? o.sat : a == "--step" ? o.step : o.stl) = *s;
    } else if (a == "--orient") {
      const std::string* s = value(i);
      if (!s || (*s != "drawing" && *s != "z")) return usage("--orient is drawing or z");
      o.orientation = *s == "z" ? SolidOrientation::kAxisZ : SolidOrientation::kDrawing;
    } else if (a == "--stl-tolerance") {
      const std::string* s = value(i);
      if (!s || !SplitNumbers(*s, v, 1) || !(v[0] > 0)) return usage("--stl-tolerance needs a positive number");
      o.stlTolerance = v[0];
    } else if (a == "--units") {
      const std::string* s = value(i);
      if (!s || !UnitsFromName(*s, o.units)) return usage("--units needs a unit (mm, cm, m, inch, ft, ...)");
    } else if (a == "--keep-solid") {
      o.keepSolid = true;
    } else if (Console::isFlag(a)) {
      o.json = o.con.json;
    } else if (a == "--in-place") {
      o.inPlace = true;
    } else if (a == "--out-dir") {
      const std::string* s = value(i);
      if (!s || s->empty()) return usage("--out-dir needs a folder");
      o.outDir = *s;
    } else if (a == "--write-on-failure") {
      o.writeOnFailure = true;
    } else if (!a.empty() && a[0] != '-') {
      o.inputs.push_back(a);
    } else {
      return usage("unexpected argument '" + a + "'");
    }
  }
  if (o.inputs.empty()) return usage("a drawing file is required");
  if (int(!o.output.empty()) + int(!o.outDir.empty()) + int(o.inPlace) != 1)
    return usage(o.output.empty() && o.outDir.empty() ? "-o OUT.dxf, --out-dir DIR or --in-place is required"
                                                      : "-o, --out-dir and --in-place exclude each other");
  if (o.inputs.size() > 1 && !o.output.empty())
    return usage("several drawings are written with --out-dir DIR (or --in-place), not -o");
  const bool files = !o.png.empty() || !o.svg.empty() || !o.sat.empty() || !o.step.empty() || !o.stl.empty();
  if (o.inputs.size() > 1 && files)
    return usage("--png, --svg, --sat, --step and --stl name one file: give one drawing (or use envline export)");
  if (!o.centre && !o.autoCentre && !o.axis) return usage("--centre X,Y, --centre auto or --axis X1,Y1,X2,Y2 is required");
  if ((o.centre || o.autoCentre) && o.axis) return usage("--centre and --axis exclude each other");
  if (!o.exact && !o.exactOnly.empty())
    return usage(o.exactOnly + " is a setting of the exact method, which the robust method (the default) does not read; "
                 "add --method exact to use it");
  if (o.exact && o.axis && (*o.axis)[1] != (*o.axis)[3])
    return usage("the exact method needs a horizontal axis (use --centre X,Y, or --method robust)");
  const bool selected = o.window || o.crossing || !o.handles.empty();
  if ((!o.tool.empty() || o.allTools) && selected) return usage("--tool and --all-tools choose their own window");
  if (!o.tool.empty() && o.allTools) return usage("--tool and --all-tools exclude each other");
  if (o.allTools && (!o.sat.empty() || !o.step.empty() || !o.stl.empty() || o.keepSolid || !o.png.empty() || !o.svg.empty()))
    return usage("--all-tools makes no solids or pictures (outline one tool with --tool, or use envline export)");
  if (o.window && o.crossing) return usage("--window and --crossing exclude each other");
  if (const std::string clash = StdoutClash(o.json, {o.output, o.png, o.svg, o.sat, o.step, o.stl}); !clash.empty())
    return usage(clash);
  std::vector<std::string> outputs;
  for (const std::string& in : o.inputs) {
    const std::string out = OutlineOutputFor(o, in);
    if (!o.inPlace)
      for (const std::string& other : o.inputs)
        if (SameFile(other, out))
          return usage((o.output.empty() ? "'" + out + "'" : std::string("-o")) +
                       " names an input drawing; give --in-place to write into it");
    for (const std::string& earlier : outputs)
      if (SameFile(earlier, out)) return usage("two drawings would both be written to '" + out + "'");
    outputs.push_back(out);
    if (const std::string file = OverwritesInput(in, {o.png, o.svg, o.sat, o.step, o.stl}); !file.empty())
      return usage("'" + file + "' is the input drawing; pictures and solids never overwrite it");
  }
  return 0;
}

std::string OutlineOutputFor(const OutlineOptions& o, const std::string& input) {
  if (o.inPlace) return input;
  if (!o.outDir.empty()) return (std::filesystem::path(o.outDir) / std::filesystem::path(input).filename()).string();
  return o.output;
}


}  // namespace cli
