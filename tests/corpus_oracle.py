#!/usr/bin/env python3
"""corpus_oracle.py ATTALVEN GENERATOR: for several seeds, makes a folder with its ground truth and compares what
`attalven dump` and `attalven extract` tell about every message."""
import hashlib, json, os, subprocess, sys, tempfile, urllib.parse

PROGRAM, GENERATOR = sys.argv[1:3]
PAGE_SETS = ["euc_kr", "cp949", "shift_jis", "cp932", "gb2312", "gbk", "big5", "iso-8859-1", "iso-8859-15", "utf-8"]
CODEC = {"ks_c_5601-1987": "cp949", "big5": "big5hkscs", "us-ascii": "ascii", "shift_jis": "cp932"}
FIELDS = "num offset hdr size status priority date leaves id addr name subject".split()
env = dict(os.environ, TZ="UTC")
differences = checked = 0


def run(*args):
    return subprocess.run([PROGRAM, *args], env=env, stdout=subprocess.PIPE, check=True).stdout


def differ(what, truth, got, want):
    global differences
    differences += 1
    if differences <= 20:
        print(f"message {truth['n']} ({truth['kind']}, {truth['subject_form']}): {what} is {got!r}, not {want!r}")


def readings(field):
    """What the bytes say in each page character set."""
    raw = urllib.parse.unquote_to_bytes(field)
    for name in PAGE_SETS:
        try:
            yield raw.decode(name)
        except UnicodeDecodeError:
            pass


def compare(row, truth):
    flags = sum({"R": 0x10, "O": 0x100}[c] for c in truth["status"])
    for key, got, want in (
            ("offset", int(row["offset"]), truth["offset"]), ("header size", int(row["hdr"]), truth["hdr_size"]),
            ("size", int(row["size"]), truth["size"]), ("flags", int(row["status"], 16), flags),
            ("priority", int(row["priority"]), truth["priority"]), ("date", int(row["date"]), truth["date"]),
            ("parts", int(row["leaves"]), truth["leaves"] + truth["uu"]),
            ("Message-ID", urllib.parse.unquote(row["id"]), truth["message_id"]), ("address", row["addr"], truth["from_addr"])):
        if got != want:
            differ(key, truth, got, want)
    if truth["subject_join"] not in readings(row["subject"]):
        differ("subject", truth, row["subject"], truth["subject_join"])
    # Unquoted names lose their blanks.
    if truth["from_name"].replace(" ", "") not in (t.replace(" ", "") for t in readings(row["name"])):
        differ("name", truth, row["name"], truth["from_name"])


def compare_text(folder, data, truth, scratch):
    """The first text part of a single-part message, decoded, as Unicode."""
    if not truth["text"] or truth["leaves"] != 1 or truth["uu"]:
        return
    charset, digest = truth["text"][2], truth["text"][4]
    out = os.path.join(scratch, "part")
    run("extract", folder, str(truth["n"]), "0", out)
    with open(out, "rb") as f:
        raw = f.read()
    os.remove(out)
    text = raw.decode(CODEC.get(charset, charset), "replace")
    # The empty line before the next From_ line is part of the message, but not of the text that was written.
    if digest not in (hashlib.sha256(t.encode()).hexdigest() for t in (text, text.removesuffix("\n"))):
        differ("text", truth, text[:60], digest)


with tempfile.TemporaryDirectory() as scratch:
    for seed, extra in ((7, []), (8, ["--crlf", "20"]), (9, ["--mean", "20000", "--langs", "ja,tw"])):
        folder = os.path.join(scratch, f"{seed}.mbox")
        subprocess.run([sys.executable, GENERATOR, folder, "--seed", str(seed), "--count", "300", *extra],
                       check=True, stdout=subprocess.DEVNULL)
        truths = json.load(open(folder + ".json", encoding="utf-8"))["messages"]
        rows = [dict(zip(FIELDS, line.split("\t"))) for line in run("dump", folder).decode("ascii").splitlines()]
        if len(rows) != len(truths):
            differ("count", truths[0], len(rows), len(truths))
        for row, truth in zip(rows, truths):
            compare(row, truth)
            checked += 1
        for truth in truths[:40]:
            compare_text(folder, None, truth, scratch)
print(f"{checked} messages compared, {differences} differences")
sys.exit(differences > 0 or checked == 0)
