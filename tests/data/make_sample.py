#!/usr/bin/env python3
"""make_sample.py: writes sample.mbox, the mailbox of the demo and the tests, and sample.json, what each message truly
says: subject, sender's name, text of the first text part (line ends LF, outer white space removed; null where the mail
has none or is too broken to have one) and number of leaf parts. Written for this project; all names are invented."""
import base64, binascii, datetime, json, os, quopri, struct, zlib

HERE = os.path.dirname(os.path.abspath(__file__))
messages = []
CODEC = {"ks_c_5601-1987": "cp949", "hz-gb-2312": "hz", "iso-2022-jp": "iso2022_jp", "iso-2022-kr": "iso2022_kr"}


def coded(text, charset):
    raw = text.encode(CODEC.get(charset.lower(), charset))
    # Each line of ISO-2022-KR text ends in ASCII; the header sequence stands once, at the start.
    return raw + (b"\x0f" if charset == "iso-2022-kr" and raw.rfind(b"\x0e") > raw.rfind(b"\x0f") else b"")


def word(text, charset, letter="B"):
    """Encoded words, folded; the cuts fall between characters."""
    pieces = [text[i:i + 12] for i in range(0, len(text), 12)]
    made = []
    for piece in pieces:
        raw = coded(piece, charset)
        body = base64.b64encode(raw).decode() if letter == "B" else "".join(
            chr(c) if chr(c).isalnum() and c < 128 else "_" if c == 32 else f"={c:02X}" for c in raw)
        made.append(f"=?{charset}?{letter}?{body}?=")
    return "\n ".join(made)


def b64(raw, width=76):
    text = base64.b64encode(raw).decode()
    return "\n".join(text[i:i + width] for i in range(0, len(text), width)) + "\n"


def qp(raw):
    return quopri.encodestring(raw).decode("ascii")


def png(rgb):
    """A picture of one pixel."""
    def chunk(kind, data):
        body = kind + data
        return struct.pack(">I", len(data)) + body + struct.pack(">I", zlib.crc32(body))
    return (b"\x89PNG\r\n\x1a\n" + chunk(b"IHDR", struct.pack(">IIBBBBB", 1, 1, 8, 2, 0, 0, 0)) +
            chunk(b"IDAT", zlib.compress(b"\0" + bytes(rgb), 9)) + chunk(b"IEND", b""))


GIF = base64.b64decode("R0lGODlhAQABAIAAAP8AAAAAACwAAAAAAQABAAACAkQBADs=")


def part(kind, body, *headers, encoding=None):
    lines = [f"Content-Type: {kind}", *headers]
    if encoding:
        lines.append(f"Content-Transfer-Encoding: {encoding}")
    return octets("\n".join(lines)) + b"\n\n" + octets(body)


def octets(text):
    return text if isinstance(text, bytes) else text.encode("ascii")


def multipart(boundary, parts, preamble="", close=True):
    out = octets(preamble)
    for p in parts:
        out += octets(f"--{boundary}\n") + p + (b"" if p.endswith(b"\n") else b"\n")
    return out + (octets(f"--{boundary}--\n") if close else b"")


def mail(label, subject, headers, body, text, leaves, name="Kim Nuri", sender=None, address="nuri@example.org", extra=(),
         subject_header=None, empty_line=True):
    """One message. `headers` are those of the content, `sender` the name as the From header carries it."""
    n = len(messages) + 1
    shown = sender if sender is not None else f'"{name}"'
    when = datetime.datetime(2004, 1, n % 28 + 1, 9, n)
    lines = [f"From {address} {when:%a %b} {when.day:2d} {when:%H:%M:%S %Y}", f"Date: {when:%a, %d %b %Y %H:%M:%S} +0900",
             f"From: {shown} <{address}>", "To: reader@example.net", f"Message-ID: <sample.{n}@mail.example.org>"]
    head = octets("\n".join(lines)) + b"\n"
    head += b"Subject: " + octets(subject if subject_header is None else subject_header) + b"\n"
    head += b"".join(octets(h) + b"\n" for h in (*extra, *headers))
    messages.append((head + (b"\n" + octets(body) + b"\n" if empty_line else b""),
                     {"n": n, "label": label, "subject": subject, "from_name": name, "address": address,
                      "text": text.strip() if text is not None else None, "leaves": leaves}))


