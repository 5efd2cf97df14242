#!/usr/bin/python3
"""End-to-end tests of `envline batch` on the sample sheet of three framed
tools: tasks made, tools added from frames and by window, run, exported,
saved and read back; states, exit codes and JSON; the report read back by
openpyxl; ezdxf audits every drawing written.

usage: test_batch_cli.py BUILD_DIR
"""
import csv
import json
import os
import subprocess
import sys
import tempfile
import unicodedata

import ezdxf

from cli_cases import ROOT, Cases

BUILD = sys.argv[1]
ENVLINE = os.path.join(BUILD, "app", "cli", "envline")
SHEET = os.path.join(ROOT, "samples", "tool_sheet.dxf")
TMP = tempfile.mkdtemp(prefix="envline_batch_cli_")


def batch(*args, code=0):
    p = subprocess.run([ENVLINE, "batch", *args], capture_output=True, text=True)
    assert p.returncode == code, f"exit {p.returncode}, wanted {code}: {' '.join(args)}\n{p.stdout}\n{p.stderr}"
    return p


def batch_json(*args, code=0):
    p = batch(*args, "--json", code=code)
    return json.loads(p.stdout)


def audited(path):
    doc = ezdxf.readfile(path)
    auditor = doc.audit()
    assert not auditor.has_errors, [str(e.message) for e in auditor.errors]
    return doc


def path(name):
    return os.path.join(TMP, name)


def display_column(line, word):
    prefix = line[:line.index(word)]
    return sum(2 if unicodedata.east_asian_width(c) in "WF" else 1 for c in prefix)


cases = Cases()
state = {}


def sheet_task():
    out = path("sheet.dxf")
    batch(SHEET, "new-task", "铣刀组", "-o", out)
    r = batch_json(out, "add-frames", "铣刀组", "--in-place")
    assert [t["tool"] for t in r["tools"]] == ["T-1001", "T-1003", "T-1004"], r
    r = batch_json(out, "tasks")
    tools = r["tasks"][0]["tools"]
    assert r["tasks"][0]["exec_text"] == "未开始" and len(tools) == 3, r
    assert all(t["entities"] > 5 and t["centre"][1] == 0 for t in tools), tools
    # The listing's state columns line up under their titles on a terminal,
    # Chinese task names (two columns a character) included.
    listing = batch(out, "tasks").stdout.splitlines()
    starts = {display_column(line, word) for line in listing for word in ("执行状态", "未开始") if word in line}
    assert len(starts) == 1 and len(listing) == 6, listing
    audited(out)
    state["sheet"] = out


def run_and_export():
    out = state["sheet"]
    r = batch_json(out, "run", "--in-place")
    assert r["summary"]["computed"] == 3 and r["summary"]["failed"] == 0, r
    assert all(t["outline"] for t in r["tools"]), r
    r = batch_json(out, "export", "1", "--dir", path("solids"), "--formats", "sat,step",
                   "--report", path("report.xlsx"), "--in-place")
    assert r["summary"]["exported"] == 3, r
    names = sorted(os.listdir(path("solids")))
    assert names == ["T-1001.sat", "T-1001.step", "T-1003.sat", "T-1003.step", "T-1004.sat", "T-1004.step"], names
    doc = audited(out)
    msp = doc.modelspace()
    assert len(msp.query("3DSOLID")) == 0, "a solid stayed in the drawing"
    assert len(msp.query('LWPOLYLINE[layer=="TempEncircleLine"]')) == 3
    # Saved and read back: the states survive.
    r = batch_json(out, "tasks")
    task = r["tasks"][0]
    assert (task["exec_text"], task["export_text"]) == ("已完成", "已完成"), task
    assert all(t["exec_state"] == 1 and t["export_state"] == 1 and t["outline"] for t in task["tools"]), task


