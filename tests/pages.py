#!/usr/bin/env python3
"""Opens the pages that the program writes in a browser: pages.py VEXA BROWSER.

A script behind the page's own uses it as a person would, clicks and types, and leaves what it saw as JSON. Prints what
is wrong; the status is 1 then.
"""
import html
import json
import os
import re
import subprocess
import sys
import tempfile

vexa, browser = os.path.abspath(sys.argv[1]), sys.argv[2]
root = os.path.dirname(os.path.dirname(os.path.abspath(__file__)))
folder = tempfile.TemporaryDirectory()
failures = []

TRACE = """\
    0.000      -- connected
    0.500 PC>  02 44 46 55 20 0A                                .DFU .
    0.510 STB> 06                                               .
"""


def path(name):
    return os.path.join(folder.name, name)


def run(*words):
    done = subprocess.run([vexa, *words], capture_output=True, text=True, check=False)
    if done.returncode != 0:
        sys.exit(f"vexa {' '.join(words)}: {done.stderr}")
    return done.stdout


def expect(what, right):
    if not right:
        failures.append(what)


def seen(page, script):
    """What the script hands to `tell`, once the page has been shown for some seconds of its own time."""
    with open(path(page), encoding="utf-8") as file:
        text = file.read()
    expect(f"{page}: loads nothing", not re.search(r"""(src|href)=["']?(https?:|//|file:)""", text))
    begin = """<script>
      const faults = [], tell = seen => {
        const shown = document.createElement('pre');
        shown.id = 'seen';
        shown.textContent = JSON.stringify({...seen, faults});
        document.body.replaceChildren(shown);
      };
      addEventListener('error', event => faults.push(event.message));
      addEventListener('securitypolicyviolation', event => faults.push(event.violatedDirective));
      </script>"""
    text = text.replace("<head>", "<head>" + begin, 1).replace("</body>", f"<script>{script}</script></body>", 1)
    with open(path("tried.html"), "w", encoding="utf-8") as file:
        file.write(text)
    done = subprocess.run(
        [browser, "--headless", "--no-sandbox", "--disable-gpu", "--virtual-time-budget=5000",
         f"--user-data-dir={path('profile')}", "--dump-dom", "file://" + path("tried.html")],
        capture_output=True, text=True, timeout=120, check=False)
    told = re.search(r'<pre id="seen">(.*?)</pre>', done.stdout, re.S)
    if not told:
        sys.exit(f"{page}: the browser shows nothing: {done.stderr[-500:]}")
    result = json.loads(html.unescape(told.group(1)))
    expect(f"{page}: faults {result['faults']}", not result["faults"])
    return result


def report():
    run("import", os.path.join(root, "data/sample.sdx"), "-o", path("a.bin"))
    run("export", path("a.bin"), "-o", path("a.html"), "--format", "html")
    run("export", path("a.bin"), "-o", path("a.json"), "--format", "json")
    with open(path("a.json"), encoding="utf-8") as file:
        satellites = json.load(file)["satellites"]
    carriers = [carrier for satellite in satellites for carrier in satellite["carriers"]]
    result = seen("a.html", """
      const table = document.querySelector('#carriers table'), head = name => [...table.tHead.rows[0].cells].findIndex(
        cell => cell.textContent.includes(name));
      const column = head('MHz') < 0 ? head('Frequency') : head('MHz');
      const cells = () => [...table.tBodies[0].rows].map(row => parseInt(row.cells[column].textContent));
      const click = () => table.tHead.rows[0].cells[column].querySelector('button').click();
      click(); const up = cells();
      click(); const down = cells();
      const field = document.getElementById('search');
      field.value = 'hot BIRD'; field.dispatchEvent(new Event('input'));
      const anchors = [...document.querySelectorAll('a[href^="#"]')].filter(
        link => !document.getElementById(link.getAttribute('href').slice(1))).map(link => link.href);
      const plans = document.querySelectorAll('#plans svg[role=img]').length;
      const box = document.querySelector('#orbit svg').getBoundingClientRect();
      setTimeout(() => tell({up, down, anchors, plans, wide: box.width, page: document.documentElement.scrollWidth,
        shown: [...document.querySelectorAll('#satellites tbody tr')].filter(row => row.offsetParent).map(
          row => row.textContent), window: innerWidth}), 1000);""")
    frequencies = sorted(carrier["frequency"] for carrier in carriers)
    expect(f"carriers by frequency: {result['up'][:5]}", result["up"] == frequencies)
    expect("carriers by falling frequency", result["down"] == frequencies[::-1])
    expect(f"links that lead nowhere: {result['anchors']}", not result["anchors"])
    expect(f"a plan for each satellite with carriers: {result['plans']}",
           result["plans"] == sum(1 for satellite in satellites if satellite["carriers"]))
    expect("the orbit is as wide as the page", result["wide"] > result["window"] / 2)
    expect("nothing goes beyond the right edge", result["page"] <= result["window"])
    expect(f"satellites found: {result['shown']}",
           len(result["shown"]) == sum(1 for satellite in satellites if "hot bird" in satellite["name"].lower()) > 0)


def trace():
    with open(path("a.trace"), "w", encoding="utf-8") as file:
        file.write(TRACE)
    with open(path("t.html"), "w", encoding="utf-8") as file:
        file.write(run("trace", "show", path("a.trace"), "--format", "html"))
    result = seen("t.html", """
      document.querySelector('svg a').dispatchEvent(new MouseEvent('click', {bubbles: true, cancelable: true}));
      document.querySelector('details summary').click();
      setTimeout(() => tell({hash: location.hash, bytes: document.querySelector('details pre').offsetHeight,
        target: document.querySelector(':target') !== null}), 500);""")
    expect(f"a click on the line goes to its row: {result}", result["hash"].startswith("#s") and result["target"])
    expect("the bytes open", result["bytes"] > 0)


report()
trace()
for failure in failures:
    print(failure)
sys.exit(1 if failures else 0)
