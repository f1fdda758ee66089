// What the client does, in Node and in a browser, against the example server.

const kGreeting = 'ORBO.Example.Greeting';
const kMember = 'ORBO.Example.Greeting.Member';
const kShare = 'ORBO.Example.Share';
const kChecksum = 'ORBO.Example.Checksum';
const kHello = {api: kGreeting, version: 2, method: 'hello'};

const content = Uint8Array.from({length: 1 << 20}, (_, i) => (i * i) >> 7);
const bytesOf = async file => [...new Uint8Array(await (await file.blob()).arrayBuffer())];

function equal(actual, expected, name) {
  const [shown, wanted] = [actual, expected].map(value => JSON.stringify(value));
  if (shown !== wanted) {
    throw new Error(`${name}: ${shown} instead of ${wanted}`);
  }
}

// Compares the members that `expected` has of the error that `promise` rejects with.
async function fails(promise, expected) {
  const error = await promise.then(value => ({value}), reason => reason);
  const facts = Object.fromEntries(Object.keys(expected).map(key => [key, error[key]]));
  equal(facts, expected, error.stack ?? 'no failure');
}

// Runs `work` with `change` between the client and fetch; gives the requests made.
async function intercept(change, work) {
  const {fetch} = globalThis;
  const requests = [];
  globalThis.fetch = async (url, options) => {
    requests.push({...options, url, line: String(options.body ?? new URL(url).search)});
    return change(await fetch(url, options), requests.length);
  };
  await work().finally(() => (globalThis.fetch = fetch));
  return requests;
}

// The answer as a connection gives it that breaks after `size` bytes.
const broken = (response, size) => new Response(new ReadableStream({
  start: async controller =>
    controller.enqueue(new Uint8Array(await response.arrayBuffer()).subarray(0, size)),
  pull: controller => controller.error(new TypeError('broken')),
}), response);

const lost = () => Promise.reject(new TypeError('lost'));
const delayed = response => new Promise(resolve => setTimeout(resolve, 200, response));

async function logIn(open, options) {
  const client = open(undefined, options);
  await client.login('ben', "ben's password");
  return client;
}

async function keepsTypes({open}) {
  const hello = (params, options) => open().call(kGreeting, 2, 'hello', params, options);
  const names = ['Ada', '10', '-', 'true', 'null', '"q"', '[1]', '{}', 'a&b=c+%20 ', ' 10', 'é😀\u0001', '\u007f\u0085'];
  for (const name of [...names, '"\ud800']) {
    const expected = {lines: [`Hello, ${name.replace('\ud800', '\ufffd')}!`]};
    equal(await hello({name, times: 1}), expected, name);
    equal(await hello({name, times: 1}, {httpMethod: 'GET'}), expected, name);
  }
  await fails(hello({times: '2'}),
    {name: 'WebAPIError', code: 1001, errors: {parameter: 'times'}, ...kHello, status: 200});
  await fails(hello({list: [NaN]}), {name: 'RangeError'});
}

async function tellsFailures({open, url}) {
  const hello = (client, options) => client.call(kGreeting, 1, 'hello', {}, options);
  await fails(hello(open(`${url}x`)), {name: 'TransportError', status: 403});
  await fails(hello(open('http://127.0.0.1:1/')), {name: 'TransportError', status: 0});
  // The password's hash takes longer.
  await fails(open().login('ben', "ben's password", {timeout: 2}), {name: 'TimeoutError'});
  await fails(hello(open(), {signal: AbortSignal.abort()}), {name: 'AbortError'});
  // The limit counts while the key is on its way, too; then nothing is left to send.
  equal((await intercept(delayed, () => fails(
    hello(open(), {encipher: 'cipher', timeout: 50}), {name: 'TimeoutError'}))).length, 1, 'key');
  await intercept(delayed, () => hello(open(), {timeout: Infinity}));
  for (const text of ['<p>', 'null', '{"error":{"code":5}}']) {
    await intercept(() => new Response(text, {status: 502}),
      () => fails(hello(open()), {name: 'TransportError', status: 502}));
  }
  await fails(open().call(kMember, 1, 'hello'), {code: 119, word: 'unauth'});
  await fails(open().login('ben', 'wrong'), {code: 1104});
}

async function logsInAndOut({open}) {
  const client = await logIn(open);
  const ask = httpMethod => client.call(kMember, 1, 'hello', {}, {httpMethod});
  equal([await ask('GET'), await ask('POST')], Array(2).fill({text: 'Hello, ben!'}), 'member');
  const other = open(undefined, {sid: client.sid});
  await fails(open(undefined, {session: 'parameter'}).call(kMember, 1, 'hello'), {code: 119});
  await client.logout();
  await fails(other.call(kMember, 1, 'hello'), {name: 'WebAPIError'});
}

