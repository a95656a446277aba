// Furli's rig: turns a pose description into SVG markup. The parameters of a pose are listed in character.md.
//
// Furli is drawn looking to the left and mirrored as a whole. What must not be mirrored (writing, question marks) is mirrored back
// where it is drawn.
import {
  arc,
  clamp,
  ell,
  faded,
  group as g,
  hsl,
  lerp,
  linearGradient,
  mix,
  num as f,
  path,
  pt,
  rad,
  radialGradient,
  rotate as R,
  scale as S,
  spline,
  splineOn,
  translate as T,
} from '../lib/svg.mjs';

export const width = 360,
  height = 300,
  groundX = 180,
  groundY = 282;

// The accent by hue and strength: main, light, middle, deep, deepest, and the blush that goes with it.
function accent(hue, k) {
  const middle = hsl(hue, 66 * k, 68);
  return [hsl(hue, 80 * k, 77), hsl(hue, 85 * k, 88), middle, hsl(hue, 42 * k, 50), hsl(hue, 38 * k, 36), mix(middle, '#ee8480', 0.6)];
}
export const tints = { pink: accent(352, 1), blue: accent(208, 0.95), green: accent(140, 0.62), purple: accent(268, 0.8) };

function palette(tint) {
  const [A, AL, AM, AD, ADD, blush] = tints[tint];
  return {
    fur: '#e4c6a1',
    furLight: '#f0dabb',
    furShade: '#caa27e',
    furFar: '#c09a77',
    line: '#7c5a47',
    cream: '#fff5e4',
    creamShade: '#f3dfc4',
    cocoa: '#a37a61',
    cocoaDark: '#8a634d',
    eye: '#2b1c1e',
    eyeGlow: '#7a4a3c',
    nose: '#7d4f49',
    mouth: '#6b3f3b',
    mouthIn: '#8c3f47',
    tongue: '#ef8d93',
    hatch: '#c25f63',
    shadow: '#20161a',
    A,
    AL,
    AM,
    AD,
    ADD,
    blush,
    slate: '#4a5366',
    slateL: '#66718a',
    slateD: '#2f3646',
    paper: '#fffaf0',
    paperLine: '#c9b9a3',
    ink: '#6b5a4d',
    amber: '#ffc24d',
    amberD: '#b7791f',
    sky: '#8fcdf0',
    skyD: '#4583ad',
    leaf: '#93cf92',
    leafD: '#4f8f57',
    edge: '#fffaf2',
  };
}

const OUT = 4.4,
  INN = 3.4; // outline and inner line
const INNER = '\u0001',
  INNER_END = '\u0002'; // around markup that lies wholly within an outline; not part of the result
const RIM = 5.4; // how much wider than the outlines the light rim is

function gradients(P) {
  const defs = {};
  const rg = (id, cx, cy, r, ...stops) => {
    defs[id] = radialGradient(id, cx, cy, r, stops);
  };
  const lg = (id, x1, y1, x2, y2, ...stops) => {
    defs[id] = linearGradient(id, x1, y1, x2, y2, stops);
  };
  rg('head', 16, -34, 118, [0, P.furLight], [0.5, P.fur], [0.74, P.fur], [0.93, P.furShade]);
  rg('body', 10, -66, 92, [0, P.fur], [0.52, P.fur], [0.8, P.furShade]);
  rg('belly', 0, -48, 52, [0, P.cream], [0.6, P.cream], [1, P.creamShade]);
  rg('muz', 0, 22, 58, [0, P.cream], [0.62, P.cream], [1, P.creamShade]);
  rg('ear', 0, -18, 38, [0, P.AL], [0.45, P.A], [1, P.AM]);
  rg('earo', 0, -20, 44, [0, P.fur], [0.6, P.fur], [1, P.furShade]);
  rg('blush', 0, 0, 1, [0, P.blush, 0.95], [0.45, P.blush, 0.6], [1, P.blush, 0]);
  lg('eye', 0, -16, 0, 17, [0, P.eye], [0.5, P.eye], [1, P.eyeGlow]);
  lg('scarf', 0, -104, 0, -70, [0, P.AM], [0.45, P.A], [1, P.A]);
  lg('cloth', 0, -60, 0, 30, [0, P.AL], [1, P.A]);
  lg('under', 0, -40, 0, -16, [0, P.cream, 0], [1, P.cream]);
  lg('screen', 0, -40, 0, 40, [0, P.slate], [1, P.slateD]);
  rg('shadow', 0, 0, 1, [0, '#20161a', 0.34], [0.6, '#20161a', 0.2], [1, '#20161a', 0]);
  rg('glow', 0, 0, 1, [0, '#ffffff', 0.75], [1, '#ffffff', 0]);
  rg('globe', 12, -14, 52, [0, '#b9e4fa'], [0.6, P.sky], [1, '#6db4de']);
  return defs;
}
const U = id => `url(#${id})`;

