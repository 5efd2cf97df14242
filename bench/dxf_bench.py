#!/usr/bin/python3
"""Reading speed against ezdxf on one large drawing (about 50 MB of lines,
arcs, polylines, text and inserts), in one run: our reader and writer (MB/s,
peak memory) and ezdxf.readfile on the same file, with the ratio.

usage: dxf_bench.py BUILD_DIR [MEGABYTES]
"""
import json
import os
import resource
import subprocess
import sys
import time

import ezdxf
import ezdxf.bbox


def make(path, megabytes):
    doc = ezdxf.new("R2010")
    doc.layers.add("尺寸线")
    block = doc.blocks.new("BOLT")
    for i in range(20):
        block.add_line((0, i), (10, i))
    msp = doc.modelspace()
    i = 0
    while True:
        for k in range(2000):
            x, y = (i * 2000 + k) % 997, (i * 2000 + k) // 997
            msp.add_line((x, y), (x + 1.25, y + 0.5), dxfattribs={"layer": "尺寸线" if k % 7 == 0 else "0"})
            if k % 4 == 0:
                msp.add_arc((x, y), 0.75, 10, 200)
            if k % 8 == 0:
                msp.add_lwpolyline([(x, y), (x + 1, y, 0.4), (x + 1, y + 1), (x, y + 1)], format="xyb")
            if k % 16 == 0:
                msp.add_text(f"T{k}", dxfattribs={"insert": (x, y), "height": 0.5})
            if k % 32 == 0:
                msp.add_blockref("BOLT", (x, y))
        i += 1
        if len(msp) * 190 > megabytes * 1e6 and i % 4 == 0:
            doc.saveas(path)
            if os.path.getsize(path) >= megabytes * 1e6:
                return


def timed_child(argv):
    """Wall seconds, CPU seconds (user + system) and peak MB of one run."""
    t = time.perf_counter()
    child = subprocess.Popen(argv, stdout=subprocess.DEVNULL, stderr=subprocess.DEVNULL)
    _, status, usage = os.wait4(child.pid, 0)
    wall = time.perf_counter() - t
    if status != 0:
        raise SystemExit(f"{argv} failed ({status})")
    return wall, usage.ru_utime + usage.ru_stime, usage.ru_maxrss / 1024


def main():
    build = sys.argv[1]
    megabytes = float(sys.argv[2]) if len(sys.argv) > 2 else 50
    path = os.path.join(build, f"bench_{int(megabytes)}mb.dxf")
    if not os.path.exists(path):
        print(f"making {path} ...", flush=True)
        make(path, megabytes)
    size = os.path.getsize(path) / 1e6
    # Five runs of ours, reported by the median read (a first run after a
    # pause is often slower while the machine wakes up).
    runs = [json.loads(subprocess.run([os.path.join(build, "bench", "dxf_read_write"), path], capture_output=True,
                                      text=True, check=True).stdout) for _ in range(5)]
    runs.sort(key=lambda r: r["read_seconds"])
    ours = runs[len(runs) // 2]
    # envline info: read, every entity opened and its extents (analytic
    # for arcs, circles, ellipses and bulges; blocks boxed once), counts.
    info_runs = []
    for _ in range(5):
        info_runs.append(timed_child([os.path.join(build, "app", "cli", "envline"), "info", path, "--json"]))
    info_runs.sort(key=lambda r: r[1])
    info_seconds, info_cpu, info_peak = info_runs[len(info_runs) // 2]
    t = time.perf_counter()
    doc = ezdxf.readfile(path)
    ez_seconds = time.perf_counter() - t
    t = time.perf_counter()
    ez_box = ezdxf.bbox.extents(doc.modelspace(), fast=True)
    ez_extents_seconds = time.perf_counter() - t
    ez_peak = resource.getrusage(resource.RUSAGE_SELF).ru_maxrss / 1024
    print(f"file                {size:.1f} MB")
    print(f"envline read        {ours['read_mb_s']:.0f} MB/s ({ours['read_seconds']:.3f} s), median of 5; "
          f"best {runs[0]['read_mb_s']:.0f}, worst {runs[-1]['read_mb_s']:.0f} MB/s")
    print(f"envline open all    {ours['open_all_seconds']:.3f} s to open each of {ours['opened']} model-space entities "
          f"once (common kinds are built on first use); read + open all "
          f"{size / (ours['read_seconds'] + ours['open_all_seconds']):.0f} MB/s")
    print(f"envline write       {ours['write_mb_s']:.0f} MB/s ({ours['write_seconds']:.3f} s), "
          f"output identical: {ours['identical']}")
    print(f"envline peak memory {ours['read_peak_mb']:.0f} MB reading ({ours['read_peak_mb'] / size:.2f} x the file), "
          f"{ours['peak_mb']:.0f} MB with the written copy (the bench also holds the file it compares with)")
    print(f"ezdxf.readfile      {size / ez_seconds:.1f} MB/s ({ez_seconds:.2f} s), peak {ez_peak:.0f} MB")
    print(f"ratio               envline reads {ez_seconds / ours['read_seconds']:.0f} x faster than ezdxf")
    print(f"envline info        {size / info_seconds:.0f} MB/s ({info_seconds:.3f} s wall, {info_cpu:.3f} s CPU = "
          f"{size / info_cpu:.0f} MB/s, peak {info_peak:.0f} MB; median of 5 by CPU: start, read, open, extents, "
          f"counts; target 300 MB/s)")
    print(f"ezdxf read+extents  {size / (ez_seconds + ez_extents_seconds):.1f} MB/s "
          f"({ez_seconds:.2f} s + {ez_extents_seconds:.2f} s for bbox.extents, fast), box "
          f"({ez_box.extmin.x:g}, {ez_box.extmin.y:g}) - ({ez_box.extmax.x:g}, {ez_box.extmax.y:g})")


if __name__ == "__main__":
    main()
