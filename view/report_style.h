// The fixed parts of a page: its styles and its script.
#pragma once

namespace vexa {

// Colours of screens in daylight and at night, and of paper. The classes of drawings are those of svg.h.
inline constexpr const char* kReportStyle = R"(
:root{color-scheme:light dark;--ink:#1b1f24;--page:#fff;--soft:#f1f3f6;--line:#c4cad2;--faint:#8a939e;--link:#0b57a4;--bad:#c8102e;--fec:62%;--lnb:48%}
@media screen and (prefers-color-scheme:dark){:root{--ink:#e3e6ea;--page:#17191c;--soft:#24282d;--line:#444b54;--faint:#828b96;--link:#7db4ee;--bad:#ff5a6e;--fec:55%;--lnb:60%}}
body{font:15px/1.45 "Segoe UI",Tahoma,"DejaVu Sans",sans-serif;color:var(--ink);background:var(--page);max-width:75em;margin:0 auto;padding:0 1.2em 3em}
h1{font-size:1.7em}h2{font-size:1.25em;margin-top:2em;border-bottom:1px solid var(--line)}h3{font-size:1em;margin:1.2em 0 .2em}
a{color:var(--link)}
nav a{margin-right:1em}
dl{display:flex;flex-wrap:wrap;gap:.6em}dl div{background:var(--soft);border-radius:6px;padding:.4em .9em}dt{font-size:.85em}dd{margin:0;font-size:1.3em}
figure{margin:0 0 1em;break-inside:avoid}
svg{width:100%;height:auto;font-size:11px;display:block}
svg.defs{width:0;height:0;position:absolute}
svg text{fill:var(--ink)}svg line{stroke:var(--ink)}svg circle{stroke:var(--page);stroke-width:.6}svg circle:not([class]){fill:var(--faint)}
svg .g{stroke:var(--line)}svg .e{stroke:var(--faint);stroke-dasharray:4 3}svg rect.r{fill:var(--faint)}
svg .b{fill:var(--soft);stroke:var(--line)}svg rect{stroke:var(--page);stroke-width:.4}svg rect.x{fill:url(#hatch);stroke:var(--bad);stroke-width:1;pointer-events:none}
#hatch path{stroke:var(--bad);stroke-width:2}
.key{display:flex;flex-wrap:wrap;gap:.2em 1.2em;list-style:none;padding:0;font-size:.9em}.key svg{display:inline-block;width:1em;height:1em;vertical-align:-.1em;margin-right:.4em}
.wide{overflow-x:auto}
table{border-collapse:collapse;font-size:.9em;width:100%}th,td{text-align:left;padding:.15em .6em;border-bottom:1px solid var(--line)}
th{background:var(--soft);position:sticky;top:0}th button{font:inherit;font-weight:bold;color:inherit;background:none;border:0;padding:0;cursor:pointer;text-align:left}
th[aria-sort=ascending] button::after{content:" \25B2"}th[aria-sort=descending] button::after{content:" \25BC"}
.find{position:sticky;top:0;z-index:1;background:var(--page);padding:.5em 0}.find input{font:inherit;width:20em;max-width:100%}
@media print{body{font-size:9.5pt;max-width:none;padding:0}.find,nav{display:none}.wide{overflow:visible}h2,h3{break-after:avoid}tr{break-inside:avoid}thead{display:table-header-group}th{position:static}*{print-color-adjust:exact;-webkit-print-color-adjust:exact}}
)";

// A click on a head sorts the table by that column, a second one the other way; the search field hides the
// rows that do not hold its text. Rows are taken out of the page before they are put into their new order.
inline constexpr const char* kReportScript = R"(
'use strict';
(() => {
  const collator = new Intl.Collator(undefined, {numeric: true, sensitivity: 'base'});
  const lists = [...document.querySelectorAll('table.list')].map(table => {
    const body = table.tBodies[0], heads = [...table.tHead.rows[0].cells];
    const rows = [...body.rows];
    heads.forEach((head, column) => {
      const button = document.createElement('button');
      button.type = 'button';
      button.textContent = head.textContent;
      head.replaceChildren(button);
      button.addEventListener('click', () => {
        const up = head.getAttribute('aria-sort') !== 'ascending';
        for (const other of heads) other.removeAttribute('aria-sort');
        head.setAttribute('aria-sort', up ? 'ascending' : 'descending');
        const keyed = rows.map(row => [row.cells[column].textContent, row]);
        keyed.sort((a, b) => up ? collator.compare(a[0], b[0]) : collator.compare(b[0], a[0]));
        body.replaceChildren();
        const all = document.createDocumentFragment();
        for (const [, row] of keyed) all.append(row);
        body.append(all);
      });
    });
    return {rows, texts: null, count: table.closest('section').querySelector('.count')};
  });
  const field = document.getElementById('search');
  let timer = 0;
  const search = () => {
    const wanted = field.value.trim().toLowerCase();
    for (const list of lists) {
      list.texts = list.texts || list.rows.map(row => [...row.cells].map(cell => cell.textContent).join(' ').toLowerCase());
      let shown = 0;
      list.rows.forEach((row, i) => {
        row.hidden = !list.texts[i].includes(wanted);
        if (!row.hidden) ++shown;
      });
      list.count.textContent = shown === list.rows.length ? String(shown) : shown + ' of ' + list.rows.length;
    }
  };
  field.addEventListener('input', () => { clearTimeout(timer); timer = setTimeout(search, 150); });
})();
)";

}  // namespace vexa
