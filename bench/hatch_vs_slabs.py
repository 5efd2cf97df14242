#!/usr/bin/python3
"""The boundary-tracing outline beside the slab-cutting one on every sample
tool: vertices, area, compute time, and how far apart the two outlines lie
(largest distance of either outline from the other, arcs sampled).

usage: hatch_vs_slabs.py BUILD_DIR [DRAWING.dxf WINDOW CENTRE ...]
Without drawings it runs the samples (samples/samples.tsv).
"""
import json
import math
import os
import subprocess
import sys
import tempfile

import ezdxf

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))


def outline_points(path):
    doc = ezdxf.readfile(path)
    plines = [e for e in doc.modelspace().query("LWPOLYLINE") if e.dxf.layer == "TempEncircleLine"]
    if not plines:
        return []
    pts = []
    v = list(plines[-1].get_points("xyb"))
    for i, (x, y, b) in enumerate(v):
        x2, y2, _ = v[(i + 1) % len(v)]
        pts.append((x, y))
        if b:  # sample the arc
            theta = 4 * math.atan(b)
            chord = math.hypot(x2 - x, y2 - y)
            r = chord / (2 * math.sin(abs(theta) / 2))
            mx, my = (x + x2) / 2, (y + y2) / 2
            d = math.sqrt(max(r * r - chord * chord / 4, 0))
            nx, ny = -(y2 - y) / chord, (x2 - x) / chord
            s = 1 if (b > 0) == (abs(theta) < math.pi) else -1
            cx, cy = mx + s * nx * d, my + s * ny * d
            a0 = math.atan2(y - cy, x - cx)
            for k in range(1, 16):
                t = a0 + theta * k / 16
                pts.append((cx + r * math.cos(t), cy + r * math.sin(t)))
    return pts


def seg_dist(p, a, b):
    dx, dy = b[0] - a[0], b[1] - a[1]
    l2 = dx * dx + dy * dy
    t = 0 if l2 == 0 else max(0, min(1, ((p[0] - a[0]) * dx + (p[1] - a[1]) * dy) / l2))
    return math.hypot(p[0] - a[0] - t * dx, p[1] - a[1] - t * dy)


def distance(p, poly):
    return min(seg_dist(p, poly[i], poly[(i + 1) % len(poly)]) for i in range(len(poly)))


def run(envline, drawing, window, centre, driver, out):
    cmd = [envline, "outline", drawing, "-o", out, "--window", window, "--centre", centre, "--json", "--driver", driver, "--method", "exact"]
    r = subprocess.run(cmd, capture_output=True, text=True)
    if r.returncode not in (0, 3):
        raise SystemExit(f"{' '.join(cmd)} failed: {r.stderr}")
    return json.loads(r.stdout)


def main():
    envline = os.path.join(sys.argv[1], "app", "cli", "envline")
    rows = []
    if len(sys.argv) > 2:
        args = sys.argv[2:]
        rows = [(args[i], args[i], args[i + 1], args[i + 2]) for i in range(0, len(args), 3)]
    else:
        with open(os.path.join(ROOT, "samples", "samples.tsv"), encoding="utf-8") as f:
            for line in list(f)[1:]:
                name, tool, window, centre = line.rstrip("\n").split("\t")
                rows.append((os.path.join(ROOT, "samples", name), tool, window, centre))
    print(f"{'tool':10} {'slabs: vert':>11} {'area':>9} {'ms':>7}   {'hatch: vert':>11} {'area':>9} {'ms':>7}"
          f"   {'area ratio':>10} {'max apart':>9}")
    with tempfile.TemporaryDirectory() as tmp:
        for drawing, tool, window, centre in rows:
            res, pts = {}, {}
            for driver in ("slabs", "hatch"):
                out = os.path.join(tmp, f"{driver}.dxf")
                res[driver] = run(envline, drawing, window, centre, driver, out)
                pts[driver] = outline_points(out) if res[driver]["status"] == "ok" else []
            s, h = res["slabs"], res["hatch"]
            cells = []
            for r in (s, h):
                o = r["outline"]
                cells.append(f"{len(o['vertices']) if o else 0:11} {o['area'] if o else 0:9.1f} {r['timings_ms']['compute']:7.1f}")
            if pts["slabs"] and pts["hatch"]:
                apart = max(max(distance(p, pts["hatch"]) for p in pts["slabs"]),
                            max(distance(p, pts["slabs"]) for p in pts["hatch"]))
                ratio = h["outline"]["area"] / s["outline"]["area"]
                tail = f"{ratio:10.4f} {apart:9.3f}"
            else:
                tail = f"{'-':>10} {'-':>9}"
            print(f"{os.path.basename(str(tool))[:10]:10} {cells[0]}   {cells[1]}   {tail}")


if __name__ == "__main__":
    main()
