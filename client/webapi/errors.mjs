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

/** No answer of an API: nothing came (status 0), or something else than such an answer. */
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
