import {WebAPIError} from './errors.mjs';

const kMostCalls = 1000;

/** Of a call's body in a batch, what Promise.allSettled would give. */
export function settled(call, body) {
  return body?.success === true
    ? {status: 'fulfilled', value: body.data}
    : {status: 'rejected', reason: new WebAPIError(call, body?.error)};
}

/** Calls that are made at once, and go together. */
export class CallQueue {
  #settle;
  #waiting = [];

  /** `settle` makes calls, and gives for each what Promise.allSettled would. */
  constructor(settle) {
    this.#settle = settle;
  }

  add(call) {
    return new Promise((resolve, reject) => {
      this.#waiting.push({call, resolve, reject});
      if (this.#waiting.length === 1) {
        queueMicrotask(() => this.#flush());
      }
    });
  }

  #flush() {
    while (this.#waiting.length > 0) {
      this.#sendTogether(this.#waiting.splice(0, kMostCalls));
    }
  }

  async #sendTogether(waiting) {
    let results;
    try {
      results = await this.#settle(waiting.map(({call}) => call));
    } catch (reason) {
      results = waiting.map(() => ({status: 'rejected', reason}));
    }
    waiting.forEach(({resolve, reject}, i) => {
      const {status, value, reason} = results[i];
      status === 'fulfilled' ? resolve(value) : reject(reason);
    });
  }
}
