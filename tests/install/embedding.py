"""embedding.py BUILD SYSCONFDIR CC: builds the program that docs/embedding.md shows, from the document itself, and asks it
for messages of the sample mailbox as a web server does, in a mount namespace that lays a new site's configuration over
SYSCONFDIR, so that a site that is served from this build is left alone."""
import os, re, shutil, subprocess, sys, tempfile

BUILD, SYSCONFDIR, CC = sys.argv[1:4]
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
sys.path.append(f"{ROOT}/tests/host")
import sites
from checks import expect, finish

if not SYSCONFDIR.startswith(BUILD):
    print("SKIPPED: needs a build whose ATTALVEN_SYSCONFDIR lies in the build folder")
    sys.exit(77)
os.makedirs(SYSCONFDIR, exist_ok=True)

with tempfile.TemporaryDirectory() as work:
    with open(f"{ROOT}/docs/embedding.md") as document, open(f"{work}/body.c", "w") as source:
        source.write(re.search("```c\n(.*?)```", document.read(), re.S)[1])
    subprocess.run([CC, "-std=c11", "-Wall", "-Wextra", "-Werror", "-o", f"{work}/body", f"{work}/body.c", f"-I{ROOT}",
                    f"-L{BUILD}/lib", "-lattalven", "-lattalven_support", f"-Wl,-rpath,{BUILD}/lib"], check=True)
    site = f"{work}/site"
    for command in (["site", "init", site], ["user", "add", "kim"]):
        subprocess.run([f"{BUILD}/bin/attalven", *command], env={**os.environ, "ATTALVEN_SITE": site}, check=True,
                       stdout=subprocess.DEVNULL)
    shutil.copy(f"{ROOT}/tests/data/sample.mbox", f"{site}/spool/k/i/kim")
    with open(f"{site}/spool/k/i/kim", "a") as inbox:  # message 37, with a part that has no Message-ID
        inbox.write("From - Mon Jan  5 10:00:00 2004\nMessage-ID: <two@b.example>\nContent-Type: multipart/report; boundary=b\n\n"
                    "--b\n\nwhy\n--b\nContent-Type: message/delivery-status\n\nStatus: 5.1.1\n\n--b--\n\n")
    with open(f"{site}/conf/attalven.conf") as conf:
        key = re.search("ADMIN_KEY = (.*)", conf.read())[1]
    inside = ["unshare", "-rm", "sh", "-c", 'mount --bind "$1" "$2" && exec "$3"', "sh", f"{site}/conf", SYSCONFDIR]

    def ask(query, sent):
        given = {"PATH": os.environ["PATH"], "QUERY_STRING": query, "HTTP_COOKIE": sent}
        return subprocess.run([*inside, f"{work}/body"], env=given, stdout=subprocess.PIPE, check=True).stdout

    def cookie(user, key=key, seconds=60):
        return f"auth={sites.code(user, key, seconds)}"

    good = cookie("kim")
    head, _, body = ask("2", good).partition(b"\n\n")
    expect("header lines", b"sandbox" in head and head.endswith(b"Content-Type: text/html; charset=EUC-KR"), head)
    expect("the Korean body", "지난주에 말씀드린 회의 일정을 보냅니다." in body.decode("euc-kr"), body)
    expect("a delivery report", b"why" in ask("37", good), ask("37", good))
    for query, sent, status in (("2", "", "403"), ("2", good[:-3], "403"), ("2", cookie("kim", seconds=-1), "403"),
                                ("2", cookie("../kim"), "403"), ("2", cookie("kim", "kQwZbn"), "403"), ("38", good, "404"),
                                ("0", good, "404"), ("x", good, "404"), ("1", cookie("lee"), "404")):
        expect(f"{query} {sent[:20]}", ask(query, sent).startswith(f"Status: {status} ".encode()), status)
finish()
