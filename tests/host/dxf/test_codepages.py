#!/usr/bin/python3
"""Converting a UTF-8 drawing (R2007+) with Chinese names to R2000 or R2004
keeps it readable: the code page becomes one that holds the text
(ANSI_936), ezdxf reads the names and texts back unchanged, and converting
back to R2018 gives the same names. --codepage chooses the page; text the
page cannot hold gives a warning.

usage: test_codepages.py BUILD_DIR
"""
import os
import subprocess
import sys
import tempfile

import ezdxf

sys.path.insert(0, os.path.join(os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__)))), "app"))
from cli_cases import Cases  # noqa: E402

LAYER, TEXT, BLOCK = "中心线", "刀具编号 T-1001", "图框"


def main():
    envline = os.path.join(sys.argv[1], "app", "cli", "envline")
    tmp = tempfile.mkdtemp(prefix="envline_codepage_")
    src = os.path.join(tmp, "chinese_r2018.dxf")
    doc = ezdxf.new("R2018")
    doc.layers.add(LAYER, linetype="CENTER" if "CENTER" in doc.linetypes else "Continuous")
    doc.blocks.new(BLOCK).add_line((0, 0), (1, 1))
    msp = doc.modelspace()
    msp.add_line((0, 0), (10, 0), dxfattribs={"layer": LAYER})
    msp.add_text(TEXT, dxfattribs={"layer": LAYER})
    msp.add_blockref(BLOCK, (5, 5))
    doc.saveas(src)
    cases = Cases()

    def convert(src_path, out, *extra):
        r = subprocess.run([envline, "convert", src_path, "-o", out, *extra], capture_output=True, text=True)
        assert r.returncode == 0, f"exit {r.returncode}: {r.stderr}"
        return r.stderr

    def names_of(path):
        d = ezdxf.readfile(path)
        assert not d.audit().has_errors, f"{path} does not audit clean"
        texts = [e.dxf.text for e in d.modelspace().query("TEXT")]
        return d, {l.dxf.name for l in d.layers}, texts, {b.name for b in d.blocks}

    for version in ("R2000", "R2004"):
        def to_old(version=version):
            out = os.path.join(tmp, f"chinese_{version}.dxf")
            warnings = convert(src, out, "--version", version)
            assert "escapes" not in warnings, warnings
            d, layers, texts, blocks = names_of(out)
            assert d.header["$DWGCODEPAGE"] == "ANSI_936", d.header["$DWGCODEPAGE"]
            assert LAYER in layers, layers
            assert texts == [TEXT], texts
            assert BLOCK in blocks, blocks
            with open(out, "rb") as f:
                assert b"\\U+" not in f.read(), "escapes written"
            back = os.path.join(tmp, f"back_from_{version}.dxf")
            convert(out, back, "--version", "R2018")
            _, layers, texts, blocks = names_of(back)
            assert LAYER in layers and texts == [TEXT] and BLOCK in blocks, (layers, texts, blocks)
        cases(f"a Chinese UTF-8 drawing converted to {version} reads back in ezdxf", to_old)

    def forced_page():
        out = os.path.join(tmp, "forced_1252.dxf")
        warnings = convert(src, out, "--version", "R2000", "--codepage", "ANSI_1252")
        assert "cannot be held" in warnings and "ANSI_1252" in warnings, warnings
        d = ezdxf.readfile(out)
        assert d.header["$DWGCODEPAGE"] == "ANSI_1252"

    def unknown_page():
        r = subprocess.run([envline, "convert", src, "-o", os.path.join(tmp, "x.dxf"), "--codepage", "KLINGON"],
                           capture_output=True, text=True)
        assert r.returncode == 2 and "code page" in r.stderr, (r.returncode, r.stderr)

    cases("--codepage ANSI_1252 is obeyed with a warning for the Chinese text", forced_page)
    cases("an unknown --codepage is a usage error", unknown_page)
    return cases.report()


if __name__ == "__main__":
    sys.exit(main())
