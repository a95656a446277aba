// How Furli acts. Every animation is a function of the loop time t in [0, 1) that returns a pose; character.md has the acting notes.
// Coordinates are those before the figure is mirrored: props stand on the left, the tail on the right.
import { clamp, ell, group as g, lerp, path, rotate as R, scale as S, translate as T } from '../lib/svg.mjs';
import { curve, during, life, pop, step, wave } from '../lib/motion.mjs';
import { kit } from './rig.mjs';
import * as X from './props.mjs';

const { head, limb, scarf, tail, U } = kit;
const breath = (t, a = 0.016) => ({ sy: 1 + a * wave(t), sx: 1 - a * 0.6 * wave(t) });
const blink = (t, ...times) => times.some(at0 => during(t, at0, 0.1));
const look = (t, eyes, ...blinks) => ({ eyes: blink(t, ...blinks) ? { shape: 'sleep' } : eyes });

export const animations = {};
const add = (name, frames, pose) => {
  animations[name] = { frames, pose };
};

// ---- idle: a slow look aside, a blink, an ear turns, the tail sways
add('idle', 8, t => {
  const aside = curve(t, [[0, 0], [0.16, 0], [0.3, 1], [0.5, 1], [0.62, 0]]),
    flick = curve(t, [[0, 0], [0.68, 0], [0.76, 1], [0.86, -0.3], [0.95, 0]]);
  return {
    ...breath(t, 0.017),
    head: { tilt: 3 * aside, turn: -0.26 * aside, y: -1.6 * wave(t, 1, -0.05) },
    ...look(t, { px: -0.6 * aside }, 0.6),
    ears: { l: -2 * wave(t, 1, -0.1), r: 13 * flick - 2 * wave(t, 1, -0.1) },
    tail: { angle: 9 + 5 * wave(t, 1, -0.2), curl: 1 + 0.03 * wave(t, 1, -0.3) },
    mouth: during(t, 0.7, 0.3) ? 'smile' : 'hum',
    scarf: { swing: 2 * wave(t, 1, -0.2) },
  };
});

// ---- thinking: paw to the chin, gaze up, a brow lifts, dots travel through the cloud
add('thinking', 8, t => ({
  x: 20,
  ...breath(t, 0.012),
  lean: 2,
  head: { tilt: 7 + 2 * wave(t), turn: -0.3, nod: -0.28 },
  ...look(t, { px: -0.7 + 0.25 * wave(t), py: -1 }, 0.8),
  brow: { l: -5 - 1.5 * wave(t, 1, 0.2), r: 1 },
  mouth: 'side',
  ears: { l: -6 + 3 * wave(t, 1, -0.2), r: 8 + 3 * wave(t, 1, -0.25) },
  armL: { x: -17 + 1.5 * wave(t, 2), y: -93 + 2 * wave(t, 2), z: 'front', bend: -16, from: [-40, -68] },
  armR: { x: -2, y: -54, bend: 16 },
  tail: { angle: 8 + 6 * wave(t, 1, -0.15), curl: 1.02 },
  back: [
    X.dots([[92, 112 + wave(t, 1, -0.2), 5.5], [78, 92 + 1.5 * wave(t, 1, -0.1), 8.5]]),
    X.cloud(63, 48 + 2 * wave(t), t),
  ],
}));

// ---- coding: paws tap in turn at the sides of the lid
add('coding', 8, t => {
  const a = Math.max(0, wave(t, 2)),
    b = Math.max(0, -wave(t, 2));
  return {
    sy: 1 - 0.008 * (1 + wave(t, 4)),
    head: { y: 2 - 1.2 * wave(t, 4), nod: 0.42, turn: 0.12 * wave(t), tilt: 2 * wave(t) },
    ...look(t, { py: 1, px: 0.6 * wave(t) }, 0.84),
    brow: { y: 1 - 2 * a },
    mouth: 'smile',
    ears: { l: 4 * Math.max(0, wave(t, 2, -0.12)), r: 4 * Math.max(0, -wave(t, 2, -0.12)) },
    armL: null,
    armR: null,
    tail: { x: 40, angle: 12 + 5 * wave(t, 1, -0.2), curl: 1 + 0.02 * wave(t, 1, -0.3) },
    footL: { x: -40 },
    footR: { x: 40 },
    front: [X.laptop(180, 278)],
    over: P => limb(P, [-48, -60], [-64, -21 - a * 17], { bend: 9 }) + limb(P, [48, -60], [64, -21 - b * 17], { bend: -9 }),
  };
});

