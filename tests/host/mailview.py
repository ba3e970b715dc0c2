#!/usr/bin/env python3
"""mailview.py BUILD: runs BUILD/host/cgi-auth/mailview.cgi for the sample mailbox, compares what it shows and gives out
with the known texts and Python's reading of the mail, and looks for anything active in what it makes of hostile mail."""
import base64, html, io, json, mailbox, os, re, shutil, subprocess, sys, unittest, urllib.parse, zipfile
import sites

BUILD = os.path.abspath(sys.argv[1])
DATA = f"{os.path.dirname(os.path.abspath(__file__))}/../data"
SAMPLE = list(mailbox.mbox(f"{DATA}/sample.mbox"))
KNOWN = json.load(open(f"{DATA}/sample.json", encoding="utf-8"))
CODECS = {"euc-kr": "cp949", "shift_jis": "cp932", "gb2312": "gbk", "big5": "big5hkscs"}
HTML_TEXT = "회의는 월요일입니다."  # of the messages that are shown in their HTML form
ISOLATED = ("sandbox allow-same-origin allow-popups allow-popups-to-escape-sandbox; default-src 'none'; img-src 'self' "
            "data:; style-src 'unsafe-inline'; form-action 'none'; base-uri 'none'; frame-ancestors 'self'")
PASSIVE, MARK = "sandbox; default-src 'none'", "\"'><x-active>"
HEADERS = {"status", "content-type", "content-length", "content-disposition", "content-security-policy", "cache-control",
           "referrer-policy", "x-content-type-options", "cross-origin-resource-policy"}


def ask(query, user="kim", lang="eng", program="mailview"):
    env = {"REQUEST_METHOD": "GET", "QUERY_STRING": query, "REMOTE_ADDR": "127.0.0.1",
           "HTTP_COOKIE": f"auth={sites.code(user, KEY)}; lang={lang}"}
    done = subprocess.run([f"{BUILD}/host/cgi-auth/{program}.cgi"], env=env, stdin=subprocess.DEVNULL, capture_output=True)
    head, content = done.stdout.split(b"\n\n", 1)
    return {k.lower(): v for k, v in (line.split(": ", 1) for line in head.decode("ascii").splitlines())}, content


def view(cmd, select=1, raw="", user="kim", lang="eng", **fields):
    query = {"cmd": cmd, "fldrname": "inbox", "select": select, **fields}
    return ask(urllib.parse.urlencode(query, encoding="utf-8", errors="surrogateescape") + raw, user, lang)


def decoded(head, content):
    label = re.search("charset=(.*)", head["content-type"])[1].lower()
    return content.decode(CODECS.get(label, label))


def page(cmd, *args, **fields):
    head, content = view(cmd, *args, **fields)
    return head, decoded(head, content)


def texts(pattern, markup):
    return [html.unescape(re.sub("<[^>]*>", "", found)).replace("\xa0", " ") for found in re.findall(pattern, markup, re.S)]


def store(*messages):
    with open(f"{SITE}/spool/k/i/kim", "wb") as folder:
        for message in messages:
            folder.write(b"From a@b.example Mon Jan  5 00:00:00 2026\n" + message + b"\n\n")


def mail(body="", *fields, headers="Subject: s"):
    return "\n".join([headers, *fields, "", body]).encode("utf-8", "surrogateescape")


def mixed(*parts, headers="Subject: s"):
    return mail("\n".join(["--b", *(part.decode("utf-8", "surrogateescape") + "\n--b" for part in parts)]) + "--",
                "Content-Type: multipart/mixed; boundary=b", headers=headers)


def leaves(message):
    if message.get_content_maintype() != "multipart":
        return [message]
    return [leaf for part in message.get_payload() for leaf in leaves(part)] if message.is_multipart() else []


def named(disposition):
    return urllib.parse.unquote(disposition.split("filename*=UTF-8''")[1])


