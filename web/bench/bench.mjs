// What the page costs in a browser, beside the goals and the tool. Prints a table; fails when a goal is
// missed.
//
//   node bench.mjs MANY_VOBUS.ifo
import { spawnSync } from "node:child_process";
import { statSync } from "node:fs";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";
import { PAGE, samplePath } from "../tests/support.mjs";

const RUNS = 9;
const TOOL = process.env.VESKA_TOOL ?? "build/default/bin/veska";
/** What it takes when nothing else takes the machine's time. */
const least = (values) => Math.min(...values);

const typical = samplePath("movie_recorder");
const many = process.argv[2]; // with 6 million VOBU entries

const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
  args: ["--no-sandbox"],
});

async function freshPage() {
  const context = await browser.newContext({ viewport: { width: 1280, height: 900 } });
  const page = await context.newPage();
  await page.addInitScript(() => {
    new MutationObserver((_, observer) => {
      if (!document.documentElement?.dataset.ready) return;
      window.readyAt = performance.now();
      observer.disconnect();
    }).observe(document, { attributes: true, subtree: true, childList: true });
  });
  await page.goto(pathToFileURL(PAGE).href);
  await page.waitForFunction(() => window.readyAt);
  return { context, page };
}

/** Milliseconds from a drop to the picture with what `selector` names in it, in the page's own clock. */
async function dropped(page, path, selector) {
  await page.evaluate(() => {
    const input = document.createElement("input");
    input.type = "file";
    input.id = "held";
    document.body.append(input);
  });
  await page.setInputFiles("#held", path);
  return page.evaluate(async (there) => {
    const input = document.getElementById("held");
    const transfer = new DataTransfer();
    transfer.items.add(input.files[0]);
    input.remove();
    const start = performance.now();
    dispatchEvent(new DragEvent("drop", { dataTransfer: transfer }));
    await new Promise((done) => {
      const look = () => {
        if (document.querySelector(there)) return requestAnimationFrame(() => setTimeout(done));
        return requestAnimationFrame(look);
      };
      look();
    });
    return performance.now() - start;
  }, selector);
}

async function shown(path) {
  const times = [];
  for (let i = 0; i < RUNS; ++i) {
    const { context, page } = await freshPage();
    await page.waitForTimeout(500); // nobody drops faster
    times.push(await dropped(page, path, "#panel .numbers"));
    await context.close();
  }
  return least(times);
}

/** The first time that a tab is shown. */
async function tabbed(path, name, selector) {
  const times = [];
  for (let i = 0; i < 3; ++i) {
    const { context, page } = await freshPage();
    await dropped(page, path, "#panel .numbers");
    const took = page.evaluate(
      async ([tab, there]) => {
        const start = performance.now();
        document.getElementById(tab).click();
        while (!document.querySelector(there)) await new Promise(requestAnimationFrame);
        return performance.now() - start;
      },
      [`tab-${name}`, selector],
    );
    times.push(await took);
    await context.close();
  }
  return least(times);
}

/** The same by the tool, from the start of its process to the end. */
function byTool(...args) {
  const run = () => {
    const start = performance.now();
    spawnSync(TOOL, args, { stdio: "ignore" });
    return performance.now() - start;
  };
  return least(Array.from({ length: RUNS }, run));
}

const ready = [];
for (let i = 0; i < RUNS; ++i) {
  const { context, page } = await freshPage();
  ready.push(await page.evaluate(() => window.readyAt));
  await context.close();
}

const rows = [
  ["size of the page, kB", statSync(PAGE).size / 1000, 900],
  ["ready after opening, ms", least(ready), 300],
  ["a typical disc shown after the drop, ms", await shown(typical), 50, byTool("list", typical)],
  [
    `6 million VOBU entries (${(statSync(many).size / 1e6).toFixed(1)} MB) shown, ms`,
    await shown(many),
    1500,
    byTool("list", many),
  ],
  [
    "its report, ms",
    await tabbed(many, "report", "iframe"),
    null,
    byTool("report", many, "-o", "-"),
  ],
  ["its check, ms", await tabbed(many, "check", ".picture"), null, byTool("check", many)],
  ["its fields, ms", await tabbed(many, "fields", ".field"), null],
];
await browser.close();

console.log("| | measured | goal | times the tool |\n|---|---:|---:|---:|");
const number = (value) => value.toFixed(value < 10 ? 1 : 0);
let missed = 0;
for (const [what, value, goal, native] of rows) {
  if (goal && value > goal) ++missed;
  const ratio = native ? (value / native).toFixed(1) : "";
  console.log(`| ${what} | ${number(value)} | ${goal ?? ""} | ${ratio} |`);
}
process.exit(missed > 0 ? 1 : 0);
