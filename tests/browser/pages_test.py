#!/usr/bin/env python3
# SPDX-License-Identifier: MIT
# Copyright (c) 2026 the Wren developers
"""The web pages of wren-printer-app in Chromium.

pages_test.py PROGRAM PREVIEW SOURCE [--pictures FOLDER]

PROGRAM is wren-printer-app and PREVIEW wren-preview; SOURCE is the checkout. With --pictures, takes
the screenshots for docs/pictures and tests nothing.
"""

import argparse
import os
import pathlib
import subprocess
import sys
import tempfile
import unittest

from selenium import webdriver
from selenium.common.exceptions import StaleElementReferenceException
from selenium.webdriver.chrome.service import Service
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys
from selenium.webdriver.support.ui import Select, WebDriverWait

# Long: a test must not depend on a quiet machine.
PATIENCE = 60
DESK = (1280, 1000)
PHONE = (390, 844)
PAGES = ("halftone", "paper", "printer")

# The pixels of a picture of the page, "#" for black and "." for the rest, row by row.
PIXELS = """
const picture = arguments[0], done = arguments[1];
const canvas = document.createElement("canvas");
canvas.width = picture.naturalWidth;
canvas.height = picture.naturalHeight;
const context = canvas.getContext("2d");
context.drawImage(picture, 0, 0);
const {data} = context.getImageData(0, 0, canvas.width, canvas.height);
let text = "";
for (let i = 0; i < data.length; i += 4) text += data[i] < 128 ? "#" : ".";
done([canvas.width, canvas.height, text]);
"""

arguments = None


class RunningApp:
    """wren-printer-app with a software printer, in a folder of its own."""

    def __init__(self):
        self.folder = tempfile.TemporaryDirectory()
        self.path = pathlib.Path(self.folder.name)
        environment = dict(os.environ, TMPDIR=self.folder.name, TZ="UTC")
        self.process = subprocess.Popen(
            [arguments.program, "trial", "--directory", self.folder.name],
            stdout=subprocess.PIPE, stderr=subprocess.DEVNULL, text=True, env=environment)
        self.process.stdout.readline()
        self.address = self.process.stdout.readline().strip()

    def page(self, name):
        return f"{self.address}wren/{name}"

    def papers(self):
        """The bytes of each connection whose picture is complete."""
        return [path.with_suffix(".prn") for path in sorted(self.path.glob("*.png"))]

    def stop(self):
        self.process.terminate()
        self.process.wait()
        self.process.stdout.close()
        self.folder.cleanup()


def start_browser(size, language="en", script=True):
    options = webdriver.ChromeOptions()
    for switch in ("--headless=new", "--no-sandbox", "--disable-dev-shm-usage",
                   f"--window-size={size[0]},{size[1]}"):
        options.add_argument(switch)
    options.add_experimental_option("prefs", {
        "intl.accept_languages": language,
        "profile.managed_default_content_settings.javascript": 1 if script else 2})
    browser = webdriver.Chrome(service=Service("/usr/bin/chromedriver"), options=options)
    browser.execute_cdp_cmd("Emulation.setDeviceMetricsOverride", {
        "width": size[0], "height": size[1], "deviceScaleFactor": 1, "mobile": size == PHONE})
    browser.set_script_timeout(PATIENCE)
    return browser


