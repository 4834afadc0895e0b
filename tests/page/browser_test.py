#!/usr/bin/python3
"""browser_test.py DEVICE BUILD: the page of a recording in a real browser: opened, searched, clicked, by keyboard,
narrow and dark, with a thousand commands; no complaint of the browser's, nothing asked for from outside."""

import json
import os
import re
import subprocess
import sys
import tempfile
from pathlib import Path

from selenium import webdriver
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

DEVICE, BUILD = map(os.path.abspath, sys.argv[1:3])
HOSTILE = "</script><img src=x onerror=alert(1)>"
SCRIPT = f"""
adduser zoe NEUzOiQxJGEkYg== zoe@example.com --as bob
adduser zoe NEUzOiQxJGEkYg== zoe@example.com --as alice --log-level 7
updateuser zoe NEUzOiQxJGEkYg== zoe@home.example zoe-p2p --as alice --log-level 7
deleteuser '{HOSTILE}' '<b>' --as alice
initlocalsession bob token-1 1 --as bob
"""
failures = 0


def check(what, expected, actual):
    global failures
    if expected != actual:
        failures += 1
        print(f"{what}: expected\n{expected}\ngot\n{actual}")


def record(folder):
    (folder / "script").write_text(SCRIPT)
    subprocess.run([DEVICE, "--quiet", "--build", BUILD, "--", "broker", "script", folder / "script",
                    "--record", folder / "morning.jsonl"], check=False, stdout=subprocess.DEVNULL)
    return (folder / "morning.jsonl").read_text()


def page_of(folder, name, recording):
    source, page = folder / f"{name}.jsonl", folder / f"{name}.html"
    source.write_text(recording)
    subprocess.run([f"{BUILD}/broker", "story", source, "--output", page], check=True)
    return page


def many(recording, processes):
    """The same commands by that many processes."""
    head, *lines = recording.splitlines()
    return "\n".join([head, *(re.sub(r'"pid":\d+', f'"pid":{pid}', line) for pid in range(1, processes + 1)
                              for line in lines)]) + "\n"


class Browser:
    def __init__(self, folder):
        options = webdriver.ChromeOptions()
        for argument in ("--headless=new", "--no-sandbox", "--disable-gpu", "--disable-dev-shm-usage",
                         f"--user-data-dir={folder}/profile"):
            options.add_argument(argument)
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(options=options, service=Service("/usr/bin/chromedriver"))

    def __enter__(self):
        return self

    def __exit__(self, *_):
        self.driver.quit()

    def open(self, page, width=1400, dark=False):
        self.driver.execute_cdp_cmd("Emulation.setDeviceMetricsOverride",
                                    {"width": width, "height": 900, "deviceScaleFactor": 1, "mobile": False})
        self.driver.execute_cdp_cmd("Emulation.setEmulatedMedia", {"features": [
            {"name": "prefers-color-scheme", "value": "dark" if dark else "light"}]})
        self.driver.get("about:blank")
        self.driver.get(f"file://{page}")

    def all(self, selector):
        return self.driver.find_elements(By.CSS_SELECTOR, selector)

    def text(self, selector):
        return self.all(selector)[0].text

    def run(self, script):
        return self.driver.execute_script("return " + script)

    def press(self, *keys):
        self.driver.switch_to.active_element.send_keys(*keys)

    def shown(self):
        return [found.text.split("\n")[0] for found in self.all("#list li") if found.is_displayed()]

    def search(self, words):
        box = self.all("#search")[0]
        box.send_keys(Keys.CONTROL, "a")
        box.send_keys(Keys.BACKSPACE, words)

    def complaints(self):
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def asked_for(self):
        """What the browser loaded, but for the pages themselves."""
        events = [json.loads(entry["message"])["message"] for entry in self.driver.get_log("performance")]
        urls = [event["params"]["request"]["url"] for event in events if event["method"] == "Network.requestWillBeSent"]
        return [url for url in urls if not url.startswith(("about:", "chrome:", "data:"))  # its own first page
                and not re.fullmatch(r"file:///[^?]*\.html(#.*)?", url)]


def look(browser, page):
    browser.open(page)
    check("the list", ["1. adduser zoe", "2. adduser zoe", "3. updateuser zoe", f"4. deleteuser {HOSTILE}",
                       "5. initlocalsession bob"], browser.shown())
    check("the summary", "morning.jsonl: 5 commands, 2 failed", browser.text("#summary"))
    check("the answers", ['✕ CODE_FAILED, "operation unknown"', '✓ CODE_SUCCEED, "success"'],
          [browser.run(f"getComputedStyle(document.querySelectorAll('#list button div')[{n}], '::before').content")
           .strip('"') + browser.all("#list button div")[n].text for n in (0, 1)])
    check("markup stays text", 0, len(browser.all("img")))


