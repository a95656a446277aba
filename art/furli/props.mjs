// Furli's props and effects: each takes its place and its amounts, and returns a function of the palette that gives the markup.
// Furli is mirrored as a whole, so whatever is to be read is mirrored here once more (`readable`).
import {
  arc,
  clamp,
  ell,
  faded,
  globeLands,
  group as g,
  lerp,
  num as f,
  path,
  rotate as R,
  roundRect,
  scale as S,
  spline,
  translate as T,
} from '../lib/svg.mjs';
import { wave } from '../lib/motion.mjs';
import { kit } from './rig.mjs';
const { U } = kit;
const rr = (x, y, w, h, r, o) => path(roundRect(x, y, w, h, r), o);
const readable = S(-1, 1);
const LN = 4;
const stick = (d, P, col, sw) => path(d, { stroke: P.edge, sw: sw + 5 }) + path(d, { stroke: col, sw }); // glyph with a light edge
export const laptop =
  (x, y, o = {}) =>
  P =>
    g(
      T(x, y),
      g(T(0, -70) + S(62, 34), faded(0.55, ell(0, 0, 1, 1, { fill: U('glow') }))),
      rr(-78, -6, 156, 14, 7, { fill: P.slateL, stroke: P.slateD, sw: LN }),
      rr(-50, -66, 100, 62, 9, { fill: P.slate, stroke: P.slateD, sw: LN }),
      path('M-45 -56C-45 -60 -43 -61 -39 -61L20 -61L-12 -9L-45 -9Z', { fill: '#ffffff', op: 0.09 }),
      path('M-16 -47L-29 -35L-16 -23M16 -47L29 -35L16 -23M5.5 -52L-5.5 -18', { stroke: P.AL, sw: 6, transform: readable }),
    );
export const book =
  (x, y, o = {}) =>
  P =>
    g(
      T(x, y) + R(o.rot || 0),
      path('M-76 -46C-50 -54 -20 -50 0 -38C20 -50 50 -54 76 -46L80 16C52 8 20 10 0 21C-20 10 -52 8 -80 16Z', {
        fill: P.AM,
        stroke: P.ADD,
        sw: LN,
      }),
      path('M-65 -52C-44 -60 -18 -56 0 -44L0 11C-20 0 -46 -1 -68 5Z', { fill: P.paper, stroke: P.ink, sw: 2.8 }),
      path('M65 -52C44 -60 18 -56 0 -44L0 11C20 0 46 -1 68 5Z', { fill: P.paper, stroke: P.ink, sw: 2.8 }),
      path('M-53 -40C-38 -45 -25 -43 -12 -36M-54 -26C-39 -31 -25 -29 -12 -22M-55 -12C-40 -17 -25 -15 -12 -8', {
        stroke: '#b09c86',
        sw: 4.4,
      }),
      path('M53 -40C38 -45 25 -43 12 -36M54 -26C39 -31 25 -29 12 -22M55 -12C40 -17 29 -16 20 -12', { stroke: '#b09c86', sw: 4.4 }),
      o.flip != null
        ? path(
            `M0 11L0 -44C${f(22 * lerp(-1, 1, o.flip))} ${f(-54 - 22 * Math.sin(o.flip * Math.PI))} ${f(48 * lerp(-1, 1, o.flip))} ${f(-56 - 20 * Math.sin(o.flip * Math.PI))} ${f(60 * lerp(-1, 1, o.flip))} ${f(-52 - 14 * Math.sin(o.flip * Math.PI))}L${f(62 * lerp(-1, 1, o.flip))} ${f(2 - 14 * Math.sin(o.flip * Math.PI))}C${f(44 * lerp(-1, 1, o.flip))} -6 ${f(22 * lerp(-1, 1, o.flip))} -4 0 11Z`,
            { fill: '#fff', stroke: P.ink, sw: 2.8 },
          )
        : '',
    );
export const magnifier = (x, y, rot, inner) => P =>
  g(
    T(x, y) + R(rot),
    path('M0 36L0 76', { stroke: P.slateD, sw: 17 }),
    path('M0 44L0 75', { stroke: P.AM, sw: 10 }),
    g(R(-rot), inner ? inner(P) : ell(0, 0, 32, 32, { fill: '#dff2fb', op: 0.55 })),
    ell(0, 0, 34, 34, { stroke: P.slateD, sw: 12 }),
    ell(0, 0, 34, 34, { stroke: P.slateL, sw: 5 }),
    g(R(-rot), path('M-23 -9C-20 -17 -14 -22 -7 -23', { stroke: '#fff', sw: 5, op: 0.9 })),
  );
