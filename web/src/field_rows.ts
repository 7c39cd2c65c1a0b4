// The rows of a tree of which only what is open counts, and only what is seen is fetched.
import type { Branch } from "./protocol";

export const PAGE = 100;

/** A branch that is open: its children by pages, and those of them that are open as well. */
export class OpenBranch {
  readonly pages = new Map<number, Branch[]>();
  private readonly open = new Map<number, OpenBranch>();
  private order: number[] = [];
  /** Rows below this one. */
  rows: number;

  constructor(
    readonly pointer: string,
    readonly count: number,
    readonly isList: boolean,
    private readonly parent: OpenBranch | null = null,
    readonly index = 0,
  ) {
    this.rows = count;
  }

  get level(): number {
    return this.parent ? this.parent.level + 1 : 1;
  }
  get above(): OpenBranch | null {
    return this.parent;
  }
  child(index: number): Branch | undefined {
    return this.pages.get(Math.floor(index / PAGE))?.[index % PAGE];
  }
  openedAt(index: number): OpenBranch | undefined {
    return this.open.get(index);
  }

  openAt(index: number): OpenBranch {
    const there = this.open.get(index);
    if (there) return there;
    const { pointer, children, isList } = this.child(index)!;
    const opened = new OpenBranch(pointer, children, isList, this, index);
    this.open.set(index, opened);
    this.reorder(children);
    return opened;
  }

  closeAt(index: number): void {
    const opened = this.open.get(index);
    if (!opened) return;
    this.open.delete(index);
    this.reorder(-opened.rows);
  }

  /** Which child of which branch stands in a row. */
  at(row: number): Place {
    let before = 0; // rows below open children that come before
    for (const index of this.order) {
      const opened = this.open.get(index)!;
      if (row <= index + before) break;
      if (row <= index + before + opened.rows) return opened.at(row - index - before - 1);
      before += opened.rows;
    }
    return { branch: this, index: row - before };
  }

  /** The row of a child in the whole tree. */
  rowOf(index: number): number {
    let row = index;
    for (const other of this.order) {
      if (other < index) row += this.open.get(other)!.rows;
    }
    return this.parent ? row + 1 + this.parent.rowOf(this.index) : row;
  }

  private reorder(rows: number): void {
    this.order = [...this.open.keys()].sort((a, b) => a - b);
    for (let branch: OpenBranch | null = this; branch; branch = branch.parent) branch.rows += rows;
  }
}

export interface Place {
  branch: OpenBranch;
  index: number;
}