def report_reads_back():
    import openpyxl
    ws = openpyxl.load_workbook(path("report.xlsx")).active
    rows = [[c.value for c in r] for r in ws.iter_rows()]
    assert rows[0][:4] == ["任务名称", "刀具名称", "执行状态", "导出状态"], rows[0]
    assert [r[1] for r in rows[1:]] == ["T-1001", "T-1003", "T-1004"], rows
    for r in rows[1:]:
        assert r[0] == "铣刀组" and r[2] == "已完成" and r[3] == "已完成", r
        assert r[4] >= 4 and r[5] > 0 and r[6] > 0 and r[7] > 0 and r[8].endswith(".step"), r


def recompute_replaces_outlines():
    out = path("again.dxf")
    batch(state["sheet"], "run", "铣刀组", "-o", out, "--report", path("again.csv"))
    doc = audited(out)
    assert len(doc.modelspace().query('LWPOLYLINE[layer=="TempEncircleLine"]')) == 3, "earlier outlines stayed"
    with open(path("again.csv"), encoding="utf-8-sig", newline="") as f:
        rows = list(csv.reader(f))
    assert len(rows) == 4 and rows[1][2] == "已完成", rows


def failing_tool_marks_task():
    out = path("fail.dxf")
    # A tool of nothing but a text (no outline can be made of it) between two good ones.
    doc = ezdxf.readfile(SHEET)
    text = doc.modelspace().add_text("no geometry", dxfattribs={"insert": (1000, 1000)})
    doc.saveas(path("with_text.dxf"))
    batch(path("with_text.dxf"), "new-task", "A", "-o", out)
    batch(out, "add-tool", "A", "--window", "-8,-13,118,21", "--centre", "auto", "--in-place")
    batch(out, "add-tool", "A", "--handles", text.dxf.handle, "--centre", "1000,1000", "--name", "   ", "--in-place")
    p = batch(out, "add-tool", "A", "--window", "192,-14,318,22", "--centre", "250,0", "--in-place")
    r = batch_json(out, "run", "--in-place", code=3)
    assert [t["ok"] for t in r["tools"]] == [True, False, True], r
    r = batch_json(out, "tasks")
    task = r["tasks"][0]
    assert task["exec_text"] == "生成错误", task
    assert [t["name"] for t in task["tools"]] == ["T-1001", "   ", "T-1003"], task
    assert [t["exec_text"] for t in task["tools"]] == ["已完成", "生成错误", "已完成"], task


def naming_outside_frames():
    out = path("named.dxf")
    batch(SHEET, "new-task", "B", "-o", out)
    p = batch(out, "add-tool", "B", "--window", "-500,-500,-400,-400", "--centre", "0,0", "--in-place", code=2)
    assert "no entity" in p.stderr, p.stderr
    # Entities that no frame holds: the proposal 0001 with the dialog's message.
    doc = ezdxf.readfile(SHEET)
    h = doc.modelspace().add_line((2000, 0), (2040, 0)).dxf.handle
    h2 = doc.modelspace().add_line((2000, 5), (2040, 5)).dxf.handle
    doc.saveas(path("loose.dxf"))
    batch(path("loose.dxf"), "new-task", "B", "-o", out)
    r = batch_json(out, "add-tool", "B", "--handles", f"{h},{h2}", "--centre", "2020,0", "--in-place")
    assert r["tool"] == "0001" and "未获取到图框中刀具编号，请手动输入" in r["warnings"][0], r
    # A part drawn upright: its centre line is listed but cannot be the axis.
    doc = ezdxf.readfile(SHEET)
    if "CENTER" not in doc.linetypes:
        doc.linetypes.add("CENTER", [2.0, 1.25, -0.25, 0.25, -0.25])
    msp = doc.modelspace()
    upright = [msp.add_line((3000, 0), (3000, 40), dxfattribs={"linetype": "CENTER"}).dxf.handle,
               msp.add_line((2995, 0), (2995, 40)).dxf.handle, msp.add_line((3005, 0), (3005, 40)).dxf.handle]
    doc.saveas(path("upright.dxf"))
    batch(path("upright.dxf"), "new-task", "C", "-o", out)
    p = batch(out, "add-tool", "C", "--handles", ",".join(upright), "--centre", "auto", "--in-place", code=2)
    assert "other centre line is not horizontal" in p.stderr, p.stderr
    r = json.loads(subprocess.run([ENVLINE, "info", path("upright.dxf"), "--json"], capture_output=True,
                                  text=True, check=True).stdout)
    assert [c for c in r["centre_lines"] if "vertical at x = 3000" in c], r["centre_lines"]


