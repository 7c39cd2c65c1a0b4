// The page: which files are open, which one is shown and how, and what is told.
import { CHARSETS, isShownAsBytes } from "./charset";
import { CheckView } from "./check_view";
import { ContentsView } from "./contents_view";
import type { Disc } from "./disc";
import { ask, button, h, replace } from "./dom";
import { Editing, stepList } from "./editing";
import { FieldsView } from "./fields_view";
import { Opener, givenBy, givenByDrop } from "./opening";
import { Status } from "./protocol";
import { reportFrame } from "./report_view";
import { Saving } from "./saving";
import {
  currentLanguage,
  LANGUAGES,
  type Message,
  say,
  setLanguage,
  size,
  t,
  upper,
} from "./texts";
import { Workshop, WorkshopError } from "./workshop";

const TABS = ["contents", "report", "check", "fields"] as const;
type Tab = (typeof TABS)[number];
const TAB_TEXTS = {
  contents: "tabContents",
  report: "tabReport",
  check: "tabCheck",
  fields: "tabFields",
} as const;

const byId = (id: string) => document.getElementById(id)!;

export class App {
  private readonly discs: Disc[] = [];
  private shown: Disc | undefined;
  private tab: Tab = "contents";
  private readonly opener: Opener;
  private readonly editing: Editing;
  private readonly saving: Saving;
  private readonly contents: ContentsView;
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
    this.listen();
    void this.render();
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

