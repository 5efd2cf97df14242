"""What the command-line tests share: the program run with its exit code
and output, named cases that keep going after a failure, tables of cases,
the sample table, and file digests."""
import hashlib
import json
import os
import subprocess

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


class Envline:
    """envline of a build folder: envline(*args) gives (exit code, stdout, stderr)."""

    def __init__(self, build):
        self.path = os.path.join(build, "app", "cli", "envline")

    def __call__(self, *args, env=None, umask=None, cwd=None):
        r = subprocess.run([self.path, *args], capture_output=True, text=True, env=env, cwd=cwd,
                           preexec_fn=(lambda: os.umask(umask)) if umask is not None else None)
        return r.returncode, r.stdout, r.stderr

    def json(self, *args, code=0):
        """Runs with --json; the exit code must be code; returns the parsed standard output."""
        c, out, err = self(*args, "--json")
        assert c == code, f"{args}: exit {c}, not {code}: {err}"
        try:
            return json.loads(out)
        except ValueError:
            raise AssertionError(f"{args}: standard output is no JSON: {out!r}") from None


class Cases:
    def __init__(self):
        self.results = []

    def __call__(self, name, fn):
        try:
            fn()
            self.results.append((name, None))
        except AssertionError as e:
            self.results.append((name, str(e) or "assertion failed"))
        except Exception as e:  # noqa: BLE001 - a crash of the test is a finding too
            self.results.append((name, f"{type(e).__name__}: {e}"))

    def table(self, rows, check):
        """One case per row (name, *arguments): check(*arguments)."""
        for name, *arguments in rows:
            self(name, lambda a=arguments: check(*a))

    def report(self):
        """Prints every case and returns the exit status."""
        failed = 0
        for name, problem in self.results:
            print(("FAIL " if problem else "ok   ") + name + (f"\n  {problem}" if problem else ""))
            failed += bool(problem)
        print(f"{len(self.results) - failed} passed, {failed} failed")
        return 1 if failed else 0


def sample_rows():
    """(file, tool number, window, centre) of every bundled sample tool."""
    with open(os.path.join(ROOT, "samples", "samples.tsv"), encoding="utf-8") as f:
        return [line.rstrip("\n").split("\t") for line in f][1:]


def sha(path):
    with open(path, "rb") as f:
        return hashlib.sha256(f.read()).hexdigest()