class MailView(unittest.TestCase):
    def statuses(self, *queries):
        return [ask(query)[0].get("status", "200")[:3] for query in queries]

    def test_sample(self):
        shutil.copyfile(f"{DATA}/sample.mbox", f"{SITE}/spool/k/i/kim")
        for known, message in zip(KNOWN, SAMPLE):
            with self.subTest(known["label"]):
                _, shown = page("view", known["n"], lang=("eng", "kor", "jpn", "chn")[known["n"] % 4])
                self.assertEqual(texts("<h1>(.*?)</h1>", shown), [known["subject"]])
                self.assertEqual(texts("<dd>(.*?)</dd>", shown)[0], f'"{known["from_name"]}" <{known["address"]}>')
                head, body = page("body", known["n"])
                self.assertEqual(head["content-security-policy"], ISOLATED)
                if known["text"] is not None:
                    seen = texts('<DIV CLASS="textbody">(.*?)</DIV>', body)
                    self.assertEqual(seen[0].strip(), known["text"]) if seen else self.assertIn(HTML_TEXT, texts("<body>.*", body)[0])
                for n, leaf in enumerate(leaves(message), 1):
                    if known["label"] in ("uuencoded", "no closing delimiter") or leaf.is_multipart():
                        continue  # Python reads them otherwise
                    self.assertEqual(view("down", known["n"], part=n)[1], leaf.get_payload(decode=True))
        names = ["그림.png", "議事録.txt", "说明.txt", "附件.zip"]
        packed = zipfile.ZipFile(io.BytesIO(view("zip", 19)[1]))
        self.assertEqual((packed.namelist(), packed.testzip()), (names, None))
        self.assertEqual([named(view("down", 19, part=n)[0]["content-disposition"]) for n in range(3, 7)], names)
        pictures = [ask(query)[1] for query in re.findall(r'src="[^"?]*\?([^"]*)"', page("body", 18)[1] + page("body", 25)[1].lower())]
        self.assertEqual([picture[:4] for picture in pictures], [b"\x89PNG", b"GIF8", b"\x89PNG"])
        self.assertEqual(texts("<h1>(.*?)</h1>", page("view", 20, part="2.2")[1]), ["innermost"])

    def test_list(self):
        shutil.copyfile(f"{DATA}/sample.mbox", f"{SITE}/spool/k/i/kim")
        sites.run(BUILD, SITE, "attalven", "prefs", "set", "kim", "PAGE_SIZE=200")
        for source in ("parsed", "from its file"):
            rows = re.findall('name="msg" value="(\\d+):.*?<bdi>(.*?)</bdi>.*?<bdi>(.*?)</bdi>',
                              decoded(*ask("fldrname=inbox", program="maillist")), re.S)
            seen = [tuple(map(html.unescape, row[1:])) for row in sorted(rows, key=lambda row: int(row[0]))]
            self.assertEqual(seen, [(known["from_name"] or known["address"], known["subject"]) for known in KNOWN], source)

    def test_names_and_forms(self):
        b64 = base64.b64encode(mail("inside", headers="Subject: coded")).decode()
        store(mixed(mail("text", headers="Content-Type: text/plain"),
                    mail("1", headers="Content-Disposition: attachment; filename*0*=euc-kr''%B1; filename*1*=%D7%B8; filename*2*=%B2; filename*3=.a"),
                    mail("2", headers="Content-Type: a/b; name=\"=?utf-8?B?4Q==?= =?utf-8?B?hIA=?=/../x.a\""),
                    mail("3", headers="Content-Type: a/b; name=X.a"), mail("4", headers="Content-Type: a/b; name=x.a"),
                    mail(b64, "Content-Transfer-Encoding: base64", headers="Content-Type: message/rfc822"),
                    mail("<svg>", "Content-ID: <a+b&c@x>", headers="Content-Type: image/svg+xml; name=x.svg"),
                    mail("GIF", "Content-ID: <g+h&c@x>", headers="Content-Type: image/gif")),
              mail("cid: <b>\U0001f600 가ｶ", "Content-Type: text/plain; charset=utf-8", headers="Subject: \U0001f600"))
        packed = zipfile.ZipFile(io.BytesIO(view("zip")[1]))
        self.assertEqual(packed.namelist()[:4], ["그림.a", "x.a", "X (2).a", "x (3).a"])
        self.assertEqual([packed.read(name) for name in packed.namelist()[:2]], [b"1", b"2"])
        self.assertIn("inside", page("body", part="6")[1])
        svg, gif = (view("down", raw=f"&cid={name}+{end}&c@x")[0] for name, end in ("ab", "gh"))
        self.assertEqual((svg["content-type"], gif["content-type"]), ("application/octet-stream", "image/gif"))
        self.assertTrue(svg["content-disposition"].startswith("attachment") and "content-disposition" not in gif)
        self.assertEqual(texts("<DIV CLASS=\"textbody\">(.*)</DIV>", page("body", 2)[1])[0].strip(), "cid: <b>\U0001f600 가ｶ")
        self.assertEqual(texts("<h1>(.*?)</h1>", page("view", 2)[1]), ["\U0001f600"])
        with open(f"{SITE}/spool/k/i/kim", "rb") as folder:
            self.assertEqual(folder.read().count(b"\nStatus: R"), 1)

    def test_hostile(self):
        word = "=?utf-8?B?" + base64.b64encode(f"\r\nSet-Cookie: a=1\r\n\r\n{MARK}\0".encode()).decode() + "?="
        for mark in (MARK, word, f"{MARK}\0{MARK}", MARK * 20000):
            headers = "\n".join(f"{name}: {mark}" for name in ("Subject", "Date", "X-Priority", "MIME-Version"))
            headers += "\n" + "\n".join(f'{name}: "{mark}" <{mark}@{mark}>' for name in ("From", "To", "Cc", "Message-ID"))
            types = [f'Content-Type: {kind}; name="{mark}"\nContent-ID: <{mark}>' for kind in ("text/html", f"image/{mark}", mark)]
            types.append(f'Content-Type: {mark}; charset="{mark}"\nContent-Disposition: {mark}; filename="{mark}"')
            store(mixed(mail("text", headers=f'Content-Type: text/plain; charset="{mark}"'),
                        *(mail("x", headers=kind) for kind in types), mail(headers=headers), headers=headers))
            for cmd in ("view", "body", "zip", "down", "raw", "header", "savebody"):
                for part in ("", *"12345"):
                    head, content = view(cmd, part=part, down=1)
                    self.assertLessEqual(set(head), HEADERS)
                    if head["content-security-policy"] == ISOLATED:
                        self.assertEqual(cmd, "body")
                    elif head["content-type"].startswith("text/html"):
                        self.assertFalse(b"<x-active" in content)
                        self.assertTrue(head["content-security-policy"].startswith("default-src 'none'; style-src 'self'"))
                    else:
                        self.assertEqual((head["content-security-policy"], head["x-content-type-options"]), (PASSIVE, "nosniff"))
                        self.assertTrue(cmd == "header" or head["content-disposition"].startswith("attachment"))

    def test_forged(self):
        store(mail("<b>"), mail("--b\n" + "Content-Type: message/rfc822\n\nContent-Type: multipart/mixed; boundary=b\n\n--b\n" * 300,
                                "Content-Type: multipart/mixed; boundary=b"))
        bad = [f"cmd=down&fldrname=inbox&select=1&part={part}" for part in ("", "0", "2", "1..1", "1.1", "9" * 30, "-1", "1.")]
        bad += [f"cmd=view&select=1&fldrname={name}" for name in ("", "../kim", "inbox/../inbox", "%00", "kim")]
        bad += ["cmd=down&fldrname=inbox&select=1&cid=x", "cmd=down&fldrname=inbox&select=1&filename=x", "cmd=zip&fldrname=inbox&select=1", "cmd=view&fldrname=inbox&select=3", "cmd=view&fldrname=inbox&select=-1"]
        self.assertEqual(set(self.statuses(*bad)), {"404"})
        self.assertEqual(self.statuses(*(f"cmd=view&fldrname=inbox&select=2&part={'.'.join('1' * n)}" for n in (1, 101, 9999))),
                         ["200", "404", "404"])
        self.assertEqual([view("view", user=user)[0]["status"][:3] for user in ("lee", "nobody")], ["404", "403"])


SITE, KEY = sites.make(BUILD, "kim", "lee")
unittest.main(argv=sys.argv[:1])
