#!/usr/bin/env python3
"""smtp_servers.py ATTALVEN EXIM WORK: delivers through real SMTP servers on loopback and reads the mail back with
`attalven`. Exim takes the plain dialogue and delivers into an mbox file; aiosmtpd, strict, is reached through the
adapter. WORK is a new folder for everything that the servers write."""
import os, shutil, subprocess, sys, time

from checks import finish, same as expect
from strict_server import StrictServer, free_port, started

ROOT = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
PROGRAM, EXIM, WORK = (os.path.abspath(a) for a in sys.argv[1:4])
# As whom tools/run-exim runs it.
USER, GROUP = ("mail", "mail") if os.geteuid() == 0 else (os.getuid(), os.getgid())

HEAD = "From me Mon Jan  5 10:00:00 2004\nFrom: me@example.org\nTo: kim@example.org\nSubject: {}\n\n"
TEXTS = {"small": HEAD.format("small") + ".\n..dots\n.hidden\nlast line\n",
         "large": HEAD.format("large") + "".join("." * (n % 7) + "x" * (n % 900) + "\n" for n in range(60000))}


def deliver(port, text, *options):
    p = subprocess.run([PROGRAM, "deliver", "--server", f"127.0.0.1:{port}", *options, "me@example.org",
                        "kim@example.org,nobody@example.org,lee@example.org"], input=text.encode(), capture_output=True)
    return p.stdout.decode(), p.returncode


RESULTS = ("kim@example.org 250\nnobody@example.org 550\nlee@example.org 250\n", 1)


def through_exim():
    for sub in ("queue", "log", "spool"):
        os.makedirs(f"{WORK}/{sub}")
        shutil.chown(f"{WORK}/{sub}", USER, GROUP)
    os.chmod(WORK, 0o755)
    port = free_port()
    with open(f"{ROOT}/tests/data/smtp/exim.conf") as template, open(f"{WORK}/exim.conf", "w") as f:
        f.write(template.read().format(exim=EXIM, work=WORK, port=port, user=USER, group=GROUP))
    exim = started([f"{ROOT}/tools/run-exim", EXIM, f"{WORK}/exim.conf", WORK, "-bdf"], port)
    try:
        for name, text in TEXTS.items():
            expect(f"Exim, {name}: results", deliver(port, text), RESULTS)
        for _ in range(400):
            if not os.listdir(f"{WORK}/queue/input"):
                break
            time.sleep(0.05)
        for user in ("kim", "lee"):
            show = [PROGRAM, "show", f"{WORK}/spool/{user}"]
            shown = [subprocess.run([*show, n, "--raw"], capture_output=True).stdout.decode() for n in ("1", "2")]
            for name, text in TEXTS.items():
                # The mbox transport ends each message with an empty line and escapes From lines.
                raw = next((s for s in shown if f"Subject: {name}\n" in s), "\n\n")
                bodies = [t.split("\n\n", 1)[1].rstrip("\n") for t in (raw, text)]
                expect(f"Exim, {name} to {user}: body", *bodies)
    finally:
        exim.terminate()
        exim.wait(10)


def through_aiosmtpd():
    with StrictServer(f"{WORK}/taken") as server:
        for name, text in TEXTS.items():
            expect(f"aiosmtpd, {name}: results", deliver(server.port, text, "--helo", "client.example.org"), RESULTS)
            [(_, _, content)] = server.taken()
            expect(f"aiosmtpd, {name}: content", content, text.split("\n", 1)[1].replace("\n", "\r\n").encode())


shutil.rmtree(WORK, ignore_errors=True)
os.makedirs(WORK)
through_aiosmtpd()
if os.path.exists(EXIM):
    through_exim()
else:
    print("SKIPPED: Exim (needs the unpacked package)")
finish()
