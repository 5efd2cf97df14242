#!/usr/bin/python3
"""A task put into a drawing's store and saved with SAVE is found by a
second host process that opens the saved drawing before loading the module;
ezdxf reads the saved record and finds the drawing otherwise as it was.

usage: test_store_session.py STORE_SESSION_HELPER MODULE SAMPLE.dxf
"""
import json
import os
import shutil
import subprocess
import sys
import tempfile

import ezdxf
from ezdxf.lldxf.encoding import decode_dxf_unicode


def run(*args):
    r = subprocess.run(list(args), capture_output=True, text=True)
    if r.returncode:
        print(f"{args} failed: {r.stdout}{r.stderr}")
        sys.exit(1)
    return json.loads(r.stdout)


def main():
    helper, module, sample = sys.argv[1:4]
    tmp = tempfile.mkdtemp(prefix="envline-session-")
    drawing = os.path.join(tmp, "tool.dxf")
    shutil.copy(sample, drawing)
    failures = []

    def check(cond, what):
        if not cond:
            failures.append(what)
            print("FAIL:", what)

    saved = run(helper, "save", module, drawing)
    found = run(helper, "find", module, drawing)
    check(len(saved["tasks"]) == 1 and saved["tasks"][0]["tools"], f"the first session made a task: {saved}")
    check(found["tasks"] == saved["tasks"], f"the second session finds the task:\n{found}\n{saved}")
    check(found["messages"] == "", f"no warnings on loading: {found['messages']!r}")

    doc = ezdxf.readfile(drawing)
    original = ezdxf.readfile(sample)
    handles = {e.dxf.handle: e.dxftype() for e in doc.modelspace()}
    check(handles == {e.dxf.handle: e.dxftype() for e in original.modelspace()},
          "the saved drawing holds the sample's entities under their handles")
    rec = doc.rootdict["VKDJBLX"]["BLX"]
    # Files before R2007 carry characters beyond their code page as \U+XXXX.
    tags = [(t.code, decode_dxf_unicode(t.value) if isinstance(t.value, str) else t.value) for t in rec.tags]
    check(tags[:3] == [(90, 2), (90, 1), (1, "批量任务 一")], f"the record as ezdxf reads it: {tags[:3]}")
    refs = [v for c, v in tags if c == 331 and v != "0"]
    tool_refs = [h for t in saved["tasks"][0]["tools"] for h in t["entities"] + [t["outline"]] if h != "0"]
    check(sorted(refs) == sorted(tool_refs) and all(r in handles for r in refs),
          "every reference in the record names an entity of the drawing")
    print("passed" if not failures else f"{len(failures)} failed")
    return 1 if failures else 0


if __name__ == "__main__":
    sys.exit(main())
