// What somebody has filled in for one template: kept at every change, with the way back.
import type { ApiMusic, ApiValues, Crop, Input, Template } from '../api/types';
import { drop, everything, keep, load } from '../app/database';
import { Store } from '../app/Store';
import { media, restore, sweep } from './media';

export type Field =
  | { kind: 'text'; text: string }
  | { kind: 'photo'; item: string; crop?: Crop }
  | { kind: 'video'; item: string; start: number; volume: number };

export interface Music {
  kind: 'template' | 'none' | 'own';
  item?: string;
  volume: number;
  start: number;
}

export interface Content {
  fields: Record<string, Field>;
  music: Music;
}

interface State extends Content {
  past: Content[];
  future: Content[];
}

export const templateMusic: Music = { kind: 'template', volume: 1, start: 0 };
const empty = (): Content => ({ fields: {}, music: templateMusic });
const mostSteps = 100;
/** Changes of one field within this time are one step back. */
const oneStep = 900;

export class Draft {
  readonly state = new Store<State>({ ...empty(), past: [], future: [] });
  private last = { key: '', time: 0 };
  private timer = 0;

  constructor(readonly template: number) {
    addEventListener('pagehide', this.flush);
  }

  /** What was kept of an earlier visit; photos that are gone for good are left out. */
  async open(): Promise<void> {
    const kept = await load<Content>('drafts', this.template);
    if (!kept) return;
    const fields: Record<string, Field> = {};
    for (const [key, field] of Object.entries(kept.fields)) {
      if (field.kind === 'text' || (await restore(field.item))) fields[key] = field;
    }
    const music = kept.music.item && !(await restore(kept.music.item)) ? templateMusic : kept.music;
    this.state.set({ fields, music });
  }

  close() {
    removeEventListener('pagehide', this.flush);
    this.flush();
  }

  /** `key`: what is changed, so that letters typed one after the other become one step. */
  change(key: string, change: (content: Content) => Content) {
    const { past, fields, music } = this.state.value;
    const now = Date.now();
    const goesOn = key === this.last.key && now - this.last.time < oneStep;
    this.last = { key, time: now };
    this.state.set({
      ...change({ fields, music }),
      past: goesOn ? past : [...past.slice(-mostSteps), { fields, music }],
      future: [],
    });
    this.keepSoon();
  }

  setField(key: string, field: Field | null) {
    this.change(key, (content) => {
      const fields = { ...content.fields };
      if (field && !(field.kind === 'text' && field.text === '')) fields[key] = field;
      else delete fields[key];
      return { ...content, fields };
    });
  }

  setMusic(music: Music) {
    this.change('music', (content) => ({ ...content, music }));
  }

  undo() {
    const { past, future, fields, music } = this.state.value;
    const before = past.at(-1);
    if (before) this.step(before, past.slice(0, -1), [{ fields, music }, ...future]);
  }

  redo() {
    const { past, future, fields, music } = this.state.value;
    const after = future[0];
    if (after) this.step(after, [...past, { fields, music }], future.slice(1));
  }

  startOver() {
    this.change('start over', empty);
  }

  replace(content: Content) {
    this.change('replace', () => content);
  }

  /** The ids of all photos, films and sounds in it. */
  items(): string[] {
    return itemsOf(this.state.value);
  }

  private step(content: Content, past: Content[], future: Content[]) {
    this.last = { key: '', time: 0 };
    this.state.set({ ...content, past, future });
    this.keepSoon();
  }

  private keepSoon() {
    clearTimeout(this.timer);
    this.timer = setTimeout(this.flush, 250) as unknown as number;
  }

  private flush = () => {
    if (!this.timer) return;
    clearTimeout(this.timer);
    this.timer = 0;
    const { fields, music } = this.state.value;
    const isEmpty = Object.keys(fields).length === 0 && music.kind === 'template' && music.volume === 1;
    if (isEmpty) void drop('drafts', this.template);
    else void keep('drafts', this.template, { fields, music });
  };
}

function itemsOf(content: Content): string[] {
  const items = Object.values(content.fields).flatMap((field) => (field.kind === 'text' ? [] : [field.item]));
  return content.music.item ? [...items, content.music.item] : items;
}

/** Files that no draft needs go; asked for once, when the page starts. */
export async function sweepFiles(): Promise<void> {
  const drafts = await everything<Content>('drafts');
  await sweep(new Set(drafts.flatMap(itemsOf)));
}

/** What the studio is told: what is filled in and has arrived. */
export function apiValues(content: Content): ApiValues {
  const values: ApiValues = {};
  for (const [key, field] of Object.entries(content.fields)) {
    if (field.kind === 'text') {
      values[key] = field.text;
      continue;
    }
    const upload = media.value.items[field.item]?.upload;
    if (!upload) continue;
    if (field.kind === 'video') values[key] = { upload: upload.id, start: field.start, volume: field.volume };
    else values[key] = field.crop ? { upload: upload.id, crop: field.crop } : { upload: upload.id };
  }
  return values;
}

/** For the live picture: texts that are not there yet show where they will be. */
export function previewValues(content: Content, template: Template): ApiValues {
  const values = apiValues(content);
  for (const input of template.inputs) {
    if (input.kind === 'text' && !(input.key in values)) values[input.key] = exampleOf(template, input);
  }
  return values;
}

export function exampleOf(template: Template, input: Input): string {
  const sample = template.sampleValues?.[input.key];
  return typeof sample === 'string' ? sample : input.label;
}

export function apiMusic(music: Music): ApiMusic {
  const upload = music.item ? media.value.items[music.item]?.upload?.id : undefined;
  if (music.kind !== 'own') return { kind: music.kind, volume: music.volume, start: 0 };
  return upload
    ? { kind: 'own', upload, volume: music.volume, start: music.start }
    : { kind: 'template', volume: music.volume, start: 0 };
}
