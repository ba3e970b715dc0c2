// The served site, a browser before it, and a record of all that the browser did: requests, console, dialogs.
import { spawn } from "node:child_process";
import { createRequire } from "node:module";
import fs from "node:fs";
import http from "node:http";
import path from "node:path";

export const [BUILD, MODULES] = process.argv.slice(2).map((name) => path.resolve(name));
export const DATA = path.resolve(import.meta.dirname ?? path.dirname(new URL(import.meta.url).pathname), "../../data");
for (const needed of [`${MODULES}/node_modules/playwright-core`, `${DATA}/../../build/peers/lighttpd`, `${DATA}/../../build/peers/exim`]) {
    if (fs.existsSync(needed)) continue;
    console.log(`SKIPPED: needs ${needed} (see ./check)`);
    process.exit(77);
}
const require = createRequire(`${MODULES}/node_modules/`);
const { chromium } = require("playwright-core");
const axeSource = fs.readFileSync(require.resolve("axe-core/axe.min.js"), "utf8");

export class Site {
    async start() {
        this.server = spawn(path.resolve(DATA, "../../host/serve"), [BUILD], { stdio: ["ignore", "pipe", "inherit"] });
        this.ended = new Promise((resolve) => this.server.on("exit", (code, signal) => resolve(code ?? signal)));
        await new Promise((resolve, reject) => {
            this.server.stdout.on("data", (text) => String(text).includes("Ctrl-C") && resolve());
            this.ended.then((how) => reject(new Error(`host/serve ended: ${how}`)));
        });
        Object.assign(this, JSON.parse(fs.readFileSync(`${BUILD}/site/run/serve.json`)));
        this.root = `http://mail.localhost:${this.port}/`;
        // What a mail would load from elsewhere arrives here instead.
        this.leaks = [];
        this.elsewhere = http.createServer((request, answer) => (this.leaks.push(request.url), answer.end()));
        await new Promise((resolve) => this.elsewhere.listen(0, "127.0.0.1", resolve));
        this.browser = await chromium.launch({
            executablePath: "/usr/bin/chromium",
            chromiumSandbox: process.getuid() !== 0,
            args: [`--host-resolver-rules=MAP *.example 127.0.0.1:${this.elsewhere.address().port}`],
        });
        return this;
    }
    async stop() {
        await this.browser?.close();
        this.elsewhere?.close();
        this.server.kill("SIGTERM");
        return this.ended;
    }
    spoolOf(user) {
        return `${BUILD}/site/spool/${user[0]}/${user[1]}/${user}`;
    }
    /// A visitor with a browser profile of their own; `seen` collects what must not happen.
    async visitor(options = {}) {
        const context = await this.browser.newContext({ acceptDownloads: true, ...options });
        context.setDefaultTimeout(10000);
        const seen = { dialogs: [], console: [], foreign: [] };
        context.on("dialog", (dialog) => (seen.dialogs.push(dialog.message()), dialog.dismiss()));
        context.on("console", (message) => seen.console.push(message.text()));
        context.on("weberror", (error) => seen.console.push(String(error.error())));
        context.on("response", (r) => r.url().startsWith(this.root) || seen.foreign.push(r.url()));
        const page = await context.newPage();
        return { context, page, seen };
    }
    async logIn(page, user, password = this.passwords[user]) {
        await page.goto(this.url);
        await page.locator("[name=userid]").fill(user);
        await page.locator("[name=password]").fill(password);
        await Promise.all([page.waitForEvent("load"), page.locator("button.main").click()]);
    }
    /// The status of a request as nobody's browser would write it: the path as it stands, with the visitor's cookies.
    async ask(context, address, form) {
        const cookies = (await context.cookies()).map((c) => `${c.name}=${c.value}`).join("; ");
        const body = form ? new URLSearchParams(form).toString() : "";
        const headers = { Host: `mail.localhost:${this.port}`, Cookie: cookies, "Content-Length": body.length };
        if (form) headers["Content-Type"] = "application/x-www-form-urlencoded";
        const options = { host: "127.0.0.1", port: this.port, path: `/${address}`, method: form ? "POST" : "GET", headers };
        return new Promise((resolve, reject) => {
            http.request(options, (answer) => (answer.resume(), resolve(answer.statusCode))).on("error", reject).end(body);
        });
    }
    async as(user, options) {
        const visitor = await this.visitor(options);
        await this.logIn(visitor.page, user);
        return visitor;
    }
}

/// The faults that axe-core finds in a page, one line each, by all rules or some; frames hold what others wrote.
export async function faultsOf(page, rules) {
    if (!(await page.evaluate(() => "axe" in globalThis))) await page.evaluate(axeSource);
    const options = { iframes: false, resultTypes: ["violations"], ...(rules && { runOnly: rules }) };
    const { violations } = await page.evaluate((given) => globalThis.axe.run(document, given), options);
    return violations.flatMap((v) => v.nodes.map((n) => `${page.url()}: ${v.id}: ${n.html.slice(0, 150)} ${n.failureSummary}`));
}

/// How many pixels of the page stand outside of its window.
export function overflowOf(page) {
    return page.evaluate(() => document.documentElement.scrollWidth - innerWidth);
}
