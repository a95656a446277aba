// How Nibbo acts. Every animation is a function of the loop time t in [0, 1) that returns a pose; character.md has the acting
// notes. Ears and tail are given a later time than the body, so that they follow it.
import { at, path, lerp, clamp } from '../lib/svg.mjs';
import { curve, during, life, pop, step, wave } from '../lib/motion.mjs';
import { C, groundX, line, pose } from './rig.mjs';
import * as X from './props.mjs';

const noFeet = { footL: null, footR: null };
const put = (K, x, y, r, s, inner) => at(K.ox + x, K.oy + y, r, s, inner); // from the middle of the pet's base
const ears = (a, c = 14, d = 0) => ({ earL: { a: a + d, c }, earR: { a: a - d, c } });
const hold = (x, y, more = {}) => ({ x, y, fix: true, ...more }); // a paw that the body's breath does not move
const breath = (t, a = 0.016) => ({ sy: 1 + a * wave(t), sx: 1 - a * 0.5 * wave(t) });
const tail = (t, swing = 6, cycles = 1) => ({ tail: { a: 58 + swing * wave(t, cycles, -0.2) } });
const blink = (t, ...times) => times.some(at0 => during(t, at0, 0.1));
const look = (t, eyes, ...blinks) => ({ eyes: blink(t, ...blinks) ? { shape: 'line' } : eyes });

export const animations = {};
const add = (name, frames, at0) => {
  animations[name] = { frames, pose: t => pose(...[].concat(at0(t))) };
};

// ---- idle: breathes, looks aside, an ear flicks, a blink
add('idle', 10, t => {
  const aside = curve(t, [[0, 0], [0.16, 0], [0.3, 1], [0.5, 1], [0.62, 0]]);
  const flick = curve(t, [[0, 0], [0.66, 0], [0.74, 1], [0.84, -0.35], [0.94, 0]]);
  return {
    ...breath(t, 0.018),
    turn: 0.2 * aside,
    ...look(t, { lx: 0.7 * aside, ly: -0.25 * aside }, 0.6),
    mouth: during(t, 0.7, 0.3) ? 'smile' : 'w',
    earL: { a: 24 - 2.5 * wave(t, 1, -0.1), c: 14 - 3 * wave(t, 1, -0.12) },
    earR: { a: 24 - 2.5 * wave(t, 1, -0.1) + 18 * flick, c: 14 + 14 * flick },
    ...tail(t, 8),
  };
});

// ---- thinking: paw at the chin, gaze up and along, dots swell in the cloud
add('thinking', 10, t => ({
  x: -14,
  tilt: -5 + 1.5 * wave(t),
  bend: -4 + 1.5 * wave(t, 1, 0.1),
  turn: 0.25,
  pitch: -0.15,
  mouth: 'side',
  ...look(t, { lx: 0.75 + 0.2 * wave(t), ly: -1 }, 0.8),
  sy: 1 + 0.01 * wave(t, 1, 0.2),
  armR: { x: 10 + 0.8 * wave(t, 2), y: -21.5 + wave(t, 2), sh: [32, -13], open: 3 },
  armL: { x: -22, y: -13 },
  earL: { a: 30 + 3 * wave(t, 1, -0.15), c: 20 + 4 * wave(t, 1, -0.2) },
  earR: { a: 12 + 4 * wave(t, 1, -0.2), c: 4 + 5 * wave(t, 1, -0.25) },
  ...tail(t, 9),
  fx: K =>
    X.puff(groundX + 32, 65 + 0.6 * wave(t, 1, -0.2), 2.8) +
    X.puff(groundX + 40, 54 + 0.8 * wave(t, 1, -0.1), 4.2) +
    at(groundX + 58, 29.5 + 1.2 * wave(t), 0, 1, X.cloud(K, t)),
}));

// ---- coding: paws tap in turn, eyes on the screen, lines of code appear
add('coding', 8, t => {
  const tap = wave(t, 2),
    l = Math.max(0, tap) * 4.5,
    r = Math.max(0, -tap) * 4.5;
  return {
    pitch: -0.5,
    mouth: 'tiny',
    ...noFeet,
    sy: 1 - 0.009 * (1 + wave(t, 4, 0.1)),
    tilt: 0.8 * tap,
    ...look(
      t,
      {
        ly: 0.75,
        lx: curve(t, [[0, -0.7], [0.7, 0.7]]),
      },
      0.86,
    ),
    earL: { a: 28 + 2.5 * wave(t, 2, -0.12), c: 18 + 4 * wave(t, 2, -0.15) },
    earR: { a: 28 - 2.5 * wave(t, 2, -0.12), c: 18 - 4 * wave(t, 2, -0.15) },
    ...tail(t, 7),
    armL: hold(-33, -5 - l, { sh: [-38, -20], open: 4, r: 6.4, layer: 'front' }),
    armR: hold(33, -5 - r, { sh: [38, -20], open: 4, r: 6.4, layer: 'front' }),
    mid: K => put(K, 0, 1, 0, 1, X.laptop(K)),
    fx: K => at(groundX + 55, 20, 0, 1, X.codeBars(K, clamp(t * 5.4, 0.4, 4))),
  };
});