// typed, done: 0..1; caret: shown or not
export const terminal =
  (x, y, { typed = 1, done = 0, caret = true } = {}) =>
  P =>
    g(
      T(x, y),
      rr(-58, -50, 116, 96, 11, { fill: P.slateD, stroke: P.edge, sw: 9 }),
      rr(-58, -50, 116, 96, 11, { fill: P.slateD, stroke: '#1d222e', sw: LN }),
      path('M-47 -50L47 -50C54 -50 58 -46 58 -39L58 -31L-58 -31L-58 -39C-58 -46 -54 -50 -47 -50Z', { fill: P.slateL }),
      g(
        readable,
        ell(-45, -40, 4.4, 4.4, { fill: '#ff8f85' }),
        ell(-31, -40, 4.4, 4.4, { fill: P.amber }),
        ell(-17, -40, 4.4, 4.4, { fill: P.leaf }),
        path('M-44 -18L-32 -7L-44 4', { stroke: '#a8eaa6', sw: 6.5 }),
        typed > 0.05 ? path(`M-18 -7L${f(-18 + 44 * typed)} -7`, { stroke: '#d6dcea', sw: 6.5 }) : '',
        caret ? rr(typed > 0.05 ? -8 + 44 * typed : -20, -15, 9, 17, 1.5, { fill: '#a8eaa6' }) : '',
        path('M-44 27L44 27', { stroke: '#566076', sw: 9 }),
        done > 0 ? path(`M-44 27L${f(-44 + 88 * done)} 27`, { stroke: done >= 1 ? P.leaf : P.A, sw: 9 }) : '',
      ),
    );
// turn: 0..1 of one pattern of lands
export const globe =
  (x, y, turn = 0) =>
  P =>
    g(
      T(x, y),
      path('M-22 52C-14 44 14 44 22 52Z', { fill: P.slateL, stroke: P.slateD, sw: LN }),
      path(arc(0, 0, 49, 49, 70, 240), { stroke: P.slateD, sw: 7 }),
      ell(0, 0, 42, 42, { fill: U('globe'), stroke: P.skyD, sw: LN }),
      g(
        readable,
        globeLands(39.5, turn).map(d => path(d, { fill: P.leaf })),
      ),
      path(arc(0, -2, 40, 12, 8, 172), { stroke: '#fff', sw: 4, op: 0.8 }),
      g(T(15, -22) + R(38), ell(0, 0, 8, 5, { fill: '#fff', op: 0.85 })),
    );
// n: how many of the three boxes are ticked
export const clipboard =
  (x, y, { rot = 0, n = 2 } = {}) =>
  P =>
    g(
      T(x, y) + R(rot),
      rr(-42, -54, 84, 108, 9, { fill: '#c79360', stroke: '#7b5233', sw: LN }),
      rr(-33, -42, 66, 88, 4, { fill: P.paper, stroke: '#a57a52', sw: 2.4 }),
      rr(-17, -62, 34, 18, 6, { fill: P.slateL, stroke: P.slateD, sw: 3.6 }),
      g(
        readable,
        [0, 1, 2].map(i => {
          const yy = -24 + i * 26,
            k = clamp(n - i),
            short = clamp(k / 0.35),
            long = clamp((k - 0.35) / 0.65);
          return (
            (k > 0
              ? path(
                  `M-26 ${yy}L${f(-26 + 6 * short)} ${f(yy + 7 * short)}` + (long ? `L${f(-20 + 11 * long)} ${f(yy + 7 - 15 * long)}` : ''),
                  { stroke: P.leafD, sw: 6 },
                )
              : rr(-26, yy - 7, 14, 14, 3.5, { stroke: P.paperLine, sw: 3.6 })) +
            path(`M0 ${yy}L${25 - (i % 2) * 7} ${yy}`, { stroke: P.paperLine, sw: 5.5 })
          );
        }),
      ),
    );
