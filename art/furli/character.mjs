// Furli, the second animal, as the drawing command sees it.
import { document } from '../lib/svg.mjs';
import { animations, stills } from './animations.mjs';
import { draw, height, tints, width } from './rig.mjs';

const page = (pose, tint) => document({ width, height, decimals: 1, ...draw(pose, tint) });

export default {
  folder: 'furli',
  pack: { name: 'Furli', author: 'The Nibbo project', description: 'An oatmeal nibbler with a fiddlehead tail and a scarf.' },
  tints,
  animations: Object.fromEntries(Object.entries(animations).map(([name, { frames }]) => [name, frames])),
  stills: Object.keys(stills),
  frame: (name, t, tint) => page(animations[name].pose(t), tint),
  still: (name, tint) => page(stills[name](), tint),
};
