// tests/browser/pages.js - opens pages of kapris report in Chromium and checks how they are laid out.
// SPDX-License-Identifier: MIT
//
//   node pages.js KAPRIS DIRECTORY
//
// Of three runs on generated hypergraphs, in two widths, light and dark: every picture has marks, and all of them and all
// letters lie inside it; nothing is wider than the window; labels do not run into each other; letters stand out from
// their ground. Screenshots go to DIRECTORY.

'use strict';
const { chromium } = require('playwright-core');
const { execFileSync } = require('child_process');
const fs = require('fs');
const os = require('os');
const path = require('path');

const [kapris, directory] = process.argv.slice(2);
const widths = [400, 1400];
const schemes = ['light', 'dark'];
const faults = [];
let checks = 0;

function run(...args) {
  return execFileSync(kapris, args, { cwd: directory, encoding: 'utf8', stdio: ['ignore', 'pipe', 'inherit'] });
}

function check(good, text) {
  checks++;
  if (!good) faults.push(text);
}

function makePages() {
  run('generate', 'circuit', '--cells', '3000', '--seed', '1', '-o', 'circuit.hgr');
  run('generate', 'grid', '--rows', '40', '--cols', '40', '-o', 'grid.hgr');
  run('convert', 'grid.hgr', 'matrix.mtx');
  const fixed = [];
  for (let cell = 0; cell < 3000; cell++) fixed.push(cell % 7 === 0 ? cell % 64 : -1);
  fs.writeFileSync(path.join(directory, 'fixed'), fixed.join('\n') + '\n');
  return [
    { name: 'circuit', file: 'circuit.hgr', parts: 2, args: ['--starts', '12', '--runs', '2'] },
    { name: 'matrix', file: 'matrix.mtx', parts: 8, args: ['--scheme', 'kway', '--starts', '3', '--runs', '4'] },
    { name: 'fixed', file: 'circuit.hgr', parts: 64, args: ['--fixed', 'fixed', '-e', '0.2', '--runs', '1', '--starts', '2'] },
  ].map((page) => {
    run('partition', page.file, '-k', `${page.parts}`, ...page.args, '-q', '-o', `${page.name}.part`,
      '--report', `${page.name}.html`);
    return page;
  });
}

