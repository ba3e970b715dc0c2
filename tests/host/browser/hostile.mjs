// A mailbox of mail that means harm, in every place that a page shows. What would run sets the page's title to "ran",
// raises a dialog or writes to the console; what would load asks a host below .example.
import fs from "node:fs";

const active = (kind) => `"><script>alert('${kind}')</script><img src=http://${kind}.example/x onerror=console.log('ran')>'`;
const word = (text) => `=?utf-8?B?${Buffer.from(text).toString("base64")}?=`;
const html = fs.readFileSync(new URL("hostile.html", import.meta.url), "utf8");
const base64 = (text) => Buffer.from(text).toString("base64").replace(/.{76}/g, "$&\n") + "\n";
const part = (type, body, ...more) => [`Content-Type: ${type}`, ...more, "", body].join("\n");
const script = `<svg xmlns="http://www.w3.org/2000/svg"><script>alert(1);document.title='ran'</script></svg>`;

function multipart(kind, ...parts) {
    const boundary = `b-${kind}`;
    return part(`multipart/mixed; boundary="${boundary}"`, parts.map((p) => `--${boundary}\n${p}\n`).join("") + `--${boundary}--\n`);
}

function nested(depth) {
    let inner = part("text/html", html.replaceAll("KIND", "deep"));
    for (let i = 0; i < depth; i++) inner = multipart(`deep${i}`, part("text/plain", `level ${i}`), inner);
    return inner;
}

const mails = {
    headers: [`From: ${word(active("from"))} <m@x.example>\nTo: "${active("to").replaceAll('"', "'")}" <b@x.example>`,
        `Cc: ${word(active("cc"))} <"${"<img src=x onerror=alert(1)>"}"@x.example>\nReply-To: ${word(active("reply"))} <r@x.example>`,
        `Subject: ${word(active("subject"))}\nMessage-ID: <${active("id").replaceAll(" ", "_")}@x>\nDate: ${active("date")}`,
        part("text/plain", `http://link.example/" onmouseover="alert(1) javascript:alert(1)\n<a href="javascript:alert(1)">x</a>`)],
    breaks: [`From: =?utf-8?Q?a=0D=0ASet-Cookie:_auth=3Dx=0D=0A=0D=0A<script>alert(1)</script>?= <m@x.example>`,
        `Subject: =?utf-8?Q?one=0D=0ALocation:_http://break.example/=0D=0A=0D=0A<script>alert(2)</script>?=`,
        multipart("breaks", part("text/plain", "see files"),
            part(`application/octet-stream; name="${word("a\r\nSet-Cookie: auth=x\r\n\r\n<script>alert(3)</script>.html")}"`, "x",
                "Content-Disposition: attachment"),
            part("text/html", html.replaceAll("KIND", "file"),
                "Content-Disposition: attachment; filename*=utf-8''..%2F..%2F%22%0D%0AX-Y%3A%20z%0D%0A%0D%0A%3Cscript%3Ealert(4)%3C%2Fscript%3E.html"))],
    html: ["Subject: active html", part("text/html; charset=utf-8", html.replaceAll("KIND", "html"))],
    shifted: ["Subject: another set", part("text/html; charset=utf-7", "+ADw-script+AD4-alert(1)+ADw-/script+AD4-")],
    escape: ["Subject: \x1b$)C half \x1b$B<script>alert(1)</script>", part("text/plain; charset=iso-2022-jp", "\x1b$B<script>alert(1)</script>")],
    lies: ["Subject: types that lie", multipart("lies",
        part("text/html", `<img src="cid:svg@x"><img src="cid:page@x"><object data="cid:svg@x"></object>` + html.replaceAll("KIND", "lie")),
        part("image/svg+xml; name=picture.svg", script, "Content-ID: <svg@x>", "Content-Disposition: inline"),
        part("image/png; name=page.png", `<html>${script}</html>`, "Content-ID: <page@x>"),
        part("text/plain; name=page.html", html.replaceAll("KIND", "plain"), "Content-Disposition: inline"),
        part('text/html"; onload="alert(1); name=x.html', script, "Content-Disposition: attachment; filename=x.html"))],
    forwarded: ["Subject: inside", multipart("fwd", part("text/plain", "look inside"),
        part("message/rfc822", `From: ${active("inner")}\nSubject: ${word(active("innersubject"))}\nMessage-ID: <"><script>alert(1)</script>@x>\n` +
            part("text/html", html.replaceAll("KIND", "inner"))))],
    enriched: ["Subject: enriched", part("text/enriched", `<bold><<script>alert(1)</script></bold><param>${active("param")}</param>`)],
    deep: ["Subject: deep", nested(95)],
    giant: [`Subject: ${"<b>long ".repeat(40000)}`, `X-Long: ${"x".repeat(1 << 20)}`, part("text/plain", "<i>".repeat(1 << 19))],
    names: ["Subject: file names", multipart("names", ...["../../etc/passwd", "CON", "\u202egnp.exe", "a".repeat(300) + ".html", "%00.html", "\\\\x\\y"]
        .map((name) => part(`text/html; name="${word(name)}"`, base64(script), "Content-Transfer-Encoding: base64", "Content-Disposition: attachment")))],
};

export const hostileMails = Object.keys(mails);
export function hostileMailbox() {
    return hostileMails.map((name) => {
        const lines = mails[name];
        return `From m@x.example Mon Jan  5 10:00:00 2004\nMIME-Version: 1.0\nX-Name: ${name}\n${lines.join("\n")}\n\n`;
    }).join("");
}
