// What the studio says of a draft before it is made: whether texts fit, how long it would take.
import { useEffect, useState } from 'preact/hooks';
import { post } from '../api/client';
import type { ApiMusic, ApiValues, Check } from '../api/types';

const rest = 450;

/** Null until the first answer; kept while the next is awaited, so that nothing flickers. */
export function useChecks(template: number, values: ApiValues, music: ApiMusic): Check | null {
  const [check, setCheck] = useState<Check | null>(null);
  useEffect(() => {
    let isCurrent = true;
    const timer = setTimeout(() => {
      post<Check>('/checks', { template, values, music, size: null }).then(
        (answer) => isCurrent && setCheck(answer),
        () => {},
      );
    }, rest);
    return () => {
      isCurrent = false;
      clearTimeout(timer);
    };
  }, [template, values, music]);
  return check;
}
