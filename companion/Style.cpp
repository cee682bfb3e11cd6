#include "Style.h"

namespace companion {

const std::string_view kStyle = R"css(:root {
  --paper: #f6f6f3; --card: #ffffff; --ink: #1d1f22; --soft: #64686f; --line: #e3e3dd;
  --accent: #0b6b5d; --well: #ecece6; --shadow: 0 1px 2px rgb(20 20 10 / 8%), 0 12px 32px -8px rgb(20 20 10 / 22%);
}
@media (prefers-color-scheme: dark) {
  :root {
    --paper: #131416; --card: #1c1e21; --ink: #eceef0; --soft: #9aa0a8; --line: #2d3035;
    --accent: #5fd0bb; --well: #24272b; --shadow: 0 0 0 1px #33363b, 0 16px 40px -8px rgb(0 0 0 / 70%);
  }
}
* { box-sizing: border-box; margin: 0; }
html { -webkit-text-size-adjust: 100%; }
body {
  background: var(--paper); color: var(--ink); padding: 0 clamp(1rem, 4vw, 3.5rem) 4rem;
  font: 16px/1.5 -apple-system, BlinkMacSystemFont, "Helvetica Neue", "Segoe UI", Inter, Roboto, "Noto Sans", Arial, sans-serif;
  font-variant-numeric: tabular-nums; -webkit-font-smoothing: antialiased;
}
a { color: var(--accent); text-decoration: none; }
a:hover { text-decoration: underline; }
a:focus-visible { outline: 2px solid var(--accent); outline-offset: 3px; border-radius: 4px; }
.bar, main { max-width: 68rem; margin-inline: auto; }
.bar {
  display: flex; justify-content: space-between; gap: 1rem; padding: 1.25rem 0;
  border-bottom: 1px solid var(--line); color: var(--soft); font-size: .875rem;
}
.eyebrow {
  color: var(--accent); font-size: .75rem; font-weight: 600; letter-spacing: .08em; text-transform: uppercase;
}
h1 {
  font-size: clamp(1.75rem, 1.2rem + 2.4vw, 2.75rem); line-height: 1.12; letter-spacing: -.02em; font-weight: 700;
  margin: .35rem 0 .6rem; overflow-wrap: anywhere;
  display: -webkit-box; -webkit-box-orient: vertical; -webkit-line-clamp: 4; overflow: hidden;
}
h2 { font-size: .8125rem; font-weight: 600; color: var(--soft); margin: 0 0 .35rem; }
.lead {
  font-size: 1.125rem; overflow-wrap: anywhere;
  display: -webkit-box; -webkit-box-orient: vertical; -webkit-line-clamp: 3; overflow: hidden;
}
.when, .inbox .lead { color: var(--soft); }
.none { color: var(--soft); font-style: italic; }
.code {
  background: var(--well); color: var(--soft); border-radius: 4px; padding: .05em .35em; margin: 0 .1em;
  font: .75em/1.4 ui-monospace, "SF Mono", Menlo, "DejaVu Sans Mono", monospace; white-space: nowrap;
}

.report {
  display: grid; grid-template-columns: minmax(0, 20rem) minmax(0, 1fr); gap: clamp(1.5rem, 5vw, 4.5rem);
  padding-top: 2.5rem; align-items: start;
}
.report.wide { grid-template-columns: minmax(0, 1fr); }
.picture { position: sticky; top: 2rem; }
.wide .picture { position: static; }
.picture a { display: block; }
.picture img, .picture video, .picture .missing {
  width: 100%; height: auto; border-radius: 18px; background: var(--card); box-shadow: var(--shadow);
}
.picture img, .picture video { display: block; max-height: 80vh; }
.wide .picture img { width: auto; max-width: 100%; max-height: 32rem; }
.missing {
  display: flex; flex-direction: column; align-items: center; justify-content: center; gap: 1rem;
  color: var(--soft); text-align: center;
}
.picture .missing { aspect-ratio: 9 / 16; max-height: 30rem; padding: 2rem; }
.missing .glyph { font-size: 2.5rem; line-height: 1; opacity: .55; }
.report section { margin-top: 2rem; }
table { width: 100%; border-collapse: collapse; border-top: 1px solid var(--line); table-layout: fixed; }
th, td { padding: .6rem 0; border-bottom: 1px solid var(--line); vertical-align: top; text-align: start; }
th { width: 38%; padding-inline-end: 1rem; font-weight: 400; color: var(--soft); overflow-wrap: anywhere; }
td { overflow-wrap: anywhere; white-space: pre-wrap; }

.inbox { padding-top: clamp(2rem, 6vw, 4rem); }
.inbox section { margin-top: 2.75rem; }
.inbox h2 { border-bottom: 1px solid var(--line); padding-bottom: .5rem; margin-bottom: 1.25rem; }
.cards {
  list-style: none; padding: 0; display: grid; gap: 1.25rem;
  grid-template-columns: repeat(auto-fill, minmax(min(100%, 15rem), 1fr));
}
.card {
  display: flex; flex-direction: column; height: 100%; overflow: hidden; color: inherit;
  background: var(--card); border: 1px solid var(--line); border-radius: 14px; transition: box-shadow .15s;
}
.card:hover { text-decoration: none; box-shadow: var(--shadow); }
.thumb {
  display: flex; align-items: center; justify-content: center; height: 15rem; padding: 1.1rem;
  background: var(--well); border-bottom: 1px solid var(--line);
}
.thumb { position: relative; }
.thumb video { max-width: 100%; max-height: 100%; border-radius: 7px; }
.thumb video + .glyph { position: absolute; font-size: 2rem; color: #fff; text-shadow: 0 0 8px rgb(0 0 0 / 60%); }
.thumb img { max-width: 100%; max-height: 100%; border-radius: 7px; box-shadow: 0 0 0 1px var(--line), 0 4px 14px -4px rgb(0 0 0 / 30%); }
.words { display: flex; flex-direction: column; flex: 1; padding: .85rem 1rem 1rem; font-size: .875rem; color: var(--soft); }
.words > strong, .words > span { overflow: hidden; overflow-wrap: anywhere; display: -webkit-box; -webkit-box-orient: vertical; -webkit-line-clamp: 2; }
.words strong { font-size: 1.0625rem; line-height: 1.3; color: var(--ink); margin-bottom: .2rem; }
.words time { margin-top: auto; padding-top: .6rem; font-size: .8125rem; }

@media (max-width: 44rem) {
  .report { grid-template-columns: minmax(0, 1fr); }
  .picture { position: static; }
  .report:not(.wide) .picture img { max-width: 16rem; }
}
@media print {
  body { background: none; }
  .bar { display: none; }
  .picture { position: static; }
}
)css";

}  // namespace companion