// ---------------------------------------------------------------- tail: a fiddlehead clothoid
// heading(s) = angle - turn * s^pow ; width profile w(s); fur tips on the outer side
function tail(P, t) {
  const o = { x: 36, y: -18, angle: 14, curl: 1, len: 276, fluff: 1, flip: 1, ...t };
  const N = 60,
    turn = 430 * o.curl,
    c = [];
  let x = o.x,
    y = o.y;
  for (let i = 0; i <= N; i++) {
    const s = i / N,
      h = rad(o.angle - turn * Math.pow(s, 1.62));
    c.push([x, y, h, s]);
    const st = o.len / N;
    x += Math.cos(h) * st;
    y += Math.sin(h) * st;
  }
  const wid = s => o.fluff * (9 + 12.5 * Math.sin((Math.min(1, s * 1.7) * Math.PI) / 2) - 4.5 * Math.pow(s, 3));
  const edge = (i, side, add = 0, k = 1) => {
    const [a, b, h, s] = c[i],
      w = wid(s) * k + add;
    return [a - Math.sin(h) * w * side, b + Math.cos(h) * w * side];
  };
  const run = splineOn;
  const range = (i0, i1, st) => {
    const r = [];
    if (i0 < i1) for (let k = i0; k < i1; k += st) r.push(k);
    else for (let k = i0; k > i1; k -= st) r.push(k);
    r.push(i1);
    return r;
  };
  const cap = (a, b, add) => {
    const e = c[N],
      w = (wid(1) + add) * 1.34,
      hx = Math.cos(e[2]) * w,
      hy = Math.sin(e[2]) * w;
    return `C${pt([a[0] + hx, a[1] + hy])} ${pt([b[0] + hx, b[1] + hy])} ${pt(b)}`;
  };
  const piece = (i0, add, tufts) => {
    // outer edge -> rounded tip -> inner edge
    let d = 'M' + pt(edge(i0, 1, add)),
      i = i0;
    const stop = Math.round(N * 0.66);
    if (tufts)
      while (i < stop) {
        const j = Math.min(i + (i ? 11 : 17), stop),
          ps = []; // each tuft swells along the curve, then drops back
        for (let k = i; k < j - 1; k += 5) ps.push(edge(k, 1, add + 4.2 * o.fluff * Math.pow((k - i) / (j - i), 1.4)));
        const tp = edge(j, 1, add + 4.4 * o.fluff);
        ps.push(tp);
        d += run(ps) + `Q${pt(edge(j, 1, add + 1.2))} ${pt(edge(j + 1, 1, add))}`;
        i = j + 1;
      }
    d += run(range(i, N, 5).map(k => edge(k, 1, add)));
    d += cap(edge(N, 1, add), edge(N, -1, add), add) + run(range(N, i0, 5).map(k => edge(k, -1, add)));
    return d;
  };
  const whole = piece(0, 0, true),
    i0 = Math.round(N * 0.7);
  const zig = [
    [0, -1, 0.55, 3],
    [0, -1, 0.15, -1],
    [0, 1, 0.2, 3.5],
    [0, 1, 0.62, -1],
  ].map(([, sd, k, di]) => edge(Math.round(i0 + di), sd, 0, k));
  const tip = piece(i0, -OUT / 2 + 0.4, false) + zig.map(p => 'L' + pt(p)).join('') + 'Z';
  const inn = range(3, Math.round(N * 0.74), 6),
    sh =
      'M' +
      pt(edge(inn[0], -1, -1)) +
      run(inn.map(k => edge(k, -1, -1))) +
      'L' +
      pt(edge(inn[inn.length - 1], -1, 0, 0.5)) +
      run([...inn].reverse().map(k => edge(k, -1, 0, lerp(0.1, 0.5, k / N)))) +
      'Z';
  // the tip half is drawn last so the roll overlaps cleanly
  const half = piece(Math.round(N * 0.5), 0, false);
  return g(
    o.flip < 0 ? S(-1, 1) : '',
    path(whole, { fill: P.fur, stroke: P.line, sw: OUT }),
    path(sh, { fill: P.furShade, op: 0.8 }),
    path(tip, { fill: P.cream }),
    INNER,
    path(half, { stroke: P.line, sw: OUT }),
    INNER_END,
  );
}

