// What of the texts on the screen cannot be read: cut by what they are in, beside the screen, or over each other.
const faults = new Set(), seen = [];
const walk = document.createTreeWalker(document.querySelector('dialog[open]') ?? document.body, NodeFilter.SHOW_TEXT);
const clips = (overflow) => /hidden|clip/.test(overflow);
while (walk.nextNode()) {
  const { currentNode: node, currentNode: { parentElement: parent, data } } = walk;
  if (!data.trim() || parent.closest('.hidden, .skip') || !parent.checkVisibility({ opacityProperty: true, visibilityProperty: true })) continue;
  const around = [];
  for (let e = parent; e !== document.documentElement; e = e.parentElement) around.push([e, getComputedStyle(e)]);
  if (around.some(([, style]) => style.textOverflow === 'ellipsis' && style.whiteSpace === 'nowrap')) continue;
  const floats = around.some(([, style]) => /fixed|sticky/.test(style.position));
  const scrolls = around.some(([e, style]) => /auto|scroll/.test(style.overflowX) && e.scrollWidth > e.clientWidth);
  const range = document.createRange();
  range.selectNodeContents(node);
  for (const box of range.getClientRects()) {
    if (box.width < 1) continue;
    for (const [e, style] of around) {
      const frame = e.getBoundingClientRect();
      if (clips(style.overflowX) && (box.left < frame.left - 2 || box.right > frame.right + 2)) faults.add(`cut: ${data}`);
      if (clips(style.overflowY) && (box.top < frame.top - 4 || box.bottom > frame.bottom + 4)) faults.add(`cut: ${data}`);
    }
    if (!scrolls && (box.left < -1 || box.right > innerWidth + 1)) faults.add(`beside the screen: ${data}`);
    if (floats) continue;
    for (const [other, from] of seen) {
      const across = Math.min(other.right, box.right) - Math.max(other.left, box.left);
      const down = Math.min(other.bottom, box.bottom) - Math.max(other.top, box.top);
      if (from !== node && across > 2 && down > 4) faults.add(`over each other: ${data} | ${from.data}`);
    }
    seen.push([box, node]);
  }
}
if (document.documentElement.scrollWidth > innerWidth) faults.add('the page is wider than the screen');
return [...faults];
