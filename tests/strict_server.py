"""A strict SMTP server (aiosmtpd) on loopback, in a process of its own: it refuses users who begin with "nobody", and
the data for those who begin with "full"; what it takes is kept in a folder."""
import glob, json, os, socket, subprocess, time

PROGRAM = """
import json, sys, itertools
from aiosmtpd.controller import Controller
count = itertools.count()
class Handler:
    async def handle_RCPT(self, server, session, envelope, address, options):
        if address.startswith("nobody"): return "550 no such user"
        envelope.rcpt_tos.append(address)
        return "250 ok"
    async def handle_DATA(self, server, session, envelope):
        if envelope.rcpt_tos[0].startswith("full"): return "552 no room"
        with open(f"{sys.argv[2]}/{next(count):03}", "w") as out:
            json.dump([envelope.mail_from, envelope.rcpt_tos, envelope.content.decode("latin-1")], out)
        return "250 taken"
c = Controller(Handler(), hostname="127.0.0.1", port=int(sys.argv[1]), data_size_limit=0)
c.start()
sys.stdin.read()
"""


def free_port():
    with socket.create_server(("127.0.0.1", 0)) as s:
        return s.getsockname()[1]


def started(command, port):
    """The process, once it listens."""
    process = subprocess.Popen(command, stdin=subprocess.PIPE, stdout=subprocess.DEVNULL)
    for _ in range(200):
        try:
            socket.create_connection(("127.0.0.1", port), 1).close()
            return process
        except OSError:
            time.sleep(0.05)
    process.terminate()
    raise RuntimeError(f"{command[0]} did not start")


class StrictServer:
    def __init__(self, folder):
        os.mkdir(folder)
        self.folder, self.port = folder, free_port()
        self.process = started(["/usr/bin/python3", "-c", PROGRAM, str(self.port), folder], self.port)

    def __enter__(self):
        return self

    def __exit__(self, *how):
        self.process.stdin.close()
        self.process.wait(10)

    def taken(self):
        """What came since the last call: sender, recipients, content."""
        got = []
        for path in sorted(glob.glob(f"{self.folder}/*")):
            with open(path) as file:
                got.append(json.load(file))
            os.remove(path)
        return [(sender, to, content.encode("latin-1")) for sender, to, content in got]