// ---- reading: the gaze crosses two lines, then a leaf turns
add('reading', 8, t => {
  const gaze = -curve(t, [[0, -0.9], [0.28, 0.9], [0.36, -0.8], [0.64, 0.9], [0.82, 0.3]]),
    flip = during(t, 0.66, 0.34) ? clamp((t - 0.66) / 0.28) : null,
    lift = flip === null ? 0 : Math.sin(flip * Math.PI);
  return {
    ...breath(t, 0.012),
    head: { y: 5, nod: 0.55, tilt: 3 * gaze, turn: 0.12 * gaze },
    ...look(t, { py: 1, px: 0.8 * gaze }, 0.86),
    brow: { y: -1 - 3 * lift },
    mouth: lift > 0.3 ? 'smile' : 'hum',
    ears: { l: -5 * lift, r: 2 * wave(t, 1, -0.1) },
    armL: { x: -70 + 14 * lift, y: -26 - 14 * lift, z: 'front', bend: 4, from: [-46, -64] },
    armR: { x: 70, y: -26, z: 'front', bend: 4, from: [46, -64] },
    armsOverMid: true,
    midProps: [X.book(180, 258, { flip })],
    footL: { x: -34, y: 2 },
    footR: { x: 34, y: 2 },
    tail: { angle: 10 + 5 * wave(t, 1, -0.2) },
  };
});

// ---- searching: sweeps the lens over the ground, a huge eye in it
add('searching', 8, t => {
  const keys = [[0, -1], [0.12, -1], [0.5, 1], [0.62, 1]],
    s = curve(t, keys),
    lead = curve(t + 0.07, keys),
    late = curve(t - 0.08, keys),
    down = Math.cos((s * Math.PI) / 2);
  return {
    x: 6 * s,
    lean: 3 * s,
    head: { turn: -0.12 - 0.16 * s, tilt: 4 * s, y: 2 * down },
    eyes: { px: -0.5 + 0.5 * lead, py: 0.2, shape: blink(t, 0.3) ? 'sleep' : 'open' },
    brow: { l: -5, r: 3 * s },
    mouth: s > 0.5 ? 'o' : 'tiny',
    ears: { l: -4 - 4 * late, r: 4 + 4 * late },
    armR: { x: 24, y: -42 },
    armL: { x: -60, y: -84, z: 'over' },
    tail: { angle: 9 + 7 * late, curl: 1 + 0.03 * late },
    front: [
      X.magnifier(
        141 + 8 * s,
        137 + 4 * down,
        18 - 4 * s,
        P =>
          ell(0, 0, 33, 33, { fill: '#eef7fb' }) +
          ell(0, 0, 33, 33, { fill: P.furLight, op: 0.55 }) +
          ell(-3 + 6 * lead, 1, 23, 26, { fill: P.eye }) +
          ell(5 + 7 * lead, -9, 8, 9, { fill: '#fff' }) +
          ell(-10 + 6 * lead, 11, 4, 4.4, { fill: '#fff', op: 0.9 }),
      ),
    ],
    over: P => limb(P, [-44, -66], [-60 - 2 * s, -80 + 4 * down], { bend: 8 }),
  };
});

// ---- running a command: type, enter, the bar fills, done
add('running', 8, t => {
  const typed = clamp(t / 0.36),
    done = clamp((t - 0.4) / 0.45),
    glad = during(t, 0.86, 0.14),
    keys = [[0, 0], [0.36, 0], [0.44, -1], [0.54, 0.4], [0.66, 0], [0.84, 0], [0.92, 1]],
    hop = curve(t, keys),
    press = during(t, 0.36, 0.14);
  return {
    x: 44,
    sy: 1 + 0.02 * hop,
    sx: 1 - 0.012 * hop,
    lean: -2 - (press ? 1.5 : 0),
    head: { turn: -0.5, tilt: -4 + 2 * hop, nod: 0.05 },
    eyes: glad ? { shape: 'happy' } : { px: -1, py: 0.15 },
    mouth: glad ? 'grin' : typed < 1 ? 'tiny' : 'smile',
    brow: { y: glad ? -5 : -2 },
    ears: { l: -5 * curve(t - 0.06, keys), r: 4 - 4 * curve(t - 0.06, keys) },
    armL: {
      x: -74 + (press ? 2 : 0),
      y: -54 + (typed < 1 ? 3 * wave(t, 5) : press ? 5 : 0) - (glad ? 8 : 0),
      z: 'front',
      bend: 6,
      from: [-40, -66],
    },
    armR: { x: 16, y: -46 },
    tail: { angle: 10 + 6 * wave(t, 2, -0.2), curl: 1.07, len: 226 },
    back: [X.terminal(68, 196, { typed, done, caret: typed < 1 || during(t * 5, 0, 0.5) })],
  };
});

// ---- browsing: gives the globe a push, watches it turn
add('browsing', 8, t => {
  const push = curve(t, [[0, 0], [0.12, 0], [0.42, 1], [0.58, 1], [0.86, 0]]),
    turn = t + 0.09 * (wave(t, 1, -0.3) + 0.951);
  return {
    x: 34,
    ...breath(t, 0.01),
    lean: -2 - push,
    head: { turn: -0.42, tilt: -5 - 2 * push, nod: 0.22 },
    ...look(t, { px: -0.9, py: 0.5 + 0.1 * push }, 0.75),
    mouth: push > 0.5 ? 'smile' : 'hum',
    ears: { l: -2 + 4 * wave(t, 1, -0.25), r: 5 + 3 * wave(t, 1, -0.3) },
    armL: { x: -84 + 10 * push, y: -84 + 18 * push, z: 'front', bend: 10, from: [-40, -66] },
    armR: { x: 16, y: -46 },
    tail: { angle: 10 + 5 * wave(t, 1, -0.2), curl: 1.06, len: 236 },
    back: [X.globe(80, 226, turn)],
  };
});

