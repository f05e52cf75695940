// Fingers, mouse and wheel on an element, told as moves, and as pinches about a point.
export interface Gestures {
  moved(x: number, y: number): void;
  /** About a point given from the element's middle; `turn` in degrees, clockwise. */
  pinched(x: number, y: number, factor: number, turn: number): void;
}

export function listen(element: HTMLElement, gestures: Gestures): () => void {
  const fingers = new Map<number, { x: number; y: number }>();

  const middle = () => {
    const box = element.getBoundingClientRect();
    return { x: box.left + box.width / 2, y: box.top + box.height / 2 };
  };
  const pair = () => {
    const [a, b] = [...fingers.values()] as [{ x: number; y: number }, { x: number; y: number }];
    const acrossX = b.x - a.x;
    const acrossY = b.y - a.y;
    return {
      x: (a.x + b.x) / 2,
      y: (a.y + b.y) / 2,
      length: Math.hypot(acrossX, acrossY),
      angle: (Math.atan2(acrossY, acrossX) * 180) / Math.PI,
    };
  };

  const down = (event: PointerEvent) => {
    if (fingers.size === 2 || event.button > 0) return;
    element.setPointerCapture(event.pointerId);
    fingers.set(event.pointerId, { x: event.clientX, y: event.clientY });
  };
  const move = (event: PointerEvent) => {
    const old = fingers.get(event.pointerId);
    if (!old) return;
    const next = { x: event.clientX, y: event.clientY };
    if (fingers.size === 1) {
      fingers.set(event.pointerId, next);
      gestures.moved(next.x - old.x, next.y - old.y);
      return;
    }
    const before = pair();
    fingers.set(event.pointerId, next);
    const after = pair();
    const centre = middle();
    gestures.moved(after.x - before.x, after.y - before.y);
    if (before.length > 0) {
      gestures.pinched(after.x - centre.x, after.y - centre.y, after.length / before.length, after.angle - before.angle);
    }
  };
  const up = (event: PointerEvent) => void fingers.delete(event.pointerId);
  const wheel = (event: WheelEvent) => {
    event.preventDefault();
    const centre = middle();
    gestures.pinched(event.clientX - centre.x, event.clientY - centre.y, Math.exp(-event.deltaY / 400), 0);
  };

  element.addEventListener('pointerdown', down);
  element.addEventListener('pointermove', move);
  element.addEventListener('pointerup', up);
  element.addEventListener('pointercancel', up);
  element.addEventListener('wheel', wheel, { passive: false });
  return () => {
    element.removeEventListener('pointerdown', down);
    element.removeEventListener('pointermove', move);
    element.removeEventListener('pointerup', up);
    element.removeEventListener('pointercancel', up);
    element.removeEventListener('wheel', wheel);
  };
}
