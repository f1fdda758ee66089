// The page of the example share in Chromium, as its users have it: node share_test.mjs URL

import assert from 'node:assert/strict';
import {randomBytes} from 'node:crypto';
import {readFile} from 'node:fs/promises';

import {chromium} from 'playwright-core';

const kPhone = {width: 360, height: 740};
const kHostileName = '<img src=x onerror=alert(1)>' + 'x'.repeat(120) + '.txt';

const large = {name: 'large.bin', mimeType: 'application/octet-stream', buffer: randomBytes(3 << 20)};

// Chromium keeps its sandbox from root.
const browser = await chromium.launch({
  executablePath: process.env.CHROMIUM || '/usr/bin/chromium',
  args: process.getuid() === 0 ? ['--no-sandbox'] : [],
});
const page = await browser.newPage({viewport: kPhone});
page.setDefaultTimeout(20000);
const problems = [];
page.on('pageerror', error => problems.push(error.message));
page.on('console', message => {
  if (message.text().includes('Content Security Policy')) {
    problems.push(message.text());
  }
});
page.on('dialog', dialog => dialog.accept());

const network = await page.context().newCDPSession(page);
// Bytes a second, so that progress takes its time; -1: as fast as it goes.
const limitUpload = uploadThroughput => network.send('Network.emulateNetworkConditions',
  {offline: false, latency: 0, downloadThroughput: -1, uploadThroughput});

const fileRow = name => page.locator('#files li').filter({hasText: name});
const isTold = text => page.locator('#message').filter({hasText: text}).waitFor();

async function logIn(password) {
  await page.getByLabel('User').fill('ben');
  await page.getByLabel('Password').fill(password);
  await page.keyboard.press('Enter');
}

// Begins the upload of the large file and sees it on its way.
async function beginUpload() {
  await limitUpload(1 << 20);
  await page.getByLabel('Choose files').setInputFiles(large);
  await page.waitForFunction(() => {
    const bar = document.querySelector('#uploads progress');
    return bar && bar.value > 0 && bar.value < bar.max;
  });
  assert.match(await page.locator('#uploads li').innerText(), /large\.bin[^]* % of 3\.1 MB/);
}

async function test() {
  await page.goto(process.argv[2]);
  await logIn('wrong');
  await isTold('User or password is wrong.');
  await logIn("ben's password");
  await page.getByText('Nothing is shared yet.').waitFor();

  await beginUpload();
  await page.getByRole('button', {name: 'Cancel large.bin'}).click();
  await isTold('The upload was cancelled.');
  assert.equal(await page.locator('#uploads li').count(), 0);

  await beginUpload();
  await limitUpload(-1);
  await isTold('large.bin is uploaded.');
  assert.match(await fileRow('large.bin').innerText(), /3\.1 MB, /);
  const [download] = await Promise.all([
    page.waitForEvent('download'), page.getByRole('link', {name: 'large.bin'}).click(),
  ]);
  assert.equal(download.suggestedFilename(), 'large.bin');
  assert.ok(large.buffer.equals(await readFile(await download.path())));

  // A name from elsewhere is text, and does not widen the page.
  const transfer = await page.evaluateHandle(name => {
    const made = new DataTransfer();
    made.items.add(new File(['content'], name));
    return made;
  }, kHostileName);
  await page.dispatchEvent('#drop', 'drop', {dataTransfer: transfer});
  await fileRow('onerror').waitFor();
  assert.equal(await fileRow('onerror').getByRole('link').innerText(), kHostileName);
  assert.ok(await page.evaluate(() => document.documentElement.scrollWidth) <= kPhone.width);

  await page.getByRole('button', {name: 'Remove large.bin'}).click();
  await isTold('large.bin is removed.');
  assert.equal(await fileRow('large.bin').count(), 0);

  // A session that is over leads back to the login, and to where one was.
  await page.context().clearCookies();
  await page.getByRole('link', {name: 'onerror'}).click();
  await isTold('You are not logged in.');
  await logIn("ben's password");
  await page.getByRole('button', {name: 'Remove <img'}).click();
  await page.getByText('Nothing is shared yet.').waitFor();

  await page.getByRole('button', {name: 'Log out'}).click();
  await isTold('You are logged out.');
  assert.ok(await page.getByLabel('User').isVisible());
  await page.reload();
  await page.getByLabel('User').waitFor();
  assert.deepEqual(problems, []);
}

try {
  await test();
} finally {
  await browser.close();
}
