// The page: which files are open, which one is shown and how, and what is told.
import { CheckView } from "./check_view";
import { ContentsView } from "./contents_view";
import type { Disc } from "./disc";
import { ask, button, h, replace } from "./dom";
import { Editing } from "./editing";
import { FieldsView } from "./fields_view";
import { Frame, type FrameActions, type Tab } from "./frame";
import { Opener, givenBy, givenByDrop } from "./opening";
import { reportFrame } from "./report_view";
import { Saving } from "./saving";
import { type Message, say, size, t, upper } from "./texts";
import { Workshop, WorkshopError } from "./workshop";

const byId = (id: string) => document.getElementById(id)!;

export class App {
  private readonly discs: Disc[] = [];
  private shown: Disc | undefined;
  private tab: Tab = "contents";
  private readonly opener: Opener;
  private readonly editing: Editing;
  private readonly saving: Saving;
  private readonly contents: ContentsView;
  private readonly frame: Frame;
  private readonly check = new CheckView({
    showInFields: (pointer) => void this.showInFields(pointer),
  });
  private fields: { view: FieldsView; bytes: Uint8Array; charset: string } | undefined;
  private turn = 0;

  constructor(private readonly workshop: Workshop) {
    this.opener = new Opener(workshop, {
      add: (disc) => void this.add(disc),
      tell: (message) => this.tell(message),
      progress: (name, all, stop) => this.progress(name, all, stop),
    });
    const failed = (error: unknown) => this.failed(error);
    this.editing = new Editing({ workshop, stepped: (_, title) => this.stepped(title), failed });
    this.saving = new Saving({
      workshop,
      saved: (_, name) => {
        this.announce(t("saved", { name }));
        void this.render();
      },
      tell: (message) => this.tell(message),
      failed,
    });
    this.contents = new ContentsView(this.editing, () => void this.render());
    this.frame = new Frame(this.frameActions(), workshop);
    this.listen();
    void this.render();
  }

  private frameActions(): FrameActions {
    return {
      languageChanged: () => {
        this.fields = undefined;
        void this.render();
      },
      choose: (files, isFolder) => {
        const given = givenBy(files);
        const folder = isFolder ? given[0]?.path.split("/")[0] : undefined;
        this.opener.open(given, folder).catch((error) => this.failed(error));
      },
      show: (disc) => {
        this.shown = disc;
        void this.render();
      },
      close: (disc) => void this.close(disc),
      save: (disc) => this.saving.offer(disc),
      go: (disc, by) => void this.go(disc, by),
      renameDisc: (disc) =>
        void this.editing.rename(disc, ["set-disc-text"], { key: "disc" }, disc.listing!.text),
      salvage: (disc) => void this.editing.salvage(disc),
      setCharset: (disc, charset) => {
        disc.charset = charset;
        disc.listing = undefined;
        void this.render();
      },
      select: (tab) => {
        this.tab = tab;
        void this.render();
      },
    };
  }

  // --- opening and closing

  private listen(): void {
    addEventListener("dragover", (event) => {
      event.preventDefault();
      document.body.classList.add("dropping");
    });
    addEventListener("dragleave", (event) => {
      if (!event.relatedTarget) document.body.classList.remove("dropping");
    });
    addEventListener("drop", async (event) => {
      event.preventDefault();
      document.body.classList.remove("dropping");
      if (!event.dataTransfer) return;
      try {
        const { given, folder } = await givenByDrop(event.dataTransfer);
        await this.opener.open(given, folder);
      } catch (error) {
        this.failed(error);
      }
    });
    addEventListener("beforeunload", (event) => {
      if (this.discs.some((disc) => disc.isChanged)) event.preventDefault();
    });
    addEventListener("keydown", (event) => this.onKey(event));
  }

  private onKey(event: KeyboardEvent): void {
    const disc = this.shown;
    const isTyping = event.target instanceof HTMLInputElement;
    if (!(event.ctrlKey || event.metaKey) || document.querySelector("dialog")) return;
    const key = event.key.toLowerCase();
    if (key === "o") byId("choose-files").click();
    else if (key === "s" && disc) this.saving.offer(disc);
    else if (key === "z" && disc && !isTyping) void this.go(disc, event.shiftKey ? 1 : -1);
    else if (key === "y" && disc && !isTyping) void this.go(disc, 1);
    else return;
    event.preventDefault();
  }

  private async add(disc: Disc): Promise<void> {
    this.discs.push(disc);
    this.announce(t("opened", { name: disc.name }));
    if (this.discs.length > 1 && this.shown) {
      await this.workshop.list(disc.source).then(
        (listing) => (disc.listing = listing),
        () => undefined,
      );
      return this.render();
    }
    this.shown = disc;
    this.tab = "contents";
    await this.render();
  }

  private async close(disc: Disc): Promise<void> {
    if (disc.isChanged) {
      const { answer } = ask({
        title: t("closeTitle", { name: disc.name }),
        content: [h("p", {}, t("closeText"))],
        confirm: { text: t("closeYes"), isDanger: true },
        cancel: t("cancel"),
      });
      if (!(await answer)) return;
    }
    const at = this.discs.indexOf(disc);
    this.discs.splice(at, 1);
    if (this.shown === disc) this.shown = this.discs[Math.min(at, this.discs.length - 1)];
    await this.render();
  }

