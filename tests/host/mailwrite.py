#!/usr/bin/env python3
"""mailwrite.py BUILD: posts compose forms to mailwrite.cgi by hand and reads what a strict SMTP server on
loopback got, what the folders keep and what the pages say. Makes the site BUILD/site, where the programs look for it."""
import base64, email, email.policy, glob, html, mailbox, os, quopri, re, secrets, subprocess, sys
from urllib.parse import urlencode
import sites
from checks import finish, same as expect
from strict_server import StrictServer

BUILD = os.path.abspath(sys.argv[1])
(SITE, KEY), SESSION = sites.make(BUILD, "kim"), secrets.token_hex(16)
MBOX, SERVER = f"{SITE}/mbox/k/i/kim", StrictServer(f"{SITE}/taken")
ADDRESS = "2001:0db8:1111:2222:3333:4444:5555:6666"  # of the visitor: as long as one can be


def make_site():
    sites.run(BUILD, SITE, "attalven", "prefs", "set", "ATTACH_FILE_LIMIT_SIZE=1", "ATTACH_FILE_LIMIT_NUM=3")
    for path, text in ((f"{SITE}/mbox/smtp_server_list.ini", f"127.0.0.1:{SERVER.port}\n"),
                       (f"{MBOX}/signature.txt", "김철수\nExample & Sons\n")):
        with open(path, "w") as out:
            out.write(text)


def cgi(query="", fields=None, files=(), lang="kor", token=None, session=SESSION):
    """Status, page text and Location of a request; `files` are (field, name, content)."""
    env = {"REQUEST_METHOD": "GET", "QUERY_STRING": query, "REMOTE_ADDR": ADDRESS,
           "HTTP_COOKIE": f"auth={sites.code('kim', KEY if session else 'gone')}; session={session}; lang={lang}"}
    body = b""
    if fields is not None:
        token = sites.code("kim", f"{KEY}:form:{SESSION}") if token is None else token
        for name, value in {"token": token, "_charset_": "utf-8", **fields}.items():
            body += f'--B\r\nContent-Disposition: form-data; name="{name}"\r\n\r\n{value}\r\n'.encode()
        for name, file, content in files:
            body += (f'--B\r\nContent-Disposition: form-data; name="{name}"; filename="{file}"\r\n'
                     "Content-Type: application/octet-stream\r\n\r\n").encode() + content + b"\r\n"
        body += b"--B--\r\n"
        env.update(REQUEST_METHOD="POST", CONTENT_TYPE="multipart/form-data; boundary=B", CONTENT_LENGTH=str(len(body)))
    out = subprocess.run([f"{BUILD}/host/cgi-auth/mailwrite.cgi"], input=body, env=env, stdout=subprocess.PIPE).stdout
    head, _, page = out.partition(b"\n\n")
    head = head.decode()
    status = int((re.search(r"^Status: (\d+)", head, re.M) or [0, 0])[1])
    charset = (re.search(r"charset=(\S+)", head) or [0, "utf-8"])[1]
    return status, page.decode({"EUC-KR": "cp949", "Shift_JIS": "cp932"}.get(charset, charset)), (re.search(r"^Location: (.*)", head, re.M) or [0, ""])[1].strip()


def values(page):
    """The fields of the form on a page, as a browser would post them."""
    fields = {n: html.unescape(v) for n, v in re.findall(r'<input[^>]*name="(\w+)" value="([^"]*)"', page)
              if n not in ("receipt", "signature")}
    fields["body"] = html.unescape(re.search(r"<textarea[^>]*>\n(.*?)</textarea>", page, re.S)[1])
    for name, choices in re.findall(r'<select[^>]*name="(\w+)"[^>]*>(.*?)</select>', page, re.S):
        fields[name] = re.search(r'value="([^"]*)" selected', choices)[1]
    return {n: v for n, v in fields.items() if n not in ("token", "action")}


def new(**fields):
    return {**values(cgi("cmd=new")[1]), "to": "lee@localhost", "action": "send", **fields}


def taken():
    """The messages that the server got since the last call: sender, recipients, parsed message."""
    return [(sender, to, email.message_from_bytes(content, policy=email.policy.default)) for sender, to, content in SERVER.taken()]


def kept(folder):
    box = mailbox.mbox(f"{MBOX}/{folder}", create=False) if os.path.exists(f"{MBOX}/{folder}") else []
    return [email.message_from_bytes(m.as_bytes(), policy=email.policy.default) for m in box]


def text(message, kind="plain"):
    part = message.get_body((kind,))
    return part.get_content() if part else None


