import { render } from 'preact';
import { App } from './App';
import { chosenLanguage, chosenTheme, setTheme } from './app/preferences';
import { loadStrings, type Language } from './app/strings';
import { loadTemplates, start } from './app/studio';
import { sweepFiles } from './fill/Draft';

const root = document.getElementById('app') as HTMLElement;

const draw = () => render(<App onLanguage={changeLanguage} />, root);

/** Everything is drawn anew: no component needs to know that a language can change. */
async function changeLanguage(language: Language): Promise<void> {
  await loadStrings(language);
  await loadTemplates();
  render(null, root);
  draw();
}

/** The key or pairing code that came with the address is used up at once, and never seen in the history. */
function takeKey(): { key: string } | { code: string } | null {
  const [, name, value] = /^#(key|code)=(\w+)$/.exec(location.hash) ?? [];
  if (!name || !value) return null;
  history.replaceState(null, '', '#/');
  return name === 'key' ? { key: value } : { code: value };
}

if (location.hash === '#/workbench') location.replace('/workbench.html');
setTheme(chosenTheme());
const key = takeKey();
const strings = loadStrings(chosenLanguage());
const entered = start(key);
// Without its texts the page could say nothing.
await strings.catch(() => new Promise(() => setTimeout(() => location.reload(), 4000)));
root.replaceChildren();
draw();
await entered;
void sweepFiles();
if ('serviceWorker' in navigator) void navigator.serviceWorker.register('/sw.js').catch(() => {});
