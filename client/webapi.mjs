// A client of the web APIs, for browsers and Node 18 or later, without dependencies.
// docs/client.md is a tour; webapi.d.mts has the types.

const kSessionAPI = {api: 'ORBO.Session', version: 1};
const kKeyCall = {api: 'ORBO.ParameterKey', version: 1, method: 'get'};
const kCompoundCall = {api: 'ORBO.Entry.Request', version: 1, method: 'request'};
const kMostBatchedCalls = 1000;
const kBadRequest = 101;

// Milliseconds between two looks at a task, or attempts to reach the server.
const kFirstWait = 500;
const kLongestWait = 5000;
const kMostFailures = 5;

// The server takes enciphered parameters that are five minutes old at most.
const kMostClockDrift = 60000;

// --- Errors ---

/** What an API answers instead of a result. */
export class WebAPIError extends Error {
  /**
   * @param {{api: string, version: number, method: string}} call
   * @param {{code?: number, errors?: unknown}} error of the answer
   * @param {{status?: number, word?: string | null}} [facts] of the HTTP answer
   */
  constructor({api, version, method}, error, {status = 200, word = null} = {}) {
    const code = error?.code ?? 0;
    super(`${api} ${version} ${method}: error ${code}${word ? ` (${word})` : ''}`);
    this.name = 'WebAPIError';
    Object.assign(this, {code, errors: error?.errors ?? null, api, version, method, status, word});
  }
}

/** No answer of an API: nothing came (status 0), or something else than JSON. */
export class TransportError extends Error {
  constructor(message, status = 0, options = undefined) {
    super(message, options);
    this.name = 'TransportError';
    this.status = status;
  }
}

/** Parameters cannot be enciphered here. */
export class EncipherError extends Error {
  constructor(message) {
    super(message);
    this.name = 'EncipherError';
  }
}

/** A task that ended without getting there: stopped, killed, or without a result. */
export class TaskError extends Error {
  constructor(id, state) {
    super(`the task ${id} ended before it was done`);
    this.name = 'TaskError';
    Object.assign(this, {id, state});
  }
}

// --- The parameter line ---

// A character without its other half, which the server would not read as JSON.
function toJSON(value) {
  return JSON.stringify(value)?.replace(/\\(ud[89a-f]..|.)/g,
    escape => (escape.length === 6 ? '\ufffd' : escape));
}

