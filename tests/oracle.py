"""What `attalven` tells of a folder, for comparison with a truth that was written beside it."""
import json, os, subprocess, sys, urllib.parse

PAGE_SETS = ["euc_kr", "cp949", "shift_jis", "cp932", "gb2312", "gbk", "big5", "hz", "iso-8859-1", "iso-8859-15", "utf-8"]
FIELDS = "num offset hdr size status priority date leaves id addr name subject".split()


def run(*args):
    return subprocess.run([sys.argv[1], *args], env=dict(os.environ, TZ="UTC"), stdout=subprocess.PIPE, check=True).stdout


def readings(field):
    """What the bytes say in each page character set."""
    raw = urllib.parse.unquote_to_bytes(field)
    for name in PAGE_SETS:
        try:
            yield raw.decode(name)
        except UnicodeDecodeError:
            pass


def pairs(folder, truths):
    """Each row of `attalven dump` with its truth."""
    rows = [dict(zip(FIELDS, line.split("\t"))) for line in run("dump", folder).decode("ascii").splitlines()]
    if len(rows) != len(truths) or not rows:
        sys.exit(f"{len(rows)} messages instead of {len(truths)}")
    return zip(rows, truths)


def truths(path):
    with open(path, encoding="utf-8") as file:
        return json.load(file)
