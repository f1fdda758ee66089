import {subtleCrypto} from './crypto.mjs';
import {WebAPIError} from './errors.mjs';
import {toLine} from './parameter_line.mjs';
import {ServerKey} from './server_key.mjs';
import {unlessAborted} from './time_limit.mjs';

const kBadRequest = 101;

// Longer than that a key is not used: the server's one may have been replaced, and the
// clocks set.
const kLongestUse = 3600000;

/** Enciphers parameters by the key of a server, which it asks for and keeps. */
export class ParameterCipher {
  #fetchFacts;
  #key;
  #begin;

  /** `fetchFacts` makes the call that tells the key. */
  constructor(fetchFacts) {
    this.#fetchFacts = fetchFacts;
  }

  /** The members that stand for `params`. */
  async encipher(params, form) {
    const line = toLine(params);
    return (await this.#currentKey()).encipher(line, form);
  }

  /**
   * Hands `values` to `send`, enciphered where that is wanted: once more with another key
   * where the server could not open them, so that nothing of them can have run.
   */
  async send(values, form, signal, send) {
    if (!form) {
      return send(values);
    }
    const line = toLine(values);
    const held = this.#currentKey();
    const key = await unlessAborted(held, signal);
    try {
      return await send(await key.encipher(line, form));
    } catch (error) {
      if (!(error instanceof WebAPIError) || error.code !== kBadRequest) {
        throw error;
      }
      const renewed = await unlessAborted(this.#currentKey(held), signal);
      if (renewed.isAsGoodAs(key)) {
        throw error;
      }
      return send(await renewed.encipher(line, form));
    }
  }

  // The server's key; another than `stale` where it has one.
  #currentKey(stale) {
    const isOld = Math.abs(Date.now() - this.#begin) > kLongestUse;
    if (!this.#key || this.#key === stale || isOld) {
      this.#begin = Date.now();
      const key = this.#key = this.#fetchKey(this.#begin);
      key.catch(() => {
        if (this.#key === key) {
          this.#key = undefined;
        }
      });
    }
    return this.#key;
  }

  async #fetchKey(begin) {
    // Without it nothing is sent.
    await subtleCrypto();
    const facts = await this.#fetchFacts();
    return ServerKey.import(facts, (begin + Date.now()) / 2);
  }
}