// ---- planning: ticks three boxes, is pleased
add('planning', 8, t => {
  const n = clamp(
      curve(t, [[0, 0], [0.08, 0], [0.22, 1], [0.3, 1], [0.44, 2], [0.52, 2], [0.66, 3], [0.999, 3]]),
      0,
      3,
    ),
    glad = during(t, 0.7, 0.26);
  const dx = curve(t, [[0, 0], [0.22, -5], [0.3, 0], [0.44, -5], [0.52, 0], [0.66, -5], [0.8, 8]]),
    y = curve(t, [
      [0, 190],
      [0.15, 198],
      [0.22, 188],
      [0.3, 212],
      [0.37, 222],
      [0.44, 212],
      [0.52, 236],
      [0.59, 246],
      [0.66, 236],
      [0.8, 212],
    ]);
  return {
    x: 30,
    ...breath(t, 0.01),
    head: { turn: -0.34, tilt: glad ? -1 : -5, nod: lerp(0.14, 0.34, n / 3) },
    eyes: glad ? { shape: 'happy' } : { px: -0.8, py: lerp(0.2, 0.9, n / 3) },
    mouth: glad ? 'smile' : 'tiny',
    brow: { y: glad ? -4 : 0 },
    ears: { l: glad ? -6 : 2 * wave(t, 3), r: glad ? -3 : 3 },
    tail: { angle: 10 + (glad ? 8 : 4) * wave(t, 2, -0.2), curl: 1.06, len: 240 },
    armL: { x: -72, y: -22, z: 'front', bend: 8, from: [-42, -66] },
    armR: { x: -44 + dx, y: y - 288 + 14, z: 'front', bend: 20 },
    midProps: [X.clipboard(92, 218, { rot: -6, n })],
    front: [X.pencil(154 + dx, y + 6, 66)],
  };
});

// ---- compacting: hop, sit the pile flat, spring back
add('compacting_context', 8, t => {
  const pile = curve(t, [[0, 62], [0.3, 62], [0.42, 28], [0.72, 30], [0.86, 62]]),
    up = curve(t, [[0, 2], [0.1, 0], [0.24, 15], [0.34, 8], [0.42, 0], [0.66, 0], [0.8, 10], [0.92, 2]]),
    sy = curve(t, [
      [0, 0.99],
      [0.1, 0.93],
      [0.24, 1.05],
      [0.34, 1.04],
      [0.44, 0.87],
      [0.56, 0.95],
      [0.66, 0.94],
      [0.8, 1.04],
      [0.92, 0.97],
    ]);
  const late = curve(t - 0.08, [[0, 0], [0.24, 1], [0.44, -1], [0.66, -0.4], [0.8, 0.6], [0.92, 0]]),
    pressed = during(t, 0.36, 0.26),
    glad = during(t, 0.62, 0.2),
    q = clamp((62 - pile) / 34);
  return {
    y: -pile + 4 - up,
    scale: 0.8,
    sy,
    sx: 1 + (1 - sy) * 0.6,
    shadowW: 1.35,
    head: { y: pressed ? 7 : -2 * late, nod: pressed ? 0.1 : 0.25, puff: pressed ? 0.8 : 0 },
    eyes: pressed ? { shape: 'squeeze' } : glad ? { shape: 'happy' } : { py: 1 },
    mouth: pressed ? 'wavy' : glad ? 'smile' : 'tiny',
    brow: pressed ? { y: 4, tilt: 14 } : { y: -2 },
    blush: pressed ? 0.8 : 0.55,
    ears: { l: -8 * late + 4, r: -8 * late + 4 },
    armL: { x: -58, y: -6 - up * 0.4, bend: 12 },
    armR: { x: 58, y: -6 - up * 0.4, bend: -12, z: 'front' },
    footL: { x: -30, y: 3 },
    footR: { x: 30, y: 3 },
    tail: { angle: 6 - 9 * late, len: 262 },
    back: [X.pile(180, 284, pile, { bulge: q })],
    front: [
      X.pressMarks(
        50,
        316,
        186,
        curve(t, [[0, -1], [0.3, -0.6], [0.42, 1.6], [0.6, 1.4]]),
      ),
    ],
  };
});

// ---- responding: talks, offers a paw, the bubble fills
add('responding', 8, t => ({
  x: 36,
  ...breath(t),
  head: { turn: -0.2, tilt: 3.5 * wave(t, 1, 0.1), y: -1.5 * wave(t, 2) },
  ...look(t, { px: -0.25 + 0.2 * wave(t) }, 0.5),
  mouth: step(t, [
    [0, 'talk'],
    [0.12, 'smile'],
    [0.25, 'open'],
    [0.37, 'talk'],
    [0.5, 'hum'],
    [0.62, 'open'],
    [0.75, 'talk'],
    [0.87, 'smile'],
  ]),
  brow: { y: -2 - 2.5 * wave(t, 2) },
  armL: { x: -82 - 3 * wave(t, 2), y: -56 - 7 * wave(t, 1, 0.15), bend: -8, from: [-42, -68] },
  armR: { x: 20, y: -48 },
  ears: { l: -3 + 3 * wave(t, 2, -0.15), r: 2 + 3 * wave(t, 2, -0.2) },
  tail: { angle: 10 + 6 * wave(t, 1, -0.2), curl: 1.06, len: 236 },
  scarf: { swing: 3 * wave(t, 2, -0.2) },
  back: [X.bubble(62, 128 + 1.5 * wave(t), { n: clamp(t * 2.7, 0.3, 2), s: 0.98 })],
}));

