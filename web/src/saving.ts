// Where a file goes: a download, a place that the user chooses, or over the one that was opened.
import type { Disc, Handle } from "./disc";
import { ask, button, download, h } from "./dom";
import { t, type Message } from "./texts";
import type { Workshop } from "./workshop";

type Picker = (options: { suggestedName: string }) => Promise<Handle>;

export interface SaveHost {
  workshop: Workshop;
  saved(disc: Disc, name: string): void;
  tell(message: Message): void;
  failed(error: unknown): void;
}

const isSame = (a: Uint8Array, b: Uint8Array) =>
  a.length === b.length && a.every((byte, i) => byte === b[i]);

export class Saving {
  /** What was last seen of a file on the disk. */
  private readonly onDisk = new WeakMap<Disc, Uint8Array>();

  constructor(private readonly host: SaveHost) {}

  offer(disc: Disc): void {
    const name = disc.fileName;
    const picker = (window as { showSaveFilePicker?: Picker }).showSaveFilePicker;
    const choose = (text: string, run: () => void | Promise<void>, props = {}) =>
      h(
        "li",
        {},
        button(
          text,
          async () => {
            dialog.close();
            try {
              await run();
            } catch (error) {
              if (!(error instanceof DOMException && error.name === "AbortError")) {
                this.host.failed(error);
              }
            }
          },
          props,
        ),
      );
    const isReadable = disc.listing?.loads;
    const { dialog } = ask({
      title: t("saveWhat", { name: disc.name }),
      content: [
        h("p", { class: "soft" }, t("saveText")),
        h(
          "ul",
          { class: "choices" },
          choose(t("saveDownload"), () => this.download(disc), { class: "main" }),
          picker && choose(t("saveWhere"), async () => this.where(disc, picker)),
          disc.handle && choose(t("saveOver", { name }), () => this.over(disc, disc.handle!)),
          isReadable && choose(t("saveJson"), () => this.json(disc)),
          isReadable && choose(t("saveReport"), () => this.report(disc)),
        ),
      ],
      cancel: t("cancel"),
    });
  }

  private download(disc: Disc): void {
    download(disc.fileName, disc.bytes, "application/octet-stream");
    this.done(disc, disc.fileName);
  }

  private async json(disc: Disc): Promise<void> {
    const text = await this.host.workshop.json(disc.source);
    download(`${disc.fileName}.json`, text, "application/json");
  }

  private async report(disc: Disc): Promise<void> {
    const text = await this.host.workshop.report(disc.source, disc.name);
    download(`${disc.fileName}.html`, text, "text/html");
  }

  private async where(disc: Disc, picker: Picker): Promise<void> {
    const handle = await picker.call(window, { suggestedName: disc.fileName });
    await this.write(disc, handle);
  }

  private async over(disc: Disc, handle: Handle): Promise<void> {
    const { name } = handle;
    const { answer } = ask({
      title: t("overTitle", { name }),
      content: [h("p", {}, t("overText"))],
      confirm: { text: t("overYes"), isDanger: true },
      cancel: t("cancel"),
    });
    if (!(await answer)) return;
    const allowed = (await handle.requestPermission?.({ mode: "readwrite" })) ?? "granted";
    if (allowed !== "granted") return;
    const there = new Uint8Array(await (await handle.getFile()).arrayBuffer());
    if (!isSame(there, this.onDisk.get(disc) ?? disc.base)) {
      return this.host.tell({ key: "overChanged", args: { name } });
    }
    await this.write(disc, handle);
    this.onDisk.set(disc, disc.bytes);
  }

  /** The browser puts a file in place once it is closed: all of it, or nothing. */
  private async write(disc: Disc, handle: Handle): Promise<void> {
    const { bytes } = disc;
    const file = await handle.createWritable();
    await file.write(bytes);
    await file.close();
    const there = new Uint8Array(await (await handle.getFile()).arrayBuffer());
    if (!isSame(there, bytes)) {
      const why = t("overChanged", { name: handle.name });
      return this.host.tell({ key: "notWritten", args: { name: handle.name, why } });
    }
    this.done(disc, handle.name);
  }

  private done(disc: Disc, name: string): void {
    disc.markSaved();
    this.host.saved(disc, name);
  }
}
