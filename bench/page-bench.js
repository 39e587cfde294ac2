// reportcheck page, measured (scripts/bench.sh page): the figures of the
// issue's Speed and size list, side by side in one run, written to
// bench/PAGE-RESULTS.md. Node with the page tests' packages (tests/page),
// Debian's chromium; the reportcheck measured is a Release build.
//   node bench/page-bench.js REPORTCHECK RESULTS
'use strict';
const fs = require('fs');
const os = require('os');
const path = require('path');
const { spawnSync } = require('child_process');
const s = require('../tests/page/support');
const { chromium } = require('../tests/page/node_modules/@playwright/test');

const [checker, results] = process.argv.slice(2);
const RUNS = Number(process.env.DIAG_PAGE_RUNS || 5);
const work = fs.mkdtempSync(path.join(os.tmpdir(), 'orvane-page-bench-'));

function seconds(args) {
  const start = process.hrtime.bigint();
  const run = spawnSync(checker, args, { stdio: ['ignore', 'ignore', 'ignore'] });
  if (run.status > 2 || run.error) throw new Error('reportcheck ' + args.join(' ') + ' failed');
  return Number(process.hrtime.bigint() - start) / 1e9;
}
const best = (values) => Math.min(...values);
const median = (values) => { const v = [...values].sort((a, b) => a - b); return v[v.length >> 1]; };

// A real report made by the program, with 10,000 entries in its current
// directory (the last entry's line repeated under other names and sizes).
function bigReport() {
  const body = s.readBody(path.join(s.DATA, 'wine-report.txt'));
  const lines = body.split('\r\n');
  const at = lines.findIndex((l) => l.startsWith('* Standard installation directory'));
  const entries = [];
  for (let i = 0; i < 10000; i++)
    entries.push(s.entryLine({ name: 'file' + String(i).padStart(5, '0') + '.dll', size: (i * 7919) % 100000, version: '9.3.1.' + (i % 50) }));
  const big = [...lines.slice(0, at), ...entries, ...lines.slice(at)].join('\r\n');
  return s.writeReport(path.join(work, 'big.txt'), big);
}

function fleet() {
  const dir = path.join(work, 'fleet');
  fs.mkdirSync(dir);
  for (let i = 1; i <= 10000; i++) {
    const machine = 'PC' + String(i).padStart(5, '0');
    s.writeReport(path.join(dir, machine + '.txt'), s.makeBody({ machine, user: 'user' + i,
      entries: [{ name: 'tool.dll', version: i % 97 ? '9.3.1.1042' : '9.2.0.7' }, { name: 'Runner.exe', version: '9.3.1.1042' }] }));
  }
  return dir;
}

// Milliseconds from the start of navigation to a page whose tables answer.
async function interactive(browser, file) {
  const page = await browser.newPage();
  await page.goto('file://' + file);
  await page.waitForSelector('body[data-ready="true"]');
  const ms = await page.evaluate(() => new Promise((done) => requestAnimationFrame(() => setTimeout(() => done(performance.now()), 0))));
  return { page, ms };
}

// Milliseconds of one click on a column's button, until the next frame.
function sortMs(page, column) {
  return page.evaluate((column) => new Promise((done) => {
    const button = [...document.querySelectorAll('th button')].find((b) => b.textContent === column);
    const start = performance.now();
    button.click();
    requestAnimationFrame(() => setTimeout(() => done(performance.now() - start), 0));
  }), column);
}

