// Where the outline, which is what the author wrote, meets the frame, which is what becomes of it.
import type { LiveNode, LiveScene, Outline, OutlineNode, OutlineScene, Selection, Values } from './types';

export function liveScene(scene: OutlineScene, values: Values): LiveScene | undefined {
  const isTransition = scene.kind === 'transition';
  const fitting = values.scenes.filter((one) => one.sceneId === scene.number && (one.slot === 'transition') === isTransition);
  // A scene may play twice, one after the other.
  const isIn = values.frame >= scene.start && values.frame < scene.start + scene.frames;
  return fitting.find((one) => one.time === values.frame - scene.start) ?? (isIn ? fitting[0] : undefined);
}

export function liveNode(outline: Outline, selection: Selection, values: Values): LiveNode | undefined {
  const scene = outline.scenes[selection.scene];
  return scene && liveScene(scene, values)?.nodes.find((node) => node.key === selection.key);
}

export function nodeOf(outline: Outline, { scene, key }: Selection): OutlineNode | undefined {
  return outline.scenes[scene]?.nodes.find((node) => node.key === key);
}

/** The node that holds a key of a file, the innermost. */
export function placeOf(outline: Outline, file: string, key: string): Selection | null {
  const scene = outline.scenes.findIndex((one) => one.file === file);
  if (scene < 0) return null;
  const holders = outline.scenes[scene]!.nodes.filter((node) => key === node.key || key.startsWith(`${node.key}.`));
  return { scene, key: holders.at(-1)?.key ?? '' };
}

/** Its corners in shares of the picture; none when it lies behind the eye, or does not tell them. */
export function cornersOf(node: LiveNode): [number, number][] | null {
  const m = node.projTransform;
  const v = node.vertices;
  if (!v || v.length < 9) return null;
  const corners: [number, number][] = [];
  for (let i = 0; i + 2 < v.length; i += 3) {
    const [x, y, z] = [v[i]!, v[i + 1]!, v[i + 2]!];
    const at = (row: number) => m[row]! * x + m[row + 4]! * y + m[row + 8]! * z + m[row + 12]!;
    const depth = at(3);
    if (!(depth > 0)) return null;
    corners.push([0.5 + at(0) / depth / 2, 0.5 - at(1) / depth / 2]);
  }
  return corners;
}

function isInside([x, y]: [number, number], corners: [number, number][]): boolean {
  let inside = false;
  corners.forEach(([ax, ay], index) => {
    const [bx, by] = corners[(index + 1) % corners.length]!;
    if (ay > y !== by > y && x < ((bx - ax) * (y - ay)) / (by - ay) + ax) inside = !inside;
  });
  return inside;
}

export const isSeen = (node: LiveNode) => node.due !== false && node.visible && node.sceneAlpha > 0.02;

/** What is seen at a point, the uppermost first. */
export function nodesAt(outline: Outline, values: Values, point: [number, number]): Selection[] {
  const found: Selection[] = [];
  outline.scenes.forEach((scene, index) => {
    for (const node of liveScene(scene, values)?.nodes ?? []) {
      const corners = node.key && isSeen(node) ? cornersOf(node) : null;
      if (corners && node.key !== 'TimeSource' && isInside(point, corners)) found.unshift({ scene: index, key: node.key! });
    }
  });
  return found;
}

/** "Quad" of "QVQuadObject3D". */
export function shortType(type: string): string {
  const short = type.replace(/^QV/, '').replace(/Object(3D)?|3D/g, '').replace(/Base$/, '');
  return short === 'Transform' ? 'Group' : short || type;
}

/** The first and last frame of the video in which a node is there. */
export function rangeOf(scene: OutlineScene, node: OutlineNode | undefined): [number, number] {
  const last = scene.start + scene.frames - 1;
  if (!node) return [scene.start, last];
  return [scene.start + Math.max(0, node.first ?? 0), node.last === null ? last : Math.min(last, scene.start + node.last)];
}
