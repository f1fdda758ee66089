import {EncipherError} from './errors.mjs';

// Node 18 has it as a module alone.
const webCrypto = async () => globalThis.crypto ?? (await import('node:crypto')).webcrypto;

export const randomBytes = async size => (await webCrypto()).getRandomValues(new Uint8Array(size));

export async function subtleCrypto() {
  const {subtle} = await webCrypto();
  if (!subtle) {
    throw new EncipherError('Enciphering needs WebCrypto, which browsers give to pages by https ' +
      'and from the loopback interface only');
  }
  return subtle;
}

export const toBytes = text => new TextEncoder().encode(text);

export function concatenate(...parts) {
  const views = parts.map(part => new Uint8Array(part));
  const whole = new Uint8Array(views.reduce((size, view) => size + view.length, 0));
  views.reduce((offset, view) => (whole.set(view, offset), offset + view.length), 0);
  return whole;
}

export function toBase64URL(bytes) {
  let binary = '';
  bytes.forEach(byte => (binary += String.fromCharCode(byte)));
  return btoa(binary).replaceAll('+', '-').replaceAll('/', '_').replaceAll('=', '');
}

export const fromBase64URL = text => Uint8Array.from(
  atob(text.replaceAll('-', '+').replaceAll('_', '/')), letter => letter.charCodeAt(0));
