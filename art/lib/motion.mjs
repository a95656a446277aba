// Timing for looped animations. Time t runs through [0, 1) once a loop; everything here is periodic in it, so the last frame
// flows into the first.
import { TAU, lerp } from './svg.mjs';

export const wrap = t => t - Math.floor(t);

/** A sine of `cycles` whole waves a loop, shifted by `phase` loops. A negative phase lags behind. */
export const wave = (t, cycles = 1, phase = 0) => Math.sin((t * cycles + phase) * TAU);

const ease = k => k * k * (3 - 2 * k);
const between = (a, b, k) => (Array.isArray(a) ? a.map((v, i) => lerp(v, b[i], k)) : lerp(a, b, k));

/** Eases through keys [[time, value], ...] and back to the first; values are numbers or equally long lists of numbers. */
export function curve(t, keys) {
  t = wrap(t);
  let i = keys.length - 1;
  while (i > 0 && keys[i][0] > t) i--;
  if (keys[i][0] > t) i = keys.length - 1; // before the first key: still on the way from the last
  const [t0, a] = keys[i],
    [t1, b] = keys[(i + 1) % keys.length];
  const span = wrap(t1 - t0) || 1;
  return between(a, b, ease(wrap(t - t0) / span));
}

/** The value of the latest key at or before t: for what changes at once, such as the shape of the mouth. */
export function step(t, keys) {
  t = wrap(t + 1e-6);
  let i = keys.length - 1;
  while (i > 0 && keys[i][0] > t) i--;
  return keys[keys[i][0] > t ? keys.length - 1 : i][1];
}

/** True within the stretch [from, from + length) of the loop. */
export const during = (t, from, length) => wrap(t - from + 1e-6) < length;

/** Position 0..1 in its own life of the k-th of n things that follow each other through the loop (bubbles, hearts, "z"s). */
export const life = (t, k, n) => wrap(t + k / n);

/** Size over a life: grows in, shrinks out. (Fading would show the outlines of overlapping shapes through each other.) */
export const pop = (k, rise = 0.2, fall = 0.2) => Math.max(0, Math.min(1, k / rise, (1 - k) / fall));
