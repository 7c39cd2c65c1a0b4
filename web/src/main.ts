import { App } from "./app";
import { setLanguage, startLanguage, t } from "./texts";
import { Workshop } from "./workshop";

const textOf = (id: string) => document.getElementById(id)!.textContent ?? "";

async function start(): Promise<void> {
  startLanguage();
  const workshop = new Workshop(textOf("worker"), textOf("workshop"));
  new App(workshop);
  await workshop.ready;
  document.documentElement.dataset.ready = "true";
}

start().catch((error) => {
  setLanguage(document.documentElement.lang, false);
  document.getElementById("status")!.className = "notice";
  document.getElementById("status")!.textContent = t("noStart", { why: String(error) });
});