LONG = {"kor": ("안녕 a 하세요 " * 6).strip(), "jpn": ("会議 a の表 " * 8).strip(), "chn": ("你好 a 张三们 " * 7).strip()}
#         page   subject and text, display name, file name, the character set that must be chosen
TEXTS = [("eng", "plain words", "Kim Cheol Su", "notes.txt", "us-ascii"),
         ("kor", LONG["kor"], "김, 철수", "한글 a 보고서 문서 이름이 매우 긴 파일입니다.hwp", "euc-kr"),
         ("jpn", LONG["jpn"], "田中 表子", "会議 a の日程表ソと能力の予定表です.pdf", "iso-2022-jp"),
         ("chn", LONG["chn"], "张三", "报告 a 会议日程安排的说明文件名称.doc", "gb2312"),
         ("eng", "許功蓋 妳們好嗎 a 會議", "許功蓋", "許功蓋這們.txt", "big5"),
         ("kor", "똠방각하", "김", "문서.txt", "utf-8"),
         ("eng", "Grüße aus Köln, ça va", "Jörg", "Größe.txt", "iso-8859-1"),
         ("kor", "안녕 こんにちは 😀 é " * 4 + ".", "김 é 😀", "문서 é 😀 이름이 매우 긴 파일.txt", "utf-8")]


def check_texts():
    for lang, subject, name, file, charset in TEXTS:
        body = f"{subject}\n가격표" if lang == "kor" else f"{subject}\n\n  two  blanks"
        status, page, _ = cgi("", new(to=f'"{name}" <lee@localhost>', subject=subject, body=body), [("attach", file, b"\0x")],
                              lang)
        [(_, to, m)] = taken() or [(0, 0, None)]
        if not m:
            expect(f"{charset}: taken", status, page[:2000])
            continue
        a = next(m.iter_attachments())
        got = (str(m["subject"]), m["to"].addresses[0].display_name, text(m).rstrip(), a.get_filename(), a.get_content(),
               m.get_body().get_content_charset())
        expect(f"{charset}: {lang}", got, (subject, name, body, file, b"\0x" if ".txt" not in file else got[4], charset))


LONG_NAME = "b" * 196 + ".gif"


def check_html():
    png = b"\x89PNG\r\n\x1a\n" + bytes(range(256))
    fields = new(subject="h", format="html", body="<p>가<b>나</b> [image 1]</p>", receipt="1", signature="1")
    cgi("", fields, [("image", "점.PNG", png), ("image", LONG_NAME, b"GIF89a"), ("attach", "List.txt", b"x\n")])
    [(_, _, m)] = taken()
    images = {p["content-id"].strip("<>"): p for p in m.walk() if p.get_content_maintype() == "image"}
    expect("images", sorted((p.get_content_type(), p.get_content()) for p in images.values()),
           [("image/gif", b"GIF89a"), ("image/png", png)])
    shown = text(m, "html")
    order = re.findall(r'src="(?:cid:)?([^"]*)" alt="([^"]*)"', shown)
    expect("images in the text", [(images[i].get_content_type(), alt) for i, alt in order],
           [("image/png", "점.PNG"), ("image/gif", LONG_NAME)])
    expect("html", ("<p>가<b>나</b> <img " in shown, "Example &amp; Sons" in shown, "mailrcpt.cgi?userid=kim" in shown,
                    text(m).split()[0]), (True, True, True, "가나"))
    expect("upload names in /tmp", glob.glob(f"/tmp/*@{ADDRESS}"), [])
    tags = "List<String> a<b> <!-- no --> 1 < 2 <script>x</script> end"
    cgi("", new(body=tags, body_encoding="1"))
    expect("tags in plain text", text(taken()[0][2]).strip().replace("< ", "<"), tags.replace("< ", "<"))


def check_delivery():
    fields = new(to="lee@localhost", bcc="park@localhost, LEE@localhost", subject="bcc")
    first, second = cgi("", fields), cgi("", fields)
    [(sender, to, m)] = taken()
    expect("double post", (first[0], second), (303, first))
    expect("envelope", (sender, to, "park" in m.as_string()), ("kim@localhost", ["lee@localhost", "park@localhost"], False))
    expect("sent copy", (str(kept("sent")[-1]["bcc"]), kept("drafts")), ("park@localhost, LEE@localhost", []))

    sent = len(kept("sent"))
    status, page, _ = cgi("", new(to="nobody@localhost", subject="none", body="text"))
    expect("nobody took it", (status, "550" in page, values(page)["body"], len(kept("drafts")), len(kept("sent"))),
           (422, True, "text", 1, sent))
    status, page, _ = cgi("", {**values(page), "to": "full@localhost", "action": "send"})
    expect("refused behind the data", (status, "552" in page, len(kept("drafts")), taken()), (422, True, 1, []))
    status, page, target = cgi("", {**values(page), "to": "lee@localhost, nobody2@localhost", "subject": "some",
                                    "action": "send"})
    expect("one took it", (status, len(taken()), len(kept("sent"))), (303, 1, sent + 1))
    link = re.search(r'href="mailwrite.cgi\?(cmd=draft[^"]*)"', cgi(target.split("?")[1])[1])
    again = values(cgi(html.unescape(link[1]))[1])
    expect("the others", (again["to"], again["subject"], len(kept("drafts"))), ("nobody2@localhost", "some", 1))
    cgi("", {**again, "to": "park@localhost", "action": "send"})
    expect("sent to the others", (taken()[0][1], kept("drafts")), (["park@localhost"], []))