export const pencil = (x, y, rot) => P =>
  g(
    T(x, y) + R(rot),
    path('M-5.5 -30L5.5 -30L5.5 14L0 27L-5.5 14Z', { fill: P.amber, stroke: '#8a5a1c', sw: 3.2 }),
    path('M-2.6 20L0 27L2.6 20Z', { fill: P.eye }),
    path('M-5.5 -30L5.5 -30L5.5 -22L-5.5 -22Z', { fill: P.AM, stroke: '#8a5a1c', sw: 3.2 }),
  );
export const pile =
  (x, y, h, o = {}) =>
  P => {
    const n = 5,
      lh = h / n,
      off = [0, 5, -4, 3, -2],
      b = o.bulge || 0; // a pile of pages that gets sat flat
    return g(
      T(x, y),
      [...Array(n)]
        .map((_, i) => {
          const w = 84 + b * (10 - Math.abs(i - 2) * 4),
            yy = -lh * (i + 1),
            c = i % 2 ? P.A : P.paper;
          return (
            rr(-w + off[i], yy, w * 2, lh, Math.min(6, lh * 0.42), { fill: c, stroke: P.ink, sw: 3.8 }) +
            (lh > 9
              ? path(
                  `M${f(-w + off[i] + 14)} ${f(yy + lh / 2)}L${f(-w + off[i] + 40)} ${f(yy + lh / 2)}M${f(w + off[i] - 40)} ${f(yy + lh / 2)}L${f(w + off[i] - 14)} ${f(yy + lh / 2)}`,
                  { stroke: i % 2 ? P.AD : P.paperLine, sw: 3.2, op: 0.8 },
                )
              : '')
          );
        })
        .join(''),
    );
  };
export const pressMarks = (x1, x2, y, k) => P =>
  [x1, x2].map(x => g(T(x, y + k * 12), stick('M-15 -22L0 -8L15 -22M-15 0L0 14L15 0', P, P.AD, 7))).join('');
export const bubble =
  (x, y, o = {}) =>
  P =>
    g(
      T(x, y) + S(o.s || 1),
      path(
        'M-44 -34C-50 -34 -56 -28 -56 -22L-56 14C-56 22 -50 26 -44 26L22 26L44 42L38 26C48 26 56 22 56 14L56 -22C56 -28 50 -34 44 -34Z',
        { fill: P.paper, stroke: P.edge, sw: 9 },
      ),
      path(
        'M-44 -34C-50 -34 -56 -28 -56 -22L-56 14C-56 22 -50 26 -44 26L22 26L44 42L38 26C48 26 56 22 56 14L56 -22C56 -28 50 -34 44 -34Z',
        { fill: P.A, stroke: P.AD, sw: LN + 0.6 },
      ),
      g(
        readable,
        [[-15, 74], [5, 52]].map(([yy, w], i) => {
          const k = clamp((o.n ?? 2) - i);
          return k > 0.05 ? path(`M-38 ${yy}L${f(-38 + w * k)} ${yy}`, { stroke: P.paper, sw: 8.5 }) : '';
        }),
      ),
    );
export const shieldQ =
  (x, y, o = {}) =>
  P =>
    g(
      T(x, y) + R(o.rot || 0) + S(o.s || 1),
      path('M0 -52C14 -42 28 -39 42 -39C44 -2 32 30 0 48C-32 30 -44 -2 -42 -39C-28 -39 -14 -42 0 -52Z', {
        fill: P.amber,
        stroke: P.edge,
        sw: 11,
      }),
      path('M0 -52C14 -42 28 -39 42 -39C44 -2 32 30 0 48C-32 30 -44 -2 -42 -39C-28 -39 -14 -42 0 -52Z', {
        fill: P.amber,
        stroke: P.amberD,
        sw: 4.6,
      }),
      path('M0 -43C-12 -35 -23 -32 -34 -31.5C-35 -4 25 22 0 38Z', { fill: '#ffd67f' }),
      path('M-14 -14C-14 -30 14 -30 14 -13C14 -2 0 -3 0 9', { stroke: '#6a4210', sw: 9, transform: readable }),
      ell(0, 23, 5.6, 5.6, { fill: '#6a4210' }),
    );
