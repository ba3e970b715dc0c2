#!/usr/bin/env python3
"""settings.py BUILD EXIM SYSCONFDIR WORK: drives mailpref, mailadm and mailrcpt by hand on a site of its own, which stands
in SYSCONFDIR for these processes alone, and lets Exim deliver by what they wrote."""
import os, re, shutil, subprocess, sys, urllib.parse
import sites

BUILD, EXIM, SYSCONFDIR, WORK = (os.path.abspath(a) for a in sys.argv[1:5])
ROOT = os.path.dirname(os.path.dirname(os.path.dirname(os.path.abspath(__file__))))
SITE, MBOX = f"{WORK}/site", f"{WORK}/site/mbox"
if len(sys.argv) == 5:
    if os.geteuid() != 0 or not os.path.exists(EXIM):
        sys.exit(print("SKIPPED: needs root and the unpacked Exim") or 77)
    shutil.rmtree(WORK, ignore_errors=True)
    os.makedirs(SYSCONFDIR, exist_ok=True)
    script = 'cp -a "$0" "$1" && mount --bind "$1" "$0" && shift && exec "$@"'
    os.makedirs(WORK)
    os.execvp("unshare", ["unshare", "-m", "sh", "-c", script, SYSCONFDIR, f"{WORK}/conf", sys.executable, *sys.argv, "inside"])
failures = 0


def expect(what, good, seen=""):
    global failures
    if not good:
        failures += 1
        print(f"FAIL {what}: {seen!r:.1500}")


def run(program, *args, **options):
    return subprocess.run([f"{BUILD}/bin/{program}", *args], env={"ATTALVEN_SITE": SITE}, capture_output=True,
                          text=True, **options).stdout


def cgi(program, query="", cookie="", form=None, more=None):
    body = urllib.parse.urlencode(form, errors="surrogateescape").encode() if form else b""
    env = {"REQUEST_METHOD": "POST" if form else "GET", "QUERY_STRING": query, "HTTP_COOKIE": cookie, "REMOTE_ADDR": "127.0.0.1",
           "CONTENT_TYPE": "application/x-www-form-urlencoded", "CONTENT_LENGTH": str(len(body)), **(more or {})}
    out = subprocess.run([f"{BUILD}/host/cgi-auth/{program}.cgi"], input=body, env=env, capture_output=True).stdout
    head, _, page = out.partition(b"\n\n")
    return int((re.search(rb"Status: (\d+)", head) or [0, b"200"])[1]), head.decode("latin-1"), page


class Visitor:
    def __init__(self, user, password):
        head = cgi("login", form={"userid": user, "password": password})[1]
        self.cookie = "; ".join(re.findall(r"Set-Cookie: ((?:auth|session)=[^;]+)", head))
        self.home = f"{MBOX}/{user[0]}/{user[1]}/{user}"

    def token(self):
        return re.search(rb'name="token" value="([^"]+)', cgi("mailpref", cookie=self.cookie)[2])[1].decode()

    def post(self, program, **form):
        return cgi(program, "", self.cookie, {"token": self.token(), **form})


def read(path):
    with open(path, "rb") as f:
        return f.read().decode("utf-8", "replace")


def deliver(sender, recipient):
    subprocess.run(["chown", "-R", "mail:mail", SITE, WORK + "/run"], check=True)
    subprocess.run([f"{ROOT}/tools/run-exim", EXIM, f"{WORK}/run/exim.conf", f"{WORK}/run", "-odi", "-f", sender, recipient],
                   input=f"From: {sender}\nTo: {recipient}\nSubject: hello\n\nhi\n", text=True, check=True)
    return {u: read(f"{SITE}/spool/{u[0]}/{u[1]}/{u}") if os.path.exists(f"{SITE}/spool/{u[0]}/{u[1]}/{u}") else ""
            for u in ("kim", "lee", "eve")}


run("attalven", "site", "init", SITE)
sites.add_pages(BUILD, SITE)
shutil.copy(f"{SITE}/conf/attalven.conf", SYSCONFDIR)
for user in ("kim", "lee", "eve", "sysop"):
    run("attalven", "user", "add", user)
    run("attalven-password", user, input="first-password\n")
os.makedirs(f"{WORK}/run/exim")
values = {"SITE": SITE, "RUN": f"{WORK}/run", "HOST": "mail.localhost", "DOMAIN": "localhost", "ADMIN": "sysop",
          "SMTP_PORT": "25", "EXIM": EXIM, "UID": "mail", "GID": "mail", "REQUEST_MAX": "1000"}
with open(f"{WORK}/run/exim.conf", "w") as out:
    out.write(re.sub("@([A-Z_]+)@", lambda m: values[m[1]], read(f"{ROOT}/host/exim.conf.in")))
kim, admin = Visitor("kim", "first-password"), Visitor("sysop", "first-password")

GENERAL = {"form": "general", "email_name": "김 <b>\"x\"", "reply_to": "kim@example.org", "page_size": "25",
           "header_encoding": "2", "body_encoding": "1"}
expect("settings are saved", kim.post("mailpref", **GENERAL)[0] == 303)
shown = run("attalven", "prefs", "show", "kim")
expect("settings are stored", all(line in shown for line in (
    'EMAIL_NAME = 김 <b>"x"\n', "REPLY_TO = kim@example.org\n", "PAGE_SIZE = 25\n", "HEADER_ENCODING = 2\n")), shown)
