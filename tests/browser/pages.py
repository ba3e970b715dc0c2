"""What a person sees: pages.py ATTALVEN DATA OUTPUT renders the sample mailbox in Chromium, each message in its page
character set and under the response headers that isolate a mail's HTML, and compares the visible text with the known
one. A hostile mail must run and load nothing, while inline parts and links work. Screenshots go to OUTPUT."""

import http.server
import json
import os
import re
import subprocess
import sys
import threading
import unittest
import urllib.parse

from chromium import Chromium

ATTALVEN, DATA, OUTPUT = sys.argv[1:4]
SAMPLE = DATA + "/sample.mbox"
with open(DATA + "/sample.json", encoding="utf-8") as known_texts:
    KNOWN = json.load(known_texts)
with open(os.path.dirname(__file__) + "/hostile.html", encoding="ascii") as hostile_body:
    HOSTILE = hostile_body.read()
ISOLATED = {
    "Content-Security-Policy":
        "sandbox allow-same-origin allow-popups allow-popups-to-escape-sandbox; default-src 'none'; "
        "img-src 'self' data:; style-src 'unsafe-inline'; form-action 'none'; base-uri 'none'; frame-ancestors 'self'",
    "Referrer-Policy": "no-referrer",
    "X-Content-Type-Options": "nosniff",
}
HTML_TEXT = "회의는 월요일입니다."  # of the messages that are shown in their HTML form
KOREAN, JAPANESE, CHINESE = ("euc-kr", "cp949"), ("shift_jis", "cp932"), ("gb2312", "gbk")
FAMILIES = {"euc-kr": KOREAN, "iso-2022-kr": KOREAN, "ks_c_5601-1987": KOREAN, "euc-jp": JAPANESE,
            "iso-2022-jp": JAPANESE, "shift_jis": JAPANESE, "gb2312": CHINESE, "hz-gb-2312": CHINESE,
            "big5": ("big5", "cp950")}


def attalven(*args):
    words = [ATTALVEN, *(word if isinstance(word, bytes) else str(word) for word in args)]
    return subprocess.run(words, stdout=subprocess.PIPE, check=True).stdout


def page_set(n, text):
    """The set in which the library shows message n: (label of the page, its codec)."""
    raw = attalven("show", SAMPLE, n, "--raw")
    named = re.search(r"text/.* charset ([^,\n]+)", attalven("show", SAMPLE, n, "--structure").decode())
    name = named[1].lower() if named else "iso-2022-kr" if b"\x1b$)C" in raw else "iso-2022-jp"
    if name.startswith("utf-"):
        families = (KOREAN, JAPANESE, CHINESE, FAMILIES["big5"])
        return next(f for f in families if text.encode(f[1], "ignore").decode(f[1]) == text)
    return FAMILIES.get(name, (name, name))


class Server(http.server.BaseHTTPRequestHandler):
    pages, seen = {}, []

    def do_GET(self):
        url = urllib.parse.urlsplit(self.path)
        self.seen.append((self.headers["Host"], self.path, self.headers["Cookie"]))
        if url.path == "/cgi-auth/mailview.cgi":
            query = urllib.parse.parse_qs(url.query, encoding="latin-1")
            what, name = ("cid", query["cid"]) if "cid" in query else ("name", query["filename"])
            answer = attalven("download", SAMPLE, query["select"][0], "--" + what, name[0].encode("latin-1"))
            header, content = answer.split(b"\n\n", 1)
            headers = {} if what == "name" else {"Content-Type": header.decode().split(": ")[1]}
        else:
            headers, content = self.pages.get(url.path, ({}, b""))
        self.send_response(200)
        for name, value in headers.items():
            self.send_header(name, value)
        self.end_headers()
        self.wfile.write(content)

    do_POST = do_GET

    def log_message(self, *args):
        pass


class Pages(unittest.TestCase):
    @classmethod
    def setUpClass(cls):
        os.makedirs(OUTPUT, exist_ok=True)
        cls.server = http.server.ThreadingHTTPServer(("127.0.0.1", 0), Server)
        threading.Thread(target=cls.server.serve_forever, daemon=True).start()
        # Every name leads here: nothing leaves the machine, and what a page asks of any host is seen.
        cls.browser = Chromium(f"--host-resolver-rules=MAP * 127.0.0.1:{cls.server.server_port}")

    @classmethod
    def tearDownClass(cls):
        cls.browser.close()
        cls.server.shutdown()
        cls.server.server_close()

    def show(self, name, html, charset="us-ascii", headers=ISOLATED, site="http://site.example"):
        content_type = {"Content-Type": "text/html; charset=" + charset, "Set-Cookie": "id=1; SameSite=Strict"}
        Server.pages["/" + name] = (content_type | headers, html)
        self.browser.show(f"{site}/{name}")
        self.browser.picture(f"{OUTPUT}/{name}.png")

    def test_visible_text(self):
        for known in KNOWN:
            n, text = known["n"], known["text"]
            if text is None:
                continue
            with self.subTest(known["label"]):
                label, codec = page_set(n, text)
                html = attalven("html", SAMPLE, n)
                if "hz" in known["label"]:  # no browser reads HZ pages: a host converts them
                    html = html.decode("hz").encode("gbk")
                self.show(f"{n:02d}", html, label)
                seen = self.browser.evaluate("(document.querySelector('.textbody') || document.body).innerText")
                if b"textbody" in html:
                    self.assertEqual(seen.replace("\xa0", " ").strip(), text.strip())
                else:
                    self.assertTrue(seen.startswith(HTML_TEXT), seen)

    def hostile(self, kind, headers):
        folder = f"{OUTPUT}/{kind}.mbox"
        with open(folder, "w", encoding="ascii") as file:
            file.write("From a@b Mon Jan  1 00:00:00 2024\nContent-Type: text/html\n\n")
            file.write(HOSTILE.replace("KIND", kind) + "\n")
        self.show(kind, attalven("html", folder, 1), headers=headers)

    def test_hostile_mail(self):
        self.hostile("isolated", ISOLATED)
        self.browser.evaluate("document.getElementById('script').click()")
        x, y = self.browser.evaluate("""
            const link = [...document.links].pop(), box = (link.scrollIntoView(), link.getBoundingClientRect());
            [box.x + 5, box.y + 5]""")
        self.browser.click(x, y)
        self.assertEqual(self.browser.evaluate("document.title"), "")
        # Without the headers the same mail runs and loads: the check can fail.
        self.hostile("open", {})
        loaded = {path for host, path, cookie in Server.seen if host == "evil.example"}
        self.assertIn("/open-script", loaded)
        self.assertIn("/open-img", loaded)
        # The click on a link is all that leaves the isolated page.
        self.assertEqual({path for path in loaded if "isolated" in path}, {"/isolated-clicked"})

    def test_inline_parts(self):
        n = next(m["n"] for m in KNOWN if m["label"] == "inline images")
        html = attalven("html", SAMPLE, n)
        self.show("inline", html, site=re.search(rb"(http://[^/]*)/cgi-auth/", html)[1].decode())
        widths = self.browser.evaluate("[...document.images].map(image => image.naturalWidth)")
        self.assertTrue(widths and all(widths), widths)
        cookies = [cookie for host, path, cookie in Server.seen if "cid=" in path]
        self.assertEqual(set(cookies), {"id=1"})


if __name__ == "__main__":
    unittest.main(argv=sys.argv[:1])
