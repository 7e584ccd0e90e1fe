// SPDX-License-Identifier: MIT
// Chromium without a window, told what to do through pipes.
import {spawn} from "node:child_process";
import {mkdtempSync, rmSync} from "node:fs";
import {tmpdir} from "node:os";
import {setTimeout as wait} from "node:timers/promises";

export function startBrowser() {
  const folder = mkdtempSync(`${tmpdir()}/pages-`);
  const browser = spawn("chromium", ["--headless", "--remote-debugging-pipe", "--disable-gpu",
    "--disable-background-networking", "--use-angle=swiftshader", "--enable-unsafe-swiftshader",
    "--window-size=1200,1000", `--user-data-dir=${folder}/user`,
    ...process.getuid() === 0 ? ["--no-sandbox"] : []],
  {stdio: ["ignore", "ignore", "ignore", "pipe", "pipe"]});

  const [asked, events] = [[], []];  // who waits for answers; what the browser told on its own
  let rest = "";
  browser.stdio[4].setEncoding("utf8").on("data", (text) => {
    const messages = (rest + text).split("\0");
    rest = messages.pop();
    for (const {id, result, error, method, params} of messages.map(JSON.parse)) {
      if (id === undefined) events.push({method, ...params});
      else asked[id](result ?? error);
    }
  });
  const send = (method, params, sessionId) => new Promise((done) => {
    const id = asked.push(done) - 1;
    browser.stdio[3].write(`${JSON.stringify({id, method, params, sessionId})}\0`);
  });

  return {
    folder, send, events,
    // Opens a page; `events` then holds what it did.
    open: async (url) => {
      const {targetId} = await send("Target.createTarget", {url: "about:blank"});
      const {sessionId} = await send("Target.attachToTarget", {targetId, flatten: true});
      await Promise.all(["Runtime", "Log", "Network", "Page"].map((domain) =>
        send(`${domain}.enable`, {}, sessionId)));
      events.length = 0;
      await send("Page.navigate", {url}, sessionId);
      while (!events.some(({method}) => method === "Page.loadEventFired")) await wait(20);
      return sessionId;
    },
    close: () => browser.once("exit", () => rmSync(folder, {recursive: true, maxRetries: 9})).kill(),
  };
}
