// All texts of the page, in one table. What the workshop says of a file is English in every language.

const en = {
  tagline: "The file that makes a disc playable: look, check, repair, edit.",
  dropTitle: "Drop a disc’s file here",
  dropText:
    "A management file (VR_MANGR.IFO), the folder of a disc, or an image of one. Several at once are fine.",
  chooseFiles: "Choose files…",
  chooseFolder: "Choose a folder…",
  open: "Open",
  privacy: "Everything happens in this page. Nothing leaves this computer.",
  language: "Language",
  files: "Files",
  close: "Close {name}",
  sound: "Sound",
  damaged: "Damaged",
  bad: "Cannot be read",
  changed: "changed",
  working: "Working…",
  ready: "Ready.",
  opened: "{name} is open.",
  tabContents: "Contents",
  tabReport: "Report",
  tabCheck: "Check",
  tabFields: "Fields",
  views: "Views of the file",
  programs: "Programs",
  playLists: "Play lists",
  cells: "Cells",
  playingTime: "Playing time",
  material: "Material",
  recorded: "Recorded",
  userChains: "User-defined chains",
  stillGroups: "Still groups",
  movie: "movie",
  still: "still",
  mixed: "mixed",
  none: "none",
  discText: "Title of the disc",
  noText: "(without title)",
  rename: "Rename…",
  renameWhat: "Rename {what}",
  renameDisc: "Rename disc…",
  title: "Title",
  bytesUsed: "{n} bytes in {charset}",
  notInCharset: "“{character}” cannot be written in {charset}.",
  shownAsBytes:
    "The present title is no text in {charset}: {text}. Choose the disc’s character set first, or write a new title.",
  program: "program {n}",
  programNamed: "program {n}, “{text}”",
  playList: "play list {n}",
  disc: "the disc",
  moveUp: "Move up",
  moveDown: "Move down",
  joinNext: "Join with the next",
  split: "Split…",
  splitWhat: "Split {what}",
  splitAt: "First cell of the second part ({from} to {to})",
  delete: "Delete…",
  deleteWhat: "Delete {what}",
  cellsFromTo: "cells {from}–{to}",
  cell: "cell {n}",
  noCells: "no cells",
  pointsAt: "points at {what}",
  pointsNowhere: "points nowhere",
  none_yet: "There are none.",
  effects: "What this changes",
  noEffects: "Nothing else changes.",
  more: "and {n} more",
  apply: "Apply",
  cancel: "Cancel",
  undo: "Undo",
  redo: "Redo",
  steps: "Steps",
  stepUndone: "undone",
  undone: "Undone: {what}",
  redone: "Done again: {what}",
  stepRenamed: "Renamed {what}",
  stepDeleted: "Deleted {what}",
  stepMoved: "Moved {what} to place {to}",
  stepJoined: "Joined {what} with the next",
  stepSplit: "Split {what} at cell {cell}",
  stepSalvaged: "Salvaged what can be read",
  charset: "Character set",
  charsetHint: "The titles look like {charset}.",
  charsetUse: "Use {charset}",
  save: "Save…",
  saveWhat: "Save {name}",
  saveText: "The file that was opened stays as it is unless you choose to write over it.",
  saveDownload: "Download the file",
  saveOver: "Write over {name}",
  saveWhere: "Choose where to save…",
  saveJson: "Download as JSON",
  saveReport: "Download the report",
  saved: "{name} is saved.",
  overTitle: "Write over {name}?",
  overText: "The file on the disk is replaced by the one in this page. This cannot be undone here.",
  overYes: "Write over it",
  overChanged: "{name} was changed on the disk since it was opened. Nothing was written.",
  notWritten: "{name} was not written: {why}",
  closeTitle: "Close {name} without saving?",
  closeText: "Its changes will be lost.",
  closeYes: "Close without saving",
  damagedTitle: "This file is damaged",
  badTitle: "Nothing of this file can be read",
  salvageHint: "Salvaging makes a new file of all that can still be read.",
  mustSalvage: "It can be edited once it is salvaged.",
  salvage: "Salvage…",
  salvageTitle: "What can be salvaged",
  salvageWhole: "Everything in the file can be kept.",
  kept: "Kept",
  lost: "Lost or changed",
  otherwise: "Taken otherwise than it stands",
  nothingLost: "Nothing is lost.",
  lostTable: "lost",
  keptOf: "{kept} of {all} {what}",
  read: "read",
  salvageApply: "Continue with what is kept",
  picture: "Where things lie in the file",
  pictureText:
    "The tables of the file to scale, {size} bytes. Marks show where something was found.",
  nothingFound: "Nothing was found: the file is sound.",
  found: "Found",
  error: "error",
  warning: "warning",
  note: "note",
  errorMeans: "The file contradicts itself here, so that a reader misreads or loses something.",
  warningMeans: "This reads without loss, but saving the file anew would change it.",
  noteMeans: "Worth knowing; nothing is wrong.",
  stands: "Stands there",
  right: "Would be right",
  offset: "At byte",
  code: "Code",
  bytesAround: "The bytes there",
  showInFields: "Show in the fields",
  omitted: "{n} more of {code}",
  noReport: "The report needs a file that loads. Salvage it first.",
  noFields: "The fields can be shown once the file loads. Salvage it first.",
  reportTitle: "Report on {name}",
  search: "Search names and values",
  searchMore: "The first {n} are shown.",
  searchNone: "Nothing found.",
  searchFound: "Found {n}.",
  fieldsTree: "All fields of the file",
  place: "Place",
  searching: "Searching {name}: {done} of {all}",
  stop: "Stop",
  searchedNone: "{name} holds no management file in any of its sectors.",
  searchedStopped: "The search of {name} was stopped.",
  backupUsed: "The backup is shown, since {name} is damaged or missing.",
  fromImage: "Found in the image at byte {offset}.",
  folderNone: "There is no management file in {name}.",
  tooLarge: "{name} is too large for a management file.",
  notRead: "{name} cannot be read: {why}",
  failed: "This did not work: {why}",
  noMemory: "there is not enough memory",
  noStart: "The page cannot start in this browser: {why}",
  dismiss: "Dismiss",
} as const;

