// Damaged and hostile files: what is found and salvaged is what the tool finds and salvages.
import { describe, test } from "node:test";
import {
  act,
  assert,
  confirm,
  inBrowser,
  open,
  press,
  same,
  sample,
  save,
  steps,
  tab,
  tool,
  toolMakes,
} from "./support.mjs";

/** A copy with some bytes put over its own. */
function with_(bytes, offset, ...put) {
  const copy = Buffer.from(bytes);
  Buffer.from(put).copy(copy, offset);
  return copy;
}

const CASES = [
  {
    name: "cut in the cells",
    bytes: () => sample("movie_recorder").subarray(0, 9000),
    loads: false,
  },
  {
    name: "cut in the movie table",
    bytes: () => sample("movie_recorder").subarray(0, 3000),
    loads: false,
  },
  {
    name: "cut still pictures",
    bytes: () => sample("still_camera").subarray(0, 1001),
    loads: false,
  },
  { name: "a wrong count", bytes: () => with_(sample("mixed_full"), 514, 0, 99), loads: null },
  {
    name: "bytes behind the end",
    bytes: () => Buffer.concat([sample("odd_layout"), Buffer.alloc(64, 7)]),
    loads: null,
  },
];

describe("damage", () => {
  const here = inBrowser();

  for (const { name, bytes, loads } of CASES) {
    test(name, async () => {
      const { page } = here;
      const path = here.write("damaged.ifo", bytes());
      const { files } = JSON.parse(tool(["check", "--json", path]));
      const found = files[0];
      if (loads !== null) assert.equal(found.loads, loads);
      await open(page, path);
      await tab(page, "Check");
      await page.locator(".findings").waitFor();
      const shown = await page.locator(".findings details").count();
      assert.equal(shown, found.findings.length);
      assert.equal(await page.locator(".picture .mark").count(), shown);

      const first = found.findings[0];
      const details = page.locator(".findings details").first();
      await details.locator("summary").click();
      await details.locator(".told-of").waitFor();
      const text = await details.textContent();
      for (const part of [first.code, first.stands, first.right, first.path]) {
        assert.ok(text.includes(part), part);
      }
      assert.equal(await page.locator(".mark.chosen").count(), 1);
      const mark = await details
        .locator("pre mark")
        .textContent()
        .catch(() => "");
      const there = bytes()[first.offset];
      if (there !== undefined) assert.equal(mark, there.toString(16).padStart(2, "0"));

      if (found.errors === 0) return;
      await press(page, "Salvage…");
      await page.locator("dialog .facts").waitFor();
      const told = await page.locator("dialog").textContent();
      const lines = tool(["salvage", path, "-o", path + ".out", "--force"])
        .trim()
        .split("\n");
      for (const line of lines.filter((one) => one.includes("lost, since"))) {
        const reason = line.slice(line.indexOf("lost, since") + 12);
        assert.ok(told.includes(reason.split(":")[0]), line);
      }
      await confirm(page, "Continue with what is kept");
      await steps(page, 1);
      same(await save(page), toolMakes(here.folder, path, "salvage"));
      await tab(page, "Contents");
      await press(page, "Rename disc…");
      await page.getByLabel("Title", { exact: true }).fill("again");
      await confirm(page, "Apply");
      await steps(page, 2);
      await press(page, "Undo");
      await press(page, "Undo");
      await steps(page, 0);
      same(await save(page), bytes());
    });
  }

  test("what is no management file is told, and so is an empty one", async () => {
    const { page } = here;
    await open(page, here.write("text.ifo", "this is a text"), here.write("empty.bin", ""));
    await page.getByRole("heading", { name: "Nothing of this file can be read" }).waitFor();
    await page.locator(".file-name", { hasText: "empty.bin" }).click();
    await page.getByText("Nothing can be read: ", { exact: false }).waitFor();
    for (const name of ["Report", "Check", "Fields", "Contents"]) await tab(page, name);
    assert.equal(await page.locator(".line[aria-expanded]").count(), 0);
  });

  test("a finding leads to its place in the fields", async () => {
    const { page } = here;
    // Play list 1 names a cell that there is none of.
    const list = sample("movie_recorder").indexOf("Best of spring") - 8;
    const at = sample("movie_recorder").indexOf(Buffer.from([0, 8]), list + 136 + 2);
    await open(page, here.write("pointer.ifo", with_(sample("movie_recorder"), at, 0, 77)));
    await tab(page, "Check");
    const finding = page.locator(".findings details", { hasText: "play_lists / list 1" }).first();
    await finding.locator("summary").click();
    await finding.getByRole("button", { name: "Show in the fields" }).click();
    await page.locator(".field.active").waitFor();
    const place = await page.locator(".told-place code").textContent();
    assert.match(place, /^\/play_lists\/lists\/0/);
  });

  test("hostile texts stay texts", async () => {
    const { page } = here;
    const evil = "<img src=x onerror=alert(1)><script>alert(2)</script>";
    const path = toolMakes(
      here.folder,
      here.write("a.ifo", sample("movie_recorder")),
      "edit",
      "set-disc-text",
      evil,
      "set-program-text",
      "1",
      evil,
      "set-playlist-text",
      "1",
      evil,
      "set-text",
      "1",
      "1",
      evil + "\\x00\\x1b[31m",
    );
    await open(page, here.write("<b onclick=x>.ifo", path));
    await page.getByRole("heading", { name: evil }).waitFor();
    for (const name of ["Contents", "Check", "Fields", "Report"]) {
      await tab(page, name);
      await page.waitForFunction(() => document.getElementById("panel").childElementCount > 0);
    }
    await page.frameLocator("iframe").getByText(evil).first().waitFor();
    const frame = page.frameLocator("iframe").locator("html");
    assert.equal(await frame.locator("img, script").count(), 0);
    await tab(page, "Fields");
    await page.getByLabel("Search names and values").fill("onerror");
    await page.locator(".hit").nth(2).waitFor();
    await tab(page, "Contents");
    await act(page, "program-1", "Delete…");
    await page.locator("dialog .effects li").first().waitFor();
    await confirm(page, "Cancel");
    assert.equal(await page.locator("main img, main script, dialog, nav img, nav b").count(), 0);
  });
});
