// The page's side of the worker: asks it, and hands it the file that is asked about.
import type {
  Branch,
  Examination,
  FoundFile,
  FromWorker,
  Listing,
  Refusal,
  Salvage,
  ToWorker,
} from "./protocol";

/** The bytes that are asked about, and the character set of their texts. */
export interface Source {
  bytes: Uint8Array;
  charset: string;
}

export class WorkshopError extends Error {
  constructor(readonly refusal: Refusal) {
    super(refusal.what);
  }
}

interface Waiting {
  done: (answer: { text: string; made: Uint8Array | null }) => void;
  failed: (error: WorkshopError) => void;
}

export interface Search {
  stop(): void;
  end: Promise<void>;
}

export class Workshop {
  readonly ready: Promise<void>;
  private readonly worker: Worker;
  private readonly waiting = new Map<number, Waiting>();
  private readonly searches = new Map<
    number,
    (message: FromWorker & { kind: "searched" }) => void
  >();
  private lastId = 0;
  private opened: Uint8Array | undefined;

  constructor(script: string, module: string) {
    const url = URL.createObjectURL(new Blob([script], { type: "text/javascript" }));
    this.worker = new Worker(url);
    this.ready = new Promise((ready, failed) => {
      this.worker.onerror = (event) => failed(new Error(event.message || "no worker"));
      this.worker.onmessage = (event: MessageEvent<FromWorker>) => {
        URL.revokeObjectURL(url);
        if (event.data.kind === "ready") ready();
        else if (event.data.kind === "failed") failed(new Error(event.data.what));
        else this.take(event.data);
      };
    });
    this.post({ kind: "start", module });
  }

  async list(source: Source): Promise<Listing> {
    return JSON.parse(await this.text(source, "list")) as Listing;
  }
  async check(source: Source, name: string): Promise<Examination> {
    const document = JSON.parse(await this.text(source, "check", name)) as { files: Examination[] };
    return document.files[0]!;
  }
  report(source: Source, name: string): Promise<string> {
    return this.text(source, "report", name);
  }
  json(source: Source): Promise<string> {
    return this.text(source, "json");
  }
  async branches(source: Source, pointer: string, first: number, most: number): Promise<Branch[]> {
    const text = await this.text(source, "branches", pointer, String(first), String(most));
    return JSON.parse(text) as Branch[];
  }
  async find(source: Source, part: string, most: number): Promise<Branch[]> {
    return JSON.parse(await this.text(source, "find", part, String(most))) as Branch[];
  }
  async beginsLikeOne(bytes: Uint8Array): Promise<boolean> {
    return (await this.text({ bytes, charset: "utf-8" }, "begins")) === "true";
  }
  async preview(source: Source, words: string[]): Promise<string[]> {
    return JSON.parse(await this.text(source, "preview", ...words)) as string[];
  }
  async edit(source: Source, words: string[]): Promise<Uint8Array> {
    return (await this.ask(source, ["edit", ...words])).made!;
  }
  async salvage(source: Source): Promise<{ told: Salvage; bytes: Uint8Array | null }> {
    const { text, made } = await this.ask(source, ["salvage"]);
    return { told: JSON.parse(text) as Salvage, bytes: made };
  }

  /** Searches an image for management files, and tells of them as they are found. */
  search(image: Blob, went: (bytes: number, found: FoundFile[]) => void): Search {
    const id = ++this.lastId;
    const end = new Promise<void>((done, failed) => {
      this.waiting.set(id, { done: () => done(), failed });
      this.searches.set(id, (message) => {
        went(message.bytes, message.found);
        if (!message.isEnd) return;
        this.forget(id);
        done();
      });
    });
    this.post({ kind: "search", id, image });
    return { stop: () => this.post({ kind: "stop", id }), end };
  }

  private async text(source: Source, ...words: string[]): Promise<string> {
    return (await this.ask(source, words)).text;
  }

  private ask(source: Source, words: string[]): Promise<{ text: string; made: Uint8Array | null }> {
    if (this.opened !== source.bytes) {
      this.post({ kind: "open", bytes: source.bytes });
      this.opened = source.bytes;
    }
    const id = ++this.lastId;
    return new Promise((done, failed) => {
      this.waiting.set(id, { done, failed });
      this.post({ kind: "ask", id, charset: source.charset, words });
    });
  }

  private take(message: FromWorker): void {
    if (message.kind === "searched") return this.searches.get(message.id)?.(message);
    if (message.kind !== "answer" && message.kind !== "refusal") return;
    const waiting = this.waiting.get(message.id);
    this.forget(message.id);
    if (message.kind === "answer") return waiting?.done(message);
    const { kind } = message.refusal;
    if (kind === "internal" || kind === "reading") this.opened = undefined; // it started anew
    waiting?.failed(new WorkshopError(message.refusal));
  }

  private forget(id: number): void {
    this.waiting.delete(id);
    this.searches.delete(id);
  }

  private post(message: ToWorker): void {
    this.worker.postMessage(message);
  }
}
