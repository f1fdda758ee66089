// The client in Node: url=... node --test webapi.test.mjs

import assert from 'node:assert/strict';
import {getEventListeners} from 'node:events';
import {readFile} from 'node:fs/promises';
import {Readable} from 'node:stream';
import test from 'node:test';

import * as client from '../../client/webapi.mjs';
import {cases} from './cases.mjs';

const url = process.env.url;
const context = {
  url,
  token: process.env.token,
  open: (other, options) => new client.WebAPIClient(other ?? url, options),
  fileOf: (name, content) =>
    ({name, size: content.length, stream: () => Readable.from([Buffer.from(content)])}),
};

for (const [name, run] of Object.entries(cases)) {
  test(name, () => run(context));
}

test('tells what is wrong with a file', async () => {
  const file = {size: 2, stream: () => Readable.from([Buffer.from('x')])};
  await assert.rejects(context.open().upload('A', 1, 'b', {file}), RangeError);
});

test('leaves no listeners', async () => {
  const {signal} = new AbortController();
  await context.open().call('ORBO.Example.Greeting', 1, 'hello', {}, {signal, encipher: 'aes'});
  assert.deepEqual(getEventListeners(signal, 'abort'), []);
});

test('is declared', async () => {
  const types = await readFile(new URL('../../client/webapi.d.mts', import.meta.url), 'utf8');
  const declared = [...types.matchAll(/^export class (\w+)([^]*?)^}/gm)].map(([, name, members]) =>
    [name, [...members.matchAll(/^  (?:private )?(\w+)[(<]/gm)].map(match => match[1]).sort()]);
  const made = Object.entries(client).map(([name, {prototype}]) =>
    [name, Object.getOwnPropertyNames(prototype).sort()]);
  assert.deepEqual(declared.sort(), made);
});
