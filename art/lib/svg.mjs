// SVG markup for the characters: shapes as strings, path geometry, documents.
//
// Only what Qt's SVG Tiny renderer draws is emitted: paths with M L C Q Z, ellipses, groups, transforms, gradients in user
// space and opacities. Lengths are user units of the character's view box. Caps and joins are round and the fill is none unless
// a shape says otherwise; the document's root carries those defaults, so single shapes stay short.

export const TAU = Math.PI * 2;
export const rad = degrees => (degrees * Math.PI) / 180;
export const lerp = (a, b, t) => a + (b - a) * t;
export const clamp = (v, lo = 0, hi = 1) => Math.max(lo, Math.min(hi, v));

/** A number as short text: at most `decimals` places, no leading zero, no negative zero. */
export const num = (n, decimals = 2) => {
  const scale = 10 ** decimals;
  // Ties are pushed over, so that the last bit of a sine, which differs between versions of node, decides nothing.
  const text = String(Math.round(n * scale + 1e-6) / scale);
  return text === '-0' ? '0' : text.replace(/^(-?)0\./, '$1.');
};
export const pt = p => `${num(p[0])} ${num(p[1])}`;

const ATTRIBUTES = { fill: 'fill', stroke: 'stroke', sw: 'stroke-width', transform: 'transform' };
function attributes(o) {
  let s = '';
  for (const [key, name] of Object.entries(ATTRIBUTES)) {
    const v = o[key];
    if (v !== undefined && v !== null && !(key === 'fill' && v === 'none')) s += ` ${name}="${typeof v === 'number' ? num(v) : v}"`;
  }
  if (o.op !== undefined && o.op < 1) {
    if (o.fill && o.fill !== 'none') s += ` fill-opacity="${num(o.op)}"`;
    if (o.stroke) s += ` stroke-opacity="${num(o.op)}"`;
  }
  return s;
}

// Shapes take { fill, stroke, sw (stroke width), op (opacity of both), transform }.
export const path = (d, o = {}) => `<path d="${d}"${attributes(o)}/>`;
export const ell = (cx, cy, rx, ry, o = {}) =>
  '<ellipse' +
  Object.entries({ cx, cy, rx, ry })
    .map(([name, v]) => (num(v) === '0' ? '' : ` ${name}="${num(v)}"`))
    .join('') +
  attributes(o) +
  '/>';
export const group = (transform, ...content) => {
  const inner = content.flat(9).filter(Boolean).join('');
  return transform && inner ? `<g transform="${transform}">${inner}</g>` : inner;
};
export const faded = (op, ...content) => {
  const inner = content.flat(9).filter(Boolean).join('');
  return op < 1 ? `<g fill-opacity="${num(op)}" stroke-opacity="${num(op)}">${inner}</g>` : inner;
};
// Transforms that change nothing are not written.
export const translate = (x, y) => (num(x) === '0' && num(y) === '0' ? '' : `translate(${num(x)} ${num(y)})`);
export const rotate = (a, x = 0, y = 0) => (num(a) === '0' ? '' : x || y ? `rotate(${num(a)} ${num(x)} ${num(y)})` : `rotate(${num(a)})`);
export const scale = (x, y = x) =>
  num(x, 3) === '1' && num(y, 3) === '1' ? '' : x === y ? `scale(${num(x, 3)})` : `scale(${num(x, 3)} ${num(y, 3)})`;
/** Content placed at (x, y), turned by r degrees and scaled by s (a number or a pair). */
export const at = (x, y, r = 0, s = 1, inner = '') => group(translate(x, y) + rotate(r) + scale(...[].concat(s)), inner);

export const poly = (points, close = true) => 'M' + points.map(pt).join('L') + (close ? 'Z' : '');

/** A smooth curve through the points (Catmull-Rom, as cubics). */
export function spline(points, closed = false) {
  const n = points.length,
    p = i => (closed ? points[(i + n) % n] : points[clamp(i, 0, n - 1)]);
  let d = 'M' + pt(points[0]);
  for (let i = 0; i < (closed ? n : n - 1); i++) {
    const a = p(i - 1),
      b = p(i),
      c = p(i + 1),
      e = p(i + 2);
    d += `C${pt([b[0] + (c[0] - a[0]) / 6, b[1] + (c[1] - a[1]) / 6])} ${pt([c[0] - (e[0] - b[0]) / 6, c[1] - (e[1] - b[1]) / 6])} ${pt(c)}`;
  }
  return d + (closed ? 'Z' : '');
}
/** The same without its first move, to go on from the current point. */
export const splineOn = points => spline(points).replace(/^M[^C]+/, '');

