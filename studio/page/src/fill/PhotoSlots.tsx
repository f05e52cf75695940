// The photos of a template side by side: chosen together or one by one, dropped, pasted, put in another order, cropped.
import { useRef, useState } from 'preact/hooks';
import type { Input } from '../api/types';
import { t } from '../app/strings';
import { FileButton, photoFiles } from '../ui/FileButton';
import { Icon } from '../ui/Icon';
import { Ring } from '../ui/Ring';
import { Said } from '../ui/Said';
import type { Field } from './Draft';
import { CroppedPhoto } from './CroppedPhoto';
import { isSending, isTooLarge, media, pictureOf, retry } from './media';

interface Properties {
  inputs: Input[];
  fields: Record<string, Field>;
  problems: Record<string, string>;
  /** Fills the slots from this one on, in order; '' from the first empty one. */
  onFiles: (files: File[], from: string) => void;
  onCrop: (key: string) => void;
  onSwap: (from: string, to: string) => void;
  onRemove: (key: string) => void;
  onFocus: (key: string) => void;
}

export function aspectOf(input: Input): number {
  return input.aspectWidth && input.aspectHeight ? input.aspectWidth / input.aspectHeight : 1;
}

export function imagesOf(transfer: DataTransfer | null): File[] {
  return [...(transfer?.files ?? [])].filter((file) => file.type.startsWith('image/') || /\.hei[cf]$/i.test(file.name));
}

const hasCamera = matchMedia('(pointer: coarse)').matches;

export function PhotoSlots({ inputs, fields, problems, onFiles, onCrop, onSwap, onRemove, onFocus }: Properties) {
  const items = media.use((value) => value.items);
  const [over, setOver] = useState('');
  const drag = useRef<{ from: string } | null>(null);
  const isOne = inputs.length === 1;

  const slotAt = (event: PointerEvent) =>
    document.elementFromPoint(event.clientX, event.clientY)?.closest<HTMLElement>('[data-slot]')?.dataset.slot ?? '';

  /** A finger on the grip takes the photo to another slot. */
  const grip = (key: string) => ({
    onPointerDown: (event: PointerEvent & { currentTarget: HTMLElement }) => {
      event.currentTarget.setPointerCapture(event.pointerId);
      drag.current = { from: key };
      setOver(key);
    },
    onPointerMove: (event: PointerEvent) => drag.current && setOver(slotAt(event)),
    onPointerUp: (event: PointerEvent) => {
      const to = slotAt(event);
      if (drag.current && to && to !== key) onSwap(key, to);
      drag.current = null;
      setOver('');
    },
    onPointerCancel: () => {
      drag.current = null;
      setOver('');
    },
    onKeyDown: (event: KeyboardEvent) => {
      const way = { ArrowLeft: -1, ArrowUp: -1, ArrowRight: 1, ArrowDown: 1 }[event.key];
      const to = way && inputs[inputs.findIndex((input) => input.key === key) + way];
      if (!to) return;
      event.preventDefault();
      onSwap(key, to.key);
    },
  });

  const drop = (key: string) => ({
    onDragOver: (event: DragEvent) => {
      event.preventDefault();
      setOver(key);
    },
    onDragLeave: () => setOver(''),
    onDrop: (event: DragEvent) => {
      event.preventDefault();
      event.stopPropagation();
      setOver('');
      const files = imagesOf(event.dataTransfer);
      if (files.length > 0) onFiles(files, key);
    },
  });

  const slot = (input: Input) => {
    const field = fields[input.key];
    const item = field && field.kind !== 'text' ? items[field.item] : undefined;
    const crop = field?.kind === 'photo' ? field.crop : undefined;
    const picture = item ? pictureOf(item) : '';
    return (
      <li
        key={input.key}
        id={`field-${input.key}`}
        data-slot={input.key}
        class={`slot ${over === input.key ? 'over' : ''}`}
        {...drop(input.key)}
      >
        <div class="slot-place" style={{ '--ratio': aspectOf(input) }}>
          {!item && (
            <FileButton
              class="slot-empty"
              accept={photoFiles}
              multiple
              label={t('photo.chooseFor', { label: input.label })}
              onFiles={(files) => onFiles(files, input.key)}
              onFocus={() => onFocus(input.key)}
            >
              <Icon name="photo" />
              <span aria-hidden="true">{t('photo.choose')}</span>
            </FileButton>
          )}
          {item && (
            <button
              type="button"
              class="slot-photo"
              aria-label={t('photo.cropOf', { label: input.label })}
              disabled={!picture || item.problem !== null}
              onFocus={() => onFocus(input.key)}
              onClick={() => onCrop(input.key)}
            >
              {picture && <CroppedPhoto source={picture} crop={crop} aspect={aspectOf(input)} />}
              {isSending(item) && (
                <span class="slot-sending">
                  <Ring share={item.progress < 1 ? item.progress : null} label={t('photo.sending')} />
                </span>
              )}
              {!isSending(item) && !item.problem && (
                <span class="slot-badge">
                  <Icon name="crop" />
                </span>
              )}
            </button>
          )}
        </div>
        <div class="slot-foot">
          <span class="slot-label" dir="auto">
            {input.label}
          </span>
          <span class="slot-tools">
            {item?.problem && !isTooLarge(item.problem) && (
              <button type="button" class="round small" aria-label={t('word.again')} onClick={() => void retry(item.id)}>
                <Icon name="again" />
              </button>
            )}
            {!item && hasCamera && (
              <FileButton
                class="round small"
                accept={photoFiles}
                camera
                label={t('photo.cameraFor', { label: input.label })}
                onFiles={(files) => onFiles(files, input.key)}
              >
                <Icon name="camera" />
              </FileButton>
            )}
            {item && !isOne && (
              <button type="button" class="round small grip" aria-label={t('photo.move', { label: input.label })} {...grip(input.key)}>
                <Icon name="grip" />
              </button>
            )}
            {item && (
              <FileButton
                class="round small"
                accept={photoFiles}
                label={t('photo.replace', { label: input.label })}
                onFiles={(files) => onFiles(files.slice(0, 1), input.key)}
              >
                <Icon name="photo" />
              </FileButton>
            )}
            {item && (
              <button
                type="button"
                class="round small"
                aria-label={t('photo.remove', { label: input.label })}
                onClick={() => onRemove(input.key)}
              >
                <Icon name="trash" />
              </button>
            )}
          </span>
        </div>
        <Said text={problems[input.key] ?? ''} problem={item?.problem} />
      </li>
    );
  };

  return (
    <div class="field">
      {!isOne && (
        <div class="field-head">
          <h2>{t('photo.heading', { n: inputs.length })}</h2>
          <FileButton
            class="quiet compact"
            accept={photoFiles}
            multiple
            label={t('photo.chooseAll')}
            onFiles={(files) => onFiles(files, '')}
          >
            <Icon name="plus" />
            <span aria-hidden="true">{t('photo.chooseAll')}</span>
          </FileButton>
        </div>
      )}
      <ul class={isOne ? 'slots one' : 'slots'}>{inputs.map(slot)}</ul>
    </div>
  );
}
