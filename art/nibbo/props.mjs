// Nibbo's props and effects. Each returns markup in its own coordinates around the anchor its comment names; K is the rig's kit.
// Amounts that change during an animation (pages, progress, turns) are continuous.
import { path, ell, at, roundRect as rr, spline, num as f, globeLands, clamp, lerp, group } from '../lib/svg.mjs';
import { wave } from '../lib/motion.mjs';
import { C, line } from './rig.mjs';

const o = (fill, sw = 2.2) => line({ fill, sw });
// outlined stroke: readable on any background
export const ost = (d, col, w = 2.4, edge = C.line) => path(d, line({ stroke: edge, sw: w + 2.8 })) + path(d, line({ stroke: col, sw: w }));
export const petalIcon = (x, y, s, fill, r = 0) =>
  at(x, y, r, s, path('M0 6C-6 3 -7 -3 -4 -6.4C-2.4 -7.6 -.8 -6.4 0 -4.4C.8 -6.4 2.4 -7.6 4 -6.4C7 -3 6 3 0 6Z', { fill }));
export const heart = (x, y, s, r = 0) =>
  s < 0.1
    ? ''
    : at(
        x,
        y,
        r,
        s,
        path('M0 7C-9 1 -9 -7 -4 -7.6C-1.6 -7.8 -.4 -6 0 -4.6C.4 -6 1.6 -7.8 4 -7.6C9 -7 9 1 0 7Z', o(C.heart, Math.min(4, 2.2 / s))) +
          ell(-3.6, -4, 1.5, 1.2, { fill: C.white, op: 0.85 }),
      );
export const sparkle = (x, y, s, fill = C.amber, r = 0) =>
  s < 0.12 ? '' : at(x, y, r, s, path('M0 -9C1 -3 3 -1 9 0C3 1 1 3 0 9C-1 3 -3 1 -9 0C-3 -1 -1 -3 0 -9Z', o(fill, Math.min(4, 2 / s))));
export const zed = (x, y, s, r = 0) => (s < 0.1 ? '' : at(x, y, r, s, ost('M-5 -5.5L5 -5.5L-5 5.5L5 5.5', C.white, 3)));
export const drop = (x, y, s = 1, r = 0) =>
  s < 0.1
    ? ''
    : at(
        x,
        y,
        r,
        s,
        path('M0 -7C3 -2.5 4.6 -.4 4.6 2.2C4.6 5 2.4 6.8 0 6.8C-2.4 6.8 -4.6 5 -4.6 2.2C-4.6 -.4 -3 -2.5 0 -7Z', o(C.sky, 2)) +
          ell(-1.6, 2.4, 1, 1.7, { fill: C.white }),
      );
// thought cloud, anchor = centre; a swell runs through the dots with t
export const cloud = (K, t) => {
  let s = path(
    'M-19 9C-28 8 -28 -6 -18 -7C-17 -16 -3 -18 1 -11C7 -17 19 -13 17 -5C26 -4 27 8 17 9C13 14 3 14 0 10.5C-5 14 -15 14 -19 9Z',
    o(C.paper),
  );
  [-11, 0, 11].forEach((x, i) => {
    const a = Math.max(0, wave(t, 1, -0.02 - i * 0.16));
    s += ell(x, -0.5 - a * 2.2, 2.5 + a * 1.1, 2.5 + a * 1.1, { fill: a > 0.3 ? K.A.d : C.dotOff });
  });
  return s;
};
export const puff = (x, y, r) => ell(x, y, r, r, o(C.paper, 2));
// speech bubble, anchor = centre; tail points to lower left; n of its three lines are written
export const bubble = (K, n = 3) => {
  let s = path(
    'M-14 -17L15 -17C22 -17 26 -13 26 -7L26 2C26 8 22 12 15 12L-6 12C-10 17 -15 20 -21 21C-18 17 -17 14 -17 11.5C-22 11 -25 7 -25 2L-25 -7C-25 -13 -21 -17 -14 -17Z',
    o(C.paper),
  );
  [[-17, -8.5, 34], [-17, -1.5, 34], [-17, 5.5, 20]].forEach(([x, y, w], i) => {
    const k = clamp(n - i);
    if (k > 0) s += path(`M${x} ${y}L${f(x + w * k)} ${y}`, line({ stroke: k < 1 || i === Math.ceil(n) - 1 ? K.A.d : K.A.m, sw: 3.6 }));
  });
  return s;
};
// laptop seen from behind, anchor = bottom centre
export const laptop = K =>
  path(rr(-37, -6, 74, 7, 3.4), o('#c9cfe2')) +
  path('M-26 -26.5C-26 -29.5 -24 -31 -21 -31L21 -31C24 -31 26 -29.5 26 -26.5L28 -6L-28 -6Z', o('#e4e8f4')) +
  path('M-28 -6L-27.5 -10C-10 -8 14 -9 26.2 -24L28 -6Z', { fill: '#c9cfe2' }) +
  path('M-26 -26.5C-26 -29.5 -24 -31 -21 -31L21 -31C24 -31 26 -29.5 26 -26.5L28 -6L-28 -6Z', o('none')) +
  petalIcon(0, -18, 1.1, K.A.m);
