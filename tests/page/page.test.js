// reportcheck page in headless Chromium: what each page shows, that it
// shows every report line once and in order, that its controls do what
// they say, that it runs nothing of a report's and asks nothing of the
// network, in both languages, with no serious accessibility fault.
'use strict';
const fs = require('fs');
const path = require('path');
const { test, expect } = require('@playwright/test');
const s = require('./support');

const AXE = fs.readFileSync(require.resolve('axe-core/axe.min.js'), 'utf8');

// Each test's folders go when it ends, passed or failed.
test.afterEach(() => s.removeTempDirs());

// The page's texts of its report lines, in page order: [number, text],
// once every section and every directory's lines as written are open.
async function pageLines(page) {
  await page.getByRole('button', { name: /^(Open every section|Ouvrir toutes les sections)$/ }).click();
  return page.$$eval('.line', (nodes) => nodes.map((n) => [Number(n.dataset.line), n.querySelector('.text').textContent]));
}

function expectEveryLineOnce(shown, body) {
  const lines = s.bodyLines(body);
  expect(shown.length).toBe(lines.length);
  expect(shown).toEqual(lines.map((text, i) => [i + 1, text]));
}

function expectQuiet(seen) {
  expect(seen.console).toEqual([]);
  expect(seen.errors).toEqual([]);
  expect(seen.requests).toEqual([]);
}

// The page's data with findings of the rules' form put in, as the page
// would get them from reportcheck: the data block is not part of the
// policy's hashes, so the page stays as it was made.
function withFindings(file, findings) {
  const html = fs.readFileSync(file, 'utf8');
  const open = '<script type="application/json" id="page-data">';
  const start = html.indexOf(open) + open.length;
  const end = html.indexOf('</script>', start);
  const data = JSON.parse(html.slice(start, end));
  if (findings) data.report.findings = findings;
  const json = JSON.stringify(data).replace(/</g, '\\u003c').replace(/>/g, '\\u003e').replace(/&/g, '\\u0026');
  const out = file.replace(/\.html$/, '-findings.html');
  fs.writeFileSync(out, html.slice(0, start) + json + html.slice(end));
  return 'file://' + out;
}

const FINDINGS = [
  { rule: 'suite.free-space', severity: 'info', title: { en: 'Little free space on C:', fr: 'Peu de place libre sur C:' },
    remedy: { en: 'Free some space.', fr: 'Libérez de la place.' }, line: 31, detail: 'C volume free: 77006768K' },
  { rule: 'suite.mixed-versions', severity: 'warning', title: { en: 'The suite carries more than one version', fr: 'La suite porte plus d’une version' },
    remedy: { en: 'Install the suite again.', fr: 'Réinstallez la suite.' }, line: 117, detail: 'fixture_version_both.dll: 1.4.0.12, most have 3.2.1.0' },
  { rule: 'report.altered', severity: 'error', title: { en: 'The report was altered', fr: 'Le rapport a été modifié' },
    remedy: { en: 'Ask for the report again.', fr: 'Redemandez le rapport.' }, line: 1, detail: 'checksum' }
];

