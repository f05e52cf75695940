// The music: the template's, none, or a sound of one's own, with its volume and beginning.
import { useId } from 'preact/hooks';
import { seconds, t } from '../app/strings';
import { FileButton, soundFiles } from '../ui/FileButton';
import { Icon } from '../ui/Icon';
import { Ring } from '../ui/Ring';
import { Said } from '../ui/Said';
import { percent, Slider } from '../ui/Slider';
import type { Music } from './Draft';
import { isSending, media } from './media';

interface Properties {
  music: Music;
  hasTemplateMusic: boolean;
  onChange: (music: Music) => void;
  onFile: (file: File) => void;
}

/** As no input of a template is called. */
export const musicKey = '~music';

export function MusicField({ music, hasTemplateMusic, onChange, onFile }: Properties) {
  const name = useId();
  const items = media.use((value) => value.items);
  const item = music.item ? items[music.item] : undefined;
  const length = item?.upload?.seconds ?? 0;
  const kinds = hasTemplateMusic ? (['template', 'own', 'none'] as const) : (['template', 'own'] as const);
  const label = { template: hasTemplateMusic ? t('music.template') : t('music.none'), own: t('music.own'), none: t('music.none') };
  const isHeard = (music.kind === 'template' && hasTemplateMusic) || (music.kind === 'own' && item);

  return (
    <fieldset class="field" id={`field-${musicKey}`}>
      <legend class="field-head">
        <h2>{t('music.title')}</h2>
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
            <Icon name="music" />
            <span aria-hidden="true">{item ? t('word.replace') : t('music.choose')}</span>
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
      {music.kind === 'own' && <Said problem={item?.problem} />}
      {isHeard && (
        <Slider
          label={t('music.volume')}
          max={2}
          step={0.05}
          value={music.volume}
          words={percent(music.volume)}
          onChange={(volume) => onChange({ ...music, volume })}
        />
      )}
      {music.kind === 'own' && length > 1 && (
        <Slider
          label={t('music.start')}
          max={Math.floor(length - 1)}
          step={0.5}
          value={music.start}
          words={seconds(music.start)}
          onChange={(start) => onChange({ ...music, start })}
        />
      )}
    </fieldset>
  );
}
