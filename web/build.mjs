// Makes the page: one file with style, scripts and the workshop in it, which loads nothing.
//
//   node build.mjs WORKSHOP.wasm SAMPLE.ifo OUT.html
import { createHash } from "node:crypto";
import { readFileSync, writeFileSync } from "node:fs";
import { dirname, join } from "node:path";
import { fileURLToPath } from "node:url";
import { build } from "esbuild";

const here = dirname(fileURLToPath(import.meta.url));
const [moduleFile, sample, out] = process.argv.slice(2);

const options = { bundle: true, write: false, minify: true, format: "iife", charset: "utf8" };

async function script(name, target = "es2022") {
  const made = await build({ ...options, target, entryPoints: [join(here, "src", name)] });
  const text = made.outputFiles[0].text.trim();
  if (/<\/script|<!--/i.test(text)) throw new Error(`${name} would end its own element`);
  return text;
}

async function style() {
  const made = await build({ ...options, entryPoints: [join(here, "style.css")] });
  return made.outputFiles[0].text.trim();
}

/** The style sheet that the workshop's reports bring along. */
async function reportStyle() {
  const made = await build({
    ...options,
    format: "esm",
    platform: "node",
    entryPoints: [join(here, "src", "engine.ts")],
  });
  const source = Buffer.from(made.outputFiles[0].text).toString("base64");
  const { Engine } = await import(`data:text/javascript;base64,${source}`);
  const engine = new Engine(new WebAssembly.Module(readFileSync(moduleFile)));
  engine.open(new Uint8Array(readFileSync(sample)));
  const [, text] = /<style>([^]*?)<\/style>/.exec(engine.ask(["report", "x"]).text);
  return text;
}

const hash = (text) => `'sha256-${createHash("sha256").update(text).digest("base64")}'`;

const parts = {
  style: await style(),
  script: await script("main.ts"),
  worker: await script("worker.ts"),
  module: readFileSync(moduleFile).toString("base64"),
};
const policy = [
  "default-src 'none'",
  "connect-src 'none'",
  `script-src ${hash(parts.script)} 'wasm-unsafe-eval'`,
  "worker-src blob:",
  `style-src ${hash(parts.style)} ${hash(await reportStyle())}`,
  "img-src data:",
  "base-uri 'none'",
  "form-action 'none'",
].join("; ");

const template = readFileSync(join(here, "index.html"), "utf8");
const page = template.replace(/{{(\w+)}}/g, (_, name) => ({ ...parts, policy })[name]);
writeFileSync(out, page.trim() + "\n");
console.log(`${out}: ${page.length} characters, ${Buffer.byteLength(page)} bytes`);
