// Runs the workshop beside the page, so that the page never waits for it.
import { Engine, RefusedError } from "./engine";
import type { FoundFile, FromWorker, Refusal, ToWorker } from "./protocol";

// Of workers alone, which the types of a page do not know.
declare class FileReaderSync {
  readAsArrayBuffer(blob: Blob): ArrayBuffer;
}

// The part of an image that is searched before the worker listens again.
const PART = 64 * 1024 * 1024;

const say = (message: FromWorker) => postMessage(message);
const stopped = new Set<number>();
let engine: Engine | undefined;
let notOpen: Refusal | undefined; // why the file that was last handed over could not be taken

function bytesOf(base64: string): Uint8Array<ArrayBuffer> {
  const text = atob(base64);
  const bytes = new Uint8Array(text.length);
  for (let i = 0; i < bytes.length; ++i) bytes[i] = text.charCodeAt(i);
  return bytes;
}

function refusalOf(error: unknown): Refusal {
  if (error instanceof RefusedError) return error.refusal;
  engine?.restart(); // whatever state it was left in
  if (error instanceof DOMException) return { kind: "reading", what: error.message };
  return { kind: "internal", what: String(error) };
}

const isSame = (a: Uint8Array, b: Uint8Array) =>
  a.length === b.length && a.every((byte, i) => byte === b[i]);

const pause = () =>
  new Promise<void>((resume) => {
    const channel = new MessageChannel();
    channel.port1.onmessage = () => {
      channel.port1.close();
      resume();
    };
    channel.port2.postMessage(0);
  });

async function search(id: number, image: Blob): Promise<void> {
  const reader = new FileReaderSync();
  const read = (from: number, size: number) =>
    new Uint8Array(reader.readAsArrayBuffer(image.slice(from, from + size)));
  const known: Uint8Array[] = [];
  for (let from = 0; ; from += PART) {
    const to = Math.min(from + PART, image.size);
    const answer = engine!.ask(["locate", String(from), String(to)], "utf-8", read);
    const found: FoundFile[] = [];
    for (const one of JSON.parse(answer.text) as {
      offset: number;
      size: number;
      isSound: boolean;
      canBeSalvaged: boolean;
    }[]) {
      const bytes = read(one.offset, one.size);
      if (!one.canBeSalvaged || known.some((other) => isSame(other, bytes))) continue;
      known.push(bytes);
      found.push({ offset: one.offset, isSound: one.isSound, bytes });
    }
    await pause();
    const isEnd = to === image.size || stopped.has(id);
    say({ kind: "searched", id, bytes: to, found, isEnd });
    if (isEnd) return;
  }
}

async function answer(message: ToWorker): Promise<void> {
  switch (message.kind) {
    case "start":
      engine = new Engine(await WebAssembly.compile(bytesOf(message.module)));
      return say({ kind: "ready" });
    case "open":
      notOpen = undefined;
      return engine!.open(message.bytes);
    case "ask": {
      if (notOpen) throw new RefusedError(notOpen);
      const { text, made } = engine!.ask(message.words, message.charset);
      return say({ kind: "answer", id: message.id, text, made });
    }
    case "search":
      return search(message.id, message.image);
    case "stop":
      stopped.add(message.id);
  }
}

onmessage = async (event: MessageEvent<ToWorker>) => {
  const message = event.data;
  try {
    await answer(message);
  } catch (error) {
    if (message.kind === "start") return say({ kind: "failed", what: String(error) });
    const refusal = refusalOf(error);
    if (message.kind === "open") notOpen = refusal;
    if ("id" in message) say({ kind: "refusal", id: message.id, refusal });
  }
};
