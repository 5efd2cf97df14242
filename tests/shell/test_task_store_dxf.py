#!/usr/bin/python3
"""The batch task store in drawing files, judged by ezdxf:
- a store we save reads back in ezdxf as the xrecord "BLX" in the
  dictionary "VKDJBLX" of the named objects, with the expected group codes
  and values, its references naming the drawing's lines (R2000 and R2018,
  Chinese names included), loads back unchanged and saves again byte for
  byte;
- version 1 records that ezdxf writes load with the default parameters;
- damaged records (wrong kinds, counts past the data, a negative count,
  another program's data) load as an empty list with a warning, and saving
  leaves the rest of the drawing byte-identical;
- references to entities that no longer exist are dropped, each with a
  warning;
- a name with line breaks does not break the file: they are written in
  caret notation (^J) and read back so.

usage: test_task_store_dxf.py TASK_STORE_HELPER
"""
import json
import os
import subprocess
import sys
import tempfile

import ezdxf
from ezdxf.lldxf.encoding import decode_dxf_unicode

HELPER = sys.argv[1]
TMP = tempfile.mkdtemp(prefix="envline-store-")
failures = []
passed = 0

DEFAULTS = {"remove_dashed": True, "tol_point": 0.0005, "tol_line": 0.001, "tol_fine": 1e-6, "step": 0.3,
            "break_length": 5.0, "axis_dir": 0}


def check(cond, what):
    global passed
    if cond:
        passed += 1
    else:
        failures.append(what)
        print("FAIL:", what)


def helper(*args):
    r = subprocess.run([HELPER, *args], capture_output=True, text=True)
    if r.returncode:
        raise RuntimeError(f"{args}: {r.stderr}")
    return json.loads(r.stdout)


def record_tags(doc):
    rec = doc.rootdict["VKDJBLX"]["BLX"]
    # Files before R2007 carry characters beyond their code page as \U+XXXX.
    return [(t.code, decode_dxf_unicode(t.value) if isinstance(t.value, str) else t.value) for t in rec.tags]


def expected_tags(tasks):
    """The record as its layout says, built here from the task list."""
    tags = [(90, 2), (90, len(tasks))]
    for t in tasks:
        tags += [(1, t["name"]), (90, t["exec"]), (90, t["export"]), (90, len(t["tools"]))]
        for tool in t["tools"]:
            tags += [(1, tool["name"]), (10, tuple(tool["centre"])), (90, len(tool["entities"]))]
            tags += [(331, h) for h in tool["entities"]]
            tags += [(331, tool["outline"]), (90, tool["exec"]), (90, tool["export"])]
        p = t["params"]
        tags += [(290, 1 if p["remove_dashed"] else 0), (40, p["tol_point"]), (40, p["tol_line"]),
                 (40, p["tol_fine"]), (40, p["step"]), (40, p["break_length"]), (90, p["axis_dir"])]
    return tags


def same_tags(a, b):
    if len(a) != len(b):
        return False
    for (ca, va), (cb, vb) in zip(a, b):
        if ca != cb:
            return False
        if ca == 10:
            if any(abs(x - y) > 1e-12 for x, y in zip(va, vb)):
                return False
        elif ca == 331:
            if va.upper() != vb.upper():
                return False
        elif va != vb:
            return False
    return True


def round_trip(version):
    path = os.path.join(TMP, f"saved-{version}.dxf")
    written = helper("write", path, version)
    doc = ezdxf.readfile(path)
    auditor = doc.audit()
    check(not auditor.has_errors, f"{version}: ezdxf audit errors {[str(e) for e in auditor.errors]}")
    check(isinstance(doc.rootdict.get("VKDJBLX"), ezdxf.entities.Dictionary), f"{version}: VKDJBLX is a dictionary")
    tags = record_tags(doc)
    check(same_tags(tags, expected_tags(written["tasks"])), f"{version}: record tags {tags}")
    check(tags[2] == (1, "钻头 φ12 批量"), f"{version}: Chinese task name as ezdxf reads it: {tags[2]}")
    # Every reference names a line of model space.
    lines = {e.dxf.handle for e in doc.modelspace() if e.dxftype() == "LINE"}
    refs = [v for c, v in tags if c == 331 and v != "0"]
    check(len(refs) == 5 and all(r in lines for r in refs), f"{version}: references {refs} name lines {lines}")
    again = os.path.join(TMP, f"saved-again-{version}.dxf")
    back = helper("dump", path, again)
    check(back["found"] and back["tasks"] == written["tasks"], f"{version}: loads back unchanged: {back}")
    check(back["messages"] == "", f"{version}: no messages on load: {back['messages']}")
    # Saving the loaded, unchanged store changes nothing in the drawing.
    with open(path, "rb") as a, open(again, "rb") as b:
        check(a.read() == b.read(), f"{version}: saved again byte for byte")


