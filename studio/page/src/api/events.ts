// The one event stream of all the pages of a browser, which gives a host six connections: seven pages with a stream each
// would leave none. One page has the stream and hands on what it hears; when it goes, another one has it.
import { address } from './client';
import type { Job, Video } from './types';

export interface Listener {
  job(job: Job): void;
  video(video: Video): void;
  template(data: { id: number }): void;
  /** The stream is there (again): what happened meanwhile has to be asked for. */
  opened(): void;
  /** It broke; the browser tries again. */
  lost(): void;
}

const name = 'events';
type Told = keyof Listener;

export class Events {
  private source: EventSource | null = null;
  private channel: BroadcastChannel | null = null;
  private started = false;
  /** Gives up the stream, or the wait for it. */
  private leave = () => {};

  /** `isNeeded`: whether the page listens while it is hidden. */
  constructor(
    private readonly listener: Listener,
    private readonly isNeeded: () => boolean,
  ) {
    document.addEventListener('visibilitychange', () => this.adapt());
    addEventListener('pagehide', () => this.close());
    addEventListener('pageshow', () => this.adapt());
  }

  start() {
    this.started = true;
    this.adapt();
  }

  stop() {
    this.started = false;
    this.close();
  }

  private adapt() {
    if (!this.started) return;
    if (document.hidden && !this.isNeeded()) this.close();
    else if (!this.channel) this.join();
    else if (this.source?.readyState === EventSource.CLOSED) this.open();
  }

  private join() {
    this.channel = new BroadcastChannel(name);
    // Nobody tells whose turn it is where the context is not secure: there each page has its own stream.
    if (!navigator.locks) return this.open();
    this.channel.onmessage = ({ data: [told, data] }: MessageEvent<[Told | 'joined', never]>) => {
      if (told !== 'joined') this.listener[told](data);
      else if (this.source?.readyState === EventSource.OPEN) this.channel?.postMessage(['opened']);
    };
    this.channel.postMessage(['joined']);
    const stop = new AbortController();
    this.leave = () => stop.abort();
    const have = () =>
      new Promise<void>((resolve) => {
        this.leave = resolve;
        this.open();
      });
    navigator.locks.request(name, { signal: stop.signal }, have).catch(() => {});
  }

  private open() {
    const source = new EventSource(address('/events'));
    this.source = source;
    const tell = (told: Told, data?: unknown) => {
      this.listener[told](data as never);
      if (navigator.locks) this.channel?.postMessage([told, data]);
    };
    source.onopen = () => tell('opened');
    source.onerror = () => {
      if (source.readyState !== EventSource.CLOSED) return tell('lost');
      // A refusal (over the cap, or shown out) ends an EventSource for good: who asks is told which it was.
      tell('opened');
      setTimeout(() => this.adapt(), 5000);
    };
    for (const told of ['job', 'video', 'template'] as const)
      source.addEventListener(told, (event) => tell(told, JSON.parse((event as MessageEvent<string>).data)));
  }

  private close() {
    this.leave();
    this.source?.close();
    this.channel?.close();
    this.source = this.channel = null;
  }
}
