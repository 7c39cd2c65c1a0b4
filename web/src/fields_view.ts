// Every field of every table, in a tree that has elements for the rows in sight alone.
import { h } from "./dom";
import { OpenBranch, PAGE, type Place } from "./field_rows";
import type { Branch } from "./protocol";
import { number, t } from "./texts";
import type { Source, Workshop } from "./workshop";

const ROW = 32;
// Browsers hold no element much taller; a longer tree is scrolled in larger steps.
const TALLEST = 8_000_000;
const MOST_HITS = 200;

export class FieldsView {
  readonly element: HTMLElement;
  private readonly tree: HTMLElement;
  private readonly space: HTMLElement;
  private readonly told: HTMLElement;
  private readonly hits: HTMLElement;
  private root: OpenBranch;
  private active = 0;
  private started: Promise<void>;
  private readonly loading = new Map<OpenBranch, Map<number, Promise<void>>>();
  private searched = 0;

  constructor(
    private readonly workshop: Workshop,
    private readonly source: Source,
    private readonly failed: (error: unknown) => void,
  ) {
    this.root = new OpenBranch("", 0, false);
    this.space = h("div", { class: "space", role: "presentation" });
    this.tree = h(
      "div",
      {
        class: "tree",
        role: "tree",
        tabindex: 0,
        "aria-label": t("fieldsTree"),
        "data-key": "tree",
      },
      this.space,
    );
    this.tree.addEventListener("scroll", () => this.draw());
    this.tree.addEventListener("keydown", (event) => this.onKey(event));
    this.told = h("p", { class: "told-place", "aria-live": "polite" });
    this.hits = h("div", { class: "hits" });
    const input = h("input", { type: "search", id: "search-fields", "data-key": "search" });
    input.addEventListener("input", () => void this.search(input.value));
    this.element = h(
      "div",
      { class: "fields" },
      h("label", { for: "search-fields" }, t("search")),
      input,
      this.hits,
      this.tree,
      this.told,
    );
    new ResizeObserver(() => this.draw()).observe(this.tree);
    this.started = this.start();
  }

  /** Opens the tree down to a place, or as far as there is one, and goes there. */
  async reveal(pointer: string): Promise<void> {
    await this.started;
    let branch = this.root;
    for (const word of pointer.split("/").slice(1)) {
      const index = branch.isList ? Number(word) : await this.indexOf(branch, word);
      if (!(index >= 0 && index < branch.count)) break;
      await this.load(branch, Math.floor(index / PAGE));
      this.active = branch.rowOf(index);
      if (!branch.child(index)?.children) break;
      branch = branch.openAt(index);
    }
    this.goTo(this.active);
    this.tree.focus({ preventScroll: true });
  }

  private async start(): Promise<void> {
    try {
      const tables = await this.workshop.branches(this.source, "", 0, PAGE);
      this.root = new OpenBranch("", tables.length, false);
      this.root.pages.set(0, tables);
      this.draw();
    } catch (error) {
      this.failed(error);
    }
  }

  private async indexOf(branch: OpenBranch, name: string): Promise<number> {
    await this.load(branch, 0);
    return branch.pages.get(0)?.findIndex((one) => one.name === name) ?? -1;
  }

  /** Fetches a page of children, once. */
  private load(branch: OpenBranch, page: number): Promise<void> {
    if (branch.pages.has(page)) return Promise.resolve();
    let pages = this.loading.get(branch);
    if (!pages) this.loading.set(branch, (pages = new Map()));
    const under = pages.get(page);
    if (under) return under;
    const asked = this.workshop.branches(this.source, branch.pointer, page * PAGE, PAGE).then(
      (children) => {
        branch.pages.set(page, children);
        this.draw();
      },
      (error) => this.failed(error),
    );
    pages.set(page, asked);
    return asked;
  }

  private get height(): number {
    return Math.min(this.root.rows * ROW, TALLEST);
  }

  /** The first row in sight. */
  private get top(): number {
    const range = this.height - this.tree.clientHeight;
    const rows = this.root.rows - this.tree.clientHeight / ROW;
    return range > 0 ? (this.tree.scrollTop / range) * Math.max(rows, 0) : 0;
  }

  private draw(): void {
    const { clientHeight, scrollTop } = this.tree;
    this.space.style.height = `${this.height}px`;
    const top = this.top;
    const first = Math.max(0, Math.floor(top) - 4);
    const last = Math.min(this.root.rows, Math.ceil(top + clientHeight / ROW) + 4);
    const rows: HTMLElement[] = [];
    for (let row = first; row < last; ++row) {
      const element = this.row(row, this.root.at(row));
      element.style.top = `${scrollTop + (row - top) * ROW}px`;
      rows.push(element);
    }
    this.space.replaceChildren(...rows);
    const isThere = rows.some((row) => row.id === `row-${this.active}`);
    if (isThere) this.tree.setAttribute("aria-activedescendant", `row-${this.active}`);
    else this.tree.removeAttribute("aria-activedescendant");
    this.tellPlace();
  }

