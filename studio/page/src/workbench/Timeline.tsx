// A row for each node under a scrubber: its range as a bar, its keys as dots. Only rows that are seen are drawn.
import { useEffect, useLayoutEffect, useMemo, useRef, useState } from 'preact/hooks';
import { Icon } from '../ui/Icon';
import { bench, seek, select } from './bench';
import { nodeOf, placeOf, shortType } from './live';
import { closedAtFirst, idOf, marks, rowsOf, type Row } from './rows';
import { timeText } from './Picture';
import type { Outline, Selection, State } from './types';
import { language, w } from './words';

const rowHeight = 26;
const rulerHeight = 34;
const mostZoom = 32;
const beyond = 8; // rows above and below

interface View {
  outline: Outline;
  state: State;
  frames: number;
  framesPerSecond: number;
}

const share = (frame: number, frames: number) => `${(100 * frame) / frames}%`;

function Bar({ row, view }: { row: Row; view: View }) {
  const { frames } = view;
  const scene = view.outline.scenes[row.scene]!;
  if (row.last < row.first) return null;
  const kind = row.node ? 'node' : scene.kind;
  // What goes on beyond the end is cut there.
  const spans = (row.node?.keys ?? []).map(({ key, first, last }) => ({ key, first: scene.start + first, last: Math.min(scene.start + last, frames - 1) }));
  const dots = new Set(spans.flatMap((span) => [span.first, span.last]).filter((frame) => frame < frames));
  return (
    <>
      <i class={`wb-bar ${kind}`} style={{ left: share(row.first, frames), width: share(row.last + 1 - row.first, frames) }}>
        {!row.node && <span>{scene.name}</span>}
      </i>
      {spans.map((span) => (
        <i
          key={span.key}
          class="wb-span"
          style={{ left: share(span.first + 0.5, frames), width: share(Math.max(0, span.last - span.first), frames) }}
        />
      ))}
      {[...dots].map((frame) => (
        <i key={frame} class="wb-dot" style={{ left: share(frame + 0.5, frames) }} />
      ))}
    </>
  );
}

function nameOf(row: Row, outline: Outline): string {
  const scene = outline.scenes[row.scene]!;
  return row.node ? row.node.name || shortType(row.node.type) : scene.name || `${w(scene.kind)} ${scene.number}`;
}

function TreeRow({ row, top, view, isChosen, fault, onToggle }: { row: Row; top: number; view: View; isChosen: boolean; fault: string; onToggle: () => void }) {
  const frame = bench.use((value) => value.frame);
  const scene = view.outline.scenes[row.scene]!;
  const name = nameOf(row, view.outline);
  const isDue = frame >= row.first && frame <= row.last;
  const classes = ['wb-row', row.node ? '' : 'is-scene', isDue ? '' : 'is-out', isChosen ? 'is-chosen' : '', fault].join(' ');
  return (
    <div
      id={`row ${row.id}`.replaceAll(' ', '-')}
      class={classes}
      style={{ top: `${top}px` }}
      role="treeitem"
      aria-level={row.level}
      aria-selected={isChosen}
      {...(row.hasMore ? { 'aria-expanded': row.isOpen } : {})}
    >
      <div class="wb-label" onClick={() => select({ scene: row.scene, key: row.node?.key ?? '' })} onDblClick={() => seek(row.first)}>
        <span class={row.isOpen ? 'wb-fold is-open' : 'wb-fold'} style={{ marginInlineStart: `${(row.level - 1) * 14}px` }} onClick={(event) => row.hasMore && (event.stopPropagation(), onToggle())}>
          {row.hasMore && <Icon name="next" />}
        </span>
        <span class="wb-name" dir="auto">{name}</span>
        <span class="wb-kind">{row.node ? (row.node.name ? shortType(row.node.type) : '') : row.isOpen ? scene.file : w('nodes', { n: scene.nodes.length })}</span>
      </div>
      <div class="wb-track" aria-hidden="true">
        <Bar row={row} view={view} />
      </div>
    </div>
  );
}

/** A name in the ruler for each input, where it is seen best. */
function Moments({ view }: { view: View }) {
  const { inputs } = view.outline;
  return (
    <>
      {inputs.map((input) => {
        const at = view.state.moments[input.key];
        if (at === undefined) return null;
        return <i key={input.key} class="wb-moment" style={{ left: share(at + 0.5, view.frames) }} title={input.labels[language] || input.key} />;
      })}
    </>
  );
}

