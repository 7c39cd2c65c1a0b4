// The workshop's report, a page of its own, in a frame that runs nothing.
import { h } from "./dom";
import { t } from "./texts";

export function reportFrame(html: string, name: string): HTMLIFrameElement {
  const frame = h("iframe", {
    class: "report",
    // Its origin is ours so that its height can be measured; no script runs in it.
    sandbox: "allow-same-origin",
    title: t("reportTitle", { name }),
  });
  const fit = () => {
    const page = frame.contentDocument?.documentElement;
    if (!page) return;
    const borders = frame.offsetHeight - frame.clientHeight;
    frame.style.height = `${Math.ceil(page.getBoundingClientRect().height) + borders}px`;
  };
  frame.addEventListener("load", () => {
    const page = frame.contentDocument?.documentElement;
    if (page) new ResizeObserver(fit).observe(page);
    fit();
  });
  frame.srcdoc = html;
  return frame;
}