export const cursorBox = (x, y, on) => P =>
  g(
    T(x, y),
    rr(-62, -28, 124, 56, 12, { fill: P.paper, stroke: P.edge, sw: 10 }),
    rr(-62, -28, 124, 56, 12, { fill: '#ffffff', stroke: P.AM, sw: 7.5 }),
    rr(-65, -31, 130, 62, 14, { stroke: P.AD, sw: 3 }),
    g(
      readable,
      on ? path('M-40 -14L-40 14M-48 -15L-32 -15M-48 15L-32 15', { stroke: P.eye, sw: 6.4 }) : '',
      path('M-20 0L-18 0M0 0L2 0M20 0L22 0', { stroke: P.paperLine, sw: 7 }),
    ),
  );
export const sparkle = (x, y, r, c) => P =>
  r < 1
    ? ''
    : g(
        T(x, y) + S(r / 10),
        path('M0 -12C1.5 -4 4 -1.5 12 0C4 1.5 1.5 4 0 12C-1.5 4 -4 1.5 -12 0C-4 -1.5 -1.5 -4 0 -12Z', {
          fill: c === 'a' ? P.A : P.amber,
          stroke: c === 'a' ? P.AD : P.amberD,
          sw: 26 / Math.max(6, r),
        }),
      );
export const heart =
  (x, y, r, rot = 0) =>
  P =>
    r < 1
      ? ''
      : g(
          T(x, y) + R(rot) + S(r / 10),
          path('M0 10C-14 0 -11 -10 -5 -10C-2 -10 0 -7.5 0 -6C0 -7.5 2 -10 5 -10C11 -10 14 0 0 10Z', {
            fill: P.AM,
            stroke: P.edge,
            sw: 75 / r,
          }),
          path('M0 10C-14 0 -11 -10 -5 -10C-2 -10 0 -7.5 0 -6C0 -7.5 2 -10 5 -10C11 -10 14 0 0 10Z', {
            fill: P.AM,
            stroke: P.AD,
            sw: 30 / r,
          }),
          ell(-5, -5.5, 1.8, 1.5, { fill: '#fff' }),
        );
export const triangle =
  (x, y, o = {}) =>
  P =>
    g(
      T(x, y) + R(o.rot || 0) + S(o.s || 1),
      path('M0 -46L48 36L-48 36Z', { fill: P.amber, stroke: P.edge, sw: 20 }),
      path('M0 -46L48 36L-48 36Z', { fill: P.amber, stroke: P.amberD, sw: 12 }),
      path('M0 -46L48 36L-48 36Z', { fill: P.amber, stroke: P.amber, sw: 4 }),
      path('M0 -18L0 8', { stroke: '#6a4210', sw: 11 }),
      ell(0, 25, 6, 6, { fill: '#6a4210' }),
    );
export const zzz = arr => P =>
  arr.map(([x, y, s]) => (s < 0.1 ? '' : g(T(x, y) + S(s), stick('M9 -10L-9 -10L9 10L-9 10', P, P.AD, 5)))).join('');
export const dots = arr => P => arr.map(([x, y, r]) => ell(x, y, r, r, { fill: P.paper, stroke: P.AD, sw: 3.6 })).join('');
export const cloud =
  (x, y, k = 0) =>
  P =>
    g(
      T(x, y) + S(1.12),
      path('M-34 16C-52 16 -52 -8 -34 -10C-32 -28 -6 -34 4 -22C18 -32 40 -22 36 -8C52 -4 50 16 34 16Z', {
        fill: P.paper,
        stroke: P.edge,
        sw: 8,
      }),
      path('M-34 16C-52 16 -52 -8 -34 -10C-32 -28 -6 -34 4 -22C18 -32 40 -22 36 -8C52 -4 50 16 34 16Z', {
        fill: P.paper,
        stroke: P.AD,
        sw: LN,
      }),
      [0, 1, 2].map(i => {
        const a = Math.max(0, Math.sin((k - (2 - i) * 0.17) * Math.PI * 2));
        return ell(-20 + i * 20, -3 - a * 5, 5 + a * 1.4, 5 + a * 1.4, { fill: a > 0.35 ? P.AD : P.A });
      }),
    );
