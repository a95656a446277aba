// The files of a pet pack: images/<name>.svg, frames/<animation>/01.svg and on, pack.json.

// The animations and still images that a whole pack has.
export const animationNames = [
  'idle',
  'thinking',
  'coding',
  'reading',
  'searching',
  'running',
  'browsing',
  'planning',
  'compacting_context',
  'responding',
  'approval',
  'input',
  'wave',
  'warning',
  'sleeping',
  'walk',
  'coffee',
  'relaxing',
  'drowsy',
  'react_startled',
  'react_grumpy',
  'react_shoo',
  'react_happy',
  'react_shy',
];
export const stillNames = [
  'idle',
  'thinking',
  'coding',
  'input',
  'approval',
  'success',
  'warning',
  'sleeping',
  'coffee',
  'happy',
  'sad',
  'wave',
];
// Frames a second at which the program plays them.
export const framesPerSecond = {
  idle: 4,
  thinking: 8,
  coding: 6,
  reading: 6,
  searching: 8,
  running: 10,
  browsing: 6,
  planning: 6,
  compacting_context: 10,
  responding: 7,
  approval: 8,
  input: 7,
  wave: 6,
  warning: 14,
  sleeping: 3,
  walk: 12,
  coffee: 6,
  relaxing: 6,
  drowsy: 4,
  react_startled: 12,
  react_grumpy: 10,
  react_shoo: 10,
  react_happy: 12,
  react_shy: 8,
};

const defaultTint = 'pink';

/** The text of a pack.json: as usual, but lists on one line. */
export const manifest = pack =>
  JSON.stringify(pack, null, 2).replace(/\[\s+([^\]]*?)\s+\]/g, (_, list) => `[${list.replace(/\s+/g, ' ')}]`) + '\n';

/** [[name, content]...] of a whole pack, in the default tint. */
export function drawPack(c) {
  const files = [];
  for (const name of stillNames) files.push([`images/${name}.svg`, c.still(name, defaultTint)]);
  for (const name of animationNames) {
    const n = c.animations[name];
    if (n < 6 || n > 10) throw new Error(`${c.folder}: ${name} has ${n} frames`);
    for (let i = 0; i < n; i++) files.push([`frames/${name}/${String(i + 1).padStart(2, '0')}.svg`, c.frame(name, i / n, defaultTint)]);
  }
  // "accent" are the colours that a tint replaces; "tints" has, in the same order, what they become.
  const pack = {
    ...c.pack,
    version: '1.0',
    license: c.pack.license ?? 'GPL-3.0-or-later',
    accent: c.tints[defaultTint],
    tints: c.tints,
  };
  files.push(['pack.json', manifest(pack)]);
  checkAccent(c, files);
  return files;
}

// The program tints by replacing text, so an accent colour must be spelled as in pack.json, and no fixed colour may look like one.
function checkAccent(c, files) {
  for (const [name, content] of files) {
    const odd = content.match(/#[0-9a-f]*[A-F][0-9a-fA-F]*/);
    if (name.endsWith('.svg') && odd) throw new Error(`${c.folder}/${name}: write ${odd[0]} in lower case`);
  }
  for (const name of Object.keys(c.animations)) {
    const [from, to] = [c.tints[defaultTint], c.tints.blue];
    const swapped = from.reduce((text, colour, i) => text.split(colour).join(to[i]), c.frame(name, 0, defaultTint));
    if (swapped !== c.frame(name, 0, 'blue')) throw new Error(`${c.folder}: ${name} cannot be tinted by replacing its accent`);
  }
}
