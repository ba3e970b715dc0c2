#!/usr/bin/env python3
"""roundtrip.py ATTALVEN: composes a message in every character set, type and encoding, with and without attachments,
and compares what Python's email package and the commands that read make of it with what was typed."""
import email, itertools, os, subprocess, sys, tempfile
from email.header import decode_header, make_header
from email.utils import getaddresses, parseaddr

import oracle
from checks import expect, finish

BYTES = bytes(range(256)) * 2
STORED = b"From x@y Mon Nov 06 14:03:09 2000\nSubject: kept\n\n.\nFrom \xb0\xa1 b\n"
FIELDS = {"Message-Id", "From", "To", "Subject", "Date", "MIME-Version", "X-Priority", "X-Mailer", "Content-Type"}


def sets():
    """The sets for sending, "" for one that is chosen, each with a text."""
    with open(os.path.dirname(os.path.abspath(__file__)) + "/data/compose_sets.table", encoding="utf-8") as table:
        return [line.rstrip("\n").split(" | ") for line in table if not line.startswith("#")]


def text(value):
    return str(make_header(decode_header(value)))


def content(part):
    return part.get_payload(decode=True)


def differences(raw, encoding, subject, sender, name, body, files):
    """What differs: (what it is, what was read, what was typed). Without an encoding a header is in no named set."""
    message = email.message_from_bytes(raw)
    parts = list(message.walk())
    shown = [p for p in parts if p.get_content_maintype() == "text"][body.startswith("<HTML>")]
    attached = [p for p in parts if p.get_param("name")]
    yield "fields", set(message.keys()) - {"Content-Transfer-Encoding"}, FIELDS
    yield "defects", [d for p in parts for d in p.defects], []
    yield "long lines", [line for line in raw.split(b"\n\n")[0].split(b"\n") if len(line) > 998], []
    yield "CR", raw.count(b"\r"), 0
    yield "recipients", [a for _, a in getaddresses([message["To"]])], ["lee@a.kr", "park@example.org"]
    yield "body", content(shown).decode(shown.get_content_charset()).rstrip("\n"), body
    yield "bytes", [content(p) for p in attached], [BYTES] * len(files[:1])
    for part in attached if encoding != "raw" else []:
        yield "names", {text(part.get_param("name")), text(part.get_filename())}, {name}
    if encoding != "raw":
        yield "subject", text(message["Subject"]), subject
        yield "sender", [text(t) for t in parseaddr(message["From"])], [sender, "kim@example.net"]
    stored = [p.get_payload(0) for p in parts if p.get_content_type() == "message/rfc822"]
    yield "stored", [(m["Subject"], content(m).rstrip(b"\n")) for m in stored], [("kept", b".\nFrom \xb0\xa1 b")] * len(files[1:])


with tempfile.TemporaryDirectory() as scratch:
    folder, out, typed = scratch + "/folder", scratch + "/out", []
    with open(scratch + "/stored", "wb") as file:
        file.write(STORED)
    for (charset, sample), kind, encoding, attach in itertools.product(
            sets(), ("plain", "html"), ("raw", "qp", "base64"), (False, True)):
        with open(f"{scratch}/{sample}.gif", "wb") as file:
            file.write(BYTES)
        files = [f"{scratch}/{sample}.gif", f"forward@{scratch}/stored"] if attach else []
        body = f"{sample}\n.\n..\nFrom a b\nblank \n=3D\t{'x' * 300}{sample}"
        body = f"<HTML><BODY>{body}</BODY></HTML>" if kind == "html" else body
        raw = subprocess.run([sys.argv[1], "compose", "--from", f'"{sample}" <kim@example.net>', "--to", "lee@a.kr, park@example.org",
                              "--subject", sample, "--type", kind, "--encoding", encoding,
                              *(["--charset", charset] if charset else []), *files],
                             input=body.encode(), stdout=subprocess.PIPE, check=True).stdout
        # HZ is 7-bit: its names need no encoded words.
        sender, name = (t.encode("hz").decode() if charset.startswith("HZ") else t for t in (sample, sample + ".gif"))
        label = f"{charset} {kind} {encoding} {attach}"
        for what, got, want in differences(raw, encoding, sample, sender, name, body, files):
            expect(f"{label}: {what}", got == want, got, want)
        if encoding != "raw":
            typed.append((label, sample, kind, attach))
            with open(folder, "ab") as file:
                file.write(raw + b"\n")
    lines = oracle.run("list", folder).decode().splitlines()
    for (row, (label, sample, kind, attach)), line in zip(oracle.pairs(folder, typed), lines):
        for what in ("subject", "name"):
            expect(f"{label}: {what}", sample in oracle.readings(row[what]), row[what], sample)
        expect(f"{label}: line of the list", sample[:5] in line, line, sample)
        if attach:
            oracle.run("extract", folder, row["num"], str(1 + (kind == "html")), out)
            with open(out, "rb") as file:
                expect(f"{label}: extracted", file.read() == BYTES, "different")
            os.remove(out)
finish()
