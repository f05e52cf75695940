// A film of one's own: chosen or filmed, where it begins, how loud it is.
import { useEffect, useRef } from 'preact/hooks';
import type { Input } from '../api/types';
import { seconds, t } from '../app/strings';
import { FileButton, filmFiles } from '../ui/FileButton';
import { Icon } from '../ui/Icon';
import { Ring } from '../ui/Ring';
import { Said } from '../ui/Said';
import { percent, Slider } from '../ui/Slider';
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
  // Where the template does not say how much it shows, some of the film remains.
  const latest = Math.max(0, length - (needed || 1));
  const start = field?.start ?? 0;
  const volume = field?.volume ?? 1;

  useEffect(() => {
    if (film.current && Number.isFinite(film.current.duration)) film.current.currentTime = start;
  }, [start]);

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
          <Icon name="film" />
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
            <Slider
              label={t('film.start')}
              max={latest}
              step={0.1}
              value={start}
              words={seconds(start)}
              onFocus={onFocus}
              onChange={(value) => onChange({ start: value })}
            />
          )}
          <Slider
            label={t('film.volume')}
            max={1}
            step={0.05}
            value={volume}
            words={percent(volume)}
            onChange={(value) => onChange({ volume: value })}
          />
          <div class="row">
            <FileButton
              class="quiet compact"
              accept={filmFiles}
              label={t('film.replace', { label: input.label })}
              onFiles={(files) => files[0] && onFile(files[0])}
            >
              <Icon name="film" />
              <span aria-hidden="true">{t('word.replace')}</span>
            </FileButton>
            <button type="button" class="quiet compact" onClick={onRemove}>
              <Icon name="trash" />
              {t('word.remove')}
            </button>
          </div>
        </>
      )}
      <Said text={problem} problem={item?.problem} />
    </div>
  );
}
