"""What the scripts expect, and how they end."""
import sys

failures = 0


def expect(what, holds, got="", want=""):
    global failures
    if not holds:
        failures += 1
        if failures <= 20:
            print(f"FAIL {what}: {got!r:.800}" + (f", expected {want!r:.400}" if want != "" else ""))


def same(what, got, want):
    expect(what, got == want, got, want)


def finish():
    print(f"{failures} failures")
    sys.exit(failures > 0)