// ---------------------------------------------------------------- limbs
function limb(P, s, e, o = {}) {
  const w = o.w ?? 23,
    pr = o.pr ?? 13.2,
    b = o.bend ?? 10;
  const dx = e[0] - s[0],
    dy = e[1] - s[1],
    L = Math.hypot(dx, dy) || 1;
  const c = [(s[0] + e[0]) / 2 - (dy / L) * b, (s[1] + e[1]) / 2 + (dx / L) * b];
  const q = t => {
    const u = 1 - t;
    return [u * u * s[0] + 2 * u * t * c[0] + t * t * e[0], u * u * s[1] + 2 * u * t * c[1] + t * t * e[1]];
  };
  const t0 = o.open ?? 0.28,
    m = q(t0),
    c1 = [lerp(m[0], c[0], 1 - t0) * 1, lerp(m[1], c[1], 1 - t0)];
  const c2 = [lerp(c[0], e[0], t0), lerp(c[1], e[1], t0)];
  const full = `M${pt(s)}Q${pt(c)} ${pt(e)}`,
    part = `M${pt(m)}Q${pt(c2)} ${pt(e)}`;
  const ang = (Math.atan2(e[1] - c[1], e[0] - c[0]) * 180) / Math.PI;
  const col = o.fill || P.fur,
    paw = o.paw || P.cocoa;
  const px = e[0] + Math.cos(rad(ang)) * 2,
    py = e[1] + Math.sin(rad(ang)) * 2;
  return [
    path(part, { stroke: P.line, sw: w + OUT * 2 - 0.6 }),
    g(R(ang, px, py), ell(px, py, pr + OUT / 2 + 1.4, pr * 0.92 + OUT / 2 + 1.4, { fill: P.line })),
    path(full, { stroke: col, sw: w }),
    g(R(ang, px, py), ell(px, py, pr + 0.6, pr * 0.92 + 0.6, { fill: paw })),
    o.fingers !== false
      ? g(T(px, py) + R(ang + (o.frot || 0)), path('M7 -3.5L11 -3.2M7.4 3L11.2 3', { stroke: P.cocoaDark, sw: 2.6 }))
      : '',
  ].join('');
}
function foot(P, x, y, rot = 0, o = {}) {
  if (o.sole)
    return g(
      T(x, y) + R(rot),
      ell(0, 0, 17, 20, { fill: P.cocoa, stroke: P.line, sw: OUT }),
      ell(0, 5, 9, 8, { fill: P.A }),
      ell(-8, -8, 3.6, 4, { fill: P.A }),
      ell(0, -11, 3.6, 4, { fill: P.A }),
      ell(8, -8, 3.6, 4, { fill: P.A }),
    );
  return g(
    T(x, y) + R(rot),
    ell(0, -9, 21, 11.5, { fill: P.cocoa, stroke: P.line, sw: OUT }),
    path('M-6 -3.5L-6.5 .2M5 -3.5L5.5 .2', { stroke: P.line, sw: 2.8 }),
  );
}

