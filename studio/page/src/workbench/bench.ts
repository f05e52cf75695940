// What the page knows of the template, the frame that it looks at, and how it gets pictures: one under way at a time,
// of what was wanted meanwhile only the newest.
import { address, Problem, problemOf } from '../api/client';
import { Store } from '../app/Store';
import { liveScene } from './live';
import type { Outline, Selection, State, Values } from './types';

interface Bench {
  /** undefined: not known yet; null: there is none here. */
  state: State | null | undefined;
  outline: Outline | null;
  isAway: boolean;
  frame: number;
  /** The picture that is seen, which whoever draws it closes, and what it shows. */
  picture: ImageBitmap | null;
  pictureFrame: number;
  isWaiting: boolean;
  /** Whose inputs the picture shows. */
  trial: string;
  values: Values | null;
  selected: Selection | null;
  isPlaying: boolean;
  rate: number;
}

export const bench = new Store<Bench>({
  state: undefined,
  outline: null,
  isAway: false,
  frame: 0,
  picture: null,
  pictureFrame: -1,
  isWaiting: false,
  trial: '',
  values: null,
  selected: null,
  isPlaying: false,
  rate: 0,
});

const mostKept = 900; // pictures
let kept = new Map<number, Blob>();
let generation = 0; // of what is kept
let revision = 0; // of the files, as it was told last
let wanted: number | null = null;
let isBusy = false;

/** An answer; undefined: another one came in its place. */
async function ask(path: string): Promise<Response | undefined> {
  let answer: Response;
  try {
    answer = await fetch(address(`/workbench${path}`), { credentials: 'same-origin' });
  } catch {
    throw new Problem({ status: 0 });
  }
  if (answer.status === 204) return undefined;
  if (!answer.ok) throw problemOf(answer.status, await answer.text());
  return answer;
}

export async function picture(path: string): Promise<Blob | undefined> {
  return (await ask(path))?.blob();
}

const lastFrame = () => Math.max(0, (bench.value.state?.video?.frames ?? 1) - 1);

// Pictures

function forgetPictures() {
  kept = new Map();
  generation++;
}

async function fetchFrame(frame: number): Promise<Blob | undefined> {
  const known = kept.get(frame);
  if (known) return known;
  const mine = generation;
  const blob = await picture(`/frames/${frame}.jpg?v=${revision}&trial=${bench.value.trial}`);
  if (blob && mine === generation) {
    if (kept.size >= mostKept) kept.clear();
    kept.set(frame, blob);
  }
  return blob;
}

async function showBlob(frame: number, blob: Blob) {
  const bitmap = await createImageBitmap(blob);
  bench.set({ picture: bitmap, pictureFrame: frame });
}

async function work() {
  if (isBusy) return;
  isBusy = true;
  bench.set({ isWaiting: true });
  while (wanted !== null) {
    const frame = wanted;
    const mine = generation;
    wanted = null;
    try {
      const blob = await fetchFrame(frame);
      if (blob && (mine === generation || wanted === null)) await showBlob(frame, blob);
      if (!blob && wanted === null && mine === generation) wanted = frame;
    } catch {
      // The state says what is wrong.
    }
  }
  isBusy = false;
  bench.set({ isWaiting: false });
  if (!bench.value.isPlaying) void loadValues();
}

/** The frame, drawn as soon as that is possible. */
function want(frame: number) {
  wanted = frame;
  void work();
}

export function seek(frame: number) {
  const at = Math.min(lastFrame(), Math.max(0, Math.round(frame)));
  stop();
  if (at === bench.value.frame && at === bench.value.pictureFrame) return;
  bench.set({ frame: at });
  want(at);
}

export function showTrial(name: string) {
  const trial = name === bench.value.trial || name === bench.value.state?.trials[0] ? '' : name;
  if (trial === bench.value.trial) return;
  bench.set({ trial });
  forgetPictures();
  if (!bench.value.isPlaying) want(bench.value.frame);
}

// Values

let isLoadingValues = false;

async function loadValues() {
  if (isLoadingValues) return;
  isLoadingValues = true;
  try {
    for (let asked = -1; asked !== bench.value.frame && !bench.value.isPlaying; ) {
      asked = bench.value.frame;
      const answer = await ask(`/frames/${asked}.json?v=${revision}`);
      const values = answer && ((await answer.json()) as Values);
      if (values && asked === bench.value.frame) bench.set({ values: { ...values, frame: asked } });
    }
  } catch {
    bench.set({ values: null });
  }
  isLoadingValues = false;
}

