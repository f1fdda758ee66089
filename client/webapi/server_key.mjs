import {concatenate, fromBase64URL, randomBytes, subtleCrypto, toBase64URL, toBytes}
  from './crypto.mjs';
import {EncipherError} from './errors.mjs';

const kAlgorithm = 'ECDH-P256+HKDF-SHA256+AES256GCM';
const kCurve = {name: 'ECDH', namedCurve: 'P-256'};

// The server takes enciphered parameters that are five minutes old at most.
const kMostClockDrift = 60000;

/** A server's key for parameters, and how far its clock is ahead of this one. */
export class ServerKey {
  /** By what ORBO.ParameterKey tells; `now` is this clock at the server's `time`. */
  static async import({algorithm, kid, spki, time}, now) {
    if (algorithm !== kAlgorithm) {
      throw new EncipherError(`The server enciphers in another way: ${algorithm}`);
    }
    const subtle = await subtleCrypto();
    const key = await subtle.importKey('spki', fromBase64URL(spki), kCurve, false, []);
    return Object.assign(new ServerKey(), {subtle, kid, key, offset: time - now});
  }

  isAsGoodAs(other) {
    return this.kid === other.kid && Math.abs(this.offset - other.offset) < kMostClockDrift;
  }

  /** The reserved members that stand for a parameter line; others at every call. */
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
    const keyText = toBase64URL(await randomBytes(24));
    const iv = await randomBytes(12);
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
