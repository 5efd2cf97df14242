// The outline engine at drawing scale. For fluted tool drawings of 2,000 to
// 5,000 entities and for sheets of 100 to 2,000 tools selected at once it
// prints:
// the entities, the line records after slab cutting, the time of each stage
// and in total for the plain loops and for the engine's indexed stages side
// by side (the plain ones only where they finish within a minute), the peak
// memory of each run, and the end-to-end time of `envline outline` (read,
// compute, write) on the drawing written as DXF, with the exact method and
// with the robust one; with --before, the exact method of another envline
// (an older build) beside it, stopped after the limit.
//
//   engine_scale_bench [--envline PATH] [--before PATH] [--plain-limit SECONDS] [--quick]
//
// Each run is a child process of its own, so that its peak memory is its
// own and a plain run past the limit can be stopped.
#include <sys/resource.h>
#include <sys/wait.h>
#include <unistd.h>

#include <chrono>
#include <cstdio>
#include <cstdlib>
#include <filesystem>
#include <map>
#include <memory>
#include <sstream>
#include <string>
#include <vector>

#include "fluted_tool.h"
#include "host/dxf/dxf_file.h"
#include "host/ed/document.h"
#include "plain_stages.h"

namespace {

using Clock = std::chrono::steady_clock;

struct Case {
  std::string name;
  int flutes = 0;  // 0: the sheet of tools
  int tools = 0;   // or the texts of a fluted tool's parameter table
};

fluted::Drawing Draw(AcDbDatabase* db, const Case& c) {
  if (c.flutes == 0) return fluted::DrawSheet(db, c.tools);
  return fluted::DrawFlutedTool(
      db, {.seed = static_cast<std::uint32_t>(c.flutes), .flutes = c.flutes, .notes = c.tools > 0 ? 0 : -c.tools});
}

// Times the stages between the driver's hook calls.
struct StageClock {
  std::map<std::string, double> seconds;
  std::vector<std::string> order;
  std::string current;
  Clock::time_point since = Clock::now();
  void operator()(const char* stage) {
    const Clock::time_point now = Clock::now();
    if (!current.empty()) {
      if (!seconds.count(current)) order.push_back(current);
      seconds[current] += std::chrono::duration<double>(now - since).count();
    }
    current = stage ? stage : "";
    since = now;
  }
};

// Child: one run of one method; prints "key value" lines.
template <class Stages>
int RunOne(const Case& c) {
  AcApDocument* doc = acDocManagerPtr()->openDocument(std::make_unique<AcDbDatabase>());
  const fluted::Drawing d = Draw(doc->database(), c);
  Stages engine(d.info);
  StageClock clock;
  AcDbObjectId result;
  const Clock::time_point start = Clock::now();
  engine.Run3(d.selection, result, [&](const char* s) { clock(s); });
  const double total = std::chrono::duration<double>(Clock::now() - start).count();
  std::printf("entities %d\nslab_records %zu\ntotal %.3f\nresult %d\n", d.selection.length(), engine.m_slabRecords,
              total, result.isNull() ? 0 : 1);
  for (const std::string& s : clock.order) std::printf("stage %s %.3f\n", s.c_str(), clock.seconds[s]);
  return 0;
}

// Child: the drawing written as DXF (without its axis line: the command
// draws its own), and its window and centre.
int WriteOne(const Case& c, const std::string& path) {
  host::dxf::DxfDrawing drawing;
  drawing.database = std::make_unique<AcDbDatabase>();
  const fluted::Drawing d = Draw(drawing.database.get(), c);
  host::eraseObject(d.info.m_idMidLine);
  host::dxf::Diagnostics diag;
  if (!host::dxf::writeDxfFile(path, drawing, {}, diag)) {
    std::fprintf(stderr, "%s: %s\n", path.c_str(), diag.error.c_str());
    return 1;
  }
  std::printf("window %.6f,%.6f,%.6f,%.6f\ncentre %.6f,%.6f\n", d.window[0], d.window[1], d.window[2], d.window[3],
              d.centre.x, d.centre.y);
  return 0;
}

struct Result {
  bool done = false;
  double seconds = 0, cpu = 0, peakMb = 0;  // wall clock and processor seconds of the child
  std::map<std::string, std::string> values;
  std::vector<std::pair<std::string, double>> stages;
};

Result Spawn(const std::string& self, const std::vector<std::string>& args, int limitSeconds) {
  int pipefd[2];
  if (pipe(pipefd) != 0) return {};
  const Clock::time_point start = Clock::now();
  const pid_t pid = fork();
  if (pid == 0) {
    dup2(pipefd[1], 1);
    close(pipefd[0]);
    if (limitSeconds > 0) alarm(static_cast<unsigned>(limitSeconds));
    std::vector<char*> argv{const_cast<char*>(self.c_str())};
    for (const std::string& a : args) argv.push_back(const_cast<char*>(a.c_str()));
    argv.push_back(nullptr);
    execv(self.c_str(), argv.data());
    _exit(127);
  }
  close(pipefd[1]);
  std::string text;
  char buf[4096];
  for (ssize_t n; (n = read(pipefd[0], buf, sizeof buf)) > 0;) text.append(buf, static_cast<std::size_t>(n));
  close(pipefd[0]);
  int status = 0;
  rusage use{};
  wait4(pid, &status, 0, &use);
  Result r;
  r.done = WIFEXITED(status) && WEXITSTATUS(status) == 0;
  r.peakMb = use.ru_maxrss / 1024.0;
  r.cpu = static_cast<double>(use.ru_utime.tv_sec + use.ru_stime.tv_sec) +
          static_cast<double>(use.ru_utime.tv_usec + use.ru_stime.tv_usec) / 1e6;
  r.seconds = std::chrono::duration<double>(Clock::now() - start).count();
  std::istringstream in(text);
  for (std::string key; in >> key;) {
    if (key == "stage") {
      std::string name;
      double s = 0;
      in >> name >> s;
      r.stages.emplace_back(name, s);
    } else {
      std::string v;
      in >> v;
      r.values[key] = v;
    }
  }
  return r;
}

}  // namespace

