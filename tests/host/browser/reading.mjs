// What a user reads: every message of the sample mailbox, its pictures, files and forwarded messages, and hostile mail.
import assert from "node:assert/strict";
import fs from "node:fs";
import { DATA } from "./site.mjs";
import { hostileMails } from "./hostile.mjs";

const known = JSON.parse(fs.readFileSync(`${DATA}/sample.json`));
const htmlText = "회의는 월요일입니다."; // of the messages that are shown in their HTML form
const plain = (text) => text.replace(/[\s\u00a0]+/g, " ").trim();
const address = (n) => `mailview.cgi?fldrname=inbox&select=${n}`;

async function openMail(page, root, n) {
    await page.goto(`${root}cgi-auth/${address(n)}`, { waitUntil: "load" });
    return page.frame({ name: "mailtext" });
}

export async function everyCharacterSet(site, t) {
    const { page, context } = await site.as("kim");
    for (const mail of known) {
        const frame = await openMail(page, site.root, mail.n);
        const heading = plain(await page.locator("h1").innerText());
        assert.equal(heading, plain(mail.subject), `subject of ${mail.label}`);
        assert.ok((await page.locator("main dl").innerText()).includes(mail.from_name), `sender of ${mail.label}`);
        if (mail.text === null) continue;
        const seen = plain(await frame.locator("body").innerText());
        assert.ok(seen.startsWith(plain(mail.text)) || seen.startsWith(htmlText), `text of ${mail.label}: ${seen.slice(0, 200)}`);
    }
    await context.close();
}

export async function picturesAndFiles(site) {
    const { page, context } = await site.as("kim");
    const inline = await openMail(page, site.root, known.find((m) => m.label === "inline images").n);
    const widths = await inline.locator("img").evaluateAll((all) => all.map((image) => image.naturalWidth));
    assert.ok(widths.length >= 2 && widths.every(Boolean), `inline pictures: ${widths}`);
    await openMail(page, site.root, known.find((m) => m.label.startsWith("nested, names")).n);
    for (const link of await page.locator(".files td a").all()) {
        const name = await link.locator("xpath=ancestor::tr/th").innerText();
        const [download] = await Promise.all([page.waitForEvent("download"), link.click()]);
        assert.equal(download.suggestedFilename(), name);
        assert.ok(fs.statSync(await download.path()).size > 0, name);
    }
    await openMail(page, site.root, known.find((m) => m.label === "forwarded twice").n);
    for (const subject of ["in the middle", "innermost"]) {
        await page.locator(".files th a").first().click();
        assert.equal(await page.locator("h1").innerText(), subject);
    }
    await context.close();
}

/// Opens each message of the hostile mailbox, and all that its page offers.
export async function hostileMail(site) {
    const { page, context, seen } = await site.as("sysop");
    const visited = new Set();
    const visit = async (link) => {
        if (visited.has(link) || /replyall|forward|part=\d\d/.test(link) || !link.startsWith(site.root) || link.includes("images=1")) return;
        visited.add(link);
        await page.goto(link).catch((error) => assert.match(error.message, /Download is starting|ERR_ABORTED/, link));
        assert.notEqual(await page.title(), "ran", link);
    };
    for (let n = 1; n <= hostileMails.length; n++) {
        const frame = await openMail(page, site.root, n);
        const links = await page.locator(`main a[href*="select=${n}&"]`).evaluateAll((all) => all.map((a) => a.href));
        for (const link of [frame.url(), ...links]) await visit(link);
    }
    assert.ok(visited.size > 5 * hostileMails.length);
    const said = seen.console.filter((line) => !/Content Security Policy|Blocked script|Refused to|sandboxed|Failed to load/.test(line));
    assert.deepEqual([seen.dialogs, said, seen.foreign, site.leaks], [[], [], [], []]);
    // Pictures come when the reader asks for them, and what counts as one: browsers fetch ahead what any rule would allow.
    await openMail(page, site.root, 1 + hostileMails.indexOf("html"));
    await page.locator("a[target=mailtext]").click();
    await page.waitForLoadState("networkidle");
    const loaded = new Set(site.leaks.splice(0));
    assert.ok(loaded.has("/html-img"));
    assert.deepEqual([...loaded].filter((name) => !/^\/html-(img|srcset|table|poster|svgimage|url|preload|prefetch)/.test(name)), []);
    // A link that is clicked leads out of the frame; a script is none.
    const frame = page.frame({ name: "mailtext" });
    await frame.locator("#script").click();
    const [opened] = await Promise.all([context.waitForEvent("page"), frame.locator("a").last().click()]);
    await opened.waitForURL("**/html-clicked");
    assert.ok(await page.title() !== "ran" && !seen.dialogs.length);
    await context.close();
}
