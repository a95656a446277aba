// The pack that people start a pet of their own from: a round creature of a few shapes, and a page of guide lines.
import { at, document, ell, path, roundRect } from '../lib/svg.mjs';
import { wave } from '../lib/motion.mjs';
import { animationNames, framesPerSecond, manifest, stillNames } from '../lib/pack.mjs';

const width = 180,
  height = 150,
  ground = 138,
  ink = '#5b5560';
const tints = { pink: ['#f9afbf', '#db7b94'], blue: ['#a3caf2', '#5f93cb'], green: ['#a9d9a4', '#63a56c'], purple: ['#c7b2ee', '#8c73c4'] };
const [main, deep] = tints.pink;

function creature({ stretch = 1, eyes = 'open', mouth = 'M-6 0C-3 4 3 4 6 0' } = {}) {
  const body =
    path('M-44 0C-56 -2 -52 -82 0 -82C52 -82 56 -2 44 0Z', { fill: main, stroke: ink, sw: 2.4 }) +
    path('M-34 -3C-18 4 20 2 42 -22C44 -10 44 -4 40 -2C20 0 -20 0 -34 -3Z', { fill: deep, op: 0.5 });
  const eye = x =>
    eyes === 'open'
      ? ell(x, -42, 6, 7.5, { fill: ink }) + ell(x - 2, -45, 2, 2.4, { fill: '#ffffff' })
      : path(`M${x - 7} -42C${x - 4} -38 ${x + 4} -38 ${x + 7} -42`, { stroke: ink, sw: 2.6 });
  return document({
    width,
    height,
    content:
      ell(90, ground + 1.5, 44, 4, { fill: ink, op: 0.16 }) +
      at(90, ground, 0, [2 - stretch, stretch], body + eye(-18) + eye(18) + at(0, -30, 0, 1, path(mouth, { stroke: ink, sw: 2.2 }))),
  });
}

// The box, the ground line, the middle, and the area to stay in.
const guides = document({
  width,
  height,
  content:
    path(roundRect(0.5, 0.5, 179, 149, 0.5), { stroke: '#3b82d6', sw: 1 }) +
    path(roundRect(6, 6, 168, 132, 1), { stroke: '#8fb7e8', sw: 0.8 }) +
    path(`M0 ${ground}L180 ${ground}M90 0L90 150`, { stroke: '#d6553b', sw: 0.8 }),
});

const table = animationNames.map(n => `    ${n.padEnd(20)}${String(framesPerSecond[n]).padStart(2)}`).join('\n');
const english = `A PET OF YOUR OWN
=================

This folder is a small, complete pet pack. Copy it, rename it, change the
pictures, and import the folder (or a ZIP of it) in the settings.

What is in a pack
-----------------
  images/NAME.svg            one still picture for a mood
  frames/ANIMATION/01.svg    the pictures of an animation: 01, 02, 03 and on
  pack.json                  name, author, license and version; all optional

Only one of images/ and frames/ has to be there. What is missing is taken
from the still picture of that mood, and after that from the official pet.
SVG, PNG and WebP are read. guides.svg is only for you; you may delete it.

Names of still pictures
    ${stillNames.slice(0, 6).join(', ')},
    ${stillNames.slice(6).join(', ')}

Names of animations, and how many pictures a second are shown
${table}

Drawing
-------
  - All pictures of a pack have the same box; here it is 180 by 150 units.
    A picture of 360 by 300 or 720 by 600 pixels is as good.
  - The feet stand on the ground line, 138 units from the top.
  - The pet looks to the right. The program mirrors it when it walks left.
  - Leave the ground transparent and a few units free at every edge.
  - 6 to 10 pictures make a good animation. It is played round and round, so
    the last picture should lead back to the first.
  - Look at it small. At 75 pixels a pose is told by its outline and by one
    large thing in its hands.

SVG: paths, ellipses, rectangles, groups, transforms, gradients and opacity
are drawn. Filters, masks, clipping, patterns, style sheets and text are not.

Colour (SVG only)
-----------------
"accent" in pack.json lists the colours that follow the theme colour. "tints"
says, in the same order, what they become. Write them in the pictures exactly
as they are written there. Without "accent" the pet keeps its own colours.
`;
const chinese = `制作你自己的宠物
================

这个文件夹就是一个完整的小宠物包。复制它，改个名字，换上你的图片，
然后在设置中导入这个文件夹（或它的 ZIP 压缩包）。

宠物包的内容
------------
  images/名称.svg        某种心情的静态图片
  frames/动画/01.svg     动画的各帧：01、02、03，依次类推
  pack.json              名称、作者、许可证和版本；均可省略

images/ 和 frames/ 有一个即可。缺少的动画会使用对应心情的静态图片，
再缺少则使用官方宠物。支持 SVG、PNG 和 WebP。
guides.svg 只是给你作参考的，可以删除。

静态图片的名称
    ${stillNames.slice(0, 6).join('、')}、
    ${stillNames.slice(6).join('、')}

动画的名称，以及每秒显示的帧数
${table}

绘制要点
--------
  - 同一个包里所有图片的画布大小相同，这里是 180 × 150 单位；
    360 × 300 或 720 × 600 像素的图片也可以。
  - 双脚站在地面线上，地面线距顶部 138 单位。
  - 宠物面向右侧；向左走时程序会自动镜像。
  - 背景保持透明，四边各留出几个单位的空白。
  - 一段动画 6 到 10 帧为宜。动画循环播放，最后一帧应能自然接回第一帧。
  - 缩小了再看看：在 75 像素时，姿势靠轮廓和手里的一件大道具来分辨。

SVG 支持：路径、椭圆、矩形、分组、变换、渐变和不透明度。
不支持：滤镜、蒙版、裁剪、图案、样式表和文字。

颜色（仅限 SVG）
----------------
pack.json 中的 "accent" 列出跟随主题色变化的颜色，"tints" 按相同顺序给出
它们在各主题色下的取值。图片中的写法必须与 pack.json 中完全一致。
没有 "accent" 时，宠物保持自己的颜色。
`;

/** [[name, content]...] of the template pack. */
export function drawTemplate() {
  const files = [['README.txt', english], ['README.zh.txt', chinese], ['guides.svg', guides]];
  files.push(
    ['images/idle.svg', creature()],
    ['images/sleeping.svg', creature({ stretch: 0.92, eyes: 'shut', mouth: 'M-2 1C-1 2 1 2 2 1' })],
    ['images/happy.svg', creature({ stretch: 1.04, mouth: 'M-8 -1C-6 9 6 9 8 -1Z' })],
  );
  for (let i = 0; i < 6; i++)
    files.push([`frames/idle/0${i + 1}.svg`, creature({ stretch: 1 + 0.02 * wave(i / 6), eyes: i === 4 ? 'shut' : 'open' })]);
  const pack = { name: 'My pet', author: 'Your name', license: 'CC0-1.0', version: '1.0', accent: tints.pink, tints };
  files.push(['pack.json', manifest(pack)]);
  return files;
}