test.describe('report page', () => {
  test('shows the verdict, then every line of the report once and in order, and nothing else happens', async ({ page }) => {
    const dir = s.tempDir('report');
    const made = s.makePage(dir, 'report.html', ['--lang', 'en', path.join(s.DATA, 'wine-report.txt')]);
    expect(made.status).toBe(0);
    const seen = await s.openPage(page, made.url);
    await expect(page.locator('h1')).toHaveText('Report: ' + path.join(s.DATA, 'wine-report.txt'));
    await expect(page.locator('.verdict.intact')).toHaveText(/Intact.*The checksum 500e534b matches the text/);
    // The findings rules' own, on a report whose suite is not installed.
    await expect(page.locator('.findings li')).toHaveCount(1);
    await expect(page.locator('.findings li .title')).toHaveText('The suite is not installed');
    await expect(page.locator('.findings li .sev')).toHaveText('\u26A0 Warning');
    await page.getByRole('link', { name: 'Evidence: line 128' }).click();
    await expect(page.locator('#L128')).toHaveClass(/target/);
    await expect(page.locator('#L128 .text')).toHaveText('* Standard installation directory (C:\\Program Files\\Orvane Software V9):');
    // Rules that lacked the report's registry data say so rather than pass.
    await expect(page.locator('details.not-checked > summary')).toHaveText('4 rules could not check this report');
    await page.locator('details.not-checked > summary').click();
    await expect(page.locator('details.not-checked li')).toHaveCount(4);
    await expect(page.locator('details.not-checked li', { hasText: 'suite.registry-version' })).toContainText('\u2014 no registry data in the report');
    expectEveryLineOnce(await pageLines(page), s.readBody(path.join(s.DATA, 'wine-report.txt')));
    await expect(page.locator('details.section > summary h3')).toHaveText(
      ['Header', 'Program', 'Host', 'Windows', 'Hardware', 'Network', 'Orvane Software installation']);
    expectQuiet(seen);
  });

  test('sorts a directory table by any column and filters it as one types', async ({ page }) => {
    const dir = s.tempDir('sort');
    const made = s.makePage(dir, 'report.html', ['--lang', 'en', path.join(s.DATA, 'wine-report.txt')]);
    await s.openPage(page, made.url);
    const table = page.locator('.table-block', { has: page.locator('caption', { hasText: 'Current directory' }) });
    const names = () => table.locator('tbody tr:not([hidden]) td:nth-child(6)').allTextContents();
    const sizes = async () => (await table.locator('tbody tr:not([hidden]) td:nth-child(3)').allTextContents()).map(Number);
    await table.getByRole('button', { name: 'Size' }).click();
    const up = await sizes();
    expect(up).toEqual([...up].sort((a, b) => a - b));
    expect(up[0]).toBe(0);
    await table.getByRole('button', { name: 'Size' }).click();
    expect(await sizes()).toEqual([...up].reverse());
    await expect(table.locator('th').nth(2)).toHaveAttribute('aria-sort', 'descending');
    await table.getByRole('button', { name: 'Name' }).click();
    expect((await names()).slice(0, 3)).toEqual(['.', '..', 'bench_floor.exe']);
    await table.getByLabel('Filter').fill('fixture_version');
    expect(await names()).toEqual(['fixture_version_blanks.dll', 'fixture_version_both.dll', 'fixture_version_english.dll',
      'fixture_version_french.dll', 'fixture_version_neutral.dll']);
    await expect(table.locator('.count')).toHaveText('5 of 19 shown');
    await table.getByLabel('Filter').fill('');
    await expect(table.locator('.count')).toHaveText('19 of 19 shown');
  });

  test('collapses and opens its sections', async ({ page }) => {
    const dir = s.tempDir('collapse');
    const made = s.makePage(dir, 'report.html', ['--lang', 'en', path.join(s.DATA, 'wine-report.txt')]);
    await s.openPage(page, made.url);
    await expect(page.locator('#L10')).toBeVisible();
    await page.locator('summary', { hasText: 'Host' }).click();
    await expect(page.locator('#L10')).toBeHidden();
    await expect(page.locator('#L14')).toBeVisible();
    await page.getByRole('button', { name: 'Close every section' }).click();
    await expect(page.locator('#L14')).toBeHidden();
    await page.getByRole('button', { name: 'Open every section' }).click();
    await expect(page.locator('#L10')).toBeVisible();
    // From the keyboard: the first stop is the first control, then each section's heading.
    await page.reload();
    await page.keyboard.press('Tab');
    await expect(page.getByRole('link', { name: 'Evidence: line 128' })).toBeFocused();
    await page.keyboard.press('Tab');
    await expect(page.locator('details.not-checked > summary')).toBeFocused();
    await page.keyboard.press('Tab');
    await expect(page.getByRole('button', { name: 'Open every section' })).toBeFocused();
    await page.keyboard.press('Tab');
    await page.keyboard.press('Tab');
    await expect(page.locator('summary', { hasText: 'Header' })).toBeFocused();
    await page.keyboard.press('Enter');
    await expect(page.locator('#L1')).toBeHidden();
  });

  test('prints with every section and every directory\'s lines open, and no controls', async ({ page }) => {
    const dir = s.tempDir('print');
    const made = s.makePage(dir, 'report.html', ['--lang', 'en', path.join(s.DATA, 'wine-report.txt')]);
    await s.openPage(page, made.url);
    await page.getByRole('button', { name: 'Close every section' }).click();
    await page.emulateMedia({ media: 'print' });
    await page.evaluate(() => window.dispatchEvent(new Event('beforeprint')));
    expect(await page.$$eval('details', (all) => all.filter((d) => !d.open).length)).toBe(0);
    await expect(page.locator('#L128')).toBeVisible();
    await expect(page.locator('tr[data-line="111"]')).toBeVisible();
    await expect(page.locator('.controls').first()).toBeHidden();
    expect(await page.$$eval('.controls, .pager', (all) => all.filter((n) => n.checkVisibility()).length)).toBe(0);
    await page.evaluate(() => window.dispatchEvent(new Event('afterprint')));
    await page.emulateMedia({ media: 'screen' });
    await expect(page.locator('#L128')).toBeHidden();
  });

  test('lists findings most severe first, each leading to its evidence line', async ({ page }) => {
    const dir = s.tempDir('findings');
    const made = s.makePage(dir, 'report.html', ['--lang', 'en', path.join(s.DATA, 'wine-report.txt')]);
    const seen = await s.openPage(page, withFindings(made.file, FINDINGS));
    await expect(page.locator('.findings li .sev')).toHaveText(['\u2716 Error', '\u26A0 Warning', '\u2139 Information']);
    await expect(page.locator('.findings li .title')).toHaveText(
      ['The report was altered', 'The suite carries more than one version', 'Little free space on C:']);
    await expect(page.locator('.findings li').nth(1)).toContainText('What to do: Install the suite again.');
    // The evidence is a directory entry: its row is marked and shown, its line as written opened.
    await page.getByRole('link', { name: 'Evidence: line 117' }).click();
    const row = page.locator('tr[data-line="117"]');
    await expect(row).toHaveClass(/target/);
    await expect(row).toBeInViewport();
    await expect(page.locator('#L117')).toHaveClass(/target/);
    await expect(page.locator('#L117')).toBeVisible();
    await expect(row.locator('td.outlier')).toHaveText('1.4.0.12');
    await expect(page.locator('td.outlier')).toHaveCount(1);
    // A line of a closed section: the section opens.
    await page.locator('summary', { hasText: 'Hardware' }).click();
    await expect(page.locator('#L31')).toBeHidden();
    await page.getByRole('link', { name: 'Evidence: line 31' }).click();
    await expect(page.locator('#L31')).toBeVisible();
    await expect(page.locator('#L31')).toHaveClass(/target/);
    await expect(page.locator('#L117')).not.toHaveClass(/target/);
    expectQuiet(seen);
  });

  test('the rules\' mixed-versions finding marks the outlying version in its directory\'s table', async ({ page }) => {
    const dir = s.tempDir('mixed');
    const body = s.makeBody({ entries: [{ name: 'a.dll', version: '9.3.1.1042' }, { name: 'b.dll', version: '9.2.0.7' },
      { name: 'c.exe', version: '9.3.1.1042' }] });
    const made = s.makePage(dir, 'mixed.html', ['--lang', 'en', s.writeReport(path.join(dir, 'mixed.txt'), body)]);
    const seen = await s.openPage(page, made.url);
    await expect(page.locator('.findings li .rule')).toHaveText(['suite.mixed-versions']);
    await expect(page.locator('td.outlier')).toHaveText(['9.2.0.7']);
    await expect(page.locator('tr:has(td.outlier) td:nth-child(6)')).toHaveText('b.dll');
    await page.getByRole('link', { name: 'Evidence: line 11' }).click();
    await expect(page.locator('tr[data-line="11"]')).toHaveClass(/target/);
    expectQuiet(seen);
  });

  test('says at the top, in words of danger, that an altered report was altered, and still shows it', async ({ page }) => {
    const dir = s.tempDir('altered');
    const body = s.makeBody({ entries: [{ name: 'tool.dll', version: '9.3.1.1042' }] });
    const file = s.writeReport(path.join(dir, 'altered.txt'), body, '0badf00d');
    const made = s.makePage(dir, 'altered.html', ['--lang', 'en', file]);
    expect(made.status).toBe(1);
    const seen = await s.openPage(page, made.url);
    const verdict = page.locator('main > .verdict');
    await expect(verdict).toHaveClass(/altered/);
    await expect(verdict).toHaveAttribute('role', 'alert');
    await expect(verdict).toHaveText(new RegExp('Altered.*The trailer says 0badf00d, the text gives ' + s.checksum(body)));
    expect(await page.evaluate(() => document.querySelector('main').firstElementChild.nextElementSibling.className)).toBe('verdict altered');
    expectEveryLineOnce(await pageLines(page), body);
    expectQuiet(seen);
  });

  test('refuses what show refuses, and writes nothing', async () => {
    const dir = s.tempDir('refused');
    fs.writeFileSync(path.join(dir, 'notes.txt'), 'just text\n');
    const made = s.makePage(dir, 'out.html', [path.join(dir, 'notes.txt')]);
    expect(made.status).toBe(2);
    expect(made.stderr).toBe('reportcheck: ' + path.join(dir, 'notes.txt') + ': not a report (no UTF-16 byte-order mark)\n');
    expect(fs.readdirSync(dir)).toEqual(['notes.txt']);
  });
});

