// The program's own icons: application, status bar, mascot, and the one-colour glyphs for agents and activities.
//
// One-colour glyphs are black; the program paints them in the colour of the text beside them. The glyphs of the agents are general
// shapes, never anybody's sign.
import { arc, at, document, ell, linearGradient, path, roundRect } from '../lib/svg.mjs';
import { animations } from '../nibbo/animations.mjs';
import { draw, height, pose, tints, width } from '../nibbo/rig.mjs';
import * as X from '../nibbo/props.mjs';

const ink = '#000000';
const stroke = (d, sw = 2) => path(d, { stroke: ink, sw });
const solid = d => path(d, { fill: ink });
const dot = (x, y, r) => ell(x, y, r, r, { fill: ink });
const circle = (x, y, r, sw = 2) => ell(x, y, r, r, { stroke: ink, sw });
const glyph = (...content) => document({ width: 24, height: 24, content: content.join('') });
const star = (x, y, r) =>
  at(x, y, 0, r, path('M0 -1C.12 -.36 .36 -.12 1 0C.36 .12 .12 .36 0 1C-.12 .36 -.36 .12 -1 0C-.36 -.12 -.12 -.36 0 -1Z', { fill: ink }));
const square = stroke(roundRect(3, 3, 18, 18, 4.5));

const providers = {
  claude: glyph(star(10, 13.2, 8.4), star(18.6, 5.4, 4), star(19.2, 18.8, 2.8)),
  codex: glyph(stroke(roundRect(2.6, 4, 18.8, 16, 3.6)), stroke('M6.8 9L10 12L6.8 15M12.6 15.2L17 15.2')),
  gemini: glyph(
    stroke(
      'M12 2.6C12.9 2.6 13.4 3 14 3.6L20.4 10C21.7 11.3 21.7 12.7 20.4 14L14 20.4C12.7 21.7 11.3 21.7 10 20.4L3.6 14C2.3 12.7 2.3 11.3 3.6 10L10 3.6C10.6 3 11.1 2.6 12 2.6Z',
    ),
  ),
  opencode: glyph(
    stroke(
      'M9 3.4C6 3.4 6.4 6 6.4 8.2C6.4 10.4 5.6 12 3.4 12C5.6 12 6.4 13.6 6.4 15.8C6.4 18 6 20.6 9 20.6M15 3.4C18 3.4 17.6 6 17.6 8.2C17.6 10.4 18.4 12 20.6 12C18.4 12 17.6 13.6 17.6 15.8C17.6 18 18 20.6 15 20.6',
    ),
  ),
  qwen: glyph(square, circle(12, 11.8, 4.2), stroke('M13.4 13.4L16.6 16.8')),
  qoder: glyph(circle(12, 12, 9.4), circle(12, 11.8, 4.2), stroke('M13.4 13.4L16.6 16.8')),
  codebuddy: glyph(
    circle(8.6, 8, 3.2),
    stroke('M2.6 19.4C2.6 15.6 5 13.8 8.6 13.8C12.2 13.8 14.6 15.6 14.6 19.4Z'),
    stroke('M14.6 5C16.8 4.4 19.2 5.8 19.2 8C19.2 10.2 16.8 11.6 14.6 11M17.4 14.2C20 14.8 21.4 16.6 21.4 19.4L18.4 19.4'),
  ),
  kimi: glyph(square, stroke('M8.8 7.6L8.8 16.4M15.4 7.6L9 12.4M11.2 11L15.6 16.4')),
  iflow: glyph(
    stroke(
      'M2.6 8.6L13 8.6C16.4 8.6 16.4 3.6 13.2 3.6C11.8 3.6 11 4.4 10.8 5.4M2.6 12.4L18 12.4C22.4 12.4 22.2 6.8 18.6 6.8C17.4 6.8 16.4 7.4 16.2 8.600M2.6 16.2L12 16.2C15.4 16.2 15.2 20.8 12.2 20.8C11 20.8 10.2 20.2 10 19.2',
    ),
  ),
  cursor: glyph(
    path('M9.6 9.6L20.8 13.8L15.8 15.8L13.8 20.8Z', { fill: ink, stroke: ink, sw: 1.6 }),
    stroke('M9.4 2.6L9.4 5M4.6 4.6L6.2 6.2M2.6 9.400L5 9.4M4.6 14.2L6.2 12.6M14.2 4.6L12.6 6.2'),
  ),
  copilot: glyph(stroke('M7.4 7L2.6 12L7.4 17M16.6 7L21.4 12L16.6 17M13.8 5L10.2 19')),
  cline: glyph(
    square,
    stroke('M15.4 9.200C14.6 8 13.4 7.4 12.2 7.4C9.6 7.4 8 9.4 8 12C8 14.6 9.6 16.6 12.2 16.6C13.4 16.6 14.6 16 15.4 14.8'),
  ),
};

