// What the page tests share: reports written as the program writes them
// (UTF-16LE with byte-order mark and checksum trailer), reportcheck run on
// them, and a browser page that records every console message, script
// error and request.
'use strict';
const fs = require('fs');
const os = require('os');
const path = require('path');
const { spawnSync } = require('child_process');

const ROOT = path.resolve(__dirname, '../..');
const REPORTCHECK = process.env.DIAG_REPORTCHECK || path.join(ROOT, 'build-native/bin/reportcheck');
const DATA = path.join(ROOT, 'tests/reportcheck/data');

// The report checksum: 0x01020304, the low byte of each UTF-16 unit folded
// into byte lane i mod 4 with exclusive-or (src/report/ReportChecksum.cpp).
function checksum(body) {
  let value = 0x01020304;
  for (let i = 0; i < body.length; i++) value ^= (body.charCodeAt(i) & 0xff) << (8 * (i % 4));
  return (value >>> 0).toString(16).padStart(8, '0');
}

function reportBytes(body, trailerChecksum) {
  const text = body + '\n--- \n' + (trailerChecksum || checksum(body)) + '\n';
  return Buffer.concat([Buffer.from([0xff, 0xfe]), Buffer.from(text, 'utf16le')]);
}

function readBody(file) {
  const bytes = fs.readFileSync(file);
  return bytes.subarray(2, bytes.length - 30).toString('utf16le');
}

// A body's lines as the page must show them: split at line feeds, a CR
// before one dropped, no line after the last break.
function bodyLines(body) {
  const lines = body.split('\n').map((l) => l.replace(/\r$/, ''));
  if (lines[lines.length - 1] === '') lines.pop();
  return lines;
}

// Parents made by tempDir since the last removeTempDirs.
const madeParents = [];

// A folder of the test's own, under one parent of its own; removeTempDirs
// takes both away when the test ends.
function tempDir(name) {
  const parent = fs.mkdtempSync(path.join(os.tmpdir(), 'diag-page-'));
  madeParents.push(parent);
  const dir = path.join(parent, name);
  fs.mkdirSync(dir);
  return dir;
}

function removeTempDirs() {
  for (const parent of madeParents.splice(0)) fs.rmSync(parent, { recursive: true, force: true });
}

function entryLine(e) {
  const attributes = (e.attributes || 0x20).toString(16).padStart(8, '0');
  const size = String(e.size === undefined ? 4753 : e.size).padStart(10, ' ');
  const time = e.time || '22/11/2026  14:32:01';
  return '\t' + attributes + ' ' + size + '\t' + time + '\t' + time + '\t' + e.name + '\t' + (e.version || '');
}

// A small report in the program's own line forms, CR LF as it saves them.
function makeBody({ machine = 'PC1', user = 'user', when = '11/22/2026 2:36:06 PM', entries = [] } = {}) {
  const lines = [
    'Orvane Software system report on ' + when, '',
    '', 'Host:', '\tname: ' + machine + ' (WORKGROUP\\' + machine + ')', '\tuser: ' + user,
    '', 'Orvane Software installation:',
    '* Standard installation directory (C:\\Program Files\\Orvane Software V9):',
    ...entries.map(entryLine)
  ];
  return lines.join('\r\n') + '\r\n';
}

function writeReport(file, body, trailerChecksum) {
  fs.writeFileSync(file, reportBytes(body, trailerChecksum));
  return file;
}

// reportcheck page ARGS, writing -o FILE; returns its status and the file.
function makePage(dir, name, args) {
  const out = path.join(dir, name);
  const run = spawnSync(REPORTCHECK, ['page', '-o', out, ...args], { encoding: 'utf8', env: { ...process.env, LANG: 'C', LC_ALL: '' } });
  if (run.error) throw run.error;
  return { status: run.status, stderr: run.stderr, file: out, url: 'file://' + out };
}

// Opens a page and records what it does: console messages of every kind,
// script errors, and every request the browser attempts (each is refused).
async function openPage(page, url) {
  const seen = { console: [], errors: [], requests: [] };
  page.on('console', (m) => seen.console.push(m.type() + ': ' + m.text()));
  page.on('pageerror', (e) => seen.errors.push(e.message));
  await page.context().route('**/*', (route) => {
    const request = route.request();
    if (request.url() === url && request.isNavigationRequest()) return route.continue();
    seen.requests.push(request.url());
    return route.abort();
  });
  // A request the page's policy stops never reaches the route above.
  page.on('requestfailed', (r) => {
    if (r.url() === url || seen.requests.includes(r.url())) return;
    const refused = r.failure() && r.failure().errorText === 'csp';
    seen.requests.push((refused ? 'refused by the policy: ' : 'failed (' + (r.failure() || {}).errorText + '): ') + r.url());
  });
  await page.goto(url);
  await page.waitForSelector('body[data-ready="true"]');
  return seen;
}

module.exports = { ROOT, REPORTCHECK, DATA, checksum, reportBytes, readBody, bodyLines, tempDir, removeTempDirs, entryLine, makeBody, writeReport, makePage, openPage };