/** A rounded rectangle. */
export function roundRect(x, y, w, h, r) {
  const k = r * 0.45,
    X = x + w,
    Y = y + h;
  return (
    `M${pt([x + r, y])}L${pt([X - r, y])}C${pt([X - k, y])} ${pt([X, y + k])} ${pt([X, y + r])}L${pt([X, Y - r])}` +
    `C${pt([X, Y - k])} ${pt([X - k, Y])} ${pt([X - r, Y])}L${pt([x + r, Y])}C${pt([x + k, Y])} ${pt([x, Y - k])} ${pt([x, Y - r])}` +
    `L${pt([x, y + r])}C${pt([x, y + k])} ${pt([x + k, y])} ${pt([x + r, y])}Z`
  );
}

/** A piece of an ellipse, angles in degrees, 0 to the right and 90 down; without `move` it goes on from the current point. */
export function arc(cx, cy, rx, ry, from, to, move = true) {
  const n = Math.max(1, Math.ceil(Math.abs(to - from) / 60)),
    step = rad((to - from) / n),
    k = (4 / 3) * Math.tan(step / 4);
  const p = t => [cx + rx * Math.cos(t), cy + ry * Math.sin(t)],
    tangent = t => [-rx * Math.sin(t), ry * Math.cos(t)];
  let a = rad(from),
    d = move ? 'M' + pt(p(a)) : '';
  for (let i = 0; i < n; i++, a += step) {
    const b = p(a),
      e = p(a + step),
      u = tangent(a),
      v = tangent(a + step);
    d += `C${pt([b[0] + k * u[0], b[1] + k * u[1]])} ${pt([e[0] - k * v[0], e[1] - k * v[1]])} ${pt(e)}`;
  }
  return d;
}

/** The lands of a small globe of radius r as it turns; phase 0..1 is a third of a turn, after which the pattern repeats. */
export function globeLands(r, phase) {
  const coast = [
    [-32, 20],
    [-18, 42],
    [6, 50],
    [26, 34],
    [22, 12],
    [8, 4],
    [4, -18],
    [-8, -40],
    [-20, -30],
    [-16, -8],
    [-30, 2],
  ];
  const lands = [];
  for (let copy = -1; copy <= 1; copy++) {
    const turn = (copy + phase) * 120;
    if (coast.every(([lon]) => Math.abs(lon + turn) > 86)) continue;
    lands.push(
      spline(
        coast.map(([lon, lat]) => {
          const l = rad(clamp(lon + turn, -88, 88)),
            b = rad(lat + copy * 7);
          return [r * Math.cos(b) * Math.sin(l), -r * Math.sin(b)];
        }),
        true,
      ),
    );
  }
  return lands;
}

// Path data are written with relative commands: about a third shorter. Positions are tracked as rounded, so nothing drifts.
function compact(d, decimals) {
  const k = 10 ** decimals,
    q = n => Math.round(n * k);
  let out = '',
    x = 0,
    y = 0,
    sx = 0,
    sy = 0,
    last = '';
  const write = (command, values) => {
    let s = '';
    values.forEach((v, i) => {
      const t = num(v / k, decimals);
      s += (i && t[0] !== '-') || (!i && command === last && t[0] !== '-') ? ' ' + t : t;
    });
    out += (command === last ? '' : command) + s;
    last = command;
  };
  for (const [, command, rest] of d.matchAll(/([MLCQZ])([^MLCQZ]*)/g)) {
    const v = (rest.match(/-?(?:\d+\.?\d*|\.\d+)/g) || []).map(Number);
    if (command === 'Z') {
      out += 'z';
      x = sx;
      y = sy;
      last = '';
      continue;
    }
    const size = { M: 2, L: 2, C: 6, Q: 4 }[command];
    for (let i = 0; i < v.length; i += size) {
      const p = v.slice(i, i + size).map(q);
      if (command === 'M') {
        last = '';
        write('M', p);
        last = '';
        sx = p[0];
        sy = p[1];
      } else
        write(
          command.toLowerCase(),
          p.map((n, j) => n - (j % 2 ? y : x)),
        );
      x = p[size - 2];
      y = p[size - 1];
    }
  }
  return out;
}

/**
 * A whole document. `defs` holds gradients by id; those that nothing refers to are left out. `decimals` is the precision of
 * positions and sizes. Content ends with a line break, as text files do.
 */
