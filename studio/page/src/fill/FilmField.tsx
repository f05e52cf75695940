// A film of one's own: chosen or filmed, where it begins, how loud it is.
import { useEffect, useRef } from 'preact/hooks';
import type { Input } from '../api/types';
import { seconds, t } from '../app/strings';
import { FileButton, filmFiles } from '../ui/FileButton';
import { Icon } from '../ui/Icon';
import { Ring } from '../ui/Ring';
import { problemText } from '../ui/Toasts';
import type { Field } from './Draft';
import { isSending, media } from './media';
import { aspectOf } from './PhotoSlots';

interface Properties {
  input: Input;
  field: Extract<Field, { kind: 'video' }> | undefined;
  problem: string;
  onFile: (file: File) => void;
  onChange: (change: { start?: number; volume?: number }) => void;
  onRemove: () => void;
  onFocus: () => void;
}

export function FilmField({ input, field, problem, onFile, onChange, onRemove, onFocus }: Properties) {
  const items = media.use((value) => value.items);
  const item = field ? items[field.item] : undefined;
  const film = useRef<HTMLVideoElement>(null);
  const length = item?.upload?.seconds ?? 0;
  const needed = input.seconds ?? 0;
  const latest = Math.max(0, length - needed);
  const start = field?.start ?? 0;

  useEffect(() => {
    if (film.current && Number.isFinite(film.current.duration)) film.current.currentTime = start;
  }, [start]);

  const said = problem || (item?.problem ? problemText(item.problem) : '');
  return (
    <div class="field" id={`field-${input.key}`}>
      <div class="field-head">
        <h2 dir="auto">{input.label}</h2>
        {needed > 0 && <span class="count">{seconds(needed)}</span>}
      </div>
      {!item && (
        <FileButton
          class="film-empty"
          accept={filmFiles}
          label={t('film.chooseFor', { label: input.label })}
          onFiles={(files) => files[0] && onFile(files[0])}
          onFocus={onFocus}
        >
          <Icon name="film" size={28} />
          <span aria-hidden="true">{t('film.choose')}</span>
        </FileButton>
      )}
      {item && (
        <>
          <div class="film" style={{ '--ratio': aspectOf(input) }}>
            {item.local ? (
              <video
                ref={film}
                src={item.local}
                {...(item.upload?.proxy ? { poster: item.upload.proxy } : {})}
                muted
                playsInline
                preload="metadata"
                aria-label={input.label}
                onLoadedMetadata={(event) => (event.currentTarget.currentTime = start)}
              />
            ) : (
              item.upload?.proxy && <img src={item.upload.proxy} alt="" />
            )}
            {isSending(item) && (
              <span class="slot-sending">
                <Ring share={item.progress < 1 ? item.progress : null} label={t('film.sending')} />
              </span>
            )}
          </div>
          {latest > 0.05 && (
            <label class="slider">
              <span>{t('film.start')}</span>
              <input
                type="range"
                min={0}
                max={latest}
                step={0.1}
                value={start}
                aria-valuetext={seconds(start)}
                onFocus={onFocus}
                onInput={(event) => onChange({ start: Number(event.currentTarget.value) })}
              />
              <output>{seconds(start)}</output>
            </label>
          )}
          <label class="slider">
            <span>{t('film.volume')}</span>
            <input
              type="range"
              min={0}
              max={1}
              step={0.05}
              value={field?.volume ?? 1}
              aria-valuetext={`${Math.round((field?.volume ?? 1) * 100)} %`}
              onInput={(event) => onChange({ volume: Number(event.currentTarget.value) })}
            />
            <output>{Math.round((field?.volume ?? 1) * 100)} %</output>
          </label>
          <div class="row">
            <FileButton
              class="quiet compact"
              accept={filmFiles}
              label={t('film.replace', { label: input.label })}
              onFiles={(files) => files[0] && onFile(files[0])}
            >
              <Icon name="film" size={18} />
              <span aria-hidden="true">{t('replace')}</span>
            </FileButton>
            <button type="button" class="quiet compact" onClick={onRemove}>
              <Icon name="trash" size={18} />
              {t('remove')}
            </button>
          </div>
        </>
      )}
      {said && (
        <p class="said bad" role="status">
          {said}
        </p>
      )}
    </div>
  );
}
