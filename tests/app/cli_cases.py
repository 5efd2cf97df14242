"""What the command-line tests share: named cases that keep going after a
failure, the sample table, and file digests."""
import hashlib
import os

ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))


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
