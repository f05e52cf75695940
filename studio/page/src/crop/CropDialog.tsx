// Full screen on a phone: the place stays, the photo moves, turns and grows under it.
import type { ComponentChildren } from 'preact';
import { useEffect, useLayoutEffect, useRef, useState } from 'preact/hooks';
import type { Crop } from '../api/types';
import { t } from '../app/strings';
import { Dialog } from '../ui/Dialog';
import { Icon } from '../ui/Icon';
import { percent, Slider } from '../ui/Slider';
import {
  adjusted,
  fromCrop,
  held,
  largestWidth,
  mostZoom,
  moved,
  pinched,
  toCrop,
  cssTransform,
  whole,
  wrapped,
  zoomOf,
  type Frame,
  type Photo,
} from './geometry';
import { listen } from './gestures';

interface Properties {
  label: string;
  source: string;
  aspect: number;
  crop: Crop | undefined;
  /** Told when the photo has rested for a moment; for the picture of the scene. */
  onTry: (crop: Crop) => void;
  onDone: (crop: Crop) => void;
  onCancel: () => void;
  /** The scene as it comes to look. */
  children?: ComponentChildren;
}

const edge = 20;

/** What is left of an angle beyond the quarter turns, as the photo is seen to be turned. */
function slant(frame: Frame): number {
  const seen = -frame.angle;
  return seen - Math.round(seen / 90) * 90;
}

export function CropDialog({ label, source, aspect, crop, onTry, onDone, onCancel, children }: Properties) {
  const stage = useRef<HTMLDivElement>(null);
  const [photo, setPhoto] = useState<Photo | null>(null);
  const [frame, setFrame] = useState<Frame | null>(null);
  const [shown, setShown] = useState(0);
  const latest = useRef({ photo, shown });
  latest.current = { photo, shown };

  useLayoutEffect(() => {
    const element = stage.current;
    if (!element) return;
    const fit = () => {
      const width = element.clientWidth - 2 * edge;
      const height = element.clientHeight - 2 * edge;
      setShown(Math.max(40, Math.min(width, height * aspect)));
    };
    const watcher = new ResizeObserver(fit);
    watcher.observe(element);
    fit();
    return () => watcher.disconnect();
  }, [aspect]);

  const change = (next: (frame: Frame, photo: Photo, shown: number) => Frame) =>
    setFrame((old) => {
      const now = latest.current;
      return old && now.photo ? held(next(old, now.photo, now.shown), now.photo, aspect) : old;
    });

  useEffect(() => {
    if (!stage.current) return;
    return listen(stage.current, {
      moved: (x, y) => change((frame, _, shown) => moved(frame, shown, x, y)),
      pinched: (x, y, factor, turn) =>
        change((frame, photo, shown) => pinched(frame, photo, aspect, shown, x, y, factor, turn)),
    });
  }, []);

  const tell = useRef(onTry);
  tell.current = onTry;
  useEffect(() => {
    if (!frame || !photo) return;
    const timer = setTimeout(() => tell.current(toCrop(frame, photo, aspect)), 90);
    return () => clearTimeout(timer);
  }, [frame, photo]);

  /** A turn keeps how much is enlarged, so that turning back gives what was there before. */
  const turn = (degrees: number) =>
    change((frame, photo) => {
      const angle = wrapped(frame.angle - degrees);
      return adjusted(frame, photo, aspect, {
        angle,
        width: largestWidth(photo, aspect, angle) / zoomOf(frame, photo, aspect),
      });
    });
  const zoom = (factor: number) => change((frame) => ({ ...frame, width: frame.width / factor }));

  const keys = (event: KeyboardEvent) => {
    const step = event.shiftKey ? 40 : 8;
    const ways: Record<string, () => void> = {
      ArrowLeft: () => change((frame, _, shown) => moved(frame, shown, -step, 0)),
      ArrowRight: () => change((frame, _, shown) => moved(frame, shown, step, 0)),
      ArrowUp: () => change((frame, _, shown) => moved(frame, shown, 0, -step)),
      ArrowDown: () => change((frame, _, shown) => moved(frame, shown, 0, step)),
      '+': () => zoom(1.1),
      '=': () => zoom(1.1),
      '-': () => zoom(1 / 1.1),
      '[': () => turn(-1),
      ']': () => turn(1),
      r: () => turn(90),
    };
    const way = ways[event.key];
    if (!way) return;
    event.preventDefault();
    way();
  };

  const ready = frame && photo && shown > 0;
  const zoomed = ready ? zoomOf(frame, photo, aspect) : 1;
  const slanted = ready ? slant(frame) : 0;

  return (
    <Dialog title={t('crop.title', { label })} shape="full" onClose={onCancel}>
      <div
        ref={stage}
        class="crop-stage"
        tabIndex={0}
        role="application"
        aria-label={t('crop.stage')}
        aria-describedby="crop-hint"
        onKeyDown={keys}
      >
        <img
          class="crop-photo"
          src={source}
          alt=""
          draggable={false}
          onLoad={(event) => {
            const size = { width: event.currentTarget.naturalWidth, height: event.currentTarget.naturalHeight };
            setPhoto(size);
            setFrame(crop ? fromCrop(crop, size, aspect) : whole(size, aspect));
          }}
          style={
            ready
              ? {
                  width: `${photo.width}px`,
                  height: `${photo.height}px`,
                  left: `calc(50% - ${shown / 2}px)`,
                  top: `calc(50% - ${shown / aspect / 2}px)`,
                  transform: cssTransform(frame, aspect, shown),
                }
              : { visibility: 'hidden' }
          }
        />
        <div class="crop-place" style={{ width: `${shown}px`, height: `${shown / aspect}px` }} aria-hidden="true">
          <i />
          <i />
        </div>
        {children && <div class="crop-scene">{children}</div>}
      </div>
      <p id="crop-hint" class="hint crop-hint">
        {t('crop.hint')}
      </p>
      <div class="crop-tools">
        <Slider
          quiet
          label={t('crop.zoom')}
          max={100}
          step={1}
          value={(Math.log(zoomed) / Math.log(mostZoom)) * 100}
          words={percent(zoomed)}
          onChange={(value) => zoom(mostZoom ** (value / 100) / zoomed)}
        />
        <Slider
          quiet
          label={t('crop.turn')}
          min={-44}
          max={44}
          step={0.5}
          value={slanted}
          words={`${slanted.toFixed(1)}°`}
          onChange={(value) => turn(value - slanted)}
        />
        <div class="row spread">
          <button class="quiet" onClick={() => turn(90)}>
            <Icon name="turn" />
            {t('crop.quarter')}
          </button>
          <button class="quiet" onClick={() => photo && setFrame(whole(photo, aspect))}>
            <Icon name="again" />
            {t('word.reset')}
          </button>
        </div>
      </div>
      <footer class="dialog-foot">
        <button class="plain" onClick={onCancel}>
          {t('word.cancel')}
        </button>
        <button
          class="primary"
          disabled={!ready}
          onClick={() => ready && onDone(toCrop(frame, photo, aspect))}
        >
          {t('crop.use')}
        </button>
      </footer>
    </Dialog>
  );
}