int main(int argc, char** argv) {
  const std::string self = std::filesystem::canonical("/proc/self/exe").string();
  std::string envline = (std::filesystem::path(self).parent_path().parent_path() / "app/cli/envline").string();
  std::string before;
  int plainLimit = 60;
  bool quick = false;
  for (int i = 1; i < argc; ++i) {
    const std::string a = argv[i];
    if (a == "--child" && i + 3 < argc) {
      const std::string method = argv[i + 1];
      const Case c{"", std::atoi(argv[i + 2]), std::atoi(argv[i + 3])};
      if (method == "plain") return RunOne<PlainStages>(c);
      if (method == "indexed") return RunOne<IndexedStages>(c);
      if (method == "write" && i + 4 < argc) return WriteOne(c, argv[i + 4]);
      return 2;
    }
    if (a == "--envline" && i + 1 < argc) envline = argv[++i];
    else if (a == "--before" && i + 1 < argc) before = argv[++i];
    else if (a == "--plain-limit" && i + 1 < argc) plainLimit = std::atoi(argv[++i]);
    else if (a == "--quick") quick = true;
    else {
      std::fprintf(stderr,
                   "usage: engine_scale_bench [--envline PATH] [--before PATH] [--plain-limit SECONDS] [--quick]\n");
      return 2;
    }
  }
  // Fluted tools (flutes; a negative second number is the length of the
  // parameter table) and a sheet of tools.
  std::vector<Case> cases = {{"fluted 100", 100, -40},  {"fluted 300", 300, -40},   {"fluted 450", 450, -40},
                             {"fluted 600", 600, -40},  {"fluted 600+", 600, -1200}, {"sheet 100", 0, 100},
                             {"sheet 400", 0, 400},     {"sheet 2000", 0, 2000}};
  if (quick) cases = {{"fluted 100", 100, -40}, {"sheet 20", 0, 20}};
  const std::filesystem::path dir = std::filesystem::temp_directory_path() / ("engine_scale_bench." + std::to_string(getpid()));
  std::filesystem::create_directories(dir);
  // Seconds are the engine's own wall clock (from the selection to the
  // outline, drawing the tool not counted); "cpu" is the processor time of
  // the whole child, which a loaded machine inflates less.
  // e2e: `envline outline` from the file to the written drawing, wall
  // clock and processor seconds, exact method (x) and robust (r); "before"
  // is the exact method of the --before binary.
  std::printf("%-11s %8s %9s | %9s %8s | %9s %8s %8s | %7s | %9s %8s | %9s %8s | %9s %8s\n", "drawing", "entities",
              "slab recs", "plain s", "plain MB", "index s", "index MB", "cpu s", "ratio", "x e2e s", "x cpu",
              "r e2e s", "r cpu", "before s", "bef cpu");
  std::vector<std::pair<std::string, Result>> details;
  for (const Case& c : cases) {
    const std::string f = std::to_string(c.flutes), t = std::to_string(c.tools);
    const Result fast = Spawn(self, {"--child", "indexed", f, t}, 0);
    // The plain run only where the indexed one suggests it can finish in time.
    Result plain = Spawn(self, {"--child", "plain", f, t}, plainLimit);
    const std::string file = (dir / (std::to_string(c.flutes) + "_" + t + ".dxf")).string();
    const Result written = Spawn(self, {"--child", "write", f, t, file}, 0);
    Result e2e, exact, earlier;
    auto outline = [&](const std::string& program, const char* method, int limit) {
      return Spawn(program, {"outline", file, "-o", file + ".out.dxf", "--window", written.values.at("window"),
                             "--centre", written.values.at("centre"), "--method", method},
                   limit);
    };
    if (written.done) {
      exact = outline(envline, "exact", 0);
      e2e = outline(envline, "robust", 0);
      if (!before.empty()) earlier = outline(before, "exact", plainLimit);
    }
    auto value = [](const Result& r, const char* key) {
      auto it = r.values.find(key);
      return it == r.values.end() ? std::string("-") : it->second;
    };
    char plainS[32], plainMb[32], ratio[32], e2eS[32], exactS[32], beforeS[32], beforeCpu[32];
    if (plain.done) std::snprintf(plainS, sizeof plainS, "%s", value(plain, "total").c_str());
    else std::snprintf(plainS, sizeof plainS, "> %d", plainLimit);
    if (plain.done) std::snprintf(plainMb, sizeof plainMb, "%.0f", plain.peakMb);
    else std::snprintf(plainMb, sizeof plainMb, "-");
    std::snprintf(ratio, sizeof ratio, "%s",
                  plain.done && fast.done
                      ? std::to_string(std::atof(value(plain, "total").c_str()) /
                                       std::max(1e-6, std::atof(value(fast, "total").c_str())))
                            .substr(0, 7)
                            .c_str()
                      : "-");
    std::snprintf(e2eS, sizeof e2eS, e2e.done ? "%.3f" : "failed", e2e.seconds);
    std::snprintf(exactS, sizeof exactS, exact.done ? "%.3f" : "failed", exact.seconds);
    if (before.empty()) std::snprintf(beforeS, sizeof beforeS, "-");
    else if (earlier.done) std::snprintf(beforeS, sizeof beforeS, "%.3f", earlier.seconds);
    else std::snprintf(beforeS, sizeof beforeS, "> %d", plainLimit);
    if (earlier.done) std::snprintf(beforeCpu, sizeof beforeCpu, "%.2f", earlier.cpu);
    else std::snprintf(beforeCpu, sizeof beforeCpu, "-");
    std::printf("%-11s %8s %9s | %9s %8s | %9s %8.0f %8.2f | %7s | %9s %8.2f | %9s %8.2f | %9s %8s\n", c.name.c_str(),
                value(fast, "entities").c_str(), value(fast, "slab_records").c_str(), plainS, plainMb,
                value(fast, "total").c_str(), fast.peakMb, fast.cpu, ratio, exactS, exact.cpu, e2eS, e2e.cpu, beforeS,
                beforeCpu);
    std::fflush(stdout);
    details.emplace_back(c.name + " indexed", fast);
    if (plain.done) details.emplace_back(c.name + " plain", plain);
  }
  std::printf("\nseconds per stage\n");
  for (const auto& [name, r] : details) {
    std::printf("%-20s", name.c_str());
    for (const auto& [stage, s] : r.stages) std::printf(" %s %.3f", stage.c_str(), s);
    std::printf("\n");
  }
  std::filesystem::remove_all(dir);
  return 0;
}