// Runs in the page: what is wrong with its layout.
function inspect() {
  const wrong = [];
  let marks = 0;
  const inside = (inner, outer, slack) => inner.left >= outer.left - slack && inner.right <= outer.right + slack &&
    inner.top >= outer.top - slack && inner.bottom <= outer.bottom + slack;
  const luminance = (color) => {
    const parts = color.match(/[\d.]+/g).slice(0, 3).map((c) => c / 255)
      .map((c) => (c <= 0.03928 ? c / 12.92 : ((c + 0.055) / 1.055) ** 2.4));
    return 0.2126 * parts[0] + 0.7152 * parts[1] + 0.0722 * parts[2];
  };
  const contrast = (a, b) => (Math.max(luminance(a), luminance(b)) + 0.05) / (Math.min(luminance(a), luminance(b)) + 0.05);

  if (document.documentElement.scrollWidth > innerWidth) wrong.push('wider than the window');
  for (const box of document.querySelectorAll('.card, .card > *, header > *, pre')) {
    const rect = box.getBoundingClientRect();
    if (rect.right > innerWidth || rect.left < 0) wrong.push(`${box.tagName} beyond the window`);
  }
  for (const svg of document.querySelectorAll('svg')) {
    const id = svg.closest('section').id;
    const frame = svg.getBoundingClientRect();
    const plot = svg.querySelector('.rule, .frame, .grid').getBoundingClientRect();
    const seen = [...svg.querySelectorAll('rect:not(.frame):not(.shade), circle, image, .blue, .h1, .h8')]
      .filter((mark) => !mark.closest('defs'));
    marks += seen.length;
    if (svg.getAttribute('role') !== 'img' || !svg.querySelector('title').textContent || !svg.querySelector('desc').textContent)
      wrong.push(`${id}: no description`);
    if (!seen.some((mark) => mark.getBoundingClientRect().width * mark.getBoundingClientRect().height > 0))
      wrong.push(`${id}: no marks`);
    for (const mark of svg.querySelectorAll('rect, circle, image, path, text'))
      if (!mark.closest('defs') && !inside(mark.getBoundingClientRect(), frame, 1)) wrong.push(`${id}: ${mark.outerHTML.slice(0, 90)} outside`);
    for (const mark of svg.querySelectorAll('rect.bar, circle.dot, circle.ring, circle.best, image')) {
      const rect = mark.getBoundingClientRect();
      const legend = rect.bottom < frame.top + 0.06 * frame.height;
      if (!legend && !mark.closest('defs') && (rect.left < plot.left - 5 || rect.right > plot.right + 7))
        wrong.push(`${id}: a mark beside its axis`);
    }
    const texts = [...svg.querySelectorAll('text')].map((text) => [text.textContent, text.getBoundingClientRect()]);
    for (let i = 0; i < texts.length; i++)
      for (let j = 0; j < i; j++) {
        const [a, b] = [texts[i][1], texts[j][1]];
        const wide = Math.min(a.right, b.right) - Math.max(a.left, b.left);
        const high = Math.min(a.bottom, b.bottom) - Math.max(a.top, b.top);
        if (wide > 1 && high > 0.35 * Math.min(a.height, b.height)) wrong.push(`${id}: '${texts[i][0]}' over '${texts[j][0]}'`);
      }
  }
  for (const text of document.querySelectorAll('p, th, td, h1, h2, summary, svg .tick, svg .axis')) {
    const card = text.closest('.card') || document.body;
    const style = getComputedStyle(text);
    const ratio = contrast(text.namespaceURI.endsWith('svg') ? style.fill : style.color, getComputedStyle(card).backgroundColor);
    if (ratio < 4.5) wrong.push(`'${text.textContent.slice(0, 30)}' has a contrast of ${ratio.toFixed(1)}`);
  }
  return { wrong: [...new Set(wrong)], marks, images: [...document.querySelectorAll('image')].length };
}

async function checkPage(tab, page) {
  const requests = [];
  tab.on('request', (request) => requests.push(request.url()));
  for (const width of widths)
    for (const scheme of schemes) {
      const where = `${page.name}, ${width} pixels, ${scheme}`;
      await tab.setViewportSize({ width, height: 900 });
      await tab.emulateMedia({ colorScheme: scheme });
      await tab.goto(`file://${path.join(directory, `${page.name}.html`)}`);
      await tab.screenshot({ path: path.join(directory, `${page.name}-${width}-${scheme}.png`), fullPage: true });
      for (const folded of [true, false]) {
        if (!folded) await tab.evaluate(() => document.querySelectorAll('details').forEach((d) => { d.open = true; }));
        const found = await tab.evaluate(inspect);
        found.wrong.forEach((fault) => check(false, `${where}${folded ? '' : ', unfolded'}: ${fault}`));
        check(found.marks > 50 && found.images === 2, `${where}: ${found.marks} marks, ${found.images} images`);
      }
    }
  check(requests.every((url) => url.startsWith('file:') || url.startsWith('data:')), `${page.name} loads ${requests}`);
}

async function main() {
  fs.rmSync(directory, { recursive: true, force: true });
  fs.mkdirSync(directory, { recursive: true });
  const pages = makePages();
  const profile = fs.mkdtempSync(path.join(os.tmpdir(), 'kapris-browser-'));
  const browser = await chromium.launchPersistentContext(profile, {
    executablePath: '/usr/bin/chromium',
    headless: true,
    args: ['--no-sandbox', '--disable-gpu', '--disable-quic', '--no-first-run', '--disable-background-networking',
      '--disable-component-update', '--disable-sync'],
  });
  try {
    for (const page of pages) await checkPage(await browser.newPage(), page);
  } finally {
    await browser.close();
    fs.rmSync(profile, { recursive: true, force: true });
  }
  faults.forEach((fault) => console.error(fault));
  console.log(`browser tests: ${checks - faults.length} of ${checks} checks passed`);
  process.exit(faults.length ? 1 : 0);
}

main().catch((error) => { console.error(error); process.exit(1); });
