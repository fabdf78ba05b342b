// SPDX-FileCopyrightText: 2026 The kestrune authors
// SPDX-License-Identifier: MIT

#pragma once

/// The style of the page: dark on a dark screen, black on white on paper. The first column of a table never breaks; a table
/// that is too wide for the screen scrolls.
constexpr char kPageStyle[] = R"css(
:root { color-scheme: light dark; --ink: #1d2733; --dim: #66717e; --line: #d8dee5; --paper: #fff; --shade: #f4f6f8;
  --added: #1a7f4b; --changed: #0b66a8; --emptied: #9a6a00; --removed: #b3261e; --bar: #4a90c4; }
@media (prefers-color-scheme: dark) { :root { --ink: #dde3ea; --dim: #93a0ad; --line: #36414d; --paper: #161c23;
  --shade: #1f272f; --added: #5cc48d; --changed: #6bb5ec; --emptied: #e0b040; --removed: #f28b82; --bar: #3b78a6; } }
* { box-sizing: border-box; }
body { margin: 0 auto; padding: 1rem; max-width: 62rem; background: var(--paper); color: var(--ink);
  font: 15px/1.45 system-ui, sans-serif; }
h1 { font-size: 1.5rem; margin: 0 0 .5rem; } h2 { font-size: 1.2rem; margin: 2rem 0 .5rem; }
h3 { font-size: 1rem; margin: 1.4rem 0 .3rem; overflow-wrap: anywhere; }
.dim, .pass { color: var(--dim); font-weight: normal; } .pass { font-size: .85em; }
.added { color: var(--added); } .changed { color: var(--changed); } .emptied { color: var(--emptied); }
.removed { color: var(--removed); } .error { color: var(--removed); }
.tiles { display: flex; flex-wrap: wrap; gap: .6rem; margin: 1rem 0; padding: 0; list-style: none; }
.tiles li { flex: 1 1 9rem; padding: .6rem .8rem; background: var(--shade); border-radius: .4rem; }
.tiles b { display: block; font-size: 1.4rem; }
.chart { max-width: 46rem; margin: 1rem 0; } .chart caption { font-weight: 600; text-align: left; }
.chart th, .chart td { padding: .1rem .4rem; border: 0; background: none; vertical-align: middle; }
.chart th { font-weight: normal; text-align: right; overflow-wrap: anywhere; }
.chart td:nth-child(2) { width: 50%; } .chart svg { display: block; width: 100%; height: .9em; fill: var(--bar); }
.wide { overflow-x: auto; } table { border-collapse: collapse; width: 100%; }
th, td { padding: .2rem .5rem; text-align: left; vertical-align: top; border-bottom: 1px solid var(--line);
  overflow-wrap: break-word; }
td:first-child { white-space: nowrap; }
th { font-weight: 600; background: var(--shade); } td.name { font-family: ui-monospace, monospace; font-size: .9em; }
.warning { margin: .6rem 0; padding: .5rem .8rem; background: var(--shade); border-left: .3rem solid var(--emptied); }
.warning.error { color: inherit; border-color: var(--removed); } .warning.note { border-color: var(--line); }
.warning b { margin-right: .5rem; }
pre { margin: .4rem 0; padding: .6rem; background: var(--shade); white-space: pre-wrap; overflow-wrap: anywhere;
  font-size: .85em; }
@media (max-width: 40rem) { body { padding: .6rem; font-size: 14px; } th, td { padding: .2rem .3rem; }
  .chart td:nth-child(2) { width: 25%; } }
@media print { :root { color-scheme: light; --ink: #000; --dim: #444; --line: #999; --paper: #fff; --shade: #fff;
  --added: #000; --changed: #000; --emptied: #000; --removed: #000; --bar: #777; }
  body { max-width: none; padding: 0; font-size: 10pt; } h3 { break-after: avoid; } tr, .warning { break-inside: avoid; }
  .wide { overflow: visible; } td { overflow-wrap: anywhere; } }
)css";
