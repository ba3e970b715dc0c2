#!/usr/bin/env python3
"""sample_mailbox.py ATTALVEN: compares what the program shows of the sample mailbox with the truth beside it."""
import os

import oracle
from checks import expect, finish

DATA = os.path.join(os.path.dirname(os.path.abspath(__file__)), "data")
FOLDER = DATA + "/sample.mbox"
for row, truth in oracle.pairs(FOLDER, oracle.truths(DATA + "/sample.json")):
    label = f"{truth['n']} ({truth['label']})"
    for what, field, key in (("subject", "subject", "subject"), ("name", "name", "from_name")):
        expect(f"{label}: {what}", truth[key] in oracle.readings(row[field]), row[field], truth[key])
    for what, got, want in (("address", row["addr"], truth["address"]), ("parts", row["leaves"], str(truth["leaves"]))):
        expect(f"{label}: {what}", got == want, got, want)
    if truth["text"] is not None:
        text = oracle.run("show", FOLDER, str(truth["n"]), "--part", "0").decode("utf-8", "replace").strip()
        expect(f"{label}: text", text == truth["text"], text[:200], truth["text"][:200])
finish()