// The server takes a value that reads as JSON for JSON, any other for text.  Web servers
// refuse URLs with control characters, which JSON writes in another way.
function toText(value) {
  const isPlain = typeof value === 'string' &&
    !/^(["[{\-\d]|(true|false|null)$)|[\0-\x1f]/.test(value);
  return isPlain ? value : toJSON(value);
}

function toLine(values) {
  const line = new URLSearchParams();
  for (const [name, value] of Object.entries(values)) {
    const text = toText(value);
    if (text !== undefined) {
      line.set(name, text);
    }
  }
  return line;
}

// --- Time limits ---

// A signal that follows `signal` and the limit of `milliseconds` (0: none) until `end`.
function deadline(signal, milliseconds = 0) {
  const controller = new AbortController();
  const follow = () => controller.abort(signal.reason);
  const expire = () => controller.abort(new DOMException('The call took too long', 'TimeoutError'));
  const timer = milliseconds > 0 ? setTimeout(expire, milliseconds) : undefined;
  signal?.addEventListener('abort', follow);
  if (signal?.aborted) {
    follow();
  }
  return {
    signal: controller.signal,
    end() {
      clearTimeout(timer);
      signal?.removeEventListener('abort', follow);
    },
  };
}

function sleep(milliseconds, signal) {
  return new Promise((resolve, reject) => {
    const finish = () => {
      clearTimeout(timer);
      signal?.removeEventListener('abort', finish);
      signal?.aborted ? reject(signal.reason) : resolve();
    };
    const timer = setTimeout(finish, milliseconds);
    signal?.addEventListener('abort', finish);
    if (signal?.aborted) {
      finish();
    }
  });
}

// --- HTTP ---

const failureOf = (cause, message, signal) =>
  (signal?.aborted ? signal.reason : new TransportError(message, 0, {cause}));

async function request(url, options) {
  try {
    return await fetch(url, options);
  } catch (cause) {
    throw failureOf(cause, 'The server cannot be reached', options.signal);
  }
}

async function readAnswer(response, signal) {
  const {status, headers} = response;
  try {
    return {status, word: headers.get('x-request-error'), text: await response.text()};
  } catch (cause) {
    throw failureOf(cause, 'The answer broke off', signal);
  }
}

// The data of an answer to `call`.
function dataOf({status, word, text}, call) {
  let answer;
  try {
    answer = JSON.parse(text);
  } catch (cause) {
    throw new TransportError(`No answer of an API, but the HTTP status ${status}`, status, {cause});
  }
  if (answer?.success !== true) {
    throw new WebAPIError(call, answer?.error, {status, word});
  }
  return answer.data;
}

// --- Enciphering ---

const kAlgorithm = 'ECDH-P256+HKDF-SHA256+AES256GCM';
const kCurve = {name: 'ECDH', namedCurve: 'P-256'};

// Node 18 has it as a module alone.
const webCrypto = async () => globalThis.crypto ?? (await import('node:crypto')).webcrypto;

async function subtleCrypto() {
  const {subtle} = await webCrypto();
  if (!subtle) {
    throw new EncipherError('Enciphering needs WebCrypto, which browsers give to pages by https ' +
      'and from the loopback interface only');
  }
  return subtle;
}

const toBytes = text => new TextEncoder().encode(text);

function concatenate(...parts) {
  const views = parts.map(part => new Uint8Array(part));
  const whole = new Uint8Array(views.reduce((size, view) => size + view.length, 0));
  views.reduce((offset, view) => (whole.set(view, offset), offset + view.length), 0);
  return whole;
}

function toBase64URL(bytes) {
  let binary = '';
  bytes.forEach(byte => (binary += String.fromCharCode(byte)));
  return btoa(binary).replaceAll('+', '-').replaceAll('/', '_').replaceAll('=', '');
}

const fromBase64URL = text => Uint8Array.from(
  atob(text.replaceAll('-', '+').replaceAll('_', '/')), letter => letter.charCodeAt(0));

/** A server's key for parameters, and how far its clock is ahead of this one. */
class ServerKey {
  static async import(subtle, {algorithm, kid, spki, time}, now) {
    if (algorithm !== kAlgorithm) {
      throw new EncipherError(`The server enciphers in another way: ${algorithm}`);
    }
    const key = await subtle.importKey('spki', fromBase64URL(spki), kCurve, false, []);
    return Object.assign(new ServerKey(), {subtle, kid, key, offset: time - now});
  }

  isAsGoodAs(other) {
    return this.kid === other.kid && Math.abs(this.offset - other.offset) < kMostClockDrift;
  }

  /** The reserved members that stand for a parameter line. */
  async encipher(line, form) {
    if (form === 'cipher') {
      return {__cIpHeRtExT: await this.#seal('e1', line)};
    }
    if (form !== 'aes') {
      throw new TypeError(`no form of enciphering: ${form}`);
    }
    const [token, text] = await this.#sealPair(line);
    return {__nEkOtReHpIc: token, __tXeTrEhPiC: text};
  }

  // The single text, or the token of a pair.
  async #seal(tag, text) {
    const {subtle} = this;
    const own = await subtle.generateKey(kCurve, false, ['deriveBits']);
    const ephemeral = await subtle.exportKey('raw', own.publicKey);
    const secret = await subtle.deriveBits({name: 'ECDH', public: this.key}, own.privateKey, 256);
    const label = `${tag}.${this.kid}`;
    const sealed = await this.#encrypt(secret, concatenate(ephemeral, toBytes(this.kid)), tag,
      new Uint8Array(12), label, text);
    return `${label}.${toBase64URL(concatenate(ephemeral, sealed))}`;
  }

  // A token and the text that its key, used for nothing else, opens.
  async #sealPair(text) {
    const random = size => webCrypto().then(made => made.getRandomValues(new Uint8Array(size)));
    const keyText = toBase64URL(await random(24));
    const iv = await random(12);
    const sealed = await this.#encrypt(toBytes(keyText), new Uint8Array(), 'a1', iv, 'a1', text);
    return [await this.#seal('w1', keyText), toBase64URL(concatenate(iv, sealed))];
  }

  async #encrypt(secret, salt, tag, iv, additional, text) {
    const material = await this.subtle.importKey('raw', secret, 'HKDF', false, ['deriveKey']);
    const key = await this.subtle.deriveKey(
      {name: 'HKDF', hash: 'SHA-256', salt, info: toBytes(`webapi-KEP5 ${tag}`)},
      material, {name: 'AES-GCM', length: 256}, false, ['encrypt']);
    const inner = concatenate(new Uint8Array(8), toBytes(text));
    new DataView(inner.buffer).setBigUint64(0, BigInt(Math.round(Date.now() + this.offset)));
    return this.subtle.encrypt(
      {name: 'AES-GCM', iv, additionalData: toBytes(additional)}, key, inner);
  }
}

