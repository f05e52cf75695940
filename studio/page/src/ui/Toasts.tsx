// Short messages that come and go by themselves, read out by screen readers.
import { Problem } from '../api/client';
import { Store } from '../app/Store';
import { t } from '../app/strings';

interface Toast {
  id: number;
  text: string;
  isProblem: boolean;
}

const shown = new Store<{ list: Toast[] }>({ list: [] });
let last = 0;

export function say(text: string, isProblem = false) {
  const id = ++last;
  shown.set({ list: [...shown.value.list.slice(-2), { id, text, isProblem }] });
  setTimeout(() => shown.set({ list: shown.value.list.filter((toast) => toast.id !== id) }), isProblem ? 9000 : 4000);
}

export function problemText(error: unknown): string {
  if (!(error instanceof Problem)) return t('problem.unknown');
  if (error.status === 0) return t('problem.offline');
  if (error.message) return error.message;
  return error.status >= 500 ? t('problem.server') : t('problem.unknown');
}

export function sayProblem(error: unknown) {
  if ((error as Error).name === 'AbortError') return;
  if (!(error instanceof Problem)) console.error(error);
  say(problemText(error), true);
}

export function Toasts() {
  const list = shown.use((value) => value.list);
  return (
    <div class="toasts" role="status" aria-live="polite">
      {list.map((toast) => (
        <p key={toast.id} class={toast.isProblem ? 'toast problem' : 'toast'}>
          {toast.text}
        </p>
      ))}
    </div>
  );
}