// lines of code that appear as they are typed, anchor = upper left; n of them are there
export const codeBars = (K, n) => {
  const bars = [[0, 0, 10, K.A.m], [0, 18, 29, '#9cc4ee'], [1, 8, 29, '#ffcb66'], [2, 8, 17, '#93d3a6']];
  return bars
    .map(([row, a, b, c], i) => {
      const k = clamp(n - i);
      return k > 0.1 ? ost(`M${a} ${f(row * 9.5)}L${f(lerp(a, b, k))} ${f(row * 9.5)}`, c, 3.4) : '';
    })
    .join('');
};
// open book seen from outside, anchor = bottom centre (spine foot); flip 0..1 takes a leaf from right to left
export const book = (K, flip = null) => {
  const x = flip === null ? 0 : lerp(25, -25, flip),
    y = flip === null ? 0 : 24 + 13 * Math.sin(flip * Math.PI);
  const pg =
    flip === null
      ? ''
      : path(
          `M0 -26C${f(x * 0.2)} -35 ${f(x * 0.6)} ${f(-y - 4)} ${f(x * 0.95)} ${f(-y - 3)}L${f(x)} ${f(-y + 4)}C${f(x * 0.6)} ${f(-y + 2)} ${f(x * 0.25)} -29 0 -22Z`,
          o(C.paper, 2),
        );
  return (
    pg +
    path('M-33 -31C-22 -36 -8 -34 0 -27C8 -34 22 -36 33 -31L33 -25L-33 -25Z', o(C.paper)) +
    path('M-36 -28C-24 -32 -9 -30 0 -24L0 2C-9 -4 -24 -6 -36 -2Z', o(K.A.m)) +
    path('M36 -28C24 -32 9 -30 0 -24L0 2C9 -4 24 -6 36 -2Z', o(K.A.m)) +
    path('M35 -27.2L35 -4C24 -7 9 -5 1.2 .4L1.2 -6C12 -11 28 -12 35 -27.2Z', { fill: K.A.d, op: 0.35 }) +
    petalIcon(-18, -15, 1.05, K.A.l) +
    path('M11 -17L26 -20M11 -11.5L20 -13.2', line({ stroke: K.A.l, sw: 2.6 }))
  );
};
export const glasses = () =>
  [-19, 19].map(x => ell(x, 0.5, 11.6, 11.6, { stroke: '#8e5e52', sw: 2 })).join('') +
  path('M-7.6 -1.5C-4 -4.6 4 -4.6 7.6 -1.5', line({ stroke: '#8e5e52', sw: 2 }));
// magnifier, anchor = lens centre
export const magnifier = (K, eyed = 1) =>
  ost('M13 14L25 27', C.wood, 5) +
  ell(0, 0, 18.5, 18.5, { fill: '#e3f4fb' }) +
  (eyed
    ? ell(0, 1.5, 10.6, 12.8, { fill: C.eyeTop }) +
      ell(0.5, 9, 6, 3.6, { fill: K.A.m, op: 0.55 }) +
      ell(-3.4, -3.8, 3.9, 4.3, { fill: C.white }) +
      ell(4, 5.6, 1.9, 2, { fill: C.white })
    : '') +
  path('M-13 -5C-12 -10 -9 -12.6 -5 -13.6', line({ stroke: C.white, sw: 2.6 })) +
  ell(0, 0, 18.5, 18.5, { stroke: C.line, sw: 6.6 }) +
  ell(0, 0, 18.5, 18.5, { stroke: K.A.m, sw: 2.8 });
