import {TransportError, WebAPIError} from './errors.mjs';

/** Why `cause` came: the signal's reason where that is it, else a TransportError. */
export const failureOf = (cause, message, signal) =>
  (signal?.aborted ? signal.reason : new TransportError(message, 0, {cause}));

export async function request(url, options) {
  try {
    return await fetch(url, options);
  } catch (cause) {
    throw failureOf(cause, 'The server cannot be reached', options.signal);
  }
}

export async function readAnswer(response, signal) {
  const {status, headers} = response;
  try {
    return {status, word: headers.get('x-request-error'), text: await response.text()};
  } catch (cause) {
    throw failureOf(cause, 'The answer broke off', signal);
  }
}

const noAnswer = (status, options) =>
  new TransportError(`No answer of an API, but the HTTP status ${status}`, status, options);

/** The data of an answer to `call`. */
export function dataOf({status, word, text}, call) {
  let answer;
  try {
    answer = JSON.parse(text);
  } catch (cause) {
    throw noAnswer(status, {cause});
  }
  // Proxies and web servers tell their own failures as JSON, too.
  if (typeof answer?.success !== 'boolean') {
    throw noAnswer(status);
  }
  if (!answer.success) {
    throw new WebAPIError(call, answer.error, {status, word});
  }
  return answer.data;
}
