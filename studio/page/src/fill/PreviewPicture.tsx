// The picture of a held scene, drawn on a canvas so that one follows the other without a blink.
import { useEffect, useRef } from 'preact/hooks';
import { t } from '../app/strings';
import type { PreviewSession } from './PreviewSession';

interface Properties {
  session: PreviewSession;
  label: string;
  /** A frame made ahead, instead of the newest still. */
  instead?: HTMLImageElement | null;
}

export function PreviewPicture({ session, label, instead = null }: Properties) {
  const canvas = useRef<HTMLCanvasElement>(null);
  const picture = session.shown.use((shown) => shown.picture);
  const source = instead ?? picture;

  useEffect(() => {
    const element = canvas.current;
    // A picture that the next one has replaced already is closed, and has no width.
    if (!element || !source?.width) return;
    if (element.width !== source.width || element.height !== source.height) {
      element.width = source.width;
      element.height = source.height;
    }
    element.getContext('2d')?.drawImage(source, 0, 0);
  }, [source]);

  return <canvas ref={canvas} class={source ? 'shows' : ''} role="img" aria-label={t('preview.picture', { label })} />;
}
