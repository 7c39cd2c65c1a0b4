// What is opened, and what is shown of it, beside what the tool says of the same file.
import {
  mkdirSync,
  openSync,
  closeSync,
  ftruncateSync,
  writeSync,
  copyFileSync,
  writeFileSync,
} from "node:fs";
import { describe, test } from "node:test";
import {
  assert,
  inBrowser,
  join,
  open,
  press,
  same,
  sample,
  samplePath,
  SAMPLES,
  save,
  tab,
  tool,
} from "./support.mjs";

const listed = (path) => JSON.parse(tool(["list", "--json", path]));

describe("opening", () => {
  const here = inBrowser();

  for (const name of SAMPLES) {
    test(`${name} is shown as the tool shows it`, async () => {
      const { page } = here;
      const path = samplePath(name);
      await open(page, path);
      const disc = listed(path);
      await page.waitForSelector("#panel .numbers");
      const head = await page.locator("#main h1").textContent();
      assert.ok(head.includes(disc.text || "(without title)"), head);
      const programs = tool(["list", "--json", "--programs", path])
        .trim()
        .split("\n")
        .filter(Boolean)
        .map((line) => JSON.parse(line));
      const rows = page
        .locator("section", { has: page.getByRole("heading", { name: "Programs", exact: true }) })
        .locator(".row .name");
      assert.deepEqual(
        await rows.allTextContents(),
        programs.map((one) => one.text || "(without title)"),
      );
      same(await save(page), sample(name));
      assert.equal(String(await save(page, "Download as JSON")), tool(["export", path]));
      const report = tool(["report", `${name}.ifo`, "-o", "-"], join(path, ".."));
      assert.equal(String(await save(page, "Download the report")), report);
    });
  }

  test("the report is shown in its own style, and runs nothing", async () => {
    const { page } = here;
    await open(page, samplePath("mixed_full"));
    await tab(page, "Report");
    const frame = page.frameLocator("iframe");
    await frame.locator("footer").waitFor();
    assert.equal(await frame.locator("figure svg.w960").first().isVisible(), true);
    assert.equal(await frame.locator("figure svg.w342").first().isVisible(), false);
    assert.equal(
      await frame.locator("body").evaluate((body) => getComputedStyle(body).paddingTop),
      "40px",
    );
    const isWhole = await page
      .locator("iframe")
      .evaluate(
        (element) => element.clientHeight >= element.contentDocument.documentElement.scrollHeight,
      );
    assert.ok(isWhole, "the report is cut");
    assert.equal(await page.locator("iframe").getAttribute("sandbox"), "allow-same-origin");
  });

  test("several at once become a list; each can be shown and closed", async () => {
    const { page } = here;
    await open(page, ...SAMPLES.map(samplePath));
    assert.equal(await page.locator(".file").count(), SAMPLES.length);
    await page.locator(".file-name", { hasText: "still_camera.ifo" }).click();
    await page.getByRole("heading", { name: "STILLS 2006" }).waitFor();
    await press(page, "Close still_camera.ifo");
    await page.waitForFunction(() => document.querySelectorAll(".file").length === 4);
    assert.equal(await page.getByRole("heading", { name: "STILLS 2006" }).count(), 0);
  });

  test("of a folder the disc's file is taken, or its backup where that is damaged", async () => {
    const { page } = here;
    const cases = [
      {
        folder: "sound",
        ifo: sample("movie_recorder"),
        bup: sample("still_camera"),
        shown: "FAMILY RECORDINGS VOL 3",
        told: 0,
      },
      {
        folder: "damaged",
        ifo: sample("movie_recorder").subarray(0, 9000),
        bup: sample("still_camera"),
        shown: "STILLS 2006",
        told: 1,
      },
      { folder: "missing", bup: sample("still_camera"), shown: "STILLS 2006", told: 1 },
    ];
    for (const { folder, ifo, bup, shown, told } of cases) {
      const inside = join(here.folder, folder, "dvd_rtav");
      mkdirSync(inside, { recursive: true });
      writeFileSync(join(inside, "VR_MOVIE.VRO"), "not looked at");
      if (ifo) writeFileSync(join(inside, "vr_mangr.ifo"), ifo);
      writeFileSync(join(inside, "VR_MANGR.BUP"), bup);
      await page.setInputFiles("#choose-folder", join(here.folder, folder));
      const file = page.locator(".file-name", { hasText: `${folder}/` });
      await file.click();
      await page.getByRole("heading", { name: shown }).waitFor();
      assert.equal(await page.locator(".told", { hasText: "backup" }).count(), told, folder);
      await press(page, await page.locator(".close").first().getAttribute("aria-label"));
    }
    mkdirSync(join(here.folder, "nothing"));
    writeFileSync(join(here.folder, "nothing", "notes.txt"), "x");
    await page.setInputFiles("#choose-folder", join(here.folder, "nothing"));
    await page.getByText("There is no management file in nothing.").waitFor();
  });

  test("files that are dropped are opened", async () => {
    const { page } = here;
    const bytes = [...sample("odd_layout")];
    await page.evaluate((given) => {
      const transfer = new DataTransfer();
      transfer.items.add(new File([new Uint8Array(given)], "ディスク.ifo"));
      dispatchEvent(new DragEvent("drop", { dataTransfer: transfer }));
    }, bytes);
    await page.locator(".file-name", { hasText: "ディスク.ifo" }).waitFor();
    same(await save(page), sample("odd_layout"));
  });
});

