// Nibbo's rig: turns a pose description into SVG markup. The parameters of a pose are listed in character.md.
import { path, ell, at, poly, spline, splineOn, linearGradient, mix, num as f, rad, group, translate, scale } from '../lib/svg.mjs';

export const width = 180,
  height = 150,
  groundX = 90,
  groundY = 138;

export const C = {
  line: '#6b4a47',
  cream: '#fff5e4',
  shade: '#f5dcc2',
  shadow: '#4a3038',
  eyeTop: '#2b1c24',
  eyeBottom: '#5e3c48',
  blush: '#f79da6',
  hatch: '#e0707f',
  nose: '#d9788a',
  mouth: '#a2485a',
  tongue: '#f58c98',
  paper: '#fffefa',
  amber: '#ffc85c',
  amberDark: '#e8a23a',
  sky: '#bfe3f5',
  skyDark: '#7fb9da',
  heart: '#ee8299',
  wood: '#d9a974',
  mint: '#9fe0be',
  white: '#ffffff',
  ruling: '#cbbfb8',
  dotOff: '#d6cbc6',
};
// The accent: light, main, deep and the blush that goes with it. A tint changes these four and nothing else.
const accent = (light, main, deep) => [light, main, deep, mix(C.blush, main, 0.1)];
export const tints = {
  pink: accent('#ffdce2', '#f9afbf', '#db7b94'),
  blue: accent('#d8e9fb', '#a3caf2', '#5f93cb'),
  green: accent('#ddf1d6', '#a9d9a4', '#63a56c'),
  purple: accent('#e8defa', '#c7b2ee', '#8c73c4'),
};
const SW = 2.25; // silhouette stroke
const SI = 2; // inner stroke
/** Attributes of an ink line. */
export const line = (o = {}) => ({ stroke: C.line, sw: SI, ...o });

// ---------- default pose ----------
export const REST = {
  x: 0,
  lift: 0,
  sx: 1,
  sy: 1,
  bend: 0,
  rot: 0,
  puff: 0,
  scale: 1,
  turn: 0,
  pitch: 0,
  tilt: 0,
  fy: 0,
  earL: { a: 24, c: 14 },
  earR: { a: 24, c: 14 },
  eyes: { shape: 'open' },
  eyeL: null,
  eyeR: null,
  brow: null,
  mouth: 'w',
  blush: 0.75,
  armL: { x: -28, y: -14, sh: [-31, -24] },
  armR: { x: 28, y: -14, sh: [31, -24] },
  footL: { x: -17, y: -2.5 },
  footR: { x: 17, y: -2.5 },
  tail: { a: 58 },
  shadow: true,
  back: null,
  mid: null,
  front: null,
  fx: null, // functions (kit) => svg, in pet space
};
export function pose(...os) {
  const p = {};
  for (const o of [REST, ...os])
    for (const [k, v] of Object.entries(o)) {
      p[k] = v && typeof v === 'object' && !Array.isArray(v) && typeof p[k] === 'object' && p[k] && !v.$only ? { ...p[k], ...v } : v;
    }
  return p;
}

