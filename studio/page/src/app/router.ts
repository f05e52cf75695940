// Which screen is shown: the part of the address after '#', so that the studio serves one page whatever is asked for.
import { whenSettled } from './steps';
import { Store } from './Store';

export interface Route {
  screen: string;
  id: string;
}

function read(): Route {
  const [, screen = '', id = ''] = location.hash.split('/');
  return { screen, id };
}

export const route = new Store<Route>(read());

let wantsTransition = false;

/** How far each screen was scrolled: the way back leads to where one was. Dialogs are steps in the history too, and the
 * browser's own memory would scroll at their end. */
const scrolled = new Map<string, number>();
history.scrollRestoration = 'manual';
addEventListener('scroll', () => scrolled.set(location.hash, scrollY), { passive: true });

function show() {
  const next = read();
  const top = wantsTransition ? 0 : (scrolled.get(location.hash) ?? 0);
  const change = () => {
    route.set(next);
    setTimeout(() => scrollTo(0, top), 0);
  };
  const canMove = wantsTransition && 'startViewTransition' in document && !calm();
  wantsTransition = false;
  if (!canMove) return change();
  document.startViewTransition(async () => {
    change();
    // The new screen must be drawn when the transition looks.
    await new Promise((resolve) => setTimeout(resolve, 0));
  });
}

/** Whether the person asked for little motion. */
export function calm(): boolean {
  return matchMedia('(prefers-reduced-motion: reduce)').matches;
}

addEventListener('hashchange', show);
// Back and forward are moved by the browser itself, or not at all; only steps onwards are by the page.
addEventListener('click', (event) => {
  if ((event.target as Element | null)?.closest?.('a[href^="#/"]')) wantsTransition = true;
});

export function go(path: string, options: { replace?: boolean } = {}) {
  whenSettled(() => {
    wantsTransition = true;
    if (!options.replace) location.hash = path;
    else {
      history.replaceState(null, '', `#${path}`);
      show();
    }
  });
}