class PagesTest(unittest.TestCase):
    size = DESK
    language = "en"
    script = True

    def setUp(self):
        self.app = RunningApp()
        self.addCleanup(self.app.stop)
        self.browser = start_browser(self.size, self.language, self.script)
        self.addCleanup(self.browser.quit)

    def find(self, selector):
        return self.browser.find_element(By.CSS_SELECTOR, selector)

    def wait(self, done):
        # An element may belong to the page that a form's answer is just replacing.
        return WebDriverWait(self.browser, PATIENCE, 0.05,
                             [StaleElementReferenceException]).until(done)

    def drawn(self):
        return int(self.find("#halftone").get_attribute("data-drawn") or 0)

    def open_document(self, file):
        before = self.drawn()
        self.find("input[type=file]").send_keys(str(pathlib.Path(arguments.source) / file))
        self.wait(lambda _: self.drawn() > before)
        self.assertEqual(self.find("#wrong").text, "")

    def card(self, method):
        return self.find(f".card[data-method={method}]")

    def pixels(self, picture):
        return self.browser.execute_async_script(PIXELS, picture)

    def printed_pixels(self, bytes_file):
        """What wren-preview makes of printer bytes, drawn by the browser."""
        picture = bytes_file.with_suffix(".drawn.png")
        subprocess.run([arguments.preview, bytes_file, "-o", picture], check=True,
                       stdout=subprocess.DEVNULL)
        self.browser.get(picture.as_uri())
        return self.pixels(self.find("img"))

    def print_and_compare(self, method):
        shown = self.pixels(self.card(method).find_element(By.TAG_NAME, "img"))
        self.card(method).find_element(By.CSS_SELECTOR, ".print").click()
        self.wait(lambda _: len(self.app.papers()) == 1)
        self.assertIn("as job 1", self.find("#said").text)
        self.assertEqual(self.printed_pixels(self.app.papers()[0]), shown)

    def test_prints_the_picture_that_is_shown(self):
        self.browser.get(self.app.page("halftone"))
        self.open_document("examples/photo.png")
        before = self.drawn()
        slider = self.find("input[name=brightness]")
        slider.send_keys(Keys.ARROW_RIGHT)
        self.find("input[name=contrast]").send_keys(Keys.ARROW_LEFT * 3)
        self.wait(lambda _: self.drawn() > before and
                  self.find("#said").text == "All nine are drawn.")
        self.print_and_compare("stucki")

    def test_shows_a_pdf_and_makes_a_method_the_default(self):
        self.browser.get(self.app.page("halftone"))
        self.open_document("examples/receipt.pdf")
        self.card("stencil").find_element(By.NAME, "halftone-type").click()
        self.wait(lambda _: self.find("#said").text.startswith("Saved.") or
                  self.find("#wrong").text)
        self.assertEqual(self.find("#wrong").text, "")
        self.assertTrue(self.card("stencil").find_element(By.CSS_SELECTOR, ".mark").is_displayed())
        self.browser.get(f"{self.app.address}wren/printing")
        chosen = Select(self.find("select[name=halftone-type]")).first_selected_option
        self.assertEqual(chosen.get_attribute("value"), "stencil")

    def test_magnifies_all_nine_at_the_same_place(self):
        self.browser.get(self.app.page("halftone"))
        self.open_document("examples/drawing.png")
        self.card("burkes").find_element(By.CSS_SELECTOR, ".view").click()
        views = self.browser.find_elements(By.CSS_SELECTOR, ".view")
        places = lambda: {self.browser.execute_script(
            "return [arguments[0].scrollLeft, arguments[0].scrollTop].join()", view)
            for view in views}
        self.wait(lambda _: len(places()) == 1 and places() != {"0,0"})

    def test_says_what_would_be_accepted(self):
        self.browser.get(self.app.page("halftone"))
        self.find("input[type=file]").send_keys(
            str(pathlib.Path(arguments.source) / "examples/order.txt"))
        self.wait(lambda _: "Accepted are PDF, PNG" in self.find("#wrong").text)

    def test_works_with_the_keyboard_alone(self):
        self.browser.get(self.app.page("halftone"))
        focused = lambda: self.browser.switch_to.active_element
        press = lambda *keys: ActionChains(self.browser).send_keys(*keys).perform()

        def tab_to(done):
            for _ in range(80):
                press(Keys.TAB)
                if done(focused()):
                    return
            self.fail("no such element can be reached by the tabulator")

        tab_to(lambda element: (element.get_attribute("data-example") or "").endswith("photo.png"))
        press(Keys.ENTER)
        self.wait(lambda _: self.drawn() == 1)
        tab_to(lambda element: element.get_attribute("name") == "brightness")
        press(Keys.ARROW_RIGHT)
        self.wait(lambda _: self.drawn() == 2)
        self.assertEqual(self.find("input[name=brightness]").get_attribute("value"), "5")
        tab_to(lambda element: "print" in (element.get_attribute("class") or "").split())
        press(Keys.ENTER)
        self.wait(lambda _: len(self.app.papers()) == 1)

    def keep_and_print(self):
        """Something on the page of papers."""
        self.browser.get(self.app.page("paper"))
        field = self.find("input[name=kept-papers]")
        field.clear()
        field.send_keys("5", Keys.ENTER)
        self.wait(lambda _: "saved" in self.browser.current_url)
        self.browser.get(self.app.page("printer"))
        self.find("input[value=test] ~ button").click()
        self.wait(lambda _: len(self.app.papers()) == 1)

    def test_shows_and_repeats_the_paper_of_a_job(self):
        self.keep_and_print()
        self.browser.get(self.app.page("paper"))
        self.wait(lambda _: self.browser.execute_script(
            "return document.querySelector('.receipt img').naturalWidth") > 576)
        self.find(".receipt button").click()
        self.wait(lambda _: len(self.app.papers()) == 2)
        # The device code may ask whether all is printed.
        first, second = (path.read_bytes().replace(b"\x1dr\x01", b"")
                         for path in self.app.papers())
        self.assertTrue(second == first, f"{len(second)} bytes, {len(first)} at first")

    def test_has_no_fault_that_axe_finds(self):
        self.keep_and_print()
        axe = (pathlib.Path(arguments.source) / "tests/third_party/axe/axe.min.js").read_text()
        for page in PAGES:
            self.browser.get(self.app.page(page))
            if page == "halftone":
                self.open_document("examples/photo.png")
            self.browser.execute_script(axe)
            found = self.browser.execute_async_script(
                "axe.run().then((result) => arguments[0](result))")
            faults = [f"{fault['id']}: {node['html'][:120]}"
                      for fault in found["violations"] for node in fault["nodes"]]
            self.assertEqual(faults, [], page)
            self.assertGreater(len(found["passes"]), 10, page)

    def test_fits_the_window(self):
        self.keep_and_print()
        for page in PAGES:
            self.browser.get(self.app.page(page))
            if page == "halftone":
                self.open_document("examples/photo.png")
            wide = self.browser.execute_script(
                "return document.documentElement.scrollWidth - window.innerWidth")
            self.assertLessEqual(wide, 0, page)