// ---- approval: holds out the amber shield, raises a paw, waits for you
add('approval', 8, t => {
  const keys = [[0, 0], [0.1, -0.3], [0.26, 1], [0.44, 1], [0.58, 0], [0.68, 0.35], [0.8, 0]],
    up = curve(t, keys),
    late = curve(t - 0.08, keys);
  return {
    x: 18,
    sy: 1 + 0.02 * up,
    sx: 1 - 0.012 * up,
    head: { tilt: 3 - 5 * up, y: -3 * up, turn: -0.06 },
    eyes: blink(t, 0.84) ? { shape: 'sleep' } : { size: 1.07 },
    brow: { y: -5 - 2 * up },
    mouth: up > 0.2 ? 'o' : 'tiny',
    ears: { l: -10 - 4 * late, r: -10 - 4 * late },
    armR: { x: 100 + 4 * up, y: -112 - 12 * up, bend: 20, z: 'front', from: [43, -68] },
    armL: { x: -62, y: -52, z: 'over' },
    tail: { angle: 10 + 5 * wave(t, 1, -0.2), curl: 1.02 },
    front: [X.shieldQ(92, 208 - 6 * up, { rot: -5 + 8 * up, s: 1 + 0.07 * up })],
    over: P => limb(P, [-42, -68], [-62, -48 - 4 * up], { bend: 10 }),
  };
});

// ---- input: points at the box, the caret blinks, looks at you
add('input', 8, t => {
  const poke = curve(t, [[0, 0], [0.18, 1], [0.32, 0], [0.5, 1], [0.64, 0]]),
    you = during(t, 0.62, 0.36);
  return {
    x: 30,
    ...breath(t, 0.01),
    lean: -1,
    head: {
      turn: you ? -0.06 : -0.2,
      tilt:
        -7 +
        3 *
          curve(t, [[0, 0], [0.6, 0], [0.75, 1]]),
      nod: 0.05,
    },
    eyes: blink(t, 0.85) ? { shape: 'sleep' } : { px: you ? 0 : -0.6, py: you ? 0 : 0.3 },
    brow: { y: -4 },
    mouth: you ? 'smile' : 'tiny',
    ears: { l: -5 - 3 * poke, r: 2 },
    armL: { x: -76 - 4 * poke, y: -66 + 5 * poke, z: 'front', bend: -8, from: [-42, -66], o: { pr: 11.5 } },
    armR: { x: 20, y: -46 },
    tail: { angle: 10 + 5 * wave(t, 1, -0.2), curl: 1.06, len: 240 },
    back: [X.cursorBox(76, 252, during(t * 2, 0, 0.5))],
  };
});

// ---- wave (done): crouch, leap with sparkles, land, wave at you
const burst = k => {
  if (k <= 0 || k >= 1) return [];
  const s = Math.min(1, k / 0.3, (1 - k) / 0.4),
    out = 12 * k;
  return [
    X.sparkle(48 - out, 82 - out, 22 * s),
    X.sparkle(318 + out * 0.6, 66 - out, 18 * s, 'a'),
    X.sparkle(34 - out * 0.4, 160, 13 * s, 'a'),
    X.sparkle(330 + out * 0.4, 140, 13 * s),
  ];
};
add('wave', 8, t => {
  const lift = curve(t, [[0, 0], [0.16, 0], [0.28, 16], [0.36, 18], [0.48, 0], [0.56, 4], [0.62, 0]]),
    sy = curve(t, [[0, 1], [0.12, 0.91], [0.24, 1.05], [0.36, 1.03], [0.48, 0.92], [0.58, 1.02], [0.68, 1]]),
    late = curve(t - 0.07, [[0, 0], [0.12, 0.8], [0.26, -1], [0.48, 1], [0.6, -0.4], [0.72, 0]]);
  const arms = curve(t, [[0, 0], [0.12, -0.1], [0.26, 1], [0.42, 1], [0.6, 0.2], [0.9, 0.1]]),
    wavingArm = curve(t, [[0, 0.4], [0.12, 0], [0.26, 1], [0.95, 0.9]]),
    waving = during(t, 0.56, 0.4),
    sway = waving ? wave(t, 5, -0.9) : 0;
  return {
    scale: 0.95,
    y: -lift,
    sy,
    sx: 1 + (1 - sy) * 0.6,
    shadow: 1 - lift / 90,
    head: { tilt: waving ? 4 * sway : 0, y: -2 * arms },
    eyes: during(t, 0.08, 0.52) ? { shape: 'happy' } : { size: 1.04 },
    mouth: during(t, 0.18, 0.74) ? 'open' : 'grin',
    brow: { y: -5 },
    ears: { l: -6 + 9 * late, r: -6 + 9 * late },
    armL: {
      x: lerp(-66, -112, clamp(wavingArm)) + 7 * sway,
      y: lerp(-60, -124, clamp(wavingArm)),
      bend: -14,
      from: [-42, -70],
      z: 'front',
    },
    armR: { x: lerp(34, 112, clamp(arms)), y: lerp(-44, -124, clamp(arms)), bend: 14 * clamp(arms * 2), from: [42, -70] },
    tail: { angle: 6 + 10 * late, curl: 1 - 0.06 * arms },
    footL: { rot: lift > 6 ? 12 : 0 },
    footR: { rot: lift > 6 ? -12 : 0 },
    scarf: { swing: -8 * late },
    front: burst((t - 0.2) / 0.55),
  };
});

