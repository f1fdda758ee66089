import {failureOf, readAnswer, request} from './http.mjs';

// Browsers tell the progress of uploads by XMLHttpRequest alone.
function sendByXHR(url, {pieces, size, type}, {signal, onProgress}) {
  if (!pieces.every(piece => piece instanceof Blob)) {
    throw new TypeError('Browsers send Files and Blobs, no streams');
  }
  return new Promise((resolve, reject) => {
    const xhr = new XMLHttpRequest();
    const fail = () => reject(failureOf(undefined, 'The upload broke off', signal));
    xhr.upload.addEventListener('progress', ({loaded}) => onProgress?.({loaded, total: size}));
    xhr.addEventListener('load', () => resolve({
      status: xhr.status,
      word: xhr.getResponseHeader('x-request-error'),
      text: xhr.responseText,
    }));
    xhr.addEventListener('error', fail);
    xhr.addEventListener('abort', fail);
    signal.addEventListener('abort', () => xhr.abort());
    xhr.open('POST', url);
    xhr.setRequestHeader('Content-Type', type);
    xhr.send(new Blob(pieces));
    if (signal.aborted) {
      xhr.abort();
    }
  });
}

async function* contentOf({pieces, size}, onProgress) {
  let loaded = 0;
  for (const piece of pieces) {
    let left = piece.size;
    for await (const chunk of piece.stream()) {
      // Node's fetch waits for ever after an empty one.
      if (chunk.length > 0) {
        yield chunk;
        loaded += chunk.length;
        left -= chunk.length;
        onProgress?.({loaded, total: size});
      }
    }
    if (left !== 0) {
      throw new RangeError(`${piece.name ?? 'A file'} is not of the size that was told`);
    }
  }
}

async function sendByFetch(url, body, {signal, onProgress}) {
  // Of the content and not of the network; fetch would hide it.
  let failure;
  async function* content() {
    try {
      yield* contentOf(body, onProgress);
    } catch (error) {
      failure = error;
      throw error;
    }
  }
  const response = await request(url, {
    method: 'POST',
    headers: {'Content-Type': body.type, 'Content-Length': String(body.size)},
    body: content(),
    duplex: 'half',
    signal,
  }).catch(error => {
    throw failure ?? error;
  });
  return readAnswer(response, signal);
}

/** Sends the form `body`; gives the answer as readAnswer does. */
export const sendForm = (url, body, options) =>
  (globalThis.XMLHttpRequest ? sendByXHR : sendByFetch)(url, body, options);
