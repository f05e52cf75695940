// A value that components watch.
import { useEffect, useRef, useState } from 'preact/hooks';

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
    const drawn = useRef({ select, selected });
    drawn.current = { select, selected };
    // Once, not after each drawing: an effect that asks for a drawing while another one of its component throws would
    // be run again without end.
    useEffect(() => {
      const look = () => {
        if (!Object.is(drawn.current.select(this.value), drawn.current.selected)) redraw({});
      };
      look();
      return this.watch(look);
    }, [this]);
    return selected;
  }
}
