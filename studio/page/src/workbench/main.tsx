// The workbench: a page of its own, for who writes templates.
import { render } from 'preact';
import { get, post, Problem } from '../api/client';
import { chosenTheme, setTheme } from '../app/preferences';
import { App, Refusal } from './App';
import { listen } from './bench';
import type { State } from './types';
import { language } from './words';

const root = document.getElementById('app') as HTMLElement;

/** The key that came with the address is used up at once, and never seen in the history. */
async function enter() {
  const [, key] = /^#key=(\w+)$/.exec(location.hash) ?? [];
  if (!key) return;
  history.replaceState(null, '', location.pathname);
  await post('/sessions', { key }).catch(() => {});
}

setTheme(chosenTheme());
document.documentElement.lang = language;
await enter();
try {
  await get<State>('/workbench');
  root.replaceChildren();
  render(<App />, root);
  listen();
} catch (error) {
  root.replaceChildren();
  render(<Refusal status={error instanceof Problem ? error.status : 0} />, root);
}
