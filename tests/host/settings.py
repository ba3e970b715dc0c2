#!/usr/bin/env python3
"""settings.py BUILD: drives mailpref, mailadm, mailrcpt and login by hand. Makes the site BUILD/site, where the programs
look for it."""
import os, re, subprocess, sys, time, urllib.parse
import sites
from checks import expect, finish

BUILD = os.path.abspath(sys.argv[1])
SITE = sites.make(BUILD, "kim", "lee", "sysop")[0]


def stored():
    return sites.run(BUILD, SITE, "attalven", "prefs", "show", "kim")


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
        self.home = f"{SITE}/mbox/{user[0]}/{user[1]}/{user}"

    def token(self):
        return re.search(rb'name="token" value="([^"]+)', cgi("mailpref", cookie=self.cookie)[2])[1].decode()

    def post(self, program, **form):
        return cgi(program, "", self.cookie, {"token": self.token(), **form})


kim, admin = Visitor("kim", "a password"), Visitor("sysop", "a password")

GENERAL = {"form": "general", "email_name": "김 <b>\"x\"", "reply_to": "kim@example.org", "page_size": "25",
           "header_encoding": "2", "body_encoding": "1"}
expect("settings are saved", kim.post("mailpref", **GENERAL)[0] == 303)
shown = stored()
expect("settings are stored", all(line in shown for line in (
    'EMAIL_NAME = 김 <b>"x"\n', "REPLY_TO = kim@example.org\n", "PAGE_SIZE = 25\n", "HEADER_ENCODING = 2\n")), shown)
page = cgi("mailpref", "saved=1", kim.cookie)[2]
expect("settings are shown", b'&#44608; &lt;b&gt;&quot;x&quot;"' in page and b'role="status"' in page, page)
status, _, page = kim.post("mailpref", **{**GENERAL, "reply_to": "a@b, c@d", "page_size": "0"})
expect("a bad address is complained of", status == 422 and b'aria-describedby="reply_to_error reply_to_hint"' in page
       and stored() == shown, page)
status = cgi("mailpref", "", kim.cookie, {**GENERAL, "token": admin.token(), "page_size": "99"})[0]
expect("another user's token is refused", status == 403 and stored() == shown, status)

FORWARD = {"form": "forwarding", "forwarding": "lee@localhost", "keep_copy": "1"}
SITE_FORM = {"form": "site", "recipients": "9", "attach_size": "100", "attach_count": "3", "default_header_encoding": "3",
             "default_body_encoding": "3", "forwarding_allowed": "1", "receipts": "1"}
expect("forwarding is not offered", kim.post("mailpref", **FORWARD)[0] == 400)
expect("only the administrator administers", [v.post("mailadm", **SITE_FORM)[0] for v in (kim, admin)] == [403, 303])
expect("forwarding is offered", kim.post("mailpref", **FORWARD)[0] == 303)

expect("a wrong old password", kim.post("mailpref", form="password", old_password="x", new_password="second-password",
                                        new_password_again="second-password")[0] == 422)
change = {"old_password": "a password", "new_password": "second-password", "new_password_again": "second-password"}
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
lines = open(f"{kim.home}/receipts").read().splitlines()
expect("one receipt, of a mail that was sent", len(lines) == 1 and lines[0].endswith(" 1.2@localhost"), lines)
page = cgi("mailview", "fldrname=sent&select=1", Visitor("kim", "second-password").cookie)[2].decode("euc-kr", "replace")
expect("the page of the mail says when", time.strftime(">%Y-%m-%d %H:", time.localtime(int(lines[0].split()[0]))) in page, page)
with open(f"{kim.home}/receipts", "w") as full:
    full.write("1 x@y\n" * 43690)
cgi("mailrcpt", "userid=kim&maildomainname=localhost&msgid=1.2@localhost")
expect("receipts are bounded", os.path.getsize(f"{kim.home}/receipts") == 6 * 43690)
finish()