def read_command(browser):
    browser.all("#list button")[1].click()
    check("the title", "2. adduser", browser.text("#command h2"))
    words = [found.text.lstrip("▸▾ ") for found in browser.all("#sequence .words")]
    check("arrows", ["adduser zoe, as alice", "execute", "query User_Collection zoe", "success, N ms", "add User zoe",
                     "success, N ms", "changes: account, passwd", 'CODE_SUCCEED, "success"', 'CODE_SUCCEED, "success"'],
          [re.sub(r"[\d.]+ ms", "N ms", word) for word in words])
    notes = [found.text.split("\n") for found in browser.all("#sequence .note")]
    check("a statement with its meaning", ["DEBUG, adduser.cpp:1311", "[syscmd:AddAccountHandler] :AddUser zoe success",
                                           "the account was added."], notes[-1])
    check("accounts", "+ 1005 zoe sky-hold locked zoe@example.com", browser.text("#accounts .came"))
    arrow = browser.all("#sequence .arrow[aria-expanded]")[2]
    arrow.click()
    panel = browser.all("#sequence .panel pre")[0].get_attribute("textContent")
    check("a transaction, laid out", True, "\n          <User_Name><![CDATA[zoe]]></User_Name>\n" in panel)
    check("no password in it", True, "<SmbHash><![CDATA[REDACTED]]></SmbHash>" in panel)
    arrow.click()
    check("and closed", False, browser.all("#sequence .panel")[0].is_displayed())


def differs(browser):
    browser.run("show(2, false)")
    browser.all("#sequence .arrow[aria-expanded]")[0].click()
    check("what differs from the last", ["<![CDATA[zoe@home.example]]>"],
          [re.sub(r".*<xs:value>|</xs:value>.*", "", found.text.strip()) for found in browser.all("#sequence .panel .new")])


def search(browser):
    browser.open(browser.driver.current_url.split("#")[0].removeprefix("file://"))
    for words, expected in (("ZOE home.example", 1), ("token-1", 1), ("is_owner=1", 3), ("<img", 1), ("nowhere", 0), ("", 5)):
        browser.search(words)
        check(f"found by {words!r}", expected, len(browser.shown()))
    browser.search("x")
    browser.press(Keys.ESCAPE)
    check("Escape ends a search", 5, len(browser.shown()))
    browser.all("#failed")[0].click()
    check("only those that failed", ["1. adduser zoe", f"4. deleteuser {HOSTILE}"], browser.shown())
    browser.run("document.getElementById('command').focus()")
    browser.press(Keys.ARROW_DOWN)
    check("the next of them", "4. deleteuser", browser.text("#command h2"))
    browser.press("o")
    check("all transactions open", {"true"}, {found.get_attribute("aria-expanded")
                                              for found in browser.all("#sequence .arrow[aria-expanded]")})
    browser.press("k")
    check("the one before", "1. adduser", browser.text("#command h2"))
    browser.press("/")
    check("the search by key", "search", browser.driver.switch_to.active_element.get_attribute("id"))


def widths_and_colours(browser, page):
    for width, dark in ((400, False), (1400, False), (400, True), (1400, True)):
        browser.open(f"{page}#2", width, dark)
        name = f"{width} pixels, {'dark' if dark else 'light'}"
        check(f"{name}: nothing beside the page", True, browser.run("document.documentElement.scrollWidth <= innerWidth"))
        paper = [int(part) for part in re.findall(r"\d+", browser.run("getComputedStyle(document.body).backgroundColor"))]
        ink = [int(part) for part in re.findall(r"\d+", browser.run("getComputedStyle(document.body).color"))]
        check(f"{name}: light on dark", dark, sum(paper) < sum(ink))


def thousand(browser, folder, recording):
    page = page_of(folder, "thousand", many(recording, 200))
    check("its size is below 5 MB", True, page.stat().st_size < 5_000_000)
    browser.open(f"{page}#1000")
    check("1,000 commands", 1000, len(browser.all("#list li")))
    check("the last one", "1000. initlocalsession", browser.text("#command h2"))
    browser.search("home.example")
    check("found among them", 200, browser.run("[...document.querySelectorAll('#list li')].filter((li) => !li.hidden).length"))


with tempfile.TemporaryDirectory() as name:
    work = Path(name)
    recording = record(work)
    morning = page_of(work, "morning", recording)
    with Browser(work) as browser:
        look(browser, morning)
        read_command(browser)
        differs(browser)
        search(browser)
        widths_and_colours(browser, morning)
        thousand(browser, work, recording)
        check("the browser's complaints", [], browser.complaints())
        check("asked for from outside", [], browser.asked_for())
sys.exit(failures > 0)