test.describe('hostile text', () => {
  const HOSTILE = [
    '"quoted" & \'single\'', '<b>bold</b>', '</script><script>window.__pwned = 1</script>',
    '<img src=x onerror="window.__pwned = 2">', '\u001b[31mred\u001b[0m\u0007', '\u202Eexe.txt', '{{data}} {{script}}',
    '<!-- comment', '\u0000nul'
  ];

  test('names with quotes, markup, script ends, controls, direction overrides show as text and run nothing', async ({ page }) => {
    const dir = s.tempDir('hostile');
    const body = s.makeBody({ machine: 'PC<i>1</i>', user: '</script>&amp;',
      entries: HOSTILE.map((name, i) => ({ name, version: i === 2 ? '<script>alert(1)</script>' : '1.0' })) });
    const file = s.writeReport(path.join(dir, '<script>&"x".txt'), body);
    const made = s.makePage(dir, 'hostile.html', ['--lang', 'en', file]);
    expect(made.status).toBe(0);
    const seen = await s.openPage(page, made.url);
    expect(await page.evaluate(() => window.__pwned)).toBeUndefined();
    expect(await page.locator('main img, main b, main i, main script').count()).toBe(0);
    expectEveryLineOnce(await pageLines(page), body);
    const cells = await page.locator('tbody td:nth-child(6)').allTextContents();
    expect(cells).toEqual(HOSTILE);
    await expect(page.locator('h1')).toHaveText('Report: ' + file);
    // Controls and overrides show their names, isolated from the text around them.
    const shown = await page.$$eval('tbody td:nth-child(6) .ctl', (n) => n.map((x) => x.dataset.show));
    expect(shown).toEqual(['\u241B', '\u241B', '\u2407', 'U+202E', '\u2400']);
    expectQuiet(seen);
  });

  test('a report made by the program under Wine from a folder of names Windows allows shows them as text', async ({ page }) => {
    const dir = s.tempDir('wine-hostile');
    const file = path.join(__dirname, 'data/wine-hostile.txt');
    const made = s.makePage(dir, 'wine-hostile.html', ['--lang', 'en', file]);
    expect(made.status).toBe(0);
    const seen = await s.openPage(page, made.url);
    const table = page.locator('.table-block', { has: page.locator('caption', { hasText: 'Current directory' }) });
    await expect(table.locator('tbody td:nth-child(6)')).toHaveText(['.', '..', '$(id) `id` %TEMP%.txt', '&amp;&lt;script&gt;.txt',
      'OrvaneDiagnostics.exe', 'Tom & Jerry\'s.dll', '{{data}} {{script}}.txt', '\u202Etxt.exe', '\uFF1Cscript\uFF1E.txt']);
    await expect(table.locator('tbody tr:nth-child(8) .ctl')).toHaveAttribute('data-show', 'U+202E');
    expectEveryLineOnce(await pageLines(page), s.readBody(file));
    expect(await page.locator('main script, main img').count()).toBe(0);
    expectQuiet(seen);
  });

  test('the page\'s own policy refuses a script put into it, and any request', async ({ page }) => {
    const dir = s.tempDir('policy');
    const made = s.makePage(dir, 'report.html', ['--lang', 'en', path.join(s.DATA, 'wine-report.txt')]);
    const seen = await s.openPage(page, made.url);
    await page.evaluate(() => {
      const script = document.createElement('script');
      script.textContent = 'window.__injected = 1';
      document.body.append(script);
      const image = document.createElement('img');
      image.src = 'https://example.invalid/pixel.png';
      document.body.append(image);
      document.body.append(Object.assign(document.createElement('style'), { textContent: 'body { color: red }' }));
    });
    await page.waitForTimeout(200);
    expect(await page.evaluate(() => window.__injected)).toBeUndefined();
    expect(await page.evaluate(() => getComputedStyle(document.body).color)).toBe('rgb(27, 31, 36)');
    expect(seen.requests).toEqual(['refused by the policy: https://example.invalid/pixel.png']);
    expect(seen.console.filter((m) => /Content Security Policy/.test(m)).length).toBe(3);
    expect(await page.locator('meta[http-equiv="Content-Security-Policy"]').getAttribute('content')).toMatch(
      /^default-src 'none'; script-src 'sha256-[A-Za-z0-9+/]{43}='; style-src 'sha256-[A-Za-z0-9+/]{43}='; img-src 'none'; base-uri 'none'; form-action 'none'$/);
  });
});

