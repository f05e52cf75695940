// The frame that is looked at, what is chosen in it, and the way through time.
import { useEffect, useRef } from 'preact/hooks';
import { Icon } from '../ui/Icon';
import { bench, seek, select, showTrial, togglePlay } from './bench';
import { cornersOf, isSeen, liveNode, nodesAt } from './live';
import { w, wordOr } from './words';

function Outline() {
  const { outline, values, selected, isPlaying, pictureFrame } = bench.use((value) => value);
  if (!outline || !values || !selected || isPlaying || values.frame !== pictureFrame) return null;
  const node = liveNode(outline, selected, values);
  const corners = node && isSeen(node) ? cornersOf(node) : null;
  if (!corners) return null;
  return (
    <svg class="wb-outline" viewBox="0 0 1 1" preserveAspectRatio="none" aria-hidden="true">
      <polygon points={corners.map((corner) => corner.join(',')).join(' ')} />
    </svg>
  );
}

/** The uppermost at that point; clicked again, the one below. */
function pick(event: MouseEvent) {
  const { outline, values, selected } = bench.value;
  if (!outline || !values) return;
  const box = (event.currentTarget as Element).getBoundingClientRect();
  const at = nodesAt(outline, values, [(event.clientX - box.x) / box.width, (event.clientY - box.y) / box.height]);
  const before = at.findIndex((one) => one.key === selected?.key && one.scene === selected.scene);
  if (at.length > 0) select(at[(before + 1) % at.length]!);
}

export function Picture() {
  const canvas = useRef<HTMLCanvasElement>(null);
  const picture = bench.use((value) => value.picture);
  const frame = bench.use((value) => value.pictureFrame);
  const isOld = bench.use((value) => value.isWaiting && !value.isPlaying);
  const state = bench.use((value) => value.state);

  useEffect(() => {
    const element = canvas.current;
    if (!element || !picture) return;
    if (element.width !== picture.width || element.height !== picture.height) {
      element.width = picture.width;
      element.height = picture.height;
    }
    element.getContext('2d')?.drawImage(picture, 0, 0);
    picture.close();
  }, [picture]);

  const isThere = picture !== null;
  return (
    <div class="wb-stage">
      {!isThere && (
        <p class="wb-empty">{state?.problem ? w('refusedAtAll') : w('reading')}</p>
      )}
      <div class="wb-screen" hidden={!isThere} data-frame={frame}>
        <canvas ref={canvas} class={isOld ? 'is-old' : ''} role="img" aria-label={w('picture', { n: frame })} onClick={pick} />
        <Outline />
      </div>
    </div>
  );
}

export function timeText(frame: number, framesPerSecond: number): string {
  const seconds = frame / framesPerSecond;
  const minutes = Math.floor(seconds / 60);
  return `${minutes}:${(seconds - 60 * minutes).toFixed(2).padStart(5, '0')}`;
}

export function Transport() {
  const frame = bench.use((value) => value.frame);
  const isPlaying = bench.use((value) => value.isPlaying);
  const rate = bench.use((value) => value.rate);
  const video = bench.use((value) => value.state?.video ?? null);
  const trial = bench.use((value) => value.trial);
  const frames = video?.frames ?? 0;
  const name = wordOr(`trial.${trial}`, trial);
  return (
    <div class="wb-transport">
      <button type="button" class="round small" aria-label={w('back')} onClick={() => seek(frame - 1)}>
        <Icon name="back" />
      </button>
      <button type="button" class="wb-play" aria-label={w(isPlaying ? 'pause' : 'play')} disabled={frames < 2} onClick={togglePlay}>
        <Icon name={isPlaying ? 'pause' : 'play'} />
      </button>
      <button type="button" class="round small" aria-label={w('on')} onClick={() => seek(frame + 1)}>
        <Icon name="next" />
      </button>
      <label class="wb-frame">
        <span class="hidden">{w('frame')}</span>
        <input
          type="text"
          inputMode="numeric"
          value={frame}
          onFocus={(event) => event.currentTarget.select()}
          onChange={(event) => seek(Number(event.currentTarget.value) || 0)}
        />
        <span>{w('of', { n: frames })}</span>
      </label>
      <span class="wb-time number">
        {isPlaying ? w('rate', { n: rate }) : video ? timeText(frame, video.framesPerSecond) : ''}
      </span>
      {trial && (
        <button type="button" class="wb-trial-on" onClick={() => showTrial('')}>
          {w('showing', { name })}
          <Icon name="close" />
        </button>
      )}
    </div>
  );
}
