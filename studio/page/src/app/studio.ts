// What the page knows of the studio: session, settings, templates, jobs and videos, kept true by its events.
import { get, onSignedOut, patch, post, Problem, put, remove, setToken } from '../api/client';
import { Events } from '../api/events';
import { isActive, type Card, type Job, type JobRequest, type Session, type Settings, type Video } from '../api/types';
import { randomName } from '../api/client';
import { Store } from './Store';
import { wantsNotice } from './preferences';
import { language } from './strings';

interface Studio {
  /** undefined: not known yet; null: nobody is signed in. */
  session: Session | null | undefined;
  settings: Settings | null;
  templates: Card[] | null;
  jobs: Readonly<Record<string, Job>>;
  videos: Video[] | null;
  isOffline: boolean;
}

export const studio = new Store<Studio>({
  session: undefined,
  settings: null,
  templates: null,
  jobs: {},
  videos: null,
  isOffline: false,
});

type JobWatcher = (job: Job, before: Job | undefined) => void;
const jobWatchers = new Set<JobWatcher>();

/** Hears every job that changes its state. */
export function watchJobs(watcher: JobWatcher): () => void {
  jobWatchers.add(watcher);
  return () => jobWatchers.delete(watcher);
}

export function takeJob(job: Job) {
  const before = studio.value.jobs[job.id];
  // An answer that was overtaken by the event of the end.
  if (before && !isActive(before) && isActive(job)) return;
  studio.set({ jobs: { ...studio.value.jobs, [job.id]: job } });
  if (before?.state !== job.state) for (const watcher of [...jobWatchers]) watcher(job, before);
}

export function activeJobs(jobs: Readonly<Record<string, Job>>): Job[] {
  return Object.values(jobs)
    .filter(isActive)
    .sort((a, b) => a.created.localeCompare(b.created));
}

const events = new Events(
  {
    job(job) {
      takeJob(job);
      const { videos } = studio.value;
      if (videos && job.state === 'expired') studio.set({ videos: videos.filter((video) => video.job !== job.id) });
      if (job.state === 'done' && (job.kind === 'install' || job.kind === 'refresh')) void loadTemplates().catch(() => {});
    },
    video(video) {
      const { jobs, videos } = studio.value;
      const isDraft = video.job !== null && jobs[video.job]?.kind === 'draft';
      if (videos && !isDraft) studio.set({ videos: [video, ...videos.filter((other) => other.id !== video.id)] });
    },
    template: () => void loadTemplates().catch(() => {}),
    lost: () => studio.set({ isOffline: true }),
    opened: () => void catchUp(),
  },
  () => wantsNotice() && activeJobs(studio.value.jobs).length > 0,
);

/** After a time without the stream: jobs that were running may have ended. */
async function catchUp() {
  try {
    const { jobs } = await get<{ jobs: Job[] }>('/jobs?limit=20');
    jobs.reverse().forEach(takeJob);
    studio.set({ isOffline: false });
    if (studio.value.videos) await loadVideos();
    if (!studio.value.templates) await loadTemplates();
  } catch {
    // The stream says when it is back.
  }
}

export async function loadTemplates(): Promise<void> {
  try {
    const { templates } = await get<{ templates: Card[] }>(`/templates?lang=${language}`);
    studio.set({ templates, isOffline: false });
  } catch (error) {
    if (error instanceof Problem && error.status === 0) studio.set({ isOffline: true });
    if (!studio.value.templates) throw error;
  }
}

export async function allVideos(): Promise<Video[]> {
  const all: Video[] = [];
  let cursor = '';
  do {
    const { videos, next } = await get<{ videos: Video[]; next: string | null }>(`/videos${cursor && `?cursor=${cursor}`}`);
    all.push(...videos);
    cursor = next ?? '';
  } while (cursor);
  return all;
}

export async function loadVideos(): Promise<void> {
  studio.set({ videos: await allVideos() });
}

export async function loadSettings(): Promise<void> {
  studio.set({ settings: await get<Settings>('/settings') });
}

