// What is changed by hand is, byte for byte, what the tool makes by the same operations.
import { describe, test } from "node:test";
import { readFileSync } from "node:fs";
import {
  act,
  assert,
  confirm,
  inBrowser,
  open,
  press,
  same,
  sample,
  samplePath,
  save,
  steps,
  toolMakes,
} from "./support.mjs";

async function rename(page, title) {
  await page.getByLabel("Title", { exact: true }).fill(title);
  await confirm(page, "Apply");
}

/** What a user does, and the operations that say the same. */
const EDITS = [
  {
    by: async (page) => {
      await press(page, "Rename disc…");
      await rename(page, "Öl \\ <b>");
    },
    says: ["set-disc-text", "Öl \\\\ <b>"],
  },
  {
    by: async (page) => {
      await act(page, "program-1", "Rename…");
      await rename(page, "New");
    },
    says: ["set-program-text", "1", "New"],
  },
  { by: (page) => act(page, "program-1", "Move down"), says: ["move-program", "1", "2"] },
  { by: (page) => act(page, "program-3", "Move up"), says: ["move-program", "3", "2"] },
  {
    by: async (page) => {
      await act(page, "program-1", "Split…");
      await page.getByLabel("First cell of the second part").fill("3");
      await confirm(page, "Apply");
    },
    says: ["split-program", "1", "3"],
  },
  { by: (page) => act(page, "program-2", "Join with the next"), says: ["join-programs", "2"] },
  {
    by: async (page) => {
      await act(page, "program-2", "Delete…");
      await confirm(page, "Delete");
    },
    says: ["delete-program", "2"],
  },
  {
    by: async (page) => {
      await act(page, "playlist-1", "Rename…");
      await rename(page, "List");
    },
    says: ["set-playlist-text", "1", "List"],
  },
  { by: (page) => act(page, "playlist-1", "Move down"), says: ["swap-playlists", "1", "2"] },
  {
    by: async (page) => {
      await act(page, "playlist-1", "Delete…");
      await confirm(page, "Delete");
    },
    says: ["delete-playlist", "1"],
  },
];

