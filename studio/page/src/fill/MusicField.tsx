// The music: the template's, none, or a sound of one's own, with its volume and beginning.
import { useId } from 'preact/hooks';
import { seconds, t } from '../app/strings';
import { FileButton, soundFiles } from '../ui/FileButton';
import { Icon } from '../ui/Icon';
import { Ring } from '../ui/Ring';
import { problemText } from '../ui/Toasts';
import type { Music } from './Draft';
import { isSending, media } from './media';

interface Properties {
  music: Music;
  hasTemplateMusic: boolean;
  onChange: (music: Music) => void;
  onFile: (file: File) => void;
}

export function MusicField({ music, hasTemplateMusic, onChange, onFile }: Properties) {
  const name = useId();
  const items = media.use((value) => value.items);
  const item = music.item ? items[music.item] : undefined;
  const length = item?.upload?.seconds ?? 0;
  const kinds = hasTemplateMusic ? (['template', 'own', 'none'] as const) : (['template', 'own'] as const);
  const label = { template: hasTemplateMusic ? t('music.template') : t('music.none'), own: t('music.own'), none: t('music.none') };
  const isHeard = (music.kind === 'template' && hasTemplateMusic) || (music.kind === 'own' && item);

  return (
    <fieldset class="field">
      <legend class="field-head">
        <h2>{t('music')}</h2>
      </legend>
      <div class="segments">
        {kinds.map((kind) => (
          <label key={kind} class="segment">
            <input
              type="radio"
              name={name}
              checked={music.kind === kind}
              onChange={() => onChange({ ...music, kind })}
            />
            <span>{label[kind]}</span>
          </label>
        ))}
      </div>
      {music.kind === 'own' && (
        <div class="row">
          <FileButton
            class="quiet compact"
            accept={soundFiles}
            label={t('music.choose')}
            onFiles={(files) => files[0] && onFile(files[0])}
          >
            <Icon name="music" size={18} />
            <span aria-hidden="true">{item ? t('replace') : t('music.choose')}</span>
          </FileButton>
          {item && (
            <span class="music-name" dir="auto">
              {item.name}
            </span>
          )}
          {item && isSending(item) && (
            <span class="ring-small">
              <Ring share={item.progress < 1 ? item.progress : null} label={t('music.sending')} />
            </span>
          )}
        </div>
      )}
      {item?.problem && music.kind === 'own' && (
        <p class="said bad" role="status">
          {problemText(item.problem)}
        </p>
      )}
      {isHeard && (
        <label class="slider">
          <span>{t('music.volume')}</span>
          <input
            type="range"
            min={0}
            max={2}
            step={0.05}
            value={music.volume}
            aria-valuetext={`${Math.round(music.volume * 100)} %`}
            onInput={(event) => onChange({ ...music, volume: Number(event.currentTarget.value) })}
          />
          <output>{Math.round(music.volume * 100)} %</output>
        </label>
      )}
      {music.kind === 'own' && length > 1 && (
        <label class="slider">
          <span>{t('music.start')}</span>
          <input
            type="range"
            min={0}
            max={Math.floor(length - 1)}
            step={0.5}
            value={music.start}
            aria-valuetext={seconds(music.start)}
            onInput={(event) => onChange({ ...music, start: Number(event.currentTarget.value) })}
          />
          <output>{seconds(music.start)}</output>
        </label>
      )}
    </fieldset>
  );
}
