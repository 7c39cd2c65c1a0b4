// What is on the disc: its title, programs and play lists, and what can be done with each.
import { button, h } from "./dom";
import type { Disc } from "./disc";
import { type Editing, whatProgram } from "./editing";
import type { Program } from "./protocol";
import { date, duration, type Message, number, say, size, t } from "./texts";

/** Which rows show what can be done, by "disc id/row". */
const expanded = new Set<string>();

function cellsText(program: Program): string {
  const { firstCell: from, cells } = program;
  if (cells === 0) return t("noCells");
  if (cells === 1) return t("cell", { n: from });
  return t("cellsFromTo", { from, to: from + cells - 1 });
}

export function factList(disc: Disc): HTMLElement {
  const listing = disc.listing!;
  const facts: [string, string][] = [
    [t("programs"), number(listing.programs.length)],
    [t("playingTime"), duration(listing.seconds)],
    [t("material"), size(listing.bytes)],
    [t("cells"), number(listing.cells)],
    [t("playLists"), number(listing.playLists.length)],
  ];
  if (listing.userChains > 0) facts.push([t("userChains"), number(listing.userChains)]);
  if (listing.stillGroups > 0) facts.push([t("stillGroups"), number(listing.stillGroups)]);
  if (listing.recordedFirst) facts.push([t("recorded"), date(listing.recordedFirst)]);
  const items = facts.map(([name, value]) => h("div", {}, h("dt", {}, name), h("dd", {}, value)));
  return h("dl", { class: "numbers" }, ...items);
}

interface Row {
  key: string;
  n: number;
  text: string;
  facts: string[];
  what: Message;
  actions: (HTMLElement | null)[];
}

function rowElement(disc: Disc, row: Row, refresh: () => void): HTMLElement {
  const key = `${disc.id}/${row.key}`;
  const isOpen = expanded.has(key);
  const toggle = () => {
    if (!expanded.delete(key)) expanded.add(key);
    refresh();
  };
  const isEditable = disc.listing!.loads;
  const line = [
    h("span", { class: "number" }, String(row.n)),
    h("span", { class: row.text ? "name" : "name soft" }, row.text || t("noText")),
    h("span", { class: "row-facts soft" }, row.facts.join(" · ")),
    isEditable && h("span", { class: "twist soft", "aria-hidden": "true" }, isOpen ? "▾" : "▸"),
  ];
  return h(
    "li",
    { class: isOpen ? "row unfolded" : "row" },
    isEditable
      ? h(
          "button",
          {
            type: "button",
            class: "line",
            "aria-expanded": String(isOpen),
            "data-key": row.key,
            onclick: toggle,
          },
          ...line,
        )
      : h("div", { class: "line" }, ...line),
    isEditable &&
      isOpen &&
      h("div", { class: "actions", role: "group", "aria-label": say(row.what) }, ...row.actions),
  );
}

export class ContentsView {
  constructor(
    private readonly editing: Editing,
    private readonly refresh: () => void,
  ) {}

  render(disc: Disc): HTMLElement[] {
    const listing = disc.listing!;
    return [
      factList(disc),
      this.section(
        disc,
        t("programs"),
        listing.programs.map((_, i) => this.program(disc, i + 1)),
      ),
      this.section(
        disc,
        t("playLists"),
        listing.playLists.map((_, i) => this.playList(disc, i + 1)),
      ),
    ];
  }

  private section(disc: Disc, title: string, rows: Row[]): HTMLElement {
    const items = rows.map((row) => rowElement(disc, row, this.refresh));
    return h(
      "section",
      {},
      h("h2", {}, title),
      rows.length === 0
        ? h("p", { class: "soft" }, t("none_yet"))
        : h("ol", { class: "rows" }, ...items),
    );
  }

  private program(disc: Disc, n: number): Row {
    const programs = disc.listing!.programs;
    const program = programs[n - 1]!;
    const what = whatProgram(disc, n);
    const key = `program-${n}`;
    const move = (text: string, to: number) => {
      const up = to < n ? "up" : "down";
      const mover: HTMLButtonElement = button(
        text,
        () => {
          mover.dataset.key = `program-${to}-${up}`; // the focus goes along
          if (expanded.delete(`${disc.id}/${key}`)) expanded.add(`${disc.id}/program-${to}`);
          void this.editing.run(disc, ["move-program", String(n), String(to)], {
            key: "stepMoved",
            args: { what, to },
          });
        },
        { disabled: to < 1 || to > programs.length, "data-key": `${key}-${up}` },
      );
      return mover;
    };
    const join = () =>
      this.editing.run(disc, ["join-programs", String(n)], { key: "stepJoined", args: { what } });
    const last = program.firstCell + program.cells - 1;
    return {
      key,
      n,
      text: program.text,
      facts: [t(program.kind), cellsText(program), duration(program.seconds)],
      what,
      actions: [
        button(
          t("rename"),
          () => this.editing.rename(disc, ["set-program-text", String(n)], what, program.text),
          { "data-key": `${key}-rename` },
        ),
        move(t("moveUp"), n - 1),
        move(t("moveDown"), n + 1),
        button(t("joinNext"), join, { disabled: n === programs.length, "data-key": `${key}-join` }),
        button(t("split"), () => this.editing.split(disc, n, program.firstCell + 1, last), {
          disabled: program.cells < 2,
          "data-key": `${key}-split`,
        }),
        button(t("delete"), () => this.editing.remove(disc, ["delete-program", String(n)], what), {
          class: "danger",
          "data-key": `${key}-delete`,
        }),
      ],
    };
  }

  private playList(disc: Disc, n: number): Row {
    const lists = disc.listing!.playLists;
    const list = lists[n - 1]!;
    const what: Message = { key: "playList", args: { n } };
    const key = `playlist-${n}`;
    const swap = (text: string, to: number) =>
      button(
        text,
        () =>
          this.editing.run(disc, ["swap-playlists", String(n), String(to)], {
            key: "stepMoved",
            args: { what, to },
          }),
        { disabled: to < 1 || to > lists.length, "data-key": `${key}-${to < n ? "up" : "down"}` },
      );
    return {
      key,
      n,
      text: list.text,
      facts: [
        list.cell > 0
          ? t("pointsAt", { what: { key: "cell", args: { n: list.cell } } })
          : t("pointsNowhere"),
      ],
      what,
      actions: [
        button(
          t("rename"),
          () => this.editing.rename(disc, ["set-playlist-text", String(n)], what, list.text),
          { "data-key": `${key}-rename` },
        ),
        swap(t("moveUp"), n - 1),
        swap(t("moveDown"), n + 1),
        button(t("delete"), () => this.editing.remove(disc, ["delete-playlist", String(n)], what), {
          class: "danger",
          "data-key": `${key}-delete`,
        }),
      ],
    };
  }
}
