// What a finished video was made with, as a draft to be changed.
import type { JobRequest, Template } from '../api/types';
import { templateMusic, type Content, type Field } from './Draft';
import { itemOfUpload } from './media';

/** `lost`: photos and films that neither the studio nor this browser has any more. */
export async function requestedContent(
  request: JobRequest,
  template: Template,
): Promise<{ content: Content; lost: number }> {
  const fields: Record<string, Field> = {};
  let lost = 0;
  for (const input of template.inputs) {
    const value = request.values[input.key];
    if (value === undefined) continue;
    if (value === null) {
      lost += 1;
      continue;
    }
    if (typeof value === 'string') {
      fields[input.key] = { kind: 'text', text: value };
      continue;
    }
    const item = await itemOfUpload(value.upload);
    if (!item) lost += 1;
    else if ('start' in value) fields[input.key] = { kind: 'video', item, start: value.start, volume: value.volume };
    else fields[input.key] = value.crop ? { kind: 'photo', item, crop: value.crop } : { kind: 'photo', item };
  }
  const music = request.music ?? templateMusic;
  const item = music.upload ? await itemOfUpload(music.upload) : null;
  return {
    content: {
      fields,
      music:
        music.kind === 'own'
          ? item
            ? { kind: 'own', item, volume: music.volume ?? 1, start: music.start ?? 0 }
            : templateMusic
          : { kind: music.kind, volume: music.volume ?? 1, start: 0 },
    },
    lost,
  };
}