(async () => {
  const big = bigReport();
  const folder = fleet();
  const pageFile = path.join(work, 'big.html');
  const fleetFile = path.join(work, 'fleet.html');
  const pageTimes = [], showTimes = [];
  for (let i = 0; i < RUNS; i++) {
    pageTimes.push(seconds(['page', '--lang', 'en', '-o', pageFile, big]));
    showTimes.push(seconds(['show', '--json', big]));
  }
  const fleetSeconds = best([0, 1].map(() => seconds(['page', '--lang', 'en', '-o', fleetFile, folder])));
  const utf8 = Buffer.byteLength(s.readBody(big), 'utf8');
  const pageBytes = fs.statSync(pageFile).size;
  const small = path.join(work, 'small.html');
  spawnSync(checker, ['page', '--lang', 'en', '-o', small, path.join(s.DATA, 'wine-report.txt')]);
  const smallUtf8 = Buffer.byteLength(s.readBody(path.join(s.DATA, 'wine-report.txt')), 'utf8');

  const browser = await chromium.launch({ executablePath: process.env.DIAG_CHROMIUM || '/usr/bin/chromium' });
  const reportReady = [], sorts = [], fleetReady = [];
  for (let i = 0; i < RUNS; i++) {
    const { page, ms } = await interactive(browser, pageFile);
    reportReady.push(ms);
    sorts.push(await sortMs(page, 'Size'));
    sorts.push(await sortMs(page, 'Name'));
    await page.close();
    const fleetPage = await interactive(browser, fleetFile);
    fleetReady.push(fleetPage.ms);
    await fleetPage.page.close();
  }
  await browser.close();

  const f = (x, d = 2) => x.toFixed(d);
  const within = (ok) => (ok ? 'within' : 'OVER');
  const sizeLimit = 3 * utf8 + 150 * 1024;
  const ratio = best(pageTimes) / best(showTimes);
  const rows = [
    ['Report of 10,000 entries: interactive, ms (target 1500)', f(best(reportReady), 0) + ' (median ' + f(reportReady.sort((a, b) => a - b)[RUNS >> 1], 0) + ')', within(best(reportReady) <= 1500)],
    ['Sorting its 10,000-row table by size or by name, ms, median of ' + sorts.length + ' clicks (target 200)',
      f(median(sorts), 0) + ' (best ' + f(Math.min(...sorts), 0) + ', worst ' + f(Math.max(...sorts), 0) + ')', within(median(sorts) <= 200)],
    ['Fleet of 10,000 reports: interactive, ms (target 3000)', f(best(fleetReady), 0), within(best(fleetReady) <= 3000)],
    ['Page of the 10,000-entry report, bytes (target 3 x ' + utf8 + ' + 150 KB = ' + sizeLimit + ')', String(pageBytes) + ' (' + f(pageBytes / utf8) + ' x the text)', within(pageBytes <= sizeLimit)],
    ['Page of tests/reportcheck/data/wine-report.txt, bytes (target ' + (3 * smallUtf8 + 150 * 1024) + ')', String(fs.statSync(small).size), within(fs.statSync(small).size <= 3 * smallUtf8 + 150 * 1024)],
    ['`reportcheck page` / `show --json`, 10,000-entry report (target 3)', f(ratio) + ' (' + f(best(pageTimes), 3) + ' s / ' + f(best(showTimes), 3) + ' s)', within(ratio <= 3)],
    ['`reportcheck page` of the 10,000-report folder, s', f(fleetSeconds), ''],
  ];
  const text = ['# reportcheck page: figures of the last run', '',
    'Written by `scripts/bench.sh page` on ' + new Date().toISOString().slice(0, 10) + ', load ' + os.loadavg().map((x) => x.toFixed(2)).join(' ') + '.',
    'Headless Chromium ' + spawnSync(process.env.DIAG_CHROMIUM || '/usr/bin/chromium', ['--version'], { encoding: 'utf8' }).stdout.trim() + '; best of ' + RUNS + ' runs unless said;',
    'times in the browser from the start of navigation to the first frame after the page is drawn.', '',
    '| Measure | Value | Target |', '|---|---|---|', ...rows.map((r) => '| ' + r.join(' | ') + ' |'), ''].join('\n');
  fs.writeFileSync(results, text);
  process.stdout.write(text);
  fs.rmSync(work, { recursive: true, force: true });
})().catch((e) => { console.error(e); fs.rmSync(work, { recursive: true, force: true }); process.exit(1); });