def drawing_with_record(name, version, make_tags, codepage=None):
    """An ezdxf drawing with lines and the record that make_tags(lines) gives."""
    doc = ezdxf.new(version)
    if codepage:
        doc.header["$DWGCODEPAGE"] = codepage
    msp = doc.modelspace()
    lines = [msp.add_line((0, y), (20, y)).dxf.handle for y in range(4)]
    dictionary = doc.rootdict.add_new_dict("VKDJBLX")
    rec = dictionary.add_xrecord("BLX")
    rec.reset(make_tags(doc, lines))
    path = os.path.join(TMP, name + ".dxf")
    doc.saveas(path)
    return path


def version_one():
    def tags(doc, lines):
        return [(90, 1), (90, 2),
                (1, "旧任务"), (90, 1), (90, 0), (90, 1),
                (1, "刀具一"), (10, (5.0, 2.5, 0.0)), (90, 2), (331, lines[0]), (331, lines[2]), (331, lines[3]),
                (90, 1), (90, 0),
                (1, "empty"), (90, 0), (90, 0), (90, 0)]

    for version, codepage in (("R2000", "ANSI_936"), ("R2010", None)):
        path = drawing_with_record("v1-" + version, version, tags, codepage)
        got = helper("dump", path)
        doc = ezdxf.readfile(path)
        lines = [e.dxf.handle for e in doc.modelspace()]
        want = [{"name": "旧任务", "exec": 1, "export": 0, "params": DEFAULTS,
                 "tools": [{"name": "刀具一", "centre": [5.0, 2.5, 0.0], "entities": [lines[0], lines[2]],
                            "outline": lines[3], "exec": 1, "export": 0}]},
                {"name": "empty", "exec": 0, "export": 0, "tools": [], "params": DEFAULTS}]
        check(got["found"] and got["tasks"] == want, f"version 1 in {version}: {got}")
        check(got["messages"] == "", f"version 1 in {version}: no messages: {got['messages']}")


def objects_of(text):
    """The file's objects as tag blocks keyed by handle (header separately)."""
    lines = text.split("\n")
    blocks, current = [], []
    for i in range(0, len(lines) - 1, 2):
        if lines[i].strip() == "0" and current:
            blocks.append(current)
            current = []
        current.append((lines[i], lines[i + 1]))
    blocks.append(current)
    return blocks