// ---- reading: the gaze crosses two lines, then a leaf turns
add('reading', 10, t => {
  const gaze = curve(t, [[0, -0.8], [0.28, 0.8], [0.36, -0.7], [0.64, 0.8], [0.8, 0.4]]);
  const flip = during(t, 0.66, 0.34) ? clamp((t - 0.66) / 0.28) : null;
  return {
    ...breath(t, 0.01),
    pitch: -0.3 - 0.04 * wave(t),
    tilt: 1.6 * gaze,
    mouth: flip === null ? 'tiny' : 'w',
    ...noFeet,
    ...look(t, { lx: gaze, ly: 0.8 }, 0.9),
    earL: { a: 32 + 2 * wave(t, 1, -0.1), c: 22 },
    earR: { a: 32 - 7 * (flip ? Math.sin(flip * Math.PI) : 0), c: 22 - 6 * (flip || 0) * (1 - (flip || 0)) * 4 },
    ...tail(t, 6),
    armL: hold(-36, -14, { sh: [-40, -22], open: 3, layer: 'front', r: 6.4 }),
    armR: hold(36 - (flip === null ? 0 : 4 * Math.sin(flip * Math.PI)), -14 - (flip === null ? 0 : 5 * Math.sin(flip * Math.PI)), {
      sh: [40, -22],
      open: 3,
      layer: 'front',
      r: 6.4,
    }),
    mid: K => {
      const [a, b] = K.P(0, -45.7);
      return at(a, b, 1.6 * gaze, 1, X.glasses()) + put(K, 0, 1, 0, 1, X.book(K, flip));
    },
  };
});

// ---- searching: sweeps the lens over the ground to both sides
add('searching', 10, t => {
  const s = curve(t, [[0, -1], [0.12, -1], [0.5, 1], [0.62, 1]]),
    lead = curve(t + 0.07, [[0, -1], [0.12, -1], [0.5, 1], [0.62, 1]]),
    late = curve(t - 0.08, [[0, -1], [0.12, -1], [0.5, 1], [0.62, 1]]);
  const bob = 1.5 * Math.cos((s * Math.PI) / 2);
  return {
    x: -4 + 3 * s,
    bend: 5 * s,
    turn: 0.1 + 0.16 * s,
    tilt: 2 * s,
    mouth: 'tiny',
    eyes: { lx: 0.7 * lead, ly: 0.1 },
    eyeL: { size: 0.94, ...(blink(t, 0.3) ? { shape: 'line' } : {}) },
    earL: { a: 22 + 6 * late, c: 8 + 8 * late },
    earR: { a: 22 - 6 * late, c: 8 - 8 * late },
    tail: { a: 58 + 9 * late },
    armR: hold(48 + 3 * s, -20 + bob, { sh: [40, -22], open: 3, layer: 'front' }),
    front: K => {
      const [a, b] = K.P(23.5 + 2.5 * s, -43 + bob);
      return at(a, b, 0, 1, X.magnifier(K));
    },
  };
});

// ---- running a command: watches over the window's edge; type, enter, the bar fills, done
add('running', 10, t => {
  const typed = clamp(t / 0.36),
    done = clamp((t - 0.4) / 0.45),
    glad = during(t, 0.86, 0.14);
  const hop = curve(t, [[0, 0], [0.36, 0], [0.44, -1], [0.54, 0.5], [0.66, 0], [0.84, 0], [0.92, 1]]);
  return {
    lift: 12,
    shadow: false,
    pitch: -0.1,
    sy: 1 + 0.025 * hop,
    sx: 1 - 0.012 * hop,
    mouth: glad ? 'smile' : typed < 1 ? 'tiny' : 'w',
    ...noFeet,
    eyes: glad ? { shape: 'happy' } : { ly: 0.75, lx: typed < 1 ? lerp(-0.6, 0.5, typed) : lerp(-0.6, 0.6, done) },
    ...ears(
      24 -
        7 *
          curve(t - 0.06, [[0, 0], [0.36, 0], [0.44, -1], [0.54, 0.5], [0.66, 0], [0.84, 0], [0.92, 1]]),
      14 - 6 * hop,
    ),
    ...tail(t, 8, 2),
    armL: hold(-30, -29, { sh: [-34, -36], open: 3, layer: 'front', r: 7.4, fade: 1 }),
    armR: hold(30, -29 - 3.5 * Math.max(0, wave(t, 4)) * (typed < 1 ? 1 : 0), { sh: [34, -36], open: 3, layer: 'front', r: 7.4, fade: 1 }),
    front: K => put(K, 0, 13, 0, 1, X.terminal(K, typed, done, typed < 1 || during(t * 5, 0, 0.5))),
  };
});

// ---- browsing: a paw gives the globe a push, and it turns on
add('browsing', 8, t => {
  const push = curve(t, [[0, 0], [0.12, 0], [0.42, 1], [0.58, 1], [0.86, 0]]);
  const turn = lerp(0, 1, t) + 0.09 * (wave(t, 1, -0.3) + Math.sin(0.3 * 2 * Math.PI));
  return {
    ...breath(t, 0.012),
    x: -26 + 2 * push,
    bend: 3 * push,
    turn: 0.45,
    mouth: 'w',
    ...look(t, { lx: 0.8 + 0.15 * push, ly: 0.4 }, 0.75),
    earL: { a: 25 + 4 * wave(t, 1, -0.25), c: 14 + 5 * wave(t, 1, -0.3) },
    earR: { a: 23 + 4 * wave(t, 1, -0.25), c: 11 + 5 * wave(t, 1, -0.3) },
    ...tail(t, 8),
    armR: hold(45 + 8 * push, -36 + 8 * push - 5 * Math.sin(push * Math.PI) * (t > 0.5 ? 1 : 0), {
      sh: [38, -30],
      open: 3,
      layer: 'front',
      solid: 1,
    }),
    armL: { x: -14, y: -17, sh: [-26, -24] },
    mid: K => at(groundX + 40, 110, 0, 1, X.globe(K, turn)),
  };
});