// --- Uploads ---

const isFile = value => typeof value?.stream === 'function' && typeof value.size === 'number';

// The files of a parameter; null where it is none of files.
function filesOf(value) {
  const isList = (Array.isArray(value) && value.length > 0) ||
    (globalThis.FileList && value instanceof FileList);
  const files = isList ? [...value] : [value];
  return files.every(isFile) ? files : null;
}

// Takes the files out of parameters.
function splitFiles(params) {
  const values = {};
  const files = [];
  for (const [name, value] of Object.entries(params)) {
    const list = filesOf(value);
    if (list) {
      files.push(...list.map(file => ({name, file})));
    } else {
      values[name] = value;
    }
  }
  return {values, files};
}

const quote = name => `"${name.replace(/["\r\n]/g, encodeURIComponent)}"`;

// A form of text fields and then files, as pieces of a body of known size.
async function formBody(fields, files) {
  const random = (await webCrypto()).getRandomValues(new Uint8Array(18));
  const boundary = `webapi${toBase64URL(random)}`;
  const head = (name, rest = '') => new Blob([
    `--${boundary}\r\nContent-Disposition: form-data; name=${quote(name)}${rest}\r\n\r\n`]);
  const pieces = [];
  for (const [name, value] of fields) {
    pieces.push(head(name), new Blob([value, '\r\n']));
  }
  for (const {name, file} of files) {
    const type = file.type || 'application/octet-stream';
    pieces.push(head(name, `; filename=${quote(file.name ?? 'blob')}\r\nContent-Type: ${type}`),
      file, new Blob(['\r\n']));
  }
  pieces.push(new Blob([`--${boundary}--\r\n`]));
  const size = pieces.reduce((sum, piece) => sum + piece.size, 0);
  return {pieces, size, type: `multipart/form-data; boundary=${boundary}`};
}

// Browsers tell the progress of uploads by XMLHttpRequest alone.
function sendByXHR(url, {pieces, size, type}, {signal, onProgress}) {
  if (!pieces.every(piece => piece instanceof Blob)) {
    throw new TypeError('Browsers send Files and Blobs, no streams');
  }
  return new Promise((resolve, reject) => {
    const xhr = new XMLHttpRequest();
    xhr.upload.addEventListener('progress', ({loaded}) => onProgress?.({loaded, total: size}));
    xhr.addEventListener('load', () => resolve({
      status: xhr.status,
      word: xhr.getResponseHeader('x-request-error'),
      text: xhr.responseText,
    }));
    xhr.addEventListener('error', () => reject(new TransportError('The upload broke off')));
    xhr.addEventListener('abort', () => reject(signal.reason));
    signal.addEventListener('abort', () => xhr.abort());
    xhr.open('POST', url);
    xhr.setRequestHeader('Content-Type', type);
    xhr.send(new Blob(pieces));
    if (signal.aborted) {
      xhr.abort();
    }
  });
}