const activities = {
  pencil: glyph(stroke('M4 20L5 15.4L16 4.4C17 3.4 18.4 3.4 19.4 4.4L19.6 4.6C20.6 5.6 20.6 7 19.6 8L8.6 19ZM14 6.6L17.4 10')),
  book: glyph(
    stroke(
      'M12 6.6C9.6 4.8 6.4 4.4 2.8 4.8L2.8 18.2C6.4 17.8 9.6 18.2 12 20C14.4 18.2 17.6 17.8 21.2 18.2L21.2 4.8C17.6 4.4 14.4 4.8 12 6.6ZM12 6.6L12 20',
    ),
  ),
  magnifyingglass: glyph(circle(10.4, 10.4, 6.8, 2.2), stroke('M15.4 15.4L21 21', 2.6)),
  terminal: providers.codex,
  globe: glyph(
    circle(12, 12, 9.4),
    stroke('M2.8 12L21.2 12' + arc(12, 12, 4, 9.4, 0, 360)),
    stroke('M4.6 7C8.6 8.6 15.4 8.6 19.4 7M4.6 17C8.6 15.4 15.4 15.4 19.4 17', 1.4),
  ),
  checklist: glyph(
    stroke('M3 5.8L4.8 7.6L8 3.8M3 12.800L4.8 14.600L8 10.8'),
    ell(5.4, 19, 1.7, 1.7, { stroke: ink, sw: 1.8 }),
    stroke('M11.8 5.8L21 5.8M11.8 12.6L21 12.6M11.8 19L21 19'),
  ),
};

// The pages of the settings window.
const settings = {
  general: glyph(stroke('M4 7L12 7M18 7L20 7M4 17L6 17M12 17L20 17'), circle(15, 7, 2.5), circle(9, 17, 2.5)),
  pet: glyph(
    stroke(
      'M12 12.5C9.4 12.5 7 15 7 17.2C7 18.9 8.3 20 9.8 20C10.6 20 11.2 19.6 12 19.6C12.8 19.6 13.4 20 14.2 20C15.7 20 17 18.9 17 17.2C17 15 14.6 12.5 12 12.5Z',
    ),
    stroke('M4.8 10.5L5 11.3M9 5L9.2 6.2M15 5L14.8 6.2M19.2 10.5L19 11.3', 3.4),
  ),
  appearance: glyph(
    stroke(
      arc(12, 12, 8.5, 8.5, -90, -270) +
        'C13.5 20.5 14 19.5 14 18.6C14 17.2 13 17 13 15.9C13 14.9 13.8 14.2 14.9 14.2L17.3 14.2C19.2 14.2 20.5 12.8 20.5 10.9C20.5 6.7 16.7 3.5 12 3.5Z',
    ),
    [
      [8, 9.5],
      [12, 7.5],
      [16, 9.5],
      [7.5, 13.5],
    ]
      .map(([x, y]) => dot(x, y, 1.3))
      .join(''),
  ),
  approvals: glyph(
    stroke(
      'M12 3L19.5 5.8L19.5 11.5C19.5 16.1 16.3 19.4 12 21C7.7 19.4 4.5 16.1 4.5 11.5L4.5 5.8ZM8.7 12L11.1 14.4L15.4 9.8',
    ),
  ),
  notifications: glyph(
    stroke('M6 10C6 6.5 8.5 4 12 4C15.5 4 18 6.5 18 10C18 14.5 20 16 20 16.5L4 16.5C4 16 6 14.5 6 10ZM10 20L14 20'),
  ),
  sessions: glyph(stroke('M4 6L14 6M4 12L20 12M4 18L11 18'), circle(19, 6, 1), circle(16, 18, 1)),
  agents: glyph(stroke(roundRect(3, 4, 18, 16, 3)), stroke('M7.5 9L10.5 12L7.5 15M13 15L17 15')),
  summaries: glyph(
    stroke('M11 4L12.7 8.8L17.5 10.5L12.7 12.2L11 17L9.3 12.2L4.5 10.5L9.3 8.8Z'),
    stroke('M18.5 15.5L19.3 17.7L21.5 18.5L19.3 19.3L18.5 21.5L17.7 19.3L15.5 18.5L17.7 17.7Z'),
  ),
  advanced: glyph(
    stroke(
      'M14.5 6.5C15.3 4.4 17.8 3.2 20.2 3.8L17.3 6.7L17.3 8.7L19.3 8.7L22.2 5.8C22.6 9.6 19.6 12.6 16.2 11.5L8.2 19.5C6.2 21.5 3.2 18.5 5.2 16.5L13.2 8.5C13.4 7.7 13.9 7 14.5 6.5Z',
    ),
  ),
};