function Ruler({ view, width }: { view: View; width: number }) {
  const frame = bench.use((value) => value.frame);
  return (
    <div
      class="wb-marks"
      role="slider"
      tabIndex={0}
      aria-label={w('frame')}
      aria-valuemin={0}
      aria-valuemax={view.frames - 1}
      aria-valuenow={frame}
      aria-valuetext={`${frame}, ${timeText(frame, view.framesPerSecond)}`}
    >
      {marks(view.frames, view.framesPerSecond, width).map((mark) => (
        <span key={mark} style={{ left: share(mark, view.frames) }}>
          {mark % view.framesPerSecond === 0 ? `${mark / view.framesPerSecond} s` : mark}
        </span>
      ))}
      <Moments view={view} />
      <b class="wb-now" style={{ left: share(frame + 0.5, view.frames) }} aria-hidden="true">
        {frame}
      </b>
    </div>
  );
}

function Head({ frames }: { frames: number }) {
  const frame = bench.use((value) => value.frame);
  return (
    <div class="wb-heads" aria-hidden="true">
      <i class="wb-head" style={{ left: share(frame + 0.5, frames) }} />
    </div>
  );
}

/** The worst that "check" says of each row that is seen. */
function faultsOf(outline: Outline, state: State): Map<string, string> {
  const faults = new Map<string, string>();
  for (const finding of state.findings) {
    const place = placeOf(outline, finding.file, finding.key);
    if (!place) continue;
    const id = idOf(place.scene, place.key);
    if (faults.get(id) !== 'error') faults.set(id, finding.severity);
  }
  return faults;
}

function useSize(element: { current: HTMLElement | null }): { width: number; height: number } {
  const [size, setSize] = useState({ width: 1000, height: 300 });
  useLayoutEffect(() => {
    const { current } = element;
    if (!current) return;
    const watch = new ResizeObserver(() => setSize({ width: current.clientWidth, height: current.clientHeight }));
    watch.observe(current);
    return () => watch.disconnect();
  }, []);
  return size;
}

function Tree({ view, closed, setClosed, zoom, setZoom }: { view: View; closed: ReadonlySet<string>; setClosed: (closed: ReadonlySet<string>) => void; zoom: number; setZoom: (zoom: number) => void }) {
  const scroller = useRef<HTMLDivElement>(null);
  const { width, height } = useSize(scroller);
  const [top, setTop] = useState(0);
  const selected = bench.use((value) => value.selected);
  const frame = bench.use((value) => value.frame);
  const isPlaying = bench.use((value) => value.isPlaying);
  const rows = useMemo(() => rowsOf(view.outline, closed), [view.outline, closed]);
  const faults = useMemo(() => faultsOf(view.outline, view.state), [view.outline, view.state]);
  const labels = width < 600 ? 132 : 250;
  const track = Math.max(100, width - labels - 14) * zoom;
  const chosen = selected ? idOf(selected.scene, selected.key) : '';
  const at = rows.findIndex((row) => row.id === chosen);

  useEffect(() => {
    const element = scroller.current;
    if (!element || at < 0) return;
    const y = at * rowHeight;
    const room = element.clientHeight - rulerHeight;
    if (y < element.scrollTop) element.scrollTop = y - 2 * rowHeight;
    else if (y + rowHeight > element.scrollTop + room) element.scrollTop = y - room + 3 * rowHeight;
  }, [chosen, at]);

  // The play head stays in sight.
  useEffect(() => {
    const element = scroller.current;
    if (!element || zoom === 1) return;
    const x = (frame / view.frames) * track - element.scrollLeft;
    const room = element.clientWidth - labels;
    if (x < 0 || x > room) element.scrollLeft += isPlaying || x < 0 ? x - room * 0.1 : x - room * 0.9;
  }, [frame, zoom]);

  // Around the pointer; a wheel that turns the page must be told in time.
  useEffect(() => {
    const element = scroller.current;
    const turn = (event: WheelEvent) => {
      if (!event.ctrlKey || !element) return;
      event.preventDefault();
      setZoom(Math.min(mostZoom, Math.max(1, zoom * Math.exp(-event.deltaY / 300))));
    };
    element?.addEventListener('wheel', turn, { passive: false });
    return () => element?.removeEventListener('wheel', turn);
  }, [zoom]);

  const drag = (event: PointerEvent) => {
    const box = scroller.current!.getBoundingClientRect();
    const x = event.clientX - box.x + scroller.current!.scrollLeft - labels;
    seek(Math.floor((x / track) * view.frames));
  };
  const press = (event: PointerEvent) => {
    const target = event.target as Element;
    if (event.button !== 0 || !target.closest('.wb-track, .wb-marks')) return;
    (event.currentTarget as Element).setPointerCapture(event.pointerId);
    drag(event);
  };
  const toggle = (row: Row) => {
    const next = new Set(closed);
    if (!next.delete(row.id)) next.add(row.id);
    setClosed(next);
  };
  const step = (event: KeyboardEvent) => {
    const row = rows[at];
    if (event.key === 'Enter' && row?.hasMore) toggle(row);
    else if (event.key !== 'ArrowUp' && event.key !== 'ArrowDown') return;
    else {
      const next = rows[Math.min(rows.length - 1, Math.max(0, at + (event.key === 'ArrowUp' ? -1 : 1)))];
      if (next) select({ scene: next.scene, key: next.node?.key ?? '' });
    }
    event.preventDefault();
  };

  const from = Math.max(0, Math.floor((top - rulerHeight) / rowHeight) - beyond);
  const to = Math.min(rows.length, Math.ceil((top + height) / rowHeight) + beyond);
  const seen = rows.slice(from, to);
  const isSeen = seen.some((row) => row.id === chosen);
  return (
    <div
      ref={scroller}
      class="wb-tree"
      onScroll={(event) => setTop(event.currentTarget.scrollTop)}
      onPointerDown={press}
      onPointerMove={(event) => event.currentTarget.hasPointerCapture(event.pointerId) && drag(event)}
      style={{ '--labels': `${labels}px` }}
    >
      <div class="wb-inner" style={{ width: `${labels + track}px`, height: `${rulerHeight + rows.length * rowHeight}px` }}>
        <div class="wb-ruler">
          <span class="wb-corner" />
          <Ruler view={view} width={track} />
        </div>
        <div
          class="wb-rows"
          role="tree"
          tabIndex={0}
          aria-label={w('timeline')}
          onKeyDown={step}
          {...(isSeen ? { 'aria-activedescendant': `row ${chosen}`.replaceAll(' ', '-') } : {})}
        >
          {seen.map((row, index) => (
            <TreeRow
              key={row.id}
              row={row}
              top={(from + index) * rowHeight}
              view={view}
              isChosen={row.id === chosen}
              fault={faults.get(row.id) ?? ''}
              onToggle={() => toggle(row)}
            />
          ))}
        </div>
        <Head frames={view.frames} />
      </div>
    </div>
  );
}