// ---- warning: paws at the chest, trembles, a drop runs down
add('warning', 8, t => {
  const tremble = wave(t, 4, 0.25),
    throb = 0.5 + 0.5 * wave(t, 2),
    slide = t;
  return {
    x: 26 + 1.4 * tremble,
    sy: 0.985 + 0.008 * wave(t, 2),
    head: { turn: -0.14, tilt: 5 + tremble, y: 2 },
    eyes: { shape: 'sad', open: 0.9, px: -0.5, size: 1.02 },
    brow: { y: -4, tilt: -16 },
    mouth: 'wavy',
    blush: 0.35,
    ears: { l: 17 + 3 * wave(t, 2, -0.2), r: 18 + 3 * wave(t, 2, -0.2) },
    armL: { x: -14, y: -66 + tremble, z: 'front', bend: -4 },
    armR: { x: 16, y: -64 - tremble, z: 'front', bend: -4 },
    tail: { angle: 12 + 3 * tremble, curl: 1.1, len: 205 },
    back: [X.triangle(74, 222, { rot: 5 * wave(t, 2, 0.25), s: 1 + 0.09 * throb })],
    front: [X.sweat(262, 100 + 26 * slide * slide, 1.1 * pop(slide))],
  };
});

// ---- sleeping: a loaf on a pillow under its own tail
add('sleeping', 8, t => {
  const up = 0.5 - 0.5 * Math.cos(t * 2 * Math.PI),
    k = up * 2 - 1,
    twitch = curve(t, [[0, 0], [0.55, 0], [0.66, 1], [0.8, 0]]);
  return {
    kind: 'custom',
    shadowW: 1.7,
    draw: P =>
      g(
        '',
        X.pillow(180, 276, 138)(P),
        g(
          T(206, 262) + S(1 - 0.006 * k, 1 + 0.026 * k),
          path('M-84 4C-104 -44 -62 -98 6 -98C70 -98 104 -54 96 -8C94 4 84 6 76 6C30 12 -40 12 -84 4Z', {
            fill: U('body'),
            stroke: P.line,
            sw: 4.4,
          }),
        ),
        g(T(297, 258), tail(P, { x: 2, y: -20, angle: 32 + 1.5 * wave(t, 1, -0.2), curl: 0.8, len: 232, flip: -1 })),
        g(T(164, 330 - k) + R(-4), scarf(P)),
        g(
          T(134, 349 - 2 * k),
          head(P, {
            head: { tilt: -7, nod: 0.24, turn: -0.1 },
            eyes: { shape: 'sleep' },
            mouth: 'hum',
            brow: { y: 1 - up },
            ears: { l: 14, r: 4 + 9 * twitch, fold: 0.15 },
            blush: 0.75,
          }),
        ),
        limb(P, [196, 250], [160, 258], { bend: 5 }),
      ),
    front: [
      X.zzz(
        [0, 1, 2].map(i => {
          const z = life(t, i, 3);
          return [146 - 56 * z - 5 * Math.sin(z * 9), 118 - 88 * z, (0.65 + 0.95 * z) * pop(z)];
        }),
      ),
    ],
  };
});

// ---- walk: a diagonal trot; the body bobs twice, the tail wags once
add('walk', 8, t => {
  const bob = -2.8 * Math.cos(t * 4 * Math.PI);
  const leg = (P, x, phase, far) => {
    const dx = 18 * wave(t, 1, phase),
      dy = -10 * Math.max(0, Math.cos((t + phase) * 2 * Math.PI));
    return limb(P, [x, -34 + bob], [x - dx, -11 + dy], {
      w: 23,
      pr: 13.5,
      bend: 0,
      open: far ? 0.05 : 0.4,
      fill: far ? P.furFar : P.fur,
      paw: far ? P.cocoaDark : P.cocoa,
      fingers: false,
    });
  };
  return {
    kind: 'custom',
    shadowW: 1.15,
    draw: P =>
      g(
        T(176, 280),
        g(T(0, bob), tail(P, { x: 58, y: -58, angle: 2 + 9 * wave(t, 1, -0.1), curl: 0.98, len: 222 })),
        leg(P, -22, 0.5, true),
        leg(P, 44, 0, true),
        g(
          T(0, bob) + R(1.2 * wave(t, 2, 0.1)),
          path('M-46 -76C-30 -92 30 -92 58 -72C82 -56 80 -22 52 -18C20 -12 -22 -12 -44 -22C-60 -32 -60 -62 -46 -76Z', {
            fill: U('body'),
            stroke: P.line,
            sw: 4.4,
          }),
          path('M-48 -26C-24 -16 24 -16 54 -21C62 -44 -52 -48 -48 -26Z', { fill: U('under') }),
        ),
        leg(P, -36, 0),
        leg(P, 56, 0.5),
        g(
          T(-38, bob + 6 + 1.8 * wave(t, 2, -0.05)),
          g(S(0.94, 1), g(T(8, 2), scarf(P, { swing: 9 * wave(t, 2, -0.1) }))),
          head(P, {
            head: { turn: -0.5, tilt: -1.5 + 2 * wave(t, 2, -0.05), y: 2 },
            ...look(t, { px: -0.5 }, 0.62),
            mouth: 'smile',
            ears: { l: 5 * wave(t, 2, -0.2), r: 5 * wave(t, 2, -0.22) },
          }),
        ),
      ),
  };
});

