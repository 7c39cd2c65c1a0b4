// What the page costs in a browser, beside the goals and the tool. Prints a table; fails when a goal is
// missed.
import { spawnSync } from "node:child_process";
import { mkdtempSync, rmSync, statSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";
import { PAGE, sample, samplePath, tool } from "./support.mjs";

const RUNS = 9;
const TOOL = process.env.VESKA_TOOL ?? "build/default/bin/veska";
const folder = mkdtempSync(join(tmpdir(), "veska-bench-"));
const median = (values) => values.sort((a, b) => a - b)[Math.floor(values.length / 2)];

/** A file with 6 million VOBU entries: 100 VOBs of the most that one can have of them. */
function manyVobus() {
  const document = JSON.parse(tool(["export", samplePath("movie_recorder")]));
  const vob = document.movie.vobs[0];
  const vobus = Array.from({ length: 60_000 }, (_, i) => vob.time_map.vobus[i % 310]);
  const long = { ...vob, time_map: { ...vob.time_map, vobus } };
  document.movie.vobs = Array.from({ length: 100 }, () => long);
  const [json, path] = [join(folder, "many.json"), join(folder, "many.ifo")];
  writeFileSync(json, JSON.stringify(document));
  tool(["build", json, "-o", path]);
  return path;
}

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
  await page.setInputFiles("#choose-folder + input, #held", []).catch(() => undefined);
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
    times.push(await dropped(page, path, "#panel .numbers"));
    await context.close();
  }
  return median(times);
}

async function tabbed(path, name, selector) {
  const { context, page } = await freshPage();
  await dropped(page, path, "#panel .numbers");
  const times = [];
  for (let i = 0; i < 3; ++i) {
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
    await page.evaluate(async () => {
      document.getElementById("tab-contents").click();
      while (!document.querySelector("#panel .numbers")) await new Promise(requestAnimationFrame);
    });
  }
  await context.close();
  return median(times);
}

/** The same by the tool, with the start of a process that does nothing taken off. */
function byTool(...args) {
  const run = (words) => {
    const start = performance.now();
    spawnSync(TOOL, words, { stdio: "ignore" });
    return performance.now() - start;
  };
  const times = (words) => median(Array.from({ length: RUNS }, () => run(words)));
  return Math.max(times(args) - times(["--version"]), 0.1);
}

const typical = samplePath("movie_recorder");
const many = manyVobus();
const ready = [];
for (let i = 0; i < RUNS; ++i) {
  const { context, page } = await freshPage();
  ready.push(await page.evaluate(() => window.readyAt));
  await context.close();
}

const rows = [
  ["size of the page, kB", statSync(PAGE).size / 1000, 900],
  ["ready after opening, ms", median(ready), 300],
  ["a typical disc shown after the drop, ms", await shown(typical), 50, byTool("list", typical)],
  [`6 million VOBU entries (${(statSync(many).size / 1e6).toFixed(1)} MB) shown, ms`, await shown(many), 1500, byTool("list", many)],
  ["its report, ms", await tabbed(many, "report", "iframe"), null, byTool("report", many, "-o", "-")],
  ["its check, ms", await tabbed(many, "check", ".picture"), null, byTool("check", many)],
  ["its fields, ms", await tabbed(many, "fields", ".field"), null],
];
await browser.close();
rmSync(folder, { recursive: true });

console.log("| | measured | goal | times the tool |\n|---|---:|---:|---:|");
const number = (value) => value.toFixed(value < 10 ? 1 : 0);
let missed = 0;
for (const [what, value, goal, native] of rows) {
  if (goal && value > goal) ++missed;
  const ratio = native ? (value / native).toFixed(1) : "";
  console.log(`| ${what} | ${number(value)} | ${goal ?? ""} | ${ratio} |`);
}
if (sample("empty").length === 0) ++missed;
process.exit(missed > 0 ? 1 : 0);