describe("images", () => {
  const here = inBrowser();
  const GIB = 1024 ** 3;

  /** A sparse image with files at some of its sectors. */
  function image(name, size, files) {
    const path = join(here.folder, name);
    const file = openSync(path, "w");
    for (const [offset, bytes] of files) writeSync(file, bytes, 0, bytes.length, offset);
    ftruncateSync(file, size);
    closeSync(file);
    return path;
  }

  test("one of 5 GB is searched to its end, in slices", async () => {
    const { page } = here;
    const size = 5 * GIB;
    const path = image("disc.iso", size, [
      [557056, sample("movie_recorder")],
      [571392, sample("movie_recorder")],
      [64 * 1024 * 1024, sample("odd_layout")], // at the start of a part
      [128 * 1024 * 1024 - 2048, sample("mixed_full")], // over the end of one
      [size - 4096, sample("still_camera")],
    ]);
    await page.setInputFiles("#choose-files", path);
    await page.getByRole("heading", { name: "FAMILY RECORDINGS VOL 3" }).waitFor();
    await page.locator(".search").waitFor({ state: "detached", timeout: 180_000 });
    const notes = [];
    for (const file of await page.locator(".file-name").all()) {
      await file.click();
      notes.push(await page.locator(".told").textContent());
    }
    const offsets = JSON.stringify(notes.map((note) => Number(note.replace(/\D/g, ""))));
    const expected = tool(["locate", "--json", path])
      .trim()
      .split("\n")
      .map((line) => JSON.parse(line));
    assert.equal(
      offsets,
      JSON.stringify(expected.filter((one) => !one.same_as).map((one) => one.offset)),
    );
    await page.locator(".file-name").first().click();
    same(await save(page), sample("movie_recorder"));
  });

  test("a search can be stopped; what holds nothing is told", async () => {
    const { page } = here;
    await page.setInputFiles(
      "#choose-files",
      image("long.iso", 5 * GIB, [[4096, sample("empty")]]),
    );
    await press(page, "Stop");
    await page.getByText("The search of long.iso was stopped.").waitFor();
    await press(page, "Dismiss");
    await page.setInputFiles("#choose-files", image("none.iso", 3 * 1024 * 1024, []));
    await page.getByText("none.iso holds no management file in any of its sectors.").waitFor();
  });
});