// ---- coffee: smells it, lifts it, sips, sighs
add('coffee', 8, t => {
  const keys = [[0, 0], [0.28, 0], [0.42, 1], [0.68, 1], [0.82, 0]],
    up = curve(t, keys),
    sip = up > 0.75,
    sigh = during(t, 0.8, 0.18),
    y = 250 - 42 * up;
  return {
    ...breath(t, 0.014),
    head: { tilt: -3 * wave(t, 1, 0.1), nod: lerp(0.22, -0.12, up), y: 2 - 4 * up },
    eyes: sip || sigh ? { shape: sigh ? 'happy' : 'sleep' } : blink(t, 0.2) ? { shape: 'sleep' } : { py: 0.9 },
    mouth: sip ? 'none' : sigh ? 'o' : 'smile',
    brow: { y: -3 - 2 * up },
    blush: 0.62 + 0.2 * up,
    ears: { l: 2 + 6 * curve(t - 0.07, keys), r: 2 + 6 * curve(t - 0.07, keys) },
    armL: { x: -32, y: -34, z: 'over' },
    armR: { x: 32, y: -34, z: 'over' },
    tail: { angle: 10 + 5 * wave(t, 1, -0.2) },
    front: [X.cup(180, y, t * 2, up < 0.4)],
    over: P => limb(P, [-47, -66], [-35, y - 278], { bend: 12 }) + limb(P, [47, -66], [35, y - 278], { bend: -12 }),
  };
});

// ---- relaxing: leans back on a bean bag, rocks its toes, hums
add('relaxing', 8, t => ({
  x: 6,
  y: -14,
  lean: -24 + 0.8 * wave(t),
  sy: 1 + 0.012 * wave(t),
  back: [X.beanbag(178, 284)],
  shadowW: 1.5,
  shadowX: -4,
  head: { y: 8, tilt: 9 + 2 * wave(t, 1, -0.1), nod: -0.12 },
  eyes: { shape: during(t, 0.5, 0.36) ? 'happy' : 'sleep' },
  mouth: 'smile',
  blush: 0.75,
  ears: { l: 12 + 3 * wave(t, 1, -0.2), r: 6 + 3 * wave(t, 1, -0.2) },
  armL: { x: -20, y: -46, bend: 12 },
  armR: { x: 12, y: -40, bend: 12 },
  tail: { x: 42, y: -26, angle: 28 + 3 * wave(t, 1, -0.2), curl: 0.94, len: 216 },
  footL: { sole: 1, x: 4, y: 2, rot: 7 * wave(t, 2) },
  footR: { sole: 1, x: 48, y: -14, rot: 30 + 8 * wave(t, 2, 0.25) },
  front: [0, 1].map(k => {
    const z = life(t, k, 2);
    return X.note(306 + 18 * z + 7 * Math.sin(z * 7 + k * 3), 112 - 80 * z, (0.8 + 0.3 * z) * pop(z), 10 * Math.sin(z * 7 + k * 3));
  }),
}));

// ---- drowsy: nods off, jerks up, yawns behind a paw
add('drowsy', 8, t => {
  const keys = [[0, 0.1], [0.3, 1], [0.38, 1], [0.44, 0.05], [0.5, 0.1]],
    nod = curve(t, keys),
    late = curve(t - 0.06, keys),
    yawn = curve(t, [[0, 0], [0.5, 0], [0.62, 1], [0.78, 1], [0.9, 0]]),
    z = clamp((t - 0.04) / 0.4);
  return {
    sy: 0.985 - 0.012 * nod + 0.02 * yawn + 0.006 * wave(t, 1, 0.1),
    sx: 1.01 + 0.01 * nod,
    lean: 3 * nod,
    head: { tilt: 10 * nod - 4 * yawn, nod: 0.3 * nod - 0.2 * yawn, y: 7 * nod },
    eyes: yawn > 0.4 || nod > 0.75 ? { shape: 'sleep' } : { shape: 'half', open: lerp(0.58, 0.38, nod), py: 0.2 },
    brow: during(t, 0.42, 0.1) ? { y: -9 } : { y: -4 - 3 * yawn, tilt: -10 * nod },
    mouth: yawn > 0.5 ? 'yawn' : yawn > 0.1 ? 'o' : 'hum',
    ears: { l: 14 + 6 * late + 4 * yawn, r: 15 + 7 * late + 4 * yawn },
    armL: { x: -20, y: -34 },
    armR: { x: lerp(20, 26, yawn), y: lerp(-34, -92, yawn), z: 'front', bend: 14, from: [42, -66] },
    tail: { angle: 16 + 2 * nod, curl: 1.02 },
    front: t < 0.44 ? [X.zzz([[62 - 26 * z, 116 - 44 * z, (0.8 + 0.5 * z) * pop(z)]])] : [],
  };
});

