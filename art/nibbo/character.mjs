// Nibbo, the official pet, as the drawing command sees it.
import { document } from '../lib/svg.mjs';
import { animations, stills } from './animations.mjs';
import { draw, height, tints, width } from './rig.mjs';

export default {
  folder: 'nibbo',
  pack: { name: 'Nibbo', author: 'The Nibbo project', description: 'A small mochi animal with notched petal ears.' },
  tints,
  animations: Object.fromEntries(Object.entries(animations).map(([name, { frames }]) => [name, frames])),
  stills: Object.keys(stills),
  frame: (name, t, tint) => document({ width, height, decimals: 1, ...draw(animations[name].pose(t), tint) }),
  still: (name, tint) => document({ width, height, decimals: 1, ...draw(stills[name](), tint) }),
};
