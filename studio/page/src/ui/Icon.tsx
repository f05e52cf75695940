// Line drawings of 24 by 24, drawn in the colour of the text around them.
const paths = {
  back: 'M15 5l-7 7 7 7',
  next: 'M9 5l7 7-7 7',
  close: 'M6 6l12 12M18 6L6 18',
  search: 'M11 4a7 7 0 110 14 7 7 0 010-14zM16 16l4.5 4.5',
  grid: 'M4 5h6v14H4zM14 5h6v14h-6z',
  film: 'M4 6a2 2 0 012-2h12a2 2 0 012 2v12a2 2 0 01-2 2H6a2 2 0 01-2-2zM10 9l5 3-5 3z',
  gear: 'M4 7h10M18 7h2M4 17h2M10 17h10M14 7a2 2 0 104 0 2 2 0 00-4 0zM6 17a2 2 0 104 0 2 2 0 00-4 0z',
  play: 'M8 5.5v13l10.5-6.5z',
  pause: 'M8 5.5v13M16 5.5v13',
  camera: 'M4 8.5A1.5 1.5 0 015.5 7H8l1.5-2.5h5L16 7h2.5A1.5 1.5 0 0120 8.5v9a1.5 1.5 0 01-1.5 1.5h-13A1.5 1.5 0 014 17.5zM12 10a3.2 3.2 0 110 6.4 3.2 3.2 0 010-6.4z',
  photo: 'M4 6.5A1.5 1.5 0 015.5 5h13A1.5 1.5 0 0120 6.5v11a1.5 1.5 0 01-1.5 1.5h-13A1.5 1.5 0 014 17.5zM4.5 17l5-5.5 4 4 2.5-2.5 4 4M15 9h.01',
  crop: 'M7 2.5V17h14.5M2.5 7H17v14.5',
  trash: 'M5 7h14M10 4h4M7 7l.8 12.5h8.4L17 7',
  undo: 'M8 5L4 9l4 4M4.5 9H14a5 5 0 010 10H9',
  redo: 'M16 5l4 4-4 4M19.5 9H10a5 5 0 000 10h5',
  again: 'M19 12a7 7 0 11-2-4.9M19 3.5V8h-4.5',
  turn: 'M19 12a7 7 0 11-7-7h1M10.5 1.8L13.5 5l-3 3',
  download: 'M12 4v11M7 10.5l5 5 5-5M5 20h14',
  share: 'M12 15V4M8 7.5L12 3.5l4 4M7 11H5v9h14v-9h-2',
  link: 'M10 14a4 4 0 005.7 0l3-3A4 4 0 0013 5.3l-1 1M14 10a4 4 0 00-5.7 0l-3 3A4 4 0 0011 18.7l1-1',
  qr: 'M4 4h6v6H4zM14 4h6v6h-6zM4 14h6v6H4zM14 14h2v2h-2zM18 18h2v2h-2zM18 14h2M14 18v2',
  music: 'M9 18V6l10-2v12M9 18a2.5 2.5 0 11-5 0 2.5 2.5 0 015 0zM19 16a2.5 2.5 0 11-5 0 2.5 2.5 0 015 0z',
  mute: 'M4 9.5v5h3.5L12 18V6L7.5 9.5zM16 9.5l5 5M21 9.5l-5 5',
  bell: 'M6 16V11a6 6 0 0112 0v5l1.5 2h-15zM10 20.5h4',
  heart: 'M12 20S4 15 4 9.3A4.3 4.3 0 0112 7a4.3 4.3 0 018 2.3C20 15 12 20 12 20z',
  pencil: 'M5 19l1-4L16 5l3 3L9 18z',
  plus: 'M12 5v14M5 12h14',
  pin: 'M7 4h10v16l-5-4-5 4z',
  text: 'M5 6V5h14v1M12 5v14M9.5 19h5',
  check: 'M5 12.5l4.5 4.5L19 7.5',
  warning: 'M12 4l9 16H3zM12 10v4.5M12 17.2h.01',
  more: 'M6 12h.01M12 12h.01M18 12h.01',
  grip: 'M9 6h.01M15 6h.01M9 12h.01M15 12h.01M9 18h.01M15 18h.01',
  phone: 'M8 3h8a1 1 0 011 1v16a1 1 0 01-1 1H8a1 1 0 01-1-1V4a1 1 0 011-1zM11 18h2',
} as const;

export type IconName = keyof typeof paths;

const mirrored = new Set<IconName>(['back', 'next']);

export function Icon({ name }: { name: IconName }) {
  return (
    <svg
      class={mirrored.has(name) ? 'icon mirrored' : 'icon'}
      viewBox="0 0 24 24"
      aria-hidden="true"
    >
      <path d={paths[name]} />
    </svg>
  );
}
