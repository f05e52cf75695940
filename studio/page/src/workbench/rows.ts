// The timeline's rows: scenes, and the nodes of those that are open.
import { rangeOf } from './live';
import type { Outline, OutlineNode, OutlineScene } from './types';

export interface Row {
  id: string;
  scene: number;
  node: OutlineNode | null;
  level: number;
  hasMore: boolean;
  isOpen: boolean;
  first: number;
  last: number;
}

export const idOf = (scene: number, key: string) => `${scene} ${key}`;

const fewNodes = 60; // more are open in one scene alone

/** What is closed at first. */
export function closedAtFirst(outline: Outline, frame: number): ReadonlySet<string> {
  const count = outline.scenes.reduce((sum, scene) => sum + scene.nodes.length, 0);
  if (count <= fewNodes) return new Set();
  const here = outline.scenes.findIndex((scene) => frame >= scene.start && frame < scene.start + scene.frames);
  return new Set(outline.scenes.map((_, index) => index).filter((index) => index !== here).map((index) => idOf(index, '')));
}

function nodeRows(scene: OutlineScene, index: number, closed: ReadonlySet<string>): Row[] {
  const parents = new Set(scene.nodes.map((node) => node.parent));
  const levels: number[] = [];
  const hidden: boolean[] = [];
  const rows: Row[] = [];
  scene.nodes.forEach((node, at) => {
    const id = idOf(index, node.key);
    const isIn = node.parent >= 0;
    levels[at] = isIn ? levels[node.parent]! + 1 : 2;
    const parentKey = isIn ? scene.nodes[node.parent]!.key : '';
    hidden[at] = isIn && (hidden[node.parent]! || closed.has(idOf(index, parentKey)));
    const [first, last] = rangeOf(scene, node);
    if (!hidden[at]) rows.push({ id, scene: index, node, level: levels[at]!, hasMore: parents.has(at), isOpen: !closed.has(id), first, last });
  });
  return rows;
}

export function rowsOf(outline: Outline, closed: ReadonlySet<string>): Row[] {
  return outline.scenes.flatMap((scene, index) => {
    const id = idOf(index, '');
    const isOpen = !closed.has(id);
    const head: Row = { id, scene: index, node: null, level: 1, hasMore: scene.nodes.length > 0, isOpen, first: scene.start, last: scene.start + scene.frames - 1 };
    return isOpen ? [head, ...nodeRows(scene, index, closed)] : [head];
  });
}

/** Frames that have a mark, as close as there is room for. */
export function marks(frames: number, framesPerSecond: number, width: number): number[] {
  const room = 64; // pixels
  const steps = [1, 5, framesPerSecond / 2, ...[1, 2, 5, 10, 30, 60, 300].map((seconds) => seconds * framesPerSecond)];
  const step = steps.find((one) => Number.isInteger(one) && (one / frames) * width >= room) ?? frames;
  return Array.from({ length: Math.ceil(frames / step) }, (_, index) => index * step);
}