// ---------------------------------------------------------------- head
function ear(P, side, a, o) {
  // base sits in the head; a = extra rotation (+ = outward/down), fold 0..1
  const fold = o.fold ?? 0,
    w = o.ws ?? 1;
  const sh = (k, dy, notch) => {
    const x = 35 * k * w,
      t = -65 * (1 - fold * 0.3) * k,
      q = (u, v) => f(u * x) + ' ' + f(v * t + dy);
    return (
      `M${q(-0.6, -0.12)}C${q(-1.16, 0.02)} ${q(-1.34, 0.5)} ${q(-0.9, 0.8)}C${q(-0.66, 0.98)} ${q(-0.32, 1.08)} ${q(0, 1.08)}` +
      (notch
        ? `C${q(0.4, 1.08)} ${q(0.74, 0.96)} ${q(0.93, 0.75)}Q${q(0.7, 0.72)} ${q(0.75, 0.56)}Q${q(0.96, 0.6)} ${q(1.1, 0.47)}C${q(1.17, 0.28)} ${q(1.04, 0)} ${q(0.6, -0.12)}Z`
        : `C${q(0.5, 1.08)} ${q(1.12, 0.8)} ${q(1.13, 0.4)}C${q(1.14, 0.12)} ${q(0.94, -0.02)} ${q(0.6, -0.12)}Z`)
    );
  };
  return g(
    T(side * (54 + (o.dx || 0)), -30 + (o.dy || 0)) + S(side, 1) + R(44 + a),
    path(sh(1, 0, side > 0), { fill: U('earo'), stroke: P.line, sw: OUT }),
    path(sh(0.73, -4), { fill: U('ear') }),
    path(`M${f(-19 * w)} -24C${f(-21 * w)} -34 ${f(-16 * w)} -43 ${f(-10 * w)} -46`, { stroke: '#ffffff', sw: 3.6, op: 0.5 }),
    path(
      `M${f(-20 * w)} -6Q${f(-13 * w)} -22 ${f(-10 * w)} -26Q${f(-8 * w)} -18 ${f(-3 * w)} -30Q${f(1 * w)} -18 ${f(6 * w)} -22Q${f(8 * w)} -10 ${f(14 * w)} -4Z`,
      { fill: P.furLight },
    ),
  );
}
const RX = 80,
  RY = 62;