test.describe('comparison page', () => {
  test('marks each change where it stands, counts them by section, and shows the changes only', async ({ page }) => {
    const dir = s.tempDir('comparison');
    const made = s.makePage(dir, 'cmp.html', ['--lang', 'en', '--against', path.join(s.DATA, 'wine-before.txt'), path.join(s.DATA, 'wine-after.txt')]);
    expect(made.status).toBe(0);
    const seen = await s.openPage(page, made.url);
    await expect(page.locator('#changes ~ p').first()).toHaveText('13 changes');
    await expect(page.locator('.summary-table tbody tr')).toHaveText(['Windows1', 'Hardware2', 'Orvane Software installation10']);
    await expect(page.locator('details.section summary .badge')).toHaveText(['1 change', '2 changes', '10 changes']);
    await expect(page.locator('#L16')).toHaveClass(/chg-changed/);
    await expect(page.locator('#L16 + .note')).toHaveText('changed id: 12345-oem-0000001-54321 \u2192 12345-oem-0000001-99999');
    await expect(page.locator('tr[data-line="111"]')).toHaveClass(/chg-added/);
    await expect(page.locator('#L108 ~ .note.removed')).toHaveText('removed Current directory: setup.log: size 5');
    expectEveryLineOnce(await pageLines(page), s.readBody(path.join(s.DATA, 'wine-after.txt')));

    await page.getByRole('button', { name: 'Close every section' }).click();
    await page.getByRole('button', { name: 'Open every section' }).click();
    await page.getByLabel('Show changes only').check();
    const shown = (selector) => page.$$eval(selector, (nodes) => nodes.filter((n) => n.checkVisibility()).map((n) => Number(n.dataset.line)));
    expect(await shown('.line')).toEqual([16, 31, 108, 109, 110, 111, 114, 119]);
    expect(await shown('tr[data-line]')).toEqual([109, 110, 111, 114, 119]);
    await expect(page.locator('details.section', { hasText: 'Host' })).toBeHidden();
    await page.getByLabel('Show changes only').uncheck();
    await expect(page.locator('#L10')).toBeVisible();
    expectQuiet(seen);
  });

  test('prints what it shows: with changes only, the changed lines and rows alone, and says so', async ({ page }) => {
    const dir = s.tempDir('comparison-print');
    const made = s.makePage(dir, 'cmp.html', ['--lang', 'en', '--against', path.join(s.DATA, 'wine-before.txt'), path.join(s.DATA, 'wine-after.txt')]);
    expect(made.status).toBe(0);
    const seen = await s.openPage(page, made.url);
    const shown = (selector) => page.$$eval(selector, (nodes) => nodes.filter((n) => n.checkVisibility()).map((n) => Number(n.dataset.line)));
    const note = page.locator('.changes-only-note');
    await expect(note).toBeHidden();
    await page.getByLabel('Show changes only').check();
    await expect(note).toHaveText('Changes only: the unchanged lines, rows and sections are left out, on screen and in print.');
    await page.emulateMedia({ media: 'print' });
    await page.evaluate(() => window.dispatchEvent(new Event('beforeprint')));
    expect(await shown('.line')).toEqual([16, 31, 108, 109, 110, 111, 114, 119]);
    expect(await shown('tr[data-line]')).toEqual([109, 110, 111, 114, 119]);
    await expect(page.locator('details.section', { hasText: 'Host' })).toBeHidden();
    await expect(note).toBeVisible();
    await expect(page.locator('.controls').first()).toBeHidden();
    await page.evaluate(() => window.dispatchEvent(new Event('afterprint')));

    // Without it, the whole report prints, every line once and in order.
    await page.emulateMedia({ media: 'screen' });
    await page.getByLabel('Show changes only').uncheck();
    await page.emulateMedia({ media: 'print' });
    await page.evaluate(() => window.dispatchEvent(new Event('beforeprint')));
    const lines = s.bodyLines(s.readBody(path.join(s.DATA, 'wine-after.txt')));
    expect(await page.$$eval('.line', (nodes) => nodes.filter((n) => n.checkVisibility())
      .map((n) => [Number(n.dataset.line), n.querySelector('.text').textContent])))
      .toEqual(lines.map((text, i) => [i + 1, text]));
    expect(await shown('tr[data-line]')).toEqual([35, 52, 70, 88, 109, 110, 111, 112, 113, 114, 117, 118, 119]);
    await expect(note).toBeHidden();
    await page.evaluate(() => window.dispatchEvent(new Event('afterprint')));
    expectQuiet(seen);
  });

  test('changes only on a directory of 700 entries: its pages are made of the changed rows', async ({ page }) => {
    // The 400 changed entries all stand after the first page of 200 rows:
    // hiding the unchanged rows of a page would leave that page empty.
    const dir = s.tempDir('changes-paged');
    const name = (i) => 'file' + String(i).padStart(3, '0') + '.dll';
    const entries = (changedFrom) => Array.from({ length: 700 }, (_, k) =>
      ({ name: name(k + 1), version: k + 1 >= changedFrom ? '2.0.0.0' : '1.0.0.0' }));
    const before = s.writeReport(path.join(dir, 'before.txt'), s.makeBody({ entries: entries(701) }));
    const after = s.writeReport(path.join(dir, 'after.txt'), s.makeBody({ entries: entries(301) }));
    const made = s.makePage(dir, 'cmp.html', ['--lang', 'en', '--against', before, after]);
    expect(made.status).toBe(0);
    const seen = await s.openPage(page, made.url);
    await expect(page.locator('#changes ~ p').first()).toHaveText('400 changes');
    const table = page.locator('.table-block', { has: page.locator('caption', { hasText: 'Standard installation directory' }) });
    const names = () => table.locator('tbody tr td:nth-child(6)').allTextContents();
    const expectPage = async (first, last, pageText) => {
      expect(await names()).toEqual(Array.from({ length: last - first + 1 }, (_, k) => name(first + k)));
      await expect(table.locator('.pager span')).toHaveText(pageText);
    };
    await table.getByRole('button', { name: 'Next page' }).click();
    await expectPage(201, 400, 'Page 2 of 4');

    await page.getByLabel('Show changes only').check();
    await expect(table.locator('.count')).toHaveText('400 of 700 shown');
    await expectPage(301, 500, 'Page 1 of 2');
    await expect(table.getByRole('button', { name: 'Previous page' })).toBeDisabled();
    await table.getByRole('button', { name: 'Next page' }).click();
    await expectPage(501, 700, 'Page 2 of 2');
    await expect(table.getByRole('button', { name: 'Next page' })).toBeDisabled();
    // The filter's words narrow the changed rows, not all of them.
    await table.getByLabel('Filter').fill('file29');
    await expect(table.locator('.count')).toHaveText('0 of 700 shown');
    await table.getByLabel('Filter').fill('file69');
    await expect(table.locator('.count')).toHaveText('10 of 700 shown');
    await expectPage(690, 699, 'Page 1 of 1');
    await table.getByLabel('Filter').fill('');
    await expectPage(301, 500, 'Page 1 of 2');

    // A line's link shows the whole report again, on the page its row stands on.
    await table.getByRole('button', { name: 'Next page' }).click();
    await table.locator('tr', { hasText: name(650) }).locator('a.line-link').click();
    await expect(page.getByLabel('Show changes only')).not.toBeChecked();
    await expect(table.locator('.count')).toHaveText('700 of 700 shown');
    await expectPage(601, 700, 'Page 4 of 4');
    await expect(table.locator('tr', { hasText: name(650) })).toHaveClass(/target/);

    await page.getByLabel('Show changes only').check();
    await expectPage(301, 500, 'Page 1 of 2');
    await page.getByLabel('Show changes only').uncheck();
    await expect(table.locator('.count')).toHaveText('700 of 700 shown');
    await expectPage(1, 200, 'Page 1 of 4');
    expectQuiet(seen);
  });
});

