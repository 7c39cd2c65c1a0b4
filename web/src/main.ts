import { App } from "./app";
import { date, number, setLanguage, size, startLanguage, t } from "./texts";
import { Workshop } from "./workshop";

const textOf = (id: string) => document.getElementById(id)!.textContent ?? "";

/** What is slow the first time is done while the user looks for a file. */
function warmUp(workshop: Workshop): void {
  void workshop.list({ bytes: new Uint8Array(512), charset: "utf-8" });
  date("2006-01-01T00:00:00");
  number(0);
  size(1e9);
}

async function start(): Promise<void> {
  startLanguage();
  const workshop = new Workshop(textOf("worker"), textOf("workshop"));
  new App(workshop);
  await workshop.ready;
  document.documentElement.dataset.ready = "true";
  warmUp(workshop);
}

start().catch((error) => {
  setLanguage(document.documentElement.lang, false);
  document.getElementById("status")!.className = "notice";
  document.getElementById("status")!.textContent = t("noStart", { why: String(error) });
});