type Key = keyof typeof en;
type Texts = Record<Key, string>;

const de: Texts = {
  tagline: "Die Datei, die eine Disc abspielbar macht: ansehen, prüfen, retten, bearbeiten.",
  dropTitle: "Datei einer Disc hier ablegen",
  dropText:
    "Eine Verwaltungsdatei (VR_MANGR.IFO), der Ordner einer Disc oder ein Abbild von ihr. Auch mehrere auf einmal.",
  chooseFiles: "Dateien wählen…",
  chooseFolder: "Ordner wählen…",
  open: "Öffnen",
  privacy: "Alles geschieht in dieser Seite. Nichts verlässt diesen Computer.",
  language: "Sprache",
  files: "Dateien",
  close: "{name} schließen",
  sound: "In Ordnung",
  damaged: "Beschädigt",
  bad: "Nicht lesbar",
  changed: "geändert",
  working: "Arbeitet…",
  ready: "Bereit.",
  opened: "{name} ist geöffnet.",
  tabContents: "Inhalt",
  tabReport: "Bericht",
  tabCheck: "Prüfung",
  tabFields: "Felder",
  views: "Ansichten der Datei",
  programs: "Programme",
  playLists: "Wiedergabelisten",
  cells: "Zellen",
  playingTime: "Spieldauer",
  material: "Material",
  recorded: "Aufgenommen",
  userChains: "Eigene Programmketten",
  stillGroups: "Standbildgruppen",
  movie: "Film",
  still: "Standbild",
  mixed: "gemischt",
  none: "leer",
  discText: "Titel der Disc",
  noText: "(ohne Titel)",
  rename: "Umbenennen…",
  renameWhat: "{what} umbenennen",
  renameDisc: "Disc umbenennen…",
  title: "Titel",
  bytesUsed: "{n} Bytes in {charset}",
  notInCharset: "„{character}“ lässt sich nicht in {charset} schreiben.",
  shownAsBytes:
    "Der jetzige Titel ist kein Text in {charset}: {text}. Erst den Zeichensatz der Disc wählen oder einen neuen Titel schreiben.",
  program: "Programm {n}",
  programNamed: "Programm {n}, „{text}“",
  playList: "Wiedergabeliste {n}",
  disc: "Disc",
  moveUp: "Nach oben",
  moveDown: "Nach unten",
  joinNext: "Mit dem nächsten verbinden",
  split: "Teilen…",
  splitWhat: "{what} teilen",
  splitAt: "Erste Zelle des zweiten Teils ({from} bis {to})",
  delete: "Löschen…",
  deleteWhat: "{what} löschen",
  cellsFromTo: "Zellen {from}–{to}",
  cell: "Zelle {n}",
  noCells: "keine Zellen",
  pointsAt: "zeigt auf {what}",
  pointsNowhere: "zeigt nirgendwohin",
  none_yet: "Keine vorhanden.",
  effects: "Was das ändert",
  noEffects: "Sonst ändert sich nichts.",
  more: "und {n} weitere",
  apply: "Anwenden",
  cancel: "Abbrechen",
  undo: "Rückgängig",
  redo: "Wiederholen",
  steps: "Schritte",
  stepUndone: "zurückgenommen",
  undone: "Rückgängig gemacht: {what}",
  redone: "Wiederholt: {what}",
  stepRenamed: "{what} umbenannt",
  stepDeleted: "{what} gelöscht",
  stepMoved: "{what} an Stelle {to} bewegt",
  stepJoined: "{what} mit dem nächsten verbunden",
  stepSplit: "{what} bei Zelle {cell} geteilt",
  stepSalvaged: "Gerettet, was lesbar ist",
  charset: "Zeichensatz",
  charsetHint: "Die Titel sehen nach {charset} aus.",
  charsetUse: "{charset} verwenden",
  save: "Speichern…",
  saveWhat: "{name} speichern",
  saveText:
    "Die geöffnete Datei bleibt, wie sie ist, solange sie nicht ausdrücklich überschrieben wird.",
  saveDownload: "Datei herunterladen",
  saveOver: "{name} überschreiben",
  saveWhere: "Ort wählen…",
  saveJson: "Als JSON herunterladen",
  saveReport: "Bericht herunterladen",
  saved: "{name} ist gespeichert.",
  overTitle: "{name} überschreiben?",
  overText:
    "Die Datei auf dem Datenträger wird durch die in dieser Seite ersetzt. Das lässt sich hier nicht zurücknehmen.",
  overYes: "Überschreiben",
  overChanged:
    "{name} hat sich seit dem Öffnen auf dem Datenträger geändert. Nichts wurde geschrieben.",
  notWritten: "{name} wurde nicht geschrieben: {why}",
  closeTitle: "{name} ohne Speichern schließen?",
  closeText: "Die Änderungen gehen verloren.",
  closeYes: "Ohne Speichern schließen",
  damagedTitle: "Diese Datei ist beschädigt",
  badTitle: "Von dieser Datei ist nichts lesbar",
  salvageHint: "Beim Retten entsteht eine neue Datei aus allem, was noch lesbar ist.",
  mustSalvage: "Bearbeiten lässt sie sich, sobald sie gerettet ist.",
  salvage: "Retten…",
  salvageTitle: "Was sich retten lässt",
  salvageWhole: "Alles in der Datei lässt sich behalten.",
  kept: "Behalten",
  lost: "Verloren oder geändert",
  otherwise: "Anders genommen, als es dasteht",
  nothingLost: "Nichts geht verloren.",
  lostTable: "verloren",
  keptOf: "{kept} von {all} {what}",
  read: "gelesen",
  salvageApply: "Mit dem Geretteten weiter",
  picture: "Was wo in der Datei liegt",
  pictureText:
    "Die Tabellen der Datei im Maßstab, {size} Bytes. Marken zeigen, wo etwas gefunden wurde.",
  nothingFound: "Nichts gefunden: Die Datei ist in Ordnung.",
  found: "Gefunden",
  error: "Fehler",
  warning: "Warnung",
  note: "Hinweis",
  errorMeans: "Die Datei widerspricht sich hier; wer sie liest, liest falsch oder verliert etwas.",
  warningMeans: "Das ist ohne Verlust lesbar, aber neues Speichern würde es ändern.",
  noteMeans: "Gut zu wissen; nichts ist falsch.",
  stands: "Steht da",
  right: "Wäre richtig",
  offset: "Bei Byte",
  code: "Code",
  bytesAround: "Die Bytes dort",
  showInFields: "In den Feldern zeigen",
  omitted: "{n} weitere von {code}",
  noReport: "Der Bericht braucht eine Datei, die sich laden lässt. Erst retten.",
  noFields: "Die Felder sind zu sehen, sobald die Datei sich laden lässt. Erst retten.",
  reportTitle: "Bericht über {name}",
  search: "Namen und Werte durchsuchen",
  searchMore: "Die ersten {n} sind zu sehen.",
  searchNone: "Nichts gefunden.",
  searchFound: "{n} gefunden.",
  fieldsTree: "Alle Felder der Datei",
  place: "Stelle",
  searching: "{name} wird durchsucht: {done} von {all}",
  stop: "Anhalten",
  searchedNone: "{name} enthält in keinem Sektor eine Verwaltungsdatei.",
  searchedStopped: "Die Suche in {name} wurde angehalten.",
  backupUsed: "Zu sehen ist die Sicherung, denn {name} ist beschädigt oder fehlt.",
  fromImage: "Im Abbild bei Byte {offset} gefunden.",
  folderNone: "In {name} ist keine Verwaltungsdatei.",
  tooLarge: "{name} ist zu groß für eine Verwaltungsdatei.",
  notRead: "{name} ist nicht lesbar: {why}",
  failed: "Das ging nicht: {why}",
  noMemory: "der Speicher reicht nicht",
  noStart: "Die Seite startet in diesem Browser nicht: {why}",
  dismiss: "Ausblenden",
};

