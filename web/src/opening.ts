// What is dropped or chosen: management files, folders of discs, images.
import { Disc, type Handle } from "./disc";
import type { FoundFile } from "./protocol";
import { type Message, size } from "./texts";
import type { Search, Workshop } from "./workshop";

// No management file of an honest disc is as large, and no image as small.
const LEAST_IMAGE = 1024 * 1024;
const MOST_FILE = 512 * 1024 * 1024;
const START = 512;

const MANAGEMENT_FILE = "VR_MANGR.IFO";
const BACKUP_FILE = "VR_MANGR.BUP";

/** A file with its path below what was dropped. */
export interface Given {
  path: string;
  file: File;
  handle: Handle | null;
}

export interface Opened {
  add(disc: Disc): void;
  tell(message: Message): void;
  /** Shows how far a search is; returns what ends that. */
  progress(name: string, all: number, stop: () => void): (done: number | null) => void;
}

const nameOf = (path: string) => path.split("/").pop()!.toUpperCase();
const folderOf = (path: string) => path.slice(0, path.lastIndexOf("/") + 1);

export class Opener {
  constructor(
    private readonly workshop: Workshop,
    private readonly to: Opened,
  ) {}

  /** Opens files; of a folder those that its discs have. `folder` names it. */
  async open(given: Given[], folder?: string): Promise<void> {
    const discs = new Map<string, Given[]>();
    for (const one of given) {
      const isOfDisc = [MANAGEMENT_FILE, BACKUP_FILE].includes(nameOf(one.path));
      if (!isOfDisc || !one.path.includes("/")) continue;
      discs.set(folderOf(one.path), [...(discs.get(folderOf(one.path)) ?? []), one]);
    }
    for (const files of discs.values()) await this.openDisc(files);
    const others = given.filter((one) =>
      one.path.includes("/")
        ? discs.size === 0 && /\.(ifo|bup|iso|img|udf)$/i.test(one.path)
        : true,
    );
    for (const one of others) await this.openFile(one);
    if (folder && discs.size + others.length === 0) {
      this.to.tell({ key: "folderNone", args: { name: folder } });
    }
  }

  /** The management file of a disc, or its backup where that is damaged or missing. */
  private async openDisc(files: Given[]): Promise<void> {
    const first = files.find((one) => nameOf(one.path) === MANAGEMENT_FILE);
    const backup = files.find((one) => nameOf(one.path) === BACKUP_FILE);
    if (!first || !backup) return this.openFile((first ?? backup)!, !first);
    const loads = async (one: Given) => {
      const bytes = await this.read(one);
      return bytes && (await this.workshop.list({ bytes, charset: "utf-8" })).loads;
    };
    const takesBackup = !(await loads(first)) && (await loads(backup));
    await this.openFile(takesBackup ? backup : first, !!takesBackup);
  }

  private async openFile(one: Given, isBackup = false): Promise<void> {
    if (one.file.size >= LEAST_IMAGE) {
      const start = await this.read({ ...one, file: one.file.slice(0, START) as File });
      if (!start) return;
      if (!(await this.workshop.beginsLikeOne(start))) return this.searchImage(one);
    }
    if (one.file.size > MOST_FILE) {
      return this.to.tell({ key: "tooLarge", args: { name: one.path } });
    }
    const bytes = await this.read(one);
    if (!bytes) return;
    const disc = new Disc(one.path, bytes, one.handle);
    if (isBackup) {
      disc.notes.push({ key: "backupUsed", args: { name: MANAGEMENT_FILE } });
    }
    this.to.add(disc);
  }

  private async read(one: Given): Promise<Uint8Array | null> {
    try {
      return new Uint8Array(await one.file.arrayBuffer());
    } catch (error) {
      const why = error instanceof Error ? error.message : String(error);
      this.to.tell({ key: "notRead", args: { name: one.path, why } });
      return null;
    }
  }

  private async searchImage(one: Given): Promise<void> {
    let count = 0;
    let isStopped = false;
    let search: Search | undefined;
    const went = this.to.progress(one.path, one.file.size, () => {
      isStopped = true;
      search?.stop();
    });
    const take = (found: FoundFile) => {
      ++count;
      const disc = new Disc(
        `${one.path}: ${size(found.offset)}`,
        found.bytes,
        null,
        MANAGEMENT_FILE,
      );
      disc.notes.push({ key: "fromImage", args: { offset: found.offset } });
      this.to.add(disc);
    };
    try {
      search = this.workshop.search(one.file, (bytes, found) => {
        went(bytes);
        found.forEach(take);
      });
      await search.end;
      if (isStopped) this.to.tell({ key: "searchedStopped", args: { name: one.path } });
      else if (count === 0) this.to.tell({ key: "searchedNone", args: { name: one.path } });
    } catch (error) {
      const why = error instanceof Error ? error.message : String(error);
      this.to.tell({ key: "notRead", args: { name: one.path, why } });
    } finally {
      went(null);
    }
  }
}

/** The files of a choice; those of a folder have their path in it. */
export function givenBy(files: Iterable<File>): Given[] {
  return [...files].map((file) => ({
    path: file.webkitRelativePath || file.name,
    file,
    handle: null,
  }));
}

async function readFolder(folder: FileSystemDirectoryEntry, given: Given[]): Promise<void> {
  const reader = folder.createReader();
  for (;;) {
    const entries = await new Promise<FileSystemEntry[]>((done, failed) =>
      reader.readEntries(done, failed),
    );
    if (entries.length === 0) return;
    for (const entry of entries) await readEntry(entry, given);
  }
}

async function readEntry(entry: FileSystemEntry, given: Given[]): Promise<void> {
  if (entry.isDirectory) return readFolder(entry as FileSystemDirectoryEntry, given);
  const file = await new Promise<File>((done, failed) =>
    (entry as FileSystemFileEntry).file(done, failed),
  );
  given.push({ path: entry.fullPath.replace(/^\//, ""), file, handle: null });
}

/** What a drop holds: files with the handles that let them be written, and folders. */
export async function givenByDrop(
  transfer: DataTransfer,
): Promise<{ given: Given[]; folder: string | undefined }> {
  type Item = DataTransferItem & { getAsFileSystemHandle?: () => Promise<unknown> };
  const given: Given[] = [];
  let folder: string | undefined;
  const items = [...transfer.items].filter((item) => item.kind === "file") as Item[];
  // All is asked for at once: a drop is over once its handler has returned.
  const asked = items.map((item) => ({
    entry: item.webkitGetAsEntry(),
    file: item.getAsFile(),
    handle: item.getAsFileSystemHandle?.().catch(() => null),
  }));
  for (const { entry, file, handle } of asked) {
    if (entry?.isDirectory) {
      folder = entry.name;
      await readEntry(entry, given);
    } else if (file) {
      given.push({ path: file.name, file, handle: ((await handle) as Handle | null) ?? null });
    }
  }
  return { given, folder };
}