function face(P, h, e, m, p) {
  const tu = (h.turn || 0) * 0.62,
    no = (h.nod || 0) * 0.42;
  const mx = x => RX * Math.sin(Math.asin(clamp(x / RX, -0.98, 0.98)) + tu),
    my = y => RY * Math.sin(Math.asin(clamp(y / RY, -0.98, 0.98)) + no);
  const ws = x => clamp(Math.cos(Math.asin(clamp(x / RX, -1, 1)) + tu) / Math.cos(Math.asin(clamp(x / RX, -1, 1))), 0.62, 1.1);
  const q = (x, y) => f(mx(x)) + ' ' + f(my(y));
  const out = [];
  // cream mask: chin, muzzle, soft blaze
  const by = 54;
  out.push(
    path(
      `M${q(0, 11)}C${q(5, 4)} ${q(17, 3)} ${q(23, 12)}C${q(42, 10)} ${q(60, 22)} ${q(54, 37)}C${q(47, 52)} ${q(22, by)} ${q(0, by)}C${q(-22, by)} ${q(-47, 52)} ${q(-54, 37)}C${q(-60, 22)} ${q(-42, 10)} ${q(-23, 12)}C${q(-17, 3)} ${q(-5, 4)} ${q(0, 11)}Z`,
      { fill: U('muz') },
    ),
  );
  // blush
  const bl = p.blush ?? 0.55;
  for (const s of [-1, 1]) {
    const x = 57 * s;
    out.push(g(T(mx(x), my(27)) + S(17 * ws(x), 11.5), faded(clamp(bl, 0, 1), ell(0, 0, 1, 1, { fill: U('blush') }))));
  }
  if (bl > 0.85)
    for (const s of [-1, 1]) out.push(g(T(mx(57 * s), my(27)), path('M-6 4L-3 -4M2 4L5 -4', { stroke: P.hatch, sw: 2.6, op: 0.8 })));
  // brow dots
  const b = { y: 0, tilt: 0, s: 1, ...(p.brow || {}) };
  for (const s of [-1, 1])
    out.push(
      g(
        T(mx(30 * s), my(-26 + b.y + (s < 0 ? b.l || 0 : b.r || 0))) + R(s * (b.tilt - 8)) + S(ws(29 * s), 1),
        ell(0, 0, 9.5 * b.s, 5.2, { fill: P.cream }),
      ),
    );
  // eyes
  for (const s of [-1, 1]) {
    const ee = { shape: 'open', open: 1, px: 0, py: 0, size: 1, ...e, ...(s < 0 ? e.l : e.r) };
    const x = mx(35 * s),
      y = my(2),
      k = ws(35 * s),
      rx = 15.2 * ee.size,
      ry = 17.6 * ee.size;
    const st = { stroke: P.eye, sw: 5.4 },
      dx = ee.px * 3.6,
      dy = ee.py * 3.2;
    let d;
    switch (ee.shape) {
      case 'happy':
        d = path('M-13.5 6C-9 -10 9 -10 13.5 6', st);
        break;
      case 'sleep':
        d = path('M-13.5 0C-8 11 8 11 13.5 0', st);
        break;
      case 'squeeze':
        d = path(s < 0 ? 'M-10 -9L9 1L-10 11' : 'M10 -9L-9 1L10 11', st);
        break;
      case 'x':
        d = path('M-9 -9L9 9M9 -9L-9 9', st);
        break;
      case 'wide':
        d =
          ell(0, 0, 18, 20.5, { fill: '#fffdf8', stroke: P.eye, sw: 3.4 }) +
          ell(dx, dy, 12, 14, { fill: P.eye }) +
          ell(dx + 4, dy - 5, 4.4, 5, { fill: '#fff' }) +
          ell(dx - 4, dy + 5.5, 2.2, 2.4, { fill: '#fff', op: 0.9 });
        break;
      default: {
        const op = clamp(ee.open, 0, 1),
          slant = ee.shape === 'angry' ? s : ee.shape === 'sad' ? -s : 0,
          sk = ee.shape === 'angry' ? 12 : 14;
        if (op >= 0.97 && !slant && ee.shape !== 'half')
          d =
            (dx || dy ? ell(0, 0, rx, ry, { fill: '#fffdf8', stroke: P.eye, sw: 3 }) : '') +
            ell(dx * 0.5, dy * 0.36, rx - (dx || dy ? 0.2 : -0.6), ry - (dx || dy ? 0.2 : -0.6), { fill: U('eye') });
        else if (ee.shape === 'open') {
          // calm lid: the top of the eye sinks, its curve stays convex
          const r2 = ry * (0.35 + 0.65 * op),
            cy = ry - r2 + dy * 0.4,
            cx = dx * 0.55;
          d =
            path(arc(cx, cy, rx, r2, 0, 180) + arc(cx, cy, rx, r2 * lerp(0.3, 1, op), 180, 360, false) + 'Z', { fill: U('eye') }) +
            path(arc(cx, cy, rx + 0.6, r2 * lerp(0.3, 1, op), 190, 350), { stroke: P.eye, sw: 4.4 });
        } else {
          // hard lid cuts the ellipse
          const a = (Math.asin(clamp(-1 + 2 * (1 - op), -0.96, 0.9)) * 180) / Math.PI;
          const aL = 180 - a,
            aR = a; // start right, go down to left
          const kk = ee.shape === 'half' ? -13 * s : sk * slant;
          const a0 = aR - kk,
            a1 = aL - kk;
          d =
            (ee.shape === 'half' ? ell(dx * 0.55, dy * 0.4, rx + 0.4, ry + 0.4, { fill: P.fur }) : '') +
            path(arc(dx * 0.55, dy * 0.4, rx, ry, a0, a1) + 'Z', { fill: U('eye') });
          const p0 = [dx * 0.55 + rx * Math.cos(rad(a0)), dy * 0.4 + ry * Math.sin(rad(a0))],
            p1 = [dx * 0.55 + rx * Math.cos(rad(a1)), dy * 0.4 + ry * Math.sin(rad(a1))];
          const ex = 2.2,
            sl = (p0[1] - p1[1]) / (p0[0] - p1[0] || 1);
          d += path(
            `M${f(p0[0] + ex)} ${f(p0[1] + sl * ex)}Q${f((p0[0] + p1[0]) / 2)} ${f((p0[1] + p1[1]) / 2 + (ee.shape === 'half' ? 3.5 : -2))} ${f(p1[0] - ex)} ${f(p1[1] - sl * ex)}`,
            { stroke: P.eye, sw: 4.6 },
          );
        }
        const hy = -6.5 + (1 - op) * (ee.shape === 'half' ? 22 : 15);
        if (op > 0.3)
          d += ell(4.4 + dx * 0.9, hy + dy * 0.8, 5 * Math.min(1, 0.55 + op * 0.45), 5.6 * Math.min(1, 0.3 + op * 0.7), { fill: '#fff' });
        if (op > 0.6) d += ell(-5 + dx * 0.7, 6.5 + dy * 0.6, 2.5, 2.7, { fill: '#fff', op: 0.9 });
      }
    }
    out.push(g(T(x, y) + S(k, 1), d));
  }
  // nose + mouth on the muzzle
  const nx = mx(0),
    ny = my(20),
    nk = ws(0);
  out.push(
    g(
      T(nx, ny) + S(nk, 1),
      path('M-6.6 -3.4C-6 -6.4 6 -6.4 6.6 -3.4C7 0 2.6 4.4 0 4.4C-2.6 4.4 -7 0 -6.6 -3.4Z', { fill: P.nose }),
      ell(2, -2.9, 2.2, 1.2, { fill: '#fff', op: 0.55 }),
    ),
  );
  const L = { stroke: P.mouth, sw: INN },
    stem = 'M0 4L0 8';
  const teeth = (y, hgt = 6.5) =>
    path(
      `M-5 ${y}L-4.6 ${y + hgt - 1.4}C-4.4 ${y + hgt} -.6 ${y + hgt} -.4 ${y + hgt - 1.4}L0 ${y}L.4 ${y + hgt - 1.4}C.6 ${y + hgt} 4.4 ${y + hgt} 4.6 ${y + hgt - 1.4}L5 ${y}Z`,
      { fill: '#fffefa', stroke: P.mouth, sw: 1.8 },
    );
  const M = {
    smile: () => path(stem + 'M-11 9C-9 15 -1.6 14.6 0 8.4C1.6 14.6 9 15 11 9', L),
    tiny: () => path(stem + 'M-7.5 8.6C-6 13 -1.2 12.6 0 8.4C1.2 12.6 6 13 7.5 8.6', L),
    grin: () => teeth(12) + path(stem + 'M-14 7.5C-10 15.5 -2 14.6 0 8.4C2 14.6 10 15.5 14 7.5', L),
    open: () =>
      path('M-13 8.5C-5 12 5 12 13 8.5C13.5 19 7 27 0 27C-7 27 -13.5 19 -13 8.5Z', { fill: P.mouthIn, stroke: P.mouth, sw: 3 }) +
      path('M-7.5 22.4C-5 17.6 5 17.6 7.5 22.4C5 26 -5 26 -7.5 22.4Z', { fill: P.tongue }) +
      teeth(10.6, 6),
    talk: () =>
      path('M-8 9.5C-3 11.4 3 11.4 8 9.5C8.4 16 4.6 20 0 20C-4.6 20 -8.4 16 -8 9.5Z', { fill: P.mouthIn, stroke: P.mouth, sw: 3 }) +
      path('M-4 17.6C-2 15 2 15 4 17.6C2 19.4 -2 19.4 -4 17.6Z', { fill: P.tongue }),
    o: () => ell(0, 15, 5.4, 6.6, { fill: P.mouthIn, stroke: P.mouth, sw: 3 }),
    yawn: () =>
      ell(0, 18, 10, 12, { fill: P.mouthIn, stroke: P.mouth, sw: 3 }) +
      path('M-6.6 25C-4 20 4 20 6.6 25C4 29 -4 29 -6.6 25Z', { fill: P.tongue }),
    flat: () => path('M-8 12.5L8 12.5', L),
    frown: () => path('M-9 16C-6 10 6 10 9 16', L),
    wavy: () => path('M-12 14C-9 9.5 -6.5 9.5 -4 13C-1.6 16.4 1.6 16.4 4 13C6.5 9.5 9 9.5 12 14', L),
    pout: () => path('M-5.5 14.5C-3 10.6 3 10.6 5.5 14.5', { ...L, sw: 4 }),
    side: () => path(stem + 'M-7 12C-2 14 5 12.6 10 8.4', L),
    hum: () => path(stem + 'M-5 11C-2 13 2 13 5 11', L),
    none: () => '',
  };
  out.push(g(T(nx, ny) + S(nk, 1), (M[m] || M.smile)()));
  return INNER + out.join('') + INNER_END;
}
function head(P, p) {
  const h = { x: 0, y: 0, tilt: 0, turn: 0, nod: 0, puff: 0, s: 1, ...p.head },
    pf = h.puff * 7,
    tn = h.turn;
  const hs = sd => {
    const k = 1 - 0.07 * tn * sd;
    return k;
  }; // the far cheek narrows
  const side = sd => {
    const k = sd * hs(sd),
      X = v => f(k * v),
      px = v => f(k * (v + pf));
    return { k, X, px };
  };
  const half = (sd, rev) => {
    const { X, px } = side(sd);
    return rev
      ? `C${X(24)} 61 ${px(50)} 59 ${px(65)} 46Q${px(74)} 46 ${px(79)} 41Q${px(77)} 38 ${px(77.5)} 35Q${px(84)} 32 ${px(87)} 25Q${px(80)} 23 ${px(79)} 17C${px(80)} 8 ${px(78)} -4 ${X(72 + pf * 0.4)} -16C${X(64)} -40 ${X(42)} -58 ${X(14)} -59`
      : `C${X(42)} -58 ${X(64)} -40 ${X(72 + pf * 0.4)} -16C${px(78)} -4 ${px(80)} 8 ${px(79)} 17Q${px(80)} 23 ${px(87)} 25Q${px(84)} 32 ${px(77.5)} 35Q${px(77)} 38 ${px(79)} 41Q${px(74)} 46 ${px(65)} 46C${px(50)} 59 ${X(24)} 61 0 61`;
  };
  const d =
    `M${side(1).X(14)} -59` +
    half(1) +
    half(-1, true) +
    `C-11 -64 -6 -71 3 -73C1 -69 2 -66 4 -64.5C8 -68 13 -69 18 -67.5C15 -65 14 -62 ${side(1).X(14)} -59Z`;
  const E = { l: 0, r: 0, fold: 0, ...p.ears };
  const sh = -tn * 9;
  return g(
    T(h.x, -150 + h.y) + R(h.tilt, 0, 52) + S(h.s),
    ear(P, -1, E.l, { fold: E.fold, dx: -sh, ws: 1 - Math.max(0, -tn) * 0.14, dy: E.dy }),
    ear(P, 1, E.r, { fold: E.fold, dx: sh, ws: 1 - Math.max(0, tn) * 0.14, dy: E.dy }),
    path(d, { fill: U('head') }),
    path(
      `M${f(tn * 24)} -56C${f(-7 + tn * 25)} -50 ${f(-8 + tn * 27)} -36 ${f(tn * 28)} -22C${f(8 + tn * 27)} -36 ${f(7 + tn * 25)} -50 ${f(tn * 24)} -56Z`,
      { fill: P.furShade, op: 0.9 },
    ),
    face(P, h, p.eyes || {}, p.mouth || 'smile', p),
    path(d, { stroke: P.line, sw: OUT }),
    p.headExtra ? p.headExtra(P) : '',
  );
}
function scarf(P, o = {}) {
  const sw = o.swing || 0;
  return g(
    '',
    g(
      T(-30, -80) + R(-sw),
      path('M-4 0C-14 6 -20 18 -20 32L-6 35C-4 24 0 14 6 8Z', { fill: P.A, stroke: P.AD, sw: INN }),
      path('M0 4C0 16 2 26 8 34L20 27C13 20 10 10 9 2Z', { fill: P.A, stroke: P.AD, sw: INN }),
    ),
    path('M-44 -96C-46 -82 -34 -72 0 -72C34 -72 46 -82 44 -96C30 -86 -30 -86 -44 -96Z', { fill: P.A, stroke: P.AD, sw: INN }),
    ell(-30, -79, 9, 8, { fill: P.A, stroke: P.AD, sw: INN }),
  );
}