page = cgi("mailpref", "saved=1", kim.cookie)[2]
expect("settings are shown", b'&#44608; &lt;b&gt;&quot;x&quot;"' in page and b'role="status"' in page, page)
status, _, page = kim.post("mailpref", **{**GENERAL, "reply_to": "a@b, c@d", "page_size": "0"})
expect("a bad address is complained of", status == 422 and b'aria-describedby="reply_to_error reply_to_hint"' in page
       and run("attalven", "prefs", "show", "kim") == shown, page)
status = cgi("mailpref", "", kim.cookie, {**GENERAL, "token": admin.token(), "page_size": "99"})[0]
expect("another user's token is refused", status == 403 and run("attalven", "prefs", "show", "kim") == shown, status)

FORWARD = {"form": "forwarding", "forwarding": "lee@localhost", "keep_copy": "1"}
SITE_FORM = {"form": "site", "recipients": "9", "attach_size": "100", "attach_count": "3", "default_header_encoding": "3",
             "default_body_encoding": "3", "forwarding_allowed": "1", "receipts": "1"}
expect("forwarding is not offered", kim.post("mailpref", **FORWARD)[0] == 400)
expect("only the administrator administers", [v.post("mailadm", **SITE_FORM)[0] for v in (kim, admin)] == [403, 303])
expect("forwarding is offered", kim.post("mailpref", **FORWARD)[0] == 303)
HOSTILE = '안녕 ";redirect "eve@localhost";# \\ ${run{/bin/touch ' + WORK + '/pwned}} $home\r\n.\r\ntext:\r\n\\"'
away = {"form": "vacation", "vacation": "1", "start": "2020-01-01", "end": "2037-01-01", "subject": HOSTILE, "reply": HOSTILE}
expect("vacation is saved", kim.post("mailpref", **away)[0] == 303)
expect("the signature is saved", kim.post("mailpref", form="signature", signature=HOSTILE)[0] == 303)
spools = deliver("lee@localhost", "kim@localhost")
expect("forwarded, a copy kept, nobody else", "Subject: hello" in spools["kim"] and "Subject: hello" in spools["lee"]
       and not spools["eve"], spools)
reply = spools["lee"].partition("auto-replied")[2].replace("=\n", "")
expect("the reply carries the text as it is", all(line in reply for line in (
    '=EC=95=88=EB=85=95 ";redirect "eve@localhost";# \\ ${run', "}} $home\n.\ntext:\n\\\"")) and
    not os.path.exists(f"{WORK}/pwned"), spools["lee"])
expect("the period ends", kim.post("mailpref", **{**away, "end": "2020-01-02"})[0] == 303)
run("attalven", "prefs", "set", "FWD_FLAG=0")
spools = deliver("eve@localhost", "kim@localhost")
expect("then mail just arrives", spools["kim"].count("Subject: hello") == 2 and not spools["eve"], spools)

expect("a wrong old password", kim.post("mailpref", form="password", old_password="x", new_password="second-password",
                                        new_password_again="second-password")[0] == 422)
change = {"old_password": "first-password", "new_password": "second-password", "new_password_again": "second-password"}
expect("a new password", kim.post("mailpref", form="password", **change)[0] == 303)
expect("ends the old session", cgi("mailpref", "", kim.cookie)[0] == 403 and Visitor("kim", "second-password").token())
made = admin.post("mailadm", form="add", new_id="park", new_id_password="third-password")[0]
bad = [admin.post("mailadm", form="add", new_id=i, new_id_password="third-password")[0] for i in ("park", "../x", "a/b")]
expect("users are added", made == 303 and bad == [422] * 3 and Visitor("park", "third-password").token(), bad)
park = Visitor("park", "third-password")
expect("users are locked", admin.post("mailadm", form="lock", locked_id="park")[0] == 303
       and not Visitor("park", "third-password").cookie and cgi("mailpref", "", park.cookie)[0] == 403)
admin.post("mailadm", form="password", user_id="park", user_password="fourth-password")
expect("a new password lets nobody back in", cgi("mailpref", "", park.cookie)[0] == 403
       and Visitor("park", "fourth-password").token())
origins = [cgi("login", form={"lang": "kor"}, more={"HTTP_HOST": "a:1", **more})[0] for more in (
    {}, {"HTTP_ORIGIN": "http://a:1"}, {"HTTP_ORIGIN": "http://b:1"}, {"HTTP_ORIGIN": "null"},
    {"HTTP_ORIGIN": "http://a:1", "HTTP_SEC_FETCH_SITE": "cross-site"})]
expect("the login page's forms come from itself", origins == [303, 303, 403, 403, 403], origins)

with open(f"{kim.home}/sent", "w") as sent:
    sent.write("From kim@localhost Mon Jan  5 10:00:00 2004\nMessage-ID: <1.2@localhost>\nFrom: kim@localhost\n\nx\n\n")
for user, key in (("kim", "1.2@localhost"), ("kim", "1.2@localhost"), ("kim", "other@localhost"), ("../kim", "1.2@localhost")):
    head, dot = cgi("mailrcpt", urllib.parse.urlencode({"userid": user, "maildomainname": "localhost", "msgid": key}))[1:]
    expect("the dot", dot[:6] == b"GIF89a" and dot[-1:] == b";" and "image/gif" in head, dot)
lines = read(f"{kim.home}/receipts").splitlines()
expect("one receipt, of a mail that was sent", len(lines) == 1 and lines[0].endswith(" 1.2@localhost"), lines)
with open(f"{kim.home}/receipts", "w") as full:
    full.write("1 x@y\n" * 43690)
cgi("mailrcpt", "userid=kim&maildomainname=localhost&msgid=1.2@localhost")
expect("receipts are bounded", os.path.getsize(f"{kim.home}/receipts") == 6 * 43690)
print(f"{failures} failures")
sys.exit(failures > 0)