def check_drafts():
    fields = new(to="half a name <, 김 <park@localhost>", bcc="lee@localhost", subject="초안", format="html", priority="1",
                 body="<i>가</i> [image 1]\n", action="draft")
    page = cgi("", fields, [("attach", "보고서 & co.txt", b"1\r\n2\n"), ("image", "a.png", b"png")])[1]
    page = cgi("", {**values(page), "action": "draft"})[1]
    draft = kept("drafts")
    expect("one draft", (len(draft), str(draft[0]["bcc"]), "보고서 & co.txt" in html.unescape(page)),
           (1, "lee@localhost", True))
    page = cgi(urlencode({"cmd": "draft", "fldrname": "drafts", "select": 1, "msgid": draft[0]["message-id"].strip("<>")}))[1]
    again = values(page)
    lost = [n for n in fields if n not in ("form", "action") and again.get(n) != fields[n].rstrip("\n")]
    expect("draft goes on", (lost, "보고서 & co.txt" in html.unescape(page), "[image 1] a.png" in page), ([], True, True))
    cgi("", {**again, "to": "lee@localhost", "action": "send"})
    [(_, _, m)] = taken()
    parts = {p.get_filename(): p.get_payload(decode=True) for p in m.walk() if p.get_filename()}
    names = {re.sub("^[0-9a-f]{16}-", "", n): c for n, c in parts.items()}
    expect("draft sent", (names, kept("drafts")), ({"보고서 & co.txt": b"1\r\n2\n", "a.png": b"png"}, []))


MESSAGE = ("From kim@x Mon Jan  5 10:00:00 2004\nFrom: =?ks_c_5601-1987?B?{0}?= Cheol Su <a@b.example>\nTo: kim@localhost,"
           " Lee <lee@localhost>\nCc: c@d.example, KIM@localhost\nReply-To: list@b.example\nMessage-ID: <one@b.example>\n"
           "Date: Mon, 5 Jan 2004 10:00:00 +0000\nSubject: RE: =?ks_c_5601-1987?B?{1}?=\nContent-Type: text/html;"
           " charset=ks_c_5601-1987\nContent-Transfer-Encoding: base64\n\n{2}\n")


def check_answers():
    encoded = [base64.b64encode(t.encode("cp949")).decode() for t in ("김", "회의", "<p>똠방 &lt;b&gt;<br>둘 &hearts;&#9829;</p>")]
    with open(f"{SITE}/spool/k/i/kim", "w") as out:
        out.write(MESSAGE.format(*encoded))
    query = "fldrname=inbox&select=1&msgid=one@b.example&cmd="
    form = values(cgi(query + "replyall")[1])
    expect("reply to all", (form["to"], form["cc"], form["subject"]),
           ('list@b.example, "Lee" <lee@localhost>', "c@d.example", "RE: 회의"))
    expect("quoted", form["body"].split("\n")[2:],
           ["2004-01-05 10:00에 김 Cheol Su 님이 쓴 글:", "> 똠방 <b>", "> 둘 &hearts;♥", ""])
    page = cgi(query + "forward", lang="jpn")[1]
    cgi("", {**values(page), "to": "lee@localhost", "action": "send"}, lang="jpn")
    [(_, _, m)] = taken()
    inner = [p for p in m.walk() if p.get_content_type() == "message/rfc822"][0].get_content()
    expect("forwarded", (str(m["subject"]), inner["message-id"], inner.get_payload(decode=True).decode("cp949")),
           ("Fwd: RE: 회의", "<one@b.example>", "<p>똠방 &lt;b&gt;<br>둘 &hearts;&#9829;</p>"))
    for encoding, encode in ("7bit", bytes), ("base64", base64.encodebytes), ("quoted-printable", quopri.encodestring):
        with open(f"{SITE}/spool/k/i/kim", "wb") as out:
            out.write(b"From - Mon Jan  5 10:00:00 2004\nFrom: outer@b.example\nContent-Type: multipart/mixed; boundary=b\n\n--b\n\nx"
                      b"\n--b\nContent-Type: message/rfc822\nContent-Transfer-Encoding: " + encoding.encode() + b"\n\n" +
                      encode(MESSAGE.split("\n", 1)[1].format(*encoded).encode()) + b"\n--b--\n")
        query = "fldrname=inbox&select=1&part=2&cmd="
        form = values(cgi(query + "reply")[1])
        cgi("", {**values(cgi(query + "forward")[1]), "to": "lee@localhost", "action": "send"})
        inner = [p for p in taken()[0][2].walk() if p.get_content_type() == "message/rfc822"][0].get_content()
        expect(f"message in a message, {encoding}", (form["to"], form["body"].split("\n")[3:], inner["message-id"], inner.get_payload(decode=True).decode("cp949")),
               ("list@b.example", ["> 똠방 <b>", "> 둘 &hearts;♥", ""], "<one@b.example>", "<p>똠방 &lt;b&gt;<br>둘 &hearts;&#9829;</p>"))
    with open(f"{SITE}/spool/k/i/kim", "w") as out:  # a delivery report: its second part has no Message-ID
        out.write("From - Mon Jan  5 10:00:00 2004\nFrom: daemon@b.example\nMessage-ID: <two@b.example>\nContent-Type:"
                  " multipart/report; boundary=b\n\n--b\n\nwhy\n--b\nContent-Type: message/delivery-status\n\nA: b\n\n--b--\n")
    expect("reply to a report", values(cgi("fldrname=inbox&select=1&msgid=two@b.example&cmd=reply")[1])["to"], "daemon@b.example")