// ---- planning: ticks three boxes, is pleased, starts a new leaf
add('planning', 10, t => {
  const n = clamp(
      curve(t, [[0, 0], [0.08, 0], [0.22, 1], [0.3, 1], [0.44, 2], [0.52, 2], [0.66, 3], [0.999, 3]]),
      0,
      3,
    ),
    glad = during(t, 0.7, 0.26);
  const px = curve(t, [[0, 55], [0.22, 57], [0.3, 55], [0.44, 57], [0.52, 54], [0.66, 57], [0.8, 50]]),
    py = curve(t, [
      [0, -45],
      [0.15, -40],
      [0.22, -44],
      [0.3, -34],
      [0.37, -29],
      [0.44, -33],
      [0.52, -23],
      [0.59, -19],
      [0.66, -23],
      [0.8, -32],
    ]);
  return {
    ...breath(t, 0.01),
    x: -26,
    turn: 0.25,
    tilt: glad ? -3 : 0,
    eyes: glad ? { shape: 'happy' } : { lx: 0.9, ly: lerp(-0.1, 0.8, n / 3) },
    mouth: glad ? 'smile' : 'tiny',
    armL: { x: -20, y: -14 },
    ...ears(26 - (glad ? 5 : 0) + 2 * wave(t, 3, -0.1), 15),
    ...tail(t, 8, glad ? 2 : 1),
    armR: hold(px - 6, py + 3, { sh: [36, -22], open: 3, layer: 'front', solid: 1 }),
    mid: K => put(K, 68, -36, 7, 1.12, X.clipboard(K, n)),
    front: K => put(K, px, py, 62, 0.95, X.pencil(K)),
  };
});

// ---- compacting: hop, squash the pile flat, spring back; a new pile slides in under the hop
add('compacting_context', 10, t => {
  const pile = curve(t, [[0, 27], [0.3, 27], [0.42, 15], [0.72, 16], [0.86, 27]]);
  const up = curve(t, [[0, 2], [0.1, 0], [0.24, 15], [0.34, 8], [0.42, -1], [0.52, 0], [0.66, -1], [0.8, 11], [0.92, 3]]);
  const sy = curve(t, [
    [0, 0.97],
    [0.1, 0.9],
    [0.24, 1.07],
    [0.34, 1.06],
    [0.44, 0.74],
    [0.56, 0.86],
    [0.66, 0.84],
    [0.8, 1.04],
    [0.92, 0.94],
  ]);
  const late = curve(t - 0.08, [[0, 0], [0.24, 1], [0.44, -1], [0.66, -0.5], [0.8, 0.6], [0.92, 0]]),
    pressed = during(t, 0.36, 0.26);
  return {
    scale: 0.88,
    lift: pile - 1 + Math.max(0, up),
    sy,
    sx: 1 + (1 - sy) * 0.6,
    puff: pressed ? 2 : 0,
    ...noFeet,
    eyes: pressed ? { shape: 'squeeze' } : during(t, 0.62, 0.2) ? { shape: 'happy' } : { ly: 0.9 },
    mouth: pressed ? 'wavy' : during(t, 0.62, 0.2) ? 'w' : 'tiny',
    ...ears(36 - 18 * late, 22 - 10 * late),
    tail: { a: 58 - 16 * late },
    armL: hold(-26, -3 - Math.max(0, up) * 0.3, { sh: [-33, -18], layer: 'front', open: 3 }),
    armR: hold(26, -3 - Math.max(0, up) * 0.3, { sh: [33, -18], layer: 'front', open: 3 }),
    back: K => at(groundX, 139, 0, 1, X.stack(K, pile, 47 + (27 - pile) * 0.35)),
    fx: () =>
      [-1, 1]
        .map(s =>
          at(
            groundX + s * 76,
            lerp(90, 114, clamp((t - 0.2) / 0.26)) - (t > 0.6 ? lerp(0, 22, clamp((t - 0.62) / 0.3)) : 0),
            0,
            1,
            X.ost('M-5 -8L0 -2L5 -8M-5 1L0 7L5 1', C.amber, 2.6),
          ),
        )
        .join(''),
  };
});

// ---- responding: talks with a presenting paw, the bubble fills
add('responding', 8, t => ({
  ...breath(t, 0.012),
  x: -12,
  turn: 0.2,
  tilt: 2 + 2 * wave(t, 2, 0.1),
  mouth: step(t, [
    [0, 'talk'],
    [0.12, 'smile'],
    [0.25, 'open'],
    [0.37, 'talk'],
    [0.5, 'tiny'],
    [0.62, 'open'],
    [0.75, 'talk'],
    [0.87, 'smile'],
  ]),
  ...look(t, { lx: 0.3 + 0.2 * wave(t) }, 0.5),
  earL: { a: 24 + 3 * wave(t, 2, -0.15), c: 14 + 4 * wave(t, 2, -0.2) },
  earR: { a: 22 + 3 * wave(t, 2, -0.15), c: 12 + 4 * wave(t, 2, -0.2) },
  ...tail(t, 10),
  armR: { x: 55.5 + 1.5 * wave(t, 2), y: -45 - 6 * wave(t, 1, 0.15), sh: [39, -28], pad: 1 },
  armL: { x: -24, y: -13 },
  fx: K => at(groundX + 58, 34 + 0.8 * wave(t), 0, 1, X.bubble(K, clamp(t * 3.8, 0.25, 3))),
}));