def simple(label, subject, charset, text, encoding="8bit", letter="B", name="Kim Nuri", **more):
    """A message of one text part, its subject and sender's name in encoded words of the same set."""
    raw = coded(text, charset)
    body = {"base64": b64, "quoted-printable": qp}.get(encoding, lambda r: r)(raw)
    ascii_name = all(ord(c) < 128 for c in name)
    more.setdefault("sender", None if ascii_name else word(name, charset, letter))
    more.setdefault("subject_header", subject if all(ord(c) < 128 for c in subject) else word(subject, charset, letter))
    mail(label, subject, ["MIME-Version: 1.0", f"Content-Type: text/plain; charset={charset}",
                          f"Content-Transfer-Encoding: {encoding}"], body, text, 1, name=name, **more)


KOREAN = "안녕하세요.\n지난주에 말씀드린 회의 일정을 보냅니다.\n\n  1. 월요일 오전 열 시\n  2. 수요일 오후 세 시\n\n답장 기다리겠습니다.\n"
JAPANESE = "お世話になっております。\n来週の打ち合わせの資料をお送りします。\n\n日時: 月曜日 午前十時\n場所: 第二会議室\n\nよろしくお願いいたします。\n"
SIMPLIFIED = "您好,\n附件是下周会议的材料。\n时间: 星期一上午十点\n地点: 二楼会议室\n谢谢!\n"
TRADITIONAL = "您好,\n附件是下週會議的資料。\n時間: 星期一上午十點\n地點: 二樓會議室\n謝謝!\n"


def letters():
    mail("plain", "Welcome to the sample mailbox", [], "Hello,\n\nthis mailbox shows what mail can look like.\nEvery message was "
         "written for it.\n\n>From the first line to the last.\n",
         "Hello,\n\nthis mailbox shows what mail can look like.\nEvery message was written for it.\n\n>From the first line to "
         "the last.", 1, name="Sample Keeper", address="keeper@example.org", extra=["X-Priority: 1", "Status: RO"])
    simple("euc-kr", "회의 일정 안내", "euc-kr", KOREAN, name="김누리")
    simple("iso-2022-kr body", "지난 회의록", "iso-2022-kr", KOREAN, "7bit", subject_header=word("지난 회의록", "euc-kr"), name="이한결",
           sender=word("이한결", "euc-kr"))
    simple("utf-8 Korean", "올해 첫 모임에 오시는 분들께 드리는 말씀과 약도", "utf-8", KOREAN, "base64", name="박다온")
    simple("extended Korean", "똠방각하 공연 예매", "ks_c_5601-1987", "똠방각하 공연 표가 두 장 남았습니다.\n뷁!\n", "quoted-printable",
           letter="Q", name="최샛별")
    mail("raw iso-2022-kr", "한글 제목", ["Content-Type: text/plain; charset=iso-2022-kr"], coded("본문도 한글입니다.\n", "iso-2022-kr"),
         "본문도 한글입니다.", 1, subject_header=coded("한글 제목", "iso-2022-kr"))
    simple("iso-2022-jp", "打ち合わせの資料", "iso-2022-jp", JAPANESE, "7bit", name="山田花子", address="hanako@example.jp")
    mail("raw iso-2022-jp", "会議のお知らせ", ["Content-Type: text/plain; charset=ISO-2022-JP"], coded("本文です。\n", "iso-2022-jp"),
         "本文です。", 1, subject_header=coded("会議のお知らせ", "iso-2022-jp"), name="Sato Ken", address="ken@example.jp")
    simple("shift_jis", "表と能力のソート", "shift_jis", "C:\\temp~1 に表を保存しました。\nソ, 表, 能, ミ のような文字もあります。\n",
           name="佐藤健", address="ken@example.jp")
    simple("euc-jp", "半角カナのﾃｽﾄ", "euc-jp", "半角カナ: ｱｲｳｴｵ\n" + JAPANESE, letter="Q", name="鈴木一郎", address="ichiro@example.jp")
    simple("gb2312", "下周会议材料", "gb2312", SIMPLIFIED, "base64", name="王小明", address="wang@example.cn")
    simple("hz", "关于下周会议", "hz-gb-2312", "您好!\n会议改在星期二~下午。\n", "7bit", name="李华", address="li@example.cn")
    simple("big5", "下週會議資料", "big5", TRADITIONAL, "quoted-printable", letter="Q", name="陳美玲", address="chen@example.tw")
    simple("latin", "Café au lait à la crème", "iso-8859-1", "Chère Zoë,\nle rendez-vous est fixé à 10 heures.\nÀ bientôt!\n",
           "quoted-printable", letter="Q", name="Éloïse Dupré", address="eloise@example.fr")
    simple("utf-8 Japanese", "明日の予定", "UTF-8", "明日は九時に集合です。\n半角: ｶﾅ\n", "base64", name="高橋愛", address="ai@example.jp")
    simple("unknown set", "Set that nobody knows", "us-ascii", "The label is wrong, the text is plain.\n", "7bit",
           extra=["X-Note: the next header counts"])
    messages[-1] = (messages[-1][0].replace(b"charset=us-ascii", b"charset=x-unheard-of"), messages[-1][1])