async function* contentOf({pieces, size}, onProgress) {
  let loaded = 0;
  for (const piece of pieces) {
    let left = piece.size;
    for await (const chunk of piece.stream()) {
      // Node's fetch waits for ever after an empty one.
      if (chunk.length > 0) {
        yield chunk;
        loaded += chunk.length;
        left -= chunk.length;
        onProgress?.({loaded, total: size});
      }
    }
    if (left !== 0) {
      throw new TransportError(`${piece.name ?? 'A file'} is not of the size that was told`);
    }
  }
}

async function sendByFetch(url, body, {signal, onProgress}) {
  const response = await request(url, {
    method: 'POST',
    headers: {'Content-Type': body.type, 'Content-Length': String(body.size)},
    body: contentOf(body, onProgress),
    duplex: 'half',
    signal,
  });
  return readAnswer(response, signal);
}

// --- Downloads ---

function fileNameOf(disposition) {
  const extended = /filename\*=UTF-8''([^;]*)/i.exec(disposition);
  const plain = /filename="((?:[^"\\]|\\.)*)"/i.exec(disposition);
  return extended ? decodeURIComponent(extended[1]) : plain?.[1].replace(/\\(.)/g, '$1') ?? null;
}

/**
 * A file that arrives: iterate over it, or take it as a whole by `blob()`.  Where the
 * connection breaks the rest is fetched by a range of the same version of the file.
 */
export class Download {
  #response;
  #fetchRest;
  #onProgress;

  constructor(response, fetchRest, onProgress) {
    const {headers} = response;
    const range = /^bytes (\d+)-\d+\/(\d+)$/.exec(headers.get('content-range') ?? '');
    const isPacked = headers.has('content-encoding');
    const length = isPacked ? null : headers.get('content-length');
    this.name = fileNameOf(headers.get('content-disposition') ?? '');
    this.type = headers.get('content-type') ?? '';
    this.etag = headers.get('etag');
    /** Where in the file this begins. */
    this.offset = range ? Number(range[1]) : 0;
    /** Of the whole file; null where the server does not tell. */
    this.size = range ? Number(range[2]) : length === null ? null : Number(length);
    this.#response = response;
    this.#fetchRest = fetchRest;
    this.#onProgress = onProgress;
  }

  async *[Symbol.asyncIterator]() {
    let loaded = this.offset;
    let reader = this.#response.body.getReader();
    try {
      for (;;) {
        const {value, failure} = await reader.read().catch(error => ({failure: error}));
        if (value) {
          loaded += value.length;
          this.#onProgress?.({loaded, total: this.size});
          yield value;
        } else if (failure === undefined && (this.size === null || loaded === this.size)) {
          return;
        } else {
          const rest = await this.#fetchRest(this, loaded, failure);
          reader = rest.body.getReader();
        }
      }
    } finally {
      // Left early, the rest is not wanted.
      reader.cancel().catch(() => {});
    }
  }

  async blob() {
    const chunks = [];
    for await (const chunk of this) {
      chunks.push(chunk);
    }
    return new Blob(chunks, {type: this.type});
  }

  /** Takes leave of what has not been read. */
  async cancel() {
    await this.#response.body.cancel();
  }
}

// Fetches what follows the first `loaded` bytes, by `open`; waits longer each time until
// more has arrived.
function resumption(open, mayResume, signal) {
  let failures = 0;
  let reached = 0;
  return async (file, loaded, cause) => {
    failures = loaded > reached ? 0 : failures;
    reached = loaded;
    while (mayResume && file.etag && failures++ < kMostFailures) {
      await sleep(kFirstWait * failures, signal);
      try {
        const rest = await open(loaded, file.etag);
        if (rest.status === 206) {
          return rest;
        }
        await rest.body.cancel();
        throw new TransportError('The file has changed while it was fetched', rest.status);
      } catch (error) {
        if (!(error instanceof TransportError) || error.status !== 0) {
          throw error;
        }
        cause = error;
      }
    }
    throw failureOf(cause, 'The download broke off', signal);
  };
}

