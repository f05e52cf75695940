// On top of the form: the scene at the moment of the field in focus, a scrubber with a dot at each field's moment, and
// the whole as moving stills with its music.
import { useCallback, useEffect, useRef, useState } from 'preact/hooks';
import type { ApiValues, Template } from '../api/types';
import { seconds, t } from '../app/strings';
import { Icon } from '../ui/Icon';
import { problemText } from '../ui/Toasts';
import type { PreviewSession } from './PreviewSession';
import { PreviewPicture } from './PreviewPicture';

interface Properties {
  template: Template;
  session: PreviewSession;
  values: ApiValues;
  /** The sound to play, '' for none. */
  music: { address: string; volume: number; start: number };
  activeKey: string;
  onDraft: () => void;
}

/** The frame made ahead that is nearest to this one. */
function nearest(strip: ReadonlyMap<number, HTMLImageElement>, frame: number): HTMLImageElement | null {
  let best: HTMLImageElement | null = null;
  let distance = Infinity;
  for (const [number, image] of strip) {
    if (Math.abs(number - frame) >= distance) continue;
    distance = Math.abs(number - frame);
    best = image;
  }
  return best;
}

export function LivePreview({ template, session, values, music, activeKey, onDraft }: Properties) {
  const info = session.shown.use((shown) => shown.info);
  const strip = session.shown.use((shown) => shown.strip);
  const stillFrame = session.shown.use((shown) => shown.frame);
  const isWaiting = session.shown.use((shown) => shown.isWaiting);
  const problem = session.shown.use((shown) => shown.problem);
  const hasPicture = session.shown.use((shown) => shown.picture !== null);
  const [playing, setPlaying] = useState(false);
  /** Where the finger or the playing is; null: the still is what is shown. */
  const [position, setPosition] = useState<number | null>(null);
  const sound = useRef<HTMLAudioElement>(null);
  const now = useRef({ strip, values, music });
  now.current = { strip, values, music };

  const frames = info?.frames ?? template.frames;
  const fps = info?.framesPerSecond ?? template.framesPerSecond;
  const frame = Math.min(frames - 1, Math.round(position ?? stillFrame));

  const stop = useCallback(() => setPlaying(false), []);
  useEffect(() => {
    if (!activeKey) return;
    setPlaying(false);
    setPosition(null);
  }, [activeKey]);

  // What was made ahead shows old words once they change.
  useEffect(() => {
    session.dropStrip();
    setPlaying(false);
    setPosition(null);
  }, [values, session]);

  useEffect(() => {
    if (!playing) return;
    session.loadStrip(now.current.values);
    const every = Math.max(1, Math.round(fps / 8));
    const audio = sound.current;
    let at = position !== null && position < frames - every ? position : 0;
    let last = performance.now();
    let request = 0;
    const tick = (time: number) => {
      const next = at + ((time - last) / 1000) * fps;
      last = time;
      // Frames that are not made yet are waited for, and the sound with them.
      const isThere = now.current.strip.has(Math.floor(next / every) * every);
      if (isThere) at = next;
      if (audio?.src) {
        const heard = now.current.music.start + at / fps;
        // A sound that came late is behind.
        const isOff = audio.readyState > 2 && Math.abs(audio.currentTime - heard) > 0.4;
        if (isThere && (audio.paused || isOff)) {
          audio.currentTime = heard;
          audio.volume = Math.min(1, now.current.music.volume);
          void audio.play().catch(() => {});
        } else if (!isThere && !audio.paused) audio.pause();
      }
      if (at >= frames - 1) {
        setPlaying(false);
        setPosition(frames - 1);
        return;
      }
      setPosition(at);
      request = requestAnimationFrame(tick);
    };
    request = requestAnimationFrame(tick);
    return () => {
      cancelAnimationFrame(request);
      audio?.pause();
    };
  }, [playing]);

  // The finger rests: the exact picture of that frame.
  useEffect(() => {
    if (playing || position === null) return;
    const timer = setTimeout(() => session.show(now.current.values, Math.round(position)), 120);
    return () => clearTimeout(timer);
  }, [playing, position]);
  useEffect(() => {
    if (!playing && position !== null && stillFrame === Math.round(position)) setPosition(null);
  }, [stillFrame, playing]);

  const label = (key: string) => template.inputs.find((input) => input.key === key)?.label ?? '';
  const instead = position === null ? null : nearest(strip, frame);
  const ratio = { '--ratio': template.width / template.height };

  return (
    <section class="live" aria-label={t('preview.title')} style={ratio}>
      {template.thumbnail && <img class="ambient" src={template.thumbnail} alt="" />}
      <div class="live-picture">
        {!hasPicture && template.thumbnail && <img class="live-first" src={template.thumbnail} alt="" />}
        <PreviewPicture session={session} label={template.title} instead={instead} />
        {isWaiting && !playing && <span class="live-busy" />}
        {problem && !playing && (
          <p class="live-problem" role="status">
            {problemText(problem)}
          </p>
        )}
      </div>
      <div class="live-bar">
        <button
          class="round"
          aria-label={playing ? t('word.pause') : t('preview.play')}
          disabled={!info}
          onClick={() => (playing ? stop() : setPlaying(true))}
        >
          <Icon name={playing ? 'pause' : 'play'} />
        </button>
        <div class="scrub">
          <div class="dots" aria-hidden="true">
            {Object.entries(info?.moments ?? {}).map(([key, moment]) => (
              <i
                key={key}
                class={key === activeKey ? 'active' : ''}
                style={{ insetInlineStart: `${(moment / Math.max(1, frames - 1)) * 100}%` }}
              />
            ))}
          </div>
          <input
            type="range"
            dir="ltr"
            min={0}
            max={frames - 1}
            value={frame}
            disabled={!info}
            aria-label={t('preview.moment')}
            aria-valuetext={t('preview.at', { at: seconds(frame / fps), all: seconds(frames / fps) })}
            onPointerDown={() => session.loadStrip(values)}
            onInput={(event) => {
              setPlaying(false);
              setPosition(Number(event.currentTarget.value));
            }}
          />
        </div>
        <button class="round" aria-label={t('preview.draft')} title={t('preview.draft')} onClick={onDraft}>
          <Icon name="film" />
        </button>
      </div>
      <span class="hidden" aria-live="polite">
        {activeKey && label(activeKey) ? t('preview.shows', { label: label(activeKey) }) : ''}
      </span>
      {music.address && <audio ref={sound} src={music.address} preload="none" />}
    </section>
  );
}
