// Takes the pictures of the page for the README: the main view at desktop and phone width.
//
//   node pictures.mjs FOLDER
import { join } from "node:path";
import { pathToFileURL } from "node:url";
import { chromium } from "playwright-core";
import { act, open, PAGE, samplePath, steps } from "../tests/support.mjs";

const folder = process.argv[2];
const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM ?? "/usr/bin/chromium",
  args: ["--no-sandbox"],
});
for (const [name, width, height, colorScheme] of [
  ["page_desktop", 1280, 900, "light"],
  ["page_phone", 390, 844, "dark"],
]) {
  const context = await browser.newContext({
    viewport: { width, height },
    colorScheme,
    locale: "en-US",
  });
  const page = await context.newPage();
  await page.goto(pathToFileURL(PAGE).href);
  await page.waitForSelector("html[data-ready]");
  await open(page, samplePath("movie_recorder"));
  await act(page, "program-3", "Move up");
  await steps(page, 1);
  await page.mouse.move(0, 0);
  await page.evaluate(() => {
    document.activeElement.blur();
    scrollTo(0, 0);
  });
  await page.screenshot({ path: join(folder, `${name}.png`) });
  await context.close();
}
await browser.close();