def check_hostile():
    break_in = "x\r\nBcc: evil@localhost\r\n\r\nFrom evil@localhost Mon Jan  5 10:00:00 2004\n"
    fields = new(**{n: break_in for n in ("subject", "body", "priority", "charset", "format", "header_encoding")},
                 to=f'"{break_in}" <lee@localhost>', cc="c@localhost\r\nX: y@localhost", body_encoding="1")
    eml = b"Subject: inner\n\nFrom evil@localhost Mon Jan  5 10:00:00 2004\nSubject: forged\n\nx\n"
    before = len(kept("sent"))
    status, page, _ = cgi("", fields, [("attach", 'a"\r\nX-Evil: 1;.txt', b"x"), ("attach", "m.eml", eml)])
    expect("injection is an address", (status, taken()), (422, []))
    fields["cc"] = ""
    cgi("", {**fields, "form": values(page)["form"]})
    [(_, to, m)] = taken()
    expect("injection", (to, sorted(k for k in m.keys()), len(kept("sent")), "X-Evil" in {k for p in m.walk() for k in p.keys()}),
           (["lee@localhost"], sorted(["Message-Id", "From", "To", "Subject", "Date", "MIME-Version", "X-Priority", "X-Mailer",
                                       "Content-Type"]), before + 1, False))
    inner = [p for p in m.walk() if p.get_content_type() == "message/rfc822"][0].get_content()
    expect("message file", str(inner["subject"]), "inner")
    for what, ended in (("form", {"token": "x"}), ("session", {"session": ""})):
        status, page, _ = cgi("", new(body="쓰던 글 <b>", subject="제목"), [("attach", "a.txt", b"a")], **ended)
        expect(f"text of an ended {what}", (status, "쓰던 글 &lt;b&gt;" in page, 'value="제목"' in page), (403, True, True))
    expect("forged token", (cgi("", new(), token="x")[0], cgi("", new(), token=sites.code("lee", KEY))[0], taken()), (403, 403, []))
    expect("foreign form", cgi("", new(form="../../../../k/i/kim"))[0], 400)
    status, page, _ = cgi("", new(), [("attach", f"{n}.bin", b"x" * 300000) for n in range(3)])
    expect("within the limit", (status, len(taken())), (303, 1))
    status, page, _ = cgi("", new(body="stays"), [("attach", f"{n}.bin", b"x" * 524288) for n in range(2)] + [("attach", "z", b"x")])
    expect("over the limit", (status, values(page)["body"], "remove:" in page, taken()), (422, "stays", False, []))
    status, page, _ = cgi("", {"action": "send", **new(subject="")}, [("attach", "big", b"x" * 9_000_000), ("attach", "b", b"x")])
    expect("far over the limit", (status, values(page)["to"], "remove:" in page, taken()), (422, "lee@localhost", False, []))
    left = [f for f in glob.glob(f"{MBOX}/upload/**", recursive=True) if os.path.isfile(f) and "/upload-" in f]
    expect("uploads left behind", left, [])
    sites.run(BUILD, SITE, "attalven", "prefs", "set", "kim", "EMAIL_NAME=김\" 철수", "REPLY_TO=김 <reply@localhost>")
    cgi("", new())
    m = taken()[0][2]
    expect("sender", (m["from"].addresses[0].display_name, str(m["reply-to"])), ("김\" 철수", "reply@localhost"))


make_site()
with SERVER:
    for check in (check_texts, check_html, check_delivery, check_drafts, check_answers, check_hostile):
        check()
finish()
