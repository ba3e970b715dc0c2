// Every page in every language, light and dark, for everybody and on a narrow window.
import assert from "node:assert/strict";
import { faultsOf, overflowOf } from "./site.mjs";

const PAGES = ["maillist.cgi?fldrname=inbox", "maillist.cgi?fldrname=trash", "mailview.cgi?fldrname=inbox&select=1",
    "mailwrite.cgi?cmd=reply&fldrname=inbox&select=2", "mailpref.cgi", "maillist.cgi?fldrname=none", "mailadm.cgi"];
const LANGUAGES = { kor: ["ko", /[가-힣]/], jpn: ["ja", /[ぁ-ん]/], chn: ["zh-CN", /[一-龥]/], eng: ["en", /Inbox/] };

export async function everyPage(site) {
    const faults = [];
    const narrow = { viewport: { width: 360, height: 740 } };
    for (const [i, code] of Object.keys(LANGUAGES).entries()) {
        const [tag, letters] = LANGUAGES[code];
        const scheme = i % 2 ? "dark" : "light";
        const { page, context, seen } = await site.visitor({ ...narrow, colorScheme: scheme });
        const check = async (name) => {
            assert.equal(await page.locator("html").getAttribute("lang"), tag, `${name} in ${code}`);
            // The other scheme has other colours, and is the same page.
            for (const [colorScheme, rules] of [[scheme], [i % 2 ? "light" : "dark", ["color-contrast"]]].slice(0, i < 2 ? 1 : 2)) {
                await page.emulateMedia({ colorScheme });
                faults.push(...(await faultsOf(page, rules)).map((fault) => `${code} ${colorScheme}: ${fault}`));
            }
            const over = await overflowOf(page);
            if (over > 0) faults.push(`${code}: ${name} is ${over} pixels too wide`);
        };
        await page.goto(site.url);
        await Promise.all([page.waitForEvent("load"), page.locator(`[name=lang][value=${code}]`).click()]);
        await check("login");
        await page.locator("[name=userid]").fill("sysop");
        await page.locator("[name=password]").fill(site.passwords.sysop);
        await Promise.all([page.waitForEvent("load"), page.locator("button.main").click()]);
        assert.match(await page.locator("header").innerText(), letters, code);
        for (const name of PAGES) {
            await page.goto(`${site.root}cgi-auth/${name}`);
            await check(name);
            // A page's own markup breaks none of the rules that it sends.
            assert.deepEqual(seen.console.splice(0).filter((line) => !/Failed to load|sandbox|Blocked script/.test(line)), [], name);
        }
        await context.close();
    }
    assert.equal(faults.join("\n"), "");
}
