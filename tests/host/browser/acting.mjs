// What a user does: lists, changes, and what nobody may do.
import assert from "node:assert/strict";
import fs from "node:fs";
import { BUILD } from "./site.mjs";

const subjects = (page) => page.locator("table.mails tbody th.what a").allInnerTexts();
const row = (page, subject) => page.locator("tr", { hasText: subject });
const follow = (page, control) => Promise.all([page.waitForEvent("load"), control.first().click()]);
const press = (page, name) => follow(page, page.getByRole("button", { name, exact: true }));
const folder = (site, name) => `${site.root}cgi-auth/maillist.cgi?fldrname=${name}`;

export async function lists(site) {
    const { page, context } = await site.as("lee");
    const first = await subjects(page);
    await follow(page, page.getByRole("link", { name: "Next", exact: true }));
    const second = await subjects(page);
    assert.ok(first.length === 10 && second.length === 10 && !second.includes(first[0]));
    await follow(page, page.getByRole("link", { name: "Size" }));
    const bytes = (text) => parseFloat(text) * (text.includes("KB") ? 1024 : 1);
    const sizes = (await page.locator("td.size").allInnerTexts()).map(bytes);
    assert.deepEqual(sizes, [...sizes].sort((a, b) => b - a), "the largest first");
    assert.ok(sizes[0] > 30000);
    await page.goto(folder(site, "inbox"));
    assert.equal(await page.locator(".mails tr.unread").count(), 10);
    await row(page, first[1]).getByRole("checkbox").check();
    await press(page, "Mark read");
    assert.equal(await page.locator(".mails tr.unread").count(), 9);
    await row(page, first[0]).getByRole("checkbox").check();
    await press(page, "Delete");
    assert.ok(!(await subjects(page)).includes(first[0]), "deleted");
    await page.goto(folder(site, "trash"));
    assert.deepEqual(await subjects(page), [first[0]]);
    await page.getByRole("checkbox").check();
    await press(page, "Restore to inbox");
    await page.goto(folder(site, "inbox"));
    assert.ok((await page.locator("main").innerText()).includes("36 messages"), "put back");
    await press(page, "Mark all read");
    assert.equal(await page.locator(".mails tr.unread").count(), 0);
    await context.close();
}

export async function refusals(site) {
    const { page, context } = await site.visitor();
    const status = (address, form) => site.ask(context, address, form);
    const list = "cgi-auth/maillist.cgi?fldrname=inbox", mail = "cgi-auth/mailview.cgi?fldrname=inbox&select=1";
    assert.equal(await status(list), 403, "without a session");
    await site.logIn(page, "kim", "wrong");
    assert.equal(await page.getByRole("alert").innerText(), "User name or password is wrong.");
    await site.logIn(page, "kim");
    assert.equal(await status(list), 200);
    const token = await page.locator("[name=token]").first().getAttribute("value");
    const post = (form) => ({ fldrname: "inbox", ...form });
    const count = async () => (await page.locator("main").innerText()).match(/\d+ messages/)[0];
    const before = await count();
    const ref = await page.locator("[name=msg]").first().getAttribute("value");
    for (const [what, address, form, wanted] of [
        ["a folder that is a path", "cgi-auth/maillist.cgi?fldrname=../../l/e/lee", null, 404],
        ["another's Message-ID", mail + "&msgid=nobody%40example.org&cmd=raw", null, 404],
        ["a change without a token", list, post({ cmd: "delete", msg: ref }), 403],
        ["a forged token", list, post({ cmd: "delete", msg: ref, token: token.slice(0, -2) + "AA" }), 403],
        ["a change by GET", `${list}&cmd=delete&msg=${encodeURIComponent(ref)}&token=${encodeURIComponent(token)}`, null, 200],
        ["a program outside", "cgi-auth/..%2f..%2fbin/attalven", null, 404],
        ["files of the site", "static/../../conf/attalven.conf", null, 404],
    ]) assert.equal(await status(address, form), wanted, what);
    await page.goto(folder(site, "inbox"));
    assert.equal(await count(), before, "nothing was deleted");
    const cookies = await context.cookies();
    for (const cookie of cookies) assert.ok(cookie.httpOnly && cookie.sameSite === "Strict", cookie.name);
    const auth = cookies.find((c) => c.name === "auth");
    const [name, expires, signature] = auth.value.split(".");
    const lee = Buffer.from("lee").toString("base64url");
    for (const value of [`${lee}.${expires}.${signature}`, `${name}.${+expires + 1}.${signature}`, `${name}.1.${signature}`]) {
        await context.addCookies([{ ...auth, value }]);
        assert.equal(await status(list), 403, "a forged or expired session");
    }
    await context.addCookies([auth]);
    await page.goto(folder(site, "inbox"));
    await press(page, "Log out");
    await context.addCookies(cookies);
    assert.equal(await status(list), 403, "a session after its log-out");
    for (let i = 0; i < 6; i++) await site.logIn(page, "nobody", "guess");
    assert.equal(await page.getByRole("alert").innerText(), "Too many attempts. Try again later.");
    await context.close();
}

const fileOf = (name, size) => ({ name, mimeType: "application/octet-stream", buffer: Buffer.from(Array.from({ length: size }, (_, i) => (i * 7919) >> 3)) });