async function tellsNoSecrets({open, url, fileOf, token}) {
  equal(new URL(open(`${url}?a=1`).link('A', 2, 'b', {_sid: 'x', tid: 'x', c: undefined})).search,
    '?a=1&api=A&version=2&method=b', 'link');
  const own = {session: 'parameter'};
  const requests = await intercept(response => response, async () => {
    const {sid} = await open(undefined, own).login('ben', "ben's password", {httpMethod: 'GET'});
    for (const who of [{sid}, {token}, {token, encipher: 'cipher'}, {token, encipher: 'aes'}]) {
      const client = open(undefined, {...own, ...who});
      const params = {_sid: 'x', tid: 'x'};
      const {text} = await client.call(kMember, 1, 'hello', params, {httpMethod: 'GET'});
      equal(text, 'Hello, ben!', 'call');
      equal((await client.batch([{api: kMember, version: 1, method: 'hello', params}]))[0].value,
        {text}, 'batch');
      const {files: [{name}]} = await client.upload(kShare, 1, 'upload', {file: fileOf('s', content)});
      equal((await client.download(kShare, 1, 'download', {name, ...params})).name, name, 'file');
      await client.call(kShare, 1, 'remove', {name});
    }
  });
  const lines = requests.map(({line}) => line);
  equal(requests.filter(each => /_sid|tid=|password/.test(each.url)), [], 'URLs');
  equal(lines.filter(line => line.includes(token)).length, 4, 'by a token, not enciphered');
}

async function batches({open}) {
  const client = open(undefined, {autoBatch: true});
  const calls = [['10', 1], ['x', '1'], ['y', 1]].map(
    ([name, times]) => ({...kHello, params: {name, times}}));
  for (const [stopWhenError, last] of [[false, undefined], [true, 112]]) {
    const [first, ...others] = await client.batch(calls, {stopWhenError});
    equal(first.value.lines, ['Hello, 10!'], 'first');
    equal(others.map(({reason}) => reason?.code), [1001, last], 'failures');
  }
  const cycle = {};
  cycle.self = cycle;
  const requests = await intercept(response => response, async () => {
    const made = [{...kHello, params: cycle}, ...calls].map(
      ({api, version, method, params}) => client.call(api, version, method, params));
    calls[2].params.times = 'later';
    const results = await Promise.allSettled(made);
    equal(results.map(({status}) => status[0]).join(''), 'rfrf', 'together');
    await client.call(kGreeting, 1, 'hello');
  });
  equal(requests.map(({line}) => line.includes('compound=')), [true, false], 'requests');
}

async function watchesTasks({open}) {
  const client = await logIn(open);
  const task = await client.startTask(kChecksum, 1, 'start', {path: 'doc'});
  let last;
  const watch = () => task.result({firstWait: 50, onProgress: progress => (last = progress)});
  const change = (response, count) => (count % 2 ? lost() : response);
  // Of the first looks nothing comes in time.
  client.timeout = 1;
  setTimeout(() => (client.timeout = 120000), 100);
  await intercept(change, async () => equal((await watch()).progress, last, 'result'));
  equal(last.percent, 100, 'progress');
  const other = await client.startTask(kChecksum, 1, 'start', {path: '.'});
  await fails(other.result({signal: AbortSignal.timeout(20)}), {name: 'TimeoutError'});
  await other.stop();
  await fails(other.result(), {name: 'TaskError', id: other.id});
  const removed = client.task(`${other.id}x`, {api: kChecksum, version: 1});
  const asked = await intercept(response => response, () => fails(removed.result(), {code: 1002}));
  equal(asked.length, 1, 'looks at a removed one');
  const looks = await intercept(() => new Response('{"success":true,"data":{"finish":false}}'),
    () => fails(other.result({firstWait: 20, signal: AbortSignal.timeout(1000)}),
      {name: 'TimeoutError'}));
  equal(looks.length < 13, true, 'looks less often');
  await client.logout();
}

const fileNames = [
  ['attachment; filename="a\\"; filename*=UTF-8\'\'b"', 'a"; filename*=UTF-8\'\'b'],
  ["attachment; filename=a; FileName*=utf-8'en'..%2Fb%5C%C3%A4", 'ä'],
  ["attachment; filename=a/b.txt; filename*=UTF-8''%", 'b.txt'],
  ['attachment; filename="x/.."', null],
  ['inline', null],
];

