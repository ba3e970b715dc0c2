// suite.mjs BUILD MODULES: serves the web mail of BUILD and uses it in Chromium as people do, and as they should not.
import { test, before, after } from "node:test";
import assert from "node:assert/strict";
import fs from "node:fs";
import { Site } from "./site.mjs";
import { hostileMailbox } from "./hostile.mjs";
import * as acting from "./acting.mjs";
import * as looks from "./looks.mjs";
import * as reading from "./reading.mjs";

const site = new Site();
before(async () => {
    await site.start();
    fs.writeFileSync(site.spoolOf("sysop"), hostileMailbox(), { mode: 0o600 });
    if (process.getuid() === 0) fs.chownSync(site.spoolOf("sysop"), 8, 8);
});
after(async () => assert.equal(await site.stop(), 0));

const tests = {
    "every character set is readable": reading.everyCharacterSet,
    "pictures, files and forwarded mail come out": reading.picturesAndFiles,
    "hostile mail does nothing": reading.hostileMail,
    "lists page, sort and change": acting.lists,
    "mail goes from user to user and back": acting.mailBetweenUsers,
    "settings are kept and do what they say": acting.settings,
    "pages are accessible and fit": looks.everyPage,
    "what nobody may do is refused": acting.refusals,
};
const wanted = process.argv[4] ?? ""; // part of a test's name
for (const [name, run] of Object.entries(tests).filter(([n]) => n.includes(wanted))) test(name, { timeout: 300000 }, () => run(site));