test.describe('fleet page', () => {
  test('10,000 reports: one row per report, a page at a time, sorted, filtered, and the versions of each file', async ({ page }) => {
    test.setTimeout(120000);
    const dir = s.tempDir('fleet');
    const reports = path.join(dir, 'reports');
    fs.mkdirSync(reports);
    for (let i = 1; i <= 10000; i++) {
      const machine = 'PC' + String(i).padStart(5, '0');
      const odd = i % 4000 === 0;  // PC04000 and PC08000 carry another version
      s.writeReport(path.join(reports, machine + '.txt'), s.makeBody({ machine, user: 'user' + i,
        entries: [{ name: 'Base.dll', version: '9.3.1.1042' }, { name: 'tool.dll', version: odd ? '9.2.0.7' : '9.3.1.1042' },
          { name: 'Runner.exe', version: '9.3.1.1042' }] }));
    }
    fs.writeFileSync(path.join(reports, 'zz-notes.txt'), 'not a report');
    const made = s.makePage(dir, 'fleet.html', ['--lang', 'en', reports]);
    expect(made.status).toBe(2);
    const seen = await s.openPage(page, made.url);
    const table = page.locator('.table-block').first();
    await expect(page.locator('.sub')).toHaveText('10001 files: 0 altered, 1 not a report or unreadable.');
    await expect(table.locator('tbody tr')).toHaveCount(100);
    await expect(table.locator('.count')).toHaveText('10001 of 10001 shown');
    await expect(table.locator('.pager span')).toHaveText('Page 1 of 101');
    await table.getByRole('button', { name: 'Next page' }).click();
    await expect(table.locator('tbody tr').first().locator('td').first()).toHaveText('PC00101');
    await table.getByRole('button', { name: 'Machine' }).click();
    await table.getByRole('button', { name: 'Machine' }).click();
    await expect(table.locator('tbody tr').first().locator('td').first()).toHaveText('PC10000');
    await table.getByLabel('Filter').fill('not a report');
    await expect(table.locator('tbody tr')).toHaveCount(1);
    await expect(table.locator('tbody tr td').nth(3)).toHaveText('\u2716 not a report');
    await table.getByLabel('Filter').fill('pc0999');
    await expect(table.locator('.count')).toHaveText('10 of 10001 shown');

    const files = page.locator('.table-block', { has: page.locator('caption', { hasText: 'Files of the suite' }) });
    await expect(files.locator('tbody tr')).toHaveText(['Base.dll9.3.1.104210000Show the machines', 'Runner.exe9.3.1.104210000Show the machines',
      'tool.dll9.3.1.10429998Show the machines', 'tool.dll9.2.0.72PC04000, PC08000']);
    await expect(files.locator('td.outlier')).toHaveText(['9.2.0.7']);
    // The mixed-versions rule finds the two machines, and their rows count it.
    const found = page.locator('.table-block', { has: page.locator('caption', { hasText: 'Findings across the fleet' }) });
    await expect(found.locator('tbody tr')).toHaveText(['\u26A0 Warningsuite.mixed-versionsThe suite\'s files carry more than one product version2PC04000, PC08000']);
    await table.getByLabel('Filter').fill('PC04000');
    await expect(table.locator('tbody tr td')).toHaveText(['PC04000', 'user4000', '2026-11-22T14:36:06\n11/22/2026 2:36:06 PM', 'intact', '0', '1', '0', '8 rules',
      path.join(reports, 'PC04000.txt')], { useInnerText: true });
    expectQuiet(seen);
  });
});