function bodyFront(P) {
  return [
    path(
      'M0 -102C26 -102 38 -90 44 -68C51 -48 63 -38 60 -19C57 -3 42 -1 0 -1C-42 -1 -57 -3 -60 -19C-63 -38 -51 -48 -44 -68C-38 -90 -26 -102 0 -102Z',
      { fill: U('body'), stroke: P.line, sw: OUT },
    ),
    ell(0, -38, 36, 33, { fill: P.cream }),
  ].join('');
}

// ---------------------------------------------------------------- character assembly
// The light rim: the outlines of the figure in one colour and wider, drawn underneath.
function rim(markup, P) {
  const shapes = [...markup.replace(/\u0001[^\u0002]*\u0002/g, '').matchAll(/<(\/?g[^>]*)>|<(path|ellipse)([^>]*?)\/>/g)]
    .map(([whole, group, tag, a]) => {
      if (group) return whole;
      const sw = Number(/ stroke-width="([^"]+)"/.exec(a)?.[1] ?? 0),
        outline = sw >= 3.9 || a.includes(` fill="${P.line}"`);
      if (!outline || /opacity=/.test(a) || a.includes(` stroke="${P.edge}"`)) return '';
      const geometry = a.replace(/ (fill|stroke|stroke-width)="[^"]*"/g, '');
      return `<${tag}${geometry}${/ fill=/.test(a) ? '' : ' fill="none"'} stroke-width="${f(sw + RIM)}"/>`;
    })
    .join('');
  return `<g fill="${P.edge}" stroke="${P.edge}">${shapes}</g>`.replace(/<g transform="[^"]*"><\/g>/g, '');
}
/** The markup of a pose in a tint, and the gradients it may use by id. */
export function draw(pose, tint = 'pink') {
  const P = palette(tint);
  const p = { x: 0, y: 0, scale: 1, sx: 1, sy: 1, lean: 0, shadow: 1, ...pose };
  const back = (p.back || []).map(fn => fn(P)).join(''),
    mid = (p.midProps || []).map(fn => fn(P)).join(''),
    front = (p.front || []).map(fn => fn(P)).join('');
  let fig;
  if (p.kind === 'custom') fig = p.draw(P, p);
  else {
    const A = (s, a) => {
      if (!a) return '';
      const sh = [s * 39, -70];
      return limb(P, a.from || sh, [a.x, a.y], { bend: (a.bend ?? 9) * -s, ...a.o });
    };
    const aL = { x: -22, y: -42, ...p.armL },
      aR = { x: 22, y: -42, ...p.armR };
    const draw = z =>
      (p.armL === null ? '' : (aL.z || 'body') === z ? A(-1, aL) : '') + (p.armR === null ? '' : (aR.z || 'body') === z ? A(1, aR) : '');
    const fl = { x: -31, y: 0, rot: 0, ...(p.footL || {}) },
      fr = { x: 31, y: 0, rot: 0, ...(p.footR || {}) };
    fig = g(
      T(groundX + p.x, groundY + p.y) + S(p.scale),
      g(S(p.sx, p.sy) + R(p.lean, 0, -10), tail(P, p.tail || {}), draw('back'), bodyFront(P)),
      foot(P, fl.x, fl.y, fl.rot, fl),
      foot(P, fr.x, fr.y, fr.rot, fr),
      g(S(p.sx, p.sy) + R(p.lean, 0, -10), draw('body'), scarf(P, p.scarf || {})),
      mid ? g(T(-groundX, -groundY), mid) : '',
      g(S(lerp(1, p.sx, 0.6), p.sy) + R(p.lean, 0, -10), p.armsOverMid ? draw('mid') : '', head(P, p), draw('front')),
    );
  }
  const shw = p.shadow
    ? ell(groundX + p.x * 0.9 + (p.shadowX || 0), groundY + 2, 76 * p.shadow * (p.shadowW || 1), 8.5 * p.shadow, {
        fill: P.shadow,
        op: 0.18,
      })
    : '';
  const ov = p.over ? g(T(groundX + p.x, groundY + p.y) + S(p.scale * p.sx, p.scale * p.sy) + R(p.lean, 0, -10), p.over(P, limb)) : '';
  const figure = back + fig + front + ov;
  return { content: g(T(width, 0) + S(-1, 1), shw + rim(figure, P) + figure.replace(/[\u0001\u0002]/g, '')), defs: gradients(P) };
}
export const kit = { limb, foot, head, scarf, tail, bodyFront, U };