// ---- reactions to the pointer
add('react_startled', 8, t => {
  const lift = curve(t, [[0, 0], [0.1, 0], [0.24, 24], [0.34, 22], [0.46, 0], [0.54, 5], [0.62, 0]]),
    sy = curve(t, [[0, 0.98], [0.1, 0.91], [0.22, 1.06], [0.34, 1.03], [0.46, 0.93], [0.56, 1.02], [0.68, 1]]),
    arms = curve(t, [[0, 0], [0.1, 0.1], [0.22, 1], [0.4, 1], [0.62, 0.5], [0.85, 0.2]]),
    shake = during(t, 0.5, 0.5) ? wave(t, 10, 0.25) : 0,
    late = curve(t - 0.06, [[0, 0.2], [0.1, 1], [0.24, -1], [0.46, 0.5], [0.6, -0.2], [0.8, 0]]);
  return {
    x: 1.6 * shake,
    scale: 0.92,
    y: -lift,
    sy,
    sx: 1 + (1 - sy) * 0.6,
    shadow: 1 - lift / 75,
    head: { y: -4 * arms },
    eyes: {
      shape: 'wide',
      px:
        0.5 *
        curve(t, [[0, 0], [0.6, 0], [0.72, -1], [0.86, 1]]),
    },
    brow: { y: -10 },
    mouth: 'o',
    blush: 0.2,
    ears: { l: -4 + 7 * late, r: -4 + 7 * late },
    armL: { x: lerp(-48, -88, arms), y: lerp(-60, -94, arms), bend: -14, from: [-42, -70] },
    armR: { x: lerp(48, 88, arms), y: lerp(-60, -94, arms), bend: 14, from: [42, -70] },
    footL: { x: -36, y: lift > 10 ? 6 : 0, rot: lift > 10 ? 28 : 0 },
    footR: { x: 36, y: lift > 10 ? 6 : 0, rot: lift > 10 ? -28 : 0 },
    tail: { x: 40, y: -22, angle: -14 + 6 * late, curl: 0.5 + 0.3 * (1 - arms), fluff: 1 + 0.42 * arms, len: 214 },
    back: [
      X.lines(
        [[56, 112, 30, 100], [48, 152, 18, 154], [78, 66, 58, 44], [298, 74, 318, 52], [316, 112, 342, 100]],
        clamp((t - 0.1) / 0.12) * clamp((0.6 - t) / 0.2),
      ),
    ],
  };
});
add('react_grumpy', 8, t => {
  const puff = curve(t, [[0, 0.2], [0.3, 1], [0.5, 1], [0.6, 0.1]]),
    blow = clamp((t - 0.5) / 0.45),
    shake = wave(t, 4) * puff;
  return {
    sx: 1.02 + 0.02 * puff,
    sy: 0.985 - 0.02 * puff + 0.004 * wave(t, 3, 0.1),
    head: { puff: 0.5 + 0.6 * puff, turn: 0.13 + 0.04 * shake, tilt: 2 + 1.5 * shake, y: 3 },
    eyes: { shape: 'angry', open: 0.74, px: -0.5 },
    brow: { y: 5, tilt: 24 },
    mouth: blow > 0 && blow < 0.6 ? 'flat' : 'pout',
    blush: 0.62 + 0.2 * puff,
    ears: { l: 20 + 3 * puff, r: 20 + 3 * puff, fold: 0.1 },
    armL: { x: 10, y: -58, bend: -20, z: 'front' },
    armR: { x: -14, y: -50, bend: 20, z: 'front' },
    tail: { angle: 2 + 5 * shake, curl: 1.1, fluff: 1.1 + 0.06 * puff },
    front:
      blow > 0
        ? [
            X.puff(300 + 22 * blow, 128 - 26 * blow, (0.8 + 0.7 * blow) * pop(blow)),
            X.puff(62 - 22 * blow, 128 - 26 * blow, (0.8 + 0.7 * blow) * pop(blow)),
          ]
        : [],
  };
});
add('react_shoo', 8, t => {
  const k = 0.5 + 0.5 * wave(t, 2, 0.25),
    gust = 1 - k,
    peek = during(t, 0.62, 0.26);
  return {
    x: 16,
    lean: 3 + gust,
    head: { turn: 0.3, tilt: 7 + 2 * gust, y: 1 },
    eyes: peek ? { shape: 'angry', open: 0.66, px: -0.9 } : { shape: 'sleep' },
    brow: { y: 2, tilt: 12 },
    mouth: 'pout',
    blush: 0.4,
    ears: { l: 13 + 3 * wave(t, 2, 0.1), r: 8 + 3 * wave(t, 2, 0.1) },
    armL: { x: lerp(-94, -84, k), y: lerp(-44, -86, k), bend: lerp(8, -12, k), z: 'front', from: [-42, -68] },
    armR: { x: 26, y: -40 },
    tail: { angle: 6 * wave(t, 2, -0.1), curl: 1.05, len: 215 },
    back: [...(gust > 0.4 ? [X.curves(['M66 200C54 184 54 168 62 154', 'M42 208C28 188 28 166 40 146'])] : [])],
  };
});
add('react_happy', 8, t => {
  const hop = Math.max(0, wave(t, 2)),
    sy = 1 + 0.022 * wave(t, 2, -0.05),
    side = wave(t);
  return {
    y: -7 * hop,
    sy,
    sx: 1 + (1 - sy) * 0.6,
    shadow: 1 - 0.07 * hop,
    head: { tilt: 6 * side, y: -1 - hop },
    eyes: { shape: 'happy' },
    mouth: 'grin',
    blush: 0.84,
    brow: { y: -5 },
    ears: { l: -2 - 6 * wave(t, 2, -0.2), r: -2 - 6 * wave(t, 2, -0.22) },
    armL: { x: -15, y: -62 - 3 * hop, z: 'front', bend: -6 },
    armR: { x: 15, y: -62 - 3 * hop, z: 'front', bend: -6 },
    tail: { angle: 4 + 10 * wave(t, 2, -0.2), curl: 1 + 0.04 * wave(t, 2, -0.3) },
    scarf: { swing: 6 * wave(t, 2, -0.2) },
    front: [[36, 120, 17, -14], [322, 112, 17, 12], [58, 178, 12, 8], [312, 170, 11, -8]].map(([x, y, s, r], k) => {
      const z = life(t, k, 4);
      return X.heart(x + 6 * Math.sin(z * 6 + k), y - 62 * z, s * pop(z), r + 8 * Math.sin(z * 6 + k * 2));
    }),
  };
});
add('react_shy', 8, t => {
  const keys = [[0, 0], [0.3, 0], [0.46, 1], [0.74, 1], [0.9, 0]],
    hide = curve(t, keys),
    sway = wave(t, 2),
    late = curve(t - 0.08, keys);
  return {
    sx: 0.98,
    sy: 0.985 - 0.01 * hide,
    lean: 2 - 3 * hide,
    head: { tilt: 8 - 13 * hide + 1.5 * sway, turn: 0.16, nod: 0.3, y: 4 + 2 * hide },
    eyes: hide > 0.5 ? { shape: 'squeeze' } : { px: -1, py: 0.5 },
    mouth: hide > 0.5 ? 'hum' : 'tiny',
    blush: 1,
    brow: { y: -3, tilt: -14 },
    ears: { l: 20 + 6 * late, r: 20 + 6 * late, fold: 0.12 },
    armL: { x: -42 + 4 * hide, y: -96 - 3 * hide, z: 'front', bend: -14, from: [-47, -64] },
    armR: { x: 60 - 4 * hide, y: -95 - 3 * hide, z: 'front', bend: 14, from: [48, -64] },
    tail: { angle: 18 + 5 * wave(t, 2, -0.2), curl: 1.06, len: 250 },
    footL: { x: -24, rot: 12 },
    footR: { x: 24, rot: -12 },
  };
});