// ---- approval: holds the shield high, stretches, waits for you; two taps and a look
add('approval', 10, t => {
  const lift = curve(t, [[0, 0], [0.1, -0.3], [0.26, 1], [0.44, 1], [0.58, 0], [0.68, 0.35], [0.8, 0]]),
    late = curve(t - 0.08, [[0, 0], [0.1, -0.3], [0.26, 1], [0.44, 1], [0.58, 0], [0.68, 0.35], [0.8, 0]]);
  return {
    x: -26,
    sy: 1 + 0.03 * lift,
    sx: 1 - 0.015 * lift,
    eyes: blink(t, 0.84) ? { shape: 'line' } : { lx: 0.1, ly: -0.2, size: 1.06 },
    brow: blink(t, 0.84) ? null : 'raised',
    mouth: lift > 0.2 ? 'o' : 'tiny',
    ...ears(15 - 8 * late, 4 - 8 * late),
    ...tail(t, 9),
    armR: hold(57, -50 - 5 * lift, { sh: [39, -28], open: 3, layer: 'front' }),
    armL: { x: -20, y: -19, sh: [-31, -23], open: 3 },
    front: K => put(K, 73, -80 - 5 * lift, 5 - 8 * lift, 1.1 + 0.07 * lift, X.shieldQ()),
  };
});

// ---- input: points at the field, the caret blinks, looks at you
add('input', 8, t => {
  const poke = curve(t, [[0, 0], [0.18, 1], [0.32, 0], [0.5, 1], [0.64, 0]]),
    at0 = during(t, 0.62, 0.36);
  return {
    ...breath(t, 0.012),
    x: -36,
    turn: 0.2,
    tilt:
      3 *
      curve(t, [[0, 0], [0.6, 0], [0.75, 1]]),
    eyes: blink(t, 0.85) ? { shape: 'line' } : { lx: at0 ? 0.1 : 0.8, ly: at0 ? 0 : 0.2 },
    mouth: at0 ? 'smile' : 'w',
    earL: {
      a:
        22 +
        5 *
          curve(t - 0.08, [[0, 0], [0.6, 0], [0.75, 1]]),
      c: 10,
    },
    earR: { a: 20 - 3 * poke, c: 8 },
    ...tail(t, 8),
    armR: hold(54 + 2.5 * poke, -41 + poke, { sh: [40, -25], open: 4, r: 5.8, layer: 'front' }),
    armL: { x: -22, y: -14 },
    front: K => put(K, 91, -48, 0, 1, X.field(K, during(t * 2, 0, 0.5), 31)),
  };
});

// ---- wave (done): crouch, leap with sparkles, land, wave at you
const celebrate = (t, burst) => {
  const k = clamp(burst);
  if (k <= 0 || k >= 1) return '';
  const grow = Math.min(1, k / 0.3, (1 - k) / 0.4),
    out = 6 * k,
    spin = 50 * k;
  return (
    X.sparkle(24 - out, 38 - out, 1.05 * grow, C.amber, spin) +
    X.sparkle(156 + out, 34 - out, 1.2 * grow, C.amber, -spin) +
    X.sparkle(17 - out * 0.8, 88, 0.7 * grow, C.white) +
    X.sparkle(163 + out * 0.8, 92, 0.75 * grow, C.white)
  );
};
const petals = (K, k) =>
  k <= 0 || k >= 1
    ? ''
    : [[14, 52, -30], [166, 50, 30]]
        .map(([x, y, r], i) =>
          at(
            x + 4 * Math.sin(k * 6 + i * 3),
            y + 34 * k,
            r + (i ? -90 : 90) * k,
            Math.min(1, k / 0.15, (1 - k) / 0.2),
            X.petalIcon(0, 0, 0.95, K.A.m),
          ),
        )
        .join('');
add('wave', 10, t => {
  const lift = curve(t, [[0, 0], [0.16, 0], [0.28, 13], [0.36, 15], [0.48, 0], [0.56, 3], [0.62, 0]]);
  const sy = curve(t, [[0, 1], [0.12, 0.86], [0.24, 1.09], [0.36, 1.04], [0.48, 0.87], [0.58, 1.03], [0.68, 1]]);
  const raise = [[0.12, 0], [0.26, 1]],
    left = curve(t, [[0, 0], ...raise, [0.44, 1], [0.6, 0]]),
    right = curve(t, [[0, 0.6], ...raise, [0.9, 1]]),
    late = curve(t - 0.07, [[0, 0], [0.12, 0.8], [0.26, -1], [0.48, 1], [0.6, -0.4], [0.72, 0]]);
  const arm = (side, k, sway = 0) => ({
    x: side * lerp(29, 54, k) + sway,
    y: lerp(-15, -58, k),
    sh: [side * lerp(31, 37, k), lerp(-24, -27, k)],
    pad: k > 0.7,
    solid: k > 0.4,
    bow: -side * 4 * Math.sin(k * Math.PI),
  });
  const waving = during(t, 0.58, 0.38),
    sway = waving ? wave(t, 5, -0.9) : 0,
    air = during(t, 0.2, 0.26);
  return {
    lift,
    sy,
    sx: 1 + (1 - sy) * 0.6,
    tilt: waving ? 3 * sway : 0,
    eyes: during(t, 0.08, 0.52) ? { shape: 'happy' } : { lx: 0.1 },
    mouth: during(t, 0.18, 0.72) ? 'open' : 'smile',
    ...ears(23 + 14 * late, 13 + 11 * late),
    tail: { a: 56 + 14 * late },
    footL: air ? { rot: 14 } : {},
    footR: air ? { rot: -14 } : {},
    armL: arm(-1, left),
    armR: arm(1, right, 4 * sway),
    fx: K => celebrate(t, (t - 0.2) / 0.5) + petals(K, (t - 0.26) / 0.6),
  };
});

