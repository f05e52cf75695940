// A scene held ready by the studio: what is filled in becomes a picture. One request is under way at most; what was
// wanted meanwhile is asked for next, and only the newest of it.
import { address, get, post, Problem, remove, send } from '../api/client';
import type { ApiValues, Preview } from '../api/types';
import { Store } from '../app/Store';

interface Shown {
  info: Preview | null;
  picture: ImageBitmap | null;
  frame: number;
  isWaiting: boolean;
  problem: Problem | null;
  /** Frames made ahead, for playing and scrubbing, of the values of `stripOf`. */
  strip: ReadonlyMap<number, HTMLImageElement>;
}

const stillsASecond = 8;
const mostRetries = 20;
const patience = 1000;

export class PreviewSession {
  readonly shown = new Store<Shown>({
    info: null,
    picture: null,
    frame: 0,
    isWaiting: true,
    problem: null,
    strip: new Map(),
  });
  private wanted: ApiValues | null = null;
  private target: number | null = null;
  private isBusy = false;
  private isClosed = false;
  private stripOf = '';
  private source: EventSource | null = null;
  private retries = 0;
  private reopened = 0;

  constructor(
    private readonly template: number,
    private readonly width: number,
  ) {}

  /** Frame null: the one that was asked for last. */
  show(values: ApiValues, frame: number | null) {
    this.wanted = values;
    this.target = frame ?? this.target;
    void this.work();
  }

  /** Frames from the whole video with these values, a few a second; they come one after the other. */
  loadStrip(values: ApiValues) {
    const { info } = this.shown.value;
    const key = JSON.stringify(values);
    if (!info || key === this.stripOf) return;
    this.dropStrip();
    this.stripOf = key;
    const every = Math.max(1, Math.round(info.framesPerSecond / stillsASecond));
    const strip = new Map<number, HTMLImageElement>();
    const source = new EventSource(address(`/previews/${info.id}/strip?every=${every}`));
    this.source = source;
    source.addEventListener('frame', (event) => {
      const { frame, url } = JSON.parse((event as MessageEvent<string>).data) as { frame: number; url: string };
      const image = new Image();
      image.src = address(url);
      image.decode().then(
        () => {
          if (this.source !== source && this.stripOf !== key) return;
          strip.set(frame, image);
          this.shown.set({ strip: new Map(strip) });
        },
        () => {},
      );
    });
    // An EventSource would ask again for a stream that has ended.
    source.addEventListener('end', () => source.close());
    source.onerror = () => source.close();
  }

  dropStrip() {
    this.source?.close();
    this.source = null;
    this.stripOf = '';
    if (this.shown.value.strip.size > 0) this.shown.set({ strip: new Map() });
  }

  close() {
    this.isClosed = true;
    this.source?.close();
    const id = this.shown.value.info?.id;
    if (id) remove(`/previews/${id}`).catch(() => {});
  }

  private async work(): Promise<void> {
    if (this.isBusy || this.isClosed) return;
    this.isBusy = true;
    try {
      while (this.wanted && !this.isClosed) {
        const wanted = this.wanted;
        this.wanted = null;
        await this.once(wanted);
      }
      this.shown.set({ isWaiting: false });
    } finally {
      this.isBusy = false;
    }
  }

  private async once(values: ApiValues): Promise<void> {
    try {
      this.shown.set({ isWaiting: true });
      const info = this.shown.value.info ?? (await this.open(values));
      const frame = this.target ?? this.shown.value.frame;
      const answer = await send('POST', `/previews/${info.id}/still`, { values, frame });
      this.retries = this.reopened = 0;
      if (answer.status === 204) return;
      const picture = await createImageBitmap(await answer.blob());
      this.shown.value.picture?.close();
      this.shown.set({ picture, frame, problem: null });
    } catch (error) {
      await this.failed(error, values);
    }
  }

  private async open(values: ApiValues): Promise<Preview> {
    const info = await post<Preview>('/previews', { template: this.template, values, width: this.width });
    const moments = Object.values(info.moments);
    this.shown.set({ info, frame: this.shown.value.picture ? this.shown.value.frame : (moments[0] ?? info.frames >> 1) });
    if (this.isClosed) remove(`/previews/${info.id}`).catch(() => {});
    if (moments.length === 0) this.askForMoments(info.id, 6);
    return info;
  }

  /** They are found while the first pictures are looked at already. */
  private askForMoments(id: string, tries: number) {
    setTimeout(async () => {
      if (this.isClosed || this.shown.value.info?.id !== id) return;
      const info = await get<Preview>(`/previews/${id}`).catch(() => null);
      if (info && Object.keys(info.moments).length > 0) this.shown.set({ info });
      else if (tries > 1) this.askForMoments(id, tries - 1);
    }, 1000);
  }

  private async failed(error: unknown, values: ApiValues): Promise<void> {
    const problem = error instanceof Problem ? error : new Problem({ status: 0 });
    // A scene that nobody looked at for a while is gone: it is opened again.
    if ((problem.code === 'preview-gone' || problem.status === 404) && this.reopened < 2) {
      this.reopened += 1;
      this.shown.set({ info: null });
      this.dropStrip();
      this.wanted ??= values;
      return;
    }
    // Too many people look at once: it is this one's turn a little later.
    if (problem.status === 503 && this.retries < mostRetries) {
      this.retries += 1;
      await new Promise((resolve) => setTimeout(resolve, patience));
      this.wanted ??= values;
      return;
    }
    this.shown.set({ problem });
  }
}
