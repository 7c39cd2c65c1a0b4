// The workshop's WebAssembly: words in, texts and bytes out.
import type { Refusal } from "./protocol";

interface Exports {
  memory: WebAssembly.Memory;
  _initialize(): void;
  roomForRequest(size: number): number;
  roomForFile(size: number): number;
  ask(): number;
  answer(): number;
  answerSize(): number;
  made(): number;
  madeSize(): number;
}

/** Reads bytes of the image that is searched. */
export type ReadImage = (offset: number, size: number) => Uint8Array;

export interface Answer {
  text: string;
  made: Uint8Array | null;
}

export class RefusedError extends Error {
  constructor(readonly refusal: Refusal) {
    super(refusal.what);
  }
}

export class Engine {
  private exports!: Exports;
  private charset = "utf-8";
  private readImage: ReadImage = () => new Uint8Array(0);

  constructor(private readonly module: WebAssembly.Module) {
    this.restart();
  }

  /** A new instance, which has no file open. */
  restart(): void {
    const nothing = () => 0;
    const instance = new WebAssembly.Instance(this.module, {
      page: {
        decode: (from: number, size: number, to: number) => this.decode(from, size, to),
        read: (offset: number, to: number, size: number) => this.read(offset, to, size),
      },
      env: { emscripten_notify_memory_growth: nothing },
      wasi_snapshot_preview1: {
        environ_sizes_get: (count: number, size: number) => this.noEnvironment(count, size),
        environ_get: nothing,
        proc_exit: () => {
          throw new Error("the workshop ended");
        },
      },
    });
    this.exports = instance.exports as unknown as Exports;
    this.exports._initialize();
  }

  open(bytes: Uint8Array): void {
    const at = this.exports.roomForFile(bytes.length);
    if (at === 0 && bytes.length > 0) throw new RefusedError({ kind: "memory", what: "" });
    this.bytesAt(at, bytes.length).set(bytes);
    this.ask(["open"]);
  }

  ask(words: string[], charset = "utf-8", readImage?: ReadImage): Answer {
    this.charset = charset;
    if (readImage) this.readImage = readImage;
    const request = new TextEncoder().encode(words.map((word) => word + "\0").join(""));
    this.bytesAt(this.exports.roomForRequest(request.length), request.length).set(request);
    const isDone = this.exports.ask() !== 0;
    const text = new TextDecoder().decode(
      this.bytesAt(this.exports.answer(), this.exports.answerSize()),
    );
    if (!isDone) throw new RefusedError(JSON.parse(text) as Refusal);
    const size = this.exports.madeSize();
    return { text, made: size > 0 ? this.bytesAt(this.exports.made(), size).slice() : null };
  }

  private bytesAt(at: number, size: number): Uint8Array {
    return new Uint8Array(this.exports.memory.buffer, at >>> 0, size);
  }

  private noEnvironment(count: number, size: number): number {
    const memory = new DataView(this.exports.memory.buffer);
    memory.setUint32(count, 0, true);
    memory.setUint32(size, 0, true);
    return 0;
  }

  private decode(from: number, size: number, to: number): number {
    try {
      const text = new TextDecoder(this.charset, { fatal: true, ignoreBOM: true }).decode(
        this.bytesAt(from, size),
      );
      const utf8 = new TextEncoder().encode(text);
      if (utf8.length > 3 * size) return -1;
      this.bytesAt(to, utf8.length).set(utf8);
      return utf8.length;
    } catch {
      return -1;
    }
  }

  private read(offset: number, to: number, size: number): number {
    const bytes = this.readImage(offset, size >>> 0);
    this.bytesAt(to, bytes.length).set(bytes);
    return bytes.length;
  }
}
