// The arithmetic of a crop: a rectangle of a fixed shape on a photo, turned about its centre.
//
// Lengths are in pixels of the upright photo, y down; angles in degrees, clockwise. The rectangle lies in the photo
// exactly when the upright box around it does, so every bound is a formula.
import type { Crop } from '../api/types';

export interface Photo {
  width: number;
  height: number;
}

export interface Frame {
  centreX: number;
  centreY: number;
  /** Across the place, before turning; the height follows from the aspect. */
  width: number;
  /** -180 to 180. */
  angle: number;
}

/** How far one can go in: below this share of the largest rectangle nothing is left to see. */
export const mostZoom = 8;

const radians = (degrees: number) => (degrees * Math.PI) / 180;

function within(value: number, low: number, high: number): number {
  return low > high ? (low + high) / 2 : Math.min(high, Math.max(low, value));
}

/** -180 (excluded) to 180. */
export function wrapped(angle: number): number {
  const turned = ((angle % 360) + 360) % 360;
  return turned > 180 ? turned - 360 : turned;
}

/** Half of the upright box around a rectangle of this width and shape, turned. */
function reach(width: number, aspect: number, angle: number): { x: number; y: number } {
  const cos = Math.abs(Math.cos(radians(angle)));
  const sin = Math.abs(Math.sin(radians(angle)));
  const height = width / aspect;
  return { x: (width * cos + height * sin) / 2, y: (width * sin + height * cos) / 2 };
}

export function largestWidth(photo: Photo, aspect: number, angle: number): number {
  const one = reach(1, aspect, angle);
  return Math.min(photo.width / (2 * one.x), photo.height / (2 * one.y));
}

/** The nearest frame that lies in the photo: first as large as it may be, then moved inwards. */
export function held(frame: Frame, photo: Photo, aspect: number): Frame {
  const angle = wrapped(frame.angle);
  const largest = largestWidth(photo, aspect, angle);
  const width = within(frame.width, largest / mostZoom, largest);
  const { x, y } = reach(width, aspect, angle);
  return {
    angle,
    width,
    centreX: within(frame.centreX, x, photo.width - x),
    centreY: within(frame.centreY, y, photo.height - y),
  };
}

/** The largest upright rectangle, in the middle. */
export function whole(photo: Photo, aspect: number): Frame {
  return held({ centreX: photo.width / 2, centreY: photo.height / 2, width: Infinity, angle: 0 }, photo, aspect);
}

/** A point or way on the screen, in the photo: the screen shows the photo turned back by the frame's angle. */
function toPhoto(frame: Frame, scale: number, x: number, y: number): { x: number; y: number } {
  const cos = Math.cos(radians(frame.angle));
  const sin = Math.sin(radians(frame.angle));
  return { x: (x * cos - y * sin) / scale, y: (x * sin + y * cos) / scale };
}

/** The photo follows a finger that went `x`, `y` screen pixels; `shown` is the place's width on the screen. */
export function moved(frame: Frame, shown: number, x: number, y: number): Frame {
  const way = toPhoto(frame, shown / frame.width, x, y);
  return { ...frame, centreX: frame.centreX - way.x, centreY: frame.centreY - way.y };
}

/**
 * Enlarged by `factor` and the photo turned by `turn` degrees about the screen point `x`, `y` (from the place's
 * middle): what lies under that point stays there, as far as the photo reaches.
 */
export function pinched(
  frame: Frame,
  photo: Photo,
  aspect: number,
  shown: number,
  x: number,
  y: number,
  factor: number,
  turn: number,
): Frame {
  const before = toPhoto(frame, shown / frame.width, x, y);
  const angle = wrapped(frame.angle - turn);
  const largest = largestWidth(photo, aspect, angle);
  const width = within(frame.width / factor, largest / mostZoom, largest);
  const after = toPhoto({ ...frame, angle }, shown / width, x, y);
  const next = {
    angle,
    width,
    centreX: frame.centreX + before.x - after.x,
    centreY: frame.centreY + before.y - after.y,
  };
  return held(next, photo, aspect);
}

/** Another angle or size about the middle of the place; a turn keeps the size where the photo allows it. */
export function adjusted(frame: Frame, photo: Photo, aspect: number, change: Partial<Frame>): Frame {
  return held({ ...frame, ...change }, photo, aspect);
}

/** 1 (all that fits) to mostZoom. */
export function zoomOf(frame: Frame, photo: Photo, aspect: number): number {
  return largestWidth(photo, aspect, frame.angle) / frame.width;
}

export function toCrop(frame: Frame, photo: Photo, aspect: number): Crop {
  const height = frame.width / aspect;
  return {
    x: (frame.centreX - frame.width / 2) / photo.width,
    y: (frame.centreY - height / 2) / photo.height,
    width: frame.width / photo.width,
    height: height / photo.height,
    angle: frame.angle,
  };
}

export function fromCrop(crop: Crop, photo: Photo, aspect: number): Frame {
  const frame = {
    centreX: (crop.x + crop.width / 2) * photo.width,
    centreY: (crop.y + crop.height / 2) * photo.height,
    width: crop.width * photo.width,
    angle: crop.angle,
  };
  return held(frame, photo, aspect);
}

/** How a photo of its own pixels lies under a place `shown` wide, from its upper left corner. */
function steps(frame: Frame, aspect: number, shown: number) {
  const scale = shown / frame.width;
  return { x: shown / 2, y: shown / aspect / 2, turn: -frame.angle, scale, left: -frame.centreX, up: -frame.centreY };
}

export function cssTransform(frame: Frame, aspect: number, shown: number): string {
  const { x, y, turn, scale, left, up } = steps(frame, aspect, shown);
  return `translate(${x}px, ${y}px) rotate(${turn}deg) scale(${scale}) translate(${left}px, ${up}px)`;
}

export function svgTransform(frame: Frame, aspect: number, shown: number): string {
  const { x, y, turn, scale, left, up } = steps(frame, aspect, shown);
  return `translate(${x} ${y}) rotate(${turn}) scale(${scale}) translate(${left} ${up})`;
}