// ---- warning: shrinks back, trembles, the sign throbs, a drop runs down
add('warning', 8, t => {
  const tremble = wave(t, 4, 0.25),
    throb = 0.5 + 0.5 * wave(t, 2),
    slide = life(t, 0, 1);
  return {
    x: -27 + 0.7 * tremble,
    sy: 0.985 + 0.012 * wave(t, 2),
    sx: 1.01,
    tilt: -2,
    eyes: { lx: 0.5, ly: -0.5, size: 1.03 },
    brow: 'worried',
    mouth: 'wavy',
    earL: { a: 56 + 4 * wave(t, 2, -0.2), c: 30 + 4 * tremble },
    earR: { a: 64 + 4 * wave(t, 2, -0.2), c: 34 - 4 * tremble },
    tail: { a: 74 + 4 * tremble },
    armL: { x: -9, y: -20 + 0.5 * tremble, sh: [-26, -16], open: 4 },
    armR: { x: 11, y: -20 - 0.5 * tremble, sh: [28, -16], open: 4 },
    fx: K =>
      at(groundX + 60, 33, -4 + 7 * wave(t, 2, 0.25), 1 + 0.1 * throb, X.triangle()) +
      X.drop(groundX - 76, 80 + 14 * slide * slide, 0.95 * pop(slide), 14),
  };
});

// ---- sleeping: a loaf on a pillow, the tail for a blanket, slow breath
add('sleeping', 8, t => {
  const up = 0.5 - 0.5 * Math.cos(t * 2 * Math.PI),
    twitch = curve(t, [[0, 0], [0.55, 0], [0.66, 1], [0.8, 0]]);
  return {
    lift: 11,
    sy: lerp(0.68, 0.715, up),
    sx: 1.1 - 0.012 * up,
    turn: -0.2,
    pitch: 0.45,
    tilt: -4 - up,
    eyes: { shape: 'asleep' },
    mouth: 'tiny',
    ...noFeet,
    earL: { a: 72 - 3 * up - 9 * twitch, c: 40 },
    earR: { a: 62 - 3 * up, c: 44 },
    shadowW: 1.2,
    armL: { x: -16, y: -8, sh: [-31, -14], open: 4, r: 6.4, fade: 1 },
    armR: null,
    tail: { a: -93 + 2 * wave(t, 1, -0.2), c: 8, front: true, at: [41, -7], L: 40, w: 8.8, side: 1 },
    back: K => at(K.ox, 140, 0, 1, X.pillow(K)),
    fx: K =>
      [0, 1, 2]
        .map(k => {
          const z = life(t, k, 3);
          return X.zed(K.ox + 40 + 34 * z + 3 * Math.sin(z * 9), K.oy - 68 - 46 * z, (0.55 + 0.8 * z) * pop(z), -8 + 16 * Math.sin(z * 6));
        })
        .join(''),
  };
});

// ---- walk: three-quarter view to the right; up on passing, ears and tail late
add('walk', 8, t => {
  const c = Math.cos(t * 2 * Math.PI),
    s = Math.sin(t * 2 * Math.PI),
    bob = Math.abs(s) * 4,
    late = Math.abs(Math.sin((t - 0.1) * 2 * Math.PI)) * 4;
  const foot = (cc, ss) => ({
    x: cc * 18,
    y: -2.2 - Math.max(0, ss) * 8,
    rot: 16 * clamp(ss * 1.4) - 14 * clamp(cc * 1.6 - 0.8),
    ground: true,
    s: 1.14,
  });
  const near = foot(c, -s),
    far = foot(-c, s);
  return {
    turn: 0.85,
    lift: 5 + bob * 0.8,
    sy: 1.01 - (4 - bob) * 0.011,
    sx: 0.995 + (4 - bob) * 0.006,
    rot: 2.5 + s * 2,
    ...look(t, { lx: 0.8 }, 0.62),
    mouth: 'w',
    earL: { a: 34 - late * 3.5, c: 8 + late * 5 },
    earR: { a: 16 - late * 3.5, c: 2 + late * 4 },
    footL: { ...near, x: near.x - 3 },
    footR: { ...far, x: far.x + 5, dark: true, layer: 'back' },
    armL: { x: -12 - c * 10, y: -17 - Math.abs(c) * 1.5, sh: [-13 - c * 3, -27], open: 4 },
    armR: { x: 34 + c * 5, y: -17, sh: [35 + c, -27], open: 4 },
    tail: { side: -1, a: 58 + 15 * Math.sin((t - 0.12) * 2 * Math.PI) },
  };
});

