#!/usr/bin/env python3
"""python_messages.py ATTALVEN: runs the test messages of Python's email package through `attalven show --structure` and
compares the leaf types with what the email package sees. Known differences stand in EXPECTED with their reason."""
import email, glob, os, re, subprocess, sys, tempfile

PROGRAM = sys.argv[1]
found = sorted(glob.glob("/usr/lib/python3*/test/test_email/data/msg_*.txt"))
DIGEST = "parts without a header are messages only where the whole message is a digest"
NONE = "no delimiter line, or no boundary parameter: such a multipart has no parts here"
PREFIX = "inner and outer boundaries start alike, and a delimiter line is recognised by its start"
EXPECTED = {
    "msg_02.txt": (8 * ["text/plain"], DIGEST),
    "msg_15.txt": (["text/plain", "text/html", "image/gif"], "the same boundary inside and outside: read as it was meant"),
    "msg_17.txt": ([], NONE),
    "msg_25.txt": ([], NONE),
    "msg_31.txt": ([], NONE),
    "msg_33.txt": ([], "RFC 2231 parameters (boundary*=) are not read"),
    "msg_37.txt": (["text/x-one", "text/plain", "text/plain", "text/x-two"],
                   "a delimiter line behind a delimiter line ends a part header: the line after it belongs to that header"),
    "msg_38.txt": (["text/plain"] + 5 * ["application/octet-stream"] + ["text/plain"], PREFIX),
    "msg_39.txt": (6 * ["application/octet-stream"] + ["text/plain"], PREFIX),
    "msg_41.txt": ([], NONE),
}


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
        if ours != EXPECTED.get(name, (theirs,))[0]:
            print(f"{name}: {ours}, Python sees {theirs}")
            bad += 1
print(f"{len(found)} messages, {len(EXPECTED)} known differences, {bad} others")
sys.exit(bad > 0)
