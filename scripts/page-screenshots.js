// Screenshots of the report page for README (docs/screenshots/page-*.png):
// a report, a comparison and a fleet, in English and in French, made by
// reportcheck and shown by headless Chromium.
//   node scripts/page-screenshots.js [REPORTCHECK]
'use strict';
const fs = require('fs');
const path = require('path');
const s = require('../tests/page/support');
const { chromium } = require('../tests/page/node_modules/@playwright/test');

const out = path.join(s.ROOT, 'docs/screenshots');
const dir = s.tempDir('screenshots');
if (process.argv[2]) process.env.DIAG_REPORTCHECK = process.argv[2];

// A small fleet: eight machines in several locales (one date ambiguous),
// one with an older tool.dll, one report altered; the files saved on one day.
const fleet = path.join(dir, 'reports');
fs.mkdirSync(fleet);
const whens = ['11/11/2026 9:11:00 AM', '2026. 11. 12. 14:12:05', '13.11.2026 09:13', '05/11/2026 10:00:00',
  '11/15/2026 9:15:00 AM', '16/11/2026 09:16:00', '17/11/2026 3:17:00 μμ', '18/11/2026 09:18 p. m.'];
const saved = new Date('2026-12-01T00:00:00Z');
for (let i = 1; i <= 8; i++) {
  const machine = 'PC' + String(i).padStart(3, '0');
  const body = s.makeBody({ machine, user: 'user' + i, when: whens[i - 1],
    entries: [{ name: 'Base.dll', version: '9.3.1.1042' }, { name: 'tool.dll', version: i === 3 ? '9.2.0.7' : '9.3.1.1042' },
      { name: 'Runner.exe', version: '9.3.1.1042' }] });
  const file = s.writeReport(path.join(fleet, machine + '.txt'), body, i === 6 ? '0badf00d' : undefined);
  fs.utimesSync(file, saved, saved);
}

(async () => {
  const browser = await chromium.launch({ executablePath: process.env.DIAG_CHROMIUM || '/usr/bin/chromium' });
  // Pages made from inside the work folder, of files named as a user's
  // would be: their titles show no temporary path.
  for (const name of ['wine-report.txt', 'wine-before.txt', 'wine-after.txt'])
    fs.copyFileSync(path.join(s.DATA, name), path.join(dir, name.replace('wine-', '')));
  process.chdir(dir);
  const shots = [
    ['report', ['report.txt'], null],
    ['comparison', ['--against', 'before.txt', 'after.txt'], '#L107'],
    ['fleet', ['reports'], null]];
  for (const [kind, args, scrollTo] of shots) {
    for (const lang of ['en', 'fr']) {
      const made = s.makePage(dir, kind + '-' + lang + '.html', ['--lang', lang, ...args]);
      const page = await browser.newPage({ viewport: { width: 1100, height: 760 } });
      await page.goto(made.url);
      await page.waitForSelector('body[data-ready="true"]');
      if (scrollTo) await page.locator(scrollTo).evaluate((e) => e.scrollIntoView({ block: 'start' }));
      await page.screenshot({ path: path.join(out, 'page-' + kind + '-' + lang + '.png') });
      await page.close();
    }
  }
  await browser.close();
  fs.rmSync(path.dirname(dir), { recursive: true, force: true });
})();