  private progress(name: string, all: number, stop: () => void): (done: number | null) => void {
    const bar = h("progress", { max: all, value: 0, "aria-label": name });
    const told = h("span", {});
    const line = h("div", { class: "search" }, told, bar, button(t("stop"), stop));
    const went = (done: number | null) => {
      if (done === null) return line.remove();
      bar.value = done;
      replace(told, t("searching", { name, done: size(done), all: size(all) }));
    };
    went(0);
    byId("notices").append(line);
    return went;
  }

  // --- telling

  private announce(text: string): void {
    byId("status").textContent = text;
  }

  /** A line that stays until it is dismissed. */
  private tell(message: Message): void {
    const line: HTMLElement = h(
      "div",
      { class: "notice" },
      h("span", {}, say(message)),
      button(t("dismiss"), () => line.remove()),
    );
    byId("notices").append(line);
  }

  private failed(error: unknown): void {
    const isMemory = error instanceof WorkshopError && error.refusal.kind === "memory";
    const why = isMemory ? t("noMemory") : error instanceof Error ? error.message : String(error);
    this.tell({ key: "failed", args: { why } });
  }

  // --- steps

  private async stepped(title: Message): Promise<void> {
    this.announce(upper(say(title)));
    await this.render();
  }

  private async go(disc: Disc, by: number): Promise<void> {
    const to = disc.done + by;
    if (to < 0 || to > disc.steps.length) return;
    const step = disc.steps[by > 0 ? disc.done : to]!;
    try {
      await disc.goTo(to, (bytes, words) =>
        this.workshop.edit({ bytes, charset: disc.charset }, words),
      );
      this.announce(t(by > 0 ? "redone" : "undone", { what: step.title }));
      await this.render();
    } catch (error) {
      this.failed(error);
    }
  }

  // --- showing

  /** Shows everything anew, at once when all of it is known. */
  private async render(): Promise<void> {
    const turn = ++this.turn;
    const disc = this.shown;
    const main = byId("main");
    const late = setTimeout(() => main.setAttribute("aria-busy", "true"), 150);
    try {
      if (disc && !disc.listing) {
        const listing = await this.workshop.list(disc.source);
        if (turn !== this.turn) return;
        disc.listing = listing;
      }
      const panel = disc ? this.panel(await this.tabContent(disc)) : null;
      if (turn !== this.turn) return;
      document.title = disc ? `${disc.isChanged ? "• " : ""}${disc.name} – veska` : "veska";
      replace(byId("top"), ...this.frame.top());
      replace(byId("files"), ...this.frame.files(this.discs, this.shown));
      byId("page").classList.toggle("empty", !disc);
      replace(
        main,
        ...(disc && panel ? [...this.frame.head(disc, this.tab), panel] : this.frame.start()),
      );
    } catch (error) {
      if (turn === this.turn) this.cannotShow(disc, error);
    } finally {
      clearTimeout(late);
      if (turn === this.turn) main.removeAttribute("aria-busy");
    }
  }

  /** A file of which not even a list can be made is not kept open. */
  private cannotShow(disc: Disc | undefined, error: unknown): void {
    this.failed(error);
    if (!disc || disc.listing) return;
    this.discs.splice(this.discs.indexOf(disc), 1);
    this.shown = this.discs[0];
    void this.render();
  }

  // --- tabs

  private panel(content: HTMLElement[]): HTMLElement {
    return h(
      "div",
      { id: "panel", role: "tabpanel", "aria-labelledby": `tab-${this.tab}`, class: "panel" },
      ...content,
    );
  }

  private async tabContent(disc: Disc): Promise<HTMLElement[]> {
    const { tab } = this;
    const { bytes } = disc;
    if (tab === "contents") return this.contents.render(disc);
    if (tab === "check") {
      const examination = disc.examination ?? (await this.workshop.check(disc.source, disc.name));
      if (disc.bytes === bytes) disc.examination = examination;
      return this.check.render(disc, examination);
    }
    if (!disc.listing!.loads) {
      return [h("p", { class: "soft" }, t(tab === "report" ? "noReport" : "noFields"))];
    }
    if (tab === "report") {
      return [reportFrame(await this.workshop.report(disc.source, disc.name), disc.name)];
    }
    return [this.fieldsView(disc).element];
  }

  private fieldsView(disc: Disc): FieldsView {
    const { bytes, charset } = disc;
    if (this.fields?.bytes !== bytes || this.fields.charset !== charset) {
      const view = new FieldsView(this.workshop, disc.source, (error) => this.failed(error));
      this.fields = { view, bytes, charset };
    }
    return this.fields.view;
  }

  private async showInFields(pointer: string): Promise<void> {
    this.tab = "fields";
    await this.render();
    await this.fields?.view.reveal(pointer);
  }
}