const ja: Texts = {
  tagline: "ディスクを再生可能にする管理ファイルを、表示・検査・修復・編集します。",
  dropTitle: "ここにディスクのファイルをドロップ",
  dropText:
    "管理ファイル(VR_MANGR.IFO)、ディスクのフォルダー、またはディスクイメージ。複数でもかまいません。",
  chooseFiles: "ファイルを選択…",
  chooseFolder: "フォルダーを選択…",
  open: "開く",
  privacy: "処理はすべてこのページの中で行われ、何もこのコンピューターの外へ出ません。",
  language: "言語",
  files: "ファイル",
  close: "{name} を閉じる",
  sound: "正常",
  damaged: "破損",
  bad: "読み取り不可",
  changed: "変更あり",
  working: "処理中…",
  ready: "準備完了。",
  opened: "{name} を開きました。",
  tabContents: "内容",
  tabReport: "レポート",
  tabCheck: "検査",
  tabFields: "フィールド",
  views: "ファイルの表示",
  programs: "プログラム",
  playLists: "プレイリスト",
  cells: "セル",
  playingTime: "再生時間",
  material: "素材",
  recorded: "録画日時",
  userChains: "ユーザー定義チェーン",
  stillGroups: "静止画グループ",
  movie: "動画",
  still: "静止画",
  mixed: "混在",
  none: "なし",
  discText: "ディスクのタイトル",
  noText: "(タイトルなし)",
  rename: "名前を変更…",
  renameWhat: "{what}の名前を変更",
  renameDisc: "ディスク名を変更…",
  title: "タイトル",
  bytesUsed: "{charset} で {n} バイト",
  notInCharset: "「{character}」は {charset} では書けません。",
  shownAsBytes:
    "現在のタイトルは {charset} のテキストではありません: {text}。先にディスクの文字コードを選ぶか、新しいタイトルを入力してください。",
  program: "プログラム {n}",
  programNamed: "プログラム {n}「{text}」",
  playList: "プレイリスト {n}",
  disc: "ディスク",
  moveUp: "上へ",
  moveDown: "下へ",
  joinNext: "次と結合",
  split: "分割…",
  splitWhat: "{what}を分割",
  splitAt: "後半の最初のセル({from}~{to})",
  delete: "削除…",
  deleteWhat: "{what}を削除",
  cellsFromTo: "セル {from}~{to}",
  cell: "セル {n}",
  noCells: "セルなし",
  pointsAt: "{what}を指す",
  pointsNowhere: "どこも指さない",
  none_yet: "ありません。",
  effects: "変更される内容",
  noEffects: "ほかに変わるものはありません。",
  more: "ほか {n} 件",
  apply: "適用",
  cancel: "キャンセル",
  undo: "元に戻す",
  redo: "やり直す",
  steps: "操作の履歴",
  stepUndone: "取り消し済み",
  undone: "元に戻しました: {what}",
  redone: "やり直しました: {what}",
  stepRenamed: "{what}の名前を変更",
  stepDeleted: "{what}を削除",
  stepMoved: "{what}を {to} 番目へ移動",
  stepJoined: "{what}を次と結合",
  stepSplit: "{what}をセル {cell} で分割",
  stepSalvaged: "読めるものを救出",
  charset: "文字コード",
  charsetHint: "タイトルは {charset} のようです。",
  charsetUse: "{charset} を使う",
  save: "保存…",
  saveWhat: "{name} を保存",
  saveText: "上書きを選ばないかぎり、開いたファイルはそのまま残ります。",
  saveDownload: "ファイルをダウンロード",
  saveOver: "{name} に上書き",
  saveWhere: "保存先を選ぶ…",
  saveJson: "JSON でダウンロード",
  saveReport: "レポートをダウンロード",
  saved: "{name} を保存しました。",
  overTitle: "{name} に上書きしますか?",
  overText: "保存先のファイルはこのページの内容に置き換わります。ここでは元に戻せません。",
  overYes: "上書きする",
  overChanged: "{name} は開いた後に変更されています。何も書き込みませんでした。",
  notWritten: "{name} を書き込めませんでした: {why}",
  closeTitle: "{name} を保存せずに閉じますか?",
  closeText: "変更は失われます。",
  closeYes: "保存せずに閉じる",
  damagedTitle: "このファイルは破損しています",
  badTitle: "このファイルからは何も読み取れません",
  salvageHint: "まだ読めるものすべてから新しいファイルを作ります。",
  mustSalvage: "救出すると編集できます。",
  salvage: "救出…",
  salvageTitle: "救出できるもの",
  salvageWhole: "ファイルのすべてを残せます。",
  kept: "残るもの",
  lost: "失われる、または変わるもの",
  otherwise: "記録と異なる値として扱うもの",
  nothingLost: "失われるものはありません。",
  lostTable: "失われます",
  keptOf: "{what} {all} 中 {kept}",
  read: "読み取り済み",
  salvageApply: "残ったもので続ける",
  picture: "ファイル内の位置",
  pictureText: "ファイルの各テーブルの位置(全 {size} バイト)。印は見つかった問題の位置です。",
  nothingFound: "問題は見つかりませんでした。ファイルは正常です。",
  found: "検出",
  error: "エラー",
  warning: "警告",
  note: "注記",
  errorMeans: "ファイルの内容が矛盾しており、正しく読めないか、何かが失われます。",
  warningMeans: "失われずに読めますが、保存し直すと変わります。",
  noteMeans: "参考情報です。問題はありません。",
  stands: "記録されている値",
  right: "正しい値",
  offset: "バイト位置",
  code: "コード",
  bytesAround: "その位置のバイト列",
  showInFields: "フィールドで表示",
  omitted: "{code} がほかに {n} 件",
  noReport: "レポートには読み込めるファイルが必要です。先に救出してください。",
  noFields: "フィールドはファイルが読み込めると表示されます。先に救出してください。",
  reportTitle: "{name} のレポート",
  search: "名前と値を検索",
  searchMore: "最初の {n} 件を表示しています。",
  searchNone: "見つかりませんでした。",
  searchFound: "{n} 件見つかりました。",
  fieldsTree: "ファイルのすべてのフィールド",
  place: "位置",
  searching: "{name} を検索中: {all} 中 {done}",
  stop: "中止",
  searchedNone: "{name} のどのセクターにも管理ファイルがありません。",
  searchedStopped: "{name} の検索を中止しました。",
  backupUsed: "{name} が破損しているか存在しないため、バックアップを表示しています。",
  fromImage: "イメージのバイト {offset} で見つかりました。",
  folderNone: "{name} に管理ファイルはありません。",
  tooLarge: "{name} は管理ファイルとしては大きすぎます。",
  notRead: "{name} を読み取れません: {why}",
  failed: "実行できませんでした: {why}",
  noMemory: "メモリーが足りません",
  noStart: "このブラウザーではページを開始できません: {why}",
  dismiss: "閉じる",
};

