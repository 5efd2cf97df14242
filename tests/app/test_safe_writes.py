#!/usr/bin/python3
"""Every file envline writes (DXF, SAT, STEP, STL, PNG, SVG) is written the
safe way: a failure (read-only or full file system) is exit 1 with the
reason and leaves the old file and no temporary behind; a symbolic link at
the target is followed and stays a link; the target's mode is kept and a
new file honours the umask; temporaries of a killed run are removed by the
next write into the folder.

usage: test_safe_writes.py BUILD_DIR
"""
import os
import shutil
import stat
import subprocess
import sys
import tempfile
import time

from cli_cases import ROOT, Cases, Envline, sample_rows, sha

WRITERS = {  # extension: outline options writing it
    "dxf": [],
    "sat": ["--sat"],
    "step": ["--step"],
    "stl": ["--stl"],
    "png": ["--png"],
    "svg": ["--svg"],
}


def main():
    envline = Envline(sys.argv[1])
    sample, _, window, centre = sample_rows()[0]
    src = os.path.join(ROOT, "samples", sample)
    cases = Cases()
    tmp = tempfile.mkdtemp(prefix="envline_safe_")

    def outline(target, ext, umask=None):
        """Writes one file of kind ext to target; the outline DXF goes beside it otherwise."""
        side = os.path.join(tmp, "side_" + ext + ".dxf")  # never on the file system under test
        out = ["-o", target] if ext == "dxf" else ["-o", side, *WRITERS[ext], target]
        code, _, err = envline("outline", src, "--window", window, "--centre", centre, *out, umask=umask)
        return code, err

    def leftovers(folder):
        return [n for n in os.listdir(folder) if ".envline-" in n or n.endswith(".tmp")]

    def mode_kept_and_umask():
        for ext in WRITERS:
            d = tempfile.mkdtemp(dir=tmp)
            target = os.path.join(d, "out." + ext)
            with open(target, "w") as f:
                f.write("old")
            os.chmod(target, 0o640)
            code, err = outline(target, ext)
            assert code == 0, f"{ext}: exit {code}: {err}"
            assert stat.S_IMODE(os.stat(target).st_mode) == 0o640, f"{ext}: mode {oct(os.stat(target).st_mode)}"
            fresh = os.path.join(d, "new." + ext)
            code, err = outline(fresh, ext, umask=0o077)
            assert code == 0, f"{ext}: exit {code}: {err}"
            assert stat.S_IMODE(os.stat(fresh).st_mode) == 0o600, f"{ext}: new file mode {oct(os.stat(fresh).st_mode)}"
            assert not leftovers(d), f"{ext}: left {leftovers(d)}"

    def symlink_followed():
        for ext in WRITERS:
            d = tempfile.mkdtemp(dir=tmp)
            os.mkdir(os.path.join(d, "real"))
            real = os.path.join(d, "real", "out." + ext)
            with open(real, "w") as f:
                f.write("old")
            link = os.path.join(d, "link." + ext)
            os.symlink(os.path.join("real", "out." + ext), link)
            code, err = outline(link, ext)
            assert code == 0, f"{ext}: exit {code}: {err}"
            assert os.path.islink(link), f"{ext}: the link was replaced by a file"
            assert os.path.getsize(real) > 3, f"{ext}: the file the link names was not written"
            assert not leftovers(d) and not leftovers(os.path.join(d, "real")), ext

    def stray_temporaries_removed():
        d = tempfile.mkdtemp(dir=tmp)
        old = os.path.join(d, ".out.dxf.envline-AbC123")
        young = os.path.join(d, ".out.dxf.envline-XyZ789")
        for p in (old, young):
            with open(p, "w") as f:
                f.write("half")
        hour_ago = time.time() - 3600
        os.utime(old, (hour_ago, hour_ago))
        code, err = outline(os.path.join(d, "out.dxf"), "dxf")
        assert code == 0, err
        assert not os.path.exists(old), "a temporary of a killed run was left"
        assert os.path.exists(young), "a temporary of a run that may still be writing was removed"

    def mounted(options):
        d = tempfile.mkdtemp(dir=tmp)
        r = subprocess.run(["mount", "-t", "tmpfs", "-o", options, "tmpfs", d], capture_output=True, text=True)
        return d if r.returncode == 0 else None

    def failing_file_systems():
        full = mounted("size=24k")
        if full is None:
            print("skipped: full and read-only file systems (cannot mount a tmpfs here)")
            return
        try:
            for ext in WRITERS:
                target = os.path.join(full, "out." + ext)
                with open(target, "w") as f:
                    f.write("old")
                filler = os.path.join(full, "filler")
                subprocess.run(["dd", "if=/dev/zero", "of=" + filler, "bs=1k", "count=64"], capture_output=True)
                before = sha(target)
                code, err = outline(target, ext)
                assert code == 1, f"{ext} on a full disk: exit {code}"
                assert "No space left" in err, f"{ext}: no reason given: {err}"
                assert sha(target) == before, f"{ext}: the old file changed"
                assert not leftovers(full), f"{ext}: left {leftovers(full)}"
                os.remove(filler)
        finally:
            subprocess.run(["umount", full])
        ro = mounted("ro,size=64k")
        try:
            for ext in WRITERS:
                code, err = outline(os.path.join(ro, "out." + ext), ext)
                assert code == 1, f"{ext} on a read-only file system: exit {code}"
                assert "Read-only file system" in err, f"{ext}: no reason given: {err}"
        finally:
            subprocess.run(["umount", ro])

    cases("the target's mode is kept; a new file honours the umask", mode_kept_and_umask)
    cases("a symbolic link at the target is followed and stays", symlink_followed)
    cases("temporaries of a killed run are removed by the next write", stray_temporaries_removed)
    cases("full and read-only file systems: exit 1 with the reason, old file kept", failing_file_systems)
    status = cases.report()
    shutil.rmtree(tmp, ignore_errors=True)
    return status


if __name__ == "__main__":
    sys.exit(main())
