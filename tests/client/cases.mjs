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
    requests.push({...options, line: String(options.body ?? new URL(url).search)});
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

async function logIn(open, options) {
  const client = open(undefined, options);
  await client.login('ben', "ben's password");
  return client;
}

async function keepsTypes({open}) {
  const hello = (params, options) => open().call(kGreeting, 2, 'hello', params, options);
  const names = ['Ada', '10', '-', 'true', 'null', '"q"', '[1]', '{}', 'a&b=c+%20 ', 'é😀\u0001'];
  for (const name of [...names, '"\ud800']) {
    const expected = {lines: [`Hello, ${name.replace('\ud800', '\ufffd')}!`]};
    equal(await hello({name, times: 1}), expected, name);
    equal(await hello({name, times: 1}, {httpMethod: 'GET'}), expected, name);
  }
  await fails(hello({times: '2'}),
    {name: 'WebAPIError', code: 1001, errors: {parameter: 'times'}, ...kHello, status: 200});
}

async function tellsFailures({open, url}) {
  const hello = (client, options) => client.call(kGreeting, 1, 'hello', {}, options);
  await fails(hello(open(`${url}x`)), {name: 'TransportError', status: 403});
  await fails(hello(open('http://127.0.0.1:1/')), {name: 'TransportError', status: 0});
  // The password's hash takes longer.
  await fails(open().login('ben', "ben's password", {timeout: 2}), {name: 'TimeoutError'});
  await fails(hello(open(), {signal: AbortSignal.abort()}), {name: 'AbortError'});
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
    const results = await Promise.allSettled([{...kHello, params: cycle}, ...calls].map(
      ({api, version, method, params}) => client.call(api, version, method, params)));
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
  await intercept(change, async () => equal((await watch()).progress, last, 'result'));
  equal(last.percent, 100, 'progress');
  const other = await client.startTask(kChecksum, 1, 'start', {path: '.'});
  await fails(other.result({signal: AbortSignal.timeout(20)}), {name: 'TimeoutError'});
  await other.stop();
  await fails(other.result(), {name: 'TaskError', id: other.id});
  await client.logout();
}

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
  const changes = (response, count) => (count > 1 ? new Response('') : broken(response, 9));
  await intercept(changes, async () => fails(fetchFile().then(bytesOf), {status: 200}));
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
    await client.logout();
    const element = {...kHello, params: await client.encipherParams(params, encipher)};
    equal((await open().batch([element]))[0].value, expected, 'element');
  });
  // Node sends uploads by fetch, too, which are no lines.
  const seen = requests.filter(({duplex}) => !duplex).map(
    ({line}) => (wireForms[encipher].test(line) ? '' : /Key|Entry/.exec(line)?.[0]));
  equal(seen.sort(), [...Array(7).fill(''), 'Entry', 'Key', 'Key'], 'requests');

  for (const forge of forgeries) {
    const other = open(undefined, {encipher});
    const change = async (response, count) => (count > 1 ? response
      : new Response(JSON.stringify({success: true, data: forge((await response.json()).data)})));
    const {length} = await intercept(change,
      async () => equal(await other.call(kGreeting, 2, 'hello', params), expected, 'renewed'));
    equal(length, 4, 'key, refusal, key, call');
  }
}

export const cases = {
  keepsTypes, tellsFailures, logsInAndOut, batches, watchesTasks, movesFiles,
  enciphersTexts: context => enciphers('cipher', context),
  enciphersPairs: context => enciphers('aes', context),
};
