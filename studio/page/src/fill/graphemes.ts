// Counting as a reader counts: a family emoji or a letter with its marks is one, line ends are none.
const segmenter = 'Segmenter' in Intl ? new Intl.Segmenter(undefined, { granularity: 'grapheme' }) : null;

export function countCharacters(text: string): number {
  const plain = text.replace(/\r?\n/g, '');
  return segmenter ? [...segmenter.segment(plain)].length : [...plain].length;
}

export function countLines(text: string): number {
  return text.split('\n').length;
}
