// A file that is open: what it was, the steps that changed it, and which of them are done.
import type { Examination, Listing } from "./protocol";
import type { Source } from "./workshop";
import type { Message } from "./texts";

/** What the steps of one file may keep in bytes; beyond that the oldest ones are done again. */
const MOST_KEPT = 64 * 1024 * 1024;

export interface Step {
  title: Message;
  /** The words of an edit; null for one that only its bytes can tell. */
  words: string[] | null;
  /** What it did, as the workshop tells it. */
  effects: string[];
  bytes: Uint8Array | null;
}

/** Where the browser lets a file be written that was dropped. */
export interface Handle {
  name: string;
  getFile(): Promise<File>;
  createWritable(): Promise<{
    write(data: Uint8Array | string): Promise<void>;
    close(): Promise<void>;
  }>;
  requestPermission?(options: { mode: "readwrite" }): Promise<string>;
}

let lastId = 0;

export class Disc {
  readonly id = ++lastId;
  readonly steps: Step[] = [];
  /** How many of the steps are done. */
  done = 0;
  listing: Listing | undefined;
  examination: Examination | undefined;
  charset = "utf-8";
  /** What to know of where it came from. */
  notes: Message[] = [];
  private current: Uint8Array;
  private saved: Uint8Array;

  constructor(
    readonly name: string,
    readonly base: Uint8Array,
    readonly handle: Handle | null = null,
    readonly fileName = name.split("/").pop()!,
  ) {
    this.current = base;
    this.saved = base;
  }

  get bytes(): Uint8Array {
    return this.current;
  }
  get source(): Source {
    return { bytes: this.current, charset: this.charset };
  }
  get isChanged(): boolean {
    return this.current !== this.saved;
  }
  markSaved(): void {
    this.saved = this.current;
  }

  /** Does a step; those that were undone are forgotten. */
  add(step: Step & { bytes: Uint8Array }): void {
    this.steps.length = this.done;
    this.steps.push(step);
    this.done = this.steps.length;
    this.show(step.bytes);
    this.forgetOldest();
  }

  /** Goes to the state after `done` steps. `redo` does words to bytes again. */
  async goTo(
    done: number,
    redo: (bytes: Uint8Array, words: string[]) => Promise<Uint8Array>,
  ): Promise<void> {
    let from = done;
    while (from > 0 && !this.steps[from - 1]!.bytes) --from;
    let bytes = from > 0 ? this.steps[from - 1]!.bytes! : this.base;
    const words = this.steps.slice(from, done).flatMap((step) => step.words!);
    if (words.length > 0) bytes = await redo(bytes, words);
    if (done > 0) this.steps[done - 1]!.bytes = bytes;
    this.done = done;
    this.show(bytes);
  }

  private show(bytes: Uint8Array): void {
    this.current = bytes;
    this.listing = undefined;
    this.examination = undefined;
  }

  private forgetOldest(): void {
    let kept = 0;
    for (let i = this.steps.length; i-- > 0;) {
      const step = this.steps[i]!;
      kept += step.bytes?.length ?? 0;
      const isNeeded = i === this.steps.length - 1 || !step.words || step.bytes === this.saved;
      if (kept > MOST_KEPT && !isNeeded) step.bytes = null;
    }
  }
}