def structures():
    html = "<html><body><p>회의는 <b>월요일</b>입니다.</p></body></html>\n"
    alternative = multipart("alt-1", [part("text/plain; charset=euc-kr", coded(KOREAN, "euc-kr"), encoding="8bit"),
                                      part("text/html; charset=euc-kr", qp(coded(html, "euc-kr")), encoding="quoted-printable")])
    mail("alternative", "Two forms of one text", ["MIME-Version: 1.0", 'Content-Type: multipart/alternative;\n boundary="alt-1"'],
         multipart("alt-1", [], "Reader without MIME: this is not for you.\n", False) + alternative, KOREAN, 2)
    related = multipart("rel-1", [
        part("text/html; charset=us-ascii", '<html><body><img src="cid:dot.png@example.org"> and <img src="cid:dot.gif@example.org">'
             "</body></html>\n"),
        part('image/png; name="dot.png"', b64(png((0, 128, 0))), "Content-ID: <dot.png@example.org>",
             'Content-Disposition: inline; filename="dot.png"', encoding="base64"),
        part('image/gif; name="dot.gif"', b64(GIF), "Content-ID: <dot.gif@example.org>",
             'Content-Disposition: inline; filename="dot.gif"', encoding="base64")])
    mail("inline images", "Pictures inside", ["MIME-Version: 1.0", "Content-Type: multipart/related; type=\"text/html\"; boundary=rel-1"],
         related, None, 3)
    nested = multipart("mix-1", [
        part('multipart/alternative; boundary="alt-1"', alternative),
        part('image/png; name="' + word("그림.png", "euc-kr") + '"', b64(png((255, 0, 0))),
             'Content-Disposition: attachment; filename="' + word("그림.png", "euc-kr") + '"', encoding="base64"),
        part('application/octet-stream; name="' + word("議事録.txt", "iso-2022-jp") + '"', b64(coded("議事録\n", "shift_jis")),
             'Content-Disposition: attachment; filename="' + word("議事録.txt", "iso-2022-jp") + '"', encoding="base64"),
        part('text/plain; charset=gb2312; name="' + word("说明.txt", "gb2312", "Q") + '"', coded("说明\n", "gb2312"),
             'Content-Disposition: attachment; filename="' + word("说明.txt", "gb2312", "Q") + '"', encoding="8bit"),
        part('application/zip; name="' + word("附件.zip", "big5") + '"', b64(b"PK\5\6" + bytes(18)), encoding="base64")],
        "A multipart message.\n")
    mail("nested, names of four languages", "파일 다섯 개", ["MIME-Version: 1.0", 'Content-Type: multipart/mixed; boundary="mix-1"'],
         nested, KOREAN, 6, subject_header=word("파일 다섯 개", "euc-kr"))
    inner = (b"From: \"Inner One\" <one@example.org>\nSubject: innermost\nMessage-ID: <inner.2@mail.example.org>\n\nThe innermost text.\n")
    middle = (b"From: \"Inner Two\" <two@example.org>\nSubject: in the middle\nMessage-ID: <inner.1@mail.example.org>\nMIME-Version: 1.0\n"
              b"Content-Type: multipart/mixed; boundary=fwd-2\n\n" +
              multipart("fwd-2", [part("text/plain", "Text in the middle.\n"), part("message/rfc822", inner)]))
    mail("forwarded twice", "Fwd: Fwd: innermost", ["MIME-Version: 1.0", "Content-Type: multipart/mixed; boundary=fwd-1"],
         multipart("fwd-1", [part("text/plain", "See below.\n"), part("message/rfc822", middle)]), "See below.", 2)
    digest = b"".join(octets(f"--dig-1\n\nFrom: a{i}@example.org\nSubject: digest item {i}\n\nItem {i}.\n\n") for i in (1, 2, 3))
    mail("digest", "Digest of three", ["MIME-Version: 1.0", "Content-Type: multipart/digest; boundary=dig-1"],
         digest + b"--dig-1--\n", None, 3, name="List", address="list@example.org")
    uu = binascii.b2a_uu(GIF, backtick=True).decode()
    mail("uuencoded", "A file in the old way", [], f"The picture follows.\n\nbegin 644 dot.gif\n{uu}`\nend\n", "The picture follows.", 2)
    report = multipart("rep-1", [
        part("text/plain", "The message to lost@example.net could not be delivered.\n"),
        part("message/delivery-status", "Reporting-MTA: dns; mail.example.org\n\nFinal-Recipient: rfc822; lost@example.net\n"
             "Action: failed\nStatus: 5.1.1\n"),
        part("text/rfc822-headers", "From: nuri@example.org\nTo: lost@example.net\nSubject: hello\n")])
    mail("delivery report", "Undelivered mail", ["MIME-Version: 1.0", "Content-Type: multipart/report; report-type=delivery-status;"
                                                   "\n\tboundary=rep-1"], report, "The message to lost@example.net could not be delivered.",
         3, name="Mail Delivery System", address="postmaster@example.org")
    mail("enriched", "Rich text of the old kind", ["MIME-Version: 1.0", "Content-Type: text/enriched; charset=us-ascii"],
         "<bold>Bold</bold> and <italic>slanted</italic>.\n", "<bold>Bold</bold> and <italic>slanted</italic>.", 1)
    mail("picture alone", "Only a picture", ["MIME-Version: 1.0", 'Content-Type: image/png; name="dot.png"',
                                             "Content-Transfer-Encoding: base64"], b64(png((0, 0, 255))), None, 1)
    mail("many addresses", "Groups, comments and quotes", ["Cc: team: one@example.org, \"Two, B.\" <two@example.org>;,\n\tthree@example.org "
                                                           "(Three)", "Reply-To: desk@example.org"], "Who gets this?\n", "Who gets this?", 1,
         name="Park, Da-on", address="daon@example.org")


