#!/usr/bin/python3
"""Compares two drawings as ezdxf sees them: ORIGINAL and the file envline
wrote from it. The written file must load without recovery and audit clean;
both must hold the same entities (kind, handle, layer, attributes), table
records and objects. Prints every difference; exits 1 when there is one.

usage: compare_drawings.py ORIGINAL WRITTEN [--ignore-handles H,...] [--repaired] [--converted] [--rebuilt]
  --repaired   tables and objects may differ (the written file was repaired)
  --converted  the written file is in another version
  --rebuilt    the written entities were encoded afresh: an attribute written
               with its default value is the same as one left out
"""
import math
import sys

import ezdxf
from ezdxf import recover


def load(path, allow_recover):
    try:
        return ezdxf.readfile(path), False
    except Exception:
        if not allow_recover:
            raise
        doc, _ = recover.readfile(path)
        return doc, True


def same_value(a, b):
    if isinstance(a, dict) and isinstance(b, dict):
        return a.keys() == b.keys() and all(same_value(a[k], b[k]) for k in a)
    if isinstance(a, str) and isinstance(b, str):
        # A line break in text is "^J" in ASCII files and a real one in binary ones.
        return a.replace("^J", "\n") == b.replace("^J", "\n")
    if isinstance(a, float) or isinstance(b, float):
        try:
            return math.isclose(float(a), float(b), rel_tol=1e-9, abs_tol=1e-9)
        except (TypeError, ValueError):
            return False
    if isinstance(a, (tuple, list)) or hasattr(a, "__iter__") and not isinstance(a, str):
        try:
            la, lb = list(a), list(b)
        except TypeError:
            return a == b
        return len(la) == len(lb) and all(same_value(x, y) for x, y in zip(la, lb))
    return a == b


def is_default(e, key, value):
    try:
        default = e.dxf.get_default(key)
    except Exception:
        return False
    return default is not None and same_value(value, default)


def entity_key(e):
    return (e.dxftype(), e.dxf.handle)


def describe_entities(layout, rebuilt=False):
    out = {}
    for e in layout:
        attribs = e.dxfattribs(drop={"owner", "handle"})
        if rebuilt:
            attribs = {k: v for k, v in attribs.items() if not is_default(e, k, v)}
        extra = []
        if e.dxftype() == "LWPOLYLINE":
            extra = [tuple(p) for p in e.get_points()]
        elif e.dxftype() == "POLYLINE":
            extra = [tuple(v.dxf.location) for v in e.vertices]
        elif e.dxftype() == "SPLINE":
            extra = [tuple(p) for p in e.control_points] + [tuple(p) for p in e.fit_points]
        elif e.dxftype() == "INSERT":
            extra = [(a.dxf.tag, a.dxf.text) for a in e.attribs]
        if e.has_xdata_list if hasattr(e, "has_xdata_list") else False:
            pass
        xdata = []
        if e.xdata:
            for app in e.xdata.data:
                xdata.append((app, [tuple(t) for t in e.xdata.get(app)]))
        out[entity_key(e)] = (attribs, extra, xdata)
    return out


def compare_maps(name, a, b, problems, ignore):
    for key in a:
        if key[1] in ignore:
            continue
        if key not in b:
            problems.append(f"{name}: {key} is missing")
            continue
        if not same_value(a[key], b[key]):
            problems.append(f"{name}: {key} differs:\n    {a[key]}\n    {b[key]}")
    for key in b:
        if key not in a and key[1] not in ignore:
            problems.append(f"{name}: {key} was added")


def main():
    args = sys.argv[1:]
    ignore = set()
    repaired = "--repaired" in args
    converted = "--converted" in args
    rebuilt = "--rebuilt" in args
    if "--ignore-handles" in args:
        i = args.index("--ignore-handles")
        ignore = set(args[i + 1].split(","))
        del args[i:i + 2]
    args = [a for a in args if a not in ("--repaired", "--converted", "--rebuilt")]
    original_path, written_path = args
    original, original_recovered = load(original_path, True)
    written, recovered = load(written_path, repaired)
    problems = []
    if recovered:
        problems.append("the written file needed recovery to load")
    # Auditing repairs what it finds, so it runs on a copy of its own; a
    # defect the original already had is not ours.
    original_errors = {e.message for e in load(original_path, True)[0].audit().errors}
    for err in load(written_path, True)[0].audit().errors:
        if err.message not in original_errors:
            problems.append(f"audit error: {err.message}")
    if original.dxfversion != written.dxfversion and not converted:
        problems.append(f"version {original.dxfversion} became {written.dxfversion}")
    compare_maps("modelspace", describe_entities(original.modelspace(), rebuilt),
                 describe_entities(written.modelspace(), rebuilt), problems, ignore)
    for block in original.blocks:
        other = written.blocks.get(block.name)
        if other is None:
            problems.append(f"block {block.name} is missing")
            continue
        compare_maps(f"block {block.name}", describe_entities(block, rebuilt), describe_entities(other, rebuilt),
                     problems, ignore)
    for table in ("layers", "linetypes", "styles", "dimstyles", "appids", "ucs", "views", "viewports"):
        names_a = sorted(str(r.dxf.name) for r in getattr(original, table))
        names_b = sorted(str(r.dxf.name) for r in getattr(written, table))
        if names_a != names_b and not repaired:
            problems.append(f"table {table}: {names_a} != {names_b}")
    for layer in original.layers:
        if layer.dxf.handle in ignore:
            continue
        other = written.layers.get(layer.dxf.name) if written.layers.has_entry(layer.dxf.name) else None
        if other is None:
            continue
        for attr in ("color", "linetype", "flags"):
            if layer.dxf.get(attr) != other.dxf.get(attr):
                problems.append(f"layer {layer.dxf.name}: {attr} {layer.dxf.get(attr)} != {other.dxf.get(attr)}")
    objs_a = {(o.dxftype(), o.dxf.handle) for o in original.objects}
    objs_b = {(o.dxftype(), o.dxf.handle) for o in written.objects}
    missing = sorted(k for k in objs_a - objs_b if k[1] not in ignore)
    # Objects of R12 files and of recovered files are made by ezdxf itself.
    synthetic = original.dxfversion == "AC1009" or original_recovered
    if missing and not repaired and not synthetic:
        problems.append(f"objects missing: {missing[:10]}")
    for p in problems[:40]:
        print(p)
    if len(problems) > 40:
        print(f"... and {len(problems) - 40} more")
    return 1 if problems else 0


if __name__ == "__main__":
    sys.exit(main())