export const LANGUAGES = { en: "English", de: "Deutsch", ja: "日本語" } as const;
export type Language = keyof typeof LANGUAGES;
const tables: Record<Language, Texts> = { en, de, ja };

/** A text by its key, and what stands in it: words, numbers or other messages. */
export interface Message {
  key: Key;
  args?: Record<string, string | number | Message>;
}

const REMEMBERED = "veska-language";
let language: Language = "en";

const isLanguage = (name: string | null): name is Language => name !== null && name in tables;

/** The language that was chosen before, or else the first of the browser's that there is. */
export function startLanguage(): void {
  let chosen: string | null = null;
  try {
    chosen = localStorage.getItem(REMEMBERED);
  } catch {
    // not every browser lets a page from a file remember anything
  }
  const wanted = [chosen, ...navigator.languages.map((name) => name.slice(0, 2))];
  setLanguage(wanted.find(isLanguage) ?? "en", false);
}

export function setLanguage(name: string, remember = true): void {
  if (!isLanguage(name)) return;
  language = name;
  document.documentElement.lang = name;
  if (!remember) return;
  try {
    localStorage.setItem(REMEMBERED, name);
  } catch {
    // it is asked again
  }
}

export const currentLanguage = () => language;

export function t(key: Key, args: Message["args"] = {}): string {
  return tables[language][key].replace(/\{(\w+)\}/g, (_, name: string) => {
    const value = args[name];
    if (value === undefined) return "";
    if (typeof value === "object") return t(value.key, value.args);
    return typeof value === "number" ? number(value) : value;
  });
}
export const say = (message: Message) => t(message.key, message.args);