def usage_and_file_errors():
    batch(SHEET, "tasks")  # a drawing without a store: an empty list
    r = batch_json(SHEET, "tasks")
    assert r["tasks"] == [], r
    assert "名称不能为空" in batch(SHEET, "new-task", "", "-o", path("x.dxf"), code=2).stderr
    assert "line break" in batch(SHEET, "new-task", "a\nb", "-o", path("x.dxf"), code=2).stderr
    batch(SHEET, "new-task", "X", code=2)  # no -o: the input is never changed silently
    batch(SHEET, "run", "nope", "-o", path("x.dxf"), code=2)
    batch(state["sheet"], "delete-tool", "铣刀组", "T-9999", "-o", path("x.dxf"), code=2)
    batch(SHEET, "frobnicate", code=2)
    batch(path("missing.dxf"), "tasks", code=1)
    batch(state["sheet"], "run", "-o", "/nonexistent-dir/out.dxf", "--quiet", code=1)
    assert not os.path.exists(path("x.dxf"))


def params_write_back():
    out = path("params.dxf")
    batch(state["sheet"], "params", "铣刀组", "--side", "lower", "--point-tol", "0.002", "-o", out)
    r = batch_json(out, "params", "1")
    p = r["params"]
    assert p["side"] == "lower" and p["point_tol"] == 0.002 and p["line_tol"] == 0.001, p
    e = batch(out, "params", "1", "--step", "0.1mm", "--in-place", code=2).stderr
    assert "圆弧离散精度" in e and "请输入一个数字" in e, e


def delete_and_erase():
    out = path("deleted.dxf")
    batch(state["sheet"], "delete-tool", "铣刀组", "T-1003", "-o", out)
    doc = audited(out)
    assert len(doc.modelspace().query('LWPOLYLINE[layer=="TempEncircleLine"]')) == 2
    batch(out, "erase-outlines", "--in-place")
    assert len(audited(out).modelspace().query('LWPOLYLINE[layer=="TempEncircleLine"]')) == 0
    batch(out, "delete-task", "铣刀组", "--in-place")
    assert batch_json(out, "tasks")["tasks"] == []


def progress_lines():
    p = batch(state["sheet"], "run", "-o", path("p.dxf"))
    lines = [l for l in p.stderr.splitlines() if l.startswith("run ")]
    assert len(lines) == 3 and "(1/3): 已完成" in lines[0], p.stderr
    assert "执行任务结束: 3 tools, 3 computed, 0 failed" in p.stdout, p.stdout
    assert batch(state["sheet"], "run", "-o", path("p.dxf"), "--quiet").stderr == ""


cases("a task of the sheet's frames", sheet_task)
cases("run and export, saved and read back", run_and_export)
cases("the workbook report", report_reads_back)
cases("recomputing replaces the outlines; CSV report", recompute_replaces_outlines)
cases("a failing tool leaves its task in 生成错误", failing_tool_marks_task)
cases("tools outside frames are named 0001", naming_outside_frames)
cases("usage and file errors", usage_and_file_errors)
cases("parameters written back", params_write_back)
cases("deleting tasks and tools erases their outlines", delete_and_erase)
cases("progress and summary", progress_lines)
sys.exit(cases.report())
