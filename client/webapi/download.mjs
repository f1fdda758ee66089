import {TransportError} from './errors.mjs';
import {dataOf, failureOf, readAnswer} from './http.mjs';
import {sleep} from './time_limit.mjs';

// Milliseconds until the first of several attempts to reach the server.
const kFirstWait = 500;
const kMostFailures = 5;

const kHeaderParameter = /;\s*([^\s;=]+)\s*=\s*(?:"((?:[^"\\]|\\.)*)"|([^\s;]*))/g;

// Of a text as in RFC 8187; undefined where it is none.
function decodeExtended(text) {
  try {
    return decodeURIComponent(/^utf-8'[^']*'(.*)$/i.exec(text)[1]);
  } catch {
    return undefined;
  }
}

// The name that the server gives, without what would lead to another directory.
function fileNameOf(disposition) {
  const found = new Map();
  for (const [, name, quoted, plain] of disposition.matchAll(kHeaderParameter)) {
    found.set(name.toLowerCase(), quoted?.replace(/\\(.)/g, '$1') ?? plain);
  }
  const path = decodeExtended(found.get('filename*')) ?? found.get('filename') ?? '';
  const name = path.replace(/^.*[/\\]/s, '');
  return /^\.{0,2}$/.test(name) ? null : name;
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
    // Length and version are those of the packed content then, which nobody sees.
    const isPacked = headers.has('content-encoding');
    const length = isPacked ? null : headers.get('content-length');
    this.name = fileNameOf(headers.get('content-disposition') ?? '');
    this.type = headers.get('content-type') ?? '';
    this.etag = isPacked ? null : headers.get('etag');
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

/**
 * Fetches what follows the first `loaded` bytes, by `open`; waits longer each time until more
 * has arrived.
 */
export function resumption(open, mayResume, signal) {
  let failures = 0;
  let reached = 0;
  return async (file, loaded, cause) => {
    failures = loaded > reached ? 0 : failures;
    reached = loaded;
    while (mayResume && file.etag && failures++ < kMostFailures) {
      await sleep(kFirstWait * failures, signal);
      try {
        const rest = await open(loaded, file.etag);
        const range = rest.headers.get('content-range') ?? '';
        if (rest.status === 206 && range.startsWith(`bytes ${loaded}-`)) {
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

/** Gives `response` where it brings a file; throws what it says else. */
export async function checkFile(response, call, signal) {
  const {headers, status} = response;
  const isFile = headers.has('etag') || headers.has('content-disposition');
  if (!isFile && headers.get('content-type')?.startsWith('application/json')) {
    // Either an error, or a stream that happens to be JSON.
    const answer = await readAnswer(response.clone(), signal);
    if (/"success"\s*:\s*false/.test(answer.text)) {
      dataOf(answer, call);
    }
  }
  if (status >= 400) {
    response.body?.cancel().catch(() => {});
    throw new TransportError(`No file, but the HTTP status ${status}`, status);
  }
  return response;
}
