// How the page looks: light and dark, on screens and on paper.
#pragma once

#include <string_view>

namespace sgn::page {

inline constexpr std::string_view style = R"(
:root {
  color-scheme: light dark;
  --paper: #f6f6f3; --card: #ffffff; --ink: #1b2330; --soft: #5c6675; --rule: #dfe3e8;
  --grid: #e9ecef; --blue: #1f5fbf; --orange: #c0620b; --amber: #94750a; --good: #17784a; --bad: #c22a47;
  --good-back: #e6f3ec; --bad-back: #fbe9ec; --band: #e4ecf8; --bond: #9aa3ae;
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #11151b; --card: #1a2029; --ink: #e7ebf1; --soft: #9ca7b6; --rule: #2e3744;
    --grid: #262e39; --blue: #74aaff; --orange: #f0a055; --amber: #d9b93b; --good: #53c78d; --bad: #ff7088;
    --good-back: #15301f; --bad-back: #3a1a22; --band: #22304a; --bond: #6d7887;
  }
}
* { box-sizing: border-box; }
body { margin: 0; background: var(--paper); color: var(--ink);
  font: 16px/1.5 system-ui, -apple-system, "Segoe UI", Roboto, "Helvetica Neue", sans-serif; }
main { max-width: 1080px; margin: 0 auto; padding: 28px 20px 60px; }
h1 { font-size: 1.75rem; line-height: 1.25; margin: 0; overflow-wrap: anywhere; }
h2 { font-size: 1.15rem; margin: 0 0 4px; }
p { margin: 0 0 12px; max-width: 75ch; }
.over { color: var(--soft); font-size: .85rem; margin: 0 0 10px; overflow-wrap: anywhere; }
.note { color: var(--soft); font-size: .92rem; }
section { background: var(--card); border: 1px solid var(--rule); border-radius: 10px;
  padding: 20px 22px; margin: 18px 0 0; }
.verdict { border-left: 8px solid var(--good); background: var(--good-back); }
.verdict.doubt { border-left-color: var(--bad); background: var(--bad-back); }
.verdict h1 { display: flex; gap: 14px; align-items: flex-start; }
.mark { flex: none; width: 38px; height: 38px; margin-top: 1px; }
.mark .disc { fill: var(--good); } .doubt .mark .disc { fill: var(--bad); }
.mark polyline, .mark line { fill: none; stroke: #fff; stroke-width: 3.4; stroke-linecap: round;
  stroke-linejoin: round; }
