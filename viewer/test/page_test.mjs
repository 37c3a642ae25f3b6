// Looks at pages of the sample in a browser, as a person would.
// Usage: node page_test.mjs VXBTOOL EXAMPLES PAGE_FOLDER
// PAGE_FOLDER holds the packages. The status is 77, with the reason, where there is no browser.

import assert from "node:assert/strict";
import { execFileSync } from "node:child_process";
import { accessSync, constants, mkdtempSync, rmSync } from "node:fs";
import { createRequire } from "node:module";
import { tmpdir } from "node:os";
import { join, resolve } from "node:path";
import { after, before, beforeEach, test } from "node:test";
import { pathToFileURL } from "node:url";

import { comparePictures } from "./pictures.mjs";

const [vxbtool, examples, packages] = process.argv.slice(2).map((name) => resolve(name));
const browserProgram = process.env.CHROMIUM ?? "/usr/bin/chromium";
try {
  accessSync(browserProgram, constants.X_OK);
} catch {
  console.log(`skipped: ${browserProgram} is not there; Debian's package chromium has it`);
  process.exit(77);
}
const { chromium } = createRequire(join(packages, "package.json"))("playwright-core");

/** A name that would end or hide what stands behind it in a page, if the page let it. */
const model = "a<!--<script>&amp;.vxb";
const folder = mkdtempSync(join(tmpdir(), "vxbtool_page_"));
const patience = 120_000;
let browser;
let pictures;
let page;
let troubles;
let info;

function run(...parameters) {
  return execFileSync(vxbtool, parameters, { cwd: examples, maxBuffer: 1 << 26 }).toString();
}

async function open(options = {}, prepare = () => {}) {
  const address = pathToFileURL(join(folder, "page.html")).href;
  const opened = await browser.newPage({ viewport: { width: 800, height: 500 }, ...options });
  opened.setDefaultTimeout(patience);
  troubles = [];
  opened.on("console", (message) => {
    if (message.type() === "error" || /Content.Security.Policy/.test(message.text())) {
      troubles.push(message.text());
    }
  });
  opened.on("pageerror", (error) => troubles.push(String(error)));
  opened.on("request", (request) => {
    if (!/^(blob|data):/.test(request.url()) && request.url() !== address) {
      troubles.push(`request of ${request.url()}`);
    }
  });
  await opened.addInitScript(prepare);
  await opened.goto(address);
  return opened;
}

/** The picture of the model when all that was asked for is drawn. */
async function picture() {
  await page.evaluate(
    () => new Promise((done) => requestAnimationFrame(() => requestAnimationFrame(() => setTimeout(done)))),
  );
  const { x, y, width, height } = await page.locator("#stage").boundingBox();
  // Neither the ring of the focus nor what the status line says.
  const clip = { x: x + 8, y: y + 8, width: width - 16, height: height - 60 };
  return (await page.screenshot({ clip })).toString("base64");
}

const compare = (one, other) => pictures.evaluate(comparePictures, [one, other]);
const button = (name) => page.getByRole("button", { name, exact: true });

before(async () => {
  run("convert", "-o", join(folder, model), "crawler.mqf");
  run("view", "-o", join(folder, "page.html"), join(folder, model));
  info = JSON.parse(run("info", "--json", join(folder, model))).files[0];
  browser = await chromium.launch({
    executablePath: browserProgram,
    timeout: patience,
    args: [
      "--no-sandbox",
      "--use-angle=swiftshader",
      "--enable-unsafe-swiftshader",
      "--disable-quic",
      "--no-first-run",
      "--disable-background-networking",
      "--disable-component-update",
      "--disable-sync",
    ],
    env: { ...process.env, HOME: folder },
  });
  pictures = await browser.newPage();
});

after(async () => {
  await browser?.close();
  rmSync(folder, { recursive: true, force: true });
});

beforeEach(async () => {
  await page?.close();
  page = await open();
  await page.waitForSelector("html[data-ready]");
});

test("the page shows the model, asks for nothing and has no fault", async () => {
  assert.equal(await page.title(), model);
  const { colours, commonest } = await compare(await picture(), await picture());
  assert.ok(colours > 200, `only ${colours} colours`);
  assert.ok(commonest < 0.8, `${commonest} of the picture is of one colour`);
  assert.deepEqual(troubles, []);
});

test("a hidden coordinate leaves the picture, and comes back", async () => {
  const whole = await picture();
  await button("Parts").click();
  const counts = (await page.locator(".tree .count").allTextContents()).map(Number);
  const most = counts.indexOf(Math.max(...counts));
  await button("Close panel").click();
  assert.equal((await compare(whole, await picture())).differing, 0);

  await button("Parts").click();
  await page.locator(".tree input").nth(most).click();
  await button("Close panel").click();
  assert.ok((await compare(whole, await picture())).differing > 0);
  await page.keyboard.press("a");
  assert.equal((await compare(whole, await picture())).differing, 0);
});