// terminal window, anchor = bottom centre; typed 0..1 of the command stands, the bar is filled to done 0..1
export const terminal = (K, typed, done, caret) => {
  let s =
    path(rr(-48, -40, 96, 41, 6), o('#3c4159', 2.4)) +
    path('M-48 -31L-48 -34C-48 -38 -46 -40 -42 -40L42 -40C46 -40 48 -38 48 -34L48 -31Z', o('#e4e8f4', 2.4));
  s +=
    ell(-41, -35.5, 2.1, 2.1, { fill: '#f28b82' }) +
    ell(-34.5, -35.5, 2.1, 2.1, { fill: '#f7c65b' }) +
    ell(-28, -35.5, 2.1, 2.1, { fill: '#7ccb93' });
  s += path('M-38 -24L-31 -18.5L-38 -13', line({ stroke: C.mint, sw: 3.4 }));
  const w = 42 * typed;
  if (w > 2) s += path(`M-22 -18.5L${f(-22 + w)} -18.5`, line({ stroke: '#c8ccdd', sw: 3.4 }));
  if (caret) s += path(rr(-24 + w + (w > 2 ? 6 : 0), -24.5, 6.5, 12, 1), { fill: C.mint });
  s += path('M-37 -6L37 -6', line({ stroke: '#5b6180', sw: 3.6 }));
  if (done > 0) s += path(`M-37 -6L${f(-37 + 74 * done)} -6`, line({ stroke: done >= 1 ? C.mint : K.A.m, sw: 3.6 }));
  return s;
};
// globe with stand, anchor = sphere centre; turn 0..1 is one pattern of lands
export const globe = (K, turn) =>
  path('M-13 25C-8 22 8 22 13 25L15 29L-15 29Z', o(C.wood)) +
  ell(0, 0, 23, 23, { fill: C.sky }) +
  globeLands(22, turn)
    .map(d => path(d, { fill: '#9ad3a0' }))
    .join('') +
  path('M-16.5 16C-2 24 17 17 22.6 -2C23.5 13 12 23 0 23C-7 23 -13 20.5 -16.5 16Z', { fill: C.skyDark, op: 0.5 }) +
  path('M-22 -7C-10 -3 10 -3 22 -7M-21.5 9C-10 13 10 13 21.5 9', line({ stroke: C.white, sw: 1.7, op: 0.9 })) +
  at(-9, -13, -38, 1, ell(0, 0, 4.4, 2.6, { fill: C.white, op: 0.9 })) +
  ell(0, 0, 23, 23, o('none', 2.3));
// clipboard, anchor = centre; n of its three boxes are ticked
export const clipboard = (K, n = 3) => {
  let s =
    path(rr(-19, -25, 38, 50, 4.5), o(C.wood)) +
    path(rr(-15, -20, 30, 41.5, 2), { fill: C.paper }) +
    path(rr(-8, -29, 16, 8.5, 3), o('#d5daea', 2));
  [-12, 0, 12].forEach((y, i) => {
    const k = clamp(n - i),
      short = clamp(k / 0.35),
      long = clamp((k - 0.35) / 0.65);
    s += path(`M-1 ${y + 1}L11 ${y + 1}`, line({ stroke: C.ruling, sw: 2.8 }));
    if (k <= 0) s += path(rr(-11.6, y - 2.6, 6.6, 6.6, 1.6), line({ stroke: C.ruling, sw: 1.8 }));
    else
      s += path(
        `M-11.5 ${f(y + 0.6)}L${f(-11.5 + 2.7 * short)} ${f(y + 0.6 + 3 * short)}` +
          (long ? `L${f(-8.8 + 4.2 * long)} ${f(y + 3.6 - 6.6 * long)}` : ''),
        line({ stroke: K.A.d, sw: 3 }),
      );
  });
  return s;
};
// pencil, anchor = grip; tip at (-3,17)
export const pencil = K =>
  path('M-3 -14C-3 -16.5 3 -16.5 3 -14L3 9L0 16L-3 9Z', o(C.amber, 2)) +
  path('M-3 -11L-3 -14C-3 -16.5 3 -16.5 3 -14L3 -11Z', o(K.A.m, 2)) +
  path('M-1 13.6L0 16L1 13.6Z', o(C.line, 1.4));
// paper stack, anchor = bottom centre; h = total height
export const stack = (K, h, w = 34, n = 4) => {
  const t = h / n,
    cols = [C.paper, K.A.m, C.paper, K.A.l, C.paper];
  let s = '';
  for (let i = 0; i < n; i++) {
    const j = [0, -2, 1.5, -1, 1][i],
      ww = w + (i % 2) * 1.5;
    s += path(rr(-ww + j, -t * (i + 1), ww * 2, t, Math.min(3, t / 2.2)), o(cols[i], 1.8));
  }
  return s;
};
// shield card with question mark, anchor = centre
export const shieldQ = () =>
  group(
    null,
    path('M0 -25C7 -20 14 -18.5 21 -18.5C22 2 16 17 0 26C-16 17 -22 2 -21 -18.5C-14 -18.5 -7 -20 0 -25Z', o(C.amber, 2.5)) +
      path('M0 -25C7 -20 14 -18.5 21 -18.5C22 2 16 17 0 26Z', { fill: C.amberDark, op: 0.45 }) +
      path('M0 -25C7 -20 14 -18.5 21 -18.5C22 2 16 17 0 26C-16 17 -22 2 -21 -18.5C-14 -18.5 -7 -20 0 -25Z', o('none', 2.5)) +
      path('M-7 -6.5C-7 -14.5 7.4 -14.5 7.4 -6.2C7.4 -1 0 -1 0 5', line({ stroke: C.white, sw: 4.8 })) +
      ell(0, 12.6, 2.9, 2.9, { fill: C.white }),
  );
