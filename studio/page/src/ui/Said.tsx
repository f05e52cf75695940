// What is wrong with a field, below it; nothing where nothing is.
import { problemText } from './Toasts';

export function Said({ text, problem }: { text?: string; problem?: Error | null | undefined }) {
  const said = text || (problem && problemText(problem));
  return said ? (
    <p class="said bad" role="status">
      {said}
    </p>
  ) : null;
}
