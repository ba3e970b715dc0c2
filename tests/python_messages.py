#!/usr/bin/env python3
"""python_messages.py ATTALVEN: runs the test messages of Python's email package through `attalven show --structure` and
compares the leaf types with what the email package sees. Known differences stand in data/python_messages.json."""
import email, glob, json, os, re, subprocess, sys, tempfile

PROGRAM = sys.argv[1]
found = sorted(glob.glob("/usr/lib/python3*/test/test_email/data/msg_*.txt"))
with open(os.path.dirname(os.path.abspath(__file__)) + "/data/python_messages.json", encoding="ascii") as known:
    EXPECTED = json.load(known)


def leaves(m):
    if m.get_content_maintype() == "message" or not m.is_multipart():
        return [m.get_content_type()]
    return [t for p in m.get_payload() for t in leaves(p)]


if not found:
    print("SKIPPED: Python's own test messages are not installed (libpython3.11-testsuite)")
    sys.exit(77)
bad = 0
with tempfile.TemporaryDirectory() as scratch:
    for path in found:
        name = os.path.basename(path)
        with open(path, "rb") as f:
            raw = f.read()
        folder = os.path.join(scratch, name)
        with open(folder, "wb") as f:
            f.write(b"From someone@example.org Mon Jan  5 10:00:00 2004\n" + re.sub(rb"\AFrom [^\n]*\n", b"", raw))
        shown = subprocess.run([PROGRAM, "show", folder, "1", "--structure"], capture_output=True)
        if shown.returncode:
            print(f"{name}: exit code {shown.returncode}: {shown.stderr.decode().strip()}")
            bad += 1
            continue
        ours = [t.lower() for t in re.findall(r"^ *\d+ ([^ ,]+)", shown.stdout.decode("utf-8", "replace"), re.M)]
        theirs = leaves(email.message_from_bytes(raw))
        if ours != EXPECTED.get(name, {"types": theirs})["types"]:
            print(f"{name}: {ours}, Python sees {theirs}")
            bad += 1
print(f"{len(found)} messages, {len(EXPECTED)} known differences, {bad} others")
sys.exit(bad > 0)