// ---- still images: a telling moment of an animation, or a pose of their own
const moment = (name, t, more = {}) => ({ ...animations[name].pose(t), ...more });
export const stills = {
  idle: () => moment('idle', 0, { mouth: 'smile' }),
  thinking: () => moment('thinking', 0.3),
  coding: () => moment('coding', 0.12),
  input: () => moment('input', 0, { eyes: { px: -0.3 } }),
  approval: () => moment('approval', 0.4),
  success: () => moment('wave', 0.34),
  warning: () => moment('warning', 0.5),
  sleeping: () => moment('sleeping', 0.5),
  coffee: () => moment('coffee', 0),
  happy: () => moment('react_happy', 0.1),
  sad: () => ({
    sy: 0.985,
    lean: 2,
    head: { tilt: 6, nod: 0.2, y: 5 },
    eyes: { shape: 'sad', open: 0.88, py: 0.5 },
    brow: { y: -3, tilt: -18 },
    mouth: 'frown',
    blush: 0.4,
    ears: { l: 22, r: 22, fold: 0.1 },
    armL: { x: -14, y: -40 },
    armR: { x: 14, y: -40 },
    tail: { angle: 17, curl: 1, len: 250 },
  }),
  wave: () => ({
    head: { tilt: -5, turn: -0.08 },
    mouth: 'open',
    brow: { y: -5 },
    ears: { l: -6, r: 2 },
    armL: { x: -104, y: -112, bend: -14, from: [-42, -70], z: 'front' },
    back: [X.curves(['M48 118C38 130 36 146 42 160', 'M26 108C12 126 10 148 18 168'])],
  }),
};
