// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// The style of the pages: dark on a dark screen, black on white on paper. No word of a place or of a chart breaks; a phone's
/// table that is too wide for the screen scrolls, and the rows of a fleet's become blocks on a narrow one. Where a fleet's
/// table breaks a line, no word breaks unless it is longer than its column.
constexpr char kPageStyle[] = R"css(
:root { color-scheme: light dark; --ink: #1d2733; --dim: #66717e; --line: #d8dee5; --paper: #fff; --shade: #f4f6f8;
  --added: #1a7f4b; --changed: #0b66a8; --emptied: #9a6a00; --removed: #b3261e; --bar: #4a90c4;
  --well: #3fa06f; --care: #e0a526; --fail: #cf4a41; }
@media (prefers-color-scheme: dark) { :root { --ink: #dde3ea; --dim: #93a0ad; --line: #36414d; --paper: #161c23;
  --shade: #1f272f; --added: #5cc48d; --changed: #6bb5ec; --emptied: #e0b040; --removed: #f28b82; --bar: #3b78a6; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1rem; max-width: 68rem; background: var(--paper); color: var(--ink);
  font: 15px/1.45 system-ui, sans-serif; }
h1 { font-size: 1.5rem; margin: 0 0 .5rem; } h2 { font-size: 1.2rem; margin: 2rem 0 .5rem; }
h3 { font-size: 1rem; margin: 1.4rem 0 .3rem; overflow-wrap: anywhere; }
.dim, .pass { color: var(--dim); font-weight: normal; } .pass { font-size: .85em; }
.added { color: var(--added); } .changed { color: var(--changed); } .emptied { color: var(--emptied); }
.removed { color: var(--removed); } .error { color: var(--removed); }
a { color: var(--changed); text-decoration-color: var(--line); text-underline-offset: .2em; }
.tiles { display: flex; flex-wrap: wrap; gap: .6rem; margin: 1rem 0; padding: 0; list-style: none; }
.tiles li { flex: 1 1 9rem; padding: .6rem .8rem; background: var(--shade); border-radius: .4rem; }
.tiles b { display: block; font-size: 1.4rem; }
#endings li { flex-basis: 6rem; border-left: .3rem solid; padding-left: .9rem; }
#endings .well { border-color: var(--well); } #endings .care { border-color: var(--care); } #endings .fail { border-color: var(--fail); }
.shares { display: block; width: 100%; height: .5rem; border-radius: .25rem; }
.shares .well { fill: var(--well); } .shares .care { fill: var(--care); } .shares .fail { fill: var(--fail); }
.pill { display: inline-block; min-width: 5.4em; padding: 0 .5em; border: 1px solid; border-radius: 1em; text-align: center;
  font-size: .85em; } .pill.well { color: var(--added); } .pill.care, .pill.warning { color: var(--emptied); }
.pill.fail, .pill.error { color: var(--removed); } .pill.note { color: var(--dim); }
.chart { max-width: 46rem; margin: 1rem 0; } .chart caption { font-weight: 600; text-align: left; }
.chart th, .chart td { padding: .1rem .4rem; border: 0; background: none; vertical-align: middle; }
.chart th { font-weight: normal; text-align: right; }
.chart td:nth-child(2) { width: 50%; } .chart svg { display: block; width: 100%; height: .9em; fill: var(--bar); }
.wide { overflow-x: auto; } table { border-collapse: collapse; width: 100%; }
th, td { padding: .2rem .5rem; text-align: left; vertical-align: top; border-bottom: 1px solid var(--line);
  overflow-wrap: break-word; }
td:first-child { white-space: nowrap; }
th { font-weight: 600; background: var(--shade); } td.name { font-family: ui-monospace, monospace; font-size: .9em; }
div.warning { margin: .6rem 0; padding: .5rem .8rem; background: var(--shade); border-left: .3rem solid var(--emptied); }
div.error { color: inherit; border-color: var(--removed); } div.note { border-color: var(--line); }
.warning b { margin-right: .5rem; white-space: nowrap; }
.fleet { table-layout: fixed; font-variant-numeric: tabular-nums; } .fleet td { padding: .35rem .5rem; }
.fleet th { vertical-align: bottom; font-size: .85em; color: var(--dim); } .fleet .number { text-align: right; }
.fleet tbody tr:hover { background: var(--shade); } .fleet div.dim, .fleet div .dim { font-size: .92em; }
.whole { display: inline-block; max-width: 100%; vertical-align: top; white-space: pre-wrap; }
td.name, .chart th { word-break: keep-all; } .wide .whole { max-width: none; white-space: pre; }
.zero { color: var(--dim); } .warnings th:nth-child(1) { width: 11.5em; } .places th:nth-child(2) { width: 38%; }
.warnings th:nth-child(2), .places th:nth-child(1), .forgotten th:nth-child(-n+2) { width: 6em; text-align: right; }
.places th:nth-child(3) { width: 8.5em; } .forgotten th:nth-child(4) { width: 30%; } .phones th:nth-child(1) { width: 7.5em; }
.records th:nth-child(1) { width: 4em; text-align: right; } .records th:nth-child(n+3) { width: 7em; text-align: right; }
.phones th:nth-child(n+3) { width: 7em; text-align: right; }
pre { margin: .4rem 0; padding: .6rem; background: var(--shade); white-space: pre-wrap; overflow-wrap: anywhere;
  font-size: .85em; }
@media (max-width: 40rem) { body { padding: .6rem; font-size: 14px; } th, td { padding: .2rem .3rem; }
  .chart td:nth-child(2) { width: 25%; }
  .fleet, .fleet tbody, .fleet tr, .fleet td { display: block; } .fleet thead { display: none; }
  .fleet tr { padding: .5rem 0; border-bottom: 1px solid var(--line); } .fleet td { padding: .1rem 0; border: 0; }
  .fleet .number { display: inline-block; margin-right: 1em; color: var(--dim); }
  .warnings td:first-child, .phones td:first-child { display: inline-block; margin-right: .6em; } .fleet .zero { display: none; }
  .number::after { content: " " attr(data-of); }
  .records .number:first-child::after { content: none; } .records .number:first-child::before { content: attr(data-of) " "; } }
@page { margin: 14mm; }
@media print { :root { color-scheme: light; --ink: #000; --dim: #444; --line: #999; --paper: #fff; --shade: #fff;
  --added: #000; --changed: #000; --emptied: #000; --removed: #000; --bar: #777; }
  body { max-width: none; padding: 0; font-size: 10pt; } h3 { break-after: avoid; } tr, .warning { break-inside: avoid; }
  h2 { break-after: avoid; } .wide { overflow: visible; } .wide td:not(.name) { overflow-wrap: anywhere; }
  .tiles li { border: 1px solid var(--line); } #endings li { border-width: 1px 1px 1px .3rem; } a { text-decoration: none; }
  .fleet { font-size: 9pt; } .pill { border: 0; padding: 0; min-width: 0; } .fleet td { padding: .2rem .4rem; } }
)css";