/** Opens what holds a node. */
function opened(closed: ReadonlySet<string>, outline: Outline, selected: Selection): ReadonlySet<string> {
  const next = new Set(closed);
  next.delete(idOf(selected.scene, ''));
  const nodes = outline.scenes[selected.scene]?.nodes ?? [];
  for (let node = nodeOf(outline, selected); node && node.parent >= 0; ) {
    node = nodes[node.parent];
    if (node) next.delete(idOf(selected.scene, node.key));
  }
  return next.size === closed.size ? closed : next;
}

export function Timeline() {
  const outline = bench.use((value) => value.outline);
  const state = bench.use((value) => value.state);
  const selected = bench.use((value) => value.selected);
  const [closed, setClosed] = useState<ReadonlySet<string> | null>(null);
  const [zoom, setZoom] = useState(1);

  useEffect(() => {
    if (outline && !closed) setClosed(closedAtFirst(outline, bench.value.frame));
  }, [outline]);
  useEffect(() => {
    if (outline && closed && selected?.key) setClosed(opened(closed, outline, selected));
  }, [selected]);
  useEffect(() => {
    const press = (event: KeyboardEvent) => {
      if ((event.target as Element).closest('input') || event.ctrlKey || event.metaKey) return;
      if (event.key === '+' || event.key === '=') setZoom(Math.min(mostZoom, zoom * 2));
      if (event.key === '-') setZoom(Math.max(1, zoom / 2));
    };
    addEventListener('keydown', press);
    return () => removeEventListener('keydown', press);
  }, [zoom]);

  const video = state?.video;
  if (!outline || !state || !video || !closed || video.frames < 1) return null;
  const view = { outline, state, frames: video.frames, framesPerSecond: video.framesPerSecond };
  const isAllOpen = closed.size === 0;
  const toggleAll = () => setClosed(isAllOpen ? new Set(outline.scenes.map((_, index) => idOf(index, ''))) : new Set());
  return (
    <section class="wb-panel wb-timeline" aria-labelledby="wb-timeline">
      <header>
        <h2 id="wb-timeline">{w('timeline')}</h2>
        <span class="wb-note wb-keys">{w('keys')}</span>
        <button type="button" class="wb-tool" onClick={toggleAll}>
          {w(isAllOpen ? 'closeAll' : 'openAll')}
        </button>
        <button type="button" class="wb-tool" aria-label={w('zoomOut')} disabled={zoom <= 1} onClick={() => setZoom(Math.max(1, zoom / 2))}>
          −
        </button>
        <button type="button" class="wb-tool" aria-label={w('zoomIn')} disabled={zoom >= mostZoom} onClick={() => setZoom(Math.min(mostZoom, zoom * 2))}>
          +
        </button>
      </header>
      <Tree view={view} closed={closed} setClosed={setClosed} zoom={zoom} setZoom={setZoom} />
    </section>
  );
}
