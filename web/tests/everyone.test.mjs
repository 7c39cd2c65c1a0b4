// The page for everyone: keyboard, screen readers, phones, languages; and alone, without network.
import { readFileSync } from "node:fs";
import { createRequire } from "node:module";
import { describe, test } from "node:test";
import {
  act,
  assert,
  confirm,
  inBrowser,
  newPage,
  open,
  PAGE,
  press,
  sample,
  samplePath,
  steps,
  tab,
} from "./support.mjs";

const axe = readFileSync(createRequire(import.meta.url).resolve("axe-core/axe.min.js"), "utf8");

/** What axe-core finds, as lines. It is put into the page past its policy. */
async function findings(page) {
  await page.evaluate(axe);
  return page.evaluate(async () => {
    const run = await window.axe.run(document, {
      iframes: false,
      runOnly: ["wcag2a", "wcag2aa", "wcag21a", "wcag21aa", "wcag22aa", "best-practice"],
    });
    return run.violations.flatMap((one) =>
      one.nodes.map(
        (node) => `${one.id}: ${node.html.slice(0, 150)} ${node.any[0]?.message ?? ""}`,
      ),
    );
  });
}

const isTooWide = (page) =>
  page.evaluate(() => document.documentElement.scrollWidth > document.documentElement.clientWidth);