// --- Tasks ---

/** A background task: look at it, iterate over its states, wait for its result, stop it. */
export class Task {
  #client;
  #names;

  constructor(client, id, {api, version, method = 'start', statusMethod = 'status',
    stopMethod = 'stop', idParameter = 'task_id'}) {
    this.id = id;
    this.#client = client;
    this.#names = {api, version, method, statusMethod, stopMethod, idParameter};
  }

  #call(method, options) {
    const {api, version, idParameter} = this.#names;
    return this.#client.call(api, version, method, {[idParameter]: this.id}, options);
  }

  /** The state now: `finish`, `progress`, and the last body (`success`, `data` or `error`). */
  async status(options) {
    const status = await this.#call(this.#names.statusMethod, options);
    return {...status, progress: status.data?.progress ?? {}};
  }

  stop(options) {
    return this.#call(this.#names.stopMethod, options);
  }

  /**
   * The states until the task is finished, each that differs from the one before.  Asks
   * less often while nothing changes, and goes on over a few failures of the network.
   */
  async *states({signal, firstWait = kFirstWait, longestWait = kLongestWait} = {}) {
    let last;
    let wait = firstWait;
    for (let failures = 0; ; await sleep(wait, signal)) {
      let status;
      try {
        status = await this.status({signal});
        failures = 0;
      } catch (error) {
        if (!(error instanceof TransportError) || ++failures > kMostFailures) {
          throw error;
        }
      }
      const text = status && JSON.stringify(status);
      if (status && text !== last) {
        last = text;
        wait = firstWait;
        yield status;
      } else {
        wait = Math.min(wait * 1.5, longestWait);
      }
      if (status?.finish) {
        return;
      }
    }
  }

  [Symbol.asyncIterator]() {
    return this.states();
  }

  /** The data of the task's result, once it is finished. */
  async result({onProgress, ...options} = {}) {
    let last;
    for await (last of this.states(options)) {
      onProgress?.(last.progress, last);
    }
    if (last.success === false) {
      throw new WebAPIError(this.#names, last.error);
    }
    // One that tells its progress has got there at 100 percent, not sooner.
    const isComplete = !last.data?.progress || last.progress.percent >= 100;
    if (last.success !== true || !isComplete) {
      throw new TaskError(this.id, last);
    }
    return last.data;
  }
}

// --- The client ---

// A page's cookie carries its session; programs have no cookies.
const kHasCookies = globalThis.location !== undefined;

// As of Promise.allSettled.
function settled(call, body) {
  return body?.success === true
    ? {status: 'fulfilled', value: body.data}
    : {status: 'rejected', reason: new WebAPIError(call, body?.error)};
}

/** Calls of one server's web APIs by one caller. */
export class WebAPIClient {
  #queue = [];
  #key;

  /**
   * @param {string | URL} url of the CGI program
   * @param {object} [options] who calls, and defaults of the calls; see webapi.d.mts
   */
  constructor(url, {sid, token, session = kHasCookies && !sid && !token ? 'cookie' : 'parameter',
    encipher = false, autoBatch = false, timeout = 120000} = {}) {
    this.url = new URL(url, globalThis.document?.baseURI ?? globalThis.location?.href).href;
    Object.assign(this, {sid, token, session, encipher, autoBatch, timeout});
  }

  /** The URL of a call, for links; it holds neither session nor token. */
  link(api, version, method, params = {}) {
    return this.#urlOf(this.#valuesOf({api, version, method}, params, true));
  }

  /** Makes a call; gives the data of its result. */
  async call(api, version, method, params = {}, {autoBatch = this.autoBatch, ...options} = {}) {
    const call = {api, version, method};
    if (!autoBatch || Object.keys(options).length > 0) {
      return this.#callNow(call, params, options);
    }
    // What cannot be sent fails here, and not the calls that it would go with.
    toJSON(params);
    return this.#enqueue({...call, params});
  }

