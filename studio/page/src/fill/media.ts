// The photos, films and sounds that were chosen: sent to the studio at once, and kept in the browser so that they can be
// sent again when the studio no longer has them.
import { get, Problem, randomName } from '../api/client';
import { sendFile } from '../api/upload';
import type { Upload } from '../api/types';
import { drop, everything, keep, keys, load } from '../app/database';
import { megabytes, t } from '../app/strings';
import { Store } from '../app/Store';

export interface Item {
  id: string;
  kind: Upload['kind'];
  name: string;
  upload: Upload | null;
  /** Of the bytes that are out, 0 to 1; 1 until the studio has prepared them. */
  progress: number;
  problem: Error | null;
  /** The file as chosen, for the browser to show; '' when only the studio has it. */
  local: string;
}

interface KeptFile {
  id: string;
  kind: Upload['kind'];
  name: string;
  file: Blob;
  upload: Upload | null;
}

export const media = new Store<{ items: Record<string, Item> }>({ items: {} });

const mostAtOnce = 2;
let underWay = 0;
const waiting: (() => void)[] = [];
const cancels = new Map<string, () => void>();
/** What was chosen on this page, wherever the browser has no room for it. */
const chosen = new Map<string, KeptFile>();

const keptFile = async (id: string) => chosen.get(id) ?? load<KeptFile>('files', id);

function change(id: string, part: Partial<Item>) {
  const item = media.value.items[id];
  if (item) media.set({ items: { ...media.value.items, [id]: { ...item, ...part } } });
}

function put(item: Item) {
  media.set({ items: { ...media.value.items, [item.id]: item } });
}

async function turn(): Promise<void> {
  if (underWay >= mostAtOnce) await new Promise<void>((resolve) => waiting.push(resolve));
  underWay += 1;
}

async function upload(kept: KeptFile): Promise<void> {
  await turn();
  try {
    if (!media.value.items[kept.id]) return;
    const sending = sendFile(kept.file, kept.name, (progress) => change(kept.id, { progress }));
    cancels.set(kept.id, sending.cancel);
    const uploaded = await sending.done;
    change(kept.id, { upload: uploaded, problem: null, progress: 1 });
    await keep('files', kept.id, { ...kept, upload: uploaded });
  } catch (error) {
    change(kept.id, { problem: error as Error });
  } finally {
    cancels.delete(kept.id);
    underWay -= 1;
    waiting.shift()?.();
  }
}

export function kindOf(file: File): Upload['kind'] {
  if (file.type.startsWith('video/')) return 'video';
  if (file.type.startsWith('audio/')) return 'sound';
  return 'photo';
}

/** Takes a chosen file and begins to send it, unless it has more bytes than the studio takes. */
export function addFile(file: File, kind: Upload['kind'], most = Infinity): string {
  const id = randomName();
  const kept: KeptFile = { id, kind, name: file.name || kind, file, upload: null };
  const detail = t('media.tooLarge', { size: megabytes(most / 2 ** 20) });
  const problem = file.size > most ? new Problem({ status: 413, detail }) : null;
  put({ id, kind, name: kept.name, upload: null, progress: 0, problem, local: URL.createObjectURL(file) });
  if (problem) return id;
  chosen.set(id, kept);
  void keep('files', id, kept);
  void upload(kept);
  return id;
}

/** It would be again. */
export const isTooLarge = (problem: Error) => problem instanceof Problem && problem.status === 413;

/** Sends a file again whose sending failed. */
export async function retry(id: string): Promise<void> {
  const kept = await keptFile(id);
  if (!kept) return;
  change(id, { problem: null, progress: 0 });
  await upload(kept);
}

async function isThere(upload: Upload): Promise<Upload | null> {
  try {
    return await get<Upload>(`/uploads/${upload.id}`);
  } catch (error) {
    if (error instanceof Problem && error.status === 0) return upload;
    return null;
  }
}

/** An item of an earlier visit. False when neither the studio nor the browser has it any more. */
export async function restore(id: string): Promise<boolean> {
  if (media.value.items[id]) return true;
  const kept = await load<KeptFile>('files', id);
  if (!kept) return false;
  put({ ...kept, upload: null, progress: 0, problem: null, local: URL.createObjectURL(kept.file) });
  const upload = kept.upload && (await isThere(kept.upload));
  if (upload) change(id, { upload, progress: 1 });
  else void uploadAgain(kept);
  return true;
}

async function uploadAgain(kept: KeptFile) {
  await upload({ ...kept, upload: null });
}

/** The item of an upload that a finished video was made with; null when it is gone for good. */
export async function itemOfUpload(uploadId: string): Promise<string | null> {
  for (const item of Object.values(media.value.items)) if (item.upload?.id === uploadId) return item.id;
  const kept = (await everything<KeptFile>('files')).find((file) => file.upload?.id === uploadId);
  if (kept) return (await restore(kept.id)) ? kept.id : null;
  try {
    const upload = await get<Upload>(`/uploads/${uploadId}`);
    const id = randomName();
    put({ id, kind: upload.kind, name: upload.name, upload, progress: 1, problem: null, local: '' });
    return id;
  } catch {
    return null;
  }
}

/** The studio may have thrown away what it used for the last video: those are sent again. */
export async function refresh(ids: string[]): Promise<void> {
  await Promise.all(
    ids.map(async (id) => {
      const item = media.value.items[id];
      if (!item?.upload || (await isThere(item.upload))) return;
      change(id, { upload: null, progress: 0 });
      const kept = await keptFile(id);
      if (kept) void uploadAgain(kept);
      else change(id, { problem: new Problem({ status: 404 }) });
    }),
  );
}

/** Resolves when none of the items is on its way. */
export function settled(ids: string[]): Promise<void> {
  const isBusy = () => ids.some((id) => media.value.items[id] && isSending(media.value.items[id]));
  if (!isBusy()) return Promise.resolve();
  return new Promise((resolve) => {
    const stop = media.watch(() => {
      if (isBusy()) return;
      stop();
      resolve();
    });
  });
}

export function isSending(item: Item): boolean {
  return !item.upload && !item.problem;
}

/** What to show of it: the studio's upright copy, which every browser can read, else the file itself. */
export function pictureOf(item: Item): string {
  return item.upload?.proxy || item.local;
}

/** Forgets every kept file that no draft mentions. */
export async function sweep(used: Set<string>): Promise<void> {
  for (const key of await keys('files')) {
    if (used.has(String(key)) || media.value.items[String(key)]) continue;
    await drop('files', key);
  }
}

export function forgetMedia() {
  for (const cancel of cancels.values()) cancel();
  for (const item of Object.values(media.value.items)) if (item.local) URL.revokeObjectURL(item.local);
  chosen.clear();
  media.set({ items: {} });
}
