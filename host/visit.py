"""A visit of the served site by HTTP alone, as a user without a browser would make it: `serve --once` runs it."""
import html.parser, http.client, time, urllib.parse

WAIT = 60  # seconds until a mail must have arrived


class Surprise(Exception):
    """The site answered something that the visit did not expect."""


class Page(html.parser.HTMLParser):
    """The links, forms and text of a page. A form is its address and the fields that a browser would send as they stand."""

    def __init__(self, url, text):
        super().__init__()
        self.url, self.links, self.forms, self.words = url, [], [], []
        self.select = self.area = None
        self.feed(text)
        self.text = " ".join(" ".join(self.words).split())

    def handle_starttag(self, tag, pairs):
        given = dict(pairs)
        fields = self.forms[-1][1] if self.forms else {}
        if tag in ("a", "iframe") and (given.get("href") or given.get("src")):
            self.links.append(urllib.parse.urljoin(self.url, given.get("href") or given.get("src")))
        elif tag == "form":
            self.forms.append((urllib.parse.urljoin(self.url, given.get("action") or self.url), {}))
        elif tag == "input" and given.get("name"):
            plain = given.get("type") not in ("submit", "checkbox", "radio", "file")
            if plain or (given.get("type") in ("checkbox", "radio") and "checked" in given):
                fields[given["name"]] = given.get("value") or ""
        elif tag == "select":
            self.select = given.get("name")
        elif tag == "option" and self.select and (self.select not in fields or "selected" in given):
            fields[self.select] = given.get("value") or ""
        elif tag == "textarea":
            self.area = given.get("name")
            fields[self.area] = ""

    def handle_endtag(self, tag):
        if tag in ("textarea", "select"):
            self.area = self.select = None

    def handle_data(self, text):
        if self.area:
            self.forms[-1][1][self.area] += text
        self.words.append(text)

    def link(self, part):
        return next((link for link in self.links if part in link), None) or self.lacks(f"link with {part}")

    def form(self, field):
        return next((form for form in self.forms if field in form[1]), None) or self.lacks(f"form with {field}")

    def lacks(self, what):
        raise Surprise(f"{self.url} has no {what}: {self.text[:300]}")


class Visitor:
    """Keeps cookies and follows redirects; the site's host name is this machine's loopback address."""

    def __init__(self, site, user):
        self.site, self.cookies, self.requests = site, {}, 0
        action, fields = self.fetch(site.url).form("password")
        self.inbox = self.fetch(action, {**fields, "userid": user, "password": site.passwords[user]})
        print(f"{user} logged in: {self.inbox.url}")

    def fetch(self, url, form=None):
        parts = urllib.parse.urlsplit(url)
        connection = http.client.HTTPConnection("127.0.0.1", self.site.port, timeout=WAIT)
        headers = {"Host": parts.netloc, "Cookie": "; ".join(f"{n}={v}" for n, v in self.cookies.items())}
        body = None
        if form is not None:
            body = urllib.parse.urlencode(form)
            headers["Content-Type"] = "application/x-www-form-urlencoded"
        start = time.monotonic()
        connection.request("POST" if body else "GET", urllib.parse.urlunsplit(("", "", *parts[2:4], "")), body, headers)
        answer = connection.getresponse()
        content = answer.read()
        self.requests += 1
        self.took = (time.monotonic() - start) * 1000
        for name, value in answer.getheaders():
            if name.lower() == "set-cookie":
                key, _, text = value.split(";")[0].partition("=")
                self.cookies[key] = text
        if answer.status in (302, 303):
            return self.fetch(urllib.parse.urljoin(url, answer.getheader("Location")))
        if answer.status != 200:
            raise Surprise(f"{url}: {answer.status} {answer.reason} {content[:300]!r}")
        return Page(url, content.decode(answer.headers.get_content_charset() or "utf-8", "replace"))


def read_mail(kim):
    messages = [link for link in kim.inbox.links if "mailview.cgi" in link]
    print(f"inbox: {len(messages)} messages on the first page, {kim.took:.0f} ms")
    page = kim.fetch(messages[0])
    frame = kim.fetch(page.link("cmd=body"))
    print(f"message: {page.text[page.text.find('From'):][:100]} ..., body of {len(frame.text)} characters, {kim.took:.0f} ms")


def send_mail(kim):
    subject = f"A word from the visit at {time.strftime('%H:%M:%S')}"
    action, fields = kim.fetch(kim.inbox.link("mailwrite.cgi")).form("subject")
    sent = kim.fetch(action, {**fields, "to": "lee@localhost", "subject": subject, "body": "안녕하세요, Lee.", "action": "send"})
    print(f"sent: {sent.text[sent.text.find('Your message'):][:120]}")
    return subject, time.monotonic()


def wait_for(lee, subject, start):
    while subject not in lee.inbox.text:
        if time.monotonic() - start > WAIT:
            raise Surprise(f"no mail {subject!r} in the inbox after {WAIT} s")
        time.sleep(0.1)
        lee.inbox = lee.fetch(lee.inbox.url)
    print(f"arrived: {subject!r} lies in lee's inbox after {time.monotonic() - start:.1f} s")


def visit(site):
    try:
        kim, lee = Visitor(site, "kim"), Visitor(site, "lee")
        read_mail(kim)
        wait_for(lee, *send_mail(kim))
        print(f"visit: {kim.requests + lee.requests} requests, everything answered")
        return 0
    except (Surprise, OSError) as surprise:
        print(f"visit: {surprise}")
        return 1