test.describe('fleet page: when each report was made', () => {
  // Reports of five locales' forms; the report files saved on 1 January
  // 2027, so that neither reading of 05/11/2026 is ruled out.
  function fleetOfLocales() {
    const dir = s.tempDir('fleet-times');
    const reports = path.join(dir, 'reports');
    fs.mkdirSync(reports);
    const saved = new Date('2027-01-01T00:00:00Z');
    for (const [machine, when] of [['US', '11/22/2026 2:36:06 PM'], ['KR', '2026-11-23 오후 7:50:05'],
      ['DE', '21.11.2026 19:50'], ['GB', '05/11/2026 10:00:00'], ['XX', 'Monday']]) {
      const file = s.writeReport(path.join(reports, machine + '.txt'), s.makeBody({ machine, when }));
      fs.utimesSync(file, saved, saved);
    }
    return { dir, reports };
  }
  const whenCells = (table) => table.locator('tbody tr td:nth-child(3)');

  test('the ISO time over the header\'s text, sorted truly across locales, an ambiguous date marked', async ({ page }) => {
    const { dir, reports } = fleetOfLocales();
    const made = s.makePage(dir, 'fleet.html', ['--lang', 'en', reports]);
    const seen = await s.openPage(page, made.url);
    const table = page.locator('.table-block').first();
    await table.getByRole('button', { name: 'Machine' }).click();
    await expect(table.locator('tbody tr td:first-child')).toHaveText(['DE', 'GB', 'KR', 'US', 'XX']);
    await expect(whenCells(table)).toHaveText(['2026-11-21T19:50\n21.11.2026 19:50',
      '\u26A0 ambiguous date\n05/11/2026 10:00:00', '2026-11-23T19:50:05\n2026-11-23 오후 7:50:05',
      '2026-11-22T14:36:06\n11/22/2026 2:36:06 PM', 'Monday'], { useInnerText: true });
    expect(await whenCells(table).locator('time').evaluateAll((times) => times.map((t) => t.getAttribute('datetime'))))
      .toEqual(['2026-11-21T19:50', '2026-11-23T19:50:05', '2026-11-22T14:36:06']);
    expect(await whenCells(table).evaluateAll((cells) => cells.map((c) => c.title))).toEqual([
      '21.11.2026 19:50', 'Day and month read both ways: 2026-11-05T10:00:00 or 2026-05-11T10:00:00',
      '2026-11-23 오후 7:50:05', '11/22/2026 2:36:06 PM', 'Monday']);
    // In time order; the header's text would put 05/11 first and 21.11 last.
    await table.getByRole('button', { name: 'Report of' }).click();
    await expect(table.locator('tbody tr td:first-child')).toHaveText(['GB', 'XX', 'DE', 'US', 'KR']);
    await table.getByRole('button', { name: 'Report of' }).click();
    await expect(table.locator('tbody tr td:first-child')).toHaveText(['KR', 'US', 'DE', 'GB', 'XX']);
    await table.getByLabel('Filter').fill('ambiguous');
    await expect(table.locator('tbody tr td:first-child')).toHaveText(['GB']);
    await table.getByLabel('Filter').fill('2026-11-23');
    await expect(table.locator('tbody tr td:first-child')).toHaveText(['KR']);
    expectQuiet(seen);
  });

  test('in French', async ({ page }) => {
    const { dir, reports } = fleetOfLocales();
    const made = s.makePage(dir, 'fleet.html', ['--lang', 'fr', reports]);
    await s.openPage(page, made.url);
    const table = page.locator('.table-block').first();
    await table.getByRole('button', { name: 'Rapport du' }).click();
    await expect(table.locator('tbody tr td:first-child')).toHaveText(['GB', 'XX', 'DE', 'US', 'KR']);
    await expect(whenCells(table).first()).toHaveText('\u26A0 date ambiguë\n05/11/2026 10:00:00', { useInnerText: true });
    await expect(whenCells(table).first()).toHaveAttribute('title',
      'Le jour et le mois se lisent dans les deux sens\u00A0: 2026-11-05T10:00:00 ou 2026-05-11T10:00:00');
  });
});

