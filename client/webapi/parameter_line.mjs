// JSON has no such numbers and would say null, by which a parameter is reset.
function refuseOddNumbers(name, value) {
  if (typeof value === 'number' && !Number.isFinite(value)) {
    throw new RangeError(`no number for a parameter: ${value}`);
  }
  return value;
}

// A character without its other half, which the server would not read as JSON, is replaced.
const repaired = escape =>
  (escape === '\x7f' ? '\\u007f' : /^\\ud/.test(escape) ? '\ufffd' : escape);

/** JSON as the server reads it, without control characters: web servers refuse URLs with them. */
export const toJSON = value =>
  JSON.stringify(value, refuseOddNumbers)?.replace(/\\(ud[89a-f]..|.)|\x7f/g, repaired);

// The server takes a value that reads as JSON for JSON, any other for text.
function toText(value) {
  const isPlain = typeof value === 'string' &&
    !/^(["[{\-\d]|(true|false|null)$)|[\0-\x1f\x7f]/.test(value);
  return isPlain ? value : toJSON(value);
}

/** The members of `values`, but for undefined ones, as a query or a form has them. */
export function toLine(values) {
  const line = new URLSearchParams();
  for (const [name, value] of Object.entries(values)) {
    const text = toText(value);
    if (text !== undefined) {
      line.set(name, text);
    }
  }
  return line;
}
