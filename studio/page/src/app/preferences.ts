// What the page remembers of this browser's user. Private windows may refuse; then it is forgotten with the page.
import { isLanguage, preferredLanguage, type Language } from './strings';

export type Theme = 'auto' | 'light' | 'dark';

function read(name: string): string | null {
  try {
    return localStorage.getItem(name);
  } catch {
    return null;
  }
}

function write(name: string, value: string) {
  try {
    localStorage.setItem(name, value);
  } catch {
    // Kept for as long as the page is open.
  }
}

export function chosenLanguage(): Language {
  const name = read('language') ?? '';
  return isLanguage(name) ? name : preferredLanguage();
}

export const keepLanguage = (language: Language) => write('language', language);

export function chosenTheme(): Theme {
  const name = read('theme');
  return name === 'light' || name === 'dark' ? name : 'auto';
}

export function setTheme(theme: Theme) {
  write('theme', theme);
  if (theme === 'auto') delete document.documentElement.dataset.theme;
  else document.documentElement.dataset.theme = theme;
}

export const wantsNotice = () => read('notice') === 'yes';
export const keepNotice = () => write('notice', 'yes');

/** The rating was asked for here; no answer is an answer. */
export const wasAskedToRate = () => read('rating') === 'asked';
export const keepAskedToRate = () => write('rating', 'asked');

export function forgetPreferences() {
  try {
    localStorage.clear();
  } catch {
    // Nothing was kept.
  }
}
