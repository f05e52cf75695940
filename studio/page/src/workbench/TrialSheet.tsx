// The template with what people will give it, in small.
import { useEffect, useRef, useState } from 'preact/hooks';
import { problemText } from './problemText';
import { bench, picture, showTrial } from './bench';
import type { Outline, State } from './types';
import { language, w, wordOr } from './words';

const photos = new Set(['panorama', 'portrait', 'tiny', 'transparent']);
const atOnce = 3; // requests; a browser gives a host six
const rest = 250; // milliseconds without a change of the frame

/** Where it is seen what a trial changes. */
function momentOf(trial: string, choice: string, state: State, outline: Outline, here: number): number {
  if (choice === 'here') return here;
  const fitting = choice === 'auto' ? outline.inputs.find((input) => (input.kind === 'photo') === photos.has(trial))?.key : choice;
  return state.moments[fitting ?? ''] ?? here;
}

interface Still {
  address: string;
  problem: string;
  of: string;
}

/** Stills of all trials, each asked for anew when what it shows has changed. */
function useStills(wanted: [trial: string, frame: number, of: string][], isSeen: boolean): Record<string, Still> {
  const [stills, setStills] = useState<Record<string, Still>>({});
  const current = useRef(wanted);
  current.current = wanted;
  const have = useRef<Record<string, string>>({});
  const running = useRef(0);

  const next = () => {
    const missing = current.current.find(([trial, , of]) => have.current[trial] !== of);
    if (!missing || running.current >= atOnce) return;
    const [trial, frame, of] = missing;
    have.current[trial] = of;
    running.current++;
    picture(`/trials/${trial}.jpg?frame=${frame}&v=${of.split(' ')[0]}`)
      .then((blob) => (blob ? URL.createObjectURL(blob) : ''), problemText)
      .then((result) => {
        running.current--;
        const isPicture = result.startsWith('blob:');
        setStills((before) => {
          if (isPicture && before[trial]) URL.revokeObjectURL(before[trial].address);
          const address = isPicture ? result : (before[trial]?.address ?? '');
          return { ...before, [trial]: { address, problem: isPicture ? '' : result, of } };
        });
        next();
      });
    next();
  };
  const all = wanted.map((one) => one[2]).join();
  useEffect(() => {
    if (!isSeen) return;
    const wait = setTimeout(next, rest);
    return () => clearTimeout(wait);
  }, [all, isSeen]);
  return stills;
}

function useSeen<E extends Element>(): [{ current: E | null }, boolean] {
  const element = useRef<E>(null);
  const [isSeen, setSeen] = useState(false);
  useEffect(() => {
    const watch = new IntersectionObserver((entries) => setSeen(entries.some((entry) => entry.isIntersecting)), { rootMargin: '200px' });
    if (element.current) watch.observe(element.current);
    return () => watch.disconnect();
  }, []);
  return [element, isSeen];
}

export function TrialSheet() {
  const [section, isSeen] = useSeen<HTMLElement>();
  const [choice, setChoice] = useState('auto');
  const state = bench.use((value) => value.state);
  const outline = bench.use((value) => value.outline);
  const shown = bench.use((value) => value.trial);
  const here = bench.use((value) => (choice === 'here' && !value.isPlaying) || value.state?.moments ? value.frame : 0);
  const isReady = state && outline && Object.keys(state.moments).length >= Math.min(1, outline.inputs.length);
  const wanted = (state?.trials ?? []).map((trial): [string, number, string] => {
    const frame = isReady ? momentOf(trial, choice, state, outline, here) : here;
    return [trial, frame, `${state?.shown} ${frame}`];
  });
  const stills = useStills(wanted, Boolean(isSeen && isReady));
  const choices: [string, string][] = [
    ['auto', w('auto')],
    ...(outline?.inputs ?? []).map((input): [string, string] => [input.key, input.labels[language] || input.key]),
    ['here', w('here')],
  ];
  const video = state?.video;
  return (
    <section ref={section} class="wb-panel wb-trials" aria-labelledby="wb-trials">
      <header>
        <h2 id="wb-trials">{w('trials')}</h2>
        <span class="wb-note">{w('trialsLead')}</span>
        <div class="wb-choices" role="group" aria-label={w('moment')}>
          {choices.map(([name, label]) => (
            <button key={name} type="button" aria-pressed={choice === name} onClick={() => setChoice(name)} dir="auto">
              {label}
            </button>
          ))}
        </div>
      </header>
      <ul class={video && video.width > video.height ? 'is-wide' : ''}>
        {wanted.map(([trial, , of]) => {
          const still = stills[trial];
          const label = wordOr(`trial.${trial}`, trial);
          const isOn = trial === (shown || state?.trials[0]);
          return (
            <li key={trial}>
              <button type="button" class="wb-card" aria-pressed={isOn} onClick={() => showTrial(trial)}>
                <span class="wb-small" style={video ? { aspectRatio: `${video.width} / ${video.height}` } : {}}>
                  {still?.address && <img src={still.address} alt="" class={still.of === of ? '' : 'is-old'} />}
                  {still?.problem && <span class="wb-refused">{still.problem}</span>}
                </span>
                <span>{label}</span>
              </button>
            </li>
          );
        })}
      </ul>
    </section>
  );
}
