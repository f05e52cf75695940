// A value that components watch.
import { useEffect, useState } from 'preact/hooks';

export class Store<T extends object> {
  private readonly watchers = new Set<() => void>();
  constructor(public value: T) {}

  set(change: Partial<T>) {
    this.value = { ...this.value, ...change };
    for (const watcher of [...this.watchers]) watcher();
  }

  watch(watcher: () => void): () => void {
    this.watchers.add(watcher);
    return () => this.watchers.delete(watcher);
  }

  /** What `select` makes of the value; the component is drawn again when that becomes another. */
  use<S>(select: (value: T) => S): S {
    const selected = select(this.value);
    const [, redraw] = useState({});
    useEffect(() => {
      let last = selected;
      const look = () => {
        const now = select(this.value);
        if (Object.is(now, last)) return;
        last = now;
        redraw({});
      };
      look();
      return this.watch(look);
    });
    return selected;
  }
}
