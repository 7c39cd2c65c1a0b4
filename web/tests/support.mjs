// A browser with the page in it, and the command line tool to hold it against.
import assert from "node:assert/strict";
import { execFileSync, spawnSync } from "node:child_process";
import { mkdtempSync, readFileSync, rmSync, writeFileSync } from "node:fs";
import { tmpdir } from "node:os";
import { dirname, join, resolve } from "node:path";
import { after, afterEach, before, beforeEach } from "node:test";
import { fileURLToPath, pathToFileURL } from "node:url";
import { chromium } from "playwright-core";

const root = resolve(dirname(fileURLToPath(import.meta.url)), "../..");
export const PAGE = resolve(process.env.VESKA_PAGE ?? join(root, "build/page/veska.html"));
const TOOL = resolve(process.env.VESKA_TOOL ?? join(root, "build/default/bin/veska"));

export const SAMPLES = ["movie_recorder", "mixed_full", "still_camera", "odd_layout", "empty"];
export const samplePath = (name) => join(root, "samples", `${name}.ifo`);
export const sample = (name) => readFileSync(samplePath(name));

/** What the tool prints; its exit status may be any but that of wrong usage. */
export function tool(args, cwd) {
  const run = spawnSync(TOOL, args, { cwd, encoding: "utf8", maxBuffer: 1 << 28 });
  assert.notEqual(run.status, 2, run.stderr);
  return run.stdout;
}

/** The bytes that the tool writes for a command with IN and OUT. */
export function toolMakes(folder, input, command, ...operations) {
  const out = join(folder, "by_tool.ifo");
  rmSync(out, { force: true });
  tool([command, input, "-o", out, ...operations]);
  return readFileSync(out);
}

/** A folder, a browser and for each test a page of its own that must log and load nothing. */
export function inBrowser() {
  const here = {};
  before(async () => {
    here.folder = mkdtempSync(join(tmpdir(), "veska-page-"));
    here.browser = await chromium.launch({
      executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
      args: ["--no-sandbox"],
    });
  });
  after(async () => {
    await here.browser?.close();
    rmSync(here.folder, { recursive: true, force: true });
  });
  beforeEach(async () => {
    await newPage(here);
  });
  afterEach(async () => {
    await here.context.close({ runBeforeUnload: false });
    assert.deepEqual(here.said, [], "the console");
    assert.deepEqual(here.asked, [], "what was asked of the network");
  });
  here.write = (name, bytes) => {
    const path = join(here.folder, name);
    writeFileSync(path, bytes);
    return path;
  };
  return here;
}

export async function newPage(here, options = {}) {
  await here.context?.close();
  here.said = [];
  here.asked = [];
  here.context = await here.browser.newContext({
    locale: "en-US",
    viewport: { width: 1280, height: 900 },
    acceptDownloads: true,
    ...options,
  });
  const page = (here.page = await here.context.newPage());
  page.setDefaultTimeout(20_000);
  page.on("console", (message) => here.said.push(message.text()));
  page.on("pageerror", (error) => here.said.push(String(error)));
  page.on("request", (request) => {
    const isOwn = /^(file|blob|data|about):/.test(request.url());
    if (!isOwn) here.asked.push(request.url());
  });
  await page.goto(pathToFileURL(PAGE).href);
  await page.waitForSelector("html[data-ready]");
  return page;
}

/** Chooses files as a user does, and waits for the last to be there. */
export async function open(page, ...paths) {
  const there = await page.locator(".file").count();
  await page.setInputFiles("#choose-files", paths);
  await page.waitForFunction(
    (count) => document.querySelectorAll(".file").length === count,
    there + paths.length,
  );
}

export const tab = (page, name) => page.getByRole("tab", { name, exact: true }).click();
export const press = (page, name) => page.getByRole("button", { name, exact: true }).click();
/** Confirms a dialog, and waits until it is gone. */
export async function confirm(page, name) {
  await page.locator("dialog").getByRole("button", { name, exact: true }).click();
  await page.locator("dialog").waitFor({ state: "detached" });
}

/** Opens a row of the contents and presses one of its buttons. */
export async function act(page, row, name) {
  const line = page.locator(`.line[data-key="${row}"]`);
  if ((await line.getAttribute("aria-expanded")) !== "true") await line.click();
  await page.locator(".row", { has: line }).getByRole("button", { name, exact: true }).click();
}

/** Waits until so many steps are done. */
export const steps = (page, count) =>
  page.waitForFunction(
    (n) => document.querySelectorAll(".steps ol > li:not(.undone)").length === n,
    count,
  );

/** Saves by the dialog, and returns the bytes of what was downloaded. */
export async function save(page, choice = "Download the file") {
  await press(page, "Save…");
  const [download] = await Promise.all([
    page.waitForEvent("download"),
    page.locator("dialog").getByRole("button", { name: choice, exact: true }).click(),
  ]);
  return readFileSync(await download.path());
}

export const same = (a, b) => assert.ok(Buffer.compare(a, b) === 0, "the bytes differ");

export { assert, execFileSync, join };
