// A photo as its place shows it: cut as chosen, else the middle of it.
import { useEffect, useState } from 'preact/hooks';
import type { Crop } from '../api/types';
import { fromCrop, svgTransform, whole, type Photo } from '../crop/geometry';

interface Properties {
  source: string;
  crop: Crop | undefined;
  aspect: number;
}

const across = 100;

export function CroppedPhoto({ source, crop, aspect }: Properties) {
  const [photo, setPhoto] = useState<Photo | null>(null);

  useEffect(() => {
    const image = new Image();
    image.onload = () => setPhoto({ width: image.naturalWidth, height: image.naturalHeight });
    image.src = source;
    return () => {
      image.onload = null;
    };
  }, [source]);

  if (!photo) return null;
  const frame = crop ? fromCrop(crop, photo, aspect) : whole(photo, aspect);
  return (
    <svg class="cropped" viewBox={`0 0 ${across} ${across / aspect}`} aria-hidden="true">
      <g transform={svgTransform(frame, aspect, across)}>
        <image href={source} width={photo.width} height={photo.height} />
      </g>
    </svg>
  );
}
