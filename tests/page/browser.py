# SPDX-License-Identifier: MIT
"""A Chromium without a window, that opens pages from disk."""

import json
import os

from selenium import webdriver
from selenium.webdriver.common.action_chains import ActionChains
from selenium.webdriver.common.by import By
from selenium.webdriver.common.keys import Keys

# Counts the colours of a picture, given as a canvas or as a PNG in base64.
COUNT_COLOURS = """
const [source, done] = arguments;
const count = (picture) => {
  const canvas = document.createElement("canvas");
  canvas.width = picture.width;
  canvas.height = picture.height;
  const context = canvas.getContext("2d");
  context.drawImage(picture, 0, 0);
  done(new Set(new Uint32Array(
      context.getImageData(0, 0, picture.width, picture.height).data.buffer)).size);
};
if (typeof source !== "string") count(source);
const image = new Image();
image.onload = () => count(image);
if (typeof source === "string") image.src = "data:image/png;base64," + source;
"""


class Browser:
    def __init__(self, *arguments):
        options = webdriver.ChromeOptions()
        options.binary_location = "/usr/bin/chromium"
        for argument in ("--headless=new", *arguments):
            options.add_argument(argument)
        if os.geteuid() == 0:
            options.add_argument("--no-sandbox")
        options.set_capability("goog:loggingPrefs", {"browser": "ALL", "performance": "ALL"})
        self.driver = webdriver.Chrome(options=options)
        self.driver.set_script_timeout(20)

    def open(self, page, width=1200, scheme="light"):
        self.emulate(width, scheme)
        self.driver.get(page.as_uri())
        self.settle()

    def emulate(self, width, scheme):
        self.driver.execute_cdp_cmd(
            "Emulation.setEmulatedMedia",
            {"features": [{"name": "prefers-color-scheme", "value": scheme}]})
        self.driver.execute_cdp_cmd(
            "Emulation.setDeviceMetricsOverride",
            {"width": width, "height": 1000, "deviceScaleFactor": 1, "mobile": False})

    def settle(self):
        """Waits until what was asked for is drawn."""
        self.driver.execute_async_script(
            "const done = arguments[0];"
            "requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done, 0)));")

    def find(self, selector):
        return self.driver.find_element(By.CSS_SELECTOR, selector)

    def run(self, script, *arguments):
        return self.driver.execute_script("return " + script, *arguments)

    def pairs(self, selector):
        """What a list of names and values shows."""
        return dict(self.run("[...document.querySelectorAll(arguments[0] + ' dt')].map("
                             "(dt) => [dt.textContent, dt.nextSibling.textContent])", selector))

    def keys(self, selector, *keys, shift=False):
        self.run("document.querySelector(arguments[0]).focus()", selector)
        actions = ActionChains(self.driver)
        if shift:
            actions.key_down(Keys.SHIFT)
        actions.send_keys(*keys)
        if shift:
            actions.key_up(Keys.SHIFT)
        actions.perform()
        self.settle()

    def place(self, selector, x, y):
        """Pointer actions on an element, which begin x, y pixels from its upper left corner."""
        element = self.find(selector)
        self.run("arguments[0].scrollIntoView({block: 'center'})", element)
        size = self.run("[arguments[0].clientWidth, arguments[0].clientHeight]", element)
        return ActionChains(self.driver).move_to_element_with_offset(
            element, round(x - size[0] / 2), round(y - size[1] / 2))

    def colours(self, selector):
        element = self.find(selector)
        return self.driver.execute_async_script(COUNT_COLOURS, element)

    def screen_colours(self, selector):
        return self.driver.execute_async_script(COUNT_COLOURS, self.picture(selector))

    def colour_at(self, selector, x, y):
        """Red, green and blue of a pixel of a canvas."""
        return self.run(
            "((canvas, x, y) => {"
            "  const copy = document.createElement('canvas').getContext('2d');"
            "  copy.drawImage(canvas, -x, -y);"
            "  return [...copy.getImageData(0, 0, 1, 1).data].slice(0, 3);"
            "})(document.querySelector(arguments[0]), arguments[1], arguments[2])",
            selector, round(x), round(y))

    def picture(self, selector):
        """An element as it is on the screen."""
        return self.find(selector).screenshot_as_base64

    def tab_stops(self):
        """The elements that the tab key reaches, as (id or name, accessible name)."""
        stops = []
        self.run("document.activeElement.blur()")
        for _ in range(40):
            ActionChains(self.driver).send_keys(Keys.TAB).perform()
            element = self.driver.switch_to.active_element
            if element.tag_name == "body" or element in [stop for stop, _ in stops]:
                break
            stops.append((element, element.accessible_name))
        return [(element.get_attribute("id") or element.tag_name, name) for element, name in stops]

    def complaints(self):
        return [entry["message"] for entry in self.driver.get_log("browser")]

    def requests(self):
        """The addresses asked for since the last call."""
        messages = [json.loads(entry["message"])["message"]
                    for entry in self.driver.get_log("performance")]
        return [message["params"]["request"]["url"] for message in messages
                if message["method"] == "Network.requestWillBeSent"]

    def close(self):
        self.driver.quit()
