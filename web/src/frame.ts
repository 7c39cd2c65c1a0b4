// The frame around the views: the bar at the top, the list of files, the head of a file, the tabs.
import { CHARSETS, isShownAsBytes } from "./charset";
import type { Disc } from "./disc";
import { button, h } from "./dom";
import { stepList } from "./editing";
import { Status } from "./protocol";
import { currentLanguage, LANGUAGES, say, setLanguage, t, upper } from "./texts";
import type { Workshop } from "./workshop";

export const TABS = ["contents", "report", "check", "fields"] as const;
export type Tab = (typeof TABS)[number];
const TAB_TEXTS = {
  contents: "tabContents",
  report: "tabReport",
  check: "tabCheck",
  fields: "tabFields",
} as const;

/** What a user can ask for in the frame. */
export interface FrameActions {
  languageChanged(): void;
  choose(files: File[], isFolder: boolean): void;
  show(disc: Disc): void;
  close(disc: Disc): void;
  save(disc: Disc): void;
  go(disc: Disc, by: number): void;
  renameDisc(disc: Disc): void;
  salvage(disc: Disc): void;
  setCharset(disc: Disc, charset: string): void;
  select(tab: Tab): void;
}

export class Frame {
  constructor(
    private readonly to: FrameActions,
    private readonly workshop: Workshop,
  ) {}

  top(): HTMLElement[] {
    const choose = h("select", { id: "language", "data-key": "language" });
    for (const [name, text] of Object.entries(LANGUAGES)) {
      const option = h("option", { value: name, lang: name }, text);
      option.selected = name === currentLanguage();
      choose.append(option);
    }
    choose.addEventListener("change", () => {
      setLanguage(choose.value);
      this.to.languageChanged();
    });
    return [
      h("p", { class: "brand" }, "veska"),
      h("p", { class: "tagline soft" }, t("tagline")),
      h("label", { for: "language", class: "hidden" }, t("language")),
      choose,
    ];
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
    input.addEventListener("change", () => {
      const files = [...(input.files ?? [])];
      input.value = "";
      this.to.choose(files, isFolder);
    });
    return input;
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

  start(): HTMLElement[] {
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

  files(discs: readonly Disc[], shown: Disc | undefined): HTMLElement[] {
    if (discs.length === 0) return [];
    const items = discs.map((disc) => {
      const show = () => this.to.show(disc);
      return h(
        "li",
        { class: disc === shown ? "file shown" : "file" },
        h(
          "button",
          {
            type: "button",
            class: "file-name",
            "aria-current": disc === shown ? "true" : undefined,
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
        button("×", () => this.to.close(disc), {
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

  head(disc: Disc, tab: Tab): (HTMLElement | null)[] {
    const listing = disc.listing!;
    const rename = () => this.to.renameDisc(disc);
    const step = (text: string, by: number) =>
      button(text, () => this.to.go(disc, by), {
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
          h("span", { class: "name" }, listing.text || t("noText")),
          " ",
          this.badge(disc),
          disc.isChanged && h("span", { class: "badge note" }, t("changed")),
        ),
        ...disc.notes.map((note) => h("p", { class: "told" }, say(note))),
        h(
          "div",
          { class: "buttons" },
          button(t("save"), () => this.to.save(disc), { class: "main", "data-key": "save" }),
          step(t("undo"), -1),
          step(t("redo"), 1),
          button(t("renameDisc"), rename, { disabled: !listing.loads, "data-key": "rename-disc" }),
          this.charsetChoice(disc),
        ),
      ),
      this.charsetHint(disc),
      this.damage(disc),
      stepList(disc),
      this.tabList(tab),
    ];
  }

  private charsetChoice(disc: Disc): HTMLElement {
    const choose = h("select", { id: "charset", "data-key": "charset" });
    for (const name of CHARSETS) {
      const option = h("option", { value: name }, name.toUpperCase());
      option.selected = name === disc.charset;
      choose.append(option);
    }
    choose.addEventListener("change", () => this.to.setCharset(disc, choose.value));
    return h("label", { class: "charset" }, h("span", {}, t("charset")), " ", choose);
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
        const use = () => this.to.setCharset(disc, charset);
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
      !isBad && button(t("salvage"), () => this.to.salvage(disc), { "data-key": "salvage" }),
    );
  }

  private tabList(current: Tab): HTMLElement {
    const list = h("div", { role: "tablist", "aria-label": t("views"), class: "tabs" });
    for (const tab of TABS) {
      const isShown = tab === current;
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
            onclick: () => this.to.select(tab),
          },
          t(TAB_TEXTS[tab]),
        ),
      );
    }
    list.addEventListener("keydown", (event) => {
      const by = { ArrowRight: 1, ArrowLeft: -1 }[event.key];
      if (!by) return;
      event.preventDefault();
      const next = TABS[(TABS.indexOf(current) + by + TABS.length) % TABS.length]!;
      document.getElementById(`tab-${next}`)!.focus();
      this.to.select(next);
    });
    return list;
  }
}
