"""roundtrip.py DIR: reads every message N.eml of DIR with Python's email package and compares it with
what N.want says was composed. Prints each difference; exit code 1 when there is one."""

import email
import pathlib
import sys
from email.header import decode_header, make_header
from email.utils import getaddresses, parseaddr

BYTES = bytes(range(256)) * 2
FIELDS = {"Message-Id", "From", "To", "Subject", "Date", "MIME-Version", "X-Priority", "X-Mailer",
          "Content-Type"}


def text(value):
    return str(make_header(decode_header(value)))


def structure(part):
    inner = part.get_payload() if part.get_content_maintype() == "multipart" else []
    dump = "[" + " ".join(structure(p) for p in inner) + "]" if inner else ""
    return part.get_content_type() + dump


def content(part):
    return part.get_payload(decode=True)


def read(part):
    return content(part).decode(part.get_content_charset()).rstrip("\n")


def differences(raw, want):
    message = email.message_from_bytes(raw)
    parts = list(message.walk())
    leaves = [p for p in parts if p.get_content_maintype() != "multipart"]
    plain = [p for p in leaves if p.get_content_type() == "text/plain"][0]
    html = [p for p in leaves if p.get_content_type() == "text/html"]
    yield "fields", set(message.keys()), FIELDS
    yield "defects", [d for p in parts for d in p.defects], []
    yield "long lines", [l for l in raw.split(b"\n\n")[0].split(b"\n") if len(l) > 998], []
    yield "CR", raw.count(b"\r"), 0
    yield "subject", text(message["Subject"]), want["text"]
    yield "from", text(parseaddr(message["From"])[0]), want["from"]
    yield "to", [a for _, a in getaddresses([message["To"]])], ["lee@a.kr", "park@example.org"]
    yield "structure", structure(message), want["structure"]
    yield "body", read(html[0] if html else plain), want["body"]
    if "related" in want["structure"]:
        files = [p for p in leaves if p.get_param("name")]
        names = [text(p.get_param("name")) for p in files]
        yield "names", names, [want["name"], "plain.bin", "photo.gif"]
        yield "file name", text(files[0].get_filename()), want["name"]
        yield "bytes", [content(p) for p in files], [BYTES] * 3
        yield "content id", files[2]["Content-ID"], "<part1.x>"
        stored = [p for p in parts if p.get_content_type() == "message/rfc822"][0].get_payload(0)
        yield "stored", (stored["Subject"], stored.get_payload(decode=True).rstrip(b"\n")), (
            "kept", b".\nFrom \xb0\xa1")


failed = False
cases = sorted(pathlib.Path(sys.argv[1]).glob("*.want"))
for case in cases:
    lines = case.read_text(encoding="utf-8").split("\n", 5)
    want = dict(zip(("label", "text", "from", "name", "structure", "body"), lines))
    for what, got, expected in differences(case.with_suffix(".eml").read_bytes(), want):
        if got != expected:
            failed = True
            print(f"{want['label']}: {what}\n  is     {got!r}\n  wanted {expected!r}")
sys.exit(failed or not cases)