def broken():
    mixed = "Content-Type: multipart/mixed; boundary="
    mail("no closing delimiter", "The end is missing", ["MIME-Version: 1.0", mixed + "open-1"],
         multipart("open-1", [part("text/plain", "First part.\n"), part("text/plain", "Second part, cut short")], close=False),
         "First part.", 2)
    mail("no boundary", "No boundary parameter", ["MIME-Version: 1.0", "Content-Type: multipart/mixed"],
         "--lost\n\nNobody finds this part.\n--lost--\n", None, 0)
    mail("bad base64", "Damaged base64", ["MIME-Version: 1.0", "Content-Type: text/plain; charset=us-ascii",
                                          "Content-Transfer-Encoding: base64"], "VGhp!cyBpcyBz\n**dGlsbCByZWFk\nYWJsZS4K==\n",
         "This is still readable.", 1)
    long = "word " * 6400
    mail("over-long line", "A line of 32,000 characters", [], long + "\n", long, 1)
    mail("NUL bytes", "Zeros in the text", [], b"before\0after\n\0\0\nlast line\n", None, 1)
    mail("empty body", "Nothing to say", [], "", None, 1)
    mail("markup in headers", "<script>alert('subject')</script>", ["MIME-Version: 1.0", mixed + "mark-1"],
         multipart("mark-1", [part("text/plain", "<b>not bold</b> & \"quoted\"\n"),
                              part('text/html; name="\\"><img src=x onerror=alert(1)>.html"', "<p onclick=alert(2)>active</p>\n",
                                   "Content-Disposition: attachment")]),
         "<b>not bold</b> & \"quoted\"", 2, name="<i>Mallory</i>", address="mallory@example.com")
    mail("trap lines", "Lines that look like others", [], "begin with a word, not a mode\n--not-a-boundary\n>From here on\nSubject: no header\nend\n",
         "begin with a word, not a mode\n--not-a-boundary\n>From here on\nSubject: no header\nend", 1)
    mail("unfinished words", "half a word", [], "The subject's word has no end.\n", "The subject's word has no end.", 1,
         subject_header="=?euc-kr?Q?half a word")
    # The last of the folder: a header without an end reads on to the next empty line.
    mail("no empty line", "A header and nothing else", ["X-Last: dropped"], "", None, 1, empty_line=False)


letters()
structures()
broken()
with open(os.path.join(HERE, "sample.mbox"), "wb") as f:
    f.write(b"".join(m for m, _ in messages))
with open(os.path.join(HERE, "sample.json"), "w", encoding="utf-8") as f:
    json.dump([truth for _, truth in messages], f, ensure_ascii=False, indent=1)
    f.write("\n")
print(f"{len(messages)} messages")