describe("editing", () => {
  const here = inBrowser();

  for (const name of ["movie_recorder", "mixed_full", "odd_layout"]) {
    test(`the steps on ${name} are those of the tool, there and back`, async () => {
      const { page } = here;
      await open(page, samplePath(name));
      const states = [sample(name)];
      const says = [];
      for (const edit of EDITS) {
        const made = (() => {
          try {
            return toolMakes(here.folder, samplePath(name), "edit", ...says, ...edit.says);
          } catch {
            return null; // not on this disc
          }
        })();
        if (!made) continue;
        says.push(...edit.says);
        await edit.by(page);
        await steps(page, states.length);
        same(await save(page), made);
        states.push(made);
      }
      assert.ok(states.length > 6);
      for (let i = states.length - 2; i >= 0; --i) {
        await press(page, "Undo");
        await steps(page, i);
        if (i % 3 === 0) same(await save(page), states[i]);
      }
      for (let i = 1; i < states.length; ++i) {
        await page.keyboard.press("Control+Shift+Z");
        await steps(page, i);
      }
      same(await save(page), states.at(-1));
    });
  }

  test("each step tells what it does to references, before and after", async () => {
    const { page } = here;
    await open(page, samplePath("movie_recorder"));
    await act(page, "program-3", "Delete…");
    const told = "play list 1 named cell 8, which is deleted: it names none now";
    await page.locator("dialog .effects li", { hasText: told }).waitFor();
    await confirm(page, "Delete");
    await steps(page, 1);
    await page.locator(".steps summary").click();
    await page.locator(".steps .effects li", { hasText: told }).waitFor();
    await press(page, "Undo");
    await page.locator(".steps .undone", { hasText: "undone" }).waitFor();
    await act(page, "program-1", "Move down");
    await steps(page, 1);
    assert.equal(await page.locator(".steps ol > li").count(), 1, "what was undone is forgotten");
  });

  test("what does not fit or cannot be written is told, and not done", async () => {
    const { page } = here;
    await open(page, samplePath("movie_recorder"));
    await press(page, "Rename disc…");
    await page.getByLabel("Title", { exact: true }).fill("x".repeat(129));
    await page.locator("dialog", { hasText: "129 bytes, and 128 fit" }).waitFor();
    await page.keyboard.press("Enter");
    await page.keyboard.press("Escape");
    await page.locator("dialog").waitFor({ state: "detached" });
    await page.getByLabel("Character set").selectOption("shift_jis");
    await act(page, "program-1", "Rename…");
    await page.getByLabel("Title", { exact: true }).fill("日本€");
    await page.locator("dialog", { hasText: "“€” cannot be written in shift_jis." }).waitFor();
    await rename(page, "日本ｶﾅ~");
    await steps(page, 1);
    const bytes = "\\x93\\xfa\\x96\\x7b\\xb6\\xc5~";
    same(
      await save(page),
      toolMakes(here.folder, samplePath("movie_recorder"), "edit", "set-program-text", "1", bytes),
    );
    await page.locator(".row .name", { hasText: "日本ｶﾅ~" }).waitFor();
  });

  test("texts of another character set are offered in it", async () => {
    const { page } = here;
    const path = here.write(
      "sjis.ifo",
      toolMakes(
        here.folder,
        samplePath("movie_recorder"),
        "edit",
        "set-disc-text",
        "\\x8d\\xc5\\x8f\\x49",
      ),
    );
    await open(page, path);
    await page.getByRole("heading", { name: "\\x8d\\xc5\\x8fI" }).waitFor();
    await press(page, "Use SHIFT_JIS");
    await page.getByRole("heading", { name: "最終" }).waitFor();
    await page.getByRole("tab", { name: "Report" }).click();
    await page.frameLocator("iframe.report").getByText("最終").first().waitFor();
  });

  test("a changed file is not lost: closing asks, and so does leaving", async () => {
    const { page } = here;
    await open(page, samplePath("movie_recorder"));
    const leave = async () => {
      const [dialog] = await Promise.all([
        page.waitForEvent("dialog", { timeout: 3000 }).catch(() => null),
        page.close({ runBeforeUnload: true }),
      ]);
      await dialog?.dismiss();
      return dialog?.type();
    };
    await act(page, "program-1", "Move down");
    await steps(page, 1);
    assert.equal(await leave(), "beforeunload");
    await press(page, "Close movie_recorder.ifo");
    await confirm(page, "Cancel");
    assert.equal(await page.locator(".file").count(), 1);
    await save(page);
    await page.locator(".badge", { hasText: "changed" }).first().waitFor({ state: "detached" });
    await press(page, "Close movie_recorder.ifo");
    await page.locator(".drop").waitFor();
    assert.equal(await leave(), undefined);
  });

  test("a dropped file is written over only after asking, and only as it was opened", async () => {
    const { page } = here;
    await page.evaluate(
      (given) => {
        window.disk = new Uint8Array(given);
        const handle = {
          name: "disc.ifo",
          getFile: async () => new File([window.disk], "disc.ifo"),
          requestPermission: async () => "granted",
          createWritable: async () => {
            let content;
            return {
              write: async (data) => (content = data.slice()),
              close: async () => (window.disk = content),
            };
          },
        };
        DataTransferItem.prototype.getAsFileSystemHandle = async () => handle;
        const transfer = new DataTransfer();
        transfer.items.add(new File([window.disk], "disc.ifo"));
        dispatchEvent(new DragEvent("drop", { dataTransfer: transfer }));
      },
      [...sample("movie_recorder")],
    );
    const disk = async () => Buffer.from(await page.evaluate(() => [...window.disk]));
    const over = async (answer) => {
      await press(page, "Save…");
      await page.locator("dialog").getByRole("button", { name: "Write over disc.ifo" }).click();
      await page.getByRole("heading", { name: "Write over disc.ifo?" }).waitFor();
      await page.locator("dialog").getByRole("button", { name: answer, exact: true }).click();
    };
    await act(page, "program-1", "Move down");
    await steps(page, 1);
    await over("Cancel");
    same(await disk(), sample("movie_recorder"));
    await over("Write over it");
    await page.getByRole("status").getByText("disc.ifo is saved.").waitFor();
    same(
      await disk(),
      toolMakes(here.folder, samplePath("movie_recorder"), "edit", "move-program", "1", "2"),
    );
    await act(page, "program-2", "Move down");
    await steps(page, 2);
    await page.evaluate(() => (window.disk[0] ^= 1)); // another program writes it
    await over("Write over it");
    await page.getByText("disc.ifo was changed on the disk since it was opened.").waitFor();
  });
});
