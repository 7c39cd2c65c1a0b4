// The style sheet of a report.
#pragma once

namespace VESKA::workshop {

/// Colours are named by what they are for. Those of the tables keep three to one against the paper
/// and, in their order, differ in lightness as well as in hue.
inline constexpr char kReportStyle[] = R"css(
:root {
  color-scheme: light dark;
  --paper: #fcfbf9; --ink: #1b1d21; --soft: #595f69; --rule: #d8d4cc; --grid: #e9e5de;
  --curve: #1f5fa8; --mean: #a33b12; --empty: #f0ede7;
  --t1: #5d6470; --t2: #8a6a00; --t3: #1f5fa8; --t4: #1c7a4f; --t5: #b4501f; --t6: #8b3f8f;
  --t7: #2b7f8c; --t8: #a3324f;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #14161a; --ink: #e9e7e2; --soft: #a4aab4; --rule: #383d46; --grid: #272b32;
    --curve: #79b4f2; --mean: #f0a17f; --empty: #20242a;
    --t1: #9aa1ad; --t2: #d3b04a; --t3: #79b4f2; --t4: #6cc79b; --t5: #ee9a6b; --t6: #d29ad6;
    --t7: #76c4d0; --t8: #ef8fa6;
  }
}
* { box-sizing: border-box; }
html { background: var(--paper); color: var(--ink); }
body {
  font: 15px/1.5 system-ui, -apple-system, "Segoe UI", "Noto Sans", "Liberation Sans", Arial,
    sans-serif;
  font-variant-numeric: tabular-nums;
  max-width: 1008px; margin: 0 auto; padding: 40px 24px 56px;
}
h1 { font-size: 30px; line-height: 1.2; font-weight: 650; letter-spacing: -.01em; margin: 0;
  overflow-wrap: anywhere; }
h2 { font-size: 20px; line-height: 1.3; font-weight: 650; margin: 52px 0 6px; }
h3 { font-size: 15px; font-weight: 650; margin: 26px 0 0; }
p { margin: 0 0 12px; max-width: 72ch; }
.kind, .note, caption, th, dt, figcaption { color: var(--soft); }
.kind { margin: 0 0 4px; }
.lead { font-size: 17px; margin: 8px 0 0; overflow-wrap: anywhere; }
.note, figcaption, caption { font-size: 13.5px; }
dl { display: grid; grid-template-columns: repeat(auto-fit, minmax(150px, 1fr)); gap: 14px 24px;
  margin: 24px 0 0; padding: 16px 0 0; border-top: 1px solid var(--rule); }
dt { font-size: 13px; }
dd { margin: 0; font-size: 17px; font-weight: 550; }
.wide { overflow-x: auto; }
figure { margin: 12px 0 0; }
table { border-collapse: collapse; margin: 12px 0 0; }
caption { text-align: left; padding: 0 0 6px; }
th { font-size: 13px; font-weight: 500; text-align: left; vertical-align: bottom; }
th, td { padding: 4px 28px 4px 0; border-bottom: 1px solid var(--grid); }
thead th { border-bottom-color: var(--rule); }
tbody th { font-size: inherit; color: inherit; font-weight: 400; }
td.n, th.n { text-align: right; white-space: nowrap; }
td.bar, th.bar { padding-right: 0; line-height: 0; }
td:last-child, th:last-child { padding-right: 0; }
.text { overflow-wrap: anywhere; min-width: 11ch; }
.key { display: inline-block; width: 11px; height: 11px; margin-right: 8px; border-radius: 2px; }
svg { display: block; }
figure svg { width: 100%; height: auto; }
svg text { font-size: 12px; fill: var(--soft); text-anchor: middle; }
svg .from { text-anchor: start; }
svg .to { text-anchor: end; }
svg .on-bar { fill: var(--paper); font-size: 13px; font-weight: 550; pointer-events: none; }
.tick, .axis { stroke: var(--soft); }
.grid { stroke: var(--grid); }
.movie, .still, .several, .program, .t1, .t2, .t3, .t4, .t5, .t6, .t7, .t8 {
  stroke: var(--paper); stroke-width: .8; }
.odd { fill-opacity: .66; }
.t1 { fill: var(--t1); background: var(--t1); } .t2 { fill: var(--t2); background: var(--t2); }
.t3 { fill: var(--t3); background: var(--t3); } .t4 { fill: var(--t4); background: var(--t4); }
.t5 { fill: var(--t5); background: var(--t5); } .t6 { fill: var(--t6); background: var(--t6); }
.t7 { fill: var(--t7); background: var(--t7); } .t8 { fill: var(--t8); background: var(--t8); }
.unused { fill: var(--empty); background: var(--empty); }
.program, .several { fill: var(--t1); background: var(--t1); }
.program.odd { fill-opacity: .9; }
.movie { fill: var(--t3); background: var(--t3); }
.still { fill: var(--t4); background: var(--t4); }
.point { fill: var(--mean); }
.area { fill: var(--curve); fill-opacity: .13; }
.band { fill: var(--curve); fill-opacity: .3; }
.curve { fill: none; stroke: var(--curve); stroke-width: 1.1; }
.mean { fill: none; stroke: var(--mean); stroke-dasharray: 5 4; }
svg .mean-text { fill: var(--mean); }
footer { margin: 56px 0 0; padding: 14px 0 0; border-top: 1px solid var(--rule); }
@media (max-width: 700px) {
  th, td { padding-right: 14px; }
  figure .wide { padding-top: 3px; }
  figure svg { overflow: visible; }
  figure .w960 text { font-size: 17px; }
  figure .w960 .on-bar { display: none; }
  figure .w960 .mean-text { text-anchor: end; transform: translate(-12px, -9px); }
}
.w342 { display: none; }
@media (max-width: 600px) {
  body { padding: 24px 16px 40px; }
  .w960 { display: none; }
  .w342 { display: block; }
  .wide:has(.bar) table, .wide:has(.bar) thead, .wide:has(.bar) tbody { display: block; }
  tr:has(> .bar) { display: flex; flex-wrap: wrap; }
  tr:has(> .bar) > * { border-bottom: 0; }
  tr:has(> .bar) > .text { flex: 1; }
  tr:has(> .bar) > .bar { flex: 0 0 100%; border-bottom: 1px solid var(--grid); padding-bottom: 8px; }
  thead th.n { white-space: normal; }
  .bar svg { width: 100%; height: auto; }
}
@media print { body { padding: 0; } h2, figure { break-after: avoid; break-inside: avoid; } }
)css";

}  // namespace VESKA::workshop
