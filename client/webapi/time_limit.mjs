// Timers take no longer times: they would end at once.
const kLongestTime = 2 ** 31 - 1;

/** A signal that follows `signal` and the limit of `milliseconds` (0: none) until `end`. */
export function deadline(signal, milliseconds = 0) {
  const controller = new AbortController();
  const follow = () => controller.abort(signal.reason);
  const expire = () => controller.abort(new DOMException('The call took too long', 'TimeoutError'));
  const isLimited = milliseconds > 0 && milliseconds <= kLongestTime;
  const timer = isLimited ? setTimeout(expire, milliseconds) : undefined;
  signal?.addEventListener('abort', follow);
  if (signal?.aborted) {
    follow();
  }
  return {
    signal: controller.signal,
    end() {
      clearTimeout(timer);
      signal?.removeEventListener('abort', follow);
    },
  };
}

/** What `promise` gives; `signal` ends the waiting, and not what is waited for. */
export function unlessAborted(promise, signal) {
  return new Promise((resolve, reject) => {
    const abort = () => reject(signal.reason);
    signal?.addEventListener('abort', abort, {once: true});
    promise.then(resolve, reject).finally(() => signal?.removeEventListener('abort', abort));
    if (signal?.aborted) {
      abort();
    }
  });
}

export async function sleep(milliseconds, signal) {
  let timer;
  const end = new Promise(resolve => {
    timer = setTimeout(resolve, Math.min(milliseconds, kLongestTime));
  });
  try {
    await unlessAborted(end, signal);
  } finally {
    clearTimeout(timer);
  }
}
