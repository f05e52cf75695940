import { useEffect } from 'preact/hooks';
import { bench, seek, stop, togglePlay } from './bench';
import { Findings } from './Findings';
import { Inspector } from './Inspector';
import { Picture, Transport } from './Picture';
import { Timeline } from './Timeline';
import { TrialSheet } from './TrialSheet';
import { w } from './words';

function Status() {
  const state = bench.use((value) => value.state);
  const isAway = bench.use((value) => value.isAway);
  const isWaiting = bench.use((value) => value.isWaiting && !value.isPlaying);
  const [kind, text] = isAway
    ? ['bad', w('away')]
    : state?.problem
      ? ['bad', w('broken')]
      : !state || state.shown < state.revision
        ? ['busy', w('reading')]
        : isWaiting
          ? ['busy', w('drawing')]
          : ['good', w('fine')];
  return (
    <p class={`wb-status ${kind}`} role="status">
      <i />
      {text}
    </p>
  );
}

const moves: Record<string, (frame: number, step: number) => number> = {
  ArrowLeft: (frame, step) => frame - step,
  ArrowRight: (frame, step) => frame + step,
  Home: () => 0,
  End: () => Number.MAX_SAFE_INTEGER,
};

function takeKeys(event: KeyboardEvent) {
  const target = event.target as Element;
  if (event.ctrlKey || event.metaKey || event.altKey || target.closest('input')) return;
  const move = moves[event.key];
  if (move) {
    stop();
    seek(move(bench.value.frame, event.shiftKey ? 10 : 1));
  } else if (event.key === ' ' && !target.closest('button, a')) {
    togglePlay();
  } else {
    return;
  }
  event.preventDefault();
}

export function App() {
  const state = bench.use((value) => value.state);
  useEffect(() => {
    addEventListener('keydown', takeKeys);
    return () => removeEventListener('keydown', takeKeys);
  }, []);
  useEffect(() => {
    if (state?.name) document.title = `${state.name} – ${w('workbench')}`;
  }, [state?.name]);
  return (
    <>
      <header class="wb-top">
        <a class="logo" href="/" aria-label={w('studio')}>
          <svg viewBox="0 0 28 28" width="26" height="26" aria-hidden="true">
            <rect class="far" x="2" y="7" width="10" height="16" rx="3" transform="rotate(-12 7 15)" />
            <rect class="middle" x="16" y="7" width="10" height="16" rx="3" transform="rotate(12 21 15)" />
            <rect class="near" x="8.5" y="4.5" width="11" height="19" rx="3.2" />
          </svg>
        </a>
        <h1 dir="auto">{state?.name ?? w('workbench')}</h1>
        <code class="wb-folder">{state?.folder}</code>
        {state !== null && <Status />}
      </header>
      <main class="wb" id="main">
        <section class="wb-panel wb-view" aria-label={w('frame')}>
          <Picture />
          <Transport />
        </section>
        <Findings />
        <Inspector />
        <Timeline />
        <TrialSheet />
      </main>
    </>
  );
}

export function Refusal({ status }: { status: number }) {
  return (
    <main class="wb-refusal">
      <h1>{w('workbench')}</h1>
      <p>{w(status === 404 ? 'notHere' : 'signIn')}</p>
      <a class="plain" href="/">{w('studio')}</a>
    </main>
  );
}
