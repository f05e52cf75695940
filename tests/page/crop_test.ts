// The arithmetic of the crop dialog, held against rectangles and transforms reckoned here in another way.
import assert from 'node:assert/strict';
import test from 'node:test';
import {
  adjusted,
  fromCrop,
  held,
  largestWidth,
  moved,
  pinched,
  svgTransform,
  toCrop,
  whole,
  type Frame,
} from '../../studio/page/src/crop/geometry';

type Point = [number, number];

let seed = 7;
function random(low: number, high: number): number {
  seed = (seed * 1103515245 + 12345) % 2147483648;
  return low + (seed / 2147483648) * (high - low);
}

/** The four corners of what is shown, in the photo: the centre, and the half sides turned clockwise. */
function corners(frame: Frame, aspect: number): Point[] {
  const turn = (frame.angle * Math.PI) / 180;
  const halfWidth = frame.width / 2;
  const halfHeight = frame.width / aspect / 2;
  return [
    [-1, -1],
    [1, -1],
    [1, 1],
    [-1, 1],
  ].map(([h, v]) => {
    const x = h! * halfWidth;
    const y = v! * halfHeight;
    return [
      frame.centreX + x * Math.cos(turn) - y * Math.sin(turn),
      frame.centreY + x * Math.sin(turn) + y * Math.cos(turn),
    ];
  });
}

/** Where the transform of the page puts a point of the photo on the screen. */
function onScreen(transform: string, [x, y]: Point): Point {
  const steps = [...transform.matchAll(/(\w+)\(([^)]+)\)/g)].reverse();
  return steps.reduce<Point>(
    ([px, py], [, name, list]) => {
      const [a = 0, b = 0] = list!.split(/[ ,]+/).map(Number);
      if (name === 'translate') return [px + a, py + b];
      if (name === 'scale') return [px * a, py * a];
      const turn = (a * Math.PI) / 180;
      return [px * Math.cos(turn) - py * Math.sin(turn), px * Math.sin(turn) + py * Math.cos(turn)];
    },
    [x, y],
  );
}

function near(a: number, b: number, what: string, within = 1e-6) {
  assert.ok(Math.abs(a - b) <= within, `${what}: ${a} is not ${b}`);
}

function anyCase() {
  const photo = { width: random(50, 5000), height: random(50, 5000) };
  const aspect = random(0.3, 3);
  const frame = held(
    {
      centreX: random(-1000, 6000),
      centreY: random(-1000, 6000),
      width: random(1, 8000),
      angle: random(-400, 400),
    },
    photo,
    aspect,
  );
  return { photo, aspect, frame };
}

test('nothing outside the photo is ever shown, and a frame at its largest touches an edge', () => {
  for (let i = 0; i < 500; i++) {
    const { photo, aspect, frame } = anyCase();
    for (const [x, y] of corners(frame, aspect)) {
      assert.ok(x > -1e-6 && x < photo.width + 1e-6, `x ${x} of ${photo.width}`);
      assert.ok(y > -1e-6 && y < photo.height + 1e-6, `y ${y} of ${photo.height}`);
    }
    const full = adjusted(frame, photo, aspect, { width: largestWidth(photo, aspect, frame.angle) });
    const reach = corners(full, aspect);
    const across = Math.max(...reach.map(([x]) => x)) - Math.min(...reach.map(([x]) => x));
    const down = Math.max(...reach.map(([, y]) => y)) - Math.min(...reach.map(([, y]) => y));
    near(Math.max(across / photo.width, down / photo.height), 1, 'share of the photo that is used');
  }
});

test('what is sent is what the screen shows', () => {
  for (let i = 0; i < 200; i++) {
    const { photo, aspect, frame } = anyCase();
    const shown = random(80, 900);
    const crop = toCrop(frame, photo, aspect);
    near((crop.width * photo.width) / (crop.height * photo.height), aspect, 'shape');

    // From the numbers alone: a rectangle about its centre, turned clockwise.
    const sent: Frame = {
      centreX: (crop.x + crop.width / 2) * photo.width,
      centreY: (crop.y + crop.height / 2) * photo.height,
      width: crop.width * photo.width,
      angle: crop.angle,
    };
    const place: Point[] = [
      [0, 0],
      [shown, 0],
      [shown, shown / aspect],
      [0, shown / aspect],
    ];
    corners(sent, aspect).forEach((corner, n) => {
      const [x, y] = onScreen(svgTransform(frame, aspect, shown), corner);
      near(x, place[n]![0], 'x on the screen', 1e-6 * shown);
      near(y, place[n]![1], 'y on the screen', 1e-6 * shown);
    });

    const back = fromCrop(crop, photo, aspect);
    near(back.centreX, frame.centreX, 'centre after a round trip', 1e-6 * photo.width);
    near(back.width, frame.width, 'width after a round trip', 1e-6 * photo.width);
    near(back.angle, frame.angle, 'angle after a round trip');
  }
});

test('the photo follows the finger, and stays under two of them', () => {
  const photo = { width: 3000, height: 2000 };
  const aspect = 0.75;
  for (let i = 0; i < 200; i++) {
    const shown = 300;
    const start: Frame = { centreX: 1500, centreY: 1000, width: 300, angle: random(-180, 180) };
    const point: Point = [random(1400, 1600), random(900, 1100)];
    const at = (frame: Frame) => onScreen(svgTransform(frame, aspect, shown), point);
    const [x, y] = at(start);

    const [movedX, movedY] = at(moved(start, shown, 13, -7));
    near(movedX - x, 13, 'way across');
    near(movedY - y, -7, 'way down');

    // Fingers about that very point, given from the middle of the place: it does not move.
    const fromMiddle: Point = [x - shown / 2, y - shown / aspect / 2];
    const turn = random(-20, 20);
    const next = pinched(start, photo, aspect, shown, fromMiddle[0], fromMiddle[1], random(0.9, 1.1), turn);
    const [pinchedX, pinchedY] = at(next);
    near(pinchedX, x, 'point under the fingers, x', 1e-6);
    near(pinchedY, y, 'point under the fingers, y', 1e-6);
    // Fingers that turn clockwise turn the photo clockwise: the frame on it goes the other way.
    near((((next.angle - start.angle + turn + 540) % 360) + 360) % 360, 180, 'turn');
  }
});

test('the first proposal is the largest upright rectangle in the middle', () => {
  assert.deepEqual(whole({ width: 400, height: 300 }, 1), { angle: 0, width: 300, centreX: 200, centreY: 150 });
  assert.deepEqual(whole({ width: 300, height: 800 }, 1.5), { angle: 0, width: 300, centreX: 150, centreY: 400 });
});
