// What can be changed: each operation is asked for where it needs a word or loses something, shows
// what it does to references, and becomes a step that can be undone.
import { encode, isShownAsBytes, wordOf } from "./charset";
import type { Disc } from "./disc";
import { ask, h, replace } from "./dom";
import { type Message, say, t, upper } from "./texts";
import type { Workshop } from "./workshop";

const MOST_EFFECTS = 200;

/** The lines of what an edit does, as a list. */
export function effectList(lines: string[]): HTMLElement {
  if (lines.length === 0) return h("p", { class: "soft" }, t("noEffects"));
  const shown = lines.slice(0, MOST_EFFECTS).map((line) => h("li", {}, line));
  const rest = lines.length - shown.length;
  if (rest > 0) shown.push(h("li", {}, t("more", { n: rest })));
  return h("ul", { class: "effects", tabindex: 0, "aria-label": t("effects") }, ...shown);
}

export interface EditHost {
  workshop: Workshop;
  /** A step was done: everything is shown anew. */
  stepped(disc: Disc, title: Message): Promise<void>;
  failed(error: unknown): void;
}

export const whatProgram = (disc: Disc, n: number): Message => {
  const text = disc.listing?.programs[n - 1]?.text ?? "";
  return text ? { key: "programNamed", args: { n, text } } : { key: "program", args: { n } };
};

export class Editing {
  constructor(private readonly host: EditHost) {}

  async run(disc: Disc, words: string[], title: Message): Promise<void> {
    try {
      const { source } = disc;
      const effects = await this.host.workshop.preview(source, words);
      const bytes = await this.host.workshop.edit(source, words);
      if (disc.bytes !== source.bytes) return; // something else was faster
      disc.add({ title, words, effects, bytes });
      await this.host.stepped(disc, title);
    } catch (error) {
      this.host.failed(error);
    }
  }

  /** Asks before something is deleted, and shows what goes with it. */
  async remove(disc: Disc, words: string[], what: Message): Promise<void> {
    const effects = h("div", { "aria-live": "polite" }, h("p", {}, t("working")));
    const shown = this.host.workshop.preview(disc.source, words).then(
      (lines) => effects.replaceChildren(effectList(lines)),
      (error) => this.host.failed(error),
    );
    const { answer } = ask({
      title: upper(t("deleteWhat", { what })),
      content: [h("h3", {}, t("effects")), effects],
      confirm: { text: t("delete").replace("…", ""), isDanger: true },
      cancel: t("cancel"),
    });
    await shown;
    if (await answer) await this.run(disc, words, { key: "stepDeleted", args: { what } });
  }

  async split(disc: Disc, n: number, from: number, to: number): Promise<void> {
    const what = whatProgram(disc, n);
    const input = h("input", {
      type: "number",
      id: "split-at",
      min: from,
      max: to,
      value: from,
      required: true,
    });
    const { answer } = ask({
      title: upper(t("splitWhat", { what })),
      content: [h("label", { for: "split-at" }, t("splitAt", { from, to })), input],
      confirm: { text: t("apply") },
      cancel: t("cancel"),
    });
    input.select();
    if (!(await answer)) return;
    const cell = Number(input.value);
    await this.run(disc, ["split-program", String(n), String(cell)], {
      key: "stepSplit",
      args: { what, cell },
    });
  }

