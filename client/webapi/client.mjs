import {CallQueue, settled} from './batch.mjs';
import {checkFile, Download, resumption} from './download.mjs';
import {formBody, splitFiles} from './form.mjs';
import {dataOf, readAnswer, request} from './http.mjs';
import {ParameterCipher} from './parameter_cipher.mjs';
import {toJSON, toLine} from './parameter_line.mjs';
import {Task} from './task.mjs';
import {deadline} from './time_limit.mjs';
import {sendForm} from './upload.mjs';

const kSessionAPI = {api: 'ORBO.Session', version: 1};
const kKeyCall = {api: 'ORBO.ParameterKey', version: 1, method: 'get'};
const kCompoundCall = {api: 'ORBO.Entry.Request', version: 1, method: 'request'};

// A page's cookie carries its session; programs have no cookies.
const kHasCookies = globalThis.location !== undefined;

/** Calls of one server's web APIs by one caller. */
export class WebAPIClient {
  #cipher = new ParameterCipher(() => this.#fetchKeyFacts());
  #queue = new CallQueue(calls => this.#settleTogether(calls));

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
    // As they are now.  What cannot be sent fails here, and not the calls that it would go with.
    return this.#queue.add({...call, params: JSON.parse(toJSON(params))});
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
      {user, password, application, language}, {...options, httpMethod: 'POST'});
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
    const all = {...this.#valuesOf(call, values, false), version: String(version)};
    const limit = deadline(signal, timeout);
    try {
      return await this.#cipher.send(all, encipher, limit.signal, async sent => {
        const isText = ([, value]) => typeof value === 'string';
        // What has another type keeps it in the URL: the server takes fields for text.
        const typed = Object.entries(sent).filter(pair => !isText(pair));
        const body = await formBody(Object.entries(sent).filter(isText), files);
        const answer = await sendForm(this.#urlOf(Object.fromEntries(typed)), body,
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
      return this.#cipher.send(this.#valuesOf(call, params, byURL), encipher, signal, async sent =>
        checkFile(await this.#fetch(sent, {byURL, headers, signal}), call, signal));
    };
    return new Download(await open(offset, etag), resumption(open, byURL, signal), onProgress);
  }

  /** Parameters as what the server deciphers, to be put where it looks for that. */
  async encipherParams(params, form = 'cipher') {
    return this.#cipher.encipher(params, form);
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
    return {...call, ...params, _sid: undefined, tid: undefined, ...call,
      ...(byURL ? {} : this.#sessionParameters())};
  }

  #urlOf(values) {
    const url = new URL(this.url);
    url.search = new URLSearchParams([...url.searchParams, ...toLine(values)]);
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

  async #exchange(call, values, {byURL, signal}) {
    const response = await this.#fetch(values, {byURL, signal});
    return dataOf(await readAnswer(response, signal), call);
  }

  async #callNow(call, params, {signal, timeout = this.timeout, encipher = this.encipher,
    httpMethod = 'POST'}) {
    const limit = deadline(signal, timeout);
    const byURL = httpMethod === 'GET' && this.#mayUseURL(encipher);
    const {signal: limited} = limit;
    try {
      return await this.#cipher.send(this.#valuesOf(call, params, byURL), encipher, limited,
        sent => this.#exchange(call, sent, {byURL, signal: limited}));
    } finally {
      limit.end();
    }
  }

  // Says nothing of who calls, since nothing is enciphered yet.
  async #fetchKeyFacts() {
    const limit = deadline(undefined, this.timeout);
    try {
      return await this.#exchange(kKeyCall, kKeyCall, limit);
    } finally {
      limit.end();
    }
  }

  async #settleTogether(calls) {
    if (calls.length > 1) {
      return this.batch(calls);
    }
    const [{api, version, method, params}] = calls;
    return [{status: 'fulfilled', value: await this.#callNow({api, version, method}, params, {})}];
  }
}
