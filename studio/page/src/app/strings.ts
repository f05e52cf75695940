// The page's texts: one table is loaded, the one of the language in use.
import type en from '../../strings/en.json';
import type zh from '../../strings/zh.json';
import type ja from '../../strings/ja.json';

export type Key = keyof typeof en;
export type Language = 'en' | 'zh' | 'ja';

// Each table has exactly the keys of the English one, or this does not compile.
type Same<A, B> = [keyof A] extends [keyof B] ? ([keyof B] extends [keyof A] ? true : never) : never;
export const complete: [Same<typeof en, typeof zh>, Same<typeof en, typeof ja>] = [true, true];

export const languages: Record<Language, string> = { en: 'English', zh: '中文', ja: '日本語' };

type Text = string | [one: string, other: string];
/** The build numbers the keys: what is a list there has the texts in that order. */
let table: Record<string, Text> = {};
let plural = new Intl.PluralRules('en');
export let language: Language = 'en';

export function isLanguage(name: string): name is Language {
  return name in languages;
}

export function preferredLanguage(): Language {
  for (const name of navigator.languages) {
    const short = name.slice(0, 2).toLowerCase();
    if (isLanguage(short)) return short;
  }
  return 'en';
}

/** The addresses of the tables come with the page, since their names hold a hash of what is in them. */
export async function loadStrings(wanted: Language): Promise<void> {
  language = wanted;
  // What the studio says, too: problems, and the names of templates.
  document.cookie = `language=${wanted};path=/;max-age=31536000;samesite=strict`;
  const name = document.documentElement.dataset[wanted];
  const answer = await fetch(name ?? '');
  if (!answer.ok) throw new Error(`strings ${wanted}: ${answer.status}`);
  const texts = (await answer.json()) as Record<string, Text>;
  // Another one was chosen meanwhile.
  if (wanted !== language) return;
  table = texts;
  plural = new Intl.PluralRules(wanted);
  document.documentElement.lang = wanted;
}

/** The text of a key; `{name}` in it is replaced, `n` chooses between singular and plural. */
export function t(key: Key, values: Record<string, string | number> = {}): string {
  const entry = table[key] ?? '';
  const text = typeof entry === 'string' ? entry : entry[plural.select(Number(values.n)) === 'one' ? 0 : 1];
  return text.replace(/\{(\w+)\}/g, (_, name: string) => String(values[name] ?? ''));
}

export function seconds(value: number): string {
  const rounded = value < 10 && value % 1 >= 0.05 && value % 1 < 0.95 ? value.toFixed(1) : String(Math.round(value));
  return t('unit.seconds', { n: rounded });
}

const dayForm = { month: 'short', day: 'numeric', hour: 'numeric', minute: '2-digit' } as const;

/** A waiting time in words that do not pretend to know better. */
export function duration(value: number): string {
  if (value < 90) return t('time.seconds', { n: Math.max(1, Math.round(value)) });
  return t('time.minutes', { n: Math.round(value / 60) });
}

export function megabytes(value: number): string {
  return t('unit.megabytes', { n: value < 10 ? Math.max(0.1, value).toFixed(1) : Math.round(value) });
}

export function day(text: string): string {
  return new Intl.DateTimeFormat(language, dayForm).format(new Date(text));
}