export function document({ width, height, content, defs = {}, decimals = 2 }) {
  // Alike gradients become one.
  const names = new Map();
  for (const [id, markup] of Object.entries(defs)) {
    const body = markup.replace(/ id="[^"]*"/, '');
    if (names.has(body)) content = content.split(`url(#${id})`).join(`url(#${names.get(body)})`);
    else names.set(body, id);
  }
  const used = Object.entries(defs)
    .filter(([id]) => content.includes(`url(#${id})`))
    .map(([, markup]) => markup)
    .join('');
  let body = content
    .replace(/ d="([^"]*)"/g, (_, d) => ` d="${compact(d, decimals)}"`)
    .replace(/ (c[xy]|r[xy])="([^"]*)"/g, (_, name, v) => ` ${name}="${num(Number(v), decimals)}"`)
    .replace(/translate\(([^ ]+) ([^)]+)\)/g, (_, x, y) => `translate(${num(Number(x), decimals)} ${num(Number(y), decimals)})`);
  // The commonest stroke width becomes the default.
  const widths = new Map();
  for (const [, w] of body.matchAll(/<(?:path|ellipse)[^>]* stroke-width="([^"]+)"/g)) widths.set(w, (widths.get(w) ?? 0) + 1);
  const common = [...widths].reduce((best, w) => (w[1] > best[1] ? w : best), ['1', 0])[0];
  body = body.replace(/<(path|ellipse)[^>]*>/g, shape => shape.replace(` stroke-width="${common}"`, ''));
  // A shape drawn twice, say filled and outlined, is written once.
  const counts = new Map();
  for (const [d] of body.matchAll(/<path d="[^"]{50,}"/g)) counts.set(d, (counts.get(d) ?? 0) + 1);
  let shapes = '',
    n = 0;
  for (const [d, count] of counts) {
    if (count < 2) continue;
    shapes += d.replace('<path', `<path id="s${n}"`) + '/>';
    body = body.split(d).join(`<use xlink:href="#s${n++}"`);
  }
  return (
    `<svg xmlns="http://www.w3.org/2000/svg"${shapes ? ' xmlns:xlink="http://www.w3.org/1999/xlink"' : ''} version="1.2" baseProfile="tiny" ` +
    `width="${width}" height="${height}" viewBox="0 0 ${width} ${height}">${used || shapes ? `<defs>${used}${shapes}</defs>` : ''}` +
    `<g fill="none"${common === '1' ? '' : ` stroke-width="${common}"`} stroke-linecap="round" stroke-linejoin="round">${body}</g></svg>\n`
  );
}

// Beyond its ends a gradient keeps its colour, so a first or last stop that repeats its neighbour says nothing.
const same = (a, b) => a && b && a[1] === b[1] && (a[2] ?? 1) === (b[2] ?? 1);
const stops = list =>
  list
    .filter((s, i) => !(i === 0 && same(s, list[1])) && !(i > 1 && i === list.length - 1 && same(s, list[i - 1])))
    .map(
      ([offset, colour, op]) =>
        `<stop offset="${num(offset)}" stop-color="${colour}"${op !== undefined && op < 1 ? ` stop-opacity="${num(op)}"` : ''}/>`,
    )
    .join('');
export const linearGradient = (id, x1, y1, x2, y2, list) =>
  `<linearGradient id="${id}" gradientUnits="userSpaceOnUse" ` +
  `x1="${num(x1)}" y1="${num(y1)}" x2="${num(x2)}" y2="${num(y2)}">${stops(list)}</linearGradient>`;
export const radialGradient = (id, cx, cy, r, list) =>
  `<radialGradient id="${id}" gradientUnits="userSpaceOnUse" ` +
  `cx="${num(cx)}" cy="${num(cy)}" r="${num(r)}">${stops(list)}</radialGradient>`;

// ---- colours
export const mix = (a, b, t) =>
  '#' +
  [1, 3, 5]
    .map(i =>
      Math.round(lerp(parseInt(a.slice(i, i + 2), 16), parseInt(b.slice(i, i + 2), 16), t))
        .toString(16)
        .padStart(2, '0'),
    )
    .join('');
export function hsl(h, s, l) {
  s /= 100;
  l /= 100;
  const a = s * Math.min(l, 1 - l),
    k = n => (n + h / 30) % 12;
  const channel = n =>
    Math.round(255 * (l - a * Math.max(-1, Math.min(k(n) - 3, 9 - k(n), 1))))
      .toString(16)
      .padStart(2, '0');
  return '#' + channel(0) + channel(8) + channel(4);
}