class PhonePagesTest(PagesTest):
    size = PHONE


class GermanPagesTest(PagesTest):
    """Only that the words are there: what the pages do is the same in every language."""
    language = "de"

    def test_speaks_german(self):
        for page, title in zip(PAGES, ("Rasterung", "Papier", "Drucker")):
            self.browser.get(self.app.page(page))
            self.assertEqual(self.find("h1").text, title)
            self.assertEqual(self.find("html").get_attribute("lang"), "de")


class PagesWithoutScriptTest(PagesTest):
    script = False

    def save(self, page, control):
        form = self.find(control).find_element(By.XPATH, "ancestor::form")
        form.find_element(By.CSS_SELECTOR, "button[type=submit], button:not([type])").click()
        self.wait(lambda _: "Saved" in self.find("main").text)
        self.browser.get(self.app.page(page))

    def test_saves_settings(self):
        self.browser.get(self.app.page("printer"))
        Select(self.find("select[name=doc-cut-type]")).select_by_value("full")
        self.save("printer", "select[name=doc-cut-type]")
        chosen = Select(self.find("select[name=doc-cut-type]")).first_selected_option
        self.assertEqual(chosen.get_attribute("value"), "full")
        self.browser.get(self.app.page("paper"))
        kept = self.find("input[name=kept-papers]")
        kept.clear()
        kept.send_keys("3")
        self.save("paper", "input[name=kept-papers]")
        self.assertEqual(self.find("input[name=kept-papers]").get_attribute("value"), "3")


for variant in (GermanPagesTest, PagesWithoutScriptTest):
    for inherited in [name for name in dir(PagesTest) if name.startswith("test_")]:
        setattr(variant, inherited, None)


def take_pictures(folder):
    test = PagesTest()
    test.app = RunningApp()
    try:
        for size, suffix in ((DESK, ""), (PHONE, "-phone")):
            test.browser = start_browser(size)
            try:
                if suffix == "":
                    test.keep_and_print()
                for page in PAGES:
                    test.browser.get(test.app.page(page))
                    if page == "halftone":
                        test.open_document("examples/photo.png")
                    test.browser.save_screenshot(f"{folder}/page-{page}{suffix}.png")
            finally:
                test.browser.quit()
    finally:
        test.app.stop()


if __name__ == "__main__":
    parser = argparse.ArgumentParser()
    parser.add_argument("program")
    parser.add_argument("preview")
    parser.add_argument("source", type=os.path.abspath)
    parser.add_argument("--pictures", metavar="FOLDER")
    arguments, others = parser.parse_known_args()
    if arguments.pictures:
        take_pictures(arguments.pictures)
    else:
        unittest.main(argv=[sys.argv[0], *others])