def damaged():
    def good(doc, lines):
        return [(90, 2), (90, 1), (1, "任务"), (90, 0), (90, 0), (90, 1),
                (1, "t"), (10, (0.0, 0.0, 0.0)), (90, 1), (331, lines[0]), (331, "0"), (90, 0), (90, 0),
                (290, 1), (40, 0.0005), (40, 0.001), (40, 1e-6), (40, 0.3), (40, 5.0), (90, 0)]

    cases = {
        "wrong-kind-name": lambda d, l: [(90, 2), (90, 1), (70, 5)] + good(d, l)[3:],
        "string-for-count": lambda d, l: good(d, l)[:5] + [(1, "1")] + good(d, l)[6:],
        "task-count-past-data": lambda d, l: [(90, 2), (90, 3)] + good(d, l)[2:],
        "entity-count-past-data": lambda d, l: good(d, l)[:8] + [(90, 400)] + good(d, l)[9:],
        "negative-tool-count": lambda d, l: good(d, l)[:5] + [(90, -2)] + good(d, l)[6:],
        "missing-parameters": lambda d, l: good(d, l)[:-3],
        "real-for-reference": lambda d, l: good(d, l)[:9] + [(40, 1.0)] + good(d, l)[10:],
        "foreign-data": lambda d, l: [(1, "some other program"), (40, 3.5), (10, (1.0, 2.0, 3.0))],
    }
    path = drawing_with_record("good", "R2010", good)
    got = helper("dump", path)
    check(len(got["tasks"]) == 1 and got["messages"] == "", f"the undamaged record loads: {got}")
    for name, make in cases.items():
        path = drawing_with_record("damaged-" + name, "R2010", make)
        out = os.path.join(TMP, "damaged-" + name + "-saved.dxf")
        got = helper("dump", path, out)
        check(got["found"] and got["tasks"] == [], f"{name}: empty list: {got['tasks']}")
        check("damaged" in got["messages"], f"{name}: a warning: {got['messages']!r}")
        # Saving replaced the record with an empty one and changed nothing else.
        with open(path, encoding="utf-8") as f:
            before = objects_of(f.read())
        with open(out, encoding="utf-8") as f:
            after = objects_of(f.read())
        rec_handle = ezdxf.readfile(path).rootdict["VKDJBLX"]["BLX"].dxf.handle

        def others(blocks):
            return [b for b in blocks if not (b[0][1] == "XRECORD" and b[1][1] == rec_handle)]

        check(others(before) == others(after), f"{name}: the rest of the drawing is byte-identical")
        check(record_tags(ezdxf.readfile(out)) == [(90, 2), (90, 0)], f"{name}: saved as an empty list")


def dangling():
    def tags(doc, lines):
        msp = doc.modelspace()
        gone = msp.add_circle((0, 0), 1)
        gone_handle = gone.dxf.handle
        msp.delete_entity(gone)
        layer = doc.layers.get("0").dxf.handle
        return [(90, 2), (90, 1), (1, "任务"), (90, 1), (90, 1), (90, 1),
                (1, "刀具"), (10, (1.0, 2.0, 0.0)), (90, 5),
                (331, lines[0]), (331, gone_handle), (331, "FFFFF"), (331, layer), (331, lines[1]),
                (331, gone_handle), (90, 1), (90, 1),
                (290, 0), (40, 0.0005), (40, 0.001), (40, 1e-6), (40, 0.3), (40, 5.0), (90, 1)]

    path = drawing_with_record("dangling", "R2013", tags)
    got = helper("dump", path)
    doc = ezdxf.readfile(path)
    lines = [e.dxf.handle for e in doc.modelspace()]
    tool = got["tasks"][0]["tools"][0] if got["tasks"] and got["tasks"][0]["tools"] else {}
    check(tool.get("entities") == lines[:2], f"dangling: live references kept in order: {tool}")
    check(tool.get("outline") == "0", f"dangling: the vanished outline is dropped: {tool}")
    warnings = [m for m in got["messages"].split("\n") if m]
    check(len(warnings) == 4, f"dangling: one warning per dropped reference: {warnings}")
    check(all("任务" in w and "刀具" in w for w in warnings), f"dangling: warnings name task and tool: {warnings}")
    check(got["tasks"][0]["params"]["axis_dir"] == 1, f"dangling: the rest of the task loads: {got['tasks']}")


def line_breaks():
    name = "行一\n行二\r\n\x01"
    for version in ("R2000", "R2018"):
        path = os.path.join(TMP, f"breaks-{version}.dxf")
        written = helper("write", path, version, name)
        doc = ezdxf.readfile(path)
        auditor = doc.audit()
        check(not auditor.has_errors, f"breaks {version}: ezdxf audit errors {[str(e) for e in auditor.errors]}")
        for t in written["tasks"]:
            t["name"] = t["name"].replace("\n", "^J").replace("\r", "^M").replace("\x01", "^A")
        check(same_tags(record_tags(doc), expected_tags(written["tasks"])),
              f"breaks {version}: the record as written, the name in caret notation: {record_tags(doc)[-10:]}")
        back = helper("dump", path)
        check(back["tasks"] == written["tasks"] and back["messages"] == "", f"breaks {version}: loads back: {back}")


def main():
    for version in ("R2000", "R2018"):
        round_trip(version)
    version_one()
    damaged()
    dangling()
    line_breaks()
    print(f"{passed} passed, {len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