// ---- coffee: enjoys the smell, brings it to the mouth, sips with both paws, sighs
add('coffee', 10, t => {
  const keys = [[0, 0], [0.28, 0], [0.44, 1], [0.66, 1], [0.84, 0]],
    up = curve(t, keys),
    sip = up > 0.75,
    sigh = during(t, 0.8, 0.18),
    x = lerp(55, 1, up),
    y = -26 + 2 * up - 5 * Math.sin(up * Math.PI);
  return {
    ...breath(t, 0.014),
    x: -12 + 10 * up,
    turn: lerp(0.38, 0.08, up),
    pitch: -0.2 * up,
    tilt: -4 * up + 2 * wave(t, 1, 0.1),
    eyes: sip || sigh ? { shape: 'happy' } : blink(t, 0.2) ? { shape: 'line' } : { lx: 0.8 * (1 - up), ly: 0.4 },
    mouth: sip ? '' : sigh ? 'o' : 'w',
    blush: 0.75 + 0.2 * up,
    ...ears(25 + 10 * curve(t - 0.07, keys), 15 + 9 * up),
    ...tail(t, 9),
    armL: hold(lerp(-20, -15, up), lerp(-14, -21, up), { sh: [-32, -20], open: 4, layer: up > 0.5 ? 'front' : undefined, fade: 1 }),
    armR: hold(lerp(45, 17, up), y + 4, { sh: [lerp(38, 33, up), -22], open: lerp(3, 4, up), layer: 'front', fade: up > 0.5 ? 1 : 0 }),
    [up > 0.5 ? 'mid' : 'front']: K => put(K, x, y, 4 * (1 - up), 1, X.mug(K)) + (up < 0.3 ? put(K, x, y - 18, 0, 1, X.steam(t * 2)) : ''),
  };
});

// ---- relaxing: leans back on a bean bag, rocks its feet, hums
const beanBag = K =>
  path(
    'M-60 -1C-74 -8 -72 -50 -50 -64C-40 -70 -24 -60 -8 -42C14 -24 52 -26 70 -14C77 -9 76 -1 68 0C40 3 -30 3 -60 -1Z',
    line({ fill: K.A.l, sw: 2.4 }),
  ) + path('M-60 -2C-67 -6 -69 -18 -68 -30C-58 -8 30 -8 73 -9C75 -5 73 -1.5 67 -1C40 2 -30 2 -60 -2Z', { fill: K.A.m, op: 0.75 });
add('relaxing', 8, t => ({
  lift: 5,
  rot: -20 + 0.8 * wave(t),
  sy: 0.96 + 0.016 * wave(t),
  sx: 1.025,
  tilt: 4 + 2 * wave(t, 1, -0.1),
  pitch: -0.15,
  eyes: { shape: during(t, 0.5, 0.36) ? 'happy' : 'asleep' },
  mouth: 'w',
  footL: { x: 8, y: -5, rot: -16 + 7 * wave(t, 2), sole: 1, s: 0.95 },
  footR: { x: 32, y: -8, rot: 12 + 9 * wave(t, 2, 0.25), sole: 1, s: 0.95 },
  armL: { x: -14, y: -22, sh: [-31, -22], open: 4 },
  armR: { x: 10, y: -20, sh: [29, -24], open: 4 },
  tail: null,
  earL: { a: 40 + 3 * wave(t, 1, -0.2), c: 30 },
  earR: { a: 28 + 5 * wave(t, 1, -0.2), c: 18 + 5 * wave(t, 1, -0.25) },
  back: K => at(K.ox - 10, 140, 0, 1, beanBag(K)),
  fx: K =>
    [0, 1]
      .map(k => {
        const z = life(t, k, 2);
        return X.note(
          groundX + 38 + 16 * z + 4 * Math.sin(z * 7 + k * 3),
          66 - 40 * z,
          (0.8 + 0.3 * z) * pop(z),
          K,
          10 * Math.sin(z * 7 + k * 3),
        );
      })
      .join(''),
}));

// ---- drowsy: nods off, jerks up, yawns behind a paw
add('drowsy', 10, t => {
  const nod = curve(t, [[0, 0.1], [0.3, 1], [0.38, 1], [0.44, 0.05], [0.5, 0.1]]),
    yawn = curve(t, [[0, 0], [0.5, 0], [0.62, 1], [0.78, 1], [0.9, 0]]),
    late = curve(t - 0.06, [[0, 0.1], [0.3, 1], [0.38, 1], [0.44, 0.05], [0.5, 0.1]]);
  const eyes =
    yawn > 0.5 ? { shape: 'squeeze' } : nod > 0.7 ? { shape: 'asleep' } : { shape: 'sleepy', open: lerp(0.66, 0.4, nod), ly: 0.5 };
  return {
    bend: 9 * nod - 3 * yawn,
    tilt: 9 * nod - 5 * yawn,
    pitch: 0.45 * nod - 0.3 * yawn,
    sy: 0.975 - 0.045 * nod + 0.05 * yawn + 0.006 * wave(t, 2),
    sx: 1.01 + 0.02 * nod - 0.02 * yawn,
    eyes: yawn > 0.5 ? { shape: 'asleep' } : eyes,
    brow: during(t, 0.42, 0.1) || yawn > 0.5 ? 'raised' : null,
    mouth: yawn > 0.5 ? 'O' : yawn > 0.1 ? 'o' : 'tiny',
    ...ears(44 + 14 * late + 10 * yawn, 30 + 10 * late),
    tail: { a: 66 + 6 * nod },
    armR: { x: lerp(28, 13, yawn), y: lerp(-14, -20, yawn), sh: [31, lerp(-24, -13, yawn)], open: 3 },
    fx: K => {
      const z = clamp((t - 0.04) / 0.4);
      return t < 0.44 ? X.zed(K.ox + 60 + 12 * z, 36 - 14 * z, (0.7 + 0.4 * z) * pop(z), 8 - 10 * z) : '';
    },
  };
});

