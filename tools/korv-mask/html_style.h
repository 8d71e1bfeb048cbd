// The style sheet of the page that html_page.cpp writes.
#pragma once

#include <string_view>

namespace tool {

// The colours of text and background have a contrast of 4.5 or more in both schemes. Bars are drawn
// pictures, because browsers do not print backgrounds.
inline constexpr std::string_view kHtmlStyle = R"(
:root { color-scheme: light dark; --page: #f6f7f9; --card: #fff; --text: #1b2330; --soft: #566172;
  --line: #dde1e7; --masked: #2b6fb3; --clear: #d08700; --failed: #c2362b; --empty: #c3c9d2;
  --good: #1f7a4d; --warn: #8a5a00; --bad: #b02a20; }
@media (prefers-color-scheme: dark) { :root { --page: #14181f; --card: #1d232d; --text: #e6eaf0;
  --soft: #a3adbb; --line: #343d4a; --masked: #5fa3e6; --clear: #e0a030; --failed: #ee6a5f;
  --empty: #4c5665; --good: #5cc98f; --warn: #e3b04b; --bad: #f58a80; } }
* { box-sizing: border-box; }
body { margin: 0 auto; max-width: 62rem; padding: 1.5rem 1rem 3rem; background: var(--page);
  color: var(--text); font: 1rem/1.5 system-ui, sans-serif; overflow-wrap: anywhere; }
h1 { margin: 0; font-size: 1.6rem; line-height: 1.25; }
h2 { margin: 2rem 0 .6rem; font-size: 1.2rem; }
p { margin: .3rem 0; }
.soft, footer { color: var(--soft); }
.status { display: inline-block; margin: .8rem 0; padding: .3rem .8rem; border: 1px solid;
  border-radius: .4rem; background: var(--card); font-weight: 600; }
.good { color: var(--good); } .warn { color: var(--warn); } .bad { color: var(--bad); }
.figures { display: grid; grid-template-columns: repeat(auto-fit, minmax(9rem, 1fr)); gap: .6rem;
  margin: .4rem 0 0; }
.figures div { padding: .6rem .8rem; border: 1px solid var(--line); border-radius: .4rem;
  background: var(--card); }
dt { color: var(--soft); font-size: .875rem; }
dd { margin: 0; font-size: 1.35rem; font-variant-numeric: tabular-nums; }
table { width: 100%; border-collapse: collapse; border: 1px solid var(--line);
  background: var(--card); }
caption { padding-bottom: .4rem; color: var(--soft); font-size: .875rem; text-align: left; }
th, td { padding: .5rem .8rem; border-top: 1px solid var(--line); text-align: left;
  vertical-align: top; }
thead th { color: var(--soft); font-size: .875rem; font-weight: 600; }
tr { break-inside: avoid; }
.c1 { width: 26%; } .c2 { width: 28%; } .half { width: 50%; }
.action { font-weight: 600; }
.small { display: block; color: var(--soft); font-size: .875rem; font-weight: 400; }
.bar { background: var(--page);
  display: block; width: 100%; height: .7rem; margin: .35rem 0; border-radius: .2rem; }
.masked { fill: var(--masked); } .clear { fill: var(--clear); } .failed { fill: var(--failed); }
.empty { fill: var(--empty); }
.counts { display: flex; flex-wrap: wrap; gap: 0 1rem; margin: 0; padding: 0; list-style: none;
  font-size: .875rem; font-variant-numeric: tabular-nums; }
.key { width: .7em; height: .7em; margin-right: .35em; }
.group { background: var(--page); }
code { font: .9rem/1.5 ui-monospace, monospace; white-space: pre-wrap; }
footer { margin-top: 2rem; font-size: .875rem; }
@media (max-width: 40rem) {
  body { padding: 1rem .7rem 2rem; }
  .stack thead { position: absolute; width: 1px; height: 1px; overflow: hidden;
    clip-path: inset(50%); }
  .stack, .stack tbody, .stack tr, .stack th, .stack td { display: block; width: auto; }
  .stack caption { display: block; padding: .4rem .8rem; }
  .stack th, .stack td { padding: .15rem .8rem; border: 0; }
  .stack tr { padding: .5rem 0; border-top: 1px solid var(--line); }
}
@media print {
  :root { --page: #fff; --card: #fff; --text: #000; --soft: #333; --line: #888; }
  body { max-width: none; padding: 0; font-size: 10pt; }
}
)";

}  // namespace tool
