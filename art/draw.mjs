#!/usr/bin/env node
// Redraws the program's pictures from their rigs.
//
//   node art/draw.mjs                 writes resources/pets and resources/icons
//   node art/draw.mjs --check         writes nothing; names every file that differs from what would be drawn, and fails then
//   node art/draw.mjs --sheet DIR     writes contact sheets (PNG) for looking at; needs rsvg-convert
import { execFileSync } from 'node:child_process';
import fs from 'node:fs';
import path from 'node:path';
import { fileURLToPath } from 'node:url';
import furli from './furli/character.mjs';
import nibbo from './nibbo/character.mjs';
import { drawIcons } from './icons/icons.mjs';
import { drawPack } from './lib/pack.mjs';
import { drawSheets } from './lib/sheets.mjs';
import { drawTemplate } from './template/template.mjs';

const root = path.join(path.dirname(fileURLToPath(import.meta.url)), '..', 'resources');
const characters = [nibbo, furli];

/** Everything that is drawn: content by path below resources/. */
function drawAll() {
  const files = new Map();
  for (const c of characters) for (const [name, content] of drawPack(c)) files.set(`pets/${c.folder}/${name}`, content);
  for (const [name, content] of drawTemplate()) files.set(`pets/template/${name}`, content);
  for (const [name, content] of drawIcons()) files.set(`icons/${name}`, content);
  return files;
}

/** Drawn files that are there: every SVG below the drawn folders, and what else is drawn. Other files there are not ours. */
function committed(files) {
  const found = new Set();
  const walk = dir => {
    if (!fs.existsSync(path.join(root, dir))) return;
    for (const e of fs.readdirSync(path.join(root, dir), { withFileTypes: true })) {
      if (e.isDirectory()) walk(`${dir}/${e.name}`);
      else if (e.name.endsWith('.svg')) found.add(`${dir}/${e.name}`);
    }
  };
  for (const folder of [...characters.map(c => `pets/${c.folder}`), 'pets/template', 'icons']) walk(folder);
  for (const name of files.keys()) if (fs.existsSync(path.join(root, name))) found.add(name);
  return found;
}

const [option, argument] = process.argv.slice(2);
if (option === undefined) {
  const files = drawAll();
  for (const name of committed(files)) if (!files.has(name)) fs.rmSync(path.join(root, name));
  let bytes = 0;
  for (const [name, content] of files) {
    const file = path.join(root, name);
    fs.mkdirSync(path.dirname(file), { recursive: true });
    if (!fs.existsSync(file) || fs.readFileSync(file, 'utf8') !== content) fs.writeFileSync(file, content);
    bytes += Buffer.byteLength(content);
  }
  console.log(`${files.size} files, ${Math.round(bytes / 1024)} KiB`);
} else if (option === '--check') {
  const files = drawAll(),
    found = committed(files),
    wrong = [];
  for (const [name, content] of files) {
    if (!found.has(name)) wrong.push(`missing: resources/${name}`);
    else if (fs.readFileSync(path.join(root, name), 'utf8') !== content) wrong.push(`not what the rig draws: resources/${name}`);
  }
  for (const name of found) if (!files.has(name)) wrong.push(`drawn by nothing: resources/${name}`);
  if (wrong.length) {
    console.error(`${wrong.join('\n')}\nRun "node art/draw.mjs" and commit the result.`);
    process.exit(1);
  }
  console.log(`${files.size} files are what the rigs draw`);
} else if (option === '--sheet' && argument) {
  drawSheets(characters, argument, (svg, png) => execFileSync('rsvg-convert', ['--unlimited', '-o', png, svg]));
} else {
  console.error('usage: draw.mjs [--check | --sheet DIR]');
  process.exit(2);
}
