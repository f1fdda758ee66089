import {TaskError, TransportError, WebAPIError} from './errors.mjs';
import {sleep} from './time_limit.mjs';

// Milliseconds between two looks at a task.
const kFirstWait = 500;
const kLongestWait = 5000;
const kMostFailures = 5;

// The network failed, be it that nothing came in time.
const isOfTheNetwork = error => error instanceof TransportError || error.name === 'TimeoutError';

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
        if (!isOfTheNetwork(error) || ++failures > kMostFailures) {
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