// ---- reactions to the pointer
const spikes = (k, op) =>
  op <= 0
    ? ''
    : [[-62, 62, -62], [-46, 40, -40], [62, 62, 62], [46, 40, 40], [-66, 88, -84], [66, 88, 84]]
        .map(([x, y, r]) => X.spike(groundX + x * k, 88 + (y - 88) * k, r, 11 * op))
        .join('');
add('react_startled', 10, t => {
  const lift = curve(t, [[0, 0], [0.1, 0], [0.24, 15], [0.34, 14], [0.46, 0], [0.54, 3], [0.62, 0]]),
    sy = curve(t, [[0, 0.97], [0.1, 0.86], [0.22, 1.12], [0.34, 1.05], [0.46, 0.9], [0.56, 1.03], [0.68, 1], [0.84, 0.99]]);
  const arms = curve(t, [[0, 0], [0.1, 0.1], [0.22, 1], [0.4, 1], [0.62, 0.45], [0.85, 0.2]]),
    shake = during(t, 0.5, 0.5) ? wave(t, 10, 0.25) : 0,
    late = curve(t - 0.06, [[0, 0.4], [0.1, 1], [0.24, -1], [0.46, 0.5], [0.6, -0.2], [0.8, 0]]);
  return {
    x: 0.8 * shake,
    lift,
    sy,
    sx: 1 + (1 - sy) * 0.6,
    eyes: {
      shape: 'wide',
      size: arms > 0.6 ? 1.06 : 1,
      lx:
        0.4 *
        curve(t, [[0, 0], [0.6, 0], [0.72, -1], [0.86, 1]]),
    },
    mouth: arms > 0.6 ? 'O' : 'o',
    ...ears(11 + 10 * late, -2 + 8 * late),
    armL: { x: lerp(-30, -51, arms), y: lerp(-18, -39, arms), sh: [-33, -24] },
    armR: { x: lerp(30, 51, arms), y: lerp(-18, -39, arms), sh: [33, -24] },
    footL: lift > 6 ? { rot: 20, x: -20 } : {},
    footR: lift > 6 ? { rot: -20, x: 20 } : {},
    tail: { a: 34 + 10 * late, c: -6, L: 28, w: 12 },
    fx: () => spikes(0.94 + 0.1 * clamp((t - 0.14) / 0.3), clamp((t - 0.1) / 0.12) * clamp((0.6 - t) / 0.2)),
  };
});
add('react_grumpy', 8, t => {
  const puff = curve(t, [[0, 0.2], [0.3, 1], [0.5, 1], [0.6, 0.1]]),
    blow = clamp((t - 0.5) / 0.45),
    shake = wave(t, 4);
  return {
    puff: 3 + 5 * puff,
    sy: 0.975 - 0.03 * puff,
    tilt: 1.6 * shake * puff,
    eyes: { open: 0.78, slant: 1.1, lx: 0.2 * shake * puff },
    brow: 'angry',
    mouth: blow > 0 && blow < 0.6 ? 'flat' : 'pout',
    blush: 0.8 + 0.18 * puff,
    earL: { a: 70 + 5 * puff + 2 * wave(t, 4, -0.2), c: 22 },
    earR: { a: 70 + 5 * puff - 2 * wave(t, 4, -0.2), c: 22 },
    armL: { x: -16, y: -11, sh: [-31, -20], open: 4 },
    armR: { x: 16, y: -11, sh: [31, -20], open: 4 },
    tail: { a: 84 + 8 * shake },
    fx: () =>
      blow > 0
        ? [-1, 1]
            .map(s =>
              at(
                groundX + s * (58 + 10 * blow),
                94 - 16 * blow,
                -16 * s,
                [s * (0.7 + 0.5 * blow) * pop(blow), (0.7 + 0.5 * blow) * pop(blow)],
                X.steamPuff(),
              ),
            )
            .join('')
        : '',
  };
});
add('react_shoo', 8, t => {
  const k = 0.5 + 0.5 * wave(t, 2, 0.25),
    late = 0.5 + 0.5 * wave(t, 2, 0.12),
    peek = during(t, 0.62, 0.26);
  const gust = 1 - k;
  return {
    x: -8,
    turn: -0.35,
    tilt: -3 - 3 * gust,
    bend: -2 * gust,
    eyes: peek ? { open: 0.6, slant: 0.5, lx: 1, ly: 0.2 } : { shape: 'line' },
    brow: peek ? 'angry' : 'flat',
    mouth: 'pout',
    ...ears(42 - 6 * late, 18 + 8 * late),
    ...tail(t, 9, 2),
    armR: { x: lerp(63, 55, k), y: lerp(-34, -54, k), sh: [38, -28], pad: 1, bow: 3 * gust },
    armL: { x: -22, y: -14 },
    fx: K =>
      gust > 0.4
        ? X.whoosh(`M${K.ox + 70} ${K.oy - 58}C${K.ox + 77} ${K.oy - 50} ${K.ox + 78} ${K.oy - 40} ${K.ox + 74} ${K.oy - 31}`) +
          X.whoosh(`M${K.ox + 80} ${K.oy - 54}C${K.ox + 86} ${K.oy - 47} ${K.ox + 87} ${K.oy - 41} ${K.ox + 84} ${K.oy - 34}`)
        : '',
  };
});
const hearts = (t, spots) =>
  spots
    .map(([x, y, s, r], k) => {
      const z = life(t, k, spots.length);
      return X.heart(x + 3 * Math.sin(z * 6 + k), y - 30 * z, s * pop(z), r + 8 * Math.sin(z * 6 + k * 2));
    })
    .join('');
