#!/usr/bin/python3
"""Checks what dxf_edit_helper wrote, as ezdxf reads it: the new outline and
its bulges, the task store xrecord, the layer switched off, the moved line,
the erased circle, the new text, and that nothing else changed.

usage: check_edit.py ORIGINAL EDITED CHANGED_HANDLES ADDED_HANDLES
"""
import math
import subprocess
import sys

import ezdxf


def close(a, b):
    return all(math.isclose(x, y, abs_tol=1e-9) for x, y in zip(a, b))


def main():
    original_path, edited_path, changed, added = sys.argv[1:5]
    changed = [h for h in changed.split(",") if h]
    added = [h for h in added.split(",") if h]
    original = ezdxf.readfile(original_path)
    doc = ezdxf.readfile(edited_path)
    problems = []
    unicode = doc.dxfversion >= "AC1021" or original.header.get("$DWGCODEPAGE") == "ANSI_936"
    msp = doc.modelspace()
    outline = [e for e in msp if e.dxf.layer == "TempEncircleLine" and e.dxftype() in ("LWPOLYLINE", "POLYLINE")]
    expect = [(0, 0, 0.5), (10, 0, 0), (10, 5, -0.25)]
    if len(outline) != 1:
        problems.append(f"expected one outline on TempEncircleLine, found {len(outline)}")
    else:
        o = outline[0]
        if o.dxftype() == "LWPOLYLINE":
            pts = [(x, y, b) for x, y, b in o.get_points("xyb")]
        else:
            pts = [(v.dxf.location.x, v.dxf.location.y, v.dxf.bulge) for v in o.vertices]
        if len(pts) != 3 or not all(close(p, q) for p, q in zip(pts, expect)):
            problems.append(f"outline vertices {pts} != {expect}")
        if not o.is_closed:
            problems.append("outline is not closed")
        if doc.dxfversion == "AC1009" and o.dxftype() != "POLYLINE":
            problems.append("an R12 outline must be a POLYLINE")
    if doc.dxfversion >= "AC1015":
        try:
            rec = doc.rootdict["VKDJBLX"]["BLX"]
            tags = [(t.code, t.value) for t in rec.tags]
            want = [(90, 2), (90, 1), (1, "任务一" if unicode else "TASK-1"), (40, 0.0005), (10, (1.0, 2.0, 3.0)),
                    (70, 1)]
            if len(tags) != len(want) or any(a[0] != b[0] or (a[1] != b[1] and not close(a[1], b[1]))
                                             for a, b in zip(tags, want)):
                problems.append(f"xrecord holds {tags}")
        except Exception as exc:  # noqa: BLE001 - any failure is a finding
            problems.append(f"task store not found: {exc}")
    dim_layer = "尺寸线" if unicode else "DIMENSIONS"
    if not doc.layers.get(dim_layer).is_off():
        problems.append(f"layer {dim_layer} should be off")
    first_line = next(e for e in original.modelspace() if e.dxftype() == "LINE")
    moved = doc.entitydb.get(first_line.dxf.handle)
    if moved is None or moved.dxf.layer != "AXIS" or not close(moved.dxf.end, first_line.dxf.end + (1, 0, 0)):
        problems.append("the first line was not moved to layer AXIS and lengthened")
    first_circle = next(e for e in original.modelspace() if e.dxftype() == "CIRCLE")
    if doc.entitydb.get(first_circle.dxf.handle) is not None and doc.entitydb.get(first_circle.dxf.handle).is_alive:
        if first_circle.dxf.handle in [e.dxf.handle for e in msp]:
            problems.append("the erased circle is still in model space")
    texts = [e.dxf.text for e in msp.query("TEXT") if e.dxf.layer == dim_layer]
    if ("计算包络线成功" if unicode else "OUTLINE OK") not in texts:
        problems.append(f"new text missing: {texts}")
    # Everything else is as it was.
    compare = subprocess.run([sys.executable, sys.argv[0].replace("check_edit.py", "compare_drawings.py"),
                              original_path, edited_path, "--ignore-handles", ",".join(changed + added),
                              "--repaired"], capture_output=True, text=True)
    for line in compare.stdout.splitlines():
        if not line.startswith("table layers"):  # the new layer is expected
            problems.append(line)
    for p in problems:
        print(p)
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