describe("everyone", () => {
  const here = inBrowser();

  for (const colorScheme of ["light", "dark"]) {
    for (const width of [1280, 390]) {
      test(`axe-core finds nothing, and nothing is cut: ${colorScheme}, ${width} pixels`, async () => {
        const page = await newPage(here, {
          colorScheme,
          viewport: { width, height: 844 },
          reducedMotion: "reduce",
        });
        const look = async (what) => {
          assert.deepEqual(await findings(page), [], what);
          assert.equal(await isTooWide(page), false, what);
        };
        await look("start");
        await open(
          page,
          samplePath("movie_recorder"),
          here.write("cut.ifo", sample("movie_recorder").subarray(0, 9000)),
        );
        await act(page, "program-3", "Move up");
        await steps(page, 1);
        await page.locator(".steps summary").click();
        for (const name of ["Contents", "Check", "Fields", "Report"]) {
          await tab(page, name);
          await page.waitForFunction(() => document.getElementById("panel").childElementCount > 0);
          await look(name);
        }
        const report = page.frameLocator("iframe");
        await report.locator("footer").waitFor();
        const cut = await report
          .locator("figure svg")
          .evaluateAll(
            (all) =>
              all.filter(
                (svg) =>
                  svg.getBoundingClientRect().right > svg.ownerDocument.documentElement.clientWidth,
              ).length,
          );
        assert.equal(cut, 0, "charts that are cut");
        await tab(page, "Contents");
        await press(page, "Rename disc…");
        await page.locator("dialog h3").waitFor();
        await look("dialog");
        await confirm(page, "Cancel");
        await page.locator(".file-name", { hasText: "cut.ifo" }).click();
        await tab(page, "Check");
        await page.locator(".findings summary").first().click();
        await look("damaged");
        await press(page, "Salvage…");
        await page.locator("dialog .facts").waitFor();
        await look("salvage");
        await confirm(page, "Cancel");
      });
    }
  }

  test("the keyboard alone opens, edits and saves", async () => {
    const { page } = here;
    const focused = () =>
      page.evaluate(() =>
        document.activeElement === document.body ? "" : document.activeElement.textContent,
      );
    const goTo = async (text) => {
      for (let i = 0; i < 60; ++i) {
        if ((await focused()).includes(text)) return;
        await page.keyboard.press("Tab");
      }
      assert.fail(`${text} is not reached`);
    };
    const choosing = page.waitForEvent("filechooser");
    await goTo("Choose files…");
    await page.keyboard.press("Enter");
    const chooser = await choosing;
    await chooser.setFiles(samplePath("movie_recorder"));
    await page.getByRole("heading", { name: "FAMILY RECORDINGS VOL 3" }).waitFor();
    await goTo("Garden in spring");
    await page.keyboard.press("Enter");
    await goTo("Move up");
    await page.keyboard.press("Space");
    await steps(page, 1);
    assert.ok((await focused()).includes("Move up"), "the focus stays with the program");
    await page.keyboard.press("Shift+Tab");
    await page.keyboard.press("Enter");
    await page.keyboard.type("By keys");
    await page.locator("dialog .effects li").first().waitFor();
    await page.keyboard.press("Enter");
    await steps(page, 2);
    assert.equal(await page.locator(".row .name").nth(1).textContent(), "By keys");
    await page.keyboard.press("Control+z");
    await page
      .getByRole("status")
      .getByText("Undone: Renamed program 2")
      .waitFor({ state: "attached" })
      .catch(() => undefined);
    await steps(page, 1);
    await page.getByRole("tab", { selected: true }).focus();
    await page.keyboard.press("ArrowRight");
    await page.getByRole("tab", { name: "Report", selected: true }).waitFor();
    await page.keyboard.press("Control+s");
    const [download] = await Promise.all([
      page.waitForEvent("download"),
      goTo("Download the file").then(() => page.keyboard.press("Enter")),
    ]);
    assert.equal(download.suggestedFilename(), "movie_recorder.ifo");
  });

  test("every text is there in each language, and the choice is kept", async () => {
    const { page } = here;
    await open(page, samplePath("movie_recorder"));
    await act(page, "program-1", "Move down");
    await steps(page, 1);
    for (const [language, word] of [
      ["de", "Programme"],
      ["ja", "プログラム"],
      ["en", "Programs"],
    ]) {
      await page.locator("#language").selectOption(language);
      await page.getByRole("heading", { name: word, exact: true }).waitFor();
      assert.equal(await page.locator("html").getAttribute("lang"), language);
      assert.deepEqual(await findings(page), [], language);
    }
    await page.locator("#language").selectOption("ja");
    await page.evaluate(() => (window.onbeforeunload = null));
    page.on("dialog", (dialog) => dialog.accept());
    await page.reload();
    await page.getByRole("heading", { name: "ここにディスクのファイルをドロップ" }).waitFor();
    const german = await newPage(here, { locale: "de-AT" });
    await german.getByRole("heading", { name: "Datei einer Disc hier ablegen" }).waitFor();
  });

  test("the page stays alone: its policy forbids every connection, and none is tried", async () => {
    const { page } = here;
    const policy = await page.locator("meta[http-equiv]").getAttribute("content");
    for (const part of ["default-src 'none'", "connect-src 'none'", "form-action 'none'"]) {
      assert.ok(policy.includes(part), part);
    }
    assert.ok(
      !/unsafe-inline|unsafe-eval'? |https?:|\*/.test(policy.replace("'wasm-unsafe-eval'", "")),
      policy,
    );
    await here.context.setOffline(true);
    await open(page, samplePath("mixed_full"));
    for (const name of ["Report", "Check", "Fields"]) await tab(page, name);
    await page.locator(".field").first().waitFor();
    assert.deepEqual(here.asked, []);
    // What tries in spite of it is refused by the browser.
    const refused = await page.evaluate(async () => {
      const tries = [
        () => fetch("https://example.invalid/"),
        () => fetch("data:,x"),
        () =>
          new Promise((done, failed) => {
            const image = new Image();
            image.onload = done;
            image.onerror = failed;
            image.src = "https://example.invalid/x.png";
          }),
        () =>
          new Promise((done, failed) => {
            const script = document.createElement("script");
            script.textContent = "window.ran = true";
            document.head.append(script);
            setTimeout(() => (window.ran ? done() : failed(new Error())), 100);
          }),
      ];
      const ends = await Promise.allSettled(tries.map((one) => one()));
      return ends.map((end) => end.status);
    });
    assert.deepEqual(refused, ["rejected", "rejected", "rejected", "rejected"]);
    assert.ok(
      here.said.length >= 3 &&
        here.said.every((line) => /Content Security Policy|violates/.test(line)),
      here.said.join("\n"),
    );
    here.said.length = 0;
    here.asked.length = 0;
  });

  test("the file of the page is one, small, and asks for nothing else", () => {
    const text = readFileSync(PAGE, "utf8");
    assert.ok(Buffer.byteLength(text) <= 900_000, `${Buffer.byteLength(text)} bytes`);
    const markup = text
      .replace(/<script[^>]*>[^]*?<\/script>/g, "")
      .replace(/<style>[^]*?<\/style>/, "");
    assert.ok(!/\b(src|href)="(?!data:,)/.test(markup), "something is loaded");
    assert.ok(!/@import|url\(/.test(text.replace(/<script[^>]*>[^]*?<\/script>/g, "")));
  });
});
