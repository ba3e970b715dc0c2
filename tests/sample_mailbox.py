#!/usr/bin/env python3
"""sample_mailbox.py ATTALVEN: compares what the program shows of the sample mailbox with the truth beside it."""
import json, os, re, subprocess, sys, urllib.parse

HERE = os.path.dirname(os.path.abspath(__file__))
FOLDER = os.path.join(HERE, "data", "sample.mbox")
FIELDS = "num offset hdr size status priority date leaves id addr name subject".split()
PAGE_SETS = ["euc_kr", "cp949", "cp932", "gb2312", "big5", "hz", "iso-8859-1", "utf-8"]
differences = 0


def run(*args):
    return subprocess.run([sys.argv[1], *args], env=dict(os.environ, TZ="UTC"), stdout=subprocess.PIPE, check=True).stdout


def readings(field):
    raw = urllib.parse.unquote_to_bytes(field)
    for name in PAGE_SETS:
        try:
            yield raw.decode(name)
        except UnicodeDecodeError:
            pass


def expect(truth, what, holds, got):
    global differences
    if not holds:
        differences += 1
        print(f"message {truth['n']} ({truth['label']}): {what} is {got!r}")


truths = json.load(open(os.path.join(HERE, "data", "sample.json"), encoding="utf-8"))
rows = [dict(zip(FIELDS, line.split("\t"))) for line in run("dump", FOLDER).decode("ascii").splitlines()]
if len(rows) != len(truths):
    sys.exit(f"{len(rows)} messages instead of {len(truths)}")
for row, truth in zip(rows, truths):
    expect(truth, "subject", truth["subject"] in readings(row["subject"]), row["subject"])
    expect(truth, "name", truth["from_name"] in readings(row["name"]), row["name"])
    expect(truth, "address", row["addr"] == truth["address"], row["addr"])
    expect(truth, "number of parts", int(row["leaves"]) == truth["leaves"], row["leaves"])
    if truth["text"] is not None:
        text = run("show", FOLDER, str(truth["n"]), "--part", "0").decode("utf-8", "replace").strip()
        expect(truth, "text", text == truth["text"], text[:200])
names = next(t for t in truths if t["label"] == "nested, names of four languages")
shown = re.findall(r'name "(.*)"', run("show", FOLDER, str(names["n"]), "--structure").decode("utf-8"))
expect(names, "names", shown == ["그림.png", "議事録.txt", "说明.txt", "附件.zip"], shown)
print(f"{len(rows)} messages compared, {differences} differences")
sys.exit(differences > 0)
