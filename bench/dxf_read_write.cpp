// Times reading and writing one drawing file in memory and reports MB/s
// and the process's peak memory, as JSON for bench/dxf_bench.py.
#include <sys/resource.h>

#include <chrono>
#include <cstdio>
#include <fstream>
#include <iterator>

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
  std::printf("{\"megabytes\": %.3f, \"read_seconds\": %.4f, \"write_seconds\": %.4f, \"read_mb_s\": %.1f, "
              "\"write_mb_s\": %.1f, \"read_peak_mb\": %.1f, \"peak_mb\": %.1f, \"identical\": %s}\n",
              mb, read, write, mb / read, mb / write, static_cast<double>(afterRead.ru_maxrss) / 1024.0,
              static_cast<double>(usage.ru_maxrss) / 1024.0,
              out == bytes ? "true" : "false");
  return 0;
}
