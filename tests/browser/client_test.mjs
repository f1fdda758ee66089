// The client in pages in Chromium: node client_test.mjs URL, that of a page beside it

import assert from 'node:assert/strict';
import {readFile} from 'node:fs/promises';
import {fileURLToPath} from 'node:url';

import {chromium} from 'playwright-core';

const kCases = fileURLToPath(new URL('../client/cases.mjs', import.meta.url));

// Chromium keeps its sandbox from root.
const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
  args: ['--host-resolver-rules=MAP nas.test 127.0.0.1',
    ...(process.getuid() === 0 ? ['--no-sandbox'] : [])],
});

const page = await browser.newPage();
const urls = [];
page.on('request', request => urls.push(request.url()));
await page.route('**/cases.mjs',
  route => route.fulfill({contentType: 'text/javascript', path: kCases}));

// What `work` gives in a page of the host `host`.
async function evaluateAt(host, work) {
  const url = new URL(process.argv[2]);
  url.hostname = host;
  await page.goto(url.href);
  return page.evaluate(work, process.env.token);
}

// The page that the guide shows.
async function readGuide() {
  const guide = await readFile(new URL('../../docs/client.md', import.meta.url), 'utf8');
  const body = /^```html hello\.html\n([^]*?)^```/m.exec(guide)[1];
  await page.route('**/hello.html', route => route.fulfill({contentType: 'text/html', body}));
  await page.goto(new URL('hello.html', process.argv[2]).href);
  await page.waitForFunction(() => document.title === 'Hello, Ada!');
}

async function runCases(token) {
  const [{WebAPIClient}, {cases}] =
    await Promise.all(['/webapi/webapi.mjs', '/webapi/cases.mjs'].map(url => import(url)));
  const context = {
    url: new URL('entry.cgi', location).href,
    token,
    open: (url, options) => new WebAPIClient(url ?? 'entry.cgi', options),
    fileOf: (name, content) => new File([content], name),
  };
  const failures = [];
  for (const [name, run] of Object.entries(cases)) {
    await run(context).catch(error => failures.push(`${name}: ${error.stack}`));
  }
  return failures;
}

async function enciphersNothing() {
  const {WebAPIClient} = await import('/webapi/webapi.mjs');
  const client = new WebAPIClient('entry.cgi');
  const hello = options => client.call('ORBO.Example.Greeting', 1, 'hello', {}, options);
  await hello();
  return hello({encipher: 'cipher'}).then(() => 'no failure', error => error.name);
}

try {
  assert.deepEqual(await evaluateAt('127.0.0.1', runCases), []);
  assert.deepEqual(urls.filter(url => /_sid|tid=|password/.test(url)), []);
  assert.equal(await evaluateAt('nas.test', enciphersNothing), 'EncipherError');
  await readGuide();
} finally {
  await browser.close();
}