// text field with caret, anchor = centre
export const field = (K, on = 1, w = 33) =>
  path(rr(-w, -19, w * 2, 38, 8), o(C.paper, 2.4)) +
  path(`M${-w + 10} 0L${-w + 22} 0`, line({ stroke: '#d3c8c1', sw: 5 })) +
  (on
    ? path(
        `M${-w + 36} -9L${-w + 36} 9M${-w + 31.5} -10.5L${-w + 40.5} -10.5M${-w + 31.5} 10.5L${-w + 40.5} 10.5`,
        line({ stroke: K.A.d, sw: 3.6 }),
      )
    : '');
// warning triangle, anchor = centre
export const triangle = () =>
  group(
    null,
    path('M-4 -19C-2 -22.5 2 -22.5 4 -19L22 12C24 15.6 22 19 18 19L-18 19C-22 19 -24 15.6 -22 12Z', o(C.amber, 2.6)) +
      path('M0 -9L0 4', line({ sw: 4.6 })) +
      ell(0, 11.5, 2.7, 2.7, { fill: C.line }),
  );
// cushion, anchor = bottom centre
export const pillow = (K, w = 62, h = 21) =>
  path(
    `M${-w} -3C${-w - 6} ${-h} ${-w + 8} ${-h - 5} ${-w * 0.6} ${-h}C${-w * 0.2} ${-h + 2} ${w * 0.2} ${-h + 2} ${w * 0.6} ${-h}C${w - 8} ${-h - 5} ${w + 6} ${-h} ${w} -3C${w * 0.8} 3 ${-w * 0.8} 3 ${-w} -3Z`,
    o(K.A.l, 2.4),
  ) +
  path(`M${-w + 3} -2.4C${-w * 0.6} -7 ${w * 0.6} -7 ${w - 3} -2.4C${w * 0.7} 1.6 ${-w * 0.7} 1.6 ${-w + 3} -2.4Z`, {
    fill: K.A.m,
    op: 0.7,
  });
// mug, anchor = centre
export const mug = K =>
  path('M11 -5C21 -7 21 8 10 7', line({ sw: 6.4 })) +
  path('M11 -5C21 -7 21 8 10 7', line({ stroke: K.A.m, sw: 2.2 })) +
  path('M-13 -11L13 -11C13 4 12 13 6 13L-6 13C-12 13 -13 4 -13 -11Z', o(K.A.m)) +
  path('M5 12.6C10 11 11.4 0 11.6 -9.6L7 -9.6C7 0 7 9 1 12.6Z', { fill: K.A.d, op: 0.4 }) +
  ell(0, -11, 13, 3.4, o('#8a5a45', 2)) +
  petalIcon(-2, 2, 0.8, C.white);
// steam of a hot drink, anchor = rim; it curls upwards with t
export const steam = t =>
  [-6, 5]
    .map((x, i) => ost(spline([0, 1, 2, 3].map(k => [x + wave(t, 1, 0.1 * i - k * 0.28) * 2.4, k * (-6 + i)])), C.white, 2.4, '#bfa79f'))
    .join('');
export const spike = (x, y, r, L = 11) => at(x, y, r, 1, ost(`M0 0L0 ${f(-L)}`, C.amber, 3));
export const whoosh = d => ost(d, C.white, 2.4);
export const note = (x, y, s, K, r = 0) =>
  s < 0.1
    ? ''
    : at(
        x,
        y,
        r,
        s,
        ost('M-3 7L-3 -7L7 -9.5L7 4', K.A.d, 2.2) + ell(-5.6, 7.4, 3.6, 2.8, o(K.A.d, 2)) + ell(4.4, 4.6, 3.6, 2.8, o(K.A.d, 2)),
      );

// angry steam cloud, anchor = nearest to the cheek, grows to +x
export const steamPuff = () => path('M2 4C-3 3 -2 -4 3 -3.6C4 -9 12 -9 13 -4C18 -5 20 3 14 4.4C11 7 5 7 2 4Z', o(C.paper, 2));
