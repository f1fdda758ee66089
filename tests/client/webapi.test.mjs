// The client in Node: url=... node --test webapi.test.mjs

import assert from 'node:assert/strict';
import {readFile} from 'node:fs/promises';
import {Readable} from 'node:stream';
import test from 'node:test';

import * as client from '../../client/webapi.mjs';
import {cases} from './cases.mjs';

const url = process.env.url;
const context = {
  url,
  open: (other, options) => new client.WebAPIClient(other ?? url, options),
  fileOf: (name, content) =>
    ({name, size: content.length, stream: () => Readable.from([Buffer.from(content)])}),
};

for (const [name, run] of Object.entries(cases)) {
  test(name, () => run(context));
}

test('is declared', async () => {
  const types = await readFile(new URL('../../client/webapi.d.mts', import.meta.url), 'utf8');
  const declared = [...types.matchAll(/^export class (\w+)/gm)].map(match => match[1]);
  assert.deepEqual(declared.sort(), Object.keys(client).sort());
});
