/** A client of the web APIs, for browsers and Node 18 or later. */

/** The parameters of a call: whatever JSON can say; undefined ones are left out. */
export type Params = Readonly<Record<string, unknown>>;

/** "cipher": one enciphered text; "aes": a token and a text. */
export type EncipherForm = 'cipher' | 'aes';

export interface ClientOptions {
  /** A session that is there already. */
  sid?: string;
  /** An access token. */
  token?: string;
  /**
   * Whether the session is the page's cookie, or `sid` (`token`) goes with every call as a
   * parameter.  Default: the cookie in browsers, where neither is given.
   */
  session?: 'cookie' | 'parameter';
  /** Enciphers the parameters of all calls.  Default: false. */
  encipher?: EncipherForm | false;
  /** Sends calls that are made at once in one request.  Default: false. */
  autoBatch?: boolean;
  /** Milliseconds that a call may take; 0: any time.  Default: 120000. */
  timeout?: number;
}

export interface CallOptions {
  signal?: AbortSignal;
  /** Milliseconds; 0: any time. */
  timeout?: number;
  encipher?: EncipherForm | false;
  /** GET is taken only where nothing secret would stand in the URL. */
  httpMethod?: 'GET' | 'POST';
}

/** A password is for no URL. */
export interface LoginOptions extends Omit<CallOptions, 'httpMethod'> {
  application?: string;
  language?: string;
}

export interface Call {
  api: string;
  version: number;
  method: string;
  params?: Params;
}

export type Outcome<Data = any> =
  | { status: 'fulfilled'; value: Data }
  | { status: 'rejected'; reason: WebAPIError };

export interface Session {
  sid: string;
  user: string;
  is_admin: boolean;
}

/** Bytes; the total is null where it is not known. */
export interface Transferred<Total = number> {
  loaded: number;
  total: Total;
}

/** What can be uploaded.  Browsers take Files and Blobs only, Node all of these. */
export interface FileSource {
  readonly name?: string;
  readonly size: number;
  readonly type?: string;
  /** The content; called again where it has to be sent again. */
  stream(): AsyncIterable<Uint8Array> | ReadableStream<Uint8Array>;
}

export interface UploadOptions {
  signal?: AbortSignal;
  /** Milliseconds; any time by default. */
  timeout?: number;
  encipher?: EncipherForm | false;
  onProgress?(progress: Transferred): void;
}

export interface DownloadOptions {
  signal?: AbortSignal;
  encipher?: EncipherForm | false;
  onProgress?(progress: Transferred<number | null>): void;
  /** Begins here if the file is still of the version `etag`. */
  offset?: number;
  etag?: string;
}

/** The methods that look at a task and stop it, and how they call its id. */
export interface TaskMethods {
  statusMethod?: string;
  stopMethod?: string;
  idParameter?: string;
}

export interface Progress {
  percent?: number;
  done?: number;
  total?: number;
  message?: string;
  started?: number;
  estimated_end?: number;
}

export interface TaskState<Data = any> {
  finish: boolean;
  progress: Progress;
  success?: boolean;
  data?: Data;
  error?: { code: number; errors?: unknown };
  auto_remove: boolean;
  info?: Record<string, unknown>;
}

export interface WatchOptions {
  signal?: AbortSignal;
  /** Milliseconds until the next look; longer, up to the second, while nothing changes. */
  firstWait?: number;
  longestWait?: number;
}

export class WebAPIClient {
  constructor(url: string | URL, options?: ClientOptions);

  readonly url: string;
  readonly session: 'cookie' | 'parameter';
  sid?: string;
  token?: string;
  encipher: EncipherForm | false;
  autoBatch: boolean;
  timeout: number;

  /**
   * Rejects with WebAPIError, TransportError, EncipherError, or what the signal says; with
   * TypeError or RangeError for parameters that JSON cannot say.
   */
  call<Data = any>(api: string, version: number, method: string, params?: Params,
    options?: CallOptions & { autoBatch?: boolean }): Promise<Data>;
  batch(calls: readonly Call[],
    options?: CallOptions & { stopWhenError?: boolean }): Promise<Outcome[]>;
  /** The URL of a call; it holds neither session nor token. */
  link(api: string, version: number, method: string, params?: Params): string;

  login(user: string, password: string,
    options?: LoginOptions): Promise<Session>;
  logout(options?: CallOptions): Promise<void>;

  startTask<Data = any>(api: string, version: number, method: string, params?: Params,
    options?: CallOptions & TaskMethods): Promise<Task<Data>>;
  task<Data = any>(id: string,
    names: { api: string; version: number; method?: string } & TaskMethods): Task<Data>;

  upload<Data = any>(api: string, version: number, method: string,
    params: Params, options?: UploadOptions): Promise<Data>;
  download(api: string, version: number, method: string, params?: Params,
    options?: DownloadOptions): Promise<Download>;

  /** The members that stand for `params`, for a call of a batch or a parameter "webapi". */
  encipherParams(params: Params, form?: EncipherForm): Promise<Record<string, string>>;
}

export class Task<Data = any> implements AsyncIterable<TaskState> {
  constructor(client: WebAPIClient, id: string,
    names: { api: string; version: number; method?: string } & TaskMethods);

  readonly id: string;
  status(options?: CallOptions): Promise<TaskState>;
  states(options?: WatchOptions): AsyncGenerator<TaskState, void>;
  [Symbol.asyncIterator](): AsyncGenerator<TaskState, void>;
  /** Rejects with the task's own WebAPIError, or with TaskError. */
  result(options?: WatchOptions & {
    onProgress?(progress: Progress, state: TaskState): void;
  }): Promise<Data>;
  stop(options?: CallOptions): Promise<void>;
}

export class Download implements AsyncIterable<Uint8Array> {
  private constructor();

  /** As the server names the file; null where it does not. */
  readonly name: string | null;
  readonly type: string;
  /** The version, to go on with later; null where the server does not tell. */
  readonly etag: string | null;
  /** Where in the file this begins. */
  readonly offset: number;
  /** Of the whole file; null where the server does not tell. */
  readonly size: number | null;
  [Symbol.asyncIterator](): AsyncGenerator<Uint8Array, void>;
  blob(): Promise<Blob>;
  cancel(): Promise<void>;
}

/** What an API answers instead of a result. */
export class WebAPIError extends Error {
  constructor(call: { api: string; version: number; method: string },
    error?: { code?: number; errors?: unknown }, facts?: { status?: number; word?: string | null });

  readonly name: 'WebAPIError';
  readonly code: number;
  readonly errors: any;
  readonly api: string;
  readonly version: number;
  readonly method: string;
  /** The HTTP status. */
  readonly status: number;
  /** The header x-request-error, such as "timeout". */
  readonly word: string | null;
}

/** No answer of an API: nothing came (status 0), or something else than such an answer. */
export class TransportError extends Error {
  constructor(message: string, status?: number, options?: { cause?: unknown });

  readonly name: 'TransportError';
  readonly status: number;
}

/** Parameters cannot be enciphered: a page by plain HTTP has no WebCrypto. */
export class EncipherError extends Error {
  constructor(message: string);

  readonly name: 'EncipherError';
}

/** A task that ended before it was done: stopped, killed, or without a result. */
export class TaskError extends Error {
  constructor(id: string, state: TaskState);

  readonly name: 'TaskError';
  readonly id: string;
  readonly state: TaskState;
}