  private chooser(id: string, isFolder: boolean): HTMLInputElement {
    const input = h("input", {
      type: "file",
      id,
      class: "hidden",
      multiple: true,
      webkitdirectory: isFolder,
      tabindex: -1,
      "aria-hidden": "true",
    });
    input.addEventListener("change", async () => {
      const given = givenBy(input.files ?? []);
      const folder = isFolder ? given[0]?.path.split("/")[0] : undefined;
      input.value = "";
      await this.opener.open(given, folder).catch((error) => this.failed(error));
    });
    return input;
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
      replace(byId("top"), ...this.top());
      replace(byId("files"), ...this.files());
      byId("page").classList.toggle("empty", !disc);
      replace(main, ...(disc && panel ? [...this.head(disc), panel] : this.start()));
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

  private top(): HTMLElement[] {
    const choose = h("select", { id: "language", "data-key": "language" });
    for (const [name, text] of Object.entries(LANGUAGES)) {
      const option = h("option", { value: name, lang: name }, text);
      option.selected = name === currentLanguage();
      choose.append(option);
    }
    choose.addEventListener("change", () => {
      setLanguage(choose.value);
      this.fields = undefined;
      void this.render();
    });
    return [
      h("p", { class: "brand" }, "veska"),
      h("p", { class: "tagline soft" }, t("tagline")),
      h("label", { for: "language", class: "hidden" }, t("language")),
      choose,
    ];
  }

  private openButtons(isMain: boolean): HTMLElement {
    const files = this.chooser("choose-files", false);
    const folder = this.chooser("choose-folder", true);
    return h(
      "div",
      { class: "open" },
      files,
      folder,
      button(t("chooseFiles"), () => files.click(), {
        class: isMain ? "main" : "",
        "data-key": "choose-files",
      }),
      button(t("chooseFolder"), () => folder.click(), { "data-key": "choose-folder" }),
    );
  }

  private start(): HTMLElement[] {
    return [
      h(
        "div",
        { class: "drop" },
        h("h1", {}, t("dropTitle")),
        h("p", {}, t("dropText")),
        this.openButtons(true),
        h("p", { class: "soft" }, t("privacy")),
      ),
    ];
  }

  private badge(disc: Disc): HTMLElement {
    const status = disc.listing?.status;
    const [look, text] =
      status === Status.sound
        ? ["good", t("sound")]
        : status === Status.damaged
          ? ["warning", t("damaged")]
          : ["error", t("bad")];
    return h("span", { class: `badge ${look}` }, text);
  }

  private files(): HTMLElement[] {
    if (this.discs.length === 0) return [];
    const items = this.discs.map((disc) => {
      const show = () => {
        this.shown = disc;
        void this.render();
      };
      return h(
        "li",
        { class: disc === this.shown ? "file shown" : "file" },
        h(
          "button",
          {
            type: "button",
            class: "file-name",
            "aria-current": disc === this.shown ? "true" : undefined,
            "data-key": `file-${disc.id}`,
            onclick: show,
          },
          h("span", { class: "name" }, disc.listing?.text || disc.name),
          h("span", { class: "soft" }, disc.name),
          h(
            "span",
            { class: "states" },
            disc.listing && this.badge(disc),
            disc.isChanged && h("span", { class: "badge note" }, t("changed")),
          ),
        ),
        button("×", () => void this.close(disc), {
          class: "close",
          "aria-label": t("close", { name: disc.name }),
        }),
      );
    });
    return [
      h("h2", { id: "files-title" }, t("files")),
      h("ul", {}, ...items),
      this.openButtons(false),
      h("p", { class: "soft small" }, t("privacy")),
    ];
  }

  private head(disc: Disc): (HTMLElement | null)[] {
    const listing = disc.listing!;
    const rename = () =>
      this.editing.rename(disc, ["set-disc-text"], { key: "disc" }, listing.text);
    const step = (text: string, by: number) =>
      button(text, () => void this.go(disc, by), {
        disabled: disc.done + by < 0 || disc.done + by > disc.steps.length,
        "data-key": `step-${by}`,
      });
    return [
      h(
        "div",
        { class: "head" },
        h("p", { class: "soft" }, disc.name),
        h(
          "h1",
          {},
          listing.text || t("noText"),
          " ",
          this.badge(disc),
          disc.isChanged && h("span", { class: "badge note" }, t("changed")),
        ),
        ...disc.notes.map((note) => h("p", { class: "told" }, say(note))),
        h(
          "div",
          { class: "buttons" },
          button(t("save"), () => this.saving.offer(disc), { class: "main", "data-key": "save" }),
          step(t("undo"), -1),
          step(t("redo"), 1),
          button(t("renameDisc"), rename, { disabled: !listing.loads, "data-key": "rename-disc" }),
          this.charsetChoice(disc),
        ),
      ),
      this.charsetHint(disc),
      this.damage(disc),
      stepList(disc),
      this.tabList(),
    ];
  }

  private charsetChoice(disc: Disc): HTMLElement {
    const choose = h("select", { id: "charset", "data-key": "charset" });
    for (const name of CHARSETS) {
      const option = h("option", { value: name }, name.toUpperCase());
      option.selected = name === disc.charset;
      choose.append(option);
    }
    choose.addEventListener("change", () => this.setCharset(disc, choose.value));
    return h("label", { class: "charset" }, h("span", {}, t("charset")), " ", choose);
  }

  private setCharset(disc: Disc, charset: string): void {
    disc.charset = charset;
    disc.listing = undefined;
    void this.render();
  }

  /** Offers a character set in which the titles are texts, where they are none in UTF-8. */
  private charsetHint(disc: Disc): HTMLElement | null {
    const texts = ({ text, programs, playLists }: NonNullable<Disc["listing"]>) =>
      [text, ...programs.map((one) => one.text), ...playLists.map((one) => one.text)].some(
        isShownAsBytes,
      );
    if (disc.charset !== "utf-8" || !texts(disc.listing!)) return null;
    const hint = h("div", { class: "hint" });
    const { bytes } = disc;
    void (async () => {
      for (const charset of ["shift_jis", "euc-jp", "windows-1252"]) {
        const listing = await this.workshop.list({ bytes, charset });
        if (texts(listing)) continue;
        const use = () => this.setCharset(disc, charset);
        return hint.replaceChildren(
          h("span", {}, t("charsetHint", { charset: charset.toUpperCase() })),
          button(t("charsetUse", { charset: charset.toUpperCase() }), use),
        );
      }
      return undefined;
    })().catch(() => undefined);
    return hint;
  }

  private damage(disc: Disc): HTMLElement | null {
    const listing = disc.listing!;
    if (listing.status === Status.sound) return null;
    const isBad = listing.status === Status.bad;
    return h(
      "section",
      { class: "damage", "aria-label": t(isBad ? "badTitle" : "damagedTitle") },
      h("h2", {}, t(isBad ? "badTitle" : "damagedTitle")),
      h("p", {}, upper(listing.problem)),
      !isBad && h("p", {}, t("salvageHint"), " ", !listing.loads && t("mustSalvage")),
      !isBad &&
        button(t("salvage"), () => void this.editing.salvage(disc), { "data-key": "salvage" }),
    );
  }

  // --- tabs

  private tabList(): HTMLElement {
    const list = h("div", { role: "tablist", "aria-label": t("views"), class: "tabs" });
    for (const tab of TABS) {
      const isShown = tab === this.tab;
      list.append(
        h(
          "button",
          {
            type: "button",
            role: "tab",
            id: `tab-${tab}`,
            "aria-selected": String(isShown),
            "aria-controls": "panel",
            tabindex: isShown ? 0 : -1,
            "data-key": `tab-${tab}`,
            onclick: () => this.select(tab),
          },
          t(TAB_TEXTS[tab]),
        ),
      );
    }
    list.addEventListener("keydown", (event) => {
      const by = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
      if (!by) return;
      event.preventDefault();
      const next = TABS[(TABS.indexOf(this.tab) + by + TABS.length) % TABS.length]!;
      byId(`tab-${next}`).focus();
      this.select(next);
    });
    return list;
  }

  private select(tab: Tab): void {
    this.tab = tab;
    void this.render();
  }

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