.mark .dot { fill: #fff; }
@media (prefers-color-scheme: dark) { .mark polyline, .mark line { stroke: #11151b; }
  .mark .dot { fill: #11151b; } }
.verdict ul { margin: 14px 0 0; padding-left: 20px; overflow-wrap: anywhere; }
.verdict li { margin: 3px 0; }
.facts { display: grid; grid-template-columns: repeat(auto-fit, minmax(150px, 1fr)); gap: 12px;
  margin: 18px 0 0; padding: 0; }
.facts div { background: var(--card); border: 1px solid var(--rule); border-radius: 10px;
  padding: 12px 16px; }
.facts dt { color: var(--soft); font-size: .82rem; }
.facts dd { margin: 0; font-size: 1.35rem; font-weight: 600; font-variant-numeric: tabular-nums; }
.facts small { font-weight: 400; font-size: .82rem; color: var(--soft); }
.two { display: grid; grid-template-columns: minmax(280px, 460px) 1fr; gap: 8px 28px; }
@media (max-width: 760px) { .two { grid-template-columns: 1fr; } section { padding: 16px 14px; }
  h1 { font-size: 1.35rem; } main { padding: 14px 10px 40px; } .aside { display: none; } }
.wide { overflow-x: auto; }
.wide > svg.chart { min-width: 700px; }
.hint { color: var(--soft); font-size: .9rem; }
svg { display: block; width: 100%; height: auto; }
svg text { fill: var(--ink); font-size: 13px; }
svg .small { font-size: 12px; fill: var(--soft); }
svg .strong { fill: var(--ink); font-weight: 600; }
svg .faint { font-style: italic; }
svg .label { font-weight: 600; }
svg .beyond-text { fill: var(--amber); font-weight: 600; }
svg .bad-text { fill: var(--bad); font-weight: 600; }
.panel { fill: none; stroke: var(--rule); }
.grid { stroke: var(--grid); } .zero { stroke: var(--soft); stroke-width: .8; }
.axis { stroke: var(--soft); stroke-width: 1.4; }
.printed-line { fill: none; stroke: var(--orange); stroke-width: 1; opacity: .45; }
.printed { fill: var(--card); stroke: var(--orange); stroke-width: 1.8; }
.jump { stroke: var(--orange); stroke-width: 1.3; stroke-dasharray: 3 3; }
.corrected-line { fill: none; stroke: var(--blue); stroke-width: 1.6; }
.corrected { fill: var(--blue); } .corrected.suspect { fill: var(--bad); }
.suspect-ring { fill: none; stroke: var(--bad); stroke-width: 2; }
.rounding { fill: var(--band); }
.bar { fill: var(--blue); } .bar-bad { fill: var(--bad); }
.bar-beyond { fill: var(--amber); } .bar-mended { fill: var(--good); }
.stick { stroke: var(--blue); stroke-width: 2.4; } .knob { fill: var(--blue); }
.stick.imaginary { stroke: var(--bad); } .knob.imaginary { fill: var(--bad); }
.bond { stroke: var(--bond); stroke-width: 6; stroke-linecap: round; }
.atom { stroke: var(--bond); stroke-width: 1.2; }
.el-h { fill: #d9dee5; } .el-c { fill: #7d8794; } .el-n { fill: #6f8ff0; } .el-o { fill: #ee6b62; }
.el-hal { fill: #63c08b; } .el-s { fill: #e2b33c; } .el-x { fill: #58b7b5; }
svg .atom-name { fill: #10151c; font-size: 14px; font-weight: 600; }
svg .small-name { font-size: 9.5px; }
.dipole { stroke: var(--orange); stroke-width: 3; fill: none; stroke-linecap: round; }
svg .dipole-name { fill: var(--orange); font-size: 19px; font-weight: 700; font-style: italic; }
.legend { display: flex; flex-wrap: wrap; gap: 4px 20px; margin: 0 0 8px; padding: 0;
  list-style: none; font-size: .9rem; color: var(--soft); }
.legend svg { display: inline-block; width: 26px; height: 14px; vertical-align: -2px;
  margin-right: 6px; }
table { border-collapse: collapse; width: 100%; font-size: .92rem;
  font-variant-numeric: tabular-nums; }
th, td { text-align: left; padding: 5px 12px 5px 0; border-bottom: 1px solid var(--rule);
  vertical-align: top; }
th { color: var(--soft); font-weight: 600; font-size: .82rem; }
td.n, th.n { text-align: right; white-space: nowrap; }
td.kept { white-space: nowrap; }
td.verdicts { min-width: 12em; }
.warning { color: var(--bad); font-weight: 600; }
.facts .bad { color: var(--bad); }
td.name { overflow-wrap: anywhere; min-width: 9em; }
.fine { color: var(--good); } .doubtful { color: var(--bad); font-weight: 600; }
.turned { color: var(--orange); font-weight: 600; }
tbody tr:last-child td { border-bottom: 0; }
details summary { cursor: pointer; color: var(--blue); margin: 8px 0; }
footer { color: var(--soft); font-size: .82rem; margin: 22px 2px 0; overflow-wrap: anywhere; }
@media print {
  :root { color-scheme: light;
    --paper: #fff; --card: #fff; --ink: #000; --soft: #444; --rule: #bbb; --grid: #ddd;
    --blue: #1f5fbf; --orange: #b35600; --amber: #7d6200; --good: #17784a; --bad: #b01c3a; --good-back: #fff;
    --bad-back: #fff; --band: #e2e9f5; --bond: #8a929c; }
  .mark polyline, .mark line { stroke: #fff; } .mark .dot { fill: #fff; }
  * { print-color-adjust: exact; -webkit-print-color-adjust: exact; }
  @page { margin: 14mm; }
  body { font-size: 10.5pt; } main { padding: 0; max-width: none; }
  section { padding: 10pt 12pt; margin-top: 10pt; break-inside: avoid; }
  section.long { break-inside: auto; }
  .two { grid-template-columns: 46% 1fr; }
  .wide { overflow: visible; } .wide > svg.chart { min-width: 0; }
  table { font-size: .8rem; } th, td { padding: 3px 8px 3px 0; } .molecule { max-width: 300px; }
  tr { break-inside: avoid; } thead { display: table-header-group; }
  details:not([open]) { display: none; }
  .hint { display: none; }
}
)";

}  // namespace sgn::page