test.describe('fleet page: rules that could not check a report', () => {
  // A report of the page tests' own form (no Program, Hardware, Network or
  // registry data), the program's report under Wine (no registry data), and
  // a file that is no report (which no rule checks).
  function fleetOfThree() {
    const dir = s.tempDir('fleet-not-checked');
    const reports = path.join(dir, 'reports');
    fs.mkdirSync(reports);
    s.writeReport(path.join(reports, 'a.txt'), s.makeBody({ machine: 'PC1', user: 'ann' }));
    fs.copyFileSync(path.join(s.DATA, 'wine-report.txt'), path.join(reports, 'b.txt'));
    fs.writeFileSync(path.join(reports, 'c.txt'), 'not a report');
    return { dir, reports };
  }
  const registryRules = {
    en: ['InstallLocation names a directory with nothing in it suite.install-location-empty \u2014 no registry data in the report',
      'The installer\'s version in the registry differs from the version of the suite\'s files suite.registry-version \u2014 no registry data in the report',
      'InstallLocation is the standard directory written differently suite.install-location-twice \u2014 no registry data in the report',
      'A version number in the registry was stored as text suite.registry-number-as-text \u2014 no registry data in the report'],
    fr: ['InstallLocation désigne un répertoire vide suite.install-location-empty \u2014 pas de « registry data » dans le rapport',
      'La version de l\'installeur dans le registre diffère de celle des fichiers de la suite suite.registry-version \u2014 pas de « registry data » dans le rapport',
      'InstallLocation est le répertoire standard écrit autrement suite.install-location-twice \u2014 pas de « registry data » dans le rapport',
      'Un numéro de version a été enregistré comme texte dans le registre suite.registry-number-as-text \u2014 pas de « registry data » dans le rapport']
  };

  test('each row lists them under their count, sorts by it and filters by rule', async ({ page }) => {
    const { dir, reports } = fleetOfThree();
    const made = s.makePage(dir, 'fleet.html', ['--lang', 'en', reports]);
    expect(made.status).toBe(2);
    const seen = await s.openPage(page, made.url);
    await expect(page.locator('.sub')).toHaveText('3 files: 0 altered, 1 not a report or unreadable.');
    const table = page.locator('.table-block').first();
    await expect(table.locator('thead th')).toHaveText(
      ['Machine', 'User', 'Report of', 'Verdict', 'Errors', 'Warnings', 'Information', 'Not checked by', 'File']);
    const cells = table.locator('tbody tr td:nth-child(8)');
    await expect(cells).toHaveText(['8 rules', '4 rules', ''], { useInnerText: true });
    await cells.nth(1).locator('summary').click();
    await expect(cells.nth(1).locator('li')).toHaveText(registryRules.en);
    await cells.nth(0).locator('summary').click();
    await expect(cells.nth(0).locator('li')).toHaveText([registryRules.en[0],
      'No network adapter is up with an address network.no-adapter-up \u2014 no network in the report',
      registryRules.en[1],
      'Little free space on C: system.low-disk-space \u2014 no hardware in the report',
      'The report was made without administrator rights program.not-elevated \u2014 no program in the report',
      'The program ran from outside the suite\'s installation program.outside-installation \u2014 no program in the report',
      registryRules.en[2], registryRules.en[3]]);
    await table.getByRole('button', { name: 'Not checked by' }).click();
    await expect(table.locator('tbody tr td:first-child')).toHaveText(['', 'VM', 'PC1']);
    await table.getByLabel('Filter').fill('network.no-adapter-up');
    await expect(table.locator('tbody tr td:first-child')).toHaveText(['PC1']);
    await table.getByLabel('Filter').fill('suite.registry-version');
    await expect(table.locator('.count')).toHaveText('2 of 3 shown');
    expectQuiet(seen);
  });

  test('in French', async ({ page }) => {
    const { dir, reports } = fleetOfThree();
    const made = s.makePage(dir, 'fleet.html', ['--lang', 'fr', reports]);
    await s.openPage(page, made.url);
    await expect(page.locator('.sub')).toHaveText('3 fichiers : 0 modifié, 1 qui n\u2019est pas un rapport ou est illisible.');
    const table = page.locator('.table-block').first();
    await expect(table.locator('thead th').nth(7)).toHaveText('Non vérifié par');
    const cells = table.locator('tbody tr td:nth-child(8)');
    await expect(cells).toHaveText(['8 règles', '4 règles', ''], { useInnerText: true });
    await cells.nth(1).locator('summary').click();
    await expect(cells.nth(1).locator('li')).toHaveText(registryRules.fr);
  });
});

