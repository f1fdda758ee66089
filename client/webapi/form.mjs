import {randomBytes, toBase64URL} from './crypto.mjs';

const isFile = value => typeof value?.stream === 'function' && typeof value.size === 'number';

// The files of a parameter; null where it is none of files.
function filesOf(value) {
  const isList = (Array.isArray(value) && value.length > 0) ||
    (globalThis.FileList && value instanceof FileList);
  const files = isList ? [...value] : [value];
  return files.every(isFile) ? files : null;
}

/** Takes the files out of parameters. */
export function splitFiles(params) {
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

/** A form of text fields and then files, as pieces of a body of known size. */
export async function formBody(fields, files) {
  const boundary = `webapi${toBase64URL(await randomBytes(18))}`;
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
