// What an examination found, with the place of each finding in the file's picture and its bytes.
import { button, h } from "./dom";
import type { Disc } from "./disc";
import type { Examination, Finding, Severity, TableSummary } from "./protocol";
import { number, t, upper } from "./texts";

const HEX_ROWS = 4;

const hex = (value: number, digits: number) => value.toString(16).padStart(digits, "0");

/** The bytes around an offset, 16 a line, the one at the offset marked. */
function bytesAround(bytes: Uint8Array, offset: number): HTMLElement {
  const pre = h("pre", { tabindex: 0, "aria-label": t("bytesAround") });
  const first = Math.max(0, Math.floor(offset / 16) - 1) * 16;
  for (let at = first; at < Math.min(first + HEX_ROWS * 16, bytes.length); at += 16) {
    pre.append(hex(at, 6) + "  ");
    const line = [...bytes.slice(at, at + 16)];
    line.forEach((byte, i) => {
      pre.append(at + i === offset ? h("mark", {}, hex(byte, 2)) : hex(byte, 2), " ");
    });
    const text = line.map((byte) =>
      byte >= 0x20 && byte < 0x7f ? String.fromCharCode(byte) : ".",
    );
    pre.append("   ".repeat(16 - line.length) + " " + text.join("") + "\n");
  }
  return pre;
}

const place = (element: HTMLElement, from: number, size: number, all: number) => {
  element.style.left = `${(100 * from) / all}%`;
  element.style.width = `${(100 * size) / all}%`;
};

export interface CheckHost {
  showInFields(pointer: string): void;
}

export class CheckView {
  private marks = new Map<Finding, HTMLElement>();

  constructor(private readonly host: CheckHost) {}

  render(disc: Disc, examination: Examination): HTMLElement[] {
    this.marks.clear();
    const picture = this.picture(examination);
    const { findings, omitted } = examination;
    if (findings.length === 0) {
      return [h("p", { class: "good" }, t("nothingFound")), picture];
    }
    const counts: [Severity, number][] = [
      ["error", examination.errors],
      ["warning", examination.warnings],
      ["note", examination.notes],
    ];
    const rest = Object.entries(omitted).map(([code, n]) =>
      h("li", { class: "soft" }, t("omitted", { n, code })),
    );
    return [
      h(
        "p",
        { class: "counts" },
        ...counts
          .filter(([, count]) => count > 0)
          .map(([severity, count]) =>
            h("span", { class: `badge ${severity}` }, `${number(count)} × ${t(severity)}`),
          ),
      ),
      picture,
      h(
        "section",
        {},
        h("h2", {}, t("found")),
        h(
          "ol",
          { class: "findings" },
          ...findings.map((finding, i) => this.finding(disc, examination, finding, i)),
          ...rest,
        ),
      ),
    ];
  }

  private picture({ tables, findings, size }: Examination): HTMLElement {
    const bar = h("div", {
      class: "picture",
      role: "img",
      "aria-label": t("pictureText", { size }),
    });
    const there = tables.filter((table) => table.size > 0);
    const all = Math.max(size, ...there.map((table) => table.offset + table.size), 1);
    const order = tables.map((table) => table.table);
    const look = (table: TableSummary) => `t${1 + order.indexOf(table.table)}`;
    for (const table of there) {
      const part = h("span", {
        class: `part ${look(table)} ${table.condition}`,
        title: `${table.table}: ${table.condition}`,
      });
      place(part, table.offset, table.size, all);
      bar.append(part);
    }
    for (const finding of findings) {
      const mark = h("span", { class: `mark ${finding.severity}` });
      mark.style.left = `${(100 * Math.min(finding.offset, all)) / all}%`;
      this.marks.set(finding, mark);
      bar.append(mark);
    }
    const legend = there.map((table) =>
      h(
        "li",
        {},
        h("span", { class: `key ${look(table)}` }),
        `${table.table} `,
        h(
          "span",
          { class: "soft" },
          `${number(table.offset)} +${number(table.size)}, ${table.condition}`,
        ),
      ),
    );
    return h(
      "section",
      {},
      h("h2", {}, t("picture")),
      bar,
      h("ul", { class: "legend" }, ...legend),
    );
  }

  private finding(disc: Disc, { loads }: Examination, finding: Finding, i: number): HTMLElement {
    const rows: [string, string][] = [
      [t("stands"), finding.stands],
      [t("right"), finding.right],
      [t("offset"), `${number(finding.offset)} (0x${hex(finding.offset, 6)})`],
      [t("code"), finding.code],
    ];
    const means = { error: "errorMeans", warning: "warningMeans", note: "noteMeans" } as const;
    const body = h("div", { class: "body" });
    const open = (event: Event) => {
      const isOpen = (event.currentTarget as HTMLDetailsElement).open;
      this.marks.get(finding)?.classList.toggle("chosen", isOpen);
      if (!isOpen || body.childElementCount > 0) return;
      body.append(
        h("p", { class: "soft" }, t(means[finding.severity])),
        h(
          "dl",
          { class: "told-of" },
          ...rows
            .filter(([, value]) => value !== "")
            .flatMap(([name, value]) => [h("dt", {}, name), h("dd", {}, value)]),
        ),
        bytesAround(disc.bytes, finding.offset),
      );
      if (loads) {
        body.append(button(t("showInFields"), () => this.host.showInFields(finding.pointer)));
      }
    };
    return h(
      "li",
      {},
      h(
        "details",
        { ontoggle: open },
        h(
          "summary",
          { "data-key": `finding-${i}` },
          h("span", { class: `badge ${finding.severity}` }, t(finding.severity)),
          " ",
          h("span", {}, upper(finding.title)),
          " ",
          h("span", { class: "soft" }, finding.path),
        ),
        body,
      ),
    );
  }
}