  /** Asks for a new title; `words` are the operation with its arguments before the text. */
  async rename(disc: Disc, words: string[], what: Message, text: string): Promise<void> {
    const charset = disc.charset;
    const isBytes = isShownAsBytes(text);
    const input = h("input", {
      type: "text",
      id: "new-title",
      value: isBytes ? "" : text,
      autocomplete: "off",
      "aria-describedby": "title-told",
    });
    const told = h("p", { id: "title-told", class: "soft", "aria-live": "polite" });
    const effects = h("div", {});
    let word: string | undefined;
    let asked = 0;
    const update = async () => {
      const turn = ++asked;
      const code = encode(input.value, charset);
      word = undefined;
      if ("notThere" in code) {
        replace(told, t("notInCharset", { character: code.notThere, charset }));
        return effects.replaceChildren();
      }
      const mine = wordOf(code.bytes);
      replace(told, t("bytesUsed", { n: code.bytes.length, charset }));
      try {
        const lines = await this.host.workshop.preview(disc.source, [...words, mine]);
        if (turn !== asked) return;
        word = mine;
        effects.replaceChildren(effectList(lines));
      } catch (error) {
        if (turn !== asked) return;
        replace(told, error instanceof Error ? error.message : String(error));
        effects.replaceChildren();
      }
      return undefined;
    };
    let last = update();
    input.addEventListener("input", () => (last = update()));
    const { answer } = ask({
      title: upper(t("renameWhat", { what })),
      content: [
        isBytes && h("p", { class: "told" }, t("shownAsBytes", { charset, text })),
        h("label", { for: "new-title" }, t("title")),
        input,
        told,
        h("h3", {}, t("effects")),
        effects,
      ],
      confirm: { text: t("apply") },
      cancel: t("cancel"),
      accept: async () => {
        await last;
        return word !== undefined;
      },
    });
    input.select();
    if ((await answer) && word !== undefined) {
      await this.run(disc, [...words, word], { key: "stepRenamed", args: { what } });
    }
  }

  async salvage(disc: Disc): Promise<void> {
    const { source } = disc;
    try {
      const { told, bytes } = await this.host.workshop.salvage(source);
      const { answer } = ask({
        title: t("salvageTitle"),
        content: [salvageTold(told)],
        ...(bytes ? { confirm: { text: t("salvageApply") } } : {}),
        cancel: t("cancel"),
      });
      if (!(await answer) || !bytes || disc.bytes !== source.bytes) return;
      const title: Message = { key: "stepSalvaged" };
      disc.add({ title, words: null, effects: linesOf(told), bytes });
      await this.host.stepped(disc, title);
    } catch (error) {
      this.host.failed(error);
    }
  }
}

type Told = Awaited<ReturnType<Workshop["salvage"]>>["told"];

/** What was lost or taken otherwise, in lines. */
function linesOf(told: Told): string[] {
  const lost = told.tables.flatMap((table) => [
    ...(table.isLost ? [`${table.table}: ${t("lostTable")}`] : []),
    ...table.losses.map(
      (loss) => `${loss.words}: ${loss.what}${loss.reason ? ` (${loss.reason})` : ""}`,
    ),
  ]);
  const otherwise = told.otherwise.map(
    (one) => `${one.words}: ${one.title}: ${one.stands} → ${one.right}`,
  );
  return [...lost, ...otherwise];
}

function salvageTold(told: Told): HTMLElement {
  const rows = told.tables.map((table) => {
    const counts = table.counts.map(({ kept, all, what }) => t("keptOf", { kept, all, what }));
    const value = table.isLost ? t("lostTable") : counts.join(", ") || t("read");
    return h("tr", {}, h("th", { scope: "row" }, table.table), h("td", {}, value));
  });
  const lines = linesOf(told);
  return h(
    "div",
    {},
    told.isWhole && h("p", {}, t("salvageWhole")),
    !told.isRead && h("p", {}, t("badTitle")),
    h("h3", {}, t("kept")),
    h("table", { class: "facts" }, h("tbody", {}, ...rows)),
    h("h3", {}, t("lost")),
    lines.length > 0 ? effectList(lines) : h("p", { class: "soft" }, t("nothingLost")),
  );
}

/** The steps of a file, the last one first, each with what it did. */
export function stepList(disc: Disc): HTMLElement | null {
  if (disc.steps.length === 0) return null;
  const items = disc.steps.map((step, i) =>
    h(
      "li",
      { class: i < disc.done ? "" : "undone" },
      h(
        "details",
        {},
        h(
          "summary",
          { "data-key": `step-${i}` },
          upper(say(step.title)),
          i >= disc.done && ` (${t("stepUndone")})`,
        ),
        effectList(step.effects),
      ),
    ),
  );
  return h("section", { class: "steps" }, h("h2", {}, t("steps")), h("ol", {}, ...items));
}
