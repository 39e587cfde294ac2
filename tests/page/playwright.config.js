// The page tests run in Debian's own Chromium (scripts/deps.sh installs it);
// Playwright downloads no browser.
const { defineConfig } = require('@playwright/test');

module.exports = defineConfig({
  testDir: '.',
  testMatch: '*.test.js',
  outputDir: process.env.DIAG_PAGE_TEST_OUTPUT || require('path').join(require('os').tmpdir(), 'diag-page-results'),
  workers: 2,
  fullyParallel: true,
  timeout: 60000,
  reporter: [['list']],
  use: {
    browserName: 'chromium',
    launchOptions: { executablePath: process.env.DIAG_CHROMIUM || '/usr/bin/chromium' },
    viewport: { width: 1280, height: 900 },
  },
});
