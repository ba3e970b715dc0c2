#!/usr/bin/env python3
"""corpus_oracle.py ATTALVEN GENERATOR: for several seeds, makes a folder with its ground truth and compares what
`attalven dump` and `attalven extract` tell about every message."""
import hashlib, os, subprocess, sys, tempfile, urllib.parse

import oracle
from checks import expect, finish

CODEC = {"ks_c_5601-1987": "cp949", "big5": "big5hkscs", "us-ascii": "ascii", "shift_jis": "cp932"}


def label(truth):
    return f"{truth['n']} ({truth['kind']}, {truth['subject_form']})"


def compare(row, truth):
    flags = sum({"R": 0x10, "O": 0x100}[c] for c in truth["status"])
    for key, got, want in (
            ("offset", int(row["offset"]), truth["offset"]), ("header size", int(row["hdr"]), truth["hdr_size"]),
            ("size", int(row["size"]), truth["size"]), ("flags", int(row["status"], 16), flags),
            ("priority", int(row["priority"]), truth["priority"]), ("date", int(row["date"]), truth["date"]),
            ("parts", int(row["leaves"]), truth["leaves"] + truth["uu"]),
            ("Message-ID", urllib.parse.unquote(row["id"]), truth["message_id"]), ("address", row["addr"], truth["from_addr"])):
        expect(f"{label(truth)}: {key}", got == want, got, want)
    subject, name = truth["subject_join"], truth["from_name"]
    expect(f"{label(truth)}: subject", subject in oracle.readings(row["subject"]), row["subject"], subject)
    # Unquoted names lose their blanks.
    names = (text.replace(" ", "") for text in oracle.readings(row["name"]))
    expect(f"{label(truth)}: name", name.replace(" ", "") in names, row["name"], name)


def compare_text(folder, truth, out):
    """The first text part of a single-part message, decoded, as Unicode."""
    if not truth["text"] or truth["leaves"] != 1 or truth["uu"]:
        return
    charset, digest = truth["text"][2], truth["text"][4]
    oracle.run("extract", folder, str(truth["n"]), "0", out)
    with open(out, "rb") as f:
        text = f.read().decode(CODEC.get(charset, charset), "replace")
    os.remove(out)
    # The empty line before the next From_ line is part of the message, but not of the text that was written.
    digests = [hashlib.sha256(t.encode()).hexdigest() for t in (text, text.removesuffix("\n"))]
    expect(f"{label(truth)}: text", digest in digests, text[:60], digest)


with tempfile.TemporaryDirectory() as scratch:
    for seed, extra in ((7, []), (8, ["--crlf", "20"]), (9, ["--mean", "20000", "--langs", "ja,tw"])):
        folder = os.path.join(scratch, f"{seed}.mbox")
        subprocess.run([sys.executable, sys.argv[2], folder, "--seed", str(seed), "--count", "300", *extra],
                       check=True, stdout=subprocess.DEVNULL)
        truths = oracle.truths(folder + ".json")["messages"]
        for row, truth in oracle.pairs(folder, truths):
            compare(row, truth)
        for truth in truths[:40]:
            compare_text(folder, truth, os.path.join(scratch, "part"))
finish()
