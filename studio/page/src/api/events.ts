// The page's one event stream: a browser gives a host six connections, and each widget with its own would take one.
import { address } from './client';
import type { Job, Video } from './types';

export interface Listener {
  job(job: Job): void;
  video(video: Video): void;
  template(id: number): void;
  /** The stream is there (again): what happened meanwhile has to be asked for. */
  opened(): void;
  /** It broke; the browser tries again. */
  lost(): void;
}

export class Events {
  private source: EventSource | null = null;
  private started = false;

  /** `isNeeded`: whether the stream stays while the page is hidden. */
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
    else this.open();
  }

  private open() {
    if (this.source && this.source.readyState !== EventSource.CLOSED) return;
    const source = new EventSource(address('/events'));
    this.source = source;
    source.onopen = () => this.listener.opened();
    source.onerror = () => {
      this.listener.lost();
      // A refusal (over the cap, or signed out) ends an EventSource for good.
      if (source.readyState === EventSource.CLOSED) setTimeout(() => this.adapt(), 5000);
    };
    const hear = <T>(name: string, take: (data: T) => void) =>
      source.addEventListener(name, (event) => take(JSON.parse((event as MessageEvent<string>).data) as T));
    hear<Job>('job', (job) => this.listener.job(job));
    hear<Video>('video', (video) => this.listener.video(video));
    hear<{ id: number }>('template', (data) => this.listener.template(data.id));
  }

  private close() {
    this.source?.close();
    this.source = null;
  }
}
