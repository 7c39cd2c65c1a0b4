// Texts in the character sets that the browser decodes. It encodes UTF-8 alone, so the way back is
// looked up in what its decoder makes of every code.

export const CHARSETS = [
  "utf-8",
  "shift_jis",
  "euc-jp",
  "windows-1252",
  "iso-8859-2",
  "iso-8859-15",
  "windows-1251",
  "gb18030",
  "big5",
  "euc-kr",
] as const;

const tables = new Map<string, Map<string, number[]>>();

function decoded(decoder: TextDecoder, bytes: number[]): string {
  try {
    return decoder.decode(new Uint8Array(bytes));
  } catch {
    return "";
  }
}

/** The codes of one and two bytes, and those of three in EUC-JP, by the character they mean. */
function tableOf(charset: string): Map<string, number[]> {
  const decoder = new TextDecoder(charset, { fatal: true, ignoreBOM: true });
  const table = new Map<string, number[]>();
  const add = (...bytes: number[]) => {
    const text = decoded(decoder, bytes);
    if ([...text].length === 1 && !table.has(text)) table.set(text, bytes);
  };
  const leads: number[] = [];
  for (let byte = 0; byte < 0x100; ++byte) {
    add(byte);
    if (byte >= 0x80 && decoded(decoder, [byte]) === "") leads.push(byte);
  }
  for (const lead of leads) {
    // Codes that another row of the same character set says again are not written.
    if (charset === "shift_jis" && (lead === 0xed || lead === 0xee)) continue;
    for (let trail = 0x30; trail < 0xff; ++trail) add(lead, trail);
  }
  if (charset === "euc-jp") {
    for (let row = 0xa1; row < 0xff; ++row) {
      for (let cell = 0xa1; cell < 0xff; ++cell) add(0x8f, row, cell);
    }
  }
  return table;
}

/** The bytes of a text, or the first character that the character set does not have. */
export function encode(text: string, charset: string): { bytes: number[] } | { notThere: string } {
  if (charset === "utf-8") return { bytes: [...new TextEncoder().encode(text)] };
  let table = tables.get(charset);
  if (!table) tables.set(charset, (table = tableOf(charset)));
  const bytes: number[] = [];
  for (const character of text) {
    const code = table.get(character);
    if (!code) return { notThere: character };
    bytes.push(...code);
  }
  return { bytes };
}

/** Bytes as a word of an operation: printable ASCII as it is, all else as \xNN. */
export function wordOf(bytes: number[]): string {
  return bytes
    .map((byte) =>
      byte >= 0x20 && byte < 0x7f && byte !== 0x5c
        ? String.fromCharCode(byte)
        : "\\x" + byte.toString(16).padStart(2, "0"),
    )
    .join("");
}

/** True for a text that is shown by its bytes, since it is none in its character set. */
export const isShownAsBytes = (text: string) => /\\x[0-9a-f]{2}/.test(text);