async function enter(session: Session): Promise<void> {
  setToken(session.token);
  studio.set({ session });
  events.start();
  await Promise.all([loadSettings(), loadTemplates()]);
}

/** With the key that the program put into the address, else with the cookie of an earlier visit. */
export async function start(key: { key: string } | { code: string } | null): Promise<void> {
  onSignedOut(() => {
    events.stop();
    studio.set({ session: null, isOffline: false });
  });
  try {
    const session = key
      ? await post<Session>('/sessions', key).catch(() => get<Session>('/sessions/current'))
      : await get<Session>('/sessions/current');
    await enter(session);
  } catch (error) {
    const status = error instanceof Problem ? error.status : 400;
    const isKnown = studio.value.session !== undefined;
    if (status === 401) studio.set({ session: null });
    else if (status === 0 || (status >= 500 && !isKnown)) await startOffline();
    else if (!isKnown) studio.set({ session: null });
  }
}

const lookAgain = 4000;

/** The templates of the last visit, where a service worker has kept them, until the studio is back. */
async function startOffline() {
  await loadTemplates().catch(() => {});
  studio.set({ isOffline: true });
  setInterval(() => {
    if (!document.hidden) get('/sessions/current')
      // One that is starting is not back yet.
      .catch((error: Problem) => error.status === 401 || Promise.reject())
      .then(() => location.reload(), () => {});
  }, lookAgain);
}

export async function signIn(code: string): Promise<void> {
  await enter(await post<Session>('/sessions', { code }));
}

export async function signOut(): Promise<void> {
  await remove('/sessions/current');
  events.stop();
  setToken('');
  studio.set({ session: null, jobs: {}, videos: null });
}

/** The same press of the button is the same job, however often the line breaks. */
export async function makeVideo(request: JobRequest): Promise<Job> {
  const headers = { 'Idempotency-Key': randomName() };
  let job: Job;
  try {
    job = await post<Job>('/jobs', request, headers);
  } catch (error) {
    if (!(error instanceof Problem) || error.status !== 0) throw error;
    job = await post<Job>('/jobs', request, headers);
  }
  takeJob(job);
  return job;
}

export async function install(id: number): Promise<void> {
  takeJob(await post<Job>(`/templates/${id}/installation`, undefined, { 'Idempotency-Key': randomName() }));
}

/** Asks the template server what it offers by now. */
export async function lookForNew(): Promise<void> {
  takeJob(await post<Job>('/catalogue/refresh', undefined, { 'Idempotency-Key': randomName() }));
}

export async function cancelJob(id: string): Promise<void> {
  await post(`/jobs/${id}/cancel`);
}

export async function loadJob(id: string): Promise<Job> {
  const job = await get<Job>(`/jobs/${id}`);
  takeJob(job);
  return job;
}

export async function findVideo(id: string): Promise<Video> {
  return studio.value.videos?.find((video) => video.id === id) ?? (await get<Video>(`/videos/${id}`));
}

export async function changeVideo(id: string, change: { title?: string; kept?: boolean }): Promise<Video> {
  const video = await patch<Video>(`/videos/${id}`, change);
  const { videos } = studio.value;
  if (videos) studio.set({ videos: videos.map((other) => (other.id === id ? video : other)) });
  return video;
}

export async function deleteVideo(id: string, photosToo: boolean): Promise<void> {
  await remove(`/videos/${id}?photos=${photosToo}`).catch((error: Problem) => {
    // Pressed twice, or gone in another window.
    if (error.status !== 404) throw error;
  });
  const { videos } = studio.value;
  if (videos) studio.set({ videos: videos.filter((video) => video.id !== id) });
}

export async function rate(answer: 'love' | 'fine' | 'poor'): Promise<void> {
  await put('/rating', { answer });
  const { settings } = studio.value;
  if (settings) studio.set({ settings: { ...settings, ratingAsked: true } });
}

export async function shareUsage(usageSharing: boolean): Promise<void> {
  const answer = await patch<Settings | undefined>('/settings', { usageSharing });
  const { settings } = studio.value;
  if (settings) studio.set({ settings: { ...settings, ...answer, usageSharing } });
}