// ---------- build ----------
/** The markup of a pose in a tint, and the gradients it uses by id. */
export function draw(p, tint = 'pink') {
  const [light, main, deep, blush] = tints[tint];
  const A = { l: light, m: main, d: deep };
  const defs = {};
  const grad = (x1, y1, x2, y2, stops) => {
    const id = 'g' + Object.keys(defs).length;
    defs[id] = linearGradient(id, x1, y1, x2, y2, stops);
    return `url(#${id})`;
  };
  const HB = 80;
  const cr = Math.cos(rad(p.rot)),
    sr = Math.sin(rad(p.rot));
  const ox = groundX + p.x,
    oy = groundY - p.lift;
  // body deformation: squash, bend, rotate about the base
  const P = (x, y) => {
    const t = Math.max(0, -y / HB);
    let X = x * p.sx + p.bend * t * t,
      Y = y * p.sy;
    return [ox + X * cr - Y * sr, oy + X * sr + Y * cr];
  };
  const ang = y => p.rot + ((Math.atan2((2 * p.bend * Math.max(0, -y / HB)) / HB, p.sy) * 180) / Math.PI) * 0.9;
  const kit = { A, C, P, ox, oy, grad, p };
  const out = [];

  // ground shadow
  if (p.shadow) out.push(ell(ox, groundY + 1.5, 48 * p.sx * (1 - p.lift / 90) * (p.shadowW || 1), 4.2, { fill: C.shadow, op: 0.16 }));
  if (p.back) out.push(p.back(kit));

  // tail (small notched petal, echo of the ears)
  if (p.tail && !p.tail.front) out.push(tail());
  if (p.armL && p.armL.layer === 'back') out.push(arm(-1, p.armL));
  if (p.armR && p.armR.layer === 'back') out.push(arm(1, p.armR));
  if (p.footL && p.footL.layer === 'back') out.push(foot(-1, p.footL));
  if (p.footR && p.footR.layer === 'back') out.push(foot(1, p.footR));

  // body
  const q = p.puff;
  const B = [
    [0, -80],
    [27, -80],
    [45 + q, -62],
    [48.5 + q, -36],
    [51.5 + q, -14],
    [44, 0.5],
    [22, 0.5],
    [10, 0.5],
    [-10, 0.5],
    [-22, 0.5],
    [-44, 0.5],
    [-51.5 - q, -14],
    [-48.5 - q, -36],
    [-45 - q, -62],
    [-27, -80],
    [0, -80],
  ].map(v => P(...v));
  const cub = b =>
    `M${f(b[0][0])} ${f(b[0][1])}` +
    Array.from(
      { length: (b.length - 1) / 3 },
      (_, i) => 'C' + [1, 2, 3].map(k => `${f(b[i * 3 + k][0])} ${f(b[i * 3 + k][1])}`).join(' '),
    ).join('');
  const bodyD = cub(B) + 'Z';
  const outline = [];
  for (let i = 0; i < 15; i += 3)
    for (let k = 0; k < 16; k++) {
      const t = k / 16,
        u = 1 - t;
      outline.push([0, 1].map(c => u ** 3 * B[i][c] + 3 * u * u * t * B[i + 1][c] + 3 * u * t * t * B[i + 2][c] + t ** 3 * B[i + 3][c]));
    }
  const inBody = ([x, y]) => {
    let c = false;
    for (let i = 0, j = outline.length - 1; i < outline.length; j = i++) {
      const [xi, yi] = outline[i],
        [xj, yj] = outline[j];
      if (yi > y !== yj > y && x < ((xj - xi) * (y - yi)) / (yj - yi) + xi) c = !c;
    }
    return c;
  };
  out.push(path(bodyD, { fill: C.cream }));
  const sh = [
    ...B.slice(3, 13),
    ...[[-46, -15], [-27, -8], [-2, -8], [24, -8], [42, -20], [48.5 + q, -36]].map(v => P(...v)),
  ];
  out.push(path(cub(sh) + 'Z', { fill: C.shade }));
  // soft top light
  {
    const [hx, hy] = P(-39.5 - p.puff * 0.6 + p.turn * 3, -44);
    out.push(at(hx, hy, ang(-44) - 74, 1, ell(0, 0, 6, 2.5, { fill: C.white, op: 0.9 })));
  }
  out.push(path(bodyD, line({ sw: SW })));

  // ears
  const far = p.turn >= 0 ? 1 : -1;
  out.push(ear(far, far < 0 ? p.earL : p.earR, Math.abs(p.turn)), ear(-far, far < 0 ? p.earR : p.earL, 0));
  if (p.footL && p.footL.layer === 'mid') out.push(foot(-1, p.footL));
  if (p.footR && p.footR.layer === 'mid') out.push(foot(1, p.footR));

  // face
  const [fx, fyy] = P(p.turn * 15, -43 + p.pitch * 9 + p.fy);
  out.push(at(fx, fyy, ang(-43) + p.tilt, 1, face()));

  if (p.tail && p.tail.front) out.push(tail());
  if (p.footL && !p.footL.layer) out.push(foot(-1, p.footL));
  if (p.footR && !p.footR.layer) out.push(foot(1, p.footR));
  if (p.mid) out.push(p.mid(kit));
  if (p.armL && !p.armL.layer) out.push(arm(-1, p.armL));
  if (p.armR && !p.armR.layer) out.push(arm(1, p.armR));
  if (p.front) out.push(p.front(kit));
  if (p.armL && p.armL.layer === 'front') out.push(arm(-1, p.armL));
  if (p.armR && p.armR.layer === 'front') out.push(arm(1, p.armR));
  if (p.fx) out.push(p.fx(kit));

  const content = out.join('');
  return {
    defs,
    content: p.scale === 1 ? content : group(translate(groundX, groundY) + scale(p.scale) + translate(-groundX, -groundY), content),
  };

  // ---------- parts ----------
  function petal(base, dir, curv, L, wd, kind, trim) {
    // petal outline in (v across, u along) bent on an arc
    const half = [
      [0.58, -0.05],
      [0.68, 0.1],
      [0.9, 0.36],
      [1, 0.62],
      [0.985, 0.73],
      [0.92, 0.845],
      [0.74, 0.955],
      [0.46, 0.995],
      [0.2, 0.92],
      [0, 0.76],
    ];
    const bendPt = (v, u) => {
      const k = rad(curv),
        n = 14;
      let x = 0,
        y = 0;
      const U = u * L;
      const st = U / n;
      for (let i = 0; i < n; i++) {
        const th = rad(dir) + k * (((i + 0.5) * st) / L);
        x += Math.sin(th) * st;
        y -= Math.cos(th) * st;
      }
      const th = rad(dir) + k * Math.max(0, u);
      return [base[0] + x + Math.cos(th) * v * wd, base[1] + y + Math.sin(th) * v * wd];
    };
    // each side as a dense polyline, trimmed where it leaves the body so that it melts into the head
    const prof = u => {
      const t = Math.max(0, Math.min(1, (u + 0.05) / 0.65));
      return 0.56 + 0.44 * t * t * (3 - 2 * t) * 0.75 + 0.44 * t * 0.25;
    };
    const sidePts = sg => {
      let u0 = -0.05;
      if (trim) {
        u0 = -0.3;
        while (u0 < 0.4 && inBody(bendPt(sg * prof(u0), u0))) u0 += 0.01;
        u0 = Math.max(-0.3, u0 - 0.03);
      }
      const pts = [];
      const nS = Math.max(1, Math.round((0.53 - u0) / 0.2));
      for (let i = 0, u = u0; i <= nS; u = u0 + ((0.53 - u0) * ++i) / nS) pts.push(bendPt(sg * prof(u), u));
      return [...pts, ...half.slice(3).map(([v, u]) => bendPt(sg * v, u))];
    };
    const Lp = sidePts(-1),
      Rp = sidePts(1).reverse();
    const open = spline(Lp) + splineOn(Rp);
    const foot1 = bendPt(0.4, -0.2),
      foot0 = bendPt(-0.4, -0.2);
    const tip = bendPt(0, 1),
      b0 = bendPt(0, 0);
    const low = trim ? Math.max(0, Math.min(0.24, (kind === 0 ? 0 : Math.abs(dir - p.rot) - 46) * 0.007)) : 0;
    const stops = kind.fade
      ? [[0, C.cream, 0], [0.12, C.cream, 0], [0.34, C.cream, 1], [0.68, A.m], [1, A.m]]
      : [[0, C.cream], [0.16 + low, C.cream], [0.6 + low * 0.7, A.m], [1, A.m]];
    const g = grad(b0[0], b0[1], tip[0], tip[1], stops);
    // Filled as far as its root lies within the body.
    let s = path(open, { fill: g }) + path(poly([Lp[0], foot0, foot1, Rp[Rp.length - 1]]), { fill: g });
    // shaded half: a crescent along the outer edge
    const side = (kind.s ?? kind) > 0 ? 1 : -1;
    const strip = [
      [0.975, 0.5],
      [1, 0.62],
      [0.985, 0.73],
      [0.92, 0.845],
      [0.74, 0.955],
      [0.46, 0.995],
      [0.2, 0.92],
      [0, 0.76],
    ].map(([v, u]) => bendPt(side * v, u));
    const strip2 = [[0, 0.76], [0.34, 0.78], [0.6, 0.72], [0.84, 0.62], [0.975, 0.5]].map(([v, u]) => bendPt(side * v, u));
    s += path(spline(strip) + splineOn(strip2) + 'Z', { fill: A.d, op: 0.36 });
    s += path(open, line({ sw: SW }));
    return s;
  }
  function ear(side, e, farK) {
    const a = e.a * side,
      bx = side * 26 * (1 - farK * 0.18) + p.turn * 6;
    const ax = Math.min(46, Math.abs(bx)),
      by = -80 + 8.3 * (ax / 26) ** 2.1 + 1.2 + (e.dy || 0);
    const b = P(bx, by);
    return petal(
      b,
      ang(by) + a + p.tilt * 0.35,
      (e.c || 0) * side,
      (e.L || 36) * (e.s || 1),
      15.4 * (e.w || 1) * (1 - farK * 0.2),
      side,
      true,
    );
  }
  function tail() {
    const t = p.tail,
      s = t.side || 1;
    const b = t.at ? [ox + t.at[0], oy + t.at[1]] : P(s * 42, -13);
    return petal(b, p.rot + t.a * s, (t.c ?? -26) * s, t.L || 25, t.w || 11, t.front ? { fade: 1, s } : s);
  }
  function arm(side, a) {
    const S = a.sh ? P(a.sh[0], a.sh[1]) : P(side * 35 + p.turn * 5, -24);
    const hnd = a.fix ? [ox + a.x, oy + a.y] : P(a.x, a.y);
    const mx = (S[0] + hnd[0]) / 2,
      my = (S[1] + hnd[1]) / 2;
    const dx = hnd[0] - S[0],
      dy = hnd[1] - S[1],
      len = Math.hypot(dx, dy) || 1;
    const bow = a.bow ?? 0;
    const M = [mx - (dy / len) * -bow, my + (dx / len) * -bow];
    const r0 = a.r0 || 7.6,
      r1 = a.r || 6.9,
      open = (a.open ?? 3) / 8,
      n = 3; // open at the shoulder, so that the arm melts into the body
    const left = [],
      right = [];
    let th = 0;
    for (let i = 0; i <= n; i++) {
      const t = open + ((1 - open) * i) / n,
        u = 1 - t,
        r = r0 + (r1 - r0) * t;
      const [x, y] = [0, 1].map(c => u * u * S[c] + 2 * u * t * M[c] + t * t * hnd[c]);
      th = Math.atan2(u * (M[1] - S[1]) + t * (hnd[1] - M[1]), u * (M[0] - S[0]) + t * (hnd[0] - M[0]));
      left.push([x + Math.sin(th) * r, y - Math.cos(th) * r]);
      right.unshift([x - Math.sin(th) * r, y + Math.cos(th) * r]);
    }
    const cap = [-60, -30, 0, 30, 60].map(d => [hnd[0] + Math.cos(th + rad(d)) * r1, hnd[1] + Math.sin(th + rad(d)) * r1]);
    const inside = a.fade ?? (Math.abs(hnd[0] - ox) < 42 && !a.solid && !a.layer);
    const fill = inside
      ? grad(...S, ...hnd, [[0.3, C.cream, 0], [0.72, C.cream, 1]])
      : C.cream;
    let s = path(spline([...left, ...cap, ...right]), line({ fill, sw: SW }));
    if (a.pad)
      s += at(
        ...hnd,
        (th * 180) / Math.PI + 90,
        1,
        ell(0, 0.8, 3.1, 2.6, { fill: A.m }) +
          ell(-3.4, -2.8, 1.3, 1.5, { fill: A.m }) +
          ell(0, -4.2, 1.3, 1.5, { fill: A.m }) +
          ell(3.4, -2.8, 1.3, 1.5, { fill: A.m }),
      );
    return s;
  }
  function foot(side, o) {
    const x = ox + o.x,
      y = (o.ground ? groundY : oy) + o.y,
      r = o.rot || 0;
    if (o.sole) {
      return at(
        x,
        y,
        r,
        o.s || 1,
        ell(0, 0, 9.6, 8.8, { fill: C.cream, stroke: C.line, sw: SW }) +
          ell(0, 2, 4.2, 3.4, { fill: A.m }) +
          ell(-4.4, -3, 1.6, 1.8, { fill: A.m }) +
          ell(0, -4.7, 1.6, 1.8, { fill: A.m }) +
          ell(4.4, -3, 1.6, 1.8, { fill: A.m }),
      );
    }
    const fillc = o.dark ? C.shade : C.cream;
    let s = '';
    if (o.leg)
      s +=
        path(`M-7 ${f(-o.leg)}C-7.5 ${f(-o.leg / 2)} -9 -4 -9 0L9 0C9 -4 7.5 ${f(-o.leg / 2)} 7 ${f(-o.leg)}Z`, { fill: fillc }) +
        path(`M-7 ${f(-o.leg)}C-7.5 ${f(-o.leg / 2)} -9 -4 -10 0M10 0C9 -4 7.5 ${f(-o.leg / 2)} 7 ${f(-o.leg)}`, line({ sw: SW }));
    s += ell(0, 0, 10.4, 5.7, { fill: fillc });
    s += path('M-7.4 -4C-12.6 -1.2 -11.4 5.7 0 5.7C11.4 5.7 12.6 -1.2 7.4 -4', line({ sw: SW }));
    return at(x, y, r, o.s || 1, s);
  }
  function face() {
    const t = p.turn,
      ex = 19,
      fr = 1 - Math.max(0, t) * 0.14,
      fl = 1 - Math.max(0, -t) * 0.14;
    let s = '';
    const bl = p.blush;
    if (bl)
      s +=
        ell(-31 * fl, 9.5, 6.8 * fl, 4.3, { fill: blush, op: bl }) +
        ell(31 * fr - Math.max(0, t) * 2, 9.5, 6.8 * fr, 4.3, { fill: blush, op: bl });
    if (bl >= 1) s += [-33, -29, 29, 33].map(q => path(`M${q + 1.2} 7.6L${q - 1.2} 11.4`, line({ stroke: C.hatch, sw: 1.6 }))).join('');
    s += eye(-1, -ex * fl, { ...p.eyes, ...(p.eyeL || {}) }, fl) + eye(1, ex * fr, { ...p.eyes, ...(p.eyeR || {}) }, fr);
    s += nose() + mouth();
    return s;
  }
  function nose() {
    return path('M-2.5 5.4C-1.2 4.6 1.2 4.6 2.5 5.4C2.6 6.8 1 8 0 8C-1 8 -2.6 6.8 -2.5 5.4Z', { fill: C.nose });
  }
  function eye(side, x, e, k) {
    const sz = e.size || 1,
      lx = e.lx || 0,
      ly = e.ly || 0;
    const L = line({ sw: 2.9 });
    let s = '';
    const rx = 7.3 * sz * k,
      ry = 9 * sz;
    const X = x + lx * 2,
      Y = ly * 1.8;
    switch (e.shape) {
      case 'happy':
        s = path(`M${f(x - 7.5 * k)} 2.6C${f(x - 4.5 * k)} -5.6 ${f(x + 4.5 * k)} -5.6 ${f(x + 7.5 * k)} 2.6`, L);
        break;
      case 'asleep':
        s = path(`M${f(x - 7.5 * k)} -.5C${f(x - 4.5 * k)} 6 ${f(x + 4.5 * k)} 6 ${f(x + 7.5 * k)} -.5`, L);
        break;
      case 'line':
        s = path(`M${f(x - 7)} .6C${f(x - 3.5)} 3.8 ${f(x + 3.5)} 3.8 ${f(x + 7)} .6`, L);
        break;
      case 'x':
        s = path(`M${f(x - 5)} -5L${f(x + 5)} 5M${f(x + 5)} -5L${f(x - 5)} 5`, L);
        break;
      case 'squeeze':
        s = path(`M${f(x + side * 6)} -5.5L${f(x - side * 5.5)} .5L${f(x + side * 6)} 6`, L);
        break;
      case 'wide':
        s =
          ell(x, -1, 9.6 * sz * k, 10.8 * sz, { fill: C.white, stroke: C.line, sw: SI }) +
          ell(x + lx * 2.5, -1 + ly * 2.5, 4.9 * sz, 5.6 * sz, { fill: C.eyeTop }) +
          ell(x + lx * 2.5 - 1.6, -3.2 + ly * 2.5, 1.7, 1.8, { fill: C.white });
        break;
      case 'sleepy': {
        // sinks and flattens under a heavy, round lid
        const open = e.open ?? 0.6,
          h = ry * open,
          y = ry - h + ly;
        s =
          ell(X, y, rx, h, {
            fill: grad(0, y - h, 0, y + h, [[0.5, C.eyeTop], [1, C.eyeBottom]]),
          }) +
          ell(X - 2, y - h * 0.15, 2.2, 2.3 * open, { fill: C.white }) +
          path(
            `M${f(X - rx * 1.2)} ${f(y - h * 0.1)}C${f(X - rx * 0.8)} ${f(y - h * 1.25)} ${f(X + rx * 0.8)} ${f(y - h * 1.25)} ${f(X + rx * 1.2)} ${f(y - h * 0.1)}`,
            line({ sw: 2.7 }),
          );
        break;
      }
      default: {
        const open = e.open ?? 1,
          flat = e.flat,
          slant = (e.slant || 0) * side; // slant>0: inner end lower (angry)
        const g = grad(0, Y - ry, 0, Y + ry, [[0, C.eyeTop], [0.5, C.eyeTop], [1, C.eyeBottom]]);
        if (open > 0.97 && !e.slant) s += ell(X, Y, rx, ry, { fill: g });
        else {
          // ellipse below a lid line
          const yc = Y - ry + (1 - open) * ry * 2,
            arch = flat ? 1.5 : (e.slant ? 0.6 : 2.2 + 2.6 * open) * (open > 0.3 ? 1 : 0.5),
            lid = xx => yc - ((slant * (xx - X)) / rx) * 3.2 + arch * ((xx - X) / rx) ** 2 - arch * 0.25;
          const pts = [];
          for (let i = 0; i < 28; i++) {
            const th = (i / 28) * 2 * Math.PI;
            const px = X + Math.cos(th) * rx,
              py = Y + Math.sin(th) * ry;
            pts.push([px, Math.max(py, lid(px))]);
          }
          s += path(poly(pts), { fill: g });
          s += path(
            `M${f(X - rx * 1.12)} ${f(lid(X - rx * 1.12) + 0.3)}C${f(X - rx * 0.42)} ${f(lid(X) * 1.33 - ((lid(X - rx * 1.12) + lid(X + rx * 1.12)) / 2) * 0.33 + ((lid(X - rx) - lid(X + rx)) / 2) * 0.4)} ${f(X + rx * 0.42)} ${f(lid(X) * 1.33 - ((lid(X - rx * 1.12) + lid(X + rx * 1.12)) / 2) * 0.33 - ((lid(X - rx) - lid(X + rx)) / 2) * 0.4)} ${f(X + rx * 1.12)} ${f(lid(X + rx * 1.12) + 0.6)}`,
            line({ sw: 2.5 }),
          );
        }
        if (open > 0.3) {
          const hx = X - 2.4 * k + lx * 1.1,
            hy = Math.max(Y - 3.6 + ly * 1.1, Y - ry + (1 - open) * ry * 2 + 3.4);
          s += ell(X + 0.4, Y + 5.2 * sz, 4.1 * k * sz, 2.5 * sz, { fill: A.m, op: flat ? 0.25 : 0.42 });
          if (flat) s += ell(X - 2.2, Y + 1.6 + (1 - open) * 4, 1.9, 1.9, { fill: C.white });
          else s += ell(hx, hy, 2.7 * sz, 3 * sz * Math.min(1, open + 0.15), { fill: C.white });
          if (!flat) s += ell(X + 2.8 * k + lx * 0.8, Y + 2.6 + ly * 0.6, 1.35 * sz, 1.4 * sz, { fill: C.white, op: 0.95 });
        }
      }
    }
    const b = e.brow || p.brow;
    if (b === 'worried')
      s += path(
        `M${f(x - side * 5)} -14.8C${f(x - side * 1)} -14.6 ${f(x + side * 3)} -12.9 ${f(x + side * 5.5)} -10.8`,
        line({ sw: 2.4 }),
      );
    if (b === 'angry')
      s += path(`M${f(x - side * 6.5)} -8.2C${f(x - side * 2)} -10.6 ${f(x + side * 3)} -12.6 ${f(x + side * 6.5)} -13`, line({ sw: 2.8 }));
    if (b === 'raised') s += path(`M${f(x - 5)} -13.6C${f(x - 2)} -16 ${f(x + 2)} -16 ${f(x + 5)} -13.6`, line({ sw: 2.3 }));
    if (b === 'flat') s += path(`M${f(x - 5.5)} -12.5L${f(x + 5.5)} -12.5`, line({ sw: 2.4 }));
    return s;
  }
  function mouth() {
    const L = line({ sw: 2.2 });
    const inside = C.mouth,
      tongue = C.tongue;
    switch (p.mouth) {
      case 'w':
        return path('M-5.6 9.6C-5 13 -.8 13 0 9.8C.8 13 5 13 5.6 9.6', L);
      case 'smile':
        return path('M-5 10.4C-3 13.8 3 13.8 5 10.4', L);
      case 'tiny':
        return path('M-2.6 11.2C-1.2 12.6 1.2 12.6 2.6 11.2', L);
      case 'flat':
        return path('M-3.6 11.8L3.6 11.8', L);
      case 'o':
        return ell(0, 13, 2.9, 3.3, { fill: inside, stroke: C.line, sw: 2 });
      case 'O':
        return ell(0, 14, 4.2, 5, { fill: inside, stroke: C.line, sw: 2.1 });
      case 'open':
        return (
          path('M-6.2 9.8C-2 11.2 2 11.2 6.2 9.8C6.6 20 -6.6 20 -6.2 9.8Z', { fill: inside }) +
          path('M-4 15.4C-2.2 13.2 2.2 13.2 4 15.4C2.6 18 -2.6 18 -4 15.4Z', { fill: tongue }) +
          path('M-6.2 9.8C-2 11.2 2 11.2 6.2 9.8C6.6 20 -6.6 20 -6.2 9.8Z', L)
        );
      case 'talk':
        return path('M-4 10.2C-1.4 11 1.4 11 4 10.2C4.2 16.8 -4.2 16.8 -4 10.2Z', line({ fill: inside, sw: 2.1 }));
      case 'wavy':
        return path('M-6.4 12.6C-5 10.2 -3.4 10.4 -2.2 12.2C-1 14 .6 14 2 12.2C3.2 10.4 4.8 10.4 6.4 12.6', L);
      case 'pout':
        return path('M-4.2 13.6C-2.6 10.2 2.6 10.2 4.2 13.6', L);
      case 'side':
        return path('M-3 12.4C-1 13 2.4 12.6 4.2 10.6', L);
      default:
        return '';
    }
  }
}
