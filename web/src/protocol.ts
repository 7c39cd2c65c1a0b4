// What the page and its worker say to each other, and what the workshop answers.

export type ToWorker =
  | { kind: "start"; module: string }
  | { kind: "open"; bytes: Uint8Array }
  | { kind: "ask"; id: number; charset: string; words: string[] }
  | { kind: "search"; id: number; image: Blob }
  | { kind: "stop"; id: number };

export type FromWorker =
  | { kind: "ready" }
  | { kind: "failed"; what: string }
  | { kind: "answer"; id: number; text: string; made: Uint8Array | null }
  | { kind: "refusal"; id: number; refusal: Refusal }
  | { kind: "searched"; id: number; bytes: number; found: FoundFile[]; isEnd: boolean };

/** Why something was not done; `kind` tells whose mistake it is. */
export interface Refusal {
  kind: "file" | "document" | "request" | "memory" | "reading" | "internal";
  what: string;
}

export interface FoundFile {
  offset: number;
  isSound: boolean;
  bytes: Uint8Array;
}

export interface Program {
  text: string;
  kind: "movie" | "still" | "mixed" | "none";
  firstCell: number;
  cells: number;
  seconds: number;
}

export interface PlayList {
  text: string;
  cell: number;
}

export const Status = { sound: 0, damaged: 1, bad: 2 } as const;

export interface Listing {
  status: number;
  problem: string;
  text: string;
  programs: Program[];
  playLists: PlayList[];
  cells: number;
  userChains: number;
  vobs: number;
  stillGroups: number;
  seconds: number;
  bytes: number;
  recordedFirst: string;
  recordedLast: string;
  loads: boolean;
  errors: number;
  warnings: number;
}

export type Severity = "note" | "warning" | "error";

export interface Finding {
  code: string;
  severity: Severity;
  table: string;
  pointer: string;
  path: string;
  offset: number;
  title: string;
  stands: string;
  right: string;
}

export interface TableSummary {
  table: string;
  condition: "absent" | "sound" | "damaged" | "lost";
  offset: number;
  size: number;
  items: number;
  readable: number;
}

export interface Examination {
  size: number;
  loads: boolean;
  errors: number;
  warnings: number;
  notes: number;
  tables: TableSummary[];
  findings: Finding[];
  omitted: Record<string, number>;
}

export interface Branch {
  pointer: string;
  name: string;
  text: string;
  children: number;
  isList: boolean;
  words?: string;
}

export interface Salvage {
  isRead: boolean;
  isWhole: boolean;
  tables: {
    table: string;
    isLost: boolean;
    counts: { what: string; kept: number; all: number }[];
    losses: { words: string; what: string; reason: string }[];
  }[];
  otherwise: { words: string; title: string; stands: string; right: string }[];
}