export async function loadOutline() {
  try {
    const answer = await ask(`/outline?v=${revision}`);
    if (!answer) return;
    const outline = (await answer.json()) as Outline;
    const { selected } = bench.value;
    const isThere = selected && outline.scenes[selected.scene] && (!selected.key || outline.scenes[selected.scene]!.nodes.some((n) => n.key === selected.key));
    bench.set({ outline, selected: isThere ? selected : null });
  } catch {
    // There is none yet.
  }
}

export function select(selected: Selection | null) {
  bench.set({ selected });
}

/** Whether a scene plays in the frame that is looked at. */
export function plays(index: number): boolean {
  const { outline, values } = bench.value;
  const scene = outline?.scenes[index];
  return Boolean(scene && values && liveScene(scene, values));
}

// Playing

let timer = 0;

export function stop() {
  if (!bench.value.isPlaying) return;
  cancelAnimationFrame(timer);
  bench.set({ isPlaying: false, frame: Math.max(0, bench.value.pictureFrame) });
  void loadValues();
}

/** In real time: pictures that do not come in time are left out, and are there the next time around. */
export function play() {
  const video = bench.value.state?.video;
  if (!video || video.frames < 2 || bench.value.isPlaying) return;
  const length = video.frames;
  const first = bench.value.frame >= length - 1 ? 0 : bench.value.frame;
  const start = performance.now();
  let shown: number[] = [];
  let last = -1;
  let took = 30; // milliseconds that a picture takes to come
  let isAsking = false;
  bench.set({ isPlaying: true });

  const askAhead = async (now: number) => {
    const ahead = Math.ceil((took / 1000) * video.framesPerSecond);
    let next = (now + ahead) % length;
    for (let tries = 0; kept.has(next) && tries < 60; tries++) next = (next + 1) % length;
    if (kept.has(next)) return;
    isAsking = true;
    const begun = performance.now();
    await fetchFrame(next).catch(() => stop());
    took = 0.7 * took + 0.3 * Math.min(500, performance.now() - begun);
    isAsking = false;
  };

  const step = async () => {
    const elapsed = ((performance.now() - start) / 1000) * video.framesPerSecond;
    const now = (first + Math.floor(elapsed)) % length;
    if (!isAsking) void askAhead(now);
    // The newest that is due, among those since the last one.
    let due = now;
    while (due !== last && !kept.has(due) && (now - due + length) % length < 15) due = (due - 1 + length) % length;
    const blob = kept.get(due);
    if (blob && due !== last) {
      last = due;
      await showBlob(due, blob);
      const time = performance.now();
      shown = [...shown.filter((one) => one > time - 1000), time];
    }
    if (!bench.value.isPlaying) return;
    bench.set({ frame: now, rate: shown.length });
    timer = requestAnimationFrame(() => void step());
  };
  timer = requestAnimationFrame(() => void step());
}

export function togglePlay() {
  if (bench.value.isPlaying) stop();
  else play();
}

// What the studio tells

function takeSaved(saved: number) {
  revision = saved;
  forgetPictures();
  if (!bench.value.isPlaying) want(bench.value.frame);
}

function takeState(state: State) {
  const before = bench.value.state;
  bench.set({ state, isAway: false });
  if (!before) {
    revision = state.revision;
    if (state.shown > 0) void loadOutline();
    if (state.video) seek(firstLook(state));
    return;
  }
  if (state.revision > revision) takeSaved(state.revision);
  if (!state.video || !bench.value.picture) {
    if (state.video) seek(before.video ? bench.value.frame : firstLook(state));
  } else if (bench.value.frame > lastFrame()) {
    seek(lastFrame());
  }
}

/** Where there is something to see. */
function firstLook(state: State): number {
  const frames = state.video?.frames ?? 0;
  return frames > 0 ? Math.floor(frames / 3) : 0;
}

export function listen() {
  const source = new EventSource(address('/workbench/events'));
  source.addEventListener('saved', (event) => takeSaved((JSON.parse(event.data as string) as { revision: number }).revision));
  source.addEventListener('state', (event) => takeState(JSON.parse(event.data as string) as State));
  source.addEventListener('outline', () => void loadOutline());
  source.onerror = () => bench.set({ isAway: true });
}
