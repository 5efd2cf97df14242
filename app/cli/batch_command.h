#pragma once
// envline batch: its options and subcommands, shared by the argument
// reading (cmd_batch.cpp) and the subcommands (batch_subcommands.cpp).
#include <array>
#include <map>
#include <optional>
#include <string>
#include <vector>

#include "app/cli/console.h"
#include "app/cli/json.h"
#include "ui/batch_tasks.h"

namespace cli::batch {

struct Options {
  Console con;  // --json, --quiet, --verbose
  std::string input, output, sub, report, dir, name;
  bool inPlace = false, json = false, quiet = false, autoCentre = false, hasName = false;
  std::vector<std::string> positional;  // after the subcommand
  std::optional<std::array<double, 4>> window, crossing;
  std::vector<std::string> handles;
  std::optional<AcGePoint3d> centre;
  std::map<int, std::string> edits;  // parameter edits by control id
  std::optional<int> side, removeDashed, verticalEnds;
  BatchExportOptions exportOptions;
};

// Reports a usage error (in JSON too with --json); returns 2.
int Usage(const Options& o, const std::string& message);
// Whether the subcommand changes the drawing (and so needs -o or --in-place).
bool Changes(const Options& o);

// Runs the subcommand on the loaded tasks, adding its result to j. Returns
// the exit code: 0, 3 (some tools failed), 2 (bad usage, unknown names) or
// 1 (files).
int RunSubcommand(const Options& o, CBatchTaskList& tasks, AcDbDatabase* db, Json& j,
                  std::vector<std::string>& warnings);

}  // namespace cli::batch