// a mug from the front; its steam curls upwards with t
export const cup =
  (x, y, t = 0, steam = true) =>
  P => {
    const curl = steam
      ? [-10, 10].map((sx, i) => spline([0, 1, 2, 3].map(k => [sx + wave(t, 1, 0.1 * i - k * 0.28) * 4, -32 - 9.5 * k]))).join('')
      : '';
    return g(
      T(x, y) + S(1.16),
      steam ? path(curl, { stroke: P.edge, sw: 10 }) + path(curl, { stroke: '#a8907c', sw: 5 }) : '',
      path('M26 -12C46 -16 46 18 22 14', { stroke: P.ADD, sw: 12 }),
      path('M26 -12C46 -16 46 18 22 14', { stroke: P.AM, sw: 5 }),
      path('M-29 -20L29 -20C30 4 26 26 14 28L-14 28C-26 26 -30 4 -29 -20Z', { fill: P.A, stroke: P.ADD, sw: LN }),
      ell(0, -20, 29, 7.5, { fill: '#7a4e38', stroke: P.ADD, sw: LN }),
      path('M0 14C-11 6 -8 -2 -4 -2C-1.5 -2 0 0 0 1C0 0 1.5 -2 4 -2C8 -2 11 6 0 14Z', { fill: P.cream }),
    );
  };
export const lines =
  (arr, k = 1) =>
  P =>
    k > 0.05
      ? arr.map(([x1, y1, x2, y2]) => stick(`M${f(x1)} ${f(y1)}L${f(lerp(x1, x2, k))} ${f(lerp(y1, y2, k))}`, P, P.AD, 6)).join('')
      : '';
// a quaver, drifting
export const note =
  (x, y, s = 1, rot = 0) =>
  P =>
    s < 0.1
      ? ''
      : g(
          T(x, y) + R(rot) + S(-s, s),
          stick('M-6 14L-6 -14L14 -19L14 8', P, P.AD, 5),
          ell(-11, 14.5, 7, 5.4, { fill: P.AD, stroke: P.edge, sw: 2.4 }),
          ell(9, 8.5, 7, 5.4, { fill: P.AD, stroke: P.edge, sw: 2.4 }),
        );
export const curves = ds => P => ds.map(d => stick(d, P, P.AD, 5.4)).join('');
export const sweat =
  (x, y, s = 1) =>
  P =>
    s < 0.1
      ? ''
      : g(
          T(x, y) + S(s),
          path('M0 -14C7 -3 9 2 9 6C9 12 5 15 0 15C-5 15 -9 12 -9 6C-9 2 -7 -3 0 -14Z', { fill: '#bfe6fa', stroke: P.skyD, sw: 3.4 }),
          path('M-4 5C-4 8 -3 9 -1 10', { stroke: '#fff', sw: 3 }),
        );
export const puff =
  (x, y, s = 1) =>
  P =>
    s < 0.1
      ? ''
      : g(
          T(x, y) + S(s),
          path('M-16 8C-26 8 -26 -6 -16 -6C-14 -18 8 -18 10 -8C22 -10 24 8 12 8Z', { fill: P.paper, stroke: P.edge, sw: 9 / s }),
          path('M-16 8C-26 8 -26 -6 -16 -6C-14 -18 8 -18 10 -8C22 -10 24 8 12 8Z', { fill: P.paper, stroke: P.ink, sw: 4 / s }),
        );
export const pillow =
  (x, y, w = 118) =>
  P =>
    g(
      T(x, y),
      path(
        `M${-w} -30C${-w + 30} -38 ${w - 30} -38 ${w} -30C${w + 8} -28 ${w + 6} -16 ${w + 2} -12C${w + 8} -4 ${w + 8} 4 ${w} 6C${w - 30} 12 ${-w + 30} 12 ${-w} 6C${-w - 8} 4 ${-w - 8} -4 ${-w - 2} -12C${-w - 6} -16 ${-w - 8} -28 ${-w} -30Z`,
        { fill: P.AL, stroke: P.AD, sw: LN },
      ),
      path(`M${-w + 14} -8C${-w + 40} -2 ${w - 40} -2 ${w - 14} -8`, { stroke: P.AM, sw: 3.4 }),
    );
export const beanbag = (x, y) => P =>
  g(
    T(x, y),
    path('M-118 0C-134 -34 -112 -92 -76 -112C-44 -132 52 -132 82 -108C116 -84 132 -34 118 0C92 10 -92 10 -118 0Z', {
      fill: P.A,
      stroke: P.AD,
      sw: LN + 0.4,
    }),
    path('M-98 -20C-104 -52 -92 -80 -74 -92', { stroke: P.AL, sw: 7 }),
    path('M100 -14C106 -44 96 -74 82 -86', { stroke: P.AM, sw: 4 }),
  );