test.describe('languages', () => {
  test('French by --lang or by the locale, English otherwise; the report\'s lines as they are', async ({ page }) => {
    const dir = s.tempDir('languages');
    const report = path.join(s.DATA, 'wine-report.txt');
    const french = s.makePage(dir, 'fr.html', ['--lang', 'fr', report]);
    await s.openPage(page, french.url);
    await expect(page.locator('html')).toHaveAttribute('lang', 'fr');
    await expect(page.locator('h1')).toHaveText('Rapport\u00A0: ' + report);
    await expect(page.locator('.verdict')).toHaveText(/La somme de contrôle 500e534b correspond au texte/);
    await expect(page.locator('details.section > summary h3')).toHaveText(
      ['En-tête', 'Programme', 'Hôte', 'Windows', 'Matériel', 'Réseau', 'Installation d’Orvane Software']);
    await expect(page.locator('#L4 .text')).toHaveText('Program:');
    const { spawnSync } = require('child_process');
    for (const [env, expected] of [[{ LANG: 'fr_FR.UTF-8' }, 'fr'], [{ LANG: 'de_DE.UTF-8' }, 'en'], [{ LC_ALL: 'fr_CA.UTF-8', LANG: 'en_US' }, 'fr']]) {
      const out = path.join(dir, 'locale.html');
      const run = spawnSync(s.REPORTCHECK, ['page', '-o', out, report], { env: { PATH: process.env.PATH, ...env } });
      expect(run.status).toBe(0);
      expect(fs.readFileSync(out, 'utf8')).toContain('<html lang="' + expected + '">');
    }
  });
});

test.describe('accessibility', () => {
  for (const [kind, args] of [
    ['report', (dir) => [path.join(s.DATA, 'wine-report.txt')]],
    ['comparison', (dir) => ['--against', path.join(s.DATA, 'wine-before.txt'), path.join(s.DATA, 'wine-after.txt')]],
    ['fleet', (dir) => [s.DATA]]]) {
    for (const lang of ['en', 'fr']) {
      test(`${kind} page in ${lang}: no serious or critical axe-core violation`, async ({ page }) => {
        const dir = s.tempDir('axe');
        const made = s.makePage(dir, kind + '.html', ['--lang', lang, ...args(dir)]);
        await s.openPage(page, withFindings(made.file, kind === 'fleet' ? undefined : FINDINGS));
        await page.evaluate(AXE);
        const result = await page.evaluate(() => window.axe.run(document, { resultTypes: ['violations'] }));
        expect(result.testEngine.name).toBe('axe-core');
        expect(result.passes.length).toBeGreaterThan(10);
        const grave = result.violations.filter((v) => v.impact === 'serious' || v.impact === 'critical')
          .map((v) => v.id + ': ' + v.nodes.slice(0, 3).map((n) => n.target.join(' ')).join(', '));
        expect(grave).toEqual([]);
      });
    }
  }
});