  /** Makes calls in one request; gives for each what Promise.allSettled would. */
  async batch(calls, {stopWhenError = false, ...options} = {}) {
    if (calls.length === 0) {
      return [];
    }
    const compound = calls.map(
      ({api, version, method, params}) => ({...params, api, version, method}));
    const {result} = await this.#callNow(kCompoundCall,
      {compound, stop_when_error: stopWhenError}, options);
    return calls.map((call, i) => settled(call, result[i]));
  }

  /** Logs in; the session is the page's cookie, or goes with the calls of this client. */
  async login(user, password, {application, language, ...options} = {}) {
    const session = await this.#callNow({...kSessionAPI, method: 'open'},
      {user, password, application, language}, options);
    if (this.session === 'parameter') {
      this.sid = session.sid;
    }
    return session;
  }

  async logout(options = {}) {
    await this.#callNow({...kSessionAPI, method: 'close'}, {}, options);
    this.sid = undefined;
  }

  /** Makes the call that starts a task. */
  async startTask(api, version, method, params = {},
    {statusMethod, stopMethod, idParameter, ...options} = {}) {
    const call = {api, version, method};
    const {task_id: id} = await this.#callNow(call, params, options);
    return this.task(id, {...call, statusMethod, stopMethod, idParameter});
  }

  /** A task that was started before. */
  task(id, names) {
    return new Task(this, id, names);
  }

  /** Sends a form; parameters are files where they are Files, Blobs, or lists of these. */
  async upload(api, version, method, params,
    {onProgress, signal, timeout = 0, encipher = this.encipher} = {}) {
    const call = {api, version, method};
    const {values, files} = splitFiles(params);
    // The session is not for URLs, and the server looks for it among the fields only where
    // these name the call, too.
    const all = {...values, ...call, version: String(version), ...this.#sessionParameters()};
    const send = globalThis.XMLHttpRequest ? sendByXHR : sendByFetch;
    const limit = deadline(signal, timeout);
    try {
      return await this.#enciphered(all, encipher, async sent => {
        const isText = ([, value]) => typeof value === 'string';
        // What has another type keeps it in the URL: the server takes fields for text.
        const typed = Object.entries(sent).filter(pair => !isText(pair));
        const body = await formBody(Object.entries(sent).filter(isText), files);
        const answer = await send(this.#urlOf(Object.fromEntries(typed)), body,
          {signal: limit.signal, onProgress});
        return dataOf(answer, call);
      });
    } finally {
      limit.end();
    }
  }

  /** Fetches a file; resolves when it begins to arrive. */
  async download(api, version, method, params = {},
    {offset = 0, etag, onProgress, signal, encipher = this.encipher} = {}) {
    const call = {api, version, method};
    const byURL = this.#mayUseURL(encipher);
    const open = (first, tag) => {
      const headers = first > 0 && tag ? {'Range': `bytes=${first}-`, 'If-Range': tag} : {};
      return this.#enciphered(this.#valuesOf(call, params, byURL), encipher,
        sent => this.#fetchFile(call, sent, {byURL, headers, signal}));
    };
    return new Download(await open(offset, etag), resumption(open, byURL, signal), onProgress);
  }

  /** Parameters as what the server deciphers, to be put where it looks for that. */
  async encipherParams(params, form = 'cipher') {
    const key = await this.#serverKey();
    return key.encipher(toLine(params), form);
  }

  #sessionParameters() {
    if (this.session === 'cookie') {
      return {};
    }
    return this.sid ? {_sid: this.sid} : {tid: this.token};
  }

  // Nothing secret goes into URLs, which end up in logs; programs can send a cookie.
  #mayUseURL(encipher) {
    return !encipher &&
      (this.session === 'cookie' || (this.sid ? !kHasCookies : this.token === undefined));
  }

  #valuesOf(call, params, byURL) {
    return {...call, ...params, ...call, ...(byURL ? {} : this.#sessionParameters())};
  }

  #urlOf(values) {
    const url = new URL(this.url);
    url.search = toLine(values);
    return url.href;
  }

  #fetch(values, {byURL = false, headers = {}, signal}) {
    const credentials = this.session === 'cookie' ? 'same-origin' : 'omit';
    if (!byURL) {
      return request(this.url,
        {method: 'POST', body: toLine(values), headers, credentials, signal});
    }
    const cookie = this.session !== 'cookie' && this.sid ? {Cookie: `id=${this.sid}`} : {};
    return request(this.#urlOf(values), {headers: {...headers, ...cookie}, credentials, signal});
  }

  async #fetchFile(call, values, options) {
    const response = await this.#fetch(values, options);
    const {headers, status} = response;
    const isFile = headers.has('etag') || headers.has('content-disposition');
    if (!isFile && headers.get('content-type')?.startsWith('application/json')) {
      // Either an error, or a stream that happens to be JSON.
      const answer = await readAnswer(response.clone(), options.signal);
      if (/"success"\s*:\s*false/.test(answer.text)) {
        dataOf(answer, call);
      }
    }
    if (status >= 400) {
      throw new TransportError(`No file, but the HTTP status ${status}`, status);
    }
    return response;
  }

  async #callNow(call, params, {signal, timeout = this.timeout, encipher = this.encipher,
    httpMethod = 'POST'}) {
    const limit = deadline(signal, timeout);
    const byURL = httpMethod === 'GET' && this.#mayUseURL(encipher);
    const {signal: limited} = limit;
    try {
      return await this.#enciphered(this.#valuesOf(call, params, byURL), encipher, async sent => {
        const response = await this.#fetch(sent, {byURL, signal: limited});
        return dataOf(await readAnswer(response, limited), call);
      });
    } finally {
      limit.end();
    }
  }

  // Hands `values` to `send`, enciphered where that is wanted: once more with another key
  // where the server could not open them.
  async #enciphered(values, form, send) {
    if (!form) {
      return send(values);
    }
    const line = toLine(values);
    const key = await this.#serverKey();
    try {
      return await send(await key.encipher(line, form));
    } catch (error) {
      if (!(error instanceof WebAPIError) || error.code !== kBadRequest) {
        throw error;
      }
      const renewed = await this.#serverKey(key);
      if (renewed.isAsGoodAs(key)) {
        throw error;
      }
      return send(await renewed.encipher(line, form));
    }
  }

  // The server's key; another than `stale` where it has one.
  async #serverKey(stale) {
    if (!this.#key || await this.#key === stale) {
      this.#key = this.#fetchKey();
      this.#key.catch(() => (this.#key = undefined));
    }
    return this.#key;
  }

  async #fetchKey() {
    const subtle = await subtleCrypto();
    const begin = Date.now();
    const facts = await this.#callNow(kKeyCall, {}, {encipher: false});
    return ServerKey.import(subtle, facts, (begin + Date.now()) / 2);
  }

  #enqueue(call) {
    return new Promise((resolve, reject) => {
      this.#queue.push({call, resolve, reject});
      if (this.#queue.length === 1) {
        queueMicrotask(() => this.#flush());
      }
    });
  }

  #flush() {
    while (this.#queue.length > 0) {
      this.#sendTogether(this.#queue.splice(0, kMostBatchedCalls));
    }
  }

  async #sendTogether(waiting) {
    let results;
    try {
      results = await this.#settleTogether(waiting.map(({call}) => call));
    } catch (reason) {
      results = waiting.map(() => ({status: 'rejected', reason}));
    }
    waiting.forEach(({resolve, reject}, i) => {
      const {status, value, reason} = results[i];
      status === 'fulfilled' ? resolve(value) : reject(reason);
    });
  }

  async #settleTogether(calls) {
    if (calls.length > 1) {
      return this.batch(calls);
    }
    const [{api, version, method, params}] = calls;
    return [{status: 'fulfilled', value: await this.#callNow({api, version, method}, params, {})}];
  }
}