async function movesFiles({open, fileOf}) {
  const name = 'ä "b"; c.bin';
  const files = [fileOf(name, content), fileOf('empty', new Uint8Array())];
  const send = (client, options) =>
    client.upload(kShare, 1, 'upload', {note: 'a\nb', count: 1, file: files}, options);
  await fails(send(open()), {code: 119});
  const client = await logIn(open);
  const steps = [];
  const stored = (await send(client, {onProgress: step => steps.push(step)})).files;
  equal(stored.map(file => [file.name, file.size]), [[name, 1 << 20], ['empty', 0]], 'stored');
  equal(steps.at(-1).loaded, steps[0].total, 'progress');
  await fails(send(client, {signal: AbortSignal.timeout(1)}), {name: 'TimeoutError'});

  const fetchFile = options => client.download(kShare, 1, 'download', {name}, options);
  const breaks = (response, count) =>
    [broken, lost, broken][count - 1]?.(response, 100000 * count) ?? response;
  let file;
  const requests = await intercept(breaks, async () => {
    file = await fetchFile();
    equal(await bytesOf(file), [...content], 'content');
  });
  equal([file.name, file.size], [name, 1 << 20], 'file');
  equal(requests.map(({headers}) => headers.Range),
    [undefined, 'bytes=100000-', 'bytes=100000-', 'bytes=400000-'], 'ranges');
  const rest = await fetchFile({offset: content.length - 3, etag: file.etag});
  equal(await bytesOf(rest), [...content.slice(-3)], 'rest');
  equal((await fetchFile({offset: 5, etag: '"other"'})).offset, 0, 'another version');
  for (const status of [200, 206]) {
    const changes = (response, count) =>
      (count > 1 ? new Response('', {status}) : broken(response, 9));
    await intercept(changes, async () => fails(fetchFile().then(bytesOf), {status}));
  }
  const packed = {headers: {'etag': '"1"', 'content-encoding': 'gzip', 'content-length': 9}};
  await intercept(() => broken(new Response('packed', packed), 3),
    () => fails(fetchFile().then(bytesOf), {status: 0}));
  for (const [disposition, expected] of fileNames) {
    await intercept(() => new Response('', {headers: {'content-disposition': disposition}}),
      async () => equal((await fetchFile()).name, expected, disposition));
  }
  await Promise.all(stored.map(each => client.call(kShare, 1, 'remove', {name: each.name})));
  await fails(fetchFile(), {code: 1002, status: 404});
  await client.logout();
}

// What is on the wire for a line, and facts of the server's key that do not hold: a clock
// that is off, a key that is gone.
const wireForms = {
  cipher: /^__cIpHeRtExT=[^&=]*$/,
  aes: /^__nEkOtReHpIc=[^&=]*&__tXeTrEhPiC=[^&=]*$/,
};
const forgeries = [
  facts => ({...facts, time: facts.time - 600000}),
  facts => ({...facts, kid: '0123456789abcdef'}),
];

async function enciphers(encipher, {open, fileOf}) {
  const params = {name: '10', times: 1};
  const expected = {lines: ['Hello, 10!']};
  const requests = await intercept(response => response, async () => {
    const client = await logIn(open, {encipher});
    equal((await client.call(kMember, 1, 'hello')).text, 'Hello, ben!', 'call');
    await fails(client.call('', 0, ''), {code: 101});
    equal((await client.batch([{...kHello, params}]))[0].value, expected, 'batch');
    const {files: [{name}]} =
      await client.upload(kShare, 1, 'upload', {count: 1, file: fileOf('ä', content)});
    equal((await bytesOf(await client.download(kShare, 1, 'download', {name}))).length,
      content.length, 'download');
    await client.call(kShare, 1, 'remove', {name});
    const nested = {open: 1, ...await client.encipherParams(params, encipher)};
    const task = await client.startTask(kChecksum, 1, 'start', {path: 'doc', webapi: nested});
    equal((await task.status()).info.param.webapi, {name: '10', open: 1, times: 1}, 'nested');
    await client.logout();
    const element = {...kHello, params: await client.encipherParams(params, encipher)};
    equal((await open().batch([element]))[0].value, expected, 'element');
  });
  // Node sends uploads by fetch, too, which are no lines.
  const seen = requests.filter(({duplex}) => !duplex).map(
    ({line}) => (wireForms[encipher].test(line) ? '' : /Key|Entry/.exec(line)?.[0]));
  equal(seen.sort(), [...Array(9).fill(''), 'Entry', 'Key', 'Key'], 'requests');

  for (const forge of forgeries) {
    const other = open(undefined, {encipher});
    const change = async (response, count) => (count > 1 ? response
      : new Response(JSON.stringify({success: true, data: forge((await response.json()).data)})));
    const {length} = await intercept(change,
      async () => equal(await other.call(kGreeting, 2, 'hello', params), expected, 'renewed'));
    equal(length, 4, 'key, refusal, key, call');
  }
  const {now} = Date;
  const left = open();
  await left.encipherParams(params, encipher);
  try {
    Date.now = () => now() + 7200000;
    const element = {...kHello, params: await left.encipherParams(params, encipher)};
    equal((await left.batch([element]))[0].value, expected, 'after the clock was set');
  } finally {
    Date.now = now;
  }
}

export const cases = {
  keepsTypes, tellsFailures, logsInAndOut, tellsNoSecrets, batches, watchesTasks, movesFiles,
  enciphersTexts: context => enciphers('cipher', context),
  enciphersPairs: context => enciphers('aes', context),
};
