// The token in an address's fragment, as in "#token=...". Null without one.
export function tokenOf(fragment) {
  const token = /^#token=(.*)$/.exec(fragment)?.[1];
  if (token === undefined) return null;
  try {
    return decodeURIComponent(token); // a plus stays one: it is a digit of base64
  } catch {
    return token; // a percent sign of its own
  }
}
