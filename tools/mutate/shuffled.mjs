/// `items` in an order that follows from the seed, on every machine.
export function shuffled(items, seed) {
  const result = [...items];
  let state = seed >>> 0;
  for (let left = result.length; left > 1; --left) {
    state = (Math.imul(state, 1664525) + 1013904223) >>> 0;
    const chosen = Math.floor((state / 2 ** 32) * left);
    [result[left - 1], result[chosen]] = [result[chosen], result[left - 1]];
  }
  return result;
}
