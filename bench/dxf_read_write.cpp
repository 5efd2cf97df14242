// Times reading and writing one drawing file in memory and reports MB/s
// and the process's peak memory, as JSON for bench/dxf_bench.py.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "host/db/block_reference.h"
#include "host/db/symbol_tables.h"
#include "host/dxf/dxf_file.h"

int main(int argc, char** argv) {
  if (argc < 2) {
    std::fprintf(stderr, "usage: dxf_read_write FILE.dxf\n");
    return 2;
  }
  using clock = std::chrono::steady_clock;
  const auto t0 = clock::now();
  host::dxf::DxfDrawing d;
  host::dxf::Diagnostics diag;
  // Reading the file (from the page cache) is part of reading a drawing.
  if (!host::dxf::readDxfFile(argv[1], d, diag)) {
    std::fprintf(stderr, "%s\n", diag.error.c_str());
    return 1;
  }
  const auto t1 = clock::now();
  rusage afterRead{};
  getrusage(RUSAGE_SELF, &afterRead);
  std::string out;
  host::dxf::writeDxfText(d, {}, out, diag);
  const auto t2 = clock::now();
  // Entities of the common kinds are built on first use: opening every one
  // shows what that costs, beside the read itself.
  std::size_t opened = 0;
  if (AcDbBlockTableRecord* ms = nullptr;
      acdbOpenObject(ms, d.database->modelSpaceId(), AcDb::kForRead) == Acad::eOk) {
    for (AcDbObjectId id : ms->entityList()) {
      AcDbEntity* e = nullptr;
      if (acdbOpenObject(e, id, AcDb::kForRead) == Acad::eOk) {
        ++opened;
        e->close();
      }
    }
    ms->close();
  }
  const auto t3 = clock::now();
  // The file itself, read only now so that it does not count in the peak.
  std::string bytes;
  {
    std::ifstream in(argv[1], std::ios::binary);
    bytes.assign(std::istreambuf_iterator<char>(in), std::istreambuf_iterator<char>());
  }
  rusage usage{};
  getrusage(RUSAGE_SELF, &usage);
  const double mb = static_cast<double>(bytes.size()) / 1e6;
  const double read = std::chrono::duration<double>(t1 - t0).count();
  const double write = std::chrono::duration<double>(t2 - t1).count();
  const double openAll = std::chrono::duration<double>(t3 - t2).count();
  std::printf("{\"megabytes\": %.3f, \"read_seconds\": %.4f, \"write_seconds\": %.4f, \"read_mb_s\": %.1f, "
              "\"write_mb_s\": %.1f, \"open_all_seconds\": %.4f, \"opened\": %zu, \"read_peak_mb\": %.1f, \"peak_mb\": %.1f, "
              "\"identical\": %s}\n",
              mb, read, write, mb / read, mb / write, openAll, opened, static_cast<double>(afterRead.ru_maxrss) / 1024.0,
              static_cast<double>(usage.ru_maxrss) / 1024.0,
              out == bytes ? "true" : "false");
  return 0;
}
