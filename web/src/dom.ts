// Elements, dialogs and files, without markup in strings: whatever a disc says stays text.

type Child = Node | string | null | undefined | false;
type Props = Record<string, string | number | boolean | ((event: never) => void) | undefined>;

/** An element with attributes, properties (`onclick`) and children. */
export function h<Name extends keyof HTMLElementTagNameMap>(
  name: Name,
  props: Props = {},
  ...children: Child[]
): HTMLElementTagNameMap[Name] {
  const element = document.createElement(name);
  for (const [key, value] of Object.entries(props)) {
    if (value === undefined || value === false) continue;
    if (typeof value === "function") {
      element.addEventListener(key.slice(2), value as unknown as EventListener);
    } else element.setAttribute(key, value === true ? "" : String(value));
  }
  element.append(...children.filter((child): child is Node | string => !!child));
  return element;
}

export function button(text: string, onclick: () => void, props: Props = {}): HTMLButtonElement {
  return h("button", { type: "button", ...props, onclick }, text);
}

/** Gives the focus to what has a key, or to what stands for more: "row-3-up", "row-3", "save". */
function focusKey(root: ParentNode, key: string): void {
  const keys = [key];
  while (/-[^-]*$/.test(keys.at(-1)!)) keys.push(keys.at(-1)!.replace(/-+[^-]*$/, ""));
  for (const one of [...keys, "save"]) {
    const there = root.querySelector<HTMLElement>(`[data-key="${CSS.escape(one)}"]:not(:disabled)`);
    if (there) return there.focus({ preventScroll: true });
  }
}

/** Puts new children into an element; what had the focus keeps it by its `data-key`. */
export function replace(element: Element, ...children: Child[]): void {
  const active = document.activeElement;
  const key =
    active instanceof HTMLElement && element.contains(active) ? active.dataset.key : undefined;
  element.replaceChildren(...children.filter((child): child is Node | string => !!child));
  if (key) focusKey(element, key);
}

export interface DialogParts {
  title: string;
  content: Child[];
  confirm?: { text: string; isDanger?: boolean };
  cancel: string;
  /** False keeps the dialog open. */
  accept?: () => boolean | Promise<boolean>;
}

/** Asks in a dialog; true when it was confirmed. The focus goes back where it was. */
export function ask(parts: DialogParts): { dialog: HTMLDialogElement; answer: Promise<boolean> } {
  const dialog = h("dialog", { "aria-labelledby": "dialog-title" });
  let isConfirmed = false;
  const confirm = parts.confirm;
  const submit = async (event: SubmitEvent) => {
    event.preventDefault();
    if (parts.accept && !(await parts.accept())) return;
    isConfirmed = true;
    dialog.close();
  };
  dialog.append(
    h(
      "form",
      { method: "dialog", onsubmit: submit },
      h("h2", { id: "dialog-title" }, parts.title),
      ...parts.content,
      h(
        "div",
        { class: "buttons" },
        button(parts.cancel, () => dialog.close()),
        confirm &&
          h(
            "button",
            { type: "submit", class: confirm.isDanger ? "danger" : "main" },
            confirm.text,
          ),
      ),
    ),
  );
  document.body.append(dialog);
  const before = document.activeElement;
  const key = before instanceof HTMLElement ? before.dataset.key : undefined;
  const answer = new Promise<boolean>((done) => {
    dialog.addEventListener("close", () => {
      dialog.remove();
      done(isConfirmed);
      if (key) focusKey(document, key);
    });
  });
  dialog.showModal();
  return { dialog, answer };
}

export function download(name: string, content: Uint8Array | string, type: string): void {
  const url = URL.createObjectURL(new Blob([content as BlobPart], { type }));
  h("a", { href: url, download: name }).click();
  setTimeout(() => URL.revokeObjectURL(url), 10_000);
}