test("a motion moves the model, and stopping it brings it back", async () => {
  const rest = await picture();
  await button("Play").click();
  await page.waitForFunction(() => Number.parseInt(document.querySelector(".frame").textContent) > 3);
  await button("Pause").click();
  const moved = await picture();
  assert.ok((await compare(rest, moved)).differing > 0);
  await page.getByLabel("Frame").fill("0");
  assert.ok((await compare(moved, await picture())).differing > 0, "the slider moves it");
  await page.keyboard.press("Escape");
  await button("Stop, back to rest").click();
  assert.equal((await compare(rest, await picture())).differing, 0);
  assert.deepEqual(troubles, []);
});

test("image memory shows the rectangle of every image and colour table", async () => {
  await button("Images").click();
  const place = ({ position, size }, depth) => [...position, (size[0] * depth) / 16, size[1]];
  const wanted = info.images.flatMap((image) => [
    place(image, image.depth),
    ...(image.lookupTable ? [place(image.lookupTable, 16)] : []),
  ]);
  const shown = await page.locator("rect.place").evaluateAll((rectangles) =>
    rectangles.map((rectangle) => ["x", "y", "width", "height"].map((name) => Number(rectangle.getAttribute(name)))),
  );
  assert.ok(wanted.length > 11);
  assert.deepEqual(shown.sort(), wanted.sort());
  const area = await page.locator(".sheet").boundingBox();
  for (const rectangle of await page.locator("rect.place").all()) {
    const { x, y, width, height } = await rectangle.boundingBox();
    assert.ok(x >= area.x - 2 && y >= area.y - 2 && width > 0 && height > 0);
    assert.ok(x + width <= area.x + area.width + 2 && y + height <= area.y + area.height + 2);
  }
  const sheet = (await page.locator(".sheet").screenshot()).toString("base64");
  assert.ok((await compare(sheet, sheet)).colours > 100, "the images have their colours");
});

test("a click lights up a coordinate and shows the polygon's texture", async () => {
  const before = await picture();
  const { x, y, width, height } = await page.locator("#stage").boundingBox();
  await button("Images").click();
  const marks = page.locator(".mark polygon");
  // Somewhere below the middle of the picture lies ground with a texture.
  for (let part = 0.5; part < 0.95 && (await marks.count()) === 0; part += 0.05) {
    await page.mouse.click(x + width * 0.3, y + height * part);
  }
  assert.ok((await marks.count()) > 0);
  assert.match(await page.locator(".told").textContent(), /texels of (4|8|16) bits at \(/);
  await button("Close panel").click();
  assert.ok((await compare(before, await picture())).differing > 0);
  assert.match(await page.getByRole("status").first().textContent(), /^(coordinate \d+|over several)/);
  await button("Parts").click();
  assert.equal(await page.locator(".tree .selected").count(), 1);
});

test("the help panel lists the keys, and they change the picture", async () => {
  await page.keyboard.press("h");
  const keys = await page.locator(".keys kbd").allTextContents();
  assert.ok(keys.length > 35);
  const facts = page.locator(".counts");
  await page.keyboard.press("c");
  assert.match(await facts.textContent(), new RegExp(`polygons${info.polygons.number.toLocaleString("en")}`));
  await page.keyboard.press("Escape");
  let last = await picture();
  const single = ["w", "n", "x", "l", "ArrowLeft", "Shift+ArrowUp", "+", "1", "5", "j"];
  const frames = Array(20).fill(".");
  for (const keys of [...single.map((key) => [key]), ["j"], ["v"], ["a"], ["f"], frames, ["s"], ["o"], ["Escape", "a"]]) {
    for (const key of keys) {
      await page.keyboard.press(key);
    }
    const now = await picture();
    assert.ok((await compare(last, now)).differing > 0, `${keys} changes the picture`);
    last = now;
  }
  assert.deepEqual(troubles, []);
});

test("a phone's width is enough, and the system's dark setting is followed", async () => {
  const light = await picture();
  await page.close();
  page = await open({ viewport: { width: 360, height: 700 }, colorScheme: "dark" });
  await page.waitForSelector("html[data-ready]");
  assert.notEqual((await compare(await picture(), light)).first, (await compare(light, light)).first);
  for (const name of ["Parts", "Images", "Facts", "Help"]) {
    await button(name).click();
    const wide = await page.evaluate(() =>
      [...document.querySelectorAll("button, select, input, h2")]
        .filter((each) => each.getClientRects().length > 0)
        .filter((each) => each.getBoundingClientRect().right > innerWidth)
        .map((each) => each.outerHTML),
    );
    assert.deepEqual(wide, [], name);
    assert.ok((await page.locator("#stage").boundingBox()).height > 150);
  }
});

test("a browser without WebGL is told of", async () => {
  await page.close();
  page = await open({}, () => {
    HTMLCanvasElement.prototype.getContext = () => null;
  });
  assert.match(await page.getByRole("alert").textContent(), /WebGL/);
});