// Nibbo's mark in 36 units: the mochi head and the two notched petals. Ears and eyes stay apart at 16 px.
const headOutline = 'M18 12.500C25.5 12.5 30.6 17 31.4 23.6C32 29.4 30 33 25.4 33L10.6 33C6 33 4 29.4 4.6 23.6C5.4 17 10.5 12.5 18 12.5Z';
const petal = side => {
  const points = 'M14.6 16.4C9 16.6 2.6 13.2 1.4 8.8C.7 6 2.4 4.2 5 5C5 2.2 7.2 .9 9.6 2.3C13.4 4.6 15.8 9.4 16.2 14.4Z';
  return side < 0 ? points : points.replace(/(-?[\d.]+) (-?[\d.]+)/g, (_, x, y) => `${(36 - x).toFixed(2)} ${y}`);
};
// Wound the other way round, so that the eyes are holes.
const hole = (x, y, rx, ry) => arc(x, y, rx, ry, 360, 0) + 'Z';
const symbolic = document({
  width: 16,
  height: 16,
  content: at(
    0,
    0,
    0,
    16 / 36,
    [-1, 1].map(s => solid(petal(s))).join('') + solid(headOutline + hole(12.2, 23, 2.5, 3.4) + hole(23.8, 23, 2.5, 3.4)),
  ),
});
const [, main, , blush] = tints.pink;
const menuBar = document({
  width: 36,
  height: 36,
  content:
    [-1, 1].map(s => path(petal(s), { fill: main, stroke: '#6b4a47', sw: 2.2 })).join('') +
    path(headOutline, { fill: '#fff5e4', stroke: '#6b4a47', sw: 2.2 }) +
    [-1, 1]
      .map(
        s =>
          ell(18 + s * 10.2, 27.4, 2.3, 1.5, { fill: blush }) +
          ell(18 + s * 6, 23, 2.4, 3.2, { fill: '#2b1c24' }) +
          ell(18 + s * 6 - 0.8, 21.7, 0.9, 1, { fill: '#ffffff' }),
      )
      .join('') +
    path('M15.6 27.4C16.2 29 17.6 29 18 27.6C18.4 29 19.8 29 20.4 27.4', { stroke: '#6b4a47', sw: 1.5 }),
});