async function arrived(page, site, subject) {
    for (let tries = 0; tries < 100; tries++) {
        await page.goto(folder(site, "inbox"));
        if (await row(page, subject).count()) return follow(page, page.getByRole("link", { name: subject }));
        await page.waitForTimeout(100);
    }
    assert.fail(`${subject} has not arrived: ${await subjects(page)}`);
}

/// The visible text of the mail that is open.
async function textOf(page) {
    return (await page.frameLocator("iframe[name=mailtext]").locator("body").innerText()).replace(/\u00a0/g, " ");
}

/// Sends a mail; gives what the result's page says.
async function send(page, to, subject, text, files) {
    await follow(page, page.getByRole("link", { name: "Write" }));
    await page.fill("#to", to);
    await page.fill("#subject", subject);
    await page.fill("#body", text);
    if (files) await page.setInputFiles("#attach", files);
    await press(page, "Send");
    return page.locator("main").innerText();
}

export async function mailBetweenUsers(site) {
    const kim = await site.as("kim"), lee = await site.as("lee");
    const subject = "첨부 파일 둘과 café", text = "안녕하세요, Lee.\n\"따옴표\" & 1 < 2, a@b\n끝.";
    const files = [fileOf("회의록 1 & 2.bin", 70000), fileOf("b.bin", 3)];
    const result = await send(kim.page, "lee@localhost, nobody@localhost", subject, text, files);
    assert.match(result, /lee@localhost\s+Accepted/);
    assert.ok(!/nobody@localhost\s+Accepted/.test(result), "a recipient that does not exist");
    await kim.page.goto(folder(site, "sent"));
    assert.deepEqual(await subjects(kim.page), [subject]);

    await arrived(lee.page, site, subject);
    assert.ok((await textOf(lee.page)).includes(text));
    const links = await lee.page.locator(".files td a").all();
    assert.equal(links.length, files.length);
    for (const [i, link] of links.entries()) {
        const [download] = await Promise.all([lee.page.waitForEvent("download"), link.click()]);
        assert.ok(fs.readFileSync(await download.path()).equals(files[i].buffer), `bytes of ${files[i].name}`);
        assert.equal(download.suggestedFilename(), files[i].name);
    }
    await follow(lee.page, lee.page.getByRole("link", { name: "Reply", exact: true }));
    assert.match(await lee.page.inputValue("#to"), /kim@localhost/);
    assert.ok((await lee.page.inputValue("#body")).includes("> 안녕하세요, Lee."), "quoted");
    await press(lee.page, "Send");
    await arrived(kim.page, site, `Re: ${subject}`);
    await kim.context.close();
    await lee.context.close();
}

export async function settings(site) {
    // What Sieve, Exim and the form of a message would each take for their own.
    const mark = `${BUILD}/site/run/pwned`, sieve = `";redirect "lee@localhost";# \\ \${run{/bin/touch ${mark}}}`;
    const away = `휴가 ${sieve}`, reply = `Back on Monday: "월요일", \${pid} $local_part ${sieve}\n.\ntext:\n\\"`;
    const kim = await site.as("kim"), lee = await site.as("lee"), sysop = await site.as("sysop");
    const save = async (form, fields) => {
        await follow(kim.page, kim.page.getByRole("link", { name: "Settings" }));
        for (const [name, value] of Object.entries(fields)) {
            const field = kim.page.locator(`#${form} [name=${name}]`);
            await (value === true ? field.check() : field.fill(value));
        }
        await follow(kim.page, kim.page.locator(`#${form} button`));
        assert.equal(await kim.page.getByRole("status").innerText(), "Saved.", form);
    };
    await save("general", { email_name: "김 \"K\" <누리>", page_size: "5" });
    await save("signature_form", { signature: "김누리 드림" });
    await save("vacation_form", { vacation: true, subject: away, reply });
    await save("forwarding_form", { forwarding: "sysop@localhost", keep_copy: true });
    await kim.page.goto(folder(site, "inbox"));
    assert.equal((await subjects(kim.page)).length, 5);

    assert.match(await send(lee.page, "kim@localhost", "Are you there?", "I ask."), /kim@localhost\s+Accepted/);
    await arrived(lee.page, site, away);
    const said = await textOf(lee.page);
    assert.ok(said.includes(reply) && !fs.existsSync(mark), said);
    await lee.page.goto(folder(site, "inbox"));
    assert.equal(await row(lee.page, "Are you there?").count(), 0, "not redirected");
    await arrived(kim.page, site, "Are you there?");
    await arrived(sysop.page, site, "Are you there?");

    await follow(kim.page, kim.page.getByRole("link", { name: "Reply", exact: true }));
    await press(kim.page, "Send");
    await arrived(lee.page, site, "Re: Are you there?");
    assert.ok((await lee.page.locator("main dl").innerText()).includes('김 "K" <누리>'), "the name of the settings");
    assert.ok((await textOf(lee.page)).includes("김누리 드림"), "the signature");

    await save("vacation_form", { start: "2020-01-01", end: "2020-01-02" });
    await send(sysop.page, "kim@localhost", "And now?", "I ask, too.");
    for (const { page } of [kim, sysop]) await arrived(page, site, "And now?");
    await sysop.page.goto(folder(site, "inbox"));
    assert.equal(await row(sysop.page, away).count(), 0, "the vacation is over");
    for (const { context } of [kim, lee, sysop]) await context.close();
}
