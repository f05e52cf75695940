// One text of the template: what it is called, how long it may be as a reader counts, and whether it fits.
import { useId, useLayoutEffect, useRef } from 'preact/hooks';
import type { Check, Input } from '../api/types';
import { t } from '../app/strings';
import { countCharacters, countLines } from './graphemes';

interface Properties {
  input: Input;
  text: string;
  example: string;
  fits: Check['fits'][string] | undefined;
  problem: string;
  onChange: (text: string) => void;
  onFocus: () => void;
}

export interface Excess {
  characters: number;
  lines: number;
}

/** How far a text is over its limits; a limit below 1 is none. */
export function excessOf(input: Input, text: string): Excess {
  const over = (count: number, most: number | undefined) => (most && most > 0 ? Math.max(0, count - most) : 0);
  return {
    characters: over(countCharacters(text), input.maxCharacters),
    lines: over(countLines(text), input.maxLines),
  };
}

function remark(input: Input, text: string, fits: Properties['fits']): { text: string; tone: string } | null {
  const excess = excessOf(input, text);
  if (excess.characters > 0) return { text: t('text.tooLong', { n: excess.characters }), tone: 'bad' };
  if (excess.lines > 0) return { text: t('text.tooManyLines', { n: input.maxLines ?? 0 }), tone: 'bad' };
  if (!text) return null;
  if (fits === 'refused') return { text: t('text.refused'), tone: 'bad' };
  if (fits === 'smaller') return { text: t('text.smaller'), tone: 'fair' };
  if (fits === 'fits') return { text: t('text.fits'), tone: 'good' };
  return null;
}

export function TextField({ input, text, example, fits, problem, onChange, onFocus }: Properties) {
  const id = useId();
  const area = useRef<HTMLTextAreaElement>(null);
  const oneLine = input.maxLines === 1;
  const said = problem ? { text: problem, tone: 'bad' } : remark(input, text, fits);
  const count = countCharacters(text);

  // As high as what is in it.
  useLayoutEffect(() => {
    const element = area.current;
    if (!element) return;
    element.style.height = 'auto';
    element.style.height = `${element.scrollHeight + 2}px`;
  }, [text]);

  const shared = {
    id,
    value: text,
    dir: 'auto' as const,
    placeholder: example.replace(/\n/g, ' '),
    'aria-describedby': `${id}-count ${id}-said`,
    'aria-invalid': said?.tone === 'bad',
    autocomplete: 'off',
    enterkeyhint: (oneLine ? 'next' : 'enter') as 'next' | 'enter',
    onFocus,
  };

  return (
    <div class="field" id={`field-${input.key}`}>
      <label class="field-head" for={id} dir="auto">
        {input.label}
      </label>
      {oneLine ? (
        <input type="text" {...shared} onInput={(event) => onChange(event.currentTarget.value)} />
      ) : (
        <textarea ref={area} rows={2} {...shared} onInput={(event) => onChange(event.currentTarget.value)} />
      )}
      <div class="field-foot">
        <p id={`${id}-said`} class={`said ${said?.tone ?? ''}`} aria-live="polite">
          {said?.text ?? ''}
        </p>
        <span id={`${id}-count`} class={excessOf(input, text).characters > 0 ? 'count bad' : 'count'}>
          {input.maxCharacters ? (
            <>
              <span aria-hidden="true">
                {count}/{input.maxCharacters}
              </span>
              <span class="hidden">{t('text.count', { n: count, most: input.maxCharacters })}</span>
            </>
          ) : null}
        </span>
      </div>
    </div>
  );
}
