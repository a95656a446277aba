// Contact sheets: every frame and every still image on one picture, for judging them by eye.
import fs from 'node:fs';
import path from 'node:path';
import { animationNames, stillNames } from './pack.mjs';

const grounds = { light: ['#f4f5f8', '#555a6a'], dark: ['#1e2028', '#c8cad4'], busy: ['#5d7a68', '#ffffff'] };

// A deterministic litter of blots, as unquiet as a photograph.
function busy(w, h) {
  let seed = 7;
  const random = () => (seed = (seed * 16807) % 2147483647) / 2147483647;
  const colours = ['#2f4a3c', '#86a06a', '#c9b26b', '#3d5f7a', '#a8c3cf', '#7b5a40', '#d8cfae', '#47343a', '#b5643f', '#e8e6da'];
  let s = '';
  for (let i = 0; i < (w * h) / 900; i++) {
    s +=
      `<ellipse cx="${(random() * w).toFixed(0)}" cy="${(random() * h).toFixed(0)}" rx="${(6 + random() * 38).toFixed(0)}" ` +
      `ry="${(4 + random() * 26).toFixed(0)}" fill="${colours[Math.floor(random() * colours.length)]}" fill-opacity=".55"/>`;
  }
  return s;
}

function sheet(cells, columns, px, ground, aspect) {
  const label = px < 100 ? 0 : 16,
    cw = Math.round(px * aspect),
    ch = px + label,
    rows = Math.ceil(cells.length / columns);
  const [fill, ink] = grounds[ground],
    w = cw * columns,
    h = ch * rows;
  let s = `<svg xmlns="http://www.w3.org/2000/svg" xmlns:xlink="http://www.w3.org/1999/xlink" width="${w}" height="${h}"><rect width="${w}" height="${h}" fill="${fill}"/>`;
  if (ground === 'busy') s += busy(w, h);
  cells.forEach(([name, svg], i) => {
    const x = (i % columns) * cw,
      y = Math.floor(i / columns) * ch;
    // Gradient names are unique within a document only.
    s += svg
      .trim()
      .replace(/\bid="/g, `id="c${i}_`)
      .replace(/(url\(|xlink:href=")#/g, `$1#c${i}_`)
      .replace(/^<svg ([^>]*?)width="\S+" height="\S+"/, `<svg $1x="${x}" y="${y}" width="${cw}" height="${px}"`);
    if (label)
      s += `<text x="${x + cw / 2}" y="${y + ch - 4}" text-anchor="middle" font-family="DejaVu Sans" font-size="10" fill="${ink}">${name}</text>`;
  });
  return s + '</svg>';
}

/** Writes the sheets of all characters into a folder; `convert(svg, png)` turns one file into the other. */
export function drawSheets(characters, folder, convert) {
  fs.mkdirSync(folder, { recursive: true });
  const write = (name, cells, columns, px, ground, aspect) => {
    const svg = path.join(folder, `${name}.svg`),
      png = path.join(folder, `${name}.png`);
    fs.writeFileSync(svg, sheet(cells, columns, px, ground, aspect));
    convert(svg, png);
    fs.rmSync(svg);
    console.log(png);
  };
  for (const c of characters) {
    const frames = animationNames.flatMap(name =>
      Array.from({ length: c.animations[name] }, (_, i) => [`${name} ${i + 1}`, name, i / c.animations[name]]),
    );
    const drawn = frames.map(([label, name, t]) => [label, c.frame(name, t, 'pink')]);
    const stills = stillNames.map(name => [name, c.still(name, 'pink')]);
    const aspect = 6 / 5;
    for (let part = 0; part < 3; part++) {
      const names = animationNames.slice(part * 8, part * 8 + 8);
      const rows = names.flatMap(name => {
        const r = drawn.filter(([l]) => l.replace(/ \d+$/, '') === name);
        return [...r, ...Array(10 - r.length).fill(['', '<svg width="1" height="1"></svg>'])];
      });
      write(`${c.folder}-frames-${part + 1}`, rows, 10, 150, 'light', aspect);
    }
    for (const ground of ['light', 'dark', 'busy']) write(`${c.folder}-75-${ground}`, [...drawn, ...stills], 24, 75, ground, aspect);
    for (const ground of ['light', 'dark']) write(`${c.folder}-stills-300-${ground}`, stills, 4, 300, ground, aspect);
    write(
      `${c.folder}-tints`,
      ['pink', 'blue', 'green', 'purple'].flatMap(t =>
        ['idle', 'thinking', 'sleeping', 'coffee', 'approval', 'success'].map(n => [`${n} ${t}`, c.still(n, t)]),
      ),
      6,
      150,
      'light',
      aspect,
    );
  }
}