add('react_happy', 10, t => {
  const hop = Math.max(0, wave(t, 2)),
    sy = 1 + 0.04 * wave(t, 2, -0.05),
    side = wave(t, 1);
  return {
    lift: 5 * hop,
    sy,
    sx: 1 + (1 - sy) * 0.6,
    tilt: 5 * side,
    bend: 2 * side,
    eyes: { shape: 'happy' },
    mouth: 'open',
    blush: 0.95,
    armL: { x: -13, y: -20 - 2 * hop, sh: [-29, -17], open: 3 },
    armR: { x: 13, y: -20 - 2 * hop, sh: [29, -17], open: 3 },
    earL: { a: 21 - 8 * wave(t, 2, -0.2), c: 9 - 7 * wave(t, 2, -0.22) },
    earR: { a: 21 - 8 * wave(t, 2, -0.2), c: 9 - 7 * wave(t, 2, -0.22) },
    tail: { a: 50 + 16 * wave(t, 2, -0.25) },
    fx: () =>
      hearts(t, [[28, 62, 0.95, -14], [153, 58, 1.1, 12], [163, 92, 0.75, -6], [20, 98, 0.7, 10]]),
  };
});
add('react_shy', 8, t => {
  const hide = curve(t, [[0, 0], [0.3, 0], [0.46, 1], [0.74, 1], [0.9, 0]]),
    sway = wave(t, 2),
    late = curve(t - 0.08, [[0, 0], [0.3, 0], [0.46, 1], [0.74, 1], [0.9, 0]]);
  return {
    bend: lerp(-4, 4, hide) + sway,
    tilt: lerp(-4, 4, hide) + sway,
    sy: 0.975 - 0.015 * hide,
    pitch: -0.1 * (1 - hide),
    eyes: hide > 0.5 ? { shape: 'squeeze' } : { lx: -0.9, ly: 0.5 },
    mouth: hide > 0.5 ? 'w' : 'tiny',
    blush: 1,
    ...ears(66 + 8 * late, 46 + 6 * late),
    armL: { x: -30 + hide, y: -21.5 - hide - 0.6 * sway, sh: [-39, -9], open: 2 },
    armR: { x: 30 - hide, y: -21.5 - hide + 0.6 * sway, sh: [39, -9], open: 2 },
    tail: { a: 66 + 8 * wave(t, 2, -0.2) },
  };
});

// ---- still images: a telling moment of an animation, or a pose of their own
const moment = (name, t, ...more) => pose(animations[name].pose(t), ...more);
export const stills = {
  idle: () => moment('idle', 0),
  thinking: () => moment('thinking', 0.3),
  coding: () => moment('coding', 0.7),
  input: () => moment('input', 0, { eyes: { lx: 0.3, ly: 0 } }),
  approval: () => moment('approval', 0.4),
  success: () => moment('wave', 0.34),
  warning: () => moment('warning', 0.5),
  sleeping: () => moment('sleeping', 0.5),
  coffee: () => moment('coffee', 0),
  happy: () => moment('react_happy', 0.1),
  sad: () =>
    pose({
      sy: 0.96,
      sx: 1.015,
      pitch: 0.25,
      tilt: -3,
      eyes: { ly: 0.5, lx: -0.3 },
      brow: 'worried',
      mouth: 'pout',
      blush: 0.6,
      ...ears(64, 34),
      tail: { a: 88 },
      armL: { x: -12, y: -13, sh: [-29, -20], open: 4 },
      armR: { x: 12, y: -13, sh: [29, -20], open: 4 },
      fx: K => X.drop(K.ox + 31, K.oy - 28, 0.75, -6),
    }),
  wave: () =>
    pose({
      tilt: 4,
      eyes: { shape: 'open' },
      mouth: 'open',
      armR: { x: 55, y: -50, sh: [38, -27], pad: 1 },
      armL: { x: -26, y: -14 },
      ...ears(20, 8),
      fx: K =>
        X.whoosh(`M${K.ox + 66} ${K.oy - 68}C${K.ox + 71} ${K.oy - 63} ${K.ox + 73} ${K.oy - 58} ${K.ox + 73} ${K.oy - 52}`) +
        X.whoosh(`M${K.ox + 74} ${K.oy - 76}C${K.ox + 81} ${K.oy - 70} ${K.ox + 84} ${K.oy - 63} ${K.ox + 84} ${K.oy - 55}`),
    }),
};