  private row(row: number, { branch, index }: Place): HTMLElement {
    const child = branch.child(index);
    if (!child) void this.load(branch, Math.floor(index / PAGE));
    const isOpen = !!branch.openedAt(index);
    const element = h(
      "div",
      {
        id: `row-${row}`,
        class: row === this.active ? "field active" : "field",
        role: "treeitem",
        "aria-level": branch.level,
        "aria-setsize": branch.count,
        "aria-posinset": index + 1,
        "aria-selected": String(row === this.active),
        "aria-expanded": child?.children ? String(isOpen) : undefined,
      },
      h(
        "span",
        { class: "twist", "aria-hidden": "true" },
        child?.children ? (isOpen ? "▾" : "▸") : "",
      ),
      h("span", { class: "field-name" }, child?.name ?? "…"),
      h(
        "span",
        { class: "field-text soft" },
        child?.isList ? number(child.children) : (child?.text ?? ""),
      ),
    );
    element.style.paddingInlineStart = `${6 + 16 * (branch.level - 1)}px`;
    element.addEventListener("click", () => {
      this.active = row;
      void this.toggle();
    });
    return element;
  }

  private async toggle(isOpen?: boolean): Promise<void> {
    const { branch, index } = this.root.at(this.active);
    await this.load(branch, Math.floor(index / PAGE));
    const child = branch.child(index);
    const wasOpen = !!branch.openedAt(index);
    if (child?.children && isOpen !== wasOpen) {
      if (wasOpen) branch.closeAt(index);
      else await this.load(branch.openAt(index), 0);
    }
    this.draw();
  }

  private goTo(row: number): void {
    this.active = Math.max(0, Math.min(row, this.root.rows - 1));
    this.space.style.height = `${this.height}px`;
    const seen = this.tree.clientHeight / ROW;
    const top = this.top;
    if (this.active < top || this.active + 1 > top + seen) {
      const want = Math.max(0, this.active - seen / 2);
      const rows = Math.max(this.root.rows - seen, 1);
      this.tree.scrollTop = (want / rows) * (this.height - this.tree.clientHeight);
    }
    this.draw();
  }

  private onKey(event: KeyboardEvent): void {
    const page = Math.max(1, Math.floor(this.tree.clientHeight / ROW) - 1);
    const moves: Record<string, number> = {
      ArrowDown: this.active + 1,
      ArrowUp: this.active - 1,
      PageDown: this.active + page,
      PageUp: this.active - page,
      Home: 0,
      End: this.root.rows - 1,
    };
    const to = moves[event.key];
    if (to !== undefined) this.goTo(to);
    else if (event.key === "ArrowRight") this.right();
    else if (event.key === "ArrowLeft") this.left();
    else if (event.key === "Enter" || event.key === " ") void this.toggle();
    else return;
    event.preventDefault();
  }

  private right(): void {
    const { branch, index } = this.root.at(this.active);
    if (branch.openedAt(index)) this.goTo(this.active + 1);
    else void this.toggle(true);
  }

  private left(): void {
    const { branch, index } = this.root.at(this.active);
    if (branch.openedAt(index)) void this.toggle(false);
    else if (branch.above) this.goTo(branch.above.rowOf(branch.index));
  }

  /** The whole of the active row, which may be cut in the tree. */
  private tellPlace(): void {
    if (this.root.rows === 0) return;
    const { branch, index } = this.root.at(this.active);
    const child = branch.child(index);
    if (!child || this.told.dataset.pointer === child.pointer) return;
    this.told.dataset.pointer = child.pointer;
    this.told.replaceChildren(h("code", {}, child.pointer), " ", child.text);
  }

  private async search(part: string): Promise<void> {
    const turn = ++this.searched;
    if (part.trim() === "") return this.hits.replaceChildren();
    try {
      const found = await this.workshop.find(this.source, part.trim(), MOST_HITS + 1);
      if (turn === this.searched) this.showHits(found);
    } catch (error) {
      this.failed(error);
    }
    return undefined;
  }

  private showHits(found: Branch[]): void {
    const shown = found.slice(0, MOST_HITS);
    const isMore = found.length > MOST_HITS;
    const told =
      found.length === 0
        ? t("searchNone")
        : isMore
          ? t("searchMore", { n: MOST_HITS })
          : t("searchFound", { n: found.length });
    const items = shown.map((one) => {
      const go = h("button", { type: "button", class: "hit" });
      go.append(
        h("span", {}, one.words ?? one.pointer),
        " ",
        h("span", { class: "soft" }, one.text),
      );
      go.addEventListener("click", () => void this.reveal(one.pointer));
      return h("li", {}, go);
    });
    this.hits.replaceChildren(h("p", { role: "status" }, told), h("ul", {}, ...items));
  }
}