/** The first letter as at the start of a sentence. */
export const upper = (text: string) => text.charAt(0).toLocaleUpperCase(language) + text.slice(1);

// Making a format takes milliseconds, using one does not.
const formats = new Map<string, Intl.NumberFormat | Intl.DateTimeFormat>();
function format<Format extends Intl.NumberFormat | Intl.DateTimeFormat>(
  name: string,
  make: () => Format,
): Format {
  const key = `${language} ${name}`;
  let there = formats.get(key) as Format | undefined;
  if (!there) formats.set(key, (there = make()));
  return there;
}

export const number = (value: number) =>
  format("number", () => new Intl.NumberFormat(language)).format(value);

export function size(bytes: number): string {
  const units = ["byte", "kilobyte", "megabyte", "gigabyte"];
  let power = 0;
  while (bytes >= 1000 && power < 3) {
    bytes /= 1000;
    ++power;
  }
  const unit = units[power]!;
  const maximumFractionDigits = power > 0 ? 1 : 0;
  return format(
    unit,
    () => new Intl.NumberFormat(language, { style: "unit", unit, maximumFractionDigits }),
  ).format(bytes);
}

export function duration(seconds: number): string {
  const whole = Math.round(seconds);
  const two = (value: number) => String(value).padStart(2, "0");
  return `${Math.floor(whole / 3600)}:${two(Math.floor(whole / 60) % 60)}:${two(whole % 60)}`;
}

export function date(iso: string): string {
  return format(
    "date",
    () =>
      new Intl.DateTimeFormat(language, {
        dateStyle: "medium",
        timeStyle: "short",
        timeZone: "UTC",
      }),
  ).format(new Date(iso + "Z"));
}
