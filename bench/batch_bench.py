#!/usr/bin/python3
"""The batch workflow on a generated sheet of 100 tools in tagged frames:
`envline batch` new-task + add-frames + run + export (SAT and STEP) end to
end, with per-tool times from its JSON; then the same run and export through
the batch controller with the progress display, and the display's share of
the run (target: at most 1 %).

usage: batch_bench.py BUILD_DIR [TOOLS]
"""
import json
import os
import statistics
import subprocess
import sys
import tempfile
import time

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
sys.path.insert(0, os.path.join(ROOT, "samples"))
import ezdxf  # noqa: E402
import make_samples  # noqa: E402


def make_sheet(path, count):
    doc = ezdxf.new("R2010", setup=True)
    make_samples.setup(doc)
    names = list(make_samples.TOOLS)
    for i in range(count):
        name = names[i % len(names)]
        number, title, profile = make_samples.TOOLS[name]
        # Each frame gets its own tool number.
        make_samples.TOOLS[name] = (f"T-{2000 + i}", title, profile)
        make_samples.draw_tool(doc, name, 200 * i)
        make_samples.TOOLS[name] = (number, title, profile)
    doc.saveas(path)


def envline(build, *args):
    start = time.perf_counter()
    p = subprocess.run([os.path.join(build, "app", "cli", "envline"), "batch", *args, "--json", "--quiet"],
                       capture_output=True, text=True)
    seconds = time.perf_counter() - start
    if p.returncode != 0:
        sys.exit(f"envline batch {' '.join(args)}: exit {p.returncode}\n{p.stderr}")
    return json.loads(p.stdout), seconds


def main():
    build = sys.argv[1]
    count = int(sys.argv[2]) if len(sys.argv) > 2 else 100
    tmp = tempfile.mkdtemp(prefix="envline_batch_bench_")
    sheet, work = os.path.join(tmp, "sheet.dxf"), os.path.join(tmp, "work.dxf")
    make_sheet(sheet, count)
    print(f"sheet of {count} tagged tools: {os.path.getsize(sheet) / 1e6:.1f} MB")
    _, t_new = envline(build, sheet, "new-task", "bench", "-o", work)
    r, t_frames = envline(build, work, "add-frames", "bench", "--in-place")
    assert r["added"] == count, r
    r, t_run = envline(build, work, "run", "--in-place")
    run_tools = [t["seconds"] for t in r["tools"]]
    assert r["summary"]["failed"] == 0, r["summary"]
    r, t_export = envline(build, work, "export", "--dir", os.path.join(tmp, "solids"), "--formats", "sat,step",
                          "--in-place")
    export_tools = [t["seconds"] for t in r["tools"]]
    assert r["summary"]["exported"] == count, r["summary"]
    total = t_new + t_frames + t_run + t_export
    print("envline batch (each step reads and writes the drawing):")
    print(f"  new-task   {t_new:7.2f} s")
    print(f"  add-frames {t_frames:7.2f} s")
    print(f"  run        {t_run:7.2f} s   per tool {statistics.mean(run_tools) * 1e3:6.1f} ms mean, "
          f"{max(run_tools) * 1e3:6.1f} ms worst")
    print(f"  export     {t_export:7.2f} s   per tool {statistics.mean(export_tools) * 1e3:6.1f} ms mean, "
          f"{max(export_tools) * 1e3:6.1f} ms worst (SAT + STEP)")
    print(f"  total      {total:7.2f} s   {total / count * 1e3:.1f} ms per tool")
    for extra, env in (([], None), (["--qt"], dict(os.environ, QT_QPA_PLATFORM="offscreen"))):
        p = subprocess.run([os.path.join(build, "bench", "batch_controller_bench"), work, os.path.join(tmp, "solids2"),
                            *extra], capture_output=True, text=True, env=env)
        print(p.stdout, end="")
        if p.returncode != 0:
            sys.exit(p.stderr)


if __name__ == "__main__":
    main()