// The application: Nibbo looks over the edge of a terminal.
function application() {
  const figure = draw(
    pose(animations.running.pose(0), {
      lift: 12,
      tilt: 0,
      mouth: 'smile',
      eyes: { shape: 'open', lx: 0, ly: 0 },
      earL: { a: 20, c: 10 },
      earR: { a: 20, c: 10 },
      tail: { a: 58 },
      front: null,
      armL: null,
      armR: null,
    }),
  );
  const paws = [-1, 1]
    .map(s => at(128 + s * 46, 165, 0, 1, path('M-15 12C-16 -12 16 -12 15 12Z', { fill: '#fff5e4', stroke: '#6b4a47', sw: 4 })))
    .join('');
  const content =
    path(roundRect(12, 12, 232, 232, 56), { fill: 'url(#sky)' }) +
    at(-26, -22, 0, 1.7, figure.content) +
    path('M12 172L244 172L244 188C244 222 222 244 188 244L68 244C34 244 12 222 12 188Z', { fill: '#3c4159', stroke: '#6b4a47', sw: 4 }) +
    paws +
    path('M50 194L68 208L50 222', { stroke: '#9fe0be', sw: 10 }) +
    path('M88 222L130 222', { stroke: '#9fe0be', sw: 10 }) +
    path('M152 222L206 222', { stroke: '#5b6180', sw: 10 });
  return document({
    width: 256,
    height: 256,
    content,
    defs: {
      ...figure.defs,
      sky: linearGradient('sky', 128, 12, 128, 244, [[0, '#a9cdf6'], [1, '#7f9be6']]),
    },
  });
}

// The mascot of the welcome page: waves, with sparkles, in the middle of a square.
function mascot() {
  const figure = draw(
    pose({
      tilt: 3,
      eyes: { shape: 'happy' },
      mouth: 'open',
      blush: 0.9,
      armR: { x: 54, y: -54, sh: [38, -27], pad: 1 },
      armL: { x: -52, y: -34, sh: [-36, -24], bow: 3 },
      earL: { a: 20, c: 10 },
      earR: { a: 24, c: 14 },
      fx: K =>
        X.sparkle(26, 46, 1, undefined, 12) +
        X.sparkle(160, 40, 0.8, undefined, -10) +
        at(164, 98, 20, 0.9, X.petalIcon(0, 0, 1, K.A.m)) +
        at(15, 84, -24, 0.9, X.petalIcon(0, 0, 1, K.A.m)),
    }),
  );
  return document({ width, height, ...figure });
}

const halfTurn = d => stroke(d) + at(24, 24, 180, 1, stroke(d));
const halfLink = side => `M${side * 2} -3.6L${side * 5} -3.6` + arc(side * 5, 0, 3.6, 3.6, -90, side * 90 + (side < 0 ? -180 : 0), false) + `L${side * 2} 3.6`;
const onboarding = {
  'arrow.triangle.2.circlepath': glyph(halfTurn(arc(12, 12, 8, 8, 190, 338) + 'M19.8 4L19.8 8.9L14.9 8.9')),
  'checkmark.circle.fill': glyph(solid(arc(12, 12, 10, 10, 0, 360) + 'ZM7.4 11.3L5.9 12.8L10.2 17.1L18.2 8.5L16.7 7.1L10.1 14.2Z')),
  link: glyph(at(12, 12, -45, 1, stroke(halfLink(-1) + halfLink(1) + 'M-3.6 0L3.6 0'))),
  photo: glyph(stroke(roundRect(3, 4.5, 18, 15, 3.2)), stroke('M3.6 17.4L8.6 12.2L12.2 15.8L14.8 13.4L20.2 18.2'), dot(15.6, 9, 1.7)),
  'square.and.arrow.down': glyph(
    stroke('M8 9L7 9C5.3 9 4 10.3 4 12L4 18C4 19.7 5.3 21 7 21L17 21C18.7 21 20 19.7 20 18L20 12C20 10.3 18.7 9 17 9L16 9'),
    stroke('M12 2.8L12 14.8M8.2 11L12 14.8L15.8 11'),
  ),
};

/** [[path below resources/icons, content]...]. */
export function drawIcons() {
  return [
    ['nibbo.svg', application()],
    ['nibbo-symbolic.svg', symbolic],
    ['MenuBarIcon.svg', menuBar],
    ['MenuBarIcon-symbolic.svg', symbolic],
    ['NibboMascot.svg', mascot()],
    ...Object.entries(providers).map(([name, content]) => [`providers/${name}.svg`, content]),
    ...Object.entries(activities).map(([name, content]) => [`activity/${name}.svg`, content]),
    ...Object.entries(settings).map(([name, content]) => [`settings/${name}.svg`, content]),
    ...Object.entries(onboarding).map(([name, content]) => [`onboarding/${name}.svg`, content]),
  ];
}
