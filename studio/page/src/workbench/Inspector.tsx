// The chosen node with its values in the frame.
import type { ComponentChildren } from 'preact';
import { bench } from './bench';
import { isSeen, liveNode, liveScene, nodeOf, rangeOf, shortType } from './live';
import type { LiveNode, OutlineNode, OutlineScene } from './types';
import { w, wordOr } from './words';

const first = ['position', 'scenePosition', 'rotation', 'scale', 'alpha', 'sceneAlpha', 'renderDepth', 'texture'];
/** Said elsewhere, or for programs. */
const left = new Set(['key', 'path', 'parent', 'type', 'name', 'due', 'visible', 'sartFps', 'endFps', 'vertices']);
const longest = 4; // numbers; matrices are for programs

function number(value: unknown): string {
  return typeof value === 'number' ? String(Math.round(value * 1000) / 1000) : String(value);
}

function text(value: unknown): string | null {
  if (value === null || value === undefined || value === '') return null;
  if (Array.isArray(value)) return value.length > longest ? null : value.map(number).join('  ');
  if (typeof value === 'object') {
    const { path, width, height, ...rest } = value as Record<string, unknown>;
    const size = width && height ? `${number(width)} × ${number(height)}` : '';
    const name = typeof path === 'string' ? path.split('/').pop() : '';
    const more = Object.entries(rest).map(([key, one]) => [key, text(one)]).filter(([, one]) => one !== null).map((pair) => pair.join(' '));
    return [name, size, ...more].filter(Boolean).join(' · ') || null;
  }
  return number(value);
}

/** Where its middle is, with all that moves it. */
function placeIn(node: LiveNode): Record<string, unknown> {
  const m = node.sceneTransform;
  return { ...node, scenePosition: Array.isArray(m) ? m.slice(12, 15) : null };
}

function valuesOf(live: LiveNode): [string, string][] {
  const node = placeIn(live);
  const names = [...first, ...Object.keys(node).filter((name) => !first.includes(name)).sort()];
  return names
    .filter((name) => !left.has(name))
    .map((name): [string, string | null] => [name, text(node[name])])
    .filter((pair): pair is [string, string] => pair[1] !== null);
}

function Row({ name, children }: { name: string; children: ComponentChildren }) {
  return (
    <div>
      <dt>{name}</dt>
      <dd dir="auto">{children}</dd>
    </div>
  );
}

function standing(scene: OutlineScene, node: OutlineNode, live: LiveNode | undefined): [string, string] {
  const [from, to] = rangeOf(scene, node);
  if (!live) return ['out', w('notPlaying')];
  if (live.due === false) return ['out', w('notDue', { first: from, last: to })];
  return isSeen(live) ? ['in', w('seen')] : ['out', w('invisible')];
}

export function Inspector() {
  const { outline, values, selected, frame } = bench.use((value) => value);
  const scene = selected && outline?.scenes[selected.scene];
  const node = scene && outline && selected ? nodeOf(outline, selected) : undefined;
  const live = outline && selected && values ? liveNode(outline, selected, values) : undefined;
  const isFresh = values?.frame === frame;
  const range = scene ? rangeOf(scene, node) : [0, 0];
  const state = scene && node && values ? standing(scene, node, live) : null;
  const title = node ? node.name || shortType(node.type) : scene ? scene.name || w(scene.kind) : w('values');
  return (
    <section class="wb-panel wb-inspector" aria-labelledby="wb-values">
      <header>
        <h2 id="wb-values" dir="auto">{title}</h2>
        <span class="wb-note">{node ? node.type : scene ? w(scene.kind) : ''}</span>
      </header>
      <div class="wb-scroll" tabIndex={0} role="group" aria-labelledby="wb-values">
        {!scene && <p class="wb-hint">{w('choose')}</p>}
        {state && <p class={`wb-state ${state[0]}`}>{state[1]}</p>}
        {scene && (
          <dl class={isFresh ? '' : 'is-old'}>
            <Row name={w('value.file')}>{scene.file}</Row>
            {node && <Row name={w('value.key')}>{node.key}</Row>}
            <Row name={w('value.frames')}>
              {range[0]} – {range[1]}
            </Row>
            {!node && values && liveScene(scene, values) && <Row name={w('sceneTime')}>{liveScene(scene, values)?.time}</Row>}
            {live && valuesOf(live).map(([name, value]) => <Row key={name} name={wordOr(`value.${name}`, name)}>{value}</Row>)}
          </dl>
        )}
      </div>
    </section>
  );
}
