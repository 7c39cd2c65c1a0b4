// The tree of all fields: everything the tool's JSON has is there, and a long list stays quick.
import { describe, test } from "node:test";
import { assert, inBrowser, join, open, sample, samplePath, tab, tool } from "./support.mjs";
import { writeFileSync } from "node:fs";

/** The document of a sample with its cells many times over. */
function manyCells(here, count) {
  const document = JSON.parse(tool(["export", samplePath("movie_recorder")]));
  const { cells, programs } = document.original_chain;
  document.original_chain.cells = Array.from({ length: count }, (_, i) => cells[i % cells.length]);
  document.original_chain.programs = programs.slice(0, 1);
  const json = join(here.folder, "many.json");
  writeFileSync(json, JSON.stringify(document));
  const path = join(here.folder, "many.ifo");
  tool(["build", json, "-o", path]);
  return path;
}

const active = (page) => page.locator(".field.active .field-name").textContent();
const place = (page) => page.locator(".told-place code").textContent();

describe("fields", () => {
  const here = inBrowser();

  test("every key of the JSON document has its row", async () => {
    const { page } = here;
    await page.setViewportSize({ width: 1280, height: 3000 });
    await open(page, samplePath("still_camera"));
    await tab(page, "Fields");
    await page.evaluate(() => (document.querySelector(".tree").style.height = "2400px"));
    const document_ = JSON.parse(tool(["export", samplePath("still_camera")]));
    await page.locator(".tree").focus();
    for (const table of ["header", "still", "original_chain"]) {
      const row = page.locator(".field", { has: page.getByText(table, { exact: true }) });
      await row.click();
      await page.waitForFunction((name) => {
        const rows = [...document.querySelectorAll(".field")];
        const at = rows.findIndex((one) => one.querySelector(".field-name").textContent === name);
        return rows[at + 1]?.getAttribute("aria-level") === "2";
      }, table);
      const names = await page.locator('.field[aria-level="2"] .field-name').allTextContents();
      for (const key of Object.keys(document_[table]))
        assert.ok(names.includes(key), `${table}: ${key}`);
      await row.click();
    }
  });

  test("60,000 cells open, scroll and are walked by keys without delay", async () => {
    const { page } = here;
    await open(page, manyCells(here, 60000));
    await tab(page, "Fields");
    await page.locator(".field").first().waitFor();
    const key = (name) => page.keyboard.press(name);
    await page.locator(".tree").focus();
    for (let i = 0; i < 4; ++i) await key("ArrowDown");
    assert.equal(await active(page), "original_chain");
    await key("ArrowRight");
    await page.locator('.field[aria-level="2"]').first().waitFor();
    await page.locator(".field-name", { hasText: /^cells$/ }).click();
    await page.locator('.field[aria-level="3"]').first().waitFor();
    assert.ok((await page.locator(".field").count()) < 60, "only what is in sight has elements");
    const longest = await page.evaluate(async () => {
      const tree = document.querySelector(".tree");
      let last = performance.now();
      let longest = 0;
      for (let i = 0; i < 60; ++i) {
        tree.scrollTop = (tree.scrollHeight * i) / 60;
        await new Promise((done) => requestAnimationFrame(done));
        longest = Math.max(longest, performance.now() - last);
        last = performance.now();
      }
      return longest;
    });
    assert.ok(longest < 250, `a frame took ${longest} ms`);
    await key("End");
    await page.locator(".field.active", { hasText: "manufacturers" }).waitFor();
    for (let i = 0; i < 3; ++i) await key("ArrowUp");
    await page.locator(".field.active .field-name", { hasText: "60000" }).waitFor();
    assert.equal(await place(page), "/original_chain/cells/59999");
    await key("ArrowLeft");
    assert.equal(await active(page), "cells");
    await key("ArrowLeft");
    await key("ArrowLeft");
    assert.equal(await active(page), "original_chain");
    await key("ArrowLeft");
    assert.equal(await page.locator(".field").count(), 8);
  });

  test("names and values are found, and lead to their place", async () => {
    const { page } = here;
    await open(page, samplePath("movie_recorder"));
    await tab(page, "Fields");
    const search = page.getByLabel("Search names and values");
    await search.fill("SPORT ONLY");
    await page.getByText("Found 3.").waitFor();
    await page.locator(".hit", { hasText: "user_chains / chain 2 / program 1 / text_4" }).click();
    await page.locator(".field.active .field-name", { hasText: "text_4" }).waitFor();
    assert.equal(await place(page), "/user_chains/chains/1/programs/0/text_4");
    await search.fill("word_1");
    await page.getByText("The first 200 are shown.").waitFor();
    await search.fill("there is no such thing");
    await page.getByText("Nothing found.").waitFor();
    assert.ok(sample("movie_recorder").includes("Sport only"));
  });
});
