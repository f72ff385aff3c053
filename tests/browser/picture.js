// tests/browser/picture.js - a picture of some figures of a page that stand beside each other, for the documents.
// SPDX-License-Identifier: MIT
//
//   node picture.js PAGE PICTURE ID...

'use strict';
const { chromium } = require('playwright-core');
const path = require('path');

const [page, picture, ...ids] = process.argv.slice(2);

(async () => {
  const browser = await chromium.launch({
    executablePath: '/usr/bin/chromium',
    args: ['--no-sandbox', '--disable-gpu', '--disable-background-networking'],
  });
  try {
    const tab = await browser.newPage({ viewport: { width: 1240, height: 900 }, colorScheme: 'light' });
    await tab.goto(`file://${path.resolve(page)}`);
    const boxes = await tab.evaluate((names) => names.map((name) => {
      const { left, top, right, bottom } = document.getElementById(name).getBoundingClientRect();
      return { left: left + scrollX, top: top + scrollY, right: right + scrollX, bottom: bottom + scrollY };
    }), ids);
    const margin = 12;
    const x = Math.min(...boxes.map((box) => box.left)) - margin;
    const y = Math.min(...boxes.map((box) => box.top)) - margin;
    const width = Math.max(...boxes.map((box) => box.right)) + margin - x;
    const height = Math.max(...boxes.map((box) => box.bottom)) + margin - y;
    await tab.screenshot({ path: picture, fullPage: true, clip: { x, y, width, height } });
  } finally {
    await browser.close();
  }
})().catch((error) => {
  console.error(error);
  process.exitCode = 1;
});
